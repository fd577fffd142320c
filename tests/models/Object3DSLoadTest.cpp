// Object3DSLoadTest.cpp -- Object3DS loading: construction, copies, the load sequence with its texture
// rules and fatal exits, the configuration file, texture types, measuring, scaling, dispose and the
// text dump, on written models and on real ones.
#include "Object3DSTestSupport.h"

#include <GL/gl.h>

#include <cmath>
#include <cstring>

using namespace ostrum_test;
using namespace test3ds;
using namespace objtest;

namespace {

class Object3DSLoad : public GLTest {};

// One triangle of material `material` (texture `texture`, none when empty) in a model file.
std::string texturedTriangleModel(const std::string& texture, const std::string& materialName = "mat")
{
    return file3ds(material(materialName, texture, 10, 20, 30) + triangleObject("tri", materialName));
}

// A model of n materials without textures and one triangle.
std::string manyMaterials(int n)
{
    std::string body;
    for (int i = 0; i < n; ++i)
        body += material("m" + std::to_string(i), "");
    return file3ds(body + triangleObject("tri", "m0"));
}

GLint textureSize(GLuint texture, GLenum which)
{
    glBindTexture(GL_TEXTURE_2D, texture);
    GLint v = -1;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, which, &v);
    return v;
}

std::string copyAsset(const std::string& relative, const std::string& dir)
{
    const std::string name = relative.substr(relative.rfind('/') + 1);
    const std::string to = dir + "/" + name;
    EXPECT_TRUE(LFile::copy(assetsDir() + "/" + relative, to)) << relative;
    return to;
}

// ---------------------------------------------------------------- construction and copies

TEST_F(Object3DSLoad, ConstructedModelIsEmpty)
{
    auto o = makeObject();
    EXPECT_EQ(o->model.numOfObjects, 0);
    EXPECT_EQ(o->model.numOfMaterials, 0);
    EXPECT_EQ(o->getNumSubObjects(), 0);
    EXPECT_FALSE(o->verbose);
    EXPECT_EQ(o->root, nullptr);
    EXPECT_FALSE(o->hasAnimData());
    EXPECT_EQ(o->numMovies, 0);
    EXPECT_EQ(o->numFacesTotal, 0);
    EXPECT_EQ(o->showBones, 0);
    EXPECT_DOUBLE_EQ(o->frameStep, 0.2);
    EXPECT_DOUBLE_EQ(o->curFrame, 0.0);
    EXPECT_TRUE(o->sequenceName.empty());
    EXPECT_TRUE(o->figureName.empty());
    EXPECT_TRUE(o->animFileName.empty());
    EXPECT_TRUE(o->jointAngles.empty());
    EXPECT_TRUE(o->animRecords.empty());
    EXPECT_EQ(o->textureType, 0);
    EXPECT_STREQ(o->fileName, "");
    for (int i = 0; i < Object3DS::MAX_BONES; ++i) {
        EXPECT_EQ(o->boneWorldPos[i].x, 0.0f);
        EXPECT_EQ(o->boneWorldPos[i].y, 0.0f);
        EXPECT_EQ(o->boneWorldPos[i].z, 0.0f);
        EXPECT_EQ(o->boneWorldPos[i].w, 1.0f);
        EXPECT_EQ(o->boneTurnX[i], 0.0);
        EXPECT_EQ(o->boneTurnY[i], 0.0);
        EXPECT_EQ(o->boneTurnZ[i], 0.0);
    }
    for (int i = 0; i < Object3DS::MAX_TEXTURES; ++i) {
        EXPECT_EQ(o->animSlot[i], -1);
        EXPECT_EQ(o->movieSlot[i], -1);
        EXPECT_EQ(o->textures[i], 0u);
    }
}

TEST_F(Object3DSLoad, CopySharesGLNamesAndOwnsItsData)
{
    auto o = makeObject();
    loadCaptured(*o, writeModel(file3ds(material("red", "", 255, 0, 0) + triangleObject("tri", "red"))));
    o->lodDistance = 321;
    o->boneTurnX[3] = 12.5;

    auto copy = std::make_unique<Object3DS>(*o);
    EXPECT_EQ(copy->opaqueList, o->opaqueList);
    EXPECT_EQ(copy->transparentList, o->transparentList);
    EXPECT_EQ(copy->subObjectLists, o->subObjectLists);
    EXPECT_EQ(copy->lodDistance, 321);
    EXPECT_EQ(copy->boneTurnX[3], 12.5);
    EXPECT_STREQ(copy->fileName, o->fileName);
    ASSERT_EQ(copy->model.numOfObjects, 1);
    EXPECT_EQ(copy->model.pObject[0].pVerts.size(), 3u);
    EXPECT_DOUBLE_EQ(copy->radius, o->radius);

    copy->model.pObject[0].pVerts[0].x = 99.0f;
    EXPECT_NE(o->model.pObject[0].pVerts[0].x, 99.0f);

    auto assigned = makeObject();
    *assigned = *o;
    EXPECT_EQ(assigned->opaqueList, o->opaqueList);
    EXPECT_EQ(assigned->model.pMaterials.size(), 1u);

    auto moved = std::make_unique<Object3DS>(std::move(*copy));
    EXPECT_EQ(moved->opaqueList, o->opaqueList);
    EXPECT_EQ(moved->model.pObject[0].pVerts[0].x, 99.0f);
    auto moveAssigned = makeObject();
    *moveAssigned = std::move(*moved);
    EXPECT_EQ(moveAssigned->lodDistance, 321);
    EXPECT_EQ(moveAssigned->model.numOfObjects, 1);
}

