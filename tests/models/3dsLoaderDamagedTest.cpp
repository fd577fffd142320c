// 3dsLoaderDamagedTest.cpp -- the 3DS chunk reader on truncated, corrupted, self-nested and hostile
// files, and its two fatal exits.
#include <ostrum_gl/models/3dsLoader.h>

#include "Test3DSWriter.h"

#include <cstdio>
#include <fstream>

using namespace ostrum_test;
using namespace test3ds;

namespace {

// Imports bytes from memory through the stream entry, which never ends the process.
Load3DS::cImportStatus importMemory(const std::string& bytes, t3DSModel& model, std::string* out = nullptr)
{
    std::string copy = bytes.empty() ? std::string(1, '\0') : bytes;
    std::FILE* file = bytes.empty() ? std::fopen("/dev/null", "rb") : fmemopen(&copy[0], copy.size(), "rb");
    EXPECT_NE(file, nullptr);
    Load3DS loader;
    StdoutCapture capture;
    const Load3DS::cImportStatus status = loader.importStream(model, file, "mem.3ds");
    if (out)
        *out = capture.take();
    std::fclose(file);
    return status;
}

std::string assetBytes(const std::string& relative)
{
    return readFile(assetsDir() + "/3ds/" + relative);
}

// Offset of the first occurrence of a chunk header with this id and length field.
size_t headerAt(const std::string& bytes, unsigned id, uint32_t length)
{
    const size_t at = bytes.find(u16(id) + u32(length));
    EXPECT_NE(at, std::string::npos);
    return at;
}

std::string triangleMesh()
{
    return mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}) + faces({{0, 1, 2}}));
}

// `inner` wrapped `times` times in chunks of `id`, each level opening with `lead` before the next one;
// built in one pass so that deep nests stay cheap to make.
std::string nest(unsigned id, int times, const std::string& lead, const std::string& inner)
{
    std::vector<uint32_t> lengths(times);
    uint32_t length = static_cast<uint32_t>(inner.size());
    for (int level = times - 1; level >= 0; --level)
        lengths[level] = length = static_cast<uint32_t>(6 + lead.size()) + length;
    std::string out;
    out.reserve(lengths.empty() ? inner.size() : lengths[0]);
    for (int level = 0; level < times; ++level)
        out += u16(id) + u32(lengths[level]) + lead;
    return out + inner;
}

// A small deterministic generator for the corruption sweeps.
struct Lcg {
    uint32_t state;
    uint32_t next()
    {
        state = state * 1664525u + 1013904223u;
        return state >> 8;
    }
};

}  // namespace

// ---------------------------------------------------------------- fatal exits

TEST(Load3DSDeathTest, MissingFileEndsProcessWithCodeMinusTwelve)
{
    // A fixed path: the death-test child runs the test again and must print the same name.
    const std::string path = "/nonexistent-ostrum-dir/nowhere.3ds";
    OSTRUM_EXPECT_EXIT_WITH_LINE(
        {
            Load3DS loader;
            t3DSModel model;
            loader.import3DS(model, path.c_str());
        },
        244, "3ds file: \"" + path + "\" not found.");
}

TEST(Load3DSDeathTest, DirectoryEndsProcessWithCodeMinusTwelve)
{
    const std::string dir = assetsDir() + "/3ds";
    OSTRUM_EXPECT_EXIT_WITH_LINE(
        {
            Load3DS loader;
            t3DSModel model;
            loader.import3DS(model, dir.c_str());
        },
        244, "3ds file: \"" + dir + "\" not found.");
}

TEST(Load3DSDeathTest, ObjectChunkLargerThanTheBufferEndsProcessWithCodeMinusOne)
{
    const std::string path =
        writeTemp(file3ds(object("Big", chunk(0x4160, std::string(Load3DS::BUFFER_SIZE + 1, '\x55')) + triangleMesh())));
    OSTRUM_EXPECT_EXIT_WITH_LINE(
        {
            Load3DS loader;
            t3DSModel model;
            loader.import3DS(model, path.c_str());
        },
        255, "ERROR: Buffer overrun (chunk data = 200001 bytes, buffer size = 200000)!");
}

