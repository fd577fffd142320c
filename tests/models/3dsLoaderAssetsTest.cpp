// 3dsLoaderAssetsTest.cpp -- the 3DS chunk reader on real models made by other tools: counts, names,
// materials, texture names and vertices as the files hold them, and normals against the plain
// definition.
#include <ostrum_gl/models/3dsLoader.h>

#include <ostrum_core/LFile.h>

#include "Test3DSWriter.h"

#include <cmath>
#include <cstring>

using namespace ostrum_test;
using namespace test3ds;

namespace {

struct ObjectWant {
    const char* name;
    int verts, faces, texVerts, materialID;
    bool hasTexture;
};

struct MaterialWant {
    const char* name;
    const char* fileName;
    int r, g, b;
    double transparency, emissive, specular;
};

// Copies the model into a fresh temporary folder and imports it from there.
Imported importAsset(const std::string& relative, bool verbose = false)
{
    const std::string source = assetsDir() + "/3ds/" + relative;
    const std::string name = relative.substr(relative.rfind('/') + 1);
    const std::string copy = makeTempDir() + "/" + name;
    EXPECT_TRUE(LFile::copy(source, copy)) << source;
    return importFile(copy, verbose);
}

void expectObjects(const t3DSModel& model, const std::vector<ObjectWant>& want)
{
    ASSERT_EQ(model.numOfObjects, static_cast<int>(want.size()));
    for (size_t k = 0; k < want.size(); ++k) {
        const t3DSObject& o = model.pObject[k];
        SCOPED_TRACE(want[k].name);
        EXPECT_STREQ(o.name, want[k].name);
        EXPECT_EQ(o.numOfVerts, want[k].verts);
        EXPECT_EQ(o.numOfFaces, want[k].faces);
        EXPECT_EQ(o.numOfTexVertex, want[k].texVerts);
        EXPECT_EQ(o.materialID, want[k].materialID);
        EXPECT_EQ(o.hasTexture, want[k].hasTexture);
    }
}

void expectMaterials(const t3DSModel& model, const std::vector<MaterialWant>& want)
{
    ASSERT_EQ(model.numOfMaterials, static_cast<int>(want.size()));
    for (size_t i = 0; i < want.size(); ++i) {
        const t3DSMaterial& m = model.pMaterials[i];
        SCOPED_TRACE(want[i].name);
        EXPECT_STREQ(m.name, want[i].name);
        EXPECT_STREQ(m.fileName, want[i].fileName);
        EXPECT_EQ(m.color[0], want[i].r);
        EXPECT_EQ(m.color[1], want[i].g);
        EXPECT_EQ(m.color[2], want[i].b);
        EXPECT_DOUBLE_EQ(m.transparency, want[i].transparency);
        EXPECT_DOUBLE_EQ(m.emissive, want[i].emissive);
        EXPECT_DOUBLE_EQ(m.specular, want[i].specular);
    }
}

// How many faces of a sub-object carry each material index.
std::vector<int> facesPerMaterial(const t3DSModel& model, int k)
{
    std::vector<int> count(std::max(model.numOfMaterials, 1), 0);
    for (const t3DSFace& f : model.pObject[k].pFaces)
        ++count.at(f.matID);
    return count;
}

int totalVerts(const t3DSModel& model)
{
    int n = 0;
    for (const t3DSObject& o : model.pObject)
        n += o.numOfVerts;
    return n;
}

int totalFaces(const t3DSModel& model)
{
    int n = 0;
    for (const t3DSObject& o : model.pObject)
        n += o.numOfFaces;
    return n;
}

// The normals as defined: for every vertex, a scan of every face; the faces that use the vertex (each
// once) add their unnormalised A x B, with A = P0 - P2 and B = P2 - P1; the sum is divided by minus the
// count and scaled to unit length.
std::vector<CVector3> quadraticNormals(const t3DSObject& o)
{
    struct N {
        float x, y, z;
    };
    std::vector<N> faceNormals;
    for (const t3DSFace& f : o.pFaces) {
        const CVector3& p0 = o.pVerts[f.vertIndex[0]];
        const CVector3& p1 = o.pVerts[f.vertIndex[1]];
        const CVector3& p2 = o.pVerts[f.vertIndex[2]];
        const N a = {p0.x - p2.x, p0.y - p2.y, p0.z - p2.z};
        const N b = {p2.x - p1.x, p2.y - p1.y, p2.z - p1.z};
        faceNormals.push_back({a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x});
    }
    std::vector<CVector3> out(o.pVerts.size());
    for (size_t v = 0; v < o.pVerts.size(); ++v) {
        N sum = {0.0f, 0.0f, 0.0f};
        int shared = 0;
        for (size_t i = 0; i < o.pFaces.size(); ++i) {
            const int* c = o.pFaces[i].vertIndex;
            const int vi = static_cast<int>(v);
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
        out[v].x = n.x;
        out[v].y = n.y;
        out[v].z = n.z;
    }
    return out;
}

void expectBitIdentical(const std::vector<CVector3>& got, const std::vector<CVector3>& want)
{
    ASSERT_EQ(got.size(), want.size());
    size_t differing = 0;
    for (size_t v = 0; v < got.size(); ++v)
        if (std::memcmp(&got[v], &want[v], sizeof(CVector3)) != 0)
            ++differing;
    EXPECT_EQ(differing, 0u);
}

}  // namespace

// ---------------------------------------------------------------- assimp test models

TEST(Load3DSAssetsTest, Test1HasNineTexturedBoxesAndThreeMaterials)
{
    const Imported r = importAsset("assimp/test1.3ds");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"Box01", 32, 12, 32, 0, true},
                            {"Box02", 32, 12, 32, 1, true},
                            {"Box04", 32, 12, 32, 1, true},
                            {"Box05", 32, 12, 32, 2, true},
                            {"Box06", 32, 12, 32, 2, true},
                            {"Box07", 32, 12, 32, 2, true},
                            {"Box08", 32, 12, 32, 1, true},
                            {"Box09", 32, 12, 32, 1, true},
                            {"Box10", 32, 12, 32, 0, true}});
    expectMaterials(r.model, {{"2 - Default", "IMAGE1.JPG", 150, 150, 150, 0, 0, 0},
                              {"1 - Default", "CWALL02.JPG", 150, 150, 150, 0, 0, 0},
                              {"3 - Default", "IMAGE2.JPG", 150, 150, 150, 0, 0, 0}});
    for (int k = 0; k < r.model.numOfObjects; ++k)
        for (const t3DSFace& f : r.model.pObject[k].pFaces)
            EXPECT_EQ(f.matID, r.model.pObject[k].materialID);
    expectConsistent(r.model);
}

