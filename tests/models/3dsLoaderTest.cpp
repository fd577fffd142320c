// 3dsLoaderTest.cpp -- the 3DS chunk reader on files built byte by byte: every chunk kind, nesting,
// colours, percentages, the kept quirks, the axis conversion, normals and the progress output.
#include <ostrum_gl/models/3dsLoader.h>

#include <ostrum_core/SVector3D.h>

#include "Test3DSWriter.h"

#include <cmath>
#include <cstdio>

using namespace ostrum_test;
using namespace test3ds;

namespace {

// The reader's axis conversion, written out: a rotation of -1.5707964 radians about x.
V toYUp(V p)
{
    const double angle = static_cast<double>(-1.5707964f);
    const double c = std::cos(angle), s = std::sin(angle);
    return {p.x, static_cast<float>(p.y * c - p.z * s), static_cast<float>(p.y * s + p.z * c)};
}

void expectPoint(const CVector3& got, V want, float tolerance = 1e-6f)
{
    EXPECT_NEAR(got.x, want.x, tolerance);
    EXPECT_NEAR(got.y, want.y, tolerance);
    EXPECT_NEAR(got.z, want.z, tolerance);
}

const std::string kZeroFacesLines =
    "\n*** ERROR: 3dsLoader, readVertexIndices: pObject->numOfFaces = 0\n"
    "             Illegal 3DS subobject without faces! Exiting...\n";

}  // namespace

// ---------------------------------------------------------------- records and result

TEST(Load3DSTest, NewRecordsAreZero)
{
    t3DSFace face;
    t3DSObject object;
    t3DSMaterial material;
    t3DSModel model;
    Load3DS loader;
    EXPECT_EQ(face.vertIndex[2], 0);
    EXPECT_EQ(face.coordIndex[0], 0);
    EXPECT_EQ(face.matID, 0);
    EXPECT_EQ(object.numOfVerts + object.numOfFaces + object.numOfTexVertex + object.materialID, 0);
    EXPECT_FALSE(object.hasTexture);
    EXPECT_EQ(object.name[0], '\0');
    EXPECT_EQ(material.name[0], '\0');
    EXPECT_EQ(material.fileName[0], '\0');
    EXPECT_EQ(material.color[0] + material.color[1] + material.color[2], 0);
    EXPECT_EQ(material.transparency + material.emissive + material.specular, 0.0);
    EXPECT_EQ(material.textureId, 0);
    EXPECT_EQ(model.numOfObjects + model.numOfMaterials, 0);
    EXPECT_FALSE(loader.verbose);
    EXPECT_EQ(loader.faceGroupCount, 0);
    EXPECT_EQ(loader.m_FilePointer, nullptr);
    EXPECT_EQ(sizeof Load3DS::buffer, 200000u);
}

TEST(Load3DSTest, ImportAlwaysReturnsFalseAndReleasesTheFile)
{
    const Imported r = importBytes(file3ds(triangleObject("tri")));
    EXPECT_FALSE(r.result);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.model.numOfObjects, 1);
}

TEST(Load3DSTest, ImportFindsFileWhoseNameDiffersInCase)
{
    const std::string path = writeTemp(file3ds(triangleObject("tri")), "Tower1.3DS");
    const std::string asWritten = path.substr(0, path.size() - 10) + "TOWER1.3ds";
    const Imported r = importFile(asWritten);
    EXPECT_EQ(r.out, "");
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_STREQ(r.model.pObject[0].name, "tri");
}

// ---------------------------------------------------------------- first chunk and version

TEST(Load3DSTest, FirstChunkOtherThanPrimaryGivesEmptyModelAndChuckMessage)
{
    const Imported r = importBytes(chunk(0x3D3D, triangleObject("tri")));
    EXPECT_EQ(r.out, "Unable to load PRIMARY chuck from file \n");
    EXPECT_EQ(r.model.numOfObjects, 0);
    EXPECT_EQ(r.model.numOfMaterials, 0);
    EXPECT_TRUE(r.model.pObject.empty());
    EXPECT_FALSE(r.result);
}

TEST(Load3DSTest, ZeroLengthFileGivesOnlyTheChuckMessage)
{
    const Imported r = importBytes("");
    EXPECT_EQ(r.out, "Unable to load PRIMARY chuck from file \n");
    EXPECT_EQ(r.model.numOfObjects, 0);
}

TEST(Load3DSTest, VersionFourPrintsOverVersionWarning)
{
    const Imported r = importBytes(primary(version(4) + objectInfo(triangleObject("tri"))));
    EXPECT_EQ(r.out, "This 3DS file is over version 3 so it may load incorrectly \n");
    EXPECT_EQ(r.model.numOfObjects, 1);
}

