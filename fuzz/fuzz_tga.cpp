// fuzz_tga.cpp -- libFuzzer target: the TGA reader over arbitrary bytes.
#include <ostrum_core/TGAImage.h>

#include <cstdint>
#include <cstdlib>

// Images are limited to 1024 pixels a side here so that each run stays fast; the checks are the same.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    TGAImage image;
    int loaded = image.loadTGAFromMemory(data, size, 1024);
    if (loaded == 0) {
        if (image.data != nullptr || image.width != 0 || image.height != 0 || image.bpp != 0)
            __builtin_trap();
        return 0;
    }
    if (image.width < 1 || image.width > 1024 || image.height < 1 || image.height > 1024 ||
        (image.bpp != 24 && image.bpp != 32) || image.data == nullptr)
        __builtin_trap();
    size_t bytes = static_cast<size_t>(image.width) * image.height * (image.bpp / 8);
    unsigned sum = 0;
    for (size_t i = 0; i < bytes; ++i)
        sum += image.data[i];
    std::free(image.data);
    return static_cast<int>(sum & 0);
}
