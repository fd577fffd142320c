// LGL.h -- the static helpers every renderer shares; this part holds texture creation from BMP,
// JPEG, TGA and DDS files, colour-keyed and centred textures, render targets and pixel-block flips.
//
// Index of sections:
//   [SECTION] textures
//
// Texture choices recorded here:
//  - CreateTexture hands JPEG files to CreateQuadraticCentredJPGTexture with fitInside false and
//    targetSize 0: the whole photograph is kept, letterboxed in black, at its own size. Like the DDS
//    route, the JPEG route returns without touching width and height.
//  - A BMP or TGA file that exists but cannot be decoded (or a TGA of other than 24 or 32 bits) is an
//    unreadable main texture: "ERROR LGL::<operation>: could not read the image "<file>"" on standard
//    output, then exit(-1). The same holds for CreateTransparentTexture's BMP and TGA files. A JPEG
//    that cannot be decoded prints the same kind of line before its exit(0).
//  - CreateTransparentTexture with any extension but bmp/BMP/tga/TGA prints "ERROR
//    LGL::CreateTransparentTexture: unsupported image type "<file>"" and makes no texture; id, width
//    and height stay as they were.
//  - JPEG textures keep the square size they are built at: level 0 is uploaded with glTexImage2D
//    and OpenGL derives the smaller levels (GL_GENERATE_MIPMAP), because gluBuild2DMipmaps would
//    rescale a size such as 640 or 112 to a power of two. BMP and TGA textures go through
//    gluBuild2DMipmaps and get its power-of-two rescaling.
//  - The JPEG down-scaling factor is the integer quotient size / targetSize: it scales only when
//    that quotient is at least 2 (640 with targetSize 512 stays 640); a targetSize above the size
//    never enlarges. Averages are truncated.
//  - The grey-JPEG quirk (fitInside false) reads each pixel's right-hand neighbour in the source
//    block; the very last pixel of the image has none and repeats its own value there.
//  - CreateRenderTexture's zero block holds at least four components per pixel, so a `format` with
//    more components than `channels` never makes OpenGL read past it.
//  - A size or count whose byte size is negative or does not fit in memory counts as a failed
//    allocation (the designed line and exit(-1) where one is designed; "ERROR LGL::<operation>:
//    memory allocation failed" and exit(-1) elsewhere).
//
// DDS files that do not tell the truth. The reader never reads or uploads past the bytes that are in
// the file:
//  - A file shorter than its 4-byte magic plus the 124-byte description is "not a valid .dds file".
//  - The pixel block is the designed buffer size (linear size, times 2 or 4 when the mipmap count is
//    above 1) but never more than the bytes that follow the description; tDDSImageData::dataSize
//    says how many were read. A linear size of 0 (seafloor.dds, lizard_diff.dds carry one) therefore
//    gives an empty block after its message box.
//  - CreateDDSTexture uploads the levels in order and stops at the first level whose bytes are not
//    all in the block (countDDSLevels), and after 32 levels at most (no OpenGL accepts more). Sizes
//    are computed in 64 bits; a width or height that reads as 0 or negative is taken as 1.
//  - A mipmap count of 0 uploads nothing (the texture name is still made, with no image).
//  - When glCompressedTexImage2DARB could not be found, nothing is uploaded.
//  - Only the "couldn't find" message is cut to 255 characters; the others carry the whole name.
#pragma once

#include <GL/gl.h>
#include <ostrum_core/WinTypes.h>

#include <cstddef>
#include <cstdio>
#include <string>

class LGL {
public:
    // ============================================================ [SECTION] textures

    // A compressed image read from a DDS file; made with malloc by loadDDSTextureFile and released
    // with freeDDSImage (or free on pixels, then on the record).
    struct tDDSImageData {
        int width;
        int height;
        int components;      // 3 for DXT1, 4 for DXT3 and DXT5; not read by the upload
        int format;          // GL_COMPRESSED_RGBA_S3TC_DXT1/3/5_EXT
        int numMipMaps;      // as the file says
        unsigned char* pixels;
        std::size_t dataSize;  // bytes actually read into pixels
    };

    typedef void(APIENTRY* tCompressedTexImage2DProc)(GLenum target, GLint level, GLenum internalFormat,
                                                      GLsizei width, GLsizei height, GLint border,
                                                      GLsizei imageSize, const GLvoid* data);
    typedef void* (*tProcAddressLookup)(const char* name);

    // Entry point of ARB_texture_compression, fetched by the first CreateDDSTexture.
    static tCompressedTexImage2DProc glCompressedTexImage2DARB;
    // Set (before it runs) by the one extension check of the process.
    static bool textureCompressionChecked;

    // Texture from a BMP, JPEG, TGA or DDS file, chosen by the exact spelling of the extension; a
    // missing file ends the process. width and height receive the size of a BMP or TGA image.
    static void CreateTexture(unsigned int& id, std::string file, int& width, int& height);
    static void CreateTexture(unsigned int& id, std::string file);
    // S3TC-compressed texture with the levels stored in a DDS file; id unchanged when the file is bad.
    static void CreateDDSTexture(unsigned int& id, std::string file);
    // Square mipmapped RGB texture of a JPEG image centred on black, its side a multiple of 16.
    static void CreateQuadraticCentredJPGTexture(unsigned int& id, std::string file, bool fitInside,
                                                 int targetSize);
    // RGBA texture whose alpha is `alpha` where the pixel matches the key (mode 0 equal, 1 below,
    // 2 above, -1 every pixel) and 255 elsewhere; a 32-bit TGA keeps its own alpha.
    static void CreateTransparentTexture(unsigned int& id, std::string file, int mode, int r, int g, int b,
                                         int alpha, int& width, int& height);
    // Mode 0, key (0, 0, 0), alpha 0: pure black becomes transparent.
    static void CreateTransparentTexture(unsigned int& id, std::string file);
    // Empty texture (all zero) to copy rendered images into.
    static void CreateRenderTexture(unsigned int& id, int width, int height, int channels, int format);
    static void CreateRenderTexture(unsigned int& id, int size, int channels, int format);
    // Black RGB texture; r, g and b are accepted and ignored on purpose.
    static void CreateBlankTexture(unsigned int& id, int r, int g, int b, int width, int height);
    // Rows (respectively the pixels of each row) reversed in place.
    static void FlipBitmapVertical(unsigned char* data, int width, int height, int bytesPerPixel);
    static void FlipBitmapHorizontal(unsigned char* data, int width, int height, int bytesPerPixel);

    // The once-per-process check behind CreateDDSTexture: sets textureCompressionChecked, looks for
    // ARB_texture_compression in the extension string and fetches glCompressedTexImage2DARB with
    // `lookup`, showing a message box for each that is missing.
    static void CheckTextureCompression(tProcAddressLookup lookup);
    // DDS reader, usable without OpenGL: the record or nullptr after a message box.
    static tDDSImageData* loadDDSTextureFile(const char* file);
    // The same from an open stream positioned at the magic; `file` names it in messages. The stream
    // is left open.
    static tDDSImageData* loadDDSTextureStream(std::FILE* stream, const char* file);
    // Bytes of one compressed level of w x h pixels: ((w + 3) / 4) * ((h + 3) / 4) * block size.
    static std::size_t DDSLevelSize(int format, long long width, long long height);
    // How many levels, from level 0, lie wholly inside the record's pixel block (at most 32).
    static int countDDSLevels(const tDDSImageData* image);
    static void freeDDSImage(tDDSImageData* image);
};