// ---------------------------------------------------------------- the load sequence

TEST_F(Object3DSLoad, LoadKeepsFileNameCountsFacesAndBuildsLists)
{
    auto o = makeObject();
    const std::string bytes =
        file3ds(meshObject("a", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}, {{0, 1, 2}, {1, 3, 2}}) +
                meshObject("b", {{0, 0, 1}, {1, 0, 1}, {0, 1, 1}}, {{0, 1, 2}}));
    const std::string path = writeModel(bytes);
    EXPECT_EQ(loadCaptured(*o, path), "");
    EXPECT_STREQ(o->fileName, path.c_str());
    EXPECT_EQ(o->model.numOfObjects, 2);
    EXPECT_EQ(o->numFacesTotal, 3);
    EXPECT_EQ(o->lodDistance, 1000);
    ASSERT_EQ(o->subObjectLists.size(), 2u);
    EXPECT_TRUE(glIsList(o->subObjectLists[0]));
    EXPECT_TRUE(glIsList(o->subObjectLists[1]));
    EXPECT_TRUE(glIsList(o->opaqueList));
    EXPECT_TRUE(glIsList(o->transparentList));
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
    EXPECT_FALSE(o->hasAnimData());
}

TEST_F(Object3DSLoad, FileNameIsCutTo255Characters)
{
    std::string dir = makeTempDir();
    while (dir.size() < 270) {
        dir += "/abcdefghijklmnopqrstuvwxyz";
        makeDir(dir);
    }
    const std::string path = dir + "/model.3ds";
    writeFile(path, file3ds(triangleObject("tri")));
    auto o = makeObject();
    loadCaptured(*o, path);
    EXPECT_EQ(std::strlen(o->fileName), 255u);
    EXPECT_EQ(std::string(o->fileName), path.substr(0, 255));
    EXPECT_EQ(o->model.numOfObjects, 1);
}

TEST_F(Object3DSLoad, VerboseLoadPrintsProgressLines)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/wall.bmp", solidBmp(200, 100, 50));
    const std::string path = dir + "/model.3ds";
    writeFile(path, texturedTriangleModel("wall.bmp"));
    auto o = makeObject();
    o->verbose = true;
    const std::string out = loadCaptured(*o, path);
    const size_t loading = out.find("Loading 3DS model \"" + path + "\"...\n");
    const size_t reader = out.find("Reading OBJECTINFO...\n");
    const size_t texture = out.find("\nLoading texture \"" + dir + "/wall.bmp\"...\n");
    const size_t lists = out.find("Creating 1 subobject DLs\n");
    ASSERT_NE(loading, std::string::npos) << out;
    ASSERT_NE(reader, std::string::npos) << out;
    ASSERT_NE(texture, std::string::npos) << out;
    ASSERT_NE(lists, std::string::npos) << out;
    EXPECT_EQ(loading, 0u);
    EXPECT_LT(loading, reader);
    EXPECT_LT(reader, texture);
    EXPECT_LT(texture, lists);
}

TEST_F(Object3DSLoad, QuietLoadOfTexturedModelPrintsNothing)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/wall.bmp", solidBmp(200, 100, 50));
    writeFile(dir + "/model.3ds", texturedTriangleModel("wall.bmp"));
    auto o = makeObject();
    EXPECT_EQ(loadCaptured(*o, dir + "/model.3ds"), "");
    EXPECT_TRUE(glIsTexture(o->textures[0]));
    EXPECT_EQ(textureSize(o->textures[0], GL_TEXTURE_WIDTH), 8);
    EXPECT_EQ(o->model.pMaterials[0].textureId, 0);
}

TEST_F(Object3DSLoad, TextureOfModelInModelsDirectoryLoads)
{
    // "models/wall.bmp": the first dot stands at index 11.
    const std::string dir = makeTempDir();
    makeDir(dir + "/models");
    writeFile(dir + "/models/wall.bmp", solidBmp(10, 20, 30));
    writeFile(dir + "/models/m.3ds", texturedTriangleModel("wall.bmp"));
    WorkingDirectory cwd(dir);
    auto o = makeObject();
    EXPECT_EQ(loadCaptured(*o, "models/m.3ds"), "");
    EXPECT_EQ(o->model.pMaterials[0].textureId, 0);
    EXPECT_TRUE(glIsTexture(o->textures[0]));
}

