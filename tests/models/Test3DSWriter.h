// Test3DSWriter.h -- builds 3DS files byte by byte for the reader tests, imports them from a temporary
// file, and checks that an imported model is internally consistent.
#pragma once

#include <ostrum_gl/models/3dsLoader.h>

#include "TestSupport.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace test3ds {

// ---------------------------------------------------------------- little-endian values

inline std::string u8(unsigned v)
{
    return std::string(1, static_cast<char>(v & 0xFF));
}
inline std::string u16(unsigned v)
{
    return u8(v) + u8(v >> 8);
}
inline std::string u32(uint32_t v)
{
    return u16(v & 0xFFFF) + u16(v >> 16);
}
inline std::string f32(float f)
{
    uint32_t bits = 0;
    std::memcpy(&bits, &f, 4);
    return u32(bits);
}
// A name with its terminating zero.
inline std::string cstr(const std::string& s)
{
    return s + std::string(1, '\0');
}

// ---------------------------------------------------------------- chunks

// A chunk whose length is its header plus its body.
inline std::string chunk(unsigned id, const std::string& body)
{
    return u16(id) + u32(static_cast<uint32_t>(6 + body.size())) + body;
}
// A chunk whose length field says `length`, whatever the body holds.
inline std::string chunkClaiming(unsigned id, uint32_t length, const std::string& body)
{
    return u16(id) + u32(length) + body;
}

inline std::string primary(const std::string& body)
{
    return chunk(0x4D4D, body);
}
inline std::string version(uint32_t v)
{
    return chunk(0x0002, u32(v));
}
inline std::string meshVersion()
{
    return chunk(0x3D3E, u32(3));
}
// OBJECTINFO with its mesh-version chunk first, as exporters write it.
inline std::string objectInfo(const std::string& body)
{
    return chunk(0x3D3D, meshVersion() + body);
}
// A whole file: PRIMARY holding VERSION 3 and OBJECTINFO with `body`.
inline std::string file3ds(const std::string& body)
{
    return primary(version(3) + objectInfo(body));
}

inline std::string color24(unsigned r, unsigned g, unsigned b)
{
    return chunk(0x0011, u8(r) + u8(g) + u8(b));
}
inline std::string percent(unsigned p)
{
    return chunk(0x0030, u16(p));
}
// A material with name, diffuse colour, shininess strength, transparency and self-illumination
// percentages, and a texture map when `file` is not empty.
inline std::string material(const std::string& name, const std::string& file, unsigned r = 0, unsigned g = 0,
                            unsigned b = 0, unsigned specular = 0, unsigned transparency = 0, unsigned emissive = 0)
{
    std::string body = chunk(0xA000, cstr(name)) + chunk(0xA020, color24(r, g, b)) +
                       chunk(0xA041, percent(specular)) + chunk(0xA050, percent(transparency)) +
                       chunk(0xA084, percent(emissive));
    if (!file.empty())
        body += chunk(0xA200, chunk(0xA300, cstr(file)));
    return chunk(0xAFFF, body);
}

struct V {
    float x, y, z;
};
struct F {
    unsigned a, b, c;
};
struct UV {
    float u, v;
};