TEST(Load3DSTest, VersionThreePrintsNothing)
{
    const Imported r = importBytes(primary(version(3) + objectInfo(triangleObject("tri"))));
    EXPECT_EQ(r.out, "");
}

TEST(Load3DSTest, VersionIsReadAsSignedThirtyTwoBitValue)
{
    // 0xFFFFFFFF is -1, which is not above 3; 0x00010000 is.
    EXPECT_EQ(importBytes(primary(version(0xFFFFFFFFu))).out, "");
    EXPECT_EQ(importBytes(primary(version(0x00010000u))).out,
              "This 3DS file is over version 3 so it may load incorrectly \n");
}

TEST(Load3DSTest, ShortVersionChunkFillsTheLowBytesOnly)
{
    // Two data bytes 04 00 give 4; one byte 05 gives 5.
    EXPECT_EQ(importBytes(primary(chunk(0x0002, u16(4)))).out,
              "This 3DS file is over version 3 so it may load incorrectly \n");
    EXPECT_EQ(importBytes(primary(chunk(0x0002, u8(2)))).out, "");
}

// ---------------------------------------------------------------- materials

TEST(Load3DSTest, MaterialChunksFillNameTextureColourAndPercentages)
{
    const Imported r = importBytes(file3ds(material("Brick", "WALL.BMP", 200, 100, 50, 30, 40, 60) +
                                           material("Plain", "", 1, 2, 3)));
    EXPECT_EQ(r.out, "");
    ASSERT_EQ(r.model.numOfMaterials, 2);
    const t3DSMaterial& brick = r.model.pMaterials[0];
    EXPECT_STREQ(brick.name, "Brick");
    EXPECT_STREQ(brick.fileName, "WALL.BMP");
    EXPECT_EQ(brick.color[0], 200);
    EXPECT_EQ(brick.color[1], 100);
    EXPECT_EQ(brick.color[2], 50);
    EXPECT_DOUBLE_EQ(brick.specular, 30 / 100.0);
    EXPECT_DOUBLE_EQ(brick.transparency, 40 / 100.0);
    EXPECT_DOUBLE_EQ(brick.emissive, 60 / 100.0);
    EXPECT_EQ(brick.reserved, 0);
    EXPECT_EQ(brick.textureId, 0);
    const t3DSMaterial& plain = r.model.pMaterials[1];
    EXPECT_STREQ(plain.name, "Plain");
    EXPECT_STREQ(plain.fileName, "");
    EXPECT_EQ(plain.color[2], 3);
}

TEST(Load3DSTest, PercentageOfFiftyGivesOneHalf)
{
    const Imported r = importBytes(file3ds(material("Glass", "", 0, 0, 0, 50, 50, 50)));
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_EQ(r.model.pMaterials[0].transparency, 0.5);
    EXPECT_EQ(r.model.pMaterials[0].emissive, 0.5);
    EXPECT_EQ(r.model.pMaterials[0].specular, 0.5);
}

TEST(Load3DSTest, PercentageKeepsOnlyItsLowByte)
{
    // 300 is 0x012C: its low byte 0x2C is 44.
    const Imported r = importBytes(file3ds(material("Odd", "", 0, 0, 0, 300, 256, 255)));
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_DOUBLE_EQ(r.model.pMaterials[0].specular, 44 / 100.0);
    EXPECT_DOUBLE_EQ(r.model.pMaterials[0].transparency, 0.0);
    EXPECT_DOUBLE_EQ(r.model.pMaterials[0].emissive, 255 / 100.0);
}

TEST(Load3DSTest, FloatPercentageGivesTheLowByteOfTheFloat)
{
    // 0.0625f is 0x3D800000, stored 00 00 80 3D: the low byte is 0. 1.4e-43f is 0x00000064: 100.
    const std::string body = chunk(0xA000, cstr("F")) + chunk(0xA050, chunk(0x0031, f32(0.0625f))) +
                             chunk(0xA084, chunk(0x0031, f32(1.4e-43f)));
    const Imported r = importBytes(file3ds(chunk(0xAFFF, body)));
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_EQ(r.model.pMaterials[0].transparency, 0.0);
    EXPECT_EQ(r.model.pMaterials[0].emissive, 1.0);
    EXPECT_EQ(r.out, "");
}

TEST(Load3DSTest, PercentageSubChunkWithoutDataGivesZero)
{
    const std::string body = chunk(0xA000, cstr("E")) + chunk(0xA050, chunk(0x0030, ""));
    const Imported r = importBytes(file3ds(chunk(0xAFFF, body)), true);
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_EQ(r.model.pMaterials[0].transparency, 0.0);
    EXPECT_NE(r.out.find("Reading transparency = 0.000000 (0 bytes)\n"), std::string::npos);
}