TEST_F(Object3DSLoad, TextureOfModelInDotSlashDirectoryEndsProcess)
{
    // "./m/wall.bmp": the first dot stands at index 0.
    const std::string dir = makeTempDir();
    makeDir(dir + "/m");
    writeFile(dir + "/m/wall.bmp", solidBmp(10, 20, 30));
    writeFile(dir + "/m/m.3ds", texturedTriangleModel("wall.bmp"));
    WorkingDirectory cwd(dir);
    auto o = makeObject();
    OSTRUM_EXPECT_EXIT_WITH_LINE(o->load("./m/m.3ds"), 255, "ERROR in Object3DS::load");
}

TEST_F(Object3DSLoad, FirstDotAtIndexNineIsAcceptedAndAtEightIsFatal)
{
    const std::string dir = makeTempDir();
    makeDir(dir + "/abcd");
    makeDir(dir + "/abc");
    writeFile(dir + "/abcd/wall.bmp", solidBmp(1, 2, 3));
    writeFile(dir + "/abcd/m.3ds", texturedTriangleModel("wall.bmp"));
    writeFile(dir + "/abc/wall.bmp", solidBmp(1, 2, 3));
    writeFile(dir + "/abc/m.3ds", texturedTriangleModel("wall.bmp"));
    WorkingDirectory cwd(dir);
    auto ok = makeObject();
    EXPECT_EQ(loadCaptured(*ok, "abcd/m.3ds"), "");  // "abcd/wall.bmp": dot at 9
    EXPECT_TRUE(glIsTexture(ok->textures[0]));
    auto bad = makeObject();
    OSTRUM_EXPECT_EXIT_WITH_LINE(bad->load("abc/m.3ds"), 255, "ERROR in Object3DS::load");  // dot at 8
}

TEST_F(Object3DSLoad, TexturePathWithoutDotEndsProcess)
{
    const std::string path = writeModel(texturedTriangleModel("wallbitmap"));
    auto o = makeObject();
    OSTRUM_EXPECT_EXIT_WITH_LINE(o->load(path), 255, "ERROR in Object3DS::load");
}

TEST_F(Object3DSLoad, AviTextureStemIsNotLoadedAsPlainTexture)
{
    // The file exists and is a readable bitmap, yet nothing is loaded and no warning is printed.
    const std::string dir = makeTempDir();
    writeFile(dir + "/intro_avi.bmp", solidBmp(1, 2, 3));
    writeFile(dir + "/model.3ds", texturedTriangleModel("intro_avi.bmp"));
    auto o = makeObject();
    o->verbose = true;
    const std::string out = loadCaptured(*o, dir + "/model.3ds");
    EXPECT_EQ(out.find("Loading texture"), std::string::npos) << out;
    EXPECT_EQ(o->textures[0], 0u);
    EXPECT_EQ(o->model.pMaterials[0].textureId, 0);
    EXPECT_EQ(o->movieSlot[0], -1);
}

TEST_F(Object3DSLoad, AnimatedTextureNameIsNotLoadedEvenWhenMissing)
{
    // "_a" eight characters before the dot: fire_a000001.bmp.
    const std::string path = writeModel(texturedTriangleModel("fire_a000001.bmp"));
    auto o = makeObject();
    o->verbose = true;
    const std::string out = loadCaptured(*o, path);
    EXPECT_EQ(out.find("Loading texture"), std::string::npos) << out;
    EXPECT_EQ(out.find("WARNING"), std::string::npos) << out;
    EXPECT_EQ(o->textures[0], 0u);
    EXPECT_EQ(o->model.pMaterials[0].textureId, 0);
    EXPECT_EQ(o->animSlot[0], -1);
}

TEST_F(Object3DSLoad, NameWithAInOtherPlaceIsAPlainTexture)
{
    // "_a" seven characters before the dot is no animation marker: a missing plain texture.
    const std::string path = writeModel(texturedTriangleModel("fire_a00001.bmp"));
    auto o = makeObject();
    const std::string out = loadCaptured(*o, path);
    const std::string texture = path.substr(0, path.rfind('/') + 1) + "fire_a00001.bmp";
    EXPECT_EQ(out, "** WARNING: Texture file \"" + texture + "\" not found!\n");
}

