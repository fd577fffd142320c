// fuzz_3ds.cpp -- libFuzzer target for the 3DS chunk reader: Load3DS::importStream over bytes in memory.
//
// importStream is the reader's core: it prints the same lines as import3DS but returns a status where
// import3DS ends the process, so every input runs to its end here. The seeds in fuzz/corpus/3ds are
// small real models (assimp test models, BSD-3-Clause; Anim8or exports by Gwynwhyvaar, MIT).
#include <ostrum_gl/models/3dsLoader.h>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // The reader's progress and error lines would drown the fuzzer's own report.
    if (std::freopen("/dev/null", "w", stdout) == nullptr)
        return 0;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::FILE* file = size > 0 ? fmemopen(const_cast<uint8_t*>(data), size, "rb") : std::fopen("/dev/null", "rb");
    if (file == nullptr)
        return 0;
    Load3DS loader;
    loader.verbose = (size & 1) != 0;  // both the quiet and the verbose paths get their share
    t3DSModel model;
    loader.importStream(model, file, "fuzz.3ds");
    std::fclose(file);
    return 0;
}