TEST(Load3DSTest, ColourChunkWithTwoSubChunksTakesTheFirst)
{
    // A 24-bit colour followed by its gamma-corrected twin: the twin is read past as a sibling.
    const std::string body = chunk(0xA000, cstr("Twin")) +
                             chunk(0xA020, color24(200, 150, 100) + chunk(0x0012, u8(1) + u8(2) + u8(3))) +
                             chunk(0xA050, percent(25));
    const Imported r = importBytes(file3ds(chunk(0xAFFF, body)));
    EXPECT_EQ(r.out, "");
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_EQ(r.model.pMaterials[0].color[0], 200);
    EXPECT_EQ(r.model.pMaterials[0].color[1], 150);
    EXPECT_EQ(r.model.pMaterials[0].color[2], 100);
    EXPECT_DOUBLE_EQ(r.model.pMaterials[0].transparency, 0.25);
}

TEST(Load3DSTest, FloatColourGivesItsFirstThreeBytesAndLeavesTheNextFieldsAlone)
{
    // 1.0f is stored 00 00 80 3F.
    const std::string body = chunk(0xA020, chunk(0x0010, f32(1.0f) + f32(0.5f) + f32(0.25f))) +
                             chunk(0xA000, cstr("Float"));
    const Imported r = importBytes(file3ds(chunk(0xAFFF, body)), true);
    ASSERT_EQ(r.model.numOfMaterials, 1);
    const t3DSMaterial& m = r.model.pMaterials[0];
    EXPECT_EQ(m.color[0], 0x00);
    EXPECT_EQ(m.color[1], 0x00);
    EXPECT_EQ(m.color[2], 0x80);
    EXPECT_EQ(m.reserved, 0);
    EXPECT_EQ(m.transparency, 0.0);
    EXPECT_STREQ(m.name, "Float");
    EXPECT_NE(r.out.find("Reading color chunk 12 bytes (0,0,128)\n"), std::string::npos);
}

TEST(Load3DSTest, TextureFileComesOnlyFromTheTextureMapChunk)
{
    // A specular map (0xA204) holds a file name too, but only 0xA200 is read into fileName.
    const std::string body = chunk(0xA000, cstr("Shiny")) + chunk(0xA204, chunk(0xA300, cstr("SHINE.BMP")));
    const Imported r = importBytes(file3ds(chunk(0xAFFF, body)));
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_STREQ(r.model.pMaterials[0].fileName, "");
}

TEST(Load3DSTest, TextureMapChildrenOtherThanTheFileNameAreReadPast)
{
    const std::string map = chunk(0xA200, percent(100) + chunk(0xA351, u16(0)) + chunk(0xA300, cstr("T.BMP")) +
                                              chunk(0xA354, f32(2.0f)));
    const Imported r = importBytes(file3ds(chunk(0xAFFF, chunk(0xA000, cstr("M")) + map) + triangleObject("t", "M")));
    EXPECT_EQ(r.out, "");
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_STREQ(r.model.pMaterials[0].fileName, "T.BMP");
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_TRUE(r.model.pObject[0].hasTexture);
}

TEST(Load3DSTest, UnknownMaterialChunksAreReadPastSilently)
{
    const std::string body = chunk(0xA010, color24(9, 9, 9)) + chunk(0xA040, percent(99)) +
                             chunk(0xA000, cstr("Quiet")) + chunk(0xA087, f32(1.0f));
    const Imported r = importBytes(file3ds(chunk(0xAFFF, body)), true);
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_STREQ(r.model.pMaterials[0].name, "Quiet");
    EXPECT_EQ(r.model.pMaterials[0].color[0], 0);
    EXPECT_EQ(r.model.pMaterials[0].specular, 0.0);
    EXPECT_EQ(r.out, "\nReading VERSION...\n\nReading OBJECTINFO...\n\nReading material (6 bytes) \"Quiet\"\n");
}

TEST(Load3DSTest, MaterialAsFirstObjectInfoChildIsThrownAway)
{
    // The first child of OBJECTINFO is taken for the mesh version and discarded, whatever it is.
    const Imported r = importBytes(primary(version(3) + chunk(0x3D3D, material("Lost", "LOST.BMP") +
                                                                          material("Kept", "") +
                                                                          triangleObject("t", "Lost"))));
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_STREQ(r.model.pMaterials[0].name, "Kept");
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_FALSE(r.model.pObject[0].hasTexture);
    EXPECT_EQ(r.model.pObject[0].pFaces[0].matID, 0);
}

TEST(Load3DSTest, MaterialsAndObjectsOutsideObjectInfoAreReadToo)
{
    // The file-level loop handles every id it knows wherever it meets it.
    const Imported r = importBytes(primary(version(3) + material("Loose", "L.BMP") + triangleObject("free", "Loose")));
    ASSERT_EQ(r.model.numOfMaterials, 1);
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_TRUE(r.model.pObject[0].hasTexture);
}