TEST_F(Object3DSLoad, MissingTextureGetsBlankTextureWarningAndLoadingGoesOn)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/there.bmp", solidBmp(9, 9, 9, 4));
    writeFile(dir + "/model.3ds", file3ds(material("gone", "missing.bmp") + material("plain", "") +
                                          material("here", "there.bmp") + triangleObject("tri", "gone")));
    auto o = makeObject();
    const std::string out = loadCaptured(*o, dir + "/model.3ds");
    EXPECT_EQ(out, "** WARNING: Texture file \"" + dir + "/missing.bmp\" not found!\n");
    ASSERT_TRUE(glIsTexture(o->textures[0]));
    EXPECT_EQ(textureSize(o->textures[0], GL_TEXTURE_WIDTH), 16);
    EXPECT_EQ(textureSize(o->textures[0], GL_TEXTURE_HEIGHT), 16);
    EXPECT_EQ(o->model.pMaterials[0].textureId, 0);
    EXPECT_EQ(o->model.pMaterials[1].textureId, -1);
    EXPECT_EQ(o->textures[1], 0u);
    EXPECT_EQ(o->model.pMaterials[2].textureId, 2);
    EXPECT_TRUE(glIsTexture(o->textures[2]));
    EXPECT_EQ(textureSize(o->textures[2], GL_TEXTURE_WIDTH), 4);
}

TEST_F(Object3DSLoad, LoadResetsSlotsAnimationRecordsAndTextureType)
{
    auto o = makeObject();
    o->animSlot[0] = 3;
    o->movieSlot[0] = 4;
    o->animSlot[5] = 7;
    o->textureType = 1;
    o->animRecords.resize(2);
    o->lodDistance = 5;
    loadCaptured(*o, writeModel(file3ds(material("a", "") + triangleObject("tri", "a"))));
    EXPECT_EQ(o->animSlot[0], -1);
    EXPECT_EQ(o->movieSlot[0], -1);
    EXPECT_EQ(o->animSlot[5], 7);  // only the materials of the model are reset
    EXPECT_EQ(o->textureType, 0);
    EXPECT_TRUE(o->animRecords.empty());
    EXPECT_EQ(o->lodDistance, 1000);
    EXPECT_EQ(o->model.pMaterials[0].textureId, -1);
}

TEST_F(Object3DSLoad, OneHundredTwentyMaterialsLoad)
{
    auto o = makeObject();
    EXPECT_EQ(loadCaptured(*o, writeModel(manyMaterials(120))), "");
    EXPECT_EQ(o->model.numOfMaterials, 120);
}

TEST_F(Object3DSLoad, OneHundredTwentyOneMaterialsEndProcessWithMaxTexturesMessage)
{
    const std::string path = writeModel(manyMaterials(121));
    auto o = makeObject();
    OSTRUM_EXPECT_EXIT_WITH_LINE(o->load(path), 255, "ERROR: Too many textures. Increase MAX_TEXTURES");
}

TEST_F(Object3DSLoad, MissingModelFileEndsProcessThroughReader)
{
    const std::string path = "/nonexistent_ostrum_dir/none.3ds";
    auto o = makeObject();
    OSTRUM_EXPECT_EXIT_WITH_LINE(o->load(path), 244, "3ds file: \"" + path + "\" not found.");
}

// ---------------------------------------------------------------- configuration

class Object3DSConfig : public Object3DSLoad {
protected:
    // A model tower1.3ds in a fresh folder, with tower_cfg.txt holding `config` unless it is null.
    int lodAfterLoad(const char* config)
    {
        const std::string dir = makeTempDir();
        writeFile(dir + "/tower1.3ds", file3ds(triangleObject("tri")));
        if (config != nullptr)
            writeFile(dir + "/tower_cfg.txt", config);
        auto o = makeObject();
        EXPECT_EQ(loadCaptured(*o, dir + "/tower1.3ds"), "");
        return o->lodDistance;
    }
};

TEST_F(Object3DSConfig, LodDistanceLineSets250)
{
    EXPECT_EQ(lodAfterLoad("lodDistance 250\n"), 250);
}

TEST_F(Object3DSConfig, LineWithThreeTokensIsIgnored)
{
    EXPECT_EQ(lodAfterLoad("lodDistance = 250\n"), 1000);
}

TEST_F(Object3DSConfig, CommentLineIsIgnored)
{
    EXPECT_EQ(lodAfterLoad("#lodDistance 250\n"), 1000);
    EXPECT_EQ(lodAfterLoad("# lodDistance 250\n"), 1000);
}

TEST_F(Object3DSConfig, MissingFileLeaves1000)
{
    EXPECT_EQ(lodAfterLoad(nullptr), 1000);
}

TEST_F(Object3DSConfig, ExtraBlanksAroundAndBetweenWordsStillSet250)
{
    EXPECT_EQ(lodAfterLoad("   lodDistance      250   \n"), 250);
}

TEST_F(Object3DSConfig, LastMatchingLineWinsAndOtherLinesAreIgnored)
{
    EXPECT_EQ(lodAfterLoad("x\n\nunknownKey 5\nlodDistance 250\r\n# comment\nlodDistance 75"), 75);
}