TEST(Load3DSTest, ImportStreamReportsTheOversizedChunkWithoutEnding)
{
    t3DSModel model;
    std::string out;
    const auto status = importMemory(
        file3ds(object("Big", chunk(0x4160, std::string(300000, '\x55')) + triangleMesh()) + triangleObject("next")),
        model, &out);
    EXPECT_EQ(status, Load3DS::ChunkOverBuffer);
    EXPECT_EQ(out, "ERROR: Buffer overrun (chunk data = 300000 bytes, buffer size = 200000)!\n");
    // Reading stops at the fault.
    EXPECT_EQ(model.numOfObjects, 1);
    EXPECT_EQ(model.pObject[0].numOfFaces, 0);
}

TEST(Load3DSTest, ImportStreamStatusesNameTheOutcome)
{
    t3DSModel good, bad;
    EXPECT_EQ(importMemory(file3ds(triangleObject("t")), good), Load3DS::Imported);
    EXPECT_EQ(good.numOfObjects, 1);
    EXPECT_EQ(importMemory(chunk(0x1111, ""), bad), Load3DS::NoPrimaryChunk);
    EXPECT_EQ(bad.numOfObjects, 0);
}

TEST(Load3DSTest, ImportStreamReadsFromTheStreamsCurrentPosition)
{
    const std::string bytes = "junk" + file3ds(triangleObject("t"));
    std::string copy = bytes;
    std::FILE* file = fmemopen(&copy[0], copy.size(), "rb");
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(std::fseek(file, 4, SEEK_SET), 0);
    Load3DS loader;
    t3DSModel model;
    StdoutCapture capture;
    EXPECT_EQ(loader.importStream(model, file, "mem.3ds"), Load3DS::Imported);
    EXPECT_EQ(capture.take(), "");
    std::fclose(file);
    EXPECT_EQ(model.numOfObjects, 1);
}

// ---------------------------------------------------------------- truncated files

TEST(Load3DSTest, OneByteFileIsNotAPrimaryChunk)
{
    const Imported r = importBytes("M");
    EXPECT_EQ(r.out, "Unable to load PRIMARY chuck from file \n");
}

TEST(Load3DSTest, FileEndingInsideThePrimaryHeaderIsDamaged)
{
    for (size_t n = 2; n < 6; ++n) {
        const Imported r = importBytes(file3ds(triangleObject("t")).substr(0, n));
        EXPECT_EQ(r.out, damageLine(r.path, "the file ends inside the header of chunk 0x4D4D at byte 0")) << n;
        EXPECT_EQ(r.model.numOfObjects, 0);
    }
}

TEST(Load3DSTest, TruncatedFileKeepsWhatWasReadAndSaysSo)
{
    const std::string whole = file3ds(triangleObject("first") + object("second", mesh(vertices({{0, 0, 0}, {1, 0, 0},
                                                                                                {0, 1, 0}, {1, 1, 0}}) +
                                                                                       faces({{0, 1, 2}}))));
    // Cut in the middle of the second object's fourth vertex.
    const size_t cut = whole.find(f32(1) + f32(1) + f32(0)) + 6;
    const Imported r = importBytes(whole.substr(0, cut));
    EXPECT_EQ(r.out, damageLine(r.path, "chunk 0x4D4D at byte 0 claims " + std::to_string(whole.size()) +
                                            " bytes but the file holds " + std::to_string(cut)));
    ASSERT_EQ(r.model.numOfObjects, 2);
    EXPECT_EQ(r.model.pObject[0].numOfVerts, 3);
    EXPECT_EQ(r.model.pObject[0].numOfFaces, 1);
    EXPECT_STREQ(r.model.pObject[1].name, "second");
    EXPECT_EQ(r.model.pObject[1].numOfVerts, 3);  // the vertices that are whole
    EXPECT_EQ(r.model.pObject[1].numOfFaces, 0);
    expectConsistent(r.model);
}

TEST(Load3DSTest, TruncationAtEveryLengthStaysConsistent)
{
    const std::string whole = assetBytes("assimp/cubes_with_alpha.3DS");
    ASSERT_EQ(whole.size(), 5957u);
    t3DSModel full;
    std::string fullOut;
    importMemory(whole, full, &fullOut);
    EXPECT_EQ(fullOut, "");
    for (size_t n = 0; n < whole.size(); ++n) {
        t3DSModel model;
        std::string out;
        importMemory(whole.substr(0, n), model, &out);
        expectConsistent(model);
        ASSERT_LE(model.numOfObjects, full.numOfObjects);
        ASSERT_LE(model.numOfMaterials, full.numOfMaterials);
        if (n < 2)
            ASSERT_EQ(out, "Unable to load PRIMARY chuck from file \n") << n;
        else
            ASSERT_EQ(out.rfind("ERROR: Load3DS::import3DS: \"mem.3ds\" is damaged (", 0), 0u) << n << ": " << out;
    }
}