TEST(Load3DSAssetsTest, CubeWithDiffuseTextureNamesItsPng)
{
    const Imported r = importAsset("assimp/cube_with_diffuse_texture.3DS");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"Quader01", 32, 12, 32, 0, true}});
    expectMaterials(r.model, {{"01 - Default", "TEST.PNG", 150, 150, 150, 0, 0, 0}});
}

TEST(Load3DSAssetsTest, CubeWithSpecularMapHasNoTextureFile)
{
    const Imported r = importAsset("assimp/cube_with_specular_texture.3DS");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"Quader01", 32, 12, 32, 0, false}});
    expectMaterials(r.model, {{"01 - Default", "", 0, 0, 0, 0, 0, 0.2}});
}

TEST(Load3DSAssetsTest, CubesWithAlphaHaveFiveMaterialsOneTransparent)
{
    const Imported r = importAsset("assimp/cubes_with_alpha.3DS");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"Quader01", 26, 12, 26, 0, false},
                            {"Quader02", 26, 12, 26, 1, true},
                            {"Quader03", 26, 12, 26, 2, false},
                            {"Quader04", 26, 12, 26, 3, false},
                            {"Quader05", 26, 12, 26, 4, false}});
    expectMaterials(r.model, {{"04 - Default", "", 192, 0, 220, 0, 0, 0},
                              {"01 - Default", "BERETTA_.JPG", 109, 0, 5, 0, 0, 0},
                              {"05 - Default", "", 47, 62, 0, 0, 0, 0},
                              {"03 - Default", "", 201, 123, 0, 0, 0, 0},
                              {"Transparent", "", 178, 8, 0, 0.17, 0, 0}});
}