TEST(Load3DSTest, LongNamesAreCutAndTerminated)
{
    const std::string longName(300, 'n');
    const Imported r = importBytes(file3ds(material(longName, longName) + triangleObject(longName, longName)));
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_EQ(std::string(r.model.pMaterials[0].name), std::string(254, 'n'));
    EXPECT_EQ(std::string(r.model.pMaterials[0].fileName), std::string(254, 'n'));
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(std::string(r.model.pObject[0].name), std::string(254, 'n'));
    // The cut names still match each other, so the group finds its material.
    EXPECT_TRUE(r.model.pObject[0].hasTexture);
}

// ---------------------------------------------------------------- sub-objects

TEST(Load3DSTest, MeshChunksFillVerticesFacesAndTextureCoordinates)
{
    const std::vector<V> verts = {{1, 2, 3}, {-4, 5.5f, 0.25f}, {7, -8, 9}, {0, 0, -1}};
    const std::vector<UV> tex = {{0, 0}, {1, 0}, {0.5f, 1}, {0.25f, 0.75f}};
    const Imported r = importBytes(
        file3ds(object("Quad", mesh(vertices(verts) + uvs(tex) + faces({{0, 1, 2}, {2, 3, 0}})))));
    EXPECT_EQ(r.out, "");
    ASSERT_EQ(r.model.numOfObjects, 1);
    const t3DSObject& o = r.model.pObject[0];
    EXPECT_STREQ(o.name, "Quad");
    EXPECT_EQ(o.numOfVerts, 4);
    EXPECT_EQ(o.numOfFaces, 2);
    EXPECT_EQ(o.numOfTexVertex, 4);
    EXPECT_EQ(o.materialID, 0);
    EXPECT_FALSE(o.hasTexture);
    EXPECT_TRUE(o.transparentFaces.empty());
    for (int i = 0; i < 4; ++i) {
        expectPoint(o.pVerts[i], toYUp(verts[i]));
        EXPECT_EQ(o.pTexVerts[i].x, tex[i].u);
        EXPECT_EQ(o.pTexVerts[i].y, tex[i].v);
    }
    EXPECT_EQ(o.pFaces[1].vertIndex[0], 2);
    EXPECT_EQ(o.pFaces[1].vertIndex[1], 3);
    EXPECT_EQ(o.pFaces[1].vertIndex[2], 0);
    for (const t3DSFace& f : o.pFaces) {
        EXPECT_EQ(f.coordIndex[0] + f.coordIndex[1] + f.coordIndex[2], 0);
        EXPECT_EQ(f.matID, 0);
    }
}

TEST(Load3DSTest, VerticesTurnFromZUpToYUp)
{
    const Imported r = importBytes(file3ds(object("Up", mesh(vertices({{1, 2, 3}, {0, 0, 10}, {0, 10, 0}}) +
                                                             faces({{0, 1, 2}})))));
    ASSERT_EQ(r.model.numOfObjects, 1);
    const t3DSObject& o = r.model.pObject[0];
    // (x, y, z) becomes (x, z, -y) up to the rounding of -pi/2.
    expectPoint(o.pVerts[0], {1, 3, -2}, 1e-5f);
    expectPoint(o.pVerts[1], {0, 10, 0}, 1e-5f);
    expectPoint(o.pVerts[2], {0, 0, -10}, 1e-5f);
    expectPoint(o.pVerts[0], toYUp({1, 2, 3}));
}

TEST(Load3DSTest, ObjectWithoutMeshKeepsItsNameAndNoGeometry)
{
    // A camera or a light is a named object whose only child is read past.
    const Imported r = importBytes(file3ds(triangleObject("a") + object("Camera01", chunk(0x4700, std::string(32, 'c'))) +
                                           triangleObject("b")));
    EXPECT_EQ(r.out, "");
    ASSERT_EQ(r.model.numOfObjects, 3);
    EXPECT_STREQ(r.model.pObject[1].name, "Camera01");
    EXPECT_EQ(r.model.pObject[1].numOfVerts, 0);
    EXPECT_EQ(r.model.pObject[1].numOfFaces, 0);
    EXPECT_STREQ(r.model.pObject[2].name, "b");
}

