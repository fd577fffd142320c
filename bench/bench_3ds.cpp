// bench_3ds.cpp -- the 3DS reader: import throughput on a large built model (normals included), and the
// linear normals beside the quadratic per-vertex scan on a small model.
#include <ostrum_gl/models/3dsLoader.h>

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

// ---------------------------------------------------------------- a small 3DS writer

std::string u16(unsigned v)
{
    return {static_cast<char>(v & 0xFF), static_cast<char>((v >> 8) & 0xFF)};
}
std::string u32(uint32_t v)
{
    return u16(v & 0xFFFF) + u16(v >> 16);
}
std::string f32(float f)
{
    uint32_t bits = 0;
    std::memcpy(&bits, &f, 4);
    return u32(bits);
}
std::string chunk(unsigned id, const std::string& body)
{
    return u16(id) + u32(static_cast<uint32_t>(6 + body.size())) + body;
}

// A wavy side x side grid as one textured sub-object: 2 (side - 1)^2 faces.
std::string gridObject(const std::string& name, int side, float phase)
{
    std::string verts = u16(side * side), uv = u16(side * side);
    for (int j = 0; j < side; ++j)
        for (int i = 0; i < side; ++i) {
            verts += f32(i * 0.5f) + f32(j * 0.5f) + f32(std::sin(i * 0.21f + phase) * std::cos(j * 0.13f) * 3.0f);
            uv += f32(i / float(side - 1)) + f32(j / float(side - 1));
        }
    const int faceCount = 2 * (side - 1) * (side - 1);
    std::string list = u16(faceCount), group = std::string("Ground") + '\0' + u16(faceCount);
    for (int j = 0; j + 1 < side; ++j)
        for (int i = 0; i + 1 < side; ++i) {
            const unsigned a = j * side + i, b = a + 1, c = a + side, d = c + 1;
            list += u16(a) + u16(b) + u16(d) + u16(7) + u16(a) + u16(d) + u16(c) + u16(7);
        }
    for (int f = 0; f < faceCount; ++f)
        group += u16(f);
    const std::string mesh = chunk(0x4100, chunk(0x4110, verts) + chunk(0x4140, uv) +
                                               chunk(0x4120, list + chunk(0x4130, group)));
    return chunk(0x4000, name + '\0' + mesh);
}

std::string modelFile(int objects, int side)
{
    const std::string material =
        chunk(0xAFFF, chunk(0xA000, std::string("Ground") + '\0') +
                          chunk(0xA020, chunk(0x0011, "\x40\x80\x20")) + chunk(0xA050, chunk(0x0030, u16(0))) +
                          chunk(0xA200, chunk(0xA300, std::string("GROUND.BMP") + '\0')));
    std::string body = chunk(0x3D3E, u32(3)) + material;
    for (int k = 0; k < objects; ++k)
        body += gridObject("grid" + std::to_string(k), side, k * 0.7f);
    return chunk(0x4D4D, chunk(0x0002, u32(3)) + chunk(0x3D3D, body));
}

// The model files live in the temporary folder while the benchmark runs.
struct ModelFile {
    std::string path;
    size_t bytes = 0;
    int faces = 0;
    ModelFile(int objects, int side)
    {
        char name[] = "/tmp/bench_3ds_XXXXXX";
        const int fd = mkstemp(name);
        if (fd < 0)
            std::abort();
        path = name;
        const std::string data = modelFile(objects, side);
        if (write(fd, data.data(), data.size()) != static_cast<ssize_t>(data.size()))
            std::abort();
        close(fd);
        bytes = data.size();
        faces = objects * 2 * (side - 1) * (side - 1);
    }
    ~ModelFile() { unlink(path.c_str()); }
};

// Four sub-objects of 59858 faces each (174 x 174 vertices).
const ModelFile& largeModel()
{
    static const ModelFile model(4, 174);
    return model;
}

// One sub-object of 5000 faces (51 x 51 vertices).
const ModelFile& smallModel()
{
    static const ModelFile model(1, 51);
    return model;
}

t3DSModel importModel(const ModelFile& file)
{
    Load3DS loader;
    t3DSModel model;
    loader.import3DS(model, file.path.c_str());
    return model;
}

