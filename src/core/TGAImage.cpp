// TGAImage.cpp -- the TGA reader: uncompressed and run-length true-colour, grey and colour-mapped files.
#include <ostrum_core/TGAImage.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

const size_t kHeaderBytes = 18;

enum TgaKind { TrueColour, Grey, Mapped };

uint16_t le16(const unsigned char* p)
{
    return static_cast<uint16_t>(p[0] | (p[1] << 8));
}

// One stored colour (a pixel or a colour-map entry) of `depth` bits into `channels` bytes of RGB(A).
void convertColour(const unsigned char* stored, int depth, unsigned char* out, int channels)
{
    unsigned char alpha = 255;
    if (depth == 8) {
        out[0] = out[1] = out[2] = stored[0];
    } else if (depth == 15 || depth == 16) {
        unsigned value = le16(stored);
        unsigned r = (value >> 10) & 0x1F;
        unsigned g = (value >> 5) & 0x1F;
        unsigned b = value & 0x1F;
        out[0] = static_cast<unsigned char>((r << 3) | (r >> 2));
        out[1] = static_cast<unsigned char>((g << 3) | (g >> 2));
        out[2] = static_cast<unsigned char>((b << 3) | (b >> 2));
    } else {
        out[0] = stored[2];
        out[1] = stored[1];
        out[2] = stored[0];
        if (depth == 32)
            alpha = stored[3];
    }
    if (channels == 4)
        out[3] = alpha;
}

struct TgaDecoder {
    TgaKind kind = TrueColour;
    int depth = 0;              // bits of one stored pixel
    size_t pixelBytes = 0;
    int channels = 3;           // bytes of one delivered pixel
    size_t width = 0;
    size_t height = 0;
    bool topDown = false;
    bool rightToLeft = false;
    unsigned mapFirst = 0;
    std::vector<unsigned char> map;  // colour map already converted, `channels` bytes an entry
    size_t mapLength = 0;
    unsigned char* out = nullptr;

    // One stored pixel into delivered bytes; false for an index outside the colour map.
    bool convert(const unsigned char* stored, unsigned char* pixel) const
    {
        if (kind != Mapped) {
            convertColour(stored, depth, pixel, channels);
            return true;
        }
        unsigned index = depth == 8 ? stored[0] : le16(stored);
        if (index < mapFirst || index - mapFirst >= mapLength)
            return false;
        std::memcpy(pixel, &map[(index - mapFirst) * static_cast<size_t>(channels)], static_cast<size_t>(channels));
        return true;
    }

    // Where the n-th pixel of the file goes in the bottom-up, left-to-right result.
    unsigned char* target(size_t n) const
    {
        size_t row = n / width;
        size_t column = n % width;
        if (topDown)
            row = height - 1 - row;
        if (rightToLeft)
            column = width - 1 - column;
        return out + (row * width + column) * static_cast<size_t>(channels);
    }

    bool decodeRaw(const unsigned char* data, size_t size) const
    {
        size_t total = width * height;
        if (size / pixelBytes < total)
            return false;
        for (size_t n = 0; n < total; ++n) {
            if (!convert(data + n * pixelBytes, target(n)))
                return false;
        }
        return true;
    }

    bool decodeRle(const unsigned char* data, size_t size) const
    {
        size_t total = width * height;
        size_t n = 0;
        size_t p = 0;
        unsigned char pixel[4];
        while (n < total) {
            if (p >= size)
                return false;
            unsigned packet = data[p++];
            size_t count = (packet & 0x7F) + 1;
            if (count > total - n)
                return false;
            if (packet & 0x80) {
                if (size - p < pixelBytes || !convert(data + p, pixel))
                    return false;
                p += pixelBytes;
                for (size_t i = 0; i < count; ++i, ++n)
                    std::memcpy(target(n), pixel, static_cast<size_t>(channels));
            } else {
                if ((size - p) / pixelBytes < count)
                    return false;
                for (size_t i = 0; i < count; ++i, ++n, p += pixelBytes) {
                    if (!convert(data + p, target(n)))
                        return false;
                }
            }
        }
        return true;
    }
};

}  // namespace

