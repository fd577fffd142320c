// Object3DSTestSupport.h -- what the Object3DS tests share: access to the private steps, models and
// textures written into temporary folders, loading with captured output, and a directory guard.
#pragma once

#include <ostrum_gl/models/Object3DS.h>

#include <ostrum_core/LFile.h>

#include "Test3DSWriter.h"
#include "TestSupport.h"

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

// The private steps of Object3DS, reached by the tests (Object3DS names this class its friend).
class Object3DSTest {
public:
    static int setTextureType(Object3DS& o, const std::string& name)
    {
        std::vector<char> text(name.begin(), name.end());
        text.push_back('\0');
        return o.setTextureType(text.data());
    }
    static void measure(Object3DS& o) { o.measure(); }
    static void createObjectDL(Object3DS& o) { o.createObjectDL(); }
    static void renderSubObjectNonDL(Object3DS& o, int k) { o.renderSubObjectNonDL(k); }
    static void renderTranspFacesNonDL(Object3DS& o, int k) { o.renderTranspFacesNonDL(k); }
    static void renderSubObjectNormalsNonDL(Object3DS& o, int k) { o.renderSubObjectNormalsNonDL(k); }
    static bool subObjectHasAnimatedTexture(Object3DS& o, int k) { return o.subObjectHasAnimatedTexture(k); }
    static void readBone(Object3DS& o, std::istream& in, const std::string& line, tBone*& bone)
    {
        o.readBone(in, line, bone);
    }
    static void readSequence(Object3DS& o, std::istream& in, const std::string& line) { o.readSequence(in, line); }
    static void readBone(Object3DS& o, std::ifstream& in, const std::string& line, tBone*& bone)
    {
        o.readBone(in, line, bone);
    }
    static void readSequence(Object3DS& o, std::ifstream& in, const std::string& line) { o.readSequence(in, line); }
    static void assign3DS2Bone(Object3DS& o, tBone* bone) { o.assign3DS2Bone(bone); }
    static void writeSequenceData(Object3DS& o) { o.writeSequenceData(); }
    static void writeBoneData(Object3DS& o, tBone* bone, int level) { o.writeBoneData(bone, level); }
    static void getAnimAngles(Object3DS& o, const std::string& bone, double& ax, double& ay, double& az)
    {
        o.getAnimAngles(bone, ax, ay, az);
    }
    static void disposeBone(Object3DS& o, tBone*& bone) { o.disposeBone(bone); }
};

namespace objtest {

using ostrum_test::makeTempDir;
using ostrum_test::StdoutCapture;
using ostrum_test::writeFile;

// Object3DS holds ten movies by value: kept on the heap in tests.
inline std::unique_ptr<Object3DS> makeObject()
{
    return std::make_unique<Object3DS>();
}

// Loads `path` into `o` and returns what it printed.
inline std::string loadCaptured(Object3DS& o, const std::string& path)
{
    StdoutCapture capture;
    o.load(path);
    return capture.take();
}

// Writes `bytes` as `name` into a fresh temporary folder and returns its path.
inline std::string writeModel(const std::string& bytes, const std::string& name = "model.3ds")
{
    const std::string path = makeTempDir() + "/" + name;
    writeFile(path, bytes);
    return path;
}

inline std::string le16(unsigned v)
{
    return std::string{static_cast<char>(v & 0xFF), static_cast<char>((v >> 8) & 0xFF)};
}
inline std::string le32(unsigned v)
{
    return le16(v & 0xFFFF) + le16(v >> 16);
}

// A 24-bit BMP of width x height pixels; `pixel(x, y)` gives (r, g, b) with y = 0 the bottom row.
template <typename F>
std::string bmp24(int width, int height, F pixel)
{
    const int row = (width * 3 + 3) / 4 * 4;
    std::string body;
    for (int y = 0; y < height; ++y) {
        std::string line;
        for (int x = 0; x < width; ++x) {
            const std::vector<int> c = pixel(x, y);
            line += static_cast<char>(c[2]);
            line += static_cast<char>(c[1]);
            line += static_cast<char>(c[0]);
        }
        line.resize(static_cast<size_t>(row), '\0');
        body += line;
    }
    std::string file = "BM" + le32(static_cast<unsigned>(54 + body.size())) + le32(0) + le32(54);
    file += le32(40) + le32(static_cast<unsigned>(width)) + le32(static_cast<unsigned>(height)) + le16(1) + le16(24) +
            le32(0) + le32(static_cast<unsigned>(body.size())) + le32(2835) + le32(2835) + le32(0) + le32(0);
    return file + body;
}

// A one-colour BMP.
inline std::string solidBmp(int r, int g, int b, int size = 8)
{
    return bmp24(size, size, [&](int, int) { return std::vector<int>{r, g, b}; });
}

// Changes the working directory while it lives.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const std::string& dir)
    {
        char buf[4096];
        if (getcwd(buf, sizeof buf) != nullptr)
            saved_ = buf;
        if (chdir(dir.c_str()) != 0)
            ADD_FAILURE() << "chdir " << dir;
    }
    ~WorkingDirectory()
    {
        if (!saved_.empty() && chdir(saved_.c_str()) != 0)
            ADD_FAILURE() << "chdir back";
    }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

private:
    std::string saved_;
};

inline void makeDir(const std::string& path)
{
    ::mkdir(path.c_str(), 0755);
}

// A sub-object of triangles given by their corners in the file's frame (z up).
inline std::string meshObject(const std::string& name, const std::vector<test3ds::V>& verts,
                              const std::vector<test3ds::F>& faces, const std::string& groups = "",
                              const std::vector<test3ds::UV>& uv = {})
{
    std::string body = test3ds::vertices(verts) + test3ds::faces(faces, groups);
    if (!uv.empty())
        body += test3ds::uvs(uv);
    return test3ds::object(name, test3ds::mesh(body));
}

// The library frame of a file point: a quarter turn about x takes (x, y, z) to (x, z, -y).
inline CVector3 libraryPoint(float x, float y, float z)
{
    CVector3 v;
    v.x = x;
    v.y = z;
    v.z = -y;
    return v;
}

}  // namespace objtest