TEST_F(Object3DSConfig, ValueIsReadAsAtoiReadsIt)
{
    EXPECT_EQ(lodAfterLoad("lodDistance 300abc\n"), 300);
    EXPECT_EQ(lodAfterLoad("lodDistance far\n"), 0);
    EXPECT_EQ(lodAfterLoad("lodDistance -20\n"), -20);
    EXPECT_EQ(lodAfterLoad("lodDistance 99999999999\n"), 2147483647);
}

TEST_F(Object3DSConfig, KeyIsCaseSensitive)
{
    EXPECT_EQ(lodAfterLoad("loddistance 250\n"), 1000);
}

TEST_F(Object3DSConfig, ConfigurationNameDropsLastFiveCharacters)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/tower1_cfg.txt", "lodDistance 1\n");  // not the name: ignored
    writeFile(dir + "/tower_cfg.txt", "lodDistance 2\n");
    auto o = makeObject();
    o->lodDistance = 7;
    o->loadConfig(dir + "/tower1.3ds");
    EXPECT_EQ(o->lodDistance, 2);
}

TEST_F(Object3DSConfig, ShortNameIsKeptWhole)
{
    const std::string dir = makeTempDir();
    WorkingDirectory cwd(dir);
    writeFile(dir + "/abc_cfg.txt", "lodDistance 42\n");
    auto o = makeObject();
    o->loadConfig("abc");
    EXPECT_EQ(o->lodDistance, 42);
    o->loadConfig("abcde");  // five characters: the name becomes "_cfg.txt", which does not exist
    EXPECT_EQ(o->lodDistance, 42);
}

TEST_F(Object3DSConfig, NameIsResolvedWithoutLetterCase)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/TOWER_CFG.TXT", "lodDistance 33\n");
    auto o = makeObject();
    o->loadConfig(dir + "/tower1.3ds");
    EXPECT_EQ(o->lodDistance, 33);
}

// ---------------------------------------------------------------- texture types

TEST_F(Object3DSLoad, TextureTypeFollowsExtension)
{
    auto o = makeObject();
    EXPECT_EQ(Object3DSTest::setTextureType(*o, "x.TGA"), 1);
    EXPECT_EQ(o->textureType, 1);
    EXPECT_EQ(Object3DSTest::setTextureType(*o, "wall.bmp"), 0);
    EXPECT_EQ(Object3DSTest::setTextureType(*o, "x.TGA"), 1);
    EXPECT_EQ(Object3DSTest::setTextureType(*o, "WALL.BMP"), 0);
    // At most three characters after the first dot.
    o->textureType = 1;
    EXPECT_EQ(Object3DSTest::setTextureType(*o, "wall.bmpx"), 0);
}

TEST_F(Object3DSLoad, LowerCaseTgaIsNotSupported)
{
    auto o = makeObject();
    o->textureType = 0;
    StdoutCapture capture;
    EXPECT_EQ(Object3DSTest::setTextureType(*o, "x.tga"), 0);
    EXPECT_EQ(capture.take(), "tga is a non supported texture type\n");
    EXPECT_EQ(o->textureType, 0);
}

TEST_F(Object3DSLoad, ExtensionStartsAtFirstDot)
{
    auto o = makeObject();
    o->textureType = 1;
    StdoutCapture capture;
    EXPECT_EQ(Object3DSTest::setTextureType(*o, "a.b.bmp"), 1);
    EXPECT_EQ(Object3DSTest::setTextureType(*o, "noextension"), 1);
    EXPECT_EQ(Object3DSTest::setTextureType(*o, "x.jpg"), 1);
    EXPECT_EQ(capture.take(),
              "b.b is a non supported texture type\n is a non supported texture type\njpg is a non supported "
              "texture type\n");
}

// ---------------------------------------------------------------- measuring

TEST_F(Object3DSLoad, MeasureKeepsNegatedSecondCoordinate)
{
    auto o = makeObject();
    // File (x, y, z) becomes (x, z, -y): library y runs from 2 to 5, so minY = -5 and maxY = -2.
    loadCaptured(*o, writeModel(file3ds(meshObject("a", {{1, 0, 2}, {3, -1, 5}, {2, -4, 3}}, {{0, 1, 2}}))));
    const t3DSObject& s = o->model.pObject[0];
    double y0 = 1e9, y1 = -1e9;
    for (const CVector3& v : s.pVerts) {
        y0 = std::min(y0, -static_cast<double>(v.y));
        y1 = std::max(y1, -static_cast<double>(v.y));
    }
    EXPECT_DOUBLE_EQ(o->minY, y0);
    EXPECT_DOUBLE_EQ(o->maxY, y1);
    EXPECT_NEAR(o->minY, -5.0, 1e-5);
    EXPECT_NEAR(o->maxY, -2.0, 1e-5);
    EXPECT_NEAR(o->minX, 1.0, 1e-6);
    EXPECT_NEAR(o->maxX, 3.0, 1e-6);
    EXPECT_NEAR(o->minZ, 0.0, 1e-5);
    EXPECT_NEAR(o->maxZ, 4.0, 1e-5);
    EXPECT_NEAR(o->centerX, 2.0, 1e-6);
    EXPECT_NEAR(o->centerY, -3.5, 1e-5);
    EXPECT_NEAR(o->centerZ, 2.0, 1e-5);
    EXPECT_NEAR(o->radius, std::sqrt(1.0 + 1.5 * 1.5 + 4.0), 1e-5);
    EXPECT_DOUBLE_EQ(o->subMinY[0], o->minY);
    EXPECT_DOUBLE_EQ(o->subRadius[0], o->radius);
}

