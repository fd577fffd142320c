// fuzz_colmesh.cpp -- libFuzzer target for the collision-mesh text reader: LGLColMesh::read over bytes in
// memory inside a box group, then world coordinates and the point and mesh tests on what it read; input
// that reads without a short keyword line is also loaded from a file through load.
//
// A short keyword line ends the process in load, so the file path is taken only for input that read
// fully from memory. No OpenGL is needed.
#include <ostrum_gl/collision/LGLColMesh.h>

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>

namespace {

std::string scratchFile()
{
    return "/tmp/fuzz_colmesh_" + std::to_string(static_cast<long>(::getpid())) + ".txt";
}

void exercise(LGLColMesh& m)
{
    m.position = SVector3D(1.0f, 2.0f, 3.0f);
    m.yaw = 0.5;
    m.pitch = -0.25;
    m.roll = 1.0;
    m.updateWorldCoordinates();
    for (const SVector3D& p : {SVector3D(0, 0, 0), SVector3D(1, 2, 3), SVector3D(-5, 0.5f, 7)})
        m.collidesWith(p);
    for (const LGLColMesh::tBox& box : m.boxes)
        m.collidesWith(box.centre);
    LGLColMesh copy(m);
    copy.collidesWith(m);
    m.collidesWith(copy);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    if (std::freopen("/dev/null", "w", stdout) == nullptr)
        return 0;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    LGLColMesh m;
    m.beginBoxGroup(SVector3D(0, 0, 0), 1.0);
    std::istringstream in(text);
    const bool complete = m.read(in);
    m.endBoxGroup();
    exercise(m);

    if (complete) {
        const std::string path = scratchFile();
        if (std::FILE* f = std::fopen(path.c_str(), "wb")) {
            std::fwrite(text.data(), 1, text.size(), f);
            std::fclose(f);
            LGLColMesh loaded;
            loaded.beginBoxGroup(SVector3D(0, 0, 0), 1.0);
            loaded.load(path);
            loaded.endBoxGroup();
            exercise(loaded);
            ::unlink(path.c_str());
        }
    }
    m.dispose();
    return 0;
}