// ---------------------------------------------------------------- lengths that do not fit

TEST(Load3DSTest, ChunkLongerThanItsParentIsCutToTheParent)
{
    const std::string badVerts = chunkClaiming(0x4110, 1000, u16(3) + f32(0) + f32(0) + f32(0) + f32(1) + f32(0) +
                                                             f32(0) + f32(0) + f32(1) + f32(0));
    const std::string first = object("a", mesh(badVerts + faces({{0, 1, 2}})));
    const std::string bytes = file3ds(first + triangleObject("b"));
    const Imported r = importBytes(bytes);
    const size_t at = headerAt(bytes, 0x4110, 1000);
    // The mesh has the vertex chunk and the 16-byte faces chunk left: 44 + 16 bytes.
    EXPECT_EQ(r.out, damageLine(r.path, "chunk 0x4110 at byte " + std::to_string(at) +
                                            " claims 1000 bytes but only 60 are left"));
    ASSERT_EQ(r.model.numOfObjects, 2);
    EXPECT_EQ(r.model.pObject[0].numOfVerts, 3);
    EXPECT_EQ(r.model.pObject[0].numOfFaces, 0);  // swallowed by the vertex chunk
    EXPECT_STREQ(r.model.pObject[1].name, "b");
    EXPECT_EQ(r.model.pObject[1].numOfFaces, 1);
    expectConsistent(r.model);
}

TEST(Load3DSTest, ChunkClaimingFourGigabytesIsCutToTheFile)
{
    const std::string body = version(3) + objectInfo(triangleObject("t"));
    const std::string bytes = chunkClaiming(0x4D4D, 0xFFFFFFFFu, body);
    const Imported r = importBytes(bytes);
    EXPECT_EQ(r.out, damageLine(r.path, "chunk 0x4D4D at byte 0 claims 4294967295 bytes but the file holds " +
                                            std::to_string(bytes.size())));
    EXPECT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(r.model.pObject[0].numOfFaces, 1);
}

TEST(Load3DSTest, ChunkShorterThanItsHeaderCountsAsItsHeader)
{
    const std::string zero = chunkClaiming(0x1234, 0, "");
    const std::string bytes = file3ds(triangleObject("a") + zero + triangleObject("b"));
    const Imported r = importBytes(bytes);
    EXPECT_EQ(r.out, damageLine(r.path, "chunk 0x1234 at byte " + std::to_string(headerAt(bytes, 0x1234, 0)) +
                                            " claims 0 bytes, less than its header"));
    ASSERT_EQ(r.model.numOfObjects, 2);
    EXPECT_STREQ(r.model.pObject[1].name, "b");
}

TEST(Load3DSTest, RunOfZeroLengthChunksEnds)
{
    std::string run;
    for (int i = 0; i < 5000; ++i)
        run += chunkClaiming(0x0000, 0, "");
    t3DSModel model;
    importMemory(file3ds(run + triangleObject("after")), model);
    ASSERT_EQ(model.numOfObjects, 1);
    EXPECT_STREQ(model.pObject[0].name, "after");
}

TEST(Load3DSTest, StrayBytesAtTheEndOfAParentArePassedOver)
{
    const std::string mat = chunk(0xAFFF, chunk(0xA000, cstr("Stray")) + "xyz");
    const std::string bytes = file3ds(mat + material("Next", ""));
    const Imported r = importBytes(bytes);
    const size_t at = bytes.find("xyz");
    EXPECT_EQ(r.out, damageLine(r.path, "3 stray bytes at byte " + std::to_string(at) + " inside chunk 0xAFFF"));
    ASSERT_EQ(r.model.numOfMaterials, 2);
    EXPECT_STREQ(r.model.pMaterials[0].name, "Stray");
    EXPECT_STREQ(r.model.pMaterials[1].name, "Next");
}

// ---------------------------------------------------------------- counts that do not fit