// The normals as defined: every vertex scans every face.
void quadraticNormals(t3DSObject& o)
{
    struct N {
        float x, y, z;
    };
    std::vector<N> faceNormals;
    faceNormals.reserve(o.pFaces.size());
    for (const t3DSFace& f : o.pFaces) {
        const CVector3& p0 = o.pVerts[f.vertIndex[0]];
        const CVector3& p1 = o.pVerts[f.vertIndex[1]];
        const CVector3& p2 = o.pVerts[f.vertIndex[2]];
        const N a = {p0.x - p2.x, p0.y - p2.y, p0.z - p2.z};
        const N b = {p2.x - p1.x, p2.y - p1.y, p2.z - p1.z};
        faceNormals.push_back({a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x});
    }
    for (size_t v = 0; v < o.pVerts.size(); ++v) {
        N sum = {0.0f, 0.0f, 0.0f};
        int shared = 0;
        const int vi = static_cast<int>(v);
        for (size_t i = 0; i < o.pFaces.size(); ++i) {
            const int* c = o.pFaces[i].vertIndex;
            if (c[0] == vi || c[1] == vi || c[2] == vi) {
                sum.x += faceNormals[i].x;
                sum.y += faceNormals[i].y;
                sum.z += faceNormals[i].z;
                ++shared;
            }
        }
        const float divisor = static_cast<float>(-shared);
        N n = {sum.x / divisor, sum.y / divisor, sum.z / divisor};
        const float length = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
        if (length > 0.0f) {
            n.x /= length;
            n.y /= length;
            n.z /= length;
        }
        o.pNormals[v] = {n.x, n.y, n.z};
    }
}

// ---------------------------------------------------------------- benchmarks

void BM_Import3DS_Large(benchmark::State& state)
{
    const ModelFile& file = largeModel();
    for (auto _ : state) {
        Load3DS loader;
        t3DSModel model;
        loader.import3DS(model, file.path.c_str());
        benchmark::DoNotOptimize(model.pObject.data());
    }
    state.counters["MB/s"] = benchmark::Counter(file.bytes / 1e6, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["faces/s"] = benchmark::Counter(file.faces, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["MB"] = file.bytes / 1e6;
    state.counters["faces"] = file.faces;
}
BENCHMARK(BM_Import3DS_Large)->Unit(benchmark::kMillisecond);

void BM_Import3DS_Small(benchmark::State& state)
{
    const ModelFile& file = smallModel();
    for (auto _ : state) {
        Load3DS loader;
        t3DSModel model;
        loader.import3DS(model, file.path.c_str());
        benchmark::DoNotOptimize(model.pObject.data());
    }
    state.counters["MB/s"] = benchmark::Counter(file.bytes / 1e6, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["faces/s"] = benchmark::Counter(file.faces, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["faces"] = file.faces;
}
BENCHMARK(BM_Import3DS_Small)->Unit(benchmark::kMillisecond);

void BM_ComputeNormals_Linear_Large(benchmark::State& state)
{
    t3DSModel model = importModel(largeModel());
    Load3DS loader;
    for (auto _ : state) {
        loader.computeNormals(model);
        benchmark::DoNotOptimize(model.pObject[0].pNormals.data());
    }
    state.counters["faces"] = largeModel().faces;
    state.counters["faces/s"] = benchmark::Counter(largeModel().faces, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_ComputeNormals_Linear_Large)->Unit(benchmark::kMillisecond);

void BM_ComputeNormals_Linear_Small(benchmark::State& state)
{
    t3DSModel model = importModel(smallModel());
    Load3DS loader;
    for (auto _ : state) {
        loader.computeNormals(model);
        benchmark::DoNotOptimize(model.pObject[0].pNormals.data());
    }
    state.counters["faces"] = smallModel().faces;
    state.counters["faces/s"] = benchmark::Counter(smallModel().faces, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_ComputeNormals_Linear_Small)->Unit(benchmark::kMillisecond);

void BM_ComputeNormals_QuadraticReference_Small(benchmark::State& state)
{
    t3DSModel model = importModel(smallModel());
    for (auto _ : state) {
        quadraticNormals(model.pObject[0]);
        benchmark::DoNotOptimize(model.pObject[0].pNormals.data());
    }
    state.counters["faces"] = smallModel().faces;
    state.counters["faces/s"] = benchmark::Counter(smallModel().faces, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_ComputeNormals_QuadraticReference_Small)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