inline std::string vertices(const std::vector<V>& verts)
{
    std::string body = u16(static_cast<unsigned>(verts.size()));
    for (const V& v : verts)
        body += f32(v.x) + f32(v.y) + f32(v.z);
    return chunk(0x4110, body);
}
// The faces chunk; `children` (face-material and smoothing groups) go inside it, after the list.
inline std::string faces(const std::vector<F>& list, const std::string& children = "")
{
    std::string body = u16(static_cast<unsigned>(list.size()));
    for (const F& f : list)
        body += u16(f.a) + u16(f.b) + u16(f.c) + u16(7);
    return chunk(0x4120, body + children);
}
inline std::string faceGroup(const std::string& materialName, const std::vector<unsigned>& indices)
{
    std::string body = cstr(materialName) + u16(static_cast<unsigned>(indices.size()));
    for (unsigned i : indices)
        body += u16(i);
    return chunk(0x4130, body);
}
inline std::string uvs(const std::vector<UV>& list)
{
    std::string body = u16(static_cast<unsigned>(list.size()));
    for (const UV& t : list)
        body += f32(t.u) + f32(t.v);
    return chunk(0x4140, body);
}
inline std::string mesh(const std::string& body)
{
    return chunk(0x4100, body);
}
inline std::string object(const std::string& name, const std::string& body)
{
    return chunk(0x4000, cstr(name) + body);
}
// One triangle with the given material group, as a whole sub-object.
inline std::string triangleObject(const std::string& name, const std::string& materialName = "")
{
    const std::string group = materialName.empty() ? std::string() : faceGroup(materialName, {0});
    return object(name, mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}) + faces({{0, 1, 2}}, group)));
}

// ---------------------------------------------------------------- importing

struct Imported {
    t3DSModel model;
    std::string out;   // what the reader printed
    std::string path;  // the file it read
    bool result = true;
};

inline std::string writeTemp(const std::string& bytes, const std::string& name = "model.3ds")
{
    const std::string path = ostrum_test::makeTempDir() + "/" + name;
    ostrum_test::writeFile(path, bytes);
    return path;
}

inline Imported importFile(const std::string& path, bool verbose = false)
{
    Imported r;
    r.path = path;
    Load3DS loader;
    loader.verbose = verbose;
    ostrum_test::StdoutCapture capture;
    r.result = loader.import3DS(r.model, path.c_str());
    r.out = capture.take();
    return r;
}

inline Imported importBytes(const std::string& bytes, bool verbose = false)
{
    return importFile(writeTemp(bytes), verbose);
}

// The line printed once for the first fault of a damaged file.
inline std::string damageLine(const std::string& path, const std::string& what)
{
    return "ERROR: Load3DS::import3DS: \"" + path + "\" is damaged (" + what +
           "); the model keeps what could be read\n";
}

// Counts match the arrays, every face names existing vertices, names are terminated and the bound
// on sub-objects holds: what code that draws or measures a model relies on.
inline void expectConsistent(const t3DSModel& model)
{
    ASSERT_GE(model.numOfObjects, 0);
    ASSERT_LE(model.numOfObjects, Load3DS::MAX_SUBOBJECTS);
    ASSERT_EQ(static_cast<size_t>(model.numOfObjects), model.pObject.size());
    ASSERT_EQ(static_cast<size_t>(model.numOfMaterials), model.pMaterials.size());
    for (const t3DSObject& o : model.pObject) {
        ASSERT_EQ(static_cast<size_t>(o.numOfVerts), o.pVerts.size());
        ASSERT_EQ(o.pNormals.size(), o.pVerts.size());
        ASSERT_EQ(static_cast<size_t>(o.numOfFaces), o.pFaces.size());
        ASSERT_EQ(static_cast<size_t>(o.numOfTexVertex), o.pTexVerts.size());
        ASSERT_NE(std::memchr(o.name, 0, sizeof o.name), nullptr);
        for (const t3DSFace& f : o.pFaces) {
            for (int k = 0; k < 3; ++k) {
                ASSERT_GE(f.vertIndex[k], 0);
                ASSERT_LT(f.vertIndex[k], o.numOfVerts);
            }
            ASSERT_GE(f.matID, 0);
            ASSERT_TRUE(f.matID == 0 || f.matID < model.numOfMaterials);
        }
        ASSERT_TRUE(o.materialID == 0 || o.materialID < model.numOfMaterials);
    }
    for (const t3DSMaterial& m : model.pMaterials) {
        ASSERT_NE(std::memchr(m.name, 0, sizeof m.name), nullptr);
        ASSERT_NE(std::memchr(m.fileName, 0, sizeof m.fileName), nullptr);
    }
}

}  // namespace test3ds