TEST(Load3DSAssetsTest, FelsHasNoTextureCoordinatesAndADoubleColourChunk)
{
    const Imported r = importAsset("assimp/fels.3ds");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"Default", 386, 768, 0, 0, false}});
    expectMaterials(r.model, {{"Default", "", 200, 200, 200, 0, 0, 0.4}});
}

TEST(Load3DSAssetsTest, FelsVerticesAreTheFileVerticesTurnedToYUp)
{
    // The vertex list read straight from the file: (x, y, z) must come back as (x, z, -y).
    const std::string bytes = readFile(assetsDir() + "/3ds/assimp/fels.3ds");
    const size_t at = bytes.find(u16(0x4110) + u32(4640));
    ASSERT_NE(at, std::string::npos);
    const Imported r = importAsset("assimp/fels.3ds");
    ASSERT_EQ(r.model.numOfObjects, 1);
    const t3DSObject& o = r.model.pObject[0];
    ASSERT_EQ(o.numOfVerts, 386);
    for (int v = 0; v < 386; ++v) {
        float p[3];
        std::memcpy(p, bytes.data() + at + 8 + 12 * v, 12);
        const float tolerance = 1e-6f * (1.0f + std::fabs(p[1]) + std::fabs(p[2]));
        EXPECT_EQ(o.pVerts[v].x, p[0]);
        EXPECT_NEAR(o.pVerts[v].y, p[2], tolerance);
        EXPECT_NEAR(o.pVerts[v].z, -p[1], tolerance);
    }
}

TEST(Load3DSAssetsTest, RotatingCubeHasNoMaterials)
{
    const Imported r = importAsset("assimp/RotatingCube.3DS");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"Box01", 26, 12, 26, 0, false}});
    EXPECT_EQ(r.model.numOfMaterials, 0);
    for (const t3DSFace& f : r.model.pObject[0].pFaces)
        EXPECT_EQ(f.matID, 0);
}

TEST(Load3DSAssetsTest, CameraObjectBecomesAnEmptySubObject)
{
    const Imported r = importAsset("assimp/CameraRollAnimWithChildObject.3ds");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"Box01", 26, 12, 26, 0, false},
                            {"Camera01", 0, 0, 0, 0, false},
                            {"Box02", 26, 12, 26, 0, false}});
    EXPECT_EQ(r.model.numOfMaterials, 0);
    expectConsistent(r.model);
}

TEST(Load3DSAssetsTest, EmptyFileGivesTheChuckMessage)
{
    const Imported r = importAsset("assimp/empty.3ds");
    EXPECT_EQ(r.out, "Unable to load PRIMARY chuck from file \n");
    EXPECT_EQ(r.model.numOfObjects, 0);
}

// ---------------------------------------------------------------- models outside the BSD set

TEST(Load3DSAssetsTest, JeepHasSevenPartsSharingOneTexture)
{
    const Imported r = importAsset("assimp-nonbsd/jeep1.3ds");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"frw", 210, 192, 210, 0, true},
                            {"rrw", 210, 192, 210, 0, true},
                            {"flw", 210, 192, 210, 0, true},
                            {"rlw", 210, 192, 210, 0, true},
                            {"rsteer", 24, 36, 24, 0, true},
                            {"lsteer", 24, 36, 24, 0, true},
                            {"main", 1060, 1192, 1060, 0, true}});
    expectMaterials(r.model, {{"Material01", "jeep1.jpg", 204, 204, 204, 0, 0, 0.03}});
}