TEST(Load3DSTest, VertexCountBeyondItsChunkIsCutToTheVerticesThere)
{
    const std::string verts = chunk(0x4110, u16(1000) + f32(0) + f32(0) + f32(0) + f32(1) + f32(0) + f32(0) + f32(0) +
                                                f32(1) + f32(0));
    const std::string bytes = file3ds(object("o", mesh(verts + faces({{0, 1, 2}}))));
    const Imported r = importBytes(bytes);
    EXPECT_EQ(r.out, damageLine(r.path, "chunk 0x4110 at byte " + std::to_string(headerAt(bytes, 0x4110, 44)) +
                                            " holds 36 bytes for 1000 vertices"));
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(r.model.pObject[0].numOfVerts, 3);
    EXPECT_EQ(r.model.pObject[0].numOfFaces, 1);
    expectConsistent(r.model);
}

TEST(Load3DSTest, VertexChunkWithBytesAfterItsVerticesReadsThemPast)
{
    const std::string verts = chunk(0x4110, u16(2) + f32(0) + f32(0) + f32(0) + f32(1) + f32(0) + f32(0) + f32(5) +
                                                f32(5) + f32(5));
    const std::string bytes = file3ds(object("o", mesh(verts + faces({{0, 1, 1}}))));
    const Imported r = importBytes(bytes);
    EXPECT_EQ(r.out, damageLine(r.path, "chunk 0x4110 at byte " + std::to_string(headerAt(bytes, 0x4110, 44)) +
                                            " holds 12 bytes after its 2 vertices"));
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(r.model.pObject[0].numOfVerts, 2);
    EXPECT_EQ(r.model.pObject[0].numOfFaces, 1);
}

TEST(Load3DSTest, FaceCountBeyondItsChunkIsCutToTheFacesThere)
{
    const std::string list = chunk(0x4120, u16(50) + u16(0) + u16(1) + u16(2) + u16(0));
    const std::string bytes = file3ds(object("o", mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}) + list)));
    const Imported r = importBytes(bytes);
    EXPECT_EQ(r.out, damageLine(r.path, "chunk 0x4120 at byte " + std::to_string(headerAt(bytes, 0x4120, 16)) +
                                            " holds 8 bytes for 50 faces"));
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(r.model.pObject[0].numOfFaces, 1);
}

TEST(Load3DSTest, TextureCoordinateCountBeyondItsChunkIsCutToTheCoordinatesThere)
{
    const std::string tex = chunk(0x4140, u16(9) + f32(0.5f) + f32(0.25f));
    const std::string bytes = file3ds(object("o", tex + triangleMesh()));
    const Imported r = importBytes(bytes);
    EXPECT_EQ(r.out, damageLine(r.path, "chunk 0x4140 at byte " + std::to_string(headerAt(bytes, 0x4140, 16)) +
                                            " holds 8 bytes for 9 texture coordinates"));
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(r.model.pObject[0].numOfTexVertex, 1);
    EXPECT_EQ(r.model.pObject[0].pTexVerts[0].x, 0.5f);
    EXPECT_EQ(r.model.pObject[0].pTexVerts[0].y, 0.25f);
}

TEST(Load3DSTest, ChunkWithoutRoomForItsCountIsPassedOver)
{
    const std::string bytes = file3ds(object("o", chunk(0x4110, u8(3)) + triangleMesh()));
    const Imported r = importBytes(bytes);
    EXPECT_EQ(r.out, damageLine(r.path, "chunk 0x4110 at byte " + std::to_string(headerAt(bytes, 0x4110, 7)) +
                                            " is too short for its count"));
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(r.model.pObject[0].numOfVerts, 3);
}

TEST(Load3DSTest, FacesNamingMissingVerticesAreDropped)
{
    const Imported r = importBytes(file3ds(
        object("holes", mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}) + faces({{0, 1, 2}, {0, 1, 5}, {9, 1, 2}},
                                                                                  faceGroup("M", {0, 1, 2}))))));
    EXPECT_EQ(r.out, damageLine(r.path, "sub-object \"holes\" has 2 faces naming vertices beyond its 3"));
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(r.model.pObject[0].numOfFaces, 1);
    EXPECT_EQ(r.model.pObject[0].pFaces[0].vertIndex[2], 2);
    expectConsistent(r.model);
}

