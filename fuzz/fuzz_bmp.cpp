// fuzz_bmp.cpp -- libFuzzer target: the BMP reader over arbitrary bytes.
#include <ostrum_core/LImage.h>

#include <cstdint>
#include <cstdlib>

// Images are limited to 1024 pixels a side here so that each run stays fast; the checks are the same.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    tImageBMP* image = LImage::LoadBMPFromMemory(data, size, 1024);
    if (image == nullptr)
        return 0;
    if (image->sizeX < 1 || image->sizeX > 1024 || image->sizeY < 1 || image->sizeY > 1024 || image->data == nullptr)
        __builtin_trap();
    // Touch every byte so that the sanitizers see a short buffer.
    size_t bytes = static_cast<size_t>(image->sizeX) * image->sizeY * 3;
    unsigned sum = 0;
    for (size_t i = 0; i < bytes; ++i)
        sum += image->data[i];
    std::free(image->data);
    std::free(image);
    return static_cast<int>(sum & 0);
}