TEST(Load3DSAssetsTest, RifleNamesItsBitmap)
{
    const Imported r = importAsset("assimp-nonbsd/mar_rifle.3ds");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"m_rifle", 421, 572, 421, 0, true}});
    expectMaterials(r.model, {{"mat1", "m_rifl.bmp", 255, 255, 255, 0, 0, 1.0}});
}

TEST(Load3DSAssetsTest, SilencedGunLosesItsMaterialThatComesFirstInObjectInfo)
{
    // OBJECTINFO opens with the material instead of the mesh version; the first child is thrown away.
    const Imported r = importAsset("assimp-nonbsd/mp5_sil.3ds");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"Line06", 256, 366, 256, 0, false}});
    EXPECT_EQ(r.model.numOfMaterials, 0);
}

TEST(Load3DSAssetsTest, CartWheelHasThirteenUntexturedParts)
{
    const Imported r = importAsset("assimp-nonbsd/cart_wheel.3DS");
    EXPECT_EQ(r.out, "");
    std::vector<ObjectWant> want = {{"wheel_inne", 128, 256, 0, 0, false}};
    static const char* const rads[] = {"rad11", "rad12", "rad13", "rad14", "rad15",
                                       "rad16", "rad17", "rad18", "rad19", "rad20"};
    for (const char* name : rads)
        want.push_back({name, 8, 12, 0, 0, false});
    want.push_back({"wheel_meta", 256, 512, 0, 1, false});
    want.push_back({"wheel_oute", 256, 512, 0, 0, false});
    expectObjects(r.model, want);
    expectMaterials(r.model, {{"Wheel_wood", "", 127, 58, 39, 0, 0, 0.05}, {"wood_metal", "", 67, 74, 80, 0, 0, 0.05}});
}

// ---------------------------------------------------------------- Anim8or exports

TEST(Load3DSAssetsTest, SpaceShipKeepsTheLastGroupAsItsMaterial)
{
    const Imported r = importAsset("anim8or-projects/space_ship.3ds");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"mesh01", 120, 220, 120, 0, false}, {"mesh02", 24, 28, 24, 2, false}});
    expectMaterials(r.model, {{"jet_booster", "", 245, 105, 175, 0, 0.9, 0},
                              {"spaceship_frame", "", 159, 162, 248, 0, 0, 0},
                              {"cockpit", "", 125, 17, 131, 0, 0.9, 0.7}});
    EXPECT_EQ(facesPerMaterial(r.model, 0), (std::vector<int>{4, 216, 0}));
    EXPECT_EQ(facesPerMaterial(r.model, 1), (std::vector<int>{0, 0, 28}));
}

TEST(Load3DSAssetsTest, WaterfallHasRockAndHalfTransparentWater)
{
    const Imported r = importAsset("anim8or-projects/waterfall.3ds");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"waterfall_", 48, 84, 48, 1, false}});
    expectMaterials(r.model, {{"_rock_mountain", "", 119, 119, 119, 0, 0, 0},
                              {"_water", "", 71, 157, 157, 0.5, 1.0, 0},
                              {" -- default --", "", 224, 224, 224, 0, 0, 0.2}});
    EXPECT_EQ(facesPerMaterial(r.model, 0), (std::vector<int>{72, 12, 0}));
}

