// fuzz_movie.cpp -- the movie decoder on arbitrary files: opening, frame lookup, seeking and scaling
// must never fault, whatever the container and codec data hold.
//
// Each input is written to a temporary file (the decoder reads movies by path), opened as a stream,
// its decompressor opened, and then frames are decoded in order, backwards and far ahead, each
// scaled into a 512 x 512 bitmap as LGLAVI does.
#include <ostrum_gl/platform/LGLMovieDecoder.h>

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

std::string inputPath()
{
    static const std::string path = [] {
        char name[] = "/tmp/fuzz_movie_XXXXXX";
        int fd = mkstemp(name);
        if (fd >= 0)
            close(fd);
        return std::string(name);
    }();
    return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = inputPath();
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    LGLMovieDecoder decoder;
    if (!decoder.openStream(path) || !decoder.openFrameDecoder())
        return 0;
    static std::vector<unsigned char> bits(512 * 512 * 3);
    LGLMovieDecoder::Scaler scaler;
    const int length = decoder.streamInfo().length;
    const int sequential = std::min(length, 12);
    for (int n = 0; n < sequential; ++n) {
        if (decoder.decodeFrame(n))
            scaler.draw(decoder, bits.data(), 512, 512);
    }
    for (int n : {length - 1, 0, length / 2, length / 3, length + 1, -1}) {
        if (decoder.decodeFrame(n))
            scaler.draw(decoder, bits.data(), 512, 512);
    }
    return 0;
}