TGAImage::TGAImage() : data(nullptr), width(0), height(0), bpp(0) {}

int TGAImage::loadTGA(char* path)
{
    return loadTGA(const_cast<const char*>(path));
}

int TGAImage::loadTGA(const char* path)
{
    data = nullptr;
    width = height = bpp = 0;
    std::vector<unsigned char> bytes;
    if (!LImage::ReadFileBytes(path, bytes))
        return 0;
    return loadTGAFromMemory(bytes.data(), bytes.size());
}

int TGAImage::loadTGAFromMemory(const unsigned char* bytes, size_t size, int maxSide)
{
    data = nullptr;
    width = height = bpp = 0;
    if (maxSide > LImage::MaxImageSide)
        maxSide = LImage::MaxImageSide;
    if (bytes == nullptr || size < kHeaderBytes)
        return 0;
    size_t idLength = bytes[0];
    unsigned mapType = bytes[1];
    unsigned imageType = bytes[2];
    unsigned mapFirst = le16(bytes + 3);
    size_t mapLength = le16(bytes + 5);
    int mapDepth = bytes[7];
    int imageWidth = le16(bytes + 12);
    int imageHeight = le16(bytes + 14);
    int depth = bytes[16];
    unsigned descriptor = bytes[17];

    TgaDecoder decoder;
    bool rle = imageType >= 9;
    switch (imageType) {
    case 1:
    case 9:
        decoder.kind = Mapped;
        if (mapType != 1 || (depth != 8 && depth != 16) || mapLength == 0 ||
            (mapDepth != 15 && mapDepth != 16 && mapDepth != 24 && mapDepth != 32))
            return 0;
        break;
    case 2:
    case 10:
        decoder.kind = TrueColour;
        if (depth != 15 && depth != 16 && depth != 24 && depth != 32)
            return 0;
        break;
    case 3:
    case 11:
        decoder.kind = Grey;
        if (depth != 8)
            return 0;
        break;
    default:
        return 0;
    }
    if (mapType > 1 || imageWidth < 1 || imageHeight < 1 || imageWidth > maxSide || imageHeight > maxSide)
        return 0;

    // The colour map follows the image id; other image types may carry one too, which is skipped.
    size_t at = kHeaderBytes + idLength;
    size_t mapEntryBytes = (static_cast<size_t>(mapDepth) + 7) / 8;
    size_t mapBytes = mapType == 1 ? mapLength * mapEntryBytes : 0;
    if (at > size || size - at < mapBytes)
        return 0;
    decoder.depth = depth;
    decoder.pixelBytes = (static_cast<size_t>(depth) + 7) / 8;
    decoder.channels = (decoder.kind == TrueColour && depth == 32) || (decoder.kind == Mapped && mapDepth == 32) ? 4 : 3;
    decoder.width = static_cast<size_t>(imageWidth);
    decoder.height = static_cast<size_t>(imageHeight);
    decoder.topDown = (descriptor & 0x20) != 0;
    decoder.rightToLeft = (descriptor & 0x10) != 0;
    if (decoder.kind == Mapped) {
        decoder.mapFirst = mapFirst;
        decoder.mapLength = mapLength;
        decoder.map.resize(mapLength * static_cast<size_t>(decoder.channels));
        for (size_t i = 0; i < mapLength; ++i)
            convertColour(bytes + at + i * mapEntryBytes, mapDepth, &decoder.map[i * decoder.channels], decoder.channels);
    }
    at += mapBytes;

    size_t outBytes = decoder.width * decoder.height * static_cast<size_t>(decoder.channels);
    decoder.out = static_cast<unsigned char*>(std::malloc(outBytes));
    if (decoder.out == nullptr)
        return 0;
    bool ok = rle ? decoder.decodeRle(bytes + at, size - at) : decoder.decodeRaw(bytes + at, size - at);
    if (!ok) {
        std::free(decoder.out);
        return 0;
    }
    data = decoder.out;
    width = imageWidth;
    height = imageHeight;
    bpp = decoder.channels * 8;
    return 1;
}
