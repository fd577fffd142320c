// WinTypes.h -- the few Windows types that appear in the library's signatures, so that game code
// written against those signatures compiles unchanged on Linux.
#pragma once

#include <cstdint>

// A device context handle. Nothing in the library reads its value; fonts are built for the OpenGL
// context that is current on the calling thread, so nullptr is as good as any.
typedef void* HDC;

// Calling convention of OpenGL extension entry points; empty on Linux.
#ifndef APIENTRY
#define APIENTRY
#endif

// Compression values of BITMAPINFOHEADER::biCompression.
enum : uint32_t {
    BI_RGB = 0,
    BI_RLE8 = 1,
    BI_RLE4 = 2,
    BI_BITFIELDS = 3,
};

// The information header of a device-independent bitmap, laid out exactly as in a BMP file (40 bytes,
// little-endian fields).
struct BITMAPINFOHEADER {
    uint32_t biSize;
    int32_t biWidth;
    int32_t biHeight;
    uint16_t biPlanes;
    uint16_t biBitCount;
    uint32_t biCompression;
    uint32_t biSizeImage;
    int32_t biXPelsPerMeter;
    int32_t biYPelsPerMeter;
    uint32_t biClrUsed;
    uint32_t biClrImportant;
};
static_assert(sizeof(BITMAPINFOHEADER) == 40, "BITMAPINFOHEADER must match the file layout");

// One palette entry as stored in a BMP file: blue, green, red, reserved.
struct RGBQUAD {
    uint8_t rgbBlue;
    uint8_t rgbGreen;
    uint8_t rgbRed;
    uint8_t rgbReserved;
};
static_assert(sizeof(RGBQUAD) == 4, "RGBQUAD must match the file layout");

// Header plus palette. As on Windows, bmiColors is declared with one entry and a header with a palette
// is allocated with room for all of its entries behind it.
struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
};