TEST(Load3DSAssetsTest, OrbAndWaterAreHalfTransparentAndGlowing)
{
    const Imported orb = importAsset("anim8or-projects/orb.3ds");
    EXPECT_EQ(orb.out, "");
    expectObjects(orb.model, {{"mesh01", 115, 168, 115, 0, false}});
    expectMaterials(orb.model, {{"_black_flame", "", 31, 31, 31, 0.5, 0.5, 0.2}});

    const Imported water = importAsset("anim8or-projects/water.3ds");
    EXPECT_EQ(water.out, "");
    expectObjects(water.model, {{"water_mesh", 8, 12, 8, 0, false}});
    expectMaterials(water.model, {{"water_mat", "", 1, 34, 93, 0.5, 1.0, 0}});
}

TEST(Load3DSAssetsTest, WingsHaveThreeGroupsEach)
{
    const Imported r = importAsset("anim8or-projects/wings.3ds");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"mesh06", 78, 136, 78, 0, false}, {"mesh07", 78, 136, 78, 0, false}});
    expectMaterials(r.model, {{"wing-innard", "", 226, 11, 17, 0.5, 0, 0},
                              {"wing-frame", "", 45, 9, 11, 0, 0, 0},
                              {"default00", "", 224, 224, 224, 0, 0, 0.2},
                              {" -- default --", "", 224, 224, 224, 0, 0, 0.2}});
    EXPECT_EQ(facesPerMaterial(r.model, 1), (std::vector<int>{56, 76, 4, 0}));
}

TEST(Load3DSAssetsTest, BoulderHasNoTextureCoordinates)
{
    const Imported r = importAsset("anim8or-projects/boulder_mesh_04.3ds");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"boulder_me", 12, 16, 0, 1, false}});
    expectMaterials(r.model, {{"stone_mat_03", "", 103, 116, 130, 0, 0, 0}, {"grass_mat", "", 77, 192, 16, 0, 0, 0}});
    EXPECT_EQ(facesPerMaterial(r.model, 0), (std::vector<int>{12, 4}));
}

TEST(Load3DSAssetsTest, HourGlassHasEightPartsAndThreeMaterials)
{
    const Imported r = importAsset("anim8or-projects/hour_glass.3ds");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"mesh01", 20, 28, 20, 0, false},
                            {"mesh04", 32, 52, 32, 0, false},
                            {"mesh05", 117, 212, 117, 0, false},
                            {"mesh06", 117, 212, 117, 0, false},
                            {"mesh07", 117, 212, 117, 0, false},
                            {"mesh08", 117, 212, 117, 0, false},
                            {"glass_top", 24, 36, 24, 1, false},
                            {"glass_bott", 24, 36, 24, 1, false}});
    expectMaterials(r.model, {{"handles_top_bott", "", 74, 18, 10, 0, 0, 0.6},
                              {"glass_mat", "", 81, 144, 148, 0, 0, 1.0},
                              {" -- default --", "", 224, 224, 224, 0, 0, 0.2}});
}

TEST(Load3DSAssetsTest, ArchMageHasTwentyThreePartsAndFifteenMaterials)
{
    const Imported r = importAsset("anim8or-projects/arch_mage.3ds");
    EXPECT_EQ(r.out, "");
    ASSERT_EQ(r.model.numOfObjects, 23);
    EXPECT_EQ(totalVerts(r.model), 1931);
    EXPECT_EQ(totalFaces(r.model), 2814);
    EXPECT_STREQ(r.model.pObject[0].name, "mesh20");
    EXPECT_STREQ(r.model.pObject[9].name, "mesh32");
    EXPECT_EQ(r.model.pObject[9].numOfFaces, 1068);
    EXPECT_EQ(r.model.pObject[9].materialID, 2);  // "_eyes", the later of "_skin" and "_eyes"
    EXPECT_STREQ(r.model.pObject[22].name, "mesh22");
    static const char* const names[] = {"default00", "hair - base", "_eyes", "_skin", "_beard",
                                        "cloak", "cloak-hem", "_orb", "_bark", "gloves",
                                        "nails", "arm-skin", "wing-frame", "wing-innard", " -- default --"};
    ASSERT_EQ(r.model.numOfMaterials, 15);
    for (int i = 0; i < 15; ++i) {
        EXPECT_STREQ(r.model.pMaterials[i].name, names[i]);
        EXPECT_STREQ(r.model.pMaterials[i].fileName, "");
    }
    EXPECT_DOUBLE_EQ(r.model.pMaterials[13].transparency, 0.5);
    EXPECT_DOUBLE_EQ(r.model.pMaterials[2].emissive, 1.0);
    EXPECT_DOUBLE_EQ(r.model.pMaterials[10].specular, 1.0);
    expectConsistent(r.model);
}

