// fuzz_jpeg.cpp -- libFuzzer target: the JPEG loader over arbitrary bytes; libjpeg's fatal errors must
// come back as a null result, and nothing may leak on the way.
#include <ostrum_core/LImage.h>

#include <cstdint>
#include <cstdlib>

// Images are limited to 1024 pixels a side here so that each run stays fast; the checks are the same.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    int channels = -1;
    tImageJPG* image = LImage::LoadJPGFromMemory(data, size, channels, 1024);
    if (image == nullptr) {
        if (channels != 0)
            __builtin_trap();
        return 0;
    }
    if ((channels != 1 && channels != 3) || image->sizeX < 1 || image->sizeX > 1024 || image->sizeY < 1 ||
        image->sizeY > 1024 || image->rowSpan != image->sizeX * channels || image->data == nullptr)
        __builtin_trap();
    size_t bytes = static_cast<size_t>(image->rowSpan) * image->sizeY;
    unsigned sum = 0;
    for (size_t i = 0; i < bytes; ++i)
        sum += image->data[i];
    std::free(image->data);
    std::free(image);
    return static_cast<int>(sum & 0);
}
