// fuzz_dib.cpp -- libFuzzer target: LoadDIBitmap over arbitrary bytes, and the round trip through
// SaveDIBitmap: what was loaded must save, and the saved file must load back to the same header,
// colour table, pixel block and (for uncompressed files) the same packed RGB picture.
#include <ostrum_core/LImage.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

const int kSide = 1024;

void releaseBmp(tImageBMP* image)
{
    if (image != nullptr) {
        std::free(image->data);
        std::free(image);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    BITMAPINFO* info = nullptr;
    char* bits = LImage::LoadDIBitmapFromMemory(data, size, &info, kSide);
    if (bits == nullptr) {
        if (info != nullptr)
            __builtin_trap();
        return 0;
    }
    int colours = LImage::DIBColorCount(info->bmiHeader);
    size_t bitsSize = LImage::DIBBitsSize(info->bmiHeader);
    if (colours < 0 || bitsSize == 0 || info->bmiHeader.biSize != 40)
        __builtin_trap();

    std::vector<unsigned char> saved;
    if (LImage::SaveDIBitmapToMemory(info, bits, saved) != 0)
        __builtin_trap();
    BITMAPINFO* info2 = nullptr;
    char* bits2 = LImage::LoadDIBitmapFromMemory(saved.data(), saved.size(), &info2, kSide);
    if (bits2 == nullptr || std::memcmp(&info->bmiHeader, &info2->bmiHeader, sizeof(BITMAPINFOHEADER)) != 0 ||
        std::memcmp(info->bmiColors, info2->bmiColors, static_cast<size_t>(colours) * sizeof(RGBQUAD)) != 0 ||
        LImage::DIBBitsSize(info2->bmiHeader) != bitsSize || std::memcmp(bits, bits2, bitsSize) != 0)
        __builtin_trap();

    bool rle = info->bmiHeader.biCompression == BI_RLE8 || info->bmiHeader.biCompression == BI_RLE4;
    if (!rle) {
        tImageBMP* original = LImage::LoadBMPFromMemory(data, size, kSide);
        tImageBMP* again = LImage::LoadBMPFromMemory(saved.data(), saved.size(), kSide);
        if ((original == nullptr) != (again == nullptr))
            __builtin_trap();
        if (original != nullptr &&
            (original->sizeX != again->sizeX || original->sizeY != again->sizeY ||
             std::memcmp(original->data, again->data, static_cast<size_t>(original->sizeX) * original->sizeY * 3) != 0))
            __builtin_trap();
        releaseBmp(original);
        releaseBmp(again);
    }
    std::free(info);
    std::free(bits);
    std::free(info2);
    std::free(bits2);
    return 0;
}
