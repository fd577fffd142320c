// ImageTestFiles.h -- byte-level builders of small BMP and TGA files, and helpers that read pixels
// straight out of real test files, shared by the image reader tests.
#pragma once

#include "TestSupport.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace image_test {

using Rgb = std::array<int, 3>;

inline void put16(std::string& out, uint32_t v)
{
    out.push_back(static_cast<char>(v & 0xFF));
    out.push_back(static_cast<char>((v >> 8) & 0xFF));
}

inline void put32(std::string& out, uint32_t v)
{
    put16(out, v & 0xFFFF);
    put16(out, v >> 16);
}

inline uint32_t get16(const std::string& s, size_t at)
{
    return static_cast<unsigned char>(s[at]) | (static_cast<unsigned char>(s[at + 1]) << 8);
}

inline uint32_t get32(const std::string& s, size_t at)
{
    return get16(s, at) | (get16(s, at + 2) << 16);
}

inline const unsigned char* bytesOf(const std::string& s)
{
    return reinterpret_cast<const unsigned char*>(s.data());
}

inline std::string asset(const std::string& relative)
{
    return ostrum_test::readFile(ostrum_test::assetsDir() + "/" + relative);
}

inline std::string assetPath(const std::string& relative)
{
    return ostrum_test::assetsDir() + "/" + relative;
}

// What a bitmap file is made of; makeBmp lays it out as a writer would.
struct BmpPlan {
    int32_t width = 1;
    int32_t height = 1;
    uint16_t bpp = 24;
    uint32_t compression = 0;
    uint32_t infoSize = 40;        // 12 writes an OS/2 core header
    uint32_t clrUsed = 0;
    uint32_t sizeImage = 0;
    std::vector<uint32_t> masks;   // inside headers of 52 bytes and more, else right after the header
    std::vector<Rgb> palette;      // written as BGR0 (BGR for a core header)
    std::string pixels;            // the pixel block exactly as stored
    int64_t offBits = -1;          // -1: right after the palette
};

inline std::string makeBmp(const BmpPlan& plan)
{
    std::string info;
    put32(info, plan.infoSize);
    if (plan.infoSize == 12) {
        put16(info, static_cast<uint32_t>(plan.width));
        put16(info, static_cast<uint32_t>(plan.height));
        put16(info, 1);
        put16(info, plan.bpp);
    } else {
        put32(info, static_cast<uint32_t>(plan.width));
        put32(info, static_cast<uint32_t>(plan.height));
        put16(info, 1);
        put16(info, plan.bpp);
        put32(info, plan.compression);
        put32(info, plan.sizeImage);
        put32(info, 2835);
        put32(info, 2835);
        put32(info, plan.clrUsed);
        put32(info, 0);
        if (plan.infoSize > 40) {
            for (uint32_t mask : plan.masks)
                put32(info, mask);
        }
        info.resize(plan.infoSize, '\0');
    }
    std::string table;
    if (plan.infoSize <= 40) {
        for (uint32_t mask : plan.masks)
            put32(table, mask);
    }
    for (const Rgb& c : plan.palette) {
        table.push_back(static_cast<char>(c[2]));
        table.push_back(static_cast<char>(c[1]));
        table.push_back(static_cast<char>(c[0]));
        if (plan.infoSize != 12)
            table.push_back('\0');
    }
    uint32_t offBits = plan.offBits >= 0 ? static_cast<uint32_t>(plan.offBits)
                                         : static_cast<uint32_t>(14 + info.size() + table.size());
    std::string file = "BM";
    put32(file, static_cast<uint32_t>(14 + info.size() + table.size() + plan.pixels.size()));
    put32(file, 0);
    put32(file, offBits);
    return file + info + table + plan.pixels;
}

// A stored row padded with zero bytes to a whole number of 32-bit words.
inline std::string padRow(std::string row)
{
    while (row.size() % 4 != 0)
        row.push_back('\0');
    return row;
}

inline std::string bytes(std::initializer_list<int> values)
{
    std::string out;
    for (int v : values)
        out.push_back(static_cast<char>(v));
    return out;
}

// The colour of pixel (x, y), y counted from the bottom, of an uncompressed bottom-up bitmap file with
// a 40-byte or larger header, read straight from the file: palette lookup for 1-, 4- and 8-bit files,
// B, G, R bytes for 24- and 32-bit ones.
inline Rgb filePixel(const std::string& file, int x, int y)
{
    uint32_t offBits = get32(file, 10);
    uint32_t infoSize = get32(file, 14);
    int width = static_cast<int>(get32(file, 18));
    int bpp = static_cast<int>(get16(file, 28));
    size_t stride = (static_cast<size_t>(width) * bpp + 31) / 32 * 4;
    size_t row = offBits + static_cast<size_t>(y) * stride;
    if (bpp >= 24) {
        size_t at = row + static_cast<size_t>(x) * (bpp / 8);
        return Rgb{static_cast<unsigned char>(file[at + 2]), static_cast<unsigned char>(file[at + 1]),
                    static_cast<unsigned char>(file[at])};
    }
    size_t bit = static_cast<size_t>(x) * bpp;
    unsigned byte = static_cast<unsigned char>(file[row + bit / 8]);
    unsigned index = (byte >> (8 - bpp - bit % 8)) & ((1u << bpp) - 1);
    size_t entry = 14 + infoSize + index * 4;
    return Rgb{static_cast<unsigned char>(file[entry + 2]), static_cast<unsigned char>(file[entry + 1]),
               static_cast<unsigned char>(file[entry])};
}

inline Rgb pixelOf(const unsigned char* rgb, int width, int x, int y)
{
    const unsigned char* p = rgb + (static_cast<size_t>(y) * width + x) * 3;
    return Rgb{p[0], p[1], p[2]};
}

// An 18-byte TGA header.
struct TgaPlan {
    int idLength = 0;
    int mapType = 0;
    int imageType = 2;
    int mapFirst = 0;
    int mapLength = 0;
    int mapDepth = 0;
    int width = 1;
    int height = 1;
    int depth = 24;
    int descriptor = 0;
};

inline std::string tgaHeader(const TgaPlan& plan)
{
    std::string out;
    out.push_back(static_cast<char>(plan.idLength));
    out.push_back(static_cast<char>(plan.mapType));
    out.push_back(static_cast<char>(plan.imageType));
    put16(out, static_cast<uint32_t>(plan.mapFirst));
    put16(out, static_cast<uint32_t>(plan.mapLength));
    out.push_back(static_cast<char>(plan.mapDepth));
    put16(out, 0);
    put16(out, 0);
    put16(out, static_cast<uint32_t>(plan.width));
    put16(out, static_cast<uint32_t>(plan.height));
    out.push_back(static_cast<char>(plan.depth));
    out.push_back(static_cast<char>(plan.descriptor));
    return out;
}

}  // namespace image_test