TEST(Load3DSAssetsTest, BlackWyvernHasTwoPartsAndFourGroups)
{
    const Imported r = importAsset("anim8or-projects/black_wyvern.3ds");
    EXPECT_EQ(r.out, "");
    expectObjects(r.model, {{"mesh12", 414, 704, 414, 1, false}, {"black_wyve", 4483, 7696, 4483, 2, false}});
    expectMaterials(r.model, {{"wing_inner", "", 81, 7, 7, 0.5, 0, 0},
                              {"horn", "", 99, 37, 10, 0, 0, 0},
                              {"eyes", "", 220, 11, 0, 0, 1.0, 0.5},
                              {"skin", "", 16, 18, 2, 0, 0, 0},
                              {" -- default --", "", 224, 224, 224, 0, 0, 0.2}});
    EXPECT_EQ(facesPerMaterial(r.model, 1), (std::vector<int>{92, 4928, 48, 2628, 0}));
}

TEST(Load3DSAssetsTest, WizardHasFortyFourPartsAndSeventeenMaterials)
{
    const Imported r = importAsset("anim8or-projects/wizard.3ds");
    EXPECT_EQ(r.out, "");
    ASSERT_EQ(r.model.numOfObjects, 44);
    EXPECT_EQ(totalVerts(r.model), 15017);
    EXPECT_EQ(totalFaces(r.model), 19232);
    EXPECT_STREQ(r.model.pObject[0].name, "hat");
    EXPECT_STREQ(r.model.pObject[13].name, "mesh60");
    EXPECT_EQ(r.model.pObject[13].numOfVerts, 13020);
    EXPECT_EQ(r.model.pObject[13].numOfFaces, 16320);
    ASSERT_EQ(r.model.numOfMaterials, 17);
    EXPECT_STREQ(r.model.pMaterials[0].name, "gloves");
    EXPECT_STREQ(r.model.pMaterials[16].name, " -- default --");
    // skin 7264, eyelid 256, eye 64, hair - base 8736 in mesh60.
    const std::vector<int> perMaterial = facesPerMaterial(r.model, 13);
    EXPECT_EQ(perMaterial[6], 7264);
    EXPECT_EQ(perMaterial[8], 256);
    EXPECT_EQ(perMaterial[7], 64);
    EXPECT_EQ(perMaterial[5], 8736);
    expectConsistent(r.model);
}

TEST(Load3DSAssetsTest, WaterTempleKeepsItsFirstFiftyOfOneHundredSeventyEightParts)
{
    const Imported r = importAsset("anim8or-projects/water_temple.3ds");
    EXPECT_EQ(r.out, "ERROR: Load3DS::import3DS: \"" + r.path +
                         "\" has more than 50 sub-objects; the others are skipped\n");
    ASSERT_EQ(r.model.numOfObjects, 50);
    static const char* const first[] = {"mesh35", "mesh36", "mesh37", "mesh38", "mesh39", "mesh40", "mesh01",
                                        "mesh02", "mesh03", "mesh04", "mesh05", "mesh06", "mesh07", "mesh08",
                                        "mesh09", "mesh10", "mesh11", "mesh12", "mesh13", "mesh14"};
    for (int k = 0; k < 20; ++k)
        EXPECT_STREQ(r.model.pObject[k].name, first[k]);
    EXPECT_EQ(r.model.pObject[14].numOfVerts, 153);
    EXPECT_EQ(r.model.pObject[14].numOfFaces, 260);
    EXPECT_EQ(r.model.pObject[15].materialID, 1);  // _well_water
    ASSERT_EQ(r.model.numOfMaterials, 6);
    EXPECT_STREQ(r.model.pMaterials[1].name, "_well_water");
    EXPECT_DOUBLE_EQ(r.model.pMaterials[1].transparency, 0.5);
    expectConsistent(r.model);
}

