// LGL.h -- the static drawing helpers every renderer shares: colours, rectangles and frames, solids,
// the fade to black, occlusion, bitmap text, modelview vector helpers, and texture creation from BMP,
// JPEG, TGA and DDS files.
//
// Every operation issues immediate-mode OpenGL into the context current on the calling thread. The
// only state kept here is class-wide: the fade level and the viewport saved with it, and the two
// circle tables that drawTube and drawArrow fill.
//
// Index of sections:
//   [SECTION] colours
//   [SECTION] rectangles and frames
//   [SECTION] solids
//   [SECTION] fade
//   [SECTION] occlusion
//   [SECTION] text
//   [SECTION] modelview helpers
//   [SECTION] textures
//
// Choices recorded here:
//  - cColor has int as its underlying type, so any int (10, -1, ...) converts to it safely; values
//    outside Red..Olive leave the current colour alone.
//  - fadeLevel starts at 0.0 (clear) when the process starts, and fadeViewport at four zeros, as if
//    no fade had been run; InFadeOut() is therefore true until a fade has completed once.
//  - RenderFadeOut pops the projection first and the modelview last, so the matrix mode is
//    GL_MODELVIEW afterwards.
//  - drawTube pushes the modelview matrix around its own scale and pops it again, so it leaves the
//    caller's matrix as it was; drawArrow needs no scale and does not touch the matrix. For both,
//    segment counts above 49 are drawn with 49 (the circle tables hold 50 points) and negative counts
//    draw nothing; 0 means 32.
//  - The tube's side is one four-vertex triangle strip per segment, wound counter-clockwise seen from
//    outside: (p[k], +1), (p[k], -1), (p[k+1], +1), (p[k+1], -1), where p[k] is the k-th circle point
//    and the second value the z of the unit tube. Each strip carries one normal, the outward
//    direction at the middle angle of its segment, so the side is shaded flat per face. The cap at
//    z = +1 is drawn first, then the cap at z = -1, then the side; both caps face outwards.
//  - drawArrow(shaftRadius, shaftLength, headRadius, headLength, segments) stands on the origin and
//    points along +z: a shaft of radius shaftRadius from z = 0 to z = shaftLength, closed by a disc
//    at z = 0, then a cone with a base disc of radius headRadius at z = shaftLength and its tip at
//    z = shaftLength + headLength. Drawn in that order: the bottom disc, the shaft side as the tube's
//    strips, the head's base disc facing -z, and the cone as one triangle per segment (rim, next rim
//    point, tip) with the slanted outward normal of its middle angle. The segment count follows the
//    tube's rules.
//  - isOccluded compares against the far plane (depth 1.0) when the point projects outside the
//    window, where no depth can be read.
//  - WriteString with a null text draws nothing, like an empty one.
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
//    all in the block (DDSLevels), and after 32 levels at most (no OpenGL accepts more). Sizes
//    are computed in 64 bits; a width or height that reads as 0 or negative is taken as 1.
//  - A mipmap count of 0 uploads nothing (the texture name is still made, with no image).
//  - When glCompressedTexImage2DARB could not be found, nothing is uploaded.
//  - Only the "couldn't find" message is cut to 255 characters; the others carry the whole name.
#pragma once

#include <GL/gl.h>
#include <ostrum_core/SVector3D.h>
#include <ostrum_core/WinTypes.h>
#include <ostrum_core/tRect.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

class LGL {
public:
    // ============================================================ [SECTION] colours

    struct tGLRGB {
        float r;
        float g;
        float b;
    };

    struct tGLRGBA {
        float r;
        float g;
        float b;
        float a;
    };

    // Unscoped, so that both LGL::Red and LGL::cColor::Red name the same value.
    enum cColor : int {
        Red = 0,
        Green = 1,
        Blue = 2,
        Yellow = 3,
        Orange = 4,
        Black = 5,
        White = 6,
        Magenta = 7,
        Cyan = 8,
        Olive = 9
    };

    static void SetColor(tGLRGB& color, float r, float g, float b);
    static void SetColor(tGLRGBA& color, float r, float g, float b, float a);
    // Each value / 255.0.
    static void SetColor256(tGLRGB& color, int r, int g, int b);
    static void SetGray256(tGLRGB& color, int grey);
    static void UseColor(const tGLRGB& color);
    static void UseColor(const tGLRGBA& color);
    static void UseColor(cColor color);