TEST(Load3DSTest, FacesBeforeTheirVerticesAreKept)
{
    const Imported r = importBytes(
        file3ds(object("late", mesh(faces({{0, 1, 2}}) + vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}})))));
    EXPECT_EQ(r.out, "");
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(r.model.pObject[0].numOfFaces, 1);
}

TEST(Load3DSTest, FaceGroupIndexBeyondTheFacesIsIgnored)
{
    const std::string group = faceGroup("M", {0, 9});
    const std::string bytes = file3ds(material("X", "") + material("M", "") +
                                      object("o", mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}) +
                                                       faces({{0, 1, 2}}, group))));
    const Imported r = importBytes(bytes);
    EXPECT_EQ(r.out, damageLine(r.path, "face-material group \"M\" at byte " +
                                            std::to_string(headerAt(bytes, 0x4130, 6 + 2 + 2 + 4)) +
                                            " names face 9 of a sub-object with 1 faces"));
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(r.model.pObject[0].pFaces[0].matID, 1);
    EXPECT_EQ(r.model.pObject[0].materialID, 1);
}

TEST(Load3DSTest, NameWithoutTerminatorEndsWithItsChunk)
{
    const std::string bytes = file3ds(chunk(0x4000, "abc") + triangleObject("next"));
    const Imported r = importBytes(bytes);
    EXPECT_EQ(r.out, damageLine(r.path, "the name at byte " + std::to_string(headerAt(bytes, 0x4000, 9) + 6) +
                                            " in chunk 0x4000 has no terminating zero"));
    ASSERT_EQ(r.model.numOfObjects, 2);
    EXPECT_STREQ(r.model.pObject[0].name, "abc");
    EXPECT_STREQ(r.model.pObject[1].name, "next");
}

TEST(Load3DSTest, ColourChunkWithoutSubChunkLeavesTheColour)
{
    const std::string mat = chunk(0xAFFF, chunk(0xA020, "") + chunk(0xA000, cstr("NoColour")));
    const std::string bytes = file3ds(mat);
    const Imported r = importBytes(bytes);
    EXPECT_EQ(r.out, damageLine(r.path, "chunk 0xA020 at byte " + std::to_string(headerAt(bytes, 0xA020, 6)) +
                                            " has no sub-chunk"));
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_STREQ(r.model.pMaterials[0].name, "NoColour");
    EXPECT_EQ(r.model.pMaterials[0].color[0], 0);
}

TEST(Load3DSTest, SubChunkLongerThanItsPropertyIsCut)
{
    // The percentage sub-chunk claims 100 bytes inside an 8-byte transparency chunk.
    const std::string mat = chunk(0xAFFF, chunk(0xA050, chunkClaiming(0x0030, 100, u16(40))) + chunk(0xA000, cstr("P")));
    const std::string bytes = file3ds(mat);
    const Imported r = importBytes(bytes);
    EXPECT_EQ(r.out, damageLine(r.path, "chunk 0x0030 at byte " + std::to_string(headerAt(bytes, 0x0030, 100)) +
                                            " claims 100 bytes but only 8 are left"));
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_DOUBLE_EQ(r.model.pMaterials[0].transparency, 0.4);
    EXPECT_STREQ(r.model.pMaterials[0].name, "P");
}

// ---------------------------------------------------------------- self-nested files

TEST(Load3DSTest, MeshesNestedSixtyOneDeepAreRead)
{
    // PRIMARY, OBJECTINFO and OBJECT are levels 1 to 3; the 61st mesh is level 64.
    std::string nested = vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}) + faces({{0, 1, 2}});
    for (int i = 0; i < 61; ++i)
        nested = mesh(nested);
    const Imported r = importBytes(file3ds(object("deep", nested)));
    EXPECT_EQ(r.out, "");
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(r.model.pObject[0].numOfFaces, 1);
}

TEST(Load3DSTest, MeshesNestedDeeperThanTheLimitAreSkipped)
{
    std::string nested = vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}) + faces({{0, 1, 2}});
    for (int i = 0; i < 62; ++i)
        nested = mesh(nested);
    const std::string bytes = file3ds(object("deep", nested) + triangleObject("shallow"));
    const Imported r = importBytes(bytes);
    const size_t innermost = bytes.find(u16(0x4100) + u32(6 + 44 + 16));
    EXPECT_EQ(r.out, damageLine(r.path, "chunk 0x4100 at byte " + std::to_string(innermost) +
                                            " is nested more than 64 levels deep"));
    ASSERT_EQ(r.model.numOfObjects, 2);
    EXPECT_EQ(r.model.pObject[0].numOfFaces, 0);
    EXPECT_EQ(r.model.pObject[1].numOfFaces, 1);
}