TEST(Load3DSAssetsTest, RealModelsNeedNoRepair)
{
    // Every model except the empty file and the one with too many parts reads without an ERROR line,
    // and every vertex that a face uses gets a unit normal.
    const char* const models[] = {"assimp/test1.3ds", "assimp/fels.3ds", "assimp-nonbsd/jeep1.3ds",
                                  "anim8or-projects/black_wyvern.3ds", "anim8or-projects/wizard.3ds",
                                  "anim8or-projects/arch_mage.3ds"};
    for (const char* name : models) {
        const Imported r = importAsset(name);
        EXPECT_EQ(r.out, "") << name;
        expectConsistent(r.model);
        for (const t3DSObject& o : r.model.pObject) {
            std::vector<bool> used(o.pVerts.size(), false);
            for (const t3DSFace& f : o.pFaces)
                used[f.vertIndex[0]] = used[f.vertIndex[1]] = used[f.vertIndex[2]] = true;
            for (size_t v = 0; v < o.pNormals.size(); ++v) {
                if (!used[v])
                    continue;
                const CVector3& n = o.pNormals[v];
                const float length = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
                if (length != 0.0f) {  // faces of zero area can cancel out
                    ASSERT_NEAR(length, 1.0f, 1e-5f) << name << " " << o.name << " vertex " << v;
                }
            }
        }
    }
}

// ---------------------------------------------------------------- normals against the definition

TEST(Load3DSNormalsTest, NormalsOfAGridOfFiveThousandFacesMatchThePlainDefinitionBitForBit)
{
    // A wavy 51 x 51 grid (5000 faces) with collapsed faces, faces that repeat a corner and faces listed
    // twice, so that vertices gather different numbers of faces in different orders.
    const int side = 51;
    std::vector<V> verts;
    for (int j = 0; j < side; ++j)
        for (int i = 0; i < side; ++i)
            verts.push_back({i * 0.37f, j * 0.41f, std::sin(i * 0.3f) * std::cos(j * 0.17f) * 2.5f});
    std::vector<F> list;
    for (int j = 0; j + 1 < side; ++j)
        for (int i = 0; i + 1 < side; ++i) {
            const unsigned a = j * side + i, b = a + 1, c = a + side, d = c + 1;
            list.push_back({a, b, d});
            list.push_back({a, d, c});
        }
    for (unsigned k = 0; k < 60; ++k) {
        list.push_back({k * 7, k * 7, k * 7});
        list.push_back({k * 11, k * 11 + 1, k * 11});
        list.push_back(list[k * 31]);
    }
    const Imported r = importBytes(file3ds(object("grid", mesh(vertices(verts) + faces(list)))));
    EXPECT_EQ(r.out, "");
    ASSERT_EQ(r.model.numOfObjects, 1);
    const t3DSObject& o = r.model.pObject[0];
    ASSERT_EQ(o.numOfFaces, 5180);
    expectBitIdentical(o.pNormals, quadraticNormals(o));
}

TEST(Load3DSNormalsTest, NormalsOfTheWyvernMatchThePlainDefinitionBitForBit)
{
    const Imported r = importAsset("anim8or-projects/black_wyvern.3ds");
    ASSERT_EQ(r.model.numOfObjects, 2);
    for (const t3DSObject& o : r.model.pObject)
        expectBitIdentical(o.pNormals, quadraticNormals(o));
}