TEST(Load3DSTest, FaceGroupSetsMaterialOfItsFacesAndTheSubObject)
{
    const std::string mats = material("Red", "") + material("Wood", "WOOD.BMP");
    const std::string quad = mesh(vertices({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}) +
                                  faces({{0, 1, 2}, {0, 2, 3}, {1, 2, 3}}, faceGroup("Wood", {0, 2})));
    const Imported r = importBytes(file3ds(mats + object("Crate", quad)));
    ASSERT_EQ(r.model.numOfObjects, 1);
    const t3DSObject& o = r.model.pObject[0];
    EXPECT_EQ(o.materialID, 1);
    EXPECT_TRUE(o.hasTexture);
    EXPECT_EQ(o.pFaces[0].matID, 1);
    EXPECT_EQ(o.pFaces[1].matID, 0);
    EXPECT_EQ(o.pFaces[2].matID, 1);
}

TEST(Load3DSTest, FaceGroupOfUntexturedMaterialLeavesHasTextureFalse)
{
    const Imported r = importBytes(file3ds(material("Red", "") + triangleObject("t", "Red")));
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_FALSE(r.model.pObject[0].hasTexture);
}

TEST(Load3DSTest, FaceGroupNamingUnknownMaterialLeavesMaterialIdAndGivesMatIdZero)
{
    const std::string mats = material("A", "") + material("B", "") + material("C", "");
    const std::string tri2 = mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}) +
                                  faces({{0, 1, 2}, {1, 3, 2}}, faceGroup("B", {0, 1}) + faceGroup("Nobody", {1})));
    const Imported r = importBytes(file3ds(mats + object("o", tri2)));
    ASSERT_EQ(r.model.numOfObjects, 1);
    const t3DSObject& o = r.model.pObject[0];
    EXPECT_EQ(o.materialID, 1);
    EXPECT_EQ(o.pFaces[0].matID, 1);
    EXPECT_EQ(o.pFaces[1].matID, 0);
    EXPECT_EQ(r.out, "");
}

TEST(Load3DSTest, TwoFaceGroupsLeaveMaterialIdAtTheLaterMatch)
{
    const std::string mats = material("A", "A.BMP") + material("B", "") + material("C", "");
    const std::string tri2 = mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}) +
                                  faces({{0, 1, 2}, {1, 3, 2}}, faceGroup("C", {1}) + faceGroup("A", {0})));
    const Imported r = importBytes(file3ds(mats + object("o", tri2)));
    ASSERT_EQ(r.model.numOfObjects, 1);
    const t3DSObject& o = r.model.pObject[0];
    EXPECT_EQ(o.materialID, 0);
    EXPECT_TRUE(o.hasTexture);
    EXPECT_EQ(o.pFaces[0].matID, 0);
    EXPECT_EQ(o.pFaces[1].matID, 2);

    const std::string reversed = mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}) +
                                      faces({{0, 1, 2}, {1, 3, 2}}, faceGroup("A", {0}) + faceGroup("C", {1})));
    const Imported r2 = importBytes(file3ds(mats + object("o", reversed)));
    EXPECT_EQ(r2.model.pObject[0].materialID, 2);
    EXPECT_TRUE(r2.model.pObject[0].hasTexture);  // once set, it stays
}

TEST(Load3DSTest, FaceGroupMatchesTheFirstMaterialOfItsNameCaseSensitively)
{
    const std::string mats = material("Twin", "") + material("twin", "") + material("Twin", "");
    const Imported r = importBytes(file3ds(mats + triangleObject("a", "Twin") + triangleObject("b", "twin") +
                                           triangleObject("c", "TWIN")));
    ASSERT_EQ(r.model.numOfObjects, 3);
    EXPECT_EQ(r.model.pObject[0].pFaces[0].matID, 0);
    EXPECT_EQ(r.model.pObject[1].pFaces[0].matID, 1);
    EXPECT_EQ(r.model.pObject[2].pFaces[0].matID, 0);
}

TEST(Load3DSTest, FaceGroupSeesMaterialsRenamedAfterEarlierObjects)
{
    // The name index follows the materials as they are read.
    const std::string renamed = chunk(0xAFFF, chunk(0xA000, cstr("First")) + chunk(0xA000, cstr("Second")));
    const Imported r = importBytes(file3ds(material("Zero", "") + triangleObject("a", "Zero") + renamed +
                                           triangleObject("b", "Second") + triangleObject("c", "First")));
    ASSERT_EQ(r.model.numOfObjects, 3);
    EXPECT_EQ(r.model.pObject[0].pFaces[0].matID, 0);
    EXPECT_EQ(r.model.pObject[1].pFaces[0].matID, 1);
    EXPECT_EQ(r.model.pObject[1].materialID, 1);
    EXPECT_EQ(r.model.pObject[2].materialID, 0);
}

TEST(Load3DSTest, FaceGroupCountCountsEveryGroupChunk)
{
    const std::string tri2 = mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}) +
                                  faces({{0, 1, 2}, {1, 3, 2}}, faceGroup("X", {0}) + faceGroup("Y", {1})));
    const std::string path = writeTemp(file3ds(material("X", "") + object("o", tri2) + triangleObject("p", "Q")));
    Load3DS loader;
    t3DSModel model;
    StdoutCapture capture;
    loader.import3DS(model, path.c_str());
    EXPECT_EQ(loader.faceGroupCount, 3);
}