TEST_F(Object3DSLoad, VerticesUsedByNoFaceAreNotMeasured)
{
    auto o = makeObject();
    loadCaptured(*o, writeModel(file3ds(meshObject("a", {{0, 0, 0}, {1, 0, 0}, {0, 0, 1}, {100, 100, 100}},
                                                   {{0, 1, 2}}))));
    EXPECT_NEAR(o->maxX, 1.0, 1e-6);
    EXPECT_NEAR(o->minY, -1.0, 1e-6);
    EXPECT_NEAR(o->maxZ, 0.0, 1e-5);
}

TEST_F(Object3DSLoad, WholeModelBoxSpansSubObjectBoxes)
{
    auto o = makeObject();
    loadCaptured(*o, writeModel(file3ds(meshObject("a", {{0, 0, 0}, {1, 0, 0}, {0, 0, 1}}, {{0, 1, 2}}) +
                                        meshObject("b", {{4, 0, 0}, {6, 0, 0}, {4, 0, 3}}, {{0, 1, 2}}))));
    EXPECT_NEAR(o->subMinX[0], 0.0, 1e-6);
    EXPECT_NEAR(o->subMaxX[0], 1.0, 1e-6);
    EXPECT_NEAR(o->subMinX[1], 4.0, 1e-6);
    EXPECT_NEAR(o->subMaxX[1], 6.0, 1e-6);
    EXPECT_NEAR(o->subMinY[1], -3.0, 1e-6);
    EXPECT_NEAR(o->subCenterX[1], 5.0, 1e-6);
    EXPECT_NEAR(o->subCenterY[1], -1.5, 1e-6);
    EXPECT_NEAR(o->subRadius[1], std::sqrt(1.0 + 1.5 * 1.5), 1e-5);
    EXPECT_NEAR(o->minX, 0.0, 1e-6);
    EXPECT_NEAR(o->maxX, 6.0, 1e-6);
    EXPECT_NEAR(o->minY, -3.0, 1e-6);
    EXPECT_NEAR(o->maxY, 0.0, 1e-6);
    EXPECT_NEAR(o->radius, std::sqrt(9.0 + 1.5 * 1.5), 1e-5);
}

TEST_F(Object3DSLoad, SubObjectWithoutFacesDoesNotWidenModelBox)
{
    auto o = makeObject();
    // The reader's zero-face warning goes with the empty faces chunk.
    const std::string out = loadCaptured(
        *o, writeModel(file3ds(meshObject("empty", {{50, 50, 50}}, {}) +
                               meshObject("b", {{4, 0, 0}, {6, 0, 0}, {4, 0, 3}}, {{0, 1, 2}}))));
    EXPECT_NE(out.find("Illegal 3DS subobject without faces!"), std::string::npos);
    EXPECT_EQ(o->subMinX[0], 0.0);
    EXPECT_EQ(o->subMaxX[0], 0.0);
    EXPECT_EQ(o->subRadius[0], 0.0);
    EXPECT_NEAR(o->minX, 4.0, 1e-6);
    EXPECT_NEAR(o->maxX, 6.0, 1e-6);
}

TEST_F(Object3DSLoad, MeasureWithoutSubObjectArrayEndsProcess)
{
    auto o = makeObject();
    o->model.numOfObjects = 1;
    OSTRUM_EXPECT_EXIT_WITH_LINE(Object3DSTest::measure(*o), 255, "Error in Object3DS::measure!");
}

TEST_F(Object3DSLoad, MeasureKeepsFiftySubObjectsAndSaysSo)
{
    auto o = makeObject();
    loadCaptured(*o, writeModel(file3ds(triangleObject("tri"))));
    std::strcpy(o->fileName, "big.3ds");
    o->model.pObject.resize(51, o->model.pObject[0]);
    o->model.pObject[50].pVerts[1].x = 1000.0f;  // beyond the bound: not measured
    o->model.numOfObjects = 51;
    StdoutCapture capture;
    Object3DSTest::measure(*o);
    EXPECT_EQ(capture.take(),
              "ERROR: Object3DS::measure: \"big.3ds\" has 51 sub-objects; bounding volumes are kept for the first 50\n");
    EXPECT_NEAR(o->maxX, 1.0, 1e-6);
    EXPECT_NEAR(o->subMaxX[49], 1.0, 1e-6);
}