TEST(Load3DSTest, ThousandsOfNestedChunksNeverExhaustTheStack)
{
    const std::string meshes = nest(0x4100, 100000, "", triangleMesh());
    const std::string maps = nest(0xA200, 100000, "", chunk(0xA300, cstr("F.BMP")));
    const std::string infos = nest(0x3D3D, 100000, meshVersion(), triangleObject("in"));
    t3DSModel model;
    std::string out;
    const std::string mat = chunk(0xAFFF, chunk(0xA000, cstr("mat")) + maps);
    EXPECT_EQ(importMemory(primary(version(3) + objectInfo(object("m", meshes) + mat) + infos), model, &out),
              Load3DS::Imported);
    EXPECT_EQ(out.rfind("ERROR: Load3DS::import3DS: \"mem.3ds\" is damaged (chunk 0x4100 at byte ", 0), 0u) << out;
    expectConsistent(model);
    ASSERT_EQ(model.numOfObjects, 1);  // "in" lies deeper than the limit
    EXPECT_STREQ(model.pObject[0].name, "m");
    ASSERT_EQ(model.numOfMaterials, 1);
    EXPECT_STREQ(model.pMaterials[0].name, "mat");
    EXPECT_STREQ(model.pMaterials[0].fileName, "");
}

TEST(Load3DSTest, PrimaryInsidePrimaryIsReadPast)
{
    const std::string inner = file3ds(triangleObject("inner"));
    const Imported r = importBytes(primary(inner + objectInfo(triangleObject("outer"))));
    EXPECT_EQ(r.out, "");
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_STREQ(r.model.pObject[0].name, "outer");
}

// ---------------------------------------------------------------- corrupted files

TEST(Load3DSTest, LengthFieldsOverwrittenAtEveryOffsetNeverBreakTheModel)
{
    const std::string whole = assetBytes("anim8or-projects/water.3ds");
    ASSERT_EQ(whole.size(), 687u);
    const uint32_t values[] = {0u, 5u, 7u, 0x7FFFFFFFu, 0xFFFFFFFFu};
    StdoutCapture capture;
    for (size_t at = 0; at + 4 <= whole.size(); ++at) {
        for (uint32_t value : values) {
            std::string bytes = whole;
            bytes.replace(at, 4, u32(value));
            t3DSModel model;
            std::string copy = bytes;
            std::FILE* file = fmemopen(&copy[0], copy.size(), "rb");
            ASSERT_NE(file, nullptr);
            Load3DS loader;
            loader.importStream(model, file, "mem.3ds");
            std::fclose(file);
            expectConsistent(model);
        }
    }
}

TEST(Load3DSTest, RandomlyCorruptedModelsNeverBreakTheModel)
{
    const char* models[] = {"assimp/test1.3ds", "assimp/fels.3ds", "assimp/CameraRollAnimWithChildObject.3ds",
                            "anim8or-projects/wings.3ds", "anim8or-projects/boulder_mesh_04.3ds"};
    Lcg random{12345};
    StdoutCapture capture;
    for (const char* name : models) {
        const std::string whole = assetBytes(name);
        ASSERT_FALSE(whole.empty()) << name;
        for (int variant = 0; variant < 300; ++variant) {
            std::string bytes = whole;
            const int flips = 1 + static_cast<int>(random.next() % 8);
            for (int i = 0; i < flips; ++i)
                bytes[random.next() % bytes.size()] = static_cast<char>(random.next() & 0xFF);
            if (variant % 3 == 0)
                bytes.resize(random.next() % bytes.size());
            std::string copy = bytes.empty() ? std::string(1, '\0') : bytes;
            std::FILE* file = bytes.empty() ? std::fopen("/dev/null", "rb") : fmemopen(&copy[0], copy.size(), "rb");
            ASSERT_NE(file, nullptr);
            t3DSModel model;
            Load3DS loader;
            loader.importStream(model, file, "mem.3ds");
            std::fclose(file);
            expectConsistent(model);
        }
    }
}