TEST(Load3DSTest, FacesChunkChildrenAreMetAsSiblings)
{
    // The smoothing group inside the faces chunk is skipped by the object loop, which prints its
    // "Skipping" line; a face-material group placed after the faces chunk works the same as one inside.
    const std::string inside = faces({{0, 1, 2}}, chunk(0x4150, u32(1)));
    const Imported r = importBytes(
        file3ds(material("X", "") + material("M", "M.BMP") +
                object("o", mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}) + inside + faceGroup("M", {0})))),
        true);
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(r.model.pObject[0].pFaces[0].matID, 1);
    EXPECT_TRUE(r.model.pObject[0].hasTexture);
    EXPECT_NE(r.out.find("Reading OBJECT #1 \"o\"...\nSkipping 4 bytes\n"), std::string::npos) << r.out;
}

TEST(Load3DSTest, ZeroFacesPrintsExitingMessageButReadingGoesOn)
{
    const std::string empty = object("Empty", mesh(vertices({{0, 0, 0}}) + faces({})));
    const Imported r = importBytes(file3ds(empty + triangleObject("After")));
    EXPECT_EQ(r.out, kZeroFacesLines);
    ASSERT_EQ(r.model.numOfObjects, 2);
    EXPECT_EQ(r.model.pObject[0].numOfFaces, 0);
    EXPECT_TRUE(r.model.pObject[0].pFaces.empty());
    EXPECT_EQ(r.model.pObject[1].numOfFaces, 1);
    EXPECT_STREQ(r.model.pObject[1].name, "After");
}

TEST(Load3DSTest, SecondVertexChunkReplacesTheFirst)
{
    const Imported r = importBytes(file3ds(object(
        "o", mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {5, 5, 5}}) + vertices({{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}) +
                  faces({{0, 1, 2}})))));
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(r.model.pObject[0].numOfVerts, 3);
    expectPoint(r.model.pObject[0].pVerts[1], toYUp({2, 0, 0}));
}

TEST(Load3DSTest, UnknownObjectChunkOfBufferSizeIsSkipped)
{
    const std::string big = chunk(0x4160, std::string(Load3DS::BUFFER_SIZE, '\x11'));
    const Imported r = importBytes(file3ds(object("Big", big + mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}) +
                                                                     faces({{0, 1, 2}})))),
                                   true);
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(r.model.pObject[0].numOfFaces, 1);
    EXPECT_NE(r.out.find("Skipping 200000 bytes\n"), std::string::npos);
}

TEST(Load3DSTest, KeyframerLargerThanTheScratchBufferIsPassedOver)
{
    // Chunks after a 300000-byte keyframer body are still read.
    const std::string keyframer = chunk(0xB000, chunk(0xB002, std::string(300000, '\x22')));
    const Imported r = importBytes(
        primary(version(3) + objectInfo(triangleObject("before")) + keyframer + material("After", "AFTER.BMP")),
        true);
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_STREQ(r.model.pMaterials[0].fileName, "AFTER.BMP");
    EXPECT_NE(r.out.find("Reading EDITKEYFRAME...\nm_CurrentChunk->length = 300012\n"
                         "m_CurrentChunk->bytesRead = 6\nReading EDITKEYFRAME done.\n"),
              std::string::npos);
    EXPECT_EQ(r.out.find("ERROR"), std::string::npos);
}

TEST(Load3DSTest, LargeChunksAtFileAndMaterialLevelArePassedOver)
{
    const std::string hugeMaterialChunk = chunk(0xA3FF, std::string(250000, '\x33'));
    const std::string mat = chunk(0xAFFF, hugeMaterialChunk + chunk(0xA000, cstr("Late")) +
                                              chunk(0xA050, percent(20)));
    const std::string hugeFileChunk = chunk(0x1234, std::string(210000, '\x44'));
    const Imported r = importBytes(primary(version(3) + hugeFileChunk + objectInfo(mat + triangleObject("t", "Late"))));
    EXPECT_EQ(r.out, "");
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_STREQ(r.model.pMaterials[0].name, "Late");
    EXPECT_DOUBLE_EQ(r.model.pMaterials[0].transparency, 0.2);
    ASSERT_EQ(r.model.numOfObjects, 1);
    EXPECT_EQ(r.model.pObject[0].materialID, 0);
}

TEST(Load3DSTest, FiftySubObjectsAreReadWithoutComplaint)
{
    std::string body;
    for (int i = 0; i < 50; ++i)
        body += triangleObject("o" + std::to_string(i));
    const Imported r = importBytes(file3ds(body));
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.model.numOfObjects, 50);
}