TEST_F(Object3DSLoad, RealModelWithMoreThanFiftySubObjectsKeepsFifty)
{
    const std::string dir = makeTempDir();
    const std::string path = copyAsset("3ds/anim8or-projects/water_temple.3ds", dir);
    auto o = makeObject();
    const std::string out = loadCaptured(*o, path);
    EXPECT_NE(out.find("has more than 50 sub-objects"), std::string::npos) << out;
    EXPECT_EQ(o->model.numOfObjects, 50);
    EXPECT_EQ(o->subObjectLists.size(), 50u);
    EXPECT_GT(o->radius, 0.0);
}

// ---------------------------------------------------------------- scaling

TEST_F(Object3DSLoad, ScaleMultipliesVerticesKeepsNormalsAndRebuildsLists)
{
    auto o = makeObject();
    loadCaptured(*o, writeModel(file3ds(meshObject("a", {{1, 0, 2}, {3, -1, 5}, {2, -4, 3}}, {{0, 1, 2}}))));
    const std::vector<CVector3> before = o->model.pObject[0].pVerts;
    const std::vector<CVector3> normals = o->model.pObject[0].pNormals;
    const double radius = o->radius;
    const unsigned int oldOpaque = o->opaqueList;
    o->scale(2.5);
    const t3DSObject& s = o->model.pObject[0];
    for (size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(s.pVerts[i].x, static_cast<float>(before[i].x * 2.5));
        EXPECT_EQ(s.pVerts[i].y, static_cast<float>(before[i].y * 2.5));
        EXPECT_EQ(s.pVerts[i].z, static_cast<float>(before[i].z * 2.5));
        EXPECT_EQ(s.pNormals[i].x, normals[i].x);
        EXPECT_EQ(s.pNormals[i].y, normals[i].y);
        EXPECT_EQ(s.pNormals[i].z, normals[i].z);
    }
    EXPECT_NEAR(o->radius, radius * 2.5, 1e-5);
    EXPECT_TRUE(glIsList(o->opaqueList));
    EXPECT_TRUE(glIsList(o->transparentList));
    ASSERT_EQ(o->subObjectLists.size(), 1u);
    EXPECT_TRUE(glIsList(o->subObjectLists[0]));
    // The old lists are gone; the names may be handed out again.
    EXPECT_TRUE(o->opaqueList == oldOpaque || !glIsList(oldOpaque));
}

TEST_F(Object3DSLoad, ScaleToOneOnRadiusFourReturnsQuarter)
{
    auto o = makeObject();
    // Library x from -2.4 to 2.4 and z from -3.2 to 3.2 (file y from 3.2 to -3.2): radius 4.
    loadCaptured(*o, writeModel(file3ds(meshObject("a", {{-2.4f, 3.2f, 0}, {2.4f, 3.2f, 0}, {0, -3.2f, 0}},
                                                   {{0, 1, 2}}))));
    EXPECT_NEAR(o->radius, 4.0, 1e-5);
    const double factor = o->scaleTo(1.0);
    EXPECT_NEAR(factor, 0.25, 1e-6);
    EXPECT_NEAR(o->radius, 1.0, 1e-6);
}

// ---------------------------------------------------------------- dispose and dump

TEST_F(Object3DSLoad, DisposeReleasesTexturesListsAndMaterialsButKeepsSubObjects)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/wall.bmp", solidBmp(1, 2, 3));
    writeFile(dir + "/model.3ds", texturedTriangleModel("wall.bmp"));
    auto o = makeObject();
    loadCaptured(*o, dir + "/model.3ds");
    const unsigned int texture = o->textures[0];
    const unsigned int opaque = o->opaqueList, transparent = o->transparentList, sub = o->subObjectLists[0];
    ASSERT_TRUE(glIsTexture(texture));
    o->dispose();
    EXPECT_FALSE(glIsTexture(texture));
    EXPECT_FALSE(glIsList(opaque));
    EXPECT_FALSE(glIsList(transparent));
    EXPECT_FALSE(glIsList(sub));
    EXPECT_TRUE(o->subObjectLists.empty());
    EXPECT_TRUE(o->model.pMaterials.empty());
    EXPECT_EQ(o->model.numOfMaterials, 1);
    EXPECT_EQ(o->model.numOfObjects, 1);
    EXPECT_EQ(o->model.pObject.size(), 1u);
    EXPECT_EQ(o->root, nullptr);
}

