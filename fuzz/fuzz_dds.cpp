// fuzz_dds.cpp -- libFuzzer target for LGL's DDS reader: any bytes give a record or nothing, and every
// level that CreateDDSTexture would upload lies inside the bytes the reader took from the file.
//
// Seeds in fuzz/corpus/dds: dxt1_3x2.dds (mosra/magnum-plugins, MIT) and dxt5_4x4_trailing.dds
// (python-pillow/Pillow, MIT-CMU) come from the shared test assets; the others were written for this
// target: small DXT1/3/5 chains, a zero linear size, no mipmap count, a cut data block, a header that
// claims huge sizes and counts, an uncompressed and a DX10 file, a cut header and a bad magic.
#include <ostrum_gl/frame/LGL.h>
#include <ostrum_gl/platform/LGLPlatform.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace {

void ignoreMessage(const std::string&, const std::string&) {}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool quiet = (LGLPlatform::setMessageHandler(ignoreMessage), true);
    (void)quiet;

    // fmemopen refuses an empty buffer; an empty file is a one-byte file cut short by the size limit.
    static uint8_t empty = 0;
    std::FILE* stream = size > 0 ? fmemopen(const_cast<uint8_t*>(data), size, "rb") : fmemopen(&empty, 1, "r");
    if (stream == nullptr)
        return 0;
    if (size == 0)
        std::fgetc(stream);
    LGL::tDDSImageData* image = LGL::loadDDSTextureStream(stream, "fuzz.dds");
    std::fclose(stream);
    if (image == nullptr)
        return 0;

    if (image->dataSize > size)
        __builtin_trap();
    // Touch every byte the upload would hand to OpenGL, so that the sanitizer sees any overrun.
    unsigned checksum = 0;
    size_t end = 0;
    for (const LGL::tDDSLevel& level : LGL::DDSLevels(image)) {
        if (level.offset != end || level.offset + level.size > image->dataSize || level.width < 1 || level.height < 1 ||
            level.size != LGL::DDSLevelSize(image->format, level.width, level.height))
            __builtin_trap();
        for (size_t i = 0; i < level.size; ++i)
            checksum += image->pixels[level.offset + i];
        end = level.offset + level.size;
    }
    volatile unsigned sink = checksum;
    (void)sink;
    LGL::freeDDSImage(image);
    return 0;
}