TEST(Load3DSTest, SubObjectsBeyondFiftyAreSkippedWithOneErrorLine)
{
    std::string body;
    for (int i = 0; i < 53; ++i)
        body += triangleObject("o" + std::to_string(i));
    const Imported r = importBytes(file3ds(body + material("AfterObjects", "")));
    EXPECT_EQ(r.out, "ERROR: Load3DS::import3DS: \"" + r.path +
                         "\" has more than 50 sub-objects; the others are skipped\n");
    EXPECT_EQ(r.model.numOfObjects, 50);
    EXPECT_EQ(r.model.pObject.size(), 50u);
    EXPECT_STREQ(r.model.pObject[49].name, "o49");
    // Chunks after the skipped objects are still read.
    ASSERT_EQ(r.model.numOfMaterials, 1);
    EXPECT_STREQ(r.model.pMaterials[0].name, "AfterObjects");
    expectConsistent(r.model);
}

TEST(Load3DSTest, SecondImportAfterCountsResetReusesTheEntries)
{
    t3DSModel model;
    Load3DS loader;
    StdoutCapture capture;
    const std::string first = writeTemp(file3ds(material("M1", "") + material("M2", "") + triangleObject("a") +
                                                triangleObject("b")));
    loader.import3DS(model, first.c_str());
    ASSERT_EQ(model.numOfObjects, 2);
    // What Object3DS::load does before it imports: counts to 0, arrays left as they are.
    model.numOfObjects = 0;
    model.numOfMaterials = 0;
    const std::string second = writeTemp(file3ds(material("N1", "N.BMP") + triangleObject("c", "N1")));
    loader.import3DS(model, second.c_str());
    EXPECT_EQ(capture.take(), "");
    EXPECT_EQ(model.numOfObjects, 1);
    EXPECT_EQ(model.numOfMaterials, 1);
    EXPECT_STREQ(model.pObject[0].name, "c");
    EXPECT_TRUE(model.pObject[0].hasTexture);
    EXPECT_STREQ(model.pMaterials[0].name, "N1");
    EXPECT_STREQ(model.pMaterials[0].fileName, "N.BMP");
}

// ---------------------------------------------------------------- normals

TEST(Load3DSTest, TriangleWoundCounterClockwiseFromAboveGetsNormalUp)
{
    // In the file's Z-up frame the triangle lies flat and turns counter-clockwise seen from +z; after
    // the conversion "up" is +y, and the division by minus the face count makes the normal point there.
    const Imported r = importBytes(file3ds(triangleObject("flat")));
    ASSERT_EQ(r.model.numOfObjects, 1);
    for (const CVector3& n : r.model.pObject[0].pNormals)
        expectPoint(n, {0, 1, 0});
}

TEST(Load3DSTest, SharedVertexNormalIsTheNormalisedMeanOfItsFaces)
{
    // Two faces meeting at a right angle along the x axis: the shared vertices get the diagonal.
    const Imported r = importBytes(file3ds(object(
        "roof", mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}) + faces({{0, 1, 2}, {1, 0, 3}})))));
    ASSERT_EQ(r.model.numOfObjects, 1);
    const t3DSObject& o = r.model.pObject[0];
    const float d = std::sqrt(0.5f);
    // Face 0 faces +z in the file (+y after conversion), face 1 faces +y in the file (-z after it).
    expectPoint(o.pNormals[0], {0, d, -d});
    expectPoint(o.pNormals[1], {0, d, -d});
    expectPoint(o.pNormals[2], {0, 1, 0});
    expectPoint(o.pNormals[3], {0, 0, -1});
}

TEST(Load3DSTest, VertexUsedByNoFaceGetsNonFiniteNormal)
{
    const Imported r = importBytes(file3ds(object(
        "o", mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {9, 9, 9}}) + faces({{0, 1, 2}})))));
    ASSERT_EQ(r.model.numOfObjects, 1);
    const CVector3& lonely = r.model.pObject[0].pNormals[3];
    EXPECT_FALSE(std::isfinite(lonely.x));
    EXPECT_FALSE(std::isfinite(lonely.y));
    EXPECT_FALSE(std::isfinite(lonely.z));
    EXPECT_TRUE(std::isfinite(r.model.pObject[0].pNormals[0].y));
}

TEST(Load3DSTest, VertexOfOnlyACollapsedFaceGetsAZeroNormal)
{
    // A face whose three corners are one vertex counts once: zero divided by minus one stays zero.
    const Imported r = importBytes(file3ds(object(
        "o", mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {4, 4, 4}}) + faces({{0, 1, 2}, {3, 3, 3}})))));
    ASSERT_EQ(r.model.numOfObjects, 1);
    const CVector3& n = r.model.pObject[0].pNormals[3];
    EXPECT_EQ(n.x, 0.0f);
    EXPECT_EQ(n.y, 0.0f);
    EXPECT_EQ(n.z, 0.0f);
}