TEST_F(Object3DSLoad, ToStringWritesEverySubObject)
{
    auto o = makeObject();
    loadCaptured(*o, writeModel(file3ds(
                         meshObject("first", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}, {{0, 1, 2}, {1, 3, 2}},
                                    "", {{0, 0}, {1, 0}, {0, 1}, {1, 1}}) +
                         triangleObject("second"))));
    StdoutCapture capture;
    o->toString();
    EXPECT_EQ(capture.take(),
              "Name = first\nNumOfFaces = 2\nNumOfVerts = 4\nNumOfTexVertex = 4\n\n"
              "Name = second\nNumOfFaces = 1\nNumOfVerts = 3\nNumOfTexVertex = 0\n\n");
}

// ---------------------------------------------------------------- real models

TEST_F(Object3DSLoad, RealRifleLoadsItsBitmapTexture)
{
    const std::string dir = makeTempDir();
    const std::string path = copyAsset("3ds/assimp-nonbsd/mar_rifle.3ds", dir);
    copyAsset("3ds/assimp-nonbsd/m_rifl.bmp", dir);
    auto o = makeObject();
    EXPECT_EQ(loadCaptured(*o, path), "");
    ASSERT_EQ(o->model.numOfMaterials, 1);
    EXPECT_EQ(o->model.pMaterials[0].textureId, 0);
    ASSERT_TRUE(glIsTexture(o->textures[0]));
    EXPECT_EQ(textureSize(o->textures[0], GL_TEXTURE_WIDTH), 256);
    EXPECT_EQ(textureSize(o->textures[0], GL_TEXTURE_HEIGHT), 256);
    EXPECT_EQ(o->numFacesTotal, 572);
    EXPECT_EQ(o->model.numOfObjects, 1);
}

TEST_F(Object3DSLoad, TextureNameIsResolvedWithoutLetterCase)
{
    // Written on a case-insensitive file system: the model names WALL.BMP, the file is wall.bmp.
    const std::string dir = makeTempDir();
    writeFile(dir + "/wall.bmp", solidBmp(1, 2, 3, 4));
    writeFile(dir + "/model.3ds", texturedTriangleModel("WALL.BMP"));
    auto o = makeObject();
    EXPECT_EQ(loadCaptured(*o, dir + "/model.3ds"), "");
    ASSERT_TRUE(glIsTexture(o->textures[0]));
    EXPECT_EQ(textureSize(o->textures[0], GL_TEXTURE_WIDTH), 4);
}

TEST_F(Object3DSLoad, RealModelWithMissingTexturesWarnsForEach)
{
    const std::string dir = makeTempDir();
    const std::string path = copyAsset("3ds/assimp/test1.3ds", dir);
    auto o = makeObject();
    const std::string out = loadCaptured(*o, path);
    int warnings = 0;
    for (size_t at = out.find("** WARNING: Texture file \""); at != std::string::npos;
         at = out.find("** WARNING: Texture file \"", at + 1))
        ++warnings;
    EXPECT_EQ(warnings, 3) << out;
    EXPECT_NE(out.find("** WARNING: Texture file \"" + dir + "/IMAGE1.JPG\" not found!\n"), std::string::npos) << out;
    for (int i = 0; i < o->model.numOfMaterials; ++i)
        EXPECT_TRUE(glIsTexture(o->textures[i]));
    EXPECT_EQ(o->numFacesTotal, 108);
}

TEST_F(Object3DSLoad, RealModelsLoadAndMeasure)
{
    const char* models[] = {"3ds/assimp/fels.3ds",          "3ds/assimp/RotatingCube.3DS",
                            "3ds/assimp/cubes_with_alpha.3DS", "3ds/anim8or-projects/waterfall.3ds",
                            "3ds/anim8or-projects/arch_mage.3ds", "3ds/assimp-nonbsd/cart_wheel.3DS"};
    for (const char* m : models) {
        SCOPED_TRACE(m);
        const std::string dir = makeTempDir();
        const std::string path = copyAsset(m, dir);
        auto o = makeObject();
        loadCaptured(*o, path);
        EXPECT_GT(o->model.numOfObjects, 0);
        EXPECT_GT(o->radius, 0.0);
        EXPECT_LE(o->minX, o->maxX);
        EXPECT_LE(o->minY, o->maxY);
        EXPECT_LE(o->minZ, o->maxZ);
        int faces = 0;
        for (const t3DSObject& s : o->model.pObject)
            faces += s.numOfFaces;
        EXPECT_EQ(o->numFacesTotal, faces);
        // Every used vertex lies in the box (y on the negated coordinate).
        for (const t3DSObject& s : o->model.pObject)
            for (const t3DSFace& f : s.pFaces)
                for (int c = 0; c < 3; ++c) {
                    const CVector3& v = s.pVerts[f.vertIndex[c]];
                    EXPECT_GE(v.x, o->minX);
                    EXPECT_LE(v.x, o->maxX);
                    EXPECT_GE(-v.y, o->minY);
                    EXPECT_LE(-v.y, o->maxY);
                }
        EXPECT_TRUE(glIsList(o->opaqueList));
    }
}

}  // namespace