    // ============================================================ [SECTION] rectangles and frames

    // Triangle strip (right, top), (left, top), (right, bottom), (left, bottom), integer vertices.
    static void RenderRect(tRect rect);
    // The same on the rectangle shrunk by `inset` on every side; an inset beyond half the size
    // crosses the sides over and is drawn as it comes.
    static void RenderRect(tRect rect, int inset);
    // Line loop (right, top), (left, top), (left, bottom), (right, bottom).
    static void RenderRectFrame(tRect rect);
    static void RenderRectFrame(tRect rect, int inset);
    // Only the four vertices (left, top), (right, top), (right, bottom), (left, bottom) at depth z,
    // for the caller's own glBegin/glEnd.
    static void RenderRectVertices(tRect rect, int z);
    // A blended fill and an opaque frame; blending is off and the frame colour current afterwards.
    static void RenderWindow(tRect rect, tGLRGBA fill, tGLRGBA frame);
    static void RenderWindow(int x, int y, int width, int height, tGLRGBA fill, tGLRGBA frame);

    // ============================================================ [SECTION] solids

    // Six quads of the box (x1, y1, z1)-(x2, y2, z2); the fifth glBegin block is left open on purpose
    // (see LGL.cpp), which also raises GL_INVALID_OPERATION.
    static void RenderRectCube(float x1, float y1, float x2, float y2, float z1, float z2);
    // A new display list in `list` holding a textured box with fixed face normals.
    static void buildCubeList(unsigned int& list, tRect r, int z1, int z2);
    // A line loop of `segments` points on a circle in the xy plane; none for segments <= 0.
    static void drawCircle(float radius, int segments);
    // A closed cylinder around the z axis, centred on the origin, `length` long.
    static void drawTube(double radius, double length, int segments);
    // An arrow from the origin along +z (see the header comment).
    static void drawArrow(double shaftRadius, double shaftLength, double headRadius, double headLength,
                          int segments);

    static constexpr int TUBE_TABLE_SIZE = 50;
    // Unit-circle points of the last drawTube or drawArrow: (tubeCos[k], tubeSin[k]).
    static float tubeCos[TUBE_TABLE_SIZE];
    static float tubeSin[TUBE_TABLE_SIZE];

    // ============================================================ [SECTION] fade

    // A full-screen fade to black counted in frames: 100 RenderFadeOut calls go from clear to black.
    static void InitFadeOut();
    static void RenderFadeOut();
    static bool InFadeOut();

    // 0.0 clear .. 1.0 black.
    static double fadeLevel;
    // The viewport read by InitFadeOut; kept for the game, the fade itself does not use it.
    static int fadeViewport[4];

    // ============================================================ [SECTION] occlusion

    // True when something already in the depth buffer lies in front of p; a point exactly on the
    // stored depth is visible.
    static bool isOccluded(SVector3D p);

    // ============================================================ [SECTION] text

    // GLUT's 9-by-15 bitmap font; every character advances 1.3 times its width, on purpose wider
    // than the font's own spacing.
    static void WriteString(char* text, int x, int y);
    static void WriteString(const char* text, int x, int y);

    // ============================================================ [SECTION] modelview helpers

    // v := upper-left 3 x 3 of the current modelview matrix times v (w untouched).
    static void RotateVectorWithGLMatrix(SVector3D& v);
    // The same with a caller's column-major 4 x 4 matrix.
    static void RotateVectorWithGLMatrix(SVector3D& v, float* matrix);
    // v := the current modelview matrix times (v, 1): rotation plus translation (w untouched).
    static void MoveVectorWithGLMatrix(SVector3D& v);

    // ============================================================ [SECTION] textures

    // glGenTextures(1, id).
    static void GenTexture(unsigned int* id);

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

    // One compressed level inside a tDDSImageData's pixel block.
    struct tDDSLevel {
        int level;
        int width;
        int height;
        std::size_t offset;
        std::size_t size;
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
    // The levels, from level 0, that lie wholly inside the record's pixel block (at most 32): what
    // CreateDDSTexture uploads.
    static std::vector<tDDSLevel> DDSLevels(const tDDSImageData* image);
    static void freeDDSImage(tDDSImageData* image);
};
