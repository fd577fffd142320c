// LImage.h -- static image loaders of ostrum_core: JPEG, BMP as packed RGB rows, and device-independent
// bitmaps read and written with their headers.
//
// Every loader reads the whole file through LFile::openFile (so resource names resolve without regard
// to letter case) and parses it from memory; the ...FromMemory entry points are the same parsers, for
// data that is already in memory and for the fuzz targets. No loader prints anything: failure is a null
// result, as the callers expect. Records and pixel blocks are taken with malloc; the caller frees the
// pixel block first, then the record, both with free.
//
// Choices recorded here:
//  - Size limit: no loader accepts an image wider or higher than MaxImageSide (16384) pixels, nor a
//    file larger than MaxFileBytes; such files give null before anything large is allocated. The
//    ...FromMemory entry points take a smaller limit when asked (the fuzz targets use one so that each
//    run stays fast); the checks are the same.
//  - LoadJPG decodes baseline, extended, progressive and arithmetic-coded 8-bit JPEG files. Rows come
//    top row first, as decoded; rowSpan is sizeX * channels (no padding). Grey files give channels 1,
//    colour files (YCbCr or RGB) channels 3. CMYK and YCCK files (printing photographs) are converted
//    to RGB and also give channels 3: a file with an Adobe marker stores inverted ink values, so
//    R = C * K / 255 (rounded) on the stored bytes; a file without it stores plain ink amounts, so
//    R = (255 - C) * (255 - K) / 255; G and B alike with M and Y. Any other layout (two components,
//    12-bit samples, unknown colour spaces) gives null. A file must be whole: one that ends before its
//    end-of-image marker, or whose coded data is corrupt (bad codes, a marker inside coded data), gives
//    null rather than a picture padded with invented grey. Harmless oddities the decoder reports as
//    warnings (stray bytes between markers, an odd progression order) are accepted. On failure
//    `channels` is set to 0.
//  - LoadBMP accepts Windows headers of 40 bytes and more (v3, v4, v5), OS/2 1.x core headers
//    (12 bytes, 3-byte palette entries) and OS/2 2.x headers; 1-, 2-, 4- and 8-bit paletted pixels,
//    uncompressed or RLE8/RLE4; 16- and 32-bit pixels plain (5-5-5 and 8-8-8) or with bit-field masks
//    (each channel scaled to 0..255, rounded); 24-bit pixels. The alpha of 32-bit files is dropped:
//    the record holds RGB only. Rows are delivered bottom row first; a top-down file is reordered.
//  - LoadBMP is strict about damage: a pixel data block shorter than its rows, a palette that does not
//    fit before the pixel data, a palette index past the end of the palette, and an RLE run or delta
//    that passes the end of its row or of the image all give null. RLE data must end with its
//    end-of-bitmap code or after the last row. Pixels that RLE data skips (with a delta or an early
//    end of line or bitmap) take palette entry 0.
//  - An OS/2 core header names no palette size; its palette is 2^bpp entries, or as many whole entries
//    as fit between the header and the pixel data when that is fewer.
//  - LoadDIBitmap returns the pixel block exactly as stored (rows in the file's order, padding kept,
//    RLE data still compressed) and a malloc'ed BITMAPINFO: a 40-byte header (biSize 40 whatever the
//    file held; OS/2 headers are converted and biClrUsed then counts their palette) followed by the
//    colour table as Windows lays it out: for BI_BITFIELDS the three masks (four for compression 6,
//    bit fields with alpha) first, then biClrUsed entries for 16-, 24- and 32-bit files; for paletted
//    files the palette, biClrUsed entries, or 2^bpp when biClrUsed is 0 or larger than that.
//    DIBColorCount gives that count.
//  - The block of LoadDIBitmap holds DIBBitsSize(header) bytes of the returned header. Uncompressed:
//    the padded rows, or biSizeImage when that is larger and the file holds it, so that a load and a
//    save give back the same file byte for byte; when the file does not hold the room its biSizeImage
//    claims, the returned header's biSizeImage is lowered to the rows' size. RLE: biSizeImage bytes
//    (the file must hold them), or the rest of the file when biSizeImage is 0, in which case the
//    returned header's biSizeImage is set to that size. Either way saving what was loaded never
//    reads past the block. Pixel values are not checked: the block is handed on as it is (a palette
//    index past the palette or damaged RLE data is the caller's business). JPEG- and PNG-compressed
//    bitmaps give null.
//  - SaveDIBitmap writes the 14-byte file header, the 40-byte info header, DIBColorCount entries of
//    the colour table and DIBBitsSize bytes of pixels, replacing the file. It returns 0 on success and
//    -1 on failure (null arguments, a header it cannot size, a file that cannot be opened or fully
//    written; a failed write may leave a partial file behind).
//  - LoadDIBitmap with a null `info` gives null; on failure `*info` is set to null.
#pragma once

#include <ostrum_core/WinTypes.h>

#include <cstddef>
#include <vector>

// A decoded JPEG picture: rows top first, `channels` bytes per pixel as LoadJPG reports.
struct tImageJPG {
    int rowSpan;
    int sizeX;
    int sizeY;
    unsigned char* data;
};

// A decoded BMP picture: tightly packed RGB bytes, bottom row first.
struct tImageBMP {
    int sizeX;
    int sizeY;
    unsigned char* data;
};

class LImage {
public:
    // Widest and highest image any loader accepts.
    static constexpr int MaxImageSide = 16384;
    // Largest file any loader reads: a 32-bit image of the largest size plus ample room for headers.
    static constexpr size_t MaxFileBytes = static_cast<size_t>(MaxImageSide) * MaxImageSide * 4 + (64u << 20);

    // Decodes a JPEG file; null on failure.
    static tImageJPG* LoadJPG(const char* path, int& channels);
    static tImageJPG* LoadJPGFromMemory(const unsigned char* bytes, size_t size, int& channels,
                                        int maxSide = MaxImageSide);

    // Decodes a BMP file into packed RGB rows, bottom row first; null on failure.
    static tImageBMP* LoadBMP(const char* path);
    static tImageBMP* LoadBMPFromMemory(const unsigned char* bytes, size_t size, int maxSide = MaxImageSide);

    // Reads a bitmap file: its pixel block as stored, and its header and colour table through `info`.
    static char* LoadDIBitmap(const char* path, BITMAPINFO** info);
    static char* LoadDIBitmapFromMemory(const unsigned char* bytes, size_t size, BITMAPINFO** info,
                                        int maxSide = MaxImageSide);
    // Writes a bitmap file; 0 on success, -1 on failure.
    static int SaveDIBitmap(const char* path, BITMAPINFO* info, char* bits);
    // The bytes SaveDIBitmap would write, appended to `out`; 0 on success, -1 when the header is unusable.
    static int SaveDIBitmapToMemory(const BITMAPINFO* info, const char* bits, std::vector<unsigned char>& out);

    // Entries of bmiColors that belong to a header (masks and palette); -1 for a header that makes no
    // sense (unknown depth or compression, a palette larger than 256 entries).
    static int DIBColorCount(const BITMAPINFOHEADER& header);
    // Bytes of the pixel block that belongs to a header; 0 for a header that makes no sense.
    static size_t DIBBitsSize(const BITMAPINFOHEADER& header);

    // The whole file, read through LFile::openFile; false when it cannot be opened or read, or is
    // larger than MaxFileBytes.
    static bool ReadFileBytes(const char* path, std::vector<unsigned char>& bytes);
};