TEST(Load3DSTest, ComputeNormalsWorksOnAModelBuiltInMemory)
{
    t3DSModel model;
    model.numOfObjects = 1;
    model.pObject.resize(1);
    t3DSObject& o = model.pObject[0];
    o.numOfVerts = 3;
    o.pVerts = {{0, 0, 0}, {0, 0, 1}, {1, 0, 0}};
    o.numOfFaces = 1;
    o.pFaces.resize(1);
    o.pFaces[0].vertIndex[0] = 0;
    o.pFaces[0].vertIndex[1] = 1;
    o.pFaces[0].vertIndex[2] = 2;
    Load3DS loader;
    loader.computeNormals(model);
    // A = P0 - P2 = (-1, 0, 0), B = P2 - P1 = (1, 0, -1), A x B = (0, -1, 0); divided by -1: (0, 1, 0).
    ASSERT_EQ(o.pNormals.size(), 3u);
    for (const CVector3& n : o.pNormals) {
        EXPECT_EQ(n.x, 0.0f);
        EXPECT_EQ(n.y, 1.0f);
        EXPECT_EQ(n.z, 0.0f);
    }
}

// ---------------------------------------------------------------- progress output

TEST(Load3DSTest, VerboseImportPrintsEveryProgressLine)
{
    const std::string mat =
        chunk(0xAFFF, chunk(0xA000, cstr("Stone")) + chunk(0xA010, color24(1, 1, 1)) +
                          chunk(0xA020, color24(10, 20, 30)) + chunk(0xA041, percent(25)) +
                          chunk(0xA050, percent(50)) + chunk(0xA084, percent(75)) +
                          chunk(0xA200, chunk(0xA300, cstr("ROCK.BMP")) + chunk(0xA351, u16(0))));
    const std::string box =
        object("Box", mesh(vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}) + uvs({{0, 0}, {1, 0}, {0, 1}}) +
                           faces({{0, 1, 2}}, faceGroup("Stone", {0}) + chunk(0x4150, u32(0))) +
                           chunk(0x4160, std::string(48, '\0'))));
    const std::string keyframer = chunk(0xB000, chunk(0xB00A, std::string(10, '\0')));
    const std::string bytes =
        primary(version(3) + objectInfo(chunk(0x0100, f32(1.0f)) + mat + box) + keyframer);

    const Imported r = importBytes(bytes, true);
    EXPECT_EQ(r.out,
              "\nReading VERSION...\n"
              "\nReading OBJECTINFO...\n"
              "\nSkipping chunks...\n"
              "\nReading material (6 bytes) \"Stone\"\n"
              "Reading color chunk 3 bytes (10,20,30)\n"
              "Reading specular = 0.250000 (2 bytes)\n"
              "Reading transparency = 0.500000 (2 bytes)\n"
              "Reading emissive = 0.750000 (2 bytes)\n"
              "Reading MATMAPFILE (9 bytes) \"ROCK.BMP\"\n"
              "\nReading OBJECT #1 \"Box\"...\n"
              "Skipping 4 bytes\n"
              "Skipping 48 bytes\n"
              "\nReading EDITKEYFRAME...\n"
              "m_CurrentChunk->length = 22\n"
              "m_CurrentChunk->bytesRead = 6\n"
              "Reading EDITKEYFRAME done.\n");

    const Imported quiet = importBytes(bytes, false);
    EXPECT_EQ(quiet.out, "");
    ASSERT_EQ(quiet.model.numOfObjects, 1);
    EXPECT_TRUE(quiet.model.pObject[0].hasTexture);
}

TEST(Load3DSTest, VerboseObjectNumbersCountFromOne)
{
    const Imported r = importBytes(primary(objectInfo(triangleObject("first") + triangleObject("second"))), true);
    EXPECT_EQ(r.out,
              "\nReading OBJECTINFO...\n"
              "\nReading OBJECT #1 \"first\"...\n"
              "\nReading OBJECT #2 \"second\"...\n");
}

TEST(Load3DSTest, WarningsAndErrorsArePrintedWhenVerboseToo)
{
    const Imported r = importBytes(primary(version(7) + objectInfo(object("e", mesh(faces({}))))), true);
    EXPECT_EQ(r.out,
              "\nReading VERSION...\n"
              "This 3DS file is over version 3 so it may load incorrectly \n"
              "\nReading OBJECTINFO...\n"
              "\nReading OBJECT #1 \"e\"...\n" +
                  kZeroFacesLines);
}
