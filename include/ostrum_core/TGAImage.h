// TGAImage.h -- a Truevision TGA picture loaded into RGB or RGBA bytes, bottom row first.
//
// Choices recorded here:
//  - Accepted files: true-colour (types 2 and 10) of 15, 16, 24 and 32 bits per pixel, grey (types 3
//    and 11) of 8 bits and colour-mapped (types 1 and 9) with 8- or 16-bit indices into a map of 15-,
//    16-, 24- or 32-bit entries; each uncompressed or run-length coded. Run-length packets may run on
//    from one row into the next, as some writers make them; a packet that runs past the last pixel
//    makes the file bad.
//  - `bpp` tells what `data` holds, not what the file held: 32 (RGBA) for 32-bit true-colour files
//    and for colour maps of 32-bit entries, 24 (RGB) for everything else. Grey pixels are repeated
//    into R, G and B, and 15/16-bit colours are widened to 8 bits per channel (their attribute bit is
//    dropped), so every caller can treat the image as RGB or RGBA. A 32-bit file's fourth byte is
//    delivered as alpha whatever the header says of its attribute bits.
//  - Byte order is converted from the file's BGR(A) to RGB(A). Rows are delivered bottom row first,
//    left to right, as glTexImage2D expects: a file stored top-down (origin bit 5) or right-to-left
//    (bit 4) is reordered.
//  - Images wider or higher than LImage::MaxImageSide (16384) pixels are refused, like every image of
//    ostrum_core.
//  - loadTGA returns 1 when the image was loaded and 0 otherwise. After a failure the image is empty:
//    data null, width, height and bpp 0. No message is printed.
//  - The pixels belong to the caller, who releases them with free: neither the destructor nor a later
//    loadTGA frees them (a second load simply replaces the pointer), so the object may be copied and
//    dropped freely.
#pragma once

#include <ostrum_core/LImage.h>

#include <cstddef>

class TGAImage {
public:
    unsigned char* data;
    int width;
    int height;
    int bpp;

    // The empty image: no pixels, all sizes 0.
    TGAImage();

    // Reads a TGA file through LFile::openFile; 1 on success, 0 on failure.
    int loadTGA(char* path);
    int loadTGA(const char* path);
    // The same parser over bytes already in memory.
    int loadTGAFromMemory(const unsigned char* bytes, size_t size, int maxSide = LImage::MaxImageSide);
};
