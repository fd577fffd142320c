// LImage.cpp -- the JPEG decoder wrapper, the BMP reader and the device-independent bitmap reader and
// writer of ostrum_core.
#include <ostrum_core/LImage.h>

#include <ostrum_core/LFile.h>

#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <jpeglib.h>
#include <jerror.h>

// ---------------------------------------------------------------------------------------------------
// [SECTION] Shared helpers
// ---------------------------------------------------------------------------------------------------

namespace {

const size_t kFileHeaderBytes = 14;
const size_t kInfoHeaderBytes = 40;
// Windows CE's bit fields with an alpha mask: four masks instead of three.
const uint32_t kAlphaBitfields = 6;

uint16_t le16(const unsigned char* p)
{
    return static_cast<uint16_t>(p[0] | (p[1] << 8));
}

uint32_t le32(const unsigned char* p)
{
    return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
           (static_cast<uint32_t>(p[2]) << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

void putLe16(std::vector<unsigned char>& out, uint32_t value)
{
    out.push_back(static_cast<unsigned char>(value & 0xFF));
    out.push_back(static_cast<unsigned char>((value >> 8) & 0xFF));
}

void putLe32(std::vector<unsigned char>& out, uint32_t value)
{
    putLe16(out, value & 0xFFFF);
    putLe16(out, value >> 16);
}

bool isPaletteDepth(int bpp)
{
    return bpp == 1 || bpp == 2 || bpp == 4 || bpp == 8;
}

// Bytes of one stored row of a bitmap: whole 32-bit words.
uint64_t dibStride(uint64_t width, uint64_t bpp)
{
    return (width * bpp + 31) / 32 * 4;
}

// Width and height within 1..maxSide (the height's sign only tells the row order).
bool dibSizeFits(int64_t width, int64_t height, int maxSide)
{
    int64_t rows = height < 0 ? -height : height;
    return width >= 1 && width <= maxSide && rows >= 1 && rows <= maxSide;
}

}  // namespace

bool LImage::ReadFileBytes(const char* path, std::vector<unsigned char>& bytes)
{
    bytes.clear();
    if (path == nullptr)
        return false;
    std::FILE* file = LFile::openFile(path, "rb");
    if (file == nullptr)
        return false;
    bool ok = std::fseek(file, 0, SEEK_END) == 0;
    long length = ok ? std::ftell(file) : -1;
    ok = length >= 0 && static_cast<unsigned long>(length) <= MaxFileBytes && std::fseek(file, 0, SEEK_SET) == 0;
    if (ok) {
        try {
            bytes.resize(static_cast<size_t>(length));
        } catch (const std::bad_alloc&) {
            ok = false;
        }
    }
    if (ok && length > 0)
        ok = std::fread(bytes.data(), 1, bytes.size(), file) == bytes.size();
    std::fclose(file);
    if (!ok) {
        bytes.clear();
        bytes.shrink_to_fit();
    }
    return ok;
}

// ---------------------------------------------------------------------------------------------------
// [SECTION] Bitmap headers: one parser for LoadBMP and LoadDIBitmap
// ---------------------------------------------------------------------------------------------------

int LImage::DIBColorCount(const BITMAPINFOHEADER& header)
{
    int bpp = header.biBitCount;
    uint32_t compression = header.biCompression;
    if (isPaletteDepth(bpp)) {
        bool fits = compression == BI_RGB || (compression == BI_RLE8 && bpp == 8) ||
                    (compression == BI_RLE4 && bpp == 4);
        if (!fits)
            return -1;
        uint32_t most = 1u << bpp;
        return static_cast<int>(header.biClrUsed == 0 || header.biClrUsed > most ? most : header.biClrUsed);
    }
    if (bpp != 16 && bpp != 24 && bpp != 32)
        return -1;
    if (header.biClrUsed > 256)
        return -1;
    int masks = 0;
    if (compression == BI_BITFIELDS)
        masks = 3;
    else if (compression == kAlphaBitfields)
        masks = 4;
    else if (compression != BI_RGB)
        return -1;
    if (masks > 0 && bpp == 24)
        return -1;
    return masks + static_cast<int>(header.biClrUsed);
}

size_t LImage::DIBBitsSize(const BITMAPINFOHEADER& header)
{
    if (DIBColorCount(header) < 0 || !dibSizeFits(header.biWidth, header.biHeight, MaxImageSide))
        return 0;
    bool rle = header.biCompression == BI_RLE8 || header.biCompression == BI_RLE4;
    if (rle)
        return header.biHeight > 0 ? header.biSizeImage : 0;
    int64_t rows = header.biHeight < 0 ? -static_cast<int64_t>(header.biHeight) : header.biHeight;
    uint64_t bytes = dibStride(static_cast<uint64_t>(header.biWidth), header.biBitCount) * static_cast<uint64_t>(rows);
    return static_cast<size_t>(header.biSizeImage > bytes ? header.biSizeImage : bytes);
}

namespace {

// One colour channel of a 16- or 32-bit pixel: where its bits are and how many there are.
struct BitChannel {
    uint32_t mask = 0;
    int shift = 0;
    uint32_t top = 0;  // largest value of the channel, 0 when the mask is empty

    unsigned char scale(uint32_t pixel) const
    {
        if (top == 0)
            return 0;
        uint64_t value = (pixel & mask) >> shift;
        return static_cast<unsigned char>((value * 255 + top / 2) / top);
    }
};

// A mask must be one run of set bits inside the pixel.
bool makeChannel(uint32_t mask, int bpp, BitChannel& channel)
{
    channel = BitChannel();
    if (mask == 0)
        return true;
    if (bpp < 32 && (mask >> bpp) != 0)
        return false;
    int shift = 0;
    while (((mask >> shift) & 1u) == 0)
        ++shift;
    uint64_t run = static_cast<uint64_t>(mask) >> shift;
    if ((run & (run + 1)) != 0)
        return false;
    channel.mask = mask;
    channel.shift = shift;
    channel.top = static_cast<uint32_t>(run);
    return true;
}

// Everything the headers of a bitmap file say, checked against the file's length.
struct BmpLayout {
    BITMAPINFOHEADER header;          // the 40-byte form handed out by LoadDIBitmap
    int width = 0;
    int rows = 0;
    bool topDown = false;
    std::vector<uint32_t> masks;      // as stored, for the colour table (3 or 4, or none)
    BitChannel channels[3];           // red, green, blue of 16- and 32-bit pixels
    std::vector<RGBQUAD> palette;     // the colours after the masks
    size_t pixelOffset = 0;
    uint64_t stride = 0;
};

bool parseBmpHeaders(const unsigned char* bytes, size_t size, int maxSide, BmpLayout& layout)
{
    if (bytes == nullptr || size < kFileHeaderBytes + 12 || bytes[0] != 'B' || bytes[1] != 'M')
        return false;
    uint32_t offBits = le32(bytes + 10);
    uint32_t infoSize = le32(bytes + 14);
    if (infoSize < 12 || infoSize > size - kFileHeaderBytes || (infoSize > 12 && infoSize < 16))
        return false;
    const unsigned char* info = bytes + kFileHeaderBytes;
    bool core = infoSize == 12;
    // OS/2 2.x headers share the first fields with Windows ones, but their compression codes 3 and 4
    // mean Huffman and RLE24, neither of which is read here.
    bool os2v2 = infoSize == 64 || (infoSize > 12 && infoSize < 40);

    BITMAPINFOHEADER& h = layout.header;
    std::memset(&h, 0, sizeof h);
    h.biSize = kInfoHeaderBytes;
    if (core) {
        h.biWidth = le16(info + 4);
        h.biHeight = le16(info + 6);
        h.biPlanes = le16(info + 8);
        h.biBitCount = le16(info + 10);
    } else {
        h.biWidth = static_cast<int32_t>(le32(info + 4));
        h.biHeight = static_cast<int32_t>(le32(info + 8));
        h.biPlanes = le16(info + 12);
        h.biBitCount = le16(info + 14);
        uint32_t* later[] = {&h.biCompression, &h.biSizeImage, nullptr, nullptr, &h.biClrUsed, &h.biClrImportant};
        for (size_t i = 0; i < 6; ++i) {
            size_t at = 16 + 4 * i;
            if (infoSize < at + 4)
                break;
            if (i == 2)
                h.biXPelsPerMeter = static_cast<int32_t>(le32(info + at));
            else if (i == 3)
                h.biYPelsPerMeter = static_cast<int32_t>(le32(info + at));
            else
                *later[i] = le32(info + at);
        }
    }

    if (!dibSizeFits(h.biWidth, h.biHeight, maxSide))
        return false;
    int bpp = h.biBitCount;
    if (!isPaletteDepth(bpp) && bpp != 16 && bpp != 24 && bpp != 32)
        return false;
    if (os2v2 && h.biCompression > BI_RLE4)
        return false;
    layout.width = h.biWidth;
    layout.topDown = h.biHeight < 0;
    layout.rows = layout.topDown ? -h.biHeight : h.biHeight;
    bool rle = h.biCompression == BI_RLE8 || h.biCompression == BI_RLE4;
    if (rle && layout.topDown)
        return false;  // compressed bitmaps are always stored bottom-up

    // Masks: inside a header of 52 bytes or more, else right behind a 40-byte header.
    size_t tableStart = kFileHeaderBytes + infoSize;
    size_t maskCount = h.biCompression == BI_BITFIELDS ? 3 : (h.biCompression == kAlphaBitfields ? 4 : 0);
    if (maskCount > 0) {
        const unsigned char* at = nullptr;
        if (!os2v2 && infoSize >= kInfoHeaderBytes + 4 * maskCount) {
            at = info + kInfoHeaderBytes;
        } else {
            if (size - tableStart < 4 * maskCount)
                return false;
            at = bytes + tableStart;
            tableStart += 4 * maskCount;
        }
        for (size_t i = 0; i < maskCount; ++i)
            layout.masks.push_back(le32(at + 4 * i));
    }

    int tableCount = 0;
    size_t entryBytes = core ? 3 : 4;
    if (core) {
        // An OS/2 core header names no palette size: as many entries as fit before the pixels.
        if (!isPaletteDepth(bpp))
            return false;
        size_t room = offBits > tableStart ? (offBits - tableStart) / 3 : 0;
        size_t most = size_t(1) << bpp;
        h.biClrUsed = static_cast<uint32_t>(room < most ? room : most);
        if (h.biClrUsed == 0)
            return false;
    }
    tableCount = LImage::DIBColorCount(h);
    if (tableCount < 0)
        return false;
    size_t paletteCount = static_cast<size_t>(tableCount) - layout.masks.size();
    if (paletteCount > (size - tableStart) / entryBytes)
        return false;
    size_t tableEnd = tableStart + paletteCount * entryBytes;
    if (offBits < tableEnd || offBits > size)
        return false;
    layout.palette.resize(paletteCount);
    for (size_t i = 0; i < paletteCount; ++i) {
        const unsigned char* entry = bytes + tableStart + i * entryBytes;
        layout.palette[i].rgbBlue = entry[0];
        layout.palette[i].rgbGreen = entry[1];
        layout.palette[i].rgbRed = entry[2];
        layout.palette[i].rgbReserved = core ? 0 : entry[3];
    }

    if (bpp == 16 || bpp == 32) {
        uint32_t masks[3];
        if (!layout.masks.empty()) {
            for (int i = 0; i < 3; ++i)
                masks[i] = layout.masks[i];
        } else if (bpp == 16) {
            masks[0] = 0x7C00;
            masks[1] = 0x03E0;
            masks[2] = 0x001F;
        } else {
            masks[0] = 0x00FF0000;
            masks[1] = 0x0000FF00;
            masks[2] = 0x000000FF;
        }
        for (int i = 0; i < 3; ++i) {
            if (!makeChannel(masks[i], bpp, layout.channels[i]))
                return false;
        }
    }
    layout.pixelOffset = offBits;
    layout.stride = dibStride(static_cast<uint64_t>(layout.width), static_cast<uint64_t>(bpp));
    return true;
}

// ---------------------------------------------------------------------------------------------------
// [SECTION] BMP pixels
// ---------------------------------------------------------------------------------------------------

bool putPaletteColour(const BmpLayout& layout, unsigned index, unsigned char* rgb)
{
    if (index >= layout.palette.size())
        return false;
    const RGBQUAD& colour = layout.palette[index];
    rgb[0] = colour.rgbRed;
    rgb[1] = colour.rgbGreen;
    rgb[2] = colour.rgbBlue;
    return true;
}

// One stored row of uncompressed pixels into packed RGB.
bool decodeBmpRow(const BmpLayout& layout, const unsigned char* row, unsigned char* rgb)
{
    int bpp = layout.header.biBitCount;
    for (int x = 0; x < layout.width; ++x, rgb += 3) {
        if (bpp <= 8) {
            size_t bit = static_cast<size_t>(x) * bpp;
            unsigned shift = 8 - bpp - static_cast<unsigned>(bit % 8);
            unsigned index = (row[bit / 8] >> shift) & ((1u << bpp) - 1);
            if (!putPaletteColour(layout, index, rgb))
                return false;
        } else if (bpp == 24) {
            const unsigned char* p = row + static_cast<size_t>(x) * 3;
            rgb[0] = p[2];
            rgb[1] = p[1];
            rgb[2] = p[0];
        } else {
            uint32_t pixel = bpp == 16 ? le16(row + static_cast<size_t>(x) * 2) : le32(row + static_cast<size_t>(x) * 4);
            for (int c = 0; c < 3; ++c)
                rgb[c] = layout.channels[c].scale(pixel);
        }
    }
    return true;
}

// RLE8 / RLE4 data into one palette index per pixel (bottom row first). Pixels the data skips stay 0.
bool decodeBmpRle(const BmpLayout& layout, const unsigned char* data, size_t size, unsigned char* indices)
{
    bool rle8 = layout.header.biCompression == BI_RLE8;
    size_t width = static_cast<size_t>(layout.width);
    size_t rows = static_cast<size_t>(layout.rows);
    size_t x = 0;
    size_t y = 0;
    size_t p = 0;
    for (;;) {
        if (size - p < 2)
            return y >= rows;  // data may end without its end code once every row is done
        unsigned first = data[p];
        unsigned second = data[p + 1];
        p += 2;
        if (first > 0) {
            if (y >= rows || first > width - x)
                return false;
            unsigned char* out = indices + y * width + x;
            for (unsigned i = 0; i < first; ++i)
                out[i] = static_cast<unsigned char>(rle8 ? second : ((i & 1) ? (second & 0x0F) : (second >> 4)));
            x += first;
        } else if (second == 0) {
            x = 0;
            if (++y > rows)
                return false;
        } else if (second == 1) {
            return true;
        } else if (second == 2) {
            if (size - p < 2)
                return false;
            x += data[p];
            y += data[p + 1];
            p += 2;
            if (x > width || y > rows)
                return false;
        } else {
            size_t count = second;
            size_t stored = rle8 ? count : (count + 1) / 2;
            if (size - p < stored || y >= rows || count > width - x)
                return false;
            unsigned char* out = indices + y * width + x;
            for (size_t i = 0; i < count; ++i) {
                unsigned char byte = data[p + (rle8 ? i : i / 2)];
                out[i] = static_cast<unsigned char>(rle8 ? byte : ((i & 1) ? (byte & 0x0F) : (byte >> 4)));
            }
            x += count;
            // Absolute runs are padded to a 16-bit boundary.
            size_t padded = stored + (stored & 1);
            p += padded < size - p ? padded : size - p;
        }
    }
}

}  // namespace

tImageBMP* LImage::LoadBMPFromMemory(const unsigned char* bytes, size_t size, int maxSide)
{
    if (maxSide > MaxImageSide)
        maxSide = MaxImageSide;
    BmpLayout layout;
    if (!parseBmpHeaders(bytes, size, maxSide, layout))
        return nullptr;
    size_t width = static_cast<size_t>(layout.width);
    size_t rows = static_cast<size_t>(layout.rows);
    const unsigned char* pixels = bytes + layout.pixelOffset;
    size_t available = size - layout.pixelOffset;
    bool rle = layout.header.biCompression == BI_RLE8 || layout.header.biCompression == BI_RLE4;
    if (!rle && layout.stride * rows > available)
        return nullptr;

    unsigned char* rgb = static_cast<unsigned char*>(std::malloc(width * rows * 3));
    if (rgb == nullptr)
        return nullptr;
    bool ok = true;
    if (rle) {
        unsigned char* indices = static_cast<unsigned char*>(std::calloc(width * rows, 1));
        ok = indices != nullptr && decodeBmpRle(layout, pixels, available, indices);
        for (size_t i = 0; ok && i < width * rows; ++i)
            ok = putPaletteColour(layout, indices[i], rgb + i * 3);
        std::free(indices);
    } else {
        for (size_t r = 0; ok && r < rows; ++r) {
            size_t target = layout.topDown ? rows - 1 - r : r;
            ok = decodeBmpRow(layout, pixels + r * layout.stride, rgb + target * width * 3);
        }
    }
    tImageBMP* image = ok ? static_cast<tImageBMP*>(std::malloc(sizeof(tImageBMP))) : nullptr;
    if (image == nullptr) {
        std::free(rgb);
        return nullptr;
    }
    image->sizeX = layout.width;
    image->sizeY = layout.rows;
    image->data = rgb;
    return image;
}

tImageBMP* LImage::LoadBMP(const char* path)
{
    std::vector<unsigned char> bytes;
    if (!ReadFileBytes(path, bytes))
        return nullptr;
    return LoadBMPFromMemory(bytes.data(), bytes.size());
}

// ---------------------------------------------------------------------------------------------------
// [SECTION] Device-independent bitmaps
// ---------------------------------------------------------------------------------------------------

char* LImage::LoadDIBitmapFromMemory(const unsigned char* bytes, size_t size, BITMAPINFO** info, int maxSide)
{
    if (info == nullptr)
        return nullptr;
    *info = nullptr;
    if (maxSide > MaxImageSide)
        maxSide = MaxImageSide;
    BmpLayout layout;
    if (!parseBmpHeaders(bytes, size, maxSide, layout))
        return nullptr;
    BITMAPINFOHEADER& header = layout.header;
    size_t available = size - layout.pixelOffset;
    size_t block = 0;
    if (header.biCompression == BI_RLE8 || header.biCompression == BI_RLE4) {
        if (header.biSizeImage == 0)
            header.biSizeImage = static_cast<uint32_t>(available);
        block = header.biSizeImage;
        if (block == 0 || block > available)
            return nullptr;
    } else {
        uint64_t rowBytes = layout.stride * static_cast<uint64_t>(layout.rows);
        if (rowBytes > available)
            return nullptr;
        block = static_cast<size_t>(rowBytes);
        if (header.biSizeImage > rowBytes) {
            // Room the header claims beyond the rows is kept when the file holds it, so that a save
            // gives the file back unchanged; otherwise the header is made to match what is handed out.
            if (header.biSizeImage <= available)
                block = header.biSizeImage;
            else
                header.biSizeImage = static_cast<uint32_t>(rowBytes);
        }
    }
    if (DIBBitsSize(header) != block)
        return nullptr;

    size_t colours = layout.masks.size() + layout.palette.size();
    size_t infoBytes = sizeof(BITMAPINFOHEADER) + (colours > 0 ? colours : 1) * sizeof(RGBQUAD);
    BITMAPINFO* header_block = static_cast<BITMAPINFO*>(std::malloc(infoBytes));
    char* bits = static_cast<char*>(std::malloc(block));
    if (header_block == nullptr || bits == nullptr) {
        std::free(header_block);
        std::free(bits);
        return nullptr;
    }
    std::memset(header_block, 0, infoBytes);
    header_block->bmiHeader = header;
    RGBQUAD* table = header_block->bmiColors;
    for (size_t i = 0; i < layout.masks.size(); ++i) {
        uint32_t mask = layout.masks[i];
        std::memcpy(&table[i], &mask, sizeof mask);
    }
    for (size_t i = 0; i < layout.palette.size(); ++i)
        table[layout.masks.size() + i] = layout.palette[i];
    std::memcpy(bits, bytes + layout.pixelOffset, block);
    *info = header_block;
    return bits;
}

char* LImage::LoadDIBitmap(const char* path, BITMAPINFO** info)
{
    if (info != nullptr)
        *info = nullptr;
    std::vector<unsigned char> bytes;
    if (info == nullptr || !ReadFileBytes(path, bytes))
        return nullptr;
    return LoadDIBitmapFromMemory(bytes.data(), bytes.size(), info);
}

int LImage::SaveDIBitmapToMemory(const BITMAPINFO* info, const char* bits, std::vector<unsigned char>& out)
{
    if (info == nullptr || bits == nullptr)
        return -1;
    const BITMAPINFOHEADER& h = info->bmiHeader;
    int colours = DIBColorCount(h);
    size_t bitsSize = DIBBitsSize(h);
    if (colours < 0 || bitsSize == 0)
        return -1;
    uint64_t offBits = kFileHeaderBytes + kInfoHeaderBytes + static_cast<uint64_t>(colours) * 4;
    uint64_t total = offBits + bitsSize;
    if (total > 0xFFFFFFFFu)
        return -1;
    try {
        out.reserve(out.size() + static_cast<size_t>(total));
        out.push_back('B');
        out.push_back('M');
        putLe32(out, static_cast<uint32_t>(total));
        putLe32(out, 0);
        putLe32(out, static_cast<uint32_t>(offBits));
        putLe32(out, kInfoHeaderBytes);
        putLe32(out, static_cast<uint32_t>(h.biWidth));
        putLe32(out, static_cast<uint32_t>(h.biHeight));
        putLe16(out, h.biPlanes);
        putLe16(out, h.biBitCount);
        putLe32(out, h.biCompression);
        putLe32(out, h.biSizeImage);
        putLe32(out, static_cast<uint32_t>(h.biXPelsPerMeter));
        putLe32(out, static_cast<uint32_t>(h.biYPelsPerMeter));
        putLe32(out, h.biClrUsed);
        putLe32(out, h.biClrImportant);
        const unsigned char* table = reinterpret_cast<const unsigned char*>(info->bmiColors);
        out.insert(out.end(), table, table + static_cast<size_t>(colours) * 4);
        out.insert(out.end(), bits, bits + bitsSize);
    } catch (const std::bad_alloc&) {
        return -1;
    }
    return 0;
}

int LImage::SaveDIBitmap(const char* path, BITMAPINFO* info, char* bits)
{
    if (path == nullptr)
        return -1;
    std::vector<unsigned char> bytes;
    if (SaveDIBitmapToMemory(info, bits, bytes) != 0)
        return -1;
    std::FILE* file = LFile::openFile(path, "wb");
    if (file == nullptr)
        return -1;
    bool ok = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    if (std::fclose(file) != 0)
        ok = false;
    return ok ? 0 : -1;
}

// ---------------------------------------------------------------------------------------------------
// [SECTION] JPEG
// ---------------------------------------------------------------------------------------------------

namespace {

// libjpeg reports fatal errors through error_exit, which must not return: it jumps back to the
// decoder's set-up point so that a corrupt file ends in a null result instead of ending the process.
struct JpegErrorManager {
    jpeg_error_mgr pub;
    std::jmp_buf jump;
};

[[noreturn]] void jpegErrorExit(j_common_ptr cinfo)
{
    std::longjmp(reinterpret_cast<JpegErrorManager*>(cinfo->err)->jump, 1);
}

// Warnings that mean missing or damaged picture data end the decode; the rest are counted and ignored.
void jpegEmitMessage(j_common_ptr cinfo, int level)
{
    if (level >= 0)
        return;
    switch (cinfo->err->msg_code) {
    case JWRN_JPEG_EOF:
    case JWRN_HIT_MARKER:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_ARITH_BAD_CODE:
    case JWRN_MUST_RESYNC:
        jpegErrorExit(cinfo);
    default:
        cinfo->err->num_warnings++;
        break;
    }
}

// The library prints nothing on its own.
void jpegOutputMessage(j_common_ptr) {}

struct JpegJob {
    jpeg_decompress_struct cinfo;
    JpegErrorManager err;
    // Written between setjmp and a possible longjmp and read after it, hence volatile.
    unsigned char* volatile pixels;
    unsigned char* volatile cmykRow;
    volatile int channels;
};

// Adobe writers store CMYK inverted (255 = no ink); others store plain ink amounts.
unsigned char inkToLight(unsigned ink, unsigned black, bool inverted)
{
    if (!inverted) {
        ink = 255 - ink;
        black = 255 - black;
    }
    return static_cast<unsigned char>((ink * black + 127) / 255);
}

// Everything that may jump lives in this one frame; it keeps no state of its own that is read after
// a jump, so every result travels through `job`.
bool runJpegDecode(JpegJob& job, const unsigned char* bytes, size_t size, int maxSide)
{
    if (setjmp(job.err.jump) != 0)
        return false;
    jpeg_create_decompress(&job.cinfo);
    jpeg_mem_src(&job.cinfo, bytes, static_cast<unsigned long>(size));
    jpeg_read_header(&job.cinfo, TRUE);
    jpeg_decompress_struct& cinfo = job.cinfo;
    if (cinfo.image_width < 1 || cinfo.image_height < 1 || cinfo.image_width > static_cast<unsigned>(maxSide) ||
        cinfo.image_height > static_cast<unsigned>(maxSide))
        return false;
    bool cmyk = false;
    switch (cinfo.jpeg_color_space) {
    case JCS_GRAYSCALE:
        cinfo.out_color_space = JCS_GRAYSCALE;
        job.channels = 1;
        break;
    case JCS_YCbCr:
    case JCS_RGB:
        cinfo.out_color_space = JCS_RGB;
        job.channels = 3;
        break;
    case JCS_CMYK:
    case JCS_YCCK:
        cinfo.out_color_space = JCS_CMYK;
        job.channels = 3;
        cmyk = true;
        break;
    default:
        return false;
    }
    jpeg_start_decompress(&cinfo);
    int expected = cmyk ? 4 : job.channels;
    if (cinfo.output_width != cinfo.image_width || cinfo.output_height != cinfo.image_height ||
        cinfo.output_components != expected)
        return false;
    size_t width = cinfo.output_width;
    size_t rowSpan = width * static_cast<size_t>(job.channels);
    job.pixels = static_cast<unsigned char*>(std::malloc(rowSpan * cinfo.output_height));
    if (job.pixels == nullptr)
        return false;
    if (cmyk) {
        job.cmykRow = static_cast<unsigned char*>(std::malloc(width * 4));
        if (job.cmykRow == nullptr)
            return false;
    }
    bool inverted = cinfo.saw_Adobe_marker != 0;
    while (cinfo.output_scanline < cinfo.output_height) {
        size_t line = cinfo.output_scanline;
        unsigned char* target = job.pixels + line * rowSpan;
        JSAMPROW row = cmyk ? job.cmykRow : target;
        if (jpeg_read_scanlines(&cinfo, &row, 1) != 1)
            return false;
        if (cmyk) {
            const unsigned char* ink = job.cmykRow;
            for (size_t x = 0; x < width; ++x, ink += 4, target += 3) {
                target[0] = inkToLight(ink[0], ink[3], inverted);
                target[1] = inkToLight(ink[1], ink[3], inverted);
                target[2] = inkToLight(ink[2], ink[3], inverted);
            }
        }
    }
    // Reading on to the end-of-image marker is what tells a whole file from a truncated one.
    jpeg_finish_decompress(&cinfo);
    return true;
}

}  // namespace

tImageJPG* LImage::LoadJPGFromMemory(const unsigned char* bytes, size_t size, int& channels, int maxSide)
{
    channels = 0;
    if (bytes == nullptr || size == 0)
        return nullptr;
    if (maxSide > MaxImageSide)
        maxSide = MaxImageSide;
    JpegJob job;
    std::memset(static_cast<void*>(&job), 0, sizeof job);
    job.cinfo.err = jpeg_std_error(&job.err.pub);
    job.err.pub.error_exit = jpegErrorExit;
    job.err.pub.emit_message = jpegEmitMessage;
    job.err.pub.output_message = jpegOutputMessage;
    bool ok = runJpegDecode(job, bytes, size, maxSide);
    int width = static_cast<int>(job.cinfo.output_width);
    int height = static_cast<int>(job.cinfo.output_height);
    jpeg_destroy_decompress(&job.cinfo);
    std::free(job.cmykRow);
    tImageJPG* image = ok ? static_cast<tImageJPG*>(std::malloc(sizeof(tImageJPG))) : nullptr;
    if (image == nullptr) {
        std::free(job.pixels);
        return nullptr;
    }
    channels = job.channels;
    image->rowSpan = width * channels;
    image->sizeX = width;
    image->sizeY = height;
    image->data = job.pixels;
    return image;
}

tImageJPG* LImage::LoadJPG(const char* path, int& channels)
{
    channels = 0;
    std::vector<unsigned char> bytes;
    if (!ReadFileBytes(path, bytes))
        return nullptr;
    return LoadJPGFromMemory(bytes.data(), bytes.size(), channels);
}
