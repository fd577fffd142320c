// Object3DSFigureTest.cpp -- skeletal figures: the figure file name and its messages, the An8 reader on
// written and real files (bones, lengths, orientations, degrees of freedom, bound objects, sequences),
// damaged text, the bone bound, binding to sub-objects, joint angles, playback, scaling, world
// positions, drawing through feedback, and the text dumps.
#include "Object3DSTestSupport.h"

#include <GL/gl.h>

#include <dlfcn.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

using namespace ostrum_test;
using namespace test3ds;
using namespace objtest;
using ::testing::HasSubstr;

// ---------------------------------------------------------------- an open that fails on demand

namespace {
// When set, opening a figure file ("_as.an8") through the C++ streams fails as if the system refused it.
bool g_refuseFigureOpen = false;
}  // namespace

// The C++ file streams open files with fopen64; the library checks a figure file's existence through
// the C stdio fopen. Refusing only the stream's open reaches the "cannot open" exit of loadFigure.
extern "C" FILE* fopen64(const char* path, const char* mode)
{
    using Open = FILE* (*)(const char*, const char*);
    static Open real = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "fopen64"));
    if (g_refuseFigureOpen && path != nullptr) {
        const size_t n = std::strlen(path);
        if (n >= 7 && std::strcmp(path + n - 7, "_as.an8") == 0) {
            errno = EACCES;
            return nullptr;
        }
    }
    return real(path, mode);
}

namespace {

constexpr double kPi = 3.14159265358979323846;

// A figure of three bones: root (length 10), arm (length 5, turned 90 degrees about z, bound to
// "box" at origin (1, 0, 0)), hand (length 3); a sequence turning the arm about z from 0 to 90
// degrees over frames 0 to 10.
const char* const kFigure =
    "header {\n"
    "  version { \"1.00\" }\n"
    "}\n"
    "object { \"box\"\n"
    "  mesh {\n"
    "    name { \"mesh01\" }\n"
    "  }\n"
    "}\n"
    "figure { \"fig\"\n"
    "  bone { \"root\"\n"
    "    length { 10 }\n"
    "    namedobject { \"other\"\n"
    "      name { \"namedobject00\" }\n"
    "    }\n"
    "    bone { \"arm\"\n"
    "      length { 5 }\n"
    "      orientation { (0 0 0.70711 0.70711) }\n"
    "      dof { \"X\"  -45  0  45\n"
    "      }\n"
    "      dof { \"Y\"  0  0  0\n"
    "        locked { }\n"
    "      }\n"
    "      dof { \"Z\"  0  0  0\n"
    "        unlimited { }\n"
    "      }\n"
    "      influence { 0.25000 2 8 0.75000 2 8}\n"
    "      namedobject { \"box\"\n"
    "        name { \"namedobject01\" }\n"
    "        base {\n"
    "          origin { (1 0 0) }\n"
    "          orientation { (0 0 0 1) }\n"
    "        }\n"
    "        weightedby { \"arm\" }\n"
    "      }\n"
    "      bone { \"hand\"\n"
    "        length { 3 }\n"
    "      }\n"
    "    }\n"
    "  }\n"
    "}\n"
    "sequence { \"wave\"\n"
    "  figure { \"fig\" }\n"
    "  frames { 20 }\n"
    "  jointangle { \"arm\" \"Z\"\n"
    "    track {\n"
    "      floatkey { 0 0 0 0 \"S\" }\n"
    "      floatkey { 10 90 0 0 \"S\" }\n"
    "    }\n"
    "  }\n"
    "}\n";

// The model that goes with it: "box" (a triangle at the origin facing +z) and "other".
std::string figureModel()
{
    return file3ds(meshObject("other", {{5, 0, 5}, {6, 0, 5}, {5, 0, 6}}, {{0, 1, 2}}) +
                   meshObject("box", {{0, 0, 0}, {1, 0, 0}, {0, 0, 1}}, {{0, 1, 2}}));
}

// Reads An8 text into a fresh object, returning what the reader printed.
std::string readText(Object3DS& o, const std::string& text)
{
    std::istringstream in(text);
    StdoutCapture capture;
    o.readAnimation(in);
    return capture.take();
}

int countBones(const tBone* b)
{
    if (b == nullptr)
        return 0;
    int n = 1;
    for (const tBone* c : b->children)
        n += countBones(c);
    return n;
}

const tBone* findBone(const tBone* b, const std::string& name)
{
    if (b == nullptr)
        return nullptr;
    if (b->name == name)
        return b;
    for (const tBone* c : b->children)
        if (const tBone* f = findBone(c, name))
            return f;
    return nullptr;
}

// (x, y) turned by `degrees` about z.
std::pair<double, double> turnZ(double x, double y, double degrees)
{
    const double a = degrees * kPi / 180.0;
    return {x * std::cos(a) - y * std::sin(a), x * std::sin(a) + y * std::cos(a)};
}

std::string slurp(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

class Object3DSFigure : public GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-10, 10, -10, 10, -100, 100);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glDisable(GL_LIGHTING);
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_BLEND);
        glDisable(GL_CULL_FACE);
        glLineWidth(1.0f);
    }

    // Writes fig.3ds and fig_as.an8 (holding `an8`) into a fresh folder and loads the model.
    std::unique_ptr<Object3DS> loadFigureModel(const std::string& an8 = kFigure, std::string* out = nullptr,
                                               std::string* dirOut = nullptr)
    {
        const std::string dir = makeTempDir();
        writeFile(dir + "/fig.3ds", figureModel());
        writeFile(dir + "/fig_as.an8", an8);
        auto o = makeObject();
        const std::string text = loadCaptured(*o, dir + "/fig.3ds");
        if (out)
            *out = text;
        if (dirOut)
            *dirOut = dir;
        return o;
    }

    static float wx(double x) { return static_cast<float>((x + 10.0) / 20.0 * GLTestWindow::kWidth); }
    static float wy(double y) { return static_cast<float>((y + 10.0) / 20.0 * GLTestWindow::kHeight); }

    static void expectAt(const FeedbackVertex& v, double x, double y)
    {
        EXPECT_NEAR(v.x, wx(x), 0.05);
        EXPECT_NEAR(v.y, wy(y), 0.05);
    }

    static void expectPos(const SVector3D& p, double x, double y, double z)
    {
        EXPECT_NEAR(p.x, x, 1e-4);
        EXPECT_NEAR(p.y, y, 1e-4);
        EXPECT_NEAR(p.z, z, 1e-4);
    }

    static double angle(Object3DS& o, const std::string& bone, int axis)
    {
        double a[3] = {0, 0, 0};
        Object3DSTest::getAnimAngles(o, bone, a[0], a[1], a[2]);
        return a[axis];
    }
};

// ---------------------------------------------------------------- loading

TEST_F(Object3DSFigure, FigureFileIsTheModelNameWithoutItsExtensionAndAsAn8)
{
    std::string out, dir;
    auto o = loadFigureModel(kFigure, &out, &dir);
    ASSERT_TRUE(o->hasAnimData());
    EXPECT_EQ(o->animFileName, dir + "/fig_as.an8");
    EXPECT_EQ(out.rfind("Loading animation file \"" + dir + "/fig_as.an8\"...\n\n", 0), 0u) << out;
    EXPECT_NE(out.find("Adding bone #0 \"root\"\nbone[0] assigned to 3DS other\nAdding bone #1 \"arm\"\n"
                       "bone[1] assigned to 3DS box\nAdding bone #2 \"hand\"\n"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("bone: \"root\" assigned to id 0\nbone: \"arm\" assigned to id 1\nbone: \"hand\" assigned to "
                       "id -1\nBone \"root\"\n"),
              std::string::npos)
        << out;
    EXPECT_EQ(o->sequenceName, "wave");
    EXPECT_EQ(o->figureName, "fig");
    EXPECT_EQ(o->numFrames, 20);
}

TEST_F(Object3DSFigure, ModelWithoutFigureFileHasNoFigureAndSaysNothing)
{
    auto o = makeObject();
    const std::string dir = makeTempDir();
    writeFile(dir + "/fig.3ds", figureModel());
    writeFile(dir + "/fig.3ds_as.an8", kFigure);  // not the figure name
    EXPECT_EQ(loadCaptured(*o, dir + "/fig.3ds"), "");
    EXPECT_FALSE(o->hasAnimData());
    EXPECT_EQ(o->root, nullptr);
}

TEST_F(Object3DSFigure, ShortModelNameIsKeptWholeAndFigureNameIsResolvedWithoutLetterCase)
{
    const std::string dir = makeTempDir();
    WorkingDirectory cwd(dir);
    writeFile(dir + "/AB_AS.AN8", kFigure);
    auto o = makeObject();
    StdoutCapture capture;
    o->loadFigure("ab");
    const std::string out = capture.take();
    EXPECT_TRUE(o->hasAnimData());
    EXPECT_EQ(out.rfind("Loading animation file \"ab_as.an8\"...\n\n", 0), 0u) << out;
}

TEST_F(Object3DSFigure, FigureFileThatCannotBeOpenedEndsProcessWithStatus3)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/fig_as.an8", kFigure);
    auto o = makeObject();
    const std::string name = dir + "/fig_as.an8";
    // The death-test child makes its own temporary folder: the name is matched up to that folder.
    EXPECT_EXIT(
        {
            routeStdoutToStderr();
            g_refuseFigureOpen = true;
            o->loadFigure(dir + "/fig.3ds");
        },
        ::testing::ExitedWithCode(3), ::testing::ContainsRegex("Cannot open file '/[^']*/fig_as\\.an8'!\n\n$"));
    EXPECT_EQ(name.substr(name.size() - 11), "/fig_as.an8");
}

TEST_F(Object3DSFigure, LoadingAgainReplacesTheFigure)
{
    std::string dir;
    auto o = loadFigureModel(kFigure, nullptr, &dir);
    writeFile(dir + "/fig_as.an8", "figure { \"f2\"\n  bone { \"solo\"\n    length { 2 }\n  }\n}\n");
    StdoutCapture capture;
    o->loadFigure(dir + "/fig.3ds");
    capture.take();
    ASSERT_NE(o->root, nullptr);
    EXPECT_EQ(o->root->name, "solo");
    EXPECT_TRUE(o->root->children.empty());
    EXPECT_EQ(o->root->id, 0);
}

// ---------------------------------------------------------------- the figure reader

TEST_F(Object3DSFigure, ReaderBuildsNestedBonesWithTheirValues)
{
    auto o = makeObject();
    readText(*o, kFigure);
    ASSERT_EQ(countBones(o->root), 3);
    const tBone* root = o->root;
    EXPECT_EQ(root->id, 0);
    EXPECT_EQ(root->name, "root");
    EXPECT_EQ(root->length, 10);
    EXPECT_EQ(root->obj_name, "other");
    ASSERT_EQ(root->children.size(), 1u);
    const tBone* arm = root->children[0];
    EXPECT_EQ(arm->id, 1);
    EXPECT_EQ(arm->length, 5);
    EXPECT_NEAR(arm->orientation.z, 0.70711 / std::sqrt(2 * 0.70711 * 0.70711), 1e-6);
    EXPECT_NEAR(arm->orientation.w, arm->orientation.z, 1e-7);
    EXPECT_EQ(arm->dof[0].type, tBone::DofLimited);
    EXPECT_EQ(arm->dof[0].min, -45.0);
    EXPECT_EQ(arm->dof[0].def, 0.0);
    EXPECT_EQ(arm->dof[0].max, 45.0);
    EXPECT_EQ(arm->dof[1].type, tBone::DofFixed);
    EXPECT_EQ(arm->dof[2].type, tBone::DofUnlimited);
    EXPECT_EQ(arm->obj_name, "box");
    EXPECT_EQ(arm->obj_origin[0], 1.0f);
    EXPECT_EQ(arm->obj_origin[1], 0.0f);
    EXPECT_EQ(arm->obj_origin[2], 0.0f);
    EXPECT_EQ(arm->obj_orient.w, 1.0f);
    ASSERT_EQ(arm->children.size(), 1u);
    const tBone* hand = arm->children[0];
    EXPECT_EQ(hand->id, 2);
    EXPECT_EQ(hand->length, 3);
    EXPECT_EQ(hand->orientation.w, 1.0f);
    for (const tBone::tDof& d : hand->dof)
        EXPECT_EQ(d.type, tBone::DofFixed);  // no dof entry
    EXPECT_TRUE(hand->obj_name.empty());
    EXPECT_EQ(hand->obj_id, -1);
}

TEST_F(Object3DSFigure, ReaderAcceptsAnyLayoutCommentsAndCarriageReturns)
{
    auto o = makeObject();
    readText(*o,
             "figure{\"f\" /* a comment\r\n spanning lines */ bone{\"a\" length{7.9} orientation{(0 0 0 2)}\r\n"
             "  bone { \"b\" length { -3 } namedobject { \"obj\" origin { ( 1.5 -2 3e1 ) } orientation { (1 0 0 0) } "
             "} } bone { \"c\" } }\r\n"
             "}\r\n");
    ASSERT_NE(o->root, nullptr);
    EXPECT_EQ(o->root->name, "a");
    EXPECT_EQ(o->root->length, 7);  // truncated
    EXPECT_EQ(o->root->orientation.w, 1.0f);
    ASSERT_EQ(o->root->children.size(), 2u);
    const tBone* b = o->root->children[0];
    EXPECT_EQ(b->length, -3);
    EXPECT_EQ(b->obj_name, "obj");
    EXPECT_EQ(b->obj_origin[0], 1.5f);
    EXPECT_EQ(b->obj_origin[1], -2.0f);
    EXPECT_EQ(b->obj_origin[2], 30.0f);
    EXPECT_EQ(b->obj_orient.x, 1.0f);
    EXPECT_EQ(o->root->children[1]->name, "c");
}

TEST_F(Object3DSFigure, SecondNamedObjectOfABoneIsIgnoredWithAWarning)
{
    auto o = makeObject();
    const std::string out = readText(*o,
                                     "figure { \"f\"\n  bone { \"a\"\n"
                                     "    namedobject { \"one\"\n      base {\n        origin { (1 2 3) }\n      }\n    }\n"
                                     "    namedobject { \"two\"\n      base {\n        origin { (7 8 9) }\n      }\n    }\n"
                                     "  }\n}\n");
    EXPECT_NE(out.find("bone[0] assigned to 3DS one\n** WARNING: Object3DS::readBone: bone \"a\" is already bound to "
                       "\"one\"; namedobject \"two\" is ignored\n"),
              std::string::npos)
        << out;
    EXPECT_EQ(o->root->obj_name, "one");
    EXPECT_EQ(o->root->obj_origin[2], 3.0f);
}

TEST_F(Object3DSFigure, PivotOfANamedObjectIsNotItsOrigin)
{
    auto o = makeObject();
    readText(*o,
             "figure { \"f\"\n  bone { \"a\"\n    namedobject { \"one\"\n"
             "      pivot {\n        origin { (9 9 9) }\n      }\n      base {\n        origin { (1 2 3) }\n      }\n"
             "    }\n  }\n}\n");
    EXPECT_EQ(o->root->obj_origin[0], 1.0f);
}

TEST_F(Object3DSFigure, ZeroQuaternionReadsAsIdentity)
{
    auto o = makeObject();
    readText(*o, "figure { \"f\"\n  bone { \"a\"\n    orientation { (0 0 0 0) }\n  }\n}\n");
    EXPECT_EQ(o->root->orientation.w, 1.0f);
    EXPECT_EQ(o->root->orientation.x, 0.0f);
}

TEST_F(Object3DSFigure, OnlyTheFirstFigureAndSequenceAreRead)
{
    auto o = makeObject();
    std::string text = std::string(kFigure) + "figure { \"second\"\n  bone { \"other\"\n  }\n}\n" +
                       "sequence { \"later\"\n  figure { \"fig\" }\n  frames { 3 }\n}\n";
    const std::string out = readText(*o, text);
    EXPECT_NE(out.find("** WARNING: Object3DS::loadFigure: \"\" holds more than one figure; the first is used\n"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("** WARNING: Object3DS::loadFigure: \"\" holds more than one sequence; the first is used\n"),
              std::string::npos)
        << out;
    EXPECT_EQ(o->root->name, "root");
    EXPECT_EQ(countBones(o->root), 3);
    EXPECT_EQ(o->sequenceName, "wave");
    EXPECT_EQ(o->numFrames, 20);
}

TEST_F(Object3DSFigure, IndentedFigureLinesBelongToOtherBlocks)
{
    auto o = makeObject();
    readText(*o, "scene { \"s\"\n  figure { \"element\" \"fig\"\n    bone { \"nope\"\n    }\n  }\n}\n");
    EXPECT_EQ(o->root, nullptr);
}

TEST_F(Object3DSFigure, FiftyFirstBoneIsSkippedWithItsChildren)
{
    std::string text = "figure { \"many\"\n  bone { \"b0\"\n";
    for (int i = 1; i <= 50; ++i)
        text += "    bone { \"b" + std::to_string(i) + "\"\n      length { 1 }\n" +
                (i == 50 ? "      bone { \"inner\"\n      }\n" : "") + "    }\n";
    text += "  }\n}\n";
    auto o = makeObject();
    o->animFileName = "many_as.an8";
    const std::string out = readText(*o, text);
    EXPECT_NE(out.find("Adding bone #49 \"b49\"\nERROR: Object3DS::readBone: \"many_as.an8\" has more than 50 "
                       "bones; bone \"b50\" and the bones inside it are skipped\n"),
              std::string::npos)
        << out;
    EXPECT_EQ(out.find("inner"), std::string::npos);
    EXPECT_EQ(countBones(o->root), 50);
    EXPECT_EQ(o->root->children.size(), 49u);
}

TEST_F(Object3DSFigure, DeeplyNestedBonesAndBracesDoNotExhaustTheStack)
{
    std::string text = "figure { \"deep\"\n";
    for (int i = 0; i < 20000; ++i)
        text += "bone { \"x\"\n";
    text += std::string(200000, '{') + "\n";
    auto o = makeObject();
    const std::string out = readText(*o, text);
    EXPECT_EQ(countBones(o->root), 50);
    EXPECT_NE(out.find("has more than 50 bones"), std::string::npos);
    EXPECT_NE(out.find("ERROR!\n"), std::string::npos);  // the text ends inside the bones
}

TEST_F(Object3DSFigure, TruncatedBonePrintsErrorAndKeepsWhatWasRead)
{
    auto o = makeObject();
    const std::string out = readText(*o, "figure { \"f\"\n  bone { \"r\"\n    length { 4 }\n    bone { \"s\"\n");
    EXPECT_EQ(out.rfind("Adding bone #0 \"r\"\nAdding bone #1 \"s\"\nERROR!\nERROR!\n", 0), 0u) << out;
    ASSERT_NE(o->root, nullptr);
    EXPECT_EQ(o->root->length, 4);
    ASSERT_EQ(o->root->children.size(), 1u);
}

TEST_F(Object3DSFigure, BoneWithoutNamePrintsError)
{
    auto o = makeObject();
    const std::string out = readText(*o, "figure { \"f\"\n  bone {\n    length { 4 }\n  }\n}\n");
    EXPECT_EQ(out.rfind("Adding bone #0 \"\"\nERROR!\n", 0), 0u) << out;
    EXPECT_EQ(o->root->length, 4);
}

TEST_F(Object3DSFigure, ReadBoneFromALineThatIsNoBonePrintsError)
{
    auto o = makeObject();
    std::istringstream in("length { 3 }\n}\n");
    tBone* bone = nullptr;
    StdoutCapture capture;
    Object3DSTest::readBone(*o, in, "length { 3 }", bone);
    EXPECT_EQ(capture.take(), "ERROR!\n");
    EXPECT_EQ(bone, nullptr);
    std::istringstream rest("  length { 6 }\n  bone { \"child\"\n  }\n}\nnext line\n");
    StdoutCapture again;
    Object3DSTest::readBone(*o, rest, "bone { \"single\"", bone);
    EXPECT_EQ(again.take(), "Adding bone #0 \"single\"\nAdding bone #1 \"child\"\n");
    ASSERT_NE(bone, nullptr);
    EXPECT_EQ(bone->length, 6);
    std::string line;
    std::getline(rest, line);
    EXPECT_EQ(line, "next line");  // the block's lines are consumed, no more
    Object3DSTest::disposeBone(*o, bone);
    EXPECT_EQ(bone, nullptr);
}

TEST_F(Object3DSFigure, BlockParsersReadFromFileStreams)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/blocks.an8",
              "figure { \"f\"\n  bone { \"r\"\n    length { 2 }\n  }\n}\n"
              "bone { \"loose\"\n  length { 8 }\n}\n"
              "sequence { \"s\"\n  figure { \"f\" }\n  frames { 6 }\n  jointangle { \"r\" \"X\"\n"
              "    floatkey { 0 12 }\n  }\n}\n");
    auto o = makeObject();
    std::ifstream in(dir + "/blocks.an8");
    std::string line;
    StdoutCapture capture;
    ASSERT_TRUE(std::getline(in, line));
    o->readFigure(in, line);
    ASSERT_TRUE(std::getline(in, line));
    tBone* loose = nullptr;
    Object3DSTest::readBone(*o, in, line, loose);
    ASSERT_TRUE(std::getline(in, line));
    Object3DSTest::readSequence(*o, in, line);
    EXPECT_EQ(capture.take(), "Adding bone #0 \"r\"\nAdding bone #1 \"loose\"\n");
    ASSERT_NE(o->root, nullptr);
    EXPECT_EQ(o->root->length, 2);
    ASSERT_NE(loose, nullptr);
    EXPECT_EQ(loose->length, 8);
    EXPECT_EQ(o->numFrames, 6);
    ASSERT_EQ(o->jointAngles.size(), 1u);
    EXPECT_EQ(o->jointAngles[0].keys[0].angle, 12.0);
    EXPECT_FALSE(std::getline(in, line));
    Object3DSTest::disposeBone(*o, loose);
}

TEST_F(Object3DSFigure, MalformedTextNeverCrashesTheReader)
{
    const char* texts[] = {
        "figure",
        "figure {",
        "figure { \"f\" bone",
        "figure { \"f\" bone { \"a\" length { } orientation { ( 1 2 ) } dof { } dof { \"W\" 1 2 3 } } }",
        "figure { \"f\" bone { \"a\" namedobject namedobject { } namedobject { \"o\" base base { origin } } } }",
        "figure { \"f\" bone { \"a\" length { 1e999 } orientation { (nan inf -inf 1) } } }",
        "figure { \"f\" bone { \"a\" length { -1e999 } namedobject { \"o\" origin { (1e999 -1e999 nan) } } } }",
        "figure { \"f\" } } } }\nsequence",
        "figure { \"unterminated\n bone { \"a\n length { 3 }",
        "sequence { \"s\"",
        "sequence { \"s\"\n  figure",
        "sequence { \"s\"\n figure { \"f\" }\n frames {\n floatkey { 1 2 }\n jointangle { \"a\" \"X\"\n",
        ("sequence { \"s\"\n figure { \"f\" }\n frames { 99999999999 }\n jointangle { \"a\" \"X\"\n"
         "floatkey { -99999999999 1e999 }\n floatkey { 99999999999 -1 }\n}\n"),
        "/* figure */\n\"figure\"\n{{{{}}}}\n",
        "figure { /* never closed",
    };
    std::vector<std::string> all(std::begin(texts), std::end(texts));
    // NUL bytes inside words, between tokens and inside strings.
    all.push_back(std::string("figure { \"f\"\n bone { \"a\0b\" length { 1\0 }\0 \0\0 bone { \"c\" } }\n}\n", 62));
    for (const std::string& text : all) {
        SCOPED_TRACE(text);
        auto o = makeObject();
        readText(*o, text);
        for (int frame : {0, 1, 5}) {
            o->setCurFrame(frame);
            double ax = 0, ay = 0, az = 0;
            Object3DSTest::getAnimAngles(*o, "a", ax, ay, az);
        }
        o->scaleFigure(3.0);
        auto copy = std::make_unique<Object3DS>(*o);
        EXPECT_EQ(countBones(copy->root), countBones(o->root));
    }
    auto withNul = makeObject();
    readText(*withNul, all.back());
    EXPECT_EQ(countBones(withNul->root), 2);
}

// ---------------------------------------------------------------- the sequence reader

TEST_F(Object3DSFigure, SequenceTracksAndKeysAreRead)
{
    auto o = makeObject();
    readText(*o,
             "sequence { \"walk\"\n  figure { \"body\" }\n  frames { 31 }\n"
             "  jointangle { \"Left Arm\" \"Y\"\n    track {\n      floatkey { 0 -1.5 0 0 \"S\" }\n"
             "      floatkey { 10 45 }\n    }\n  }\n"
             "  jointangle { \"Y\" \"X\"\n    track {\n      floatkey { 4 2.25 }\n    }\n  }\n}\n");
    EXPECT_EQ(o->sequenceName, "walk");
    EXPECT_EQ(o->figureName, "body");
    EXPECT_EQ(o->numFrames, 31);
    EXPECT_EQ(o->curFrame, 0.0);
    ASSERT_EQ(o->jointAngles.size(), 2u);
    EXPECT_EQ(o->jointAngles[0].boneName, "Left Arm");
    EXPECT_EQ(o->jointAngles[0].axis, 1);
    ASSERT_EQ(o->jointAngles[0].keys.size(), 2u);
    EXPECT_EQ(o->jointAngles[0].keys[0].frame, 0);
    EXPECT_EQ(o->jointAngles[0].keys[0].angle, -1.5);
    EXPECT_EQ(o->jointAngles[0].keys[1].frame, 10);
    EXPECT_EQ(o->jointAngles[0].keys[1].angle, 45.0);
    EXPECT_EQ(o->jointAngles[1].boneName, "Y");  // the axis is the second quoted text
    EXPECT_EQ(o->jointAngles[1].axis, 0);
    EXPECT_EQ(o->jointAngles[1].keys[0].angle, 2.25);
}

TEST_F(Object3DSFigure, SequenceReaderSkipsLinesItCannotUse)
{
    auto o = makeObject();
    std::istringstream in(
        "  figure { \"body\" }\r\n  frames { 12 }\r\n  floatkey { 1 10 }\r\n  jointangle { \"a\" \"W\"\r\n"
        "  floatkey { 2 20 }\r\n  }\r\n  jointangle { \"a\" \"Z\"\r\n  floatkey { 3 }\r\n  floatkey { 4 40 }\r\n"
        "  }\r\n}\r\nafter\r\n");
    Object3DSTest::readSequence(*o, in, "sequence { \"s\"");
    EXPECT_EQ(o->figureName, "body");
    EXPECT_EQ(o->numFrames, 12);
    ASSERT_EQ(o->jointAngles.size(), 1u);
    EXPECT_EQ(o->jointAngles[0].axis, 2);
    // "floatkey { 3 }" has a fourth token too: the closing brace, read as angle 0.
    ASSERT_EQ(o->jointAngles[0].keys.size(), 2u);
    EXPECT_EQ(o->jointAngles[0].keys[0].frame, 3);
    EXPECT_EQ(o->jointAngles[0].keys[0].angle, 0.0);
    EXPECT_EQ(o->jointAngles[0].keys[1].frame, 4);
    EXPECT_EQ(o->jointAngles[0].keys[1].angle, 40.0);
    std::string line;
    std::getline(in, line);
    EXPECT_EQ(line, "after\r");
}

TEST_F(Object3DSFigure, SequenceClosedOnItsOwnLineReadsNothingMore)
{
    auto o = makeObject();
    o->jointAngles.resize(3);
    std::istringstream in("frames { 9 }\n");
    Object3DSTest::readSequence(*o, in, "sequence { \"empty\" }");
    EXPECT_EQ(o->sequenceName, "empty");
    EXPECT_TRUE(o->jointAngles.empty());
    EXPECT_EQ(o->numFrames, 0);
    std::string line;
    std::getline(in, line);
    EXPECT_EQ(line, "frames { 9 }");
}

// ---------------------------------------------------------------- real An8 files

TEST_F(Object3DSFigure, RealCatFigureAndWalkSequence)
{
    auto o = makeObject();
    const std::string out = readText(*o, slurp(assetsDir() + "/an8/Cat.an8"));
    EXPECT_EQ(countBones(o->root), 25);
    EXPECT_EQ(o->root->name, "Root");
    EXPECT_EQ(o->root->length, 10);
    const tBone* back = findBone(o->root, "BackBase");
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->length, 17);
    EXPECT_NEAR(back->orientation.x, -0.70711 / std::sqrt(2 * 0.70711 * 0.70711), 1e-6);
    EXPECT_EQ(back->obj_name, "CatObject");
    EXPECT_EQ(back->obj_origin[1], 10.0f);
    EXPECT_EQ(back->obj_origin[2], -15.0f);
    EXPECT_EQ(back->obj_orient.x, 1.0f);
    EXPECT_EQ(back->dof[0].type, tBone::DofUnlimited);
    const tBone* head = findBone(o->root, "Head");
    ASSERT_NE(head, nullptr);
    EXPECT_EQ(head->id, 24);
    EXPECT_EQ(o->sequenceName, "Walk");
    EXPECT_EQ(o->figureName, "CatFigure");
    EXPECT_EQ(o->numFrames, 31);
    EXPECT_EQ(o->jointAngles.size(), 72u);
    size_t keys = 0;
    for (const auto& t : o->jointAngles)
        keys += t.keys.size();
    EXPECT_EQ(keys, 195u);
    // Head X: keys (0, 0), (15, 5.2174), (30, 0).
    o->setCurFrame(15);
    EXPECT_NEAR(angle(*o, "Head", 0), 5.2174, 1e-9);
    o->curFrame = 7.5;
    EXPECT_NEAR(angle(*o, "Head", 0), 5.2174 / 2, 1e-9);
    EXPECT_NE(out.find("Bone \"Head\"\n"), std::string::npos);
}

TEST_F(Object3DSFigure, RealWeightedFiguresWithoutSequence)
{
    auto simple = makeObject();
    readText(*simple, slurp(assetsDir() + "/an8/Weights_Simple.an8"));
    EXPECT_EQ(countBones(simple->root), 4);
    EXPECT_EQ(findBone(simple->root, "bone01")->obj_name, "object01");
    EXPECT_NEAR(findBone(simple->root, "bone03")->orientation.z, -0.38268, 1e-4);
    EXPECT_TRUE(simple->jointAngles.empty());
    EXPECT_EQ(simple->numFrames, 0);

    auto complex = makeObject();
    const std::string out = readText(*complex, slurp(assetsDir() + "/an8/Weights_Complex.an8"));
    EXPECT_EQ(countBones(complex->root), 4);
    EXPECT_EQ(complex->root->length, 14);  // 14.765 truncated
    EXPECT_EQ(findBone(complex->root, "bone01")->obj_name, "object02");
    EXPECT_EQ(findBone(complex->root, "bone02")->obj_name, "object02");
    EXPECT_NE(out.find("namedobject \"object01\" is ignored"), std::string::npos);
}

TEST_F(Object3DSFigure, RealFilesWithoutFigureGiveNone)
{
    for (const char* name : {"carcosa.an8", "nazvhi-01.an8", "Cube_X2_Y3_Z5.an8"}) {
        SCOPED_TRACE(name);
        auto o = makeObject();
        EXPECT_EQ(readText(*o, slurp(assetsDir() + "/an8/" + name)), "");
        EXPECT_EQ(o->root, nullptr);
        EXPECT_TRUE(o->jointAngles.empty());
    }
}

TEST_F(Object3DSFigure, RealCatFigureBindsToTheModelSubObject)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/cat.3ds", file3ds(meshObject("CatObject", {{0, 0, 0}, {1, 0, 0}, {0, 0, 1}}, {{0, 1, 2}})));
    ASSERT_TRUE(LFile::copy(assetsDir() + "/an8/Cat.an8", dir + "/cat_as.an8"));
    auto o = makeObject();
    const std::string out = loadCaptured(*o, dir + "/cat.3ds");
    EXPECT_NE(out.find("bone: \"BackBase\" assigned to id 0\n"), std::string::npos);
    EXPECT_EQ(findBone(o->root, "BackBase")->obj_id, 0);
    EXPECT_EQ(findBone(o->root, "Head")->obj_id, -1);
    o->updateFigureWorldPos();
    const auto faces = itemsOf(recordFeedback([&] { o->render(); }), GL_POLYGON_TOKEN);
    EXPECT_LE(faces.size(), 1u);  // only BackBase's object, wherever the pose puts it
}

// ---------------------------------------------------------------- joint angles and playback

TEST_F(Object3DSFigure, KeysInterpolateAndTheLastKeyHolds)
{
    auto o = makeObject();
    readText(*o,
             "sequence { \"s\"\n figure { \"f\" }\n frames { 30 }\n jointangle { \"a\" \"Y\"\n"
             "  floatkey { 0 0 }\n  floatkey { 10 90 }\n }\n}\n");
    o->curFrame = 5;
    EXPECT_DOUBLE_EQ(angle(*o, "a", 1), 45.0);
    EXPECT_DOUBLE_EQ(angle(*o, "a", 0), 0.0);
    EXPECT_DOUBLE_EQ(angle(*o, "a", 2), 0.0);
    o->curFrame = 2.5;
    EXPECT_DOUBLE_EQ(angle(*o, "a", 1), 22.5);
    for (double f : {10.0, 10.5, 25.0, 1000.0}) {
        o->curFrame = f;
        EXPECT_DOUBLE_EQ(angle(*o, "a", 1), 90.0) << f;
    }
    EXPECT_DOUBLE_EQ(angle(*o, "A", 1), 0.0);  // names match exactly
}

TEST_F(Object3DSFigure, SingleKeyGivesZeroBeforeItsFrameAndItsAngleFromThere)
{
    auto o = makeObject();
    readText(*o,
             "sequence { \"s\"\n figure { \"f\" }\n frames { 30 }\n jointangle { \"a\" \"X\"\n"
             "  floatkey { 4 33 }\n }\n}\n");
    for (double f : {0.0, 3.9}) {
        o->curFrame = f;
        EXPECT_DOUBLE_EQ(angle(*o, "a", 0), 0.0) << f;
    }
    for (double f : {4.0, 4.1, 29.0}) {
        o->curFrame = f;
        EXPECT_DOUBLE_EQ(angle(*o, "a", 0), 33.0) << f;
    }
}

TEST_F(Object3DSFigure, HandleAnimationWrapsToZeroAfterTheLastFrame)
{
    auto o = makeObject();
    o->numFrames = 10;
    for (int i = 0; i < 45; ++i)
        o->handleAnimation();
    EXPECT_DOUBLE_EQ(o->curFrame, 9.0);
    o->handleAnimation();  // 9.2 > 9
    EXPECT_EQ(o->curFrame, 0.0);
}

TEST_F(Object3DSFigure, StepBackwardsStopsAtZero)
{
    auto o = makeObject();
    o->numFrames = 10;
    o->curFrame = 0.1;
    o->stepBackwards();
    EXPECT_EQ(o->curFrame, 0.0);
    o->curFrame = 0.5;
    o->stepBackwards();
    EXPECT_DOUBLE_EQ(o->curFrame, 0.3);
}

TEST_F(Object3DSFigure, StepForwardStopsAtTheLastFrame)
{
    auto o = makeObject();
    o->numFrames = 10;
    o->frameStep = 0.5;
    o->curFrame = 8.25;
    o->stepForward();
    EXPECT_DOUBLE_EQ(o->curFrame, 8.75);
    o->stepForward();
    EXPECT_EQ(o->curFrame, 9.0);
    o->stepForward();
    EXPECT_EQ(o->curFrame, 9.0);
}

TEST_F(Object3DSFigure, SetCurFrameSetsTheFrame)
{
    auto o = makeObject();
    o->setCurFrame(7);
    EXPECT_EQ(o->curFrame, 7.0);
    o->setCurFrame(-2);
    EXPECT_EQ(o->curFrame, -2.0);
}

// ---------------------------------------------------------------- scaling

TEST_F(Object3DSFigure, ScaleFigureRoundsLengthsAndScalesOrigins)
{
    auto o = makeObject();
    readText(*o, kFigure);
    o->scaleFigure(0.3);
    EXPECT_EQ(o->root->length, 3);                            // 3.0
    EXPECT_EQ(o->root->children[0]->length, 2);               // 1.5 rounds away from zero
    EXPECT_EQ(o->root->children[0]->children[0]->length, 1);  // 0.9
    EXPECT_FLOAT_EQ(o->root->children[0]->obj_origin[0], 0.3f);
    auto none = makeObject();
    none->scaleFigure(2.0);  // no figure: nothing happens
    EXPECT_EQ(none->root, nullptr);
}

TEST_F(Object3DSFigure, ScalingTheModelScalesItsBones)
{
    auto o = loadFigureModel();
    o->scale(2.0);
    EXPECT_EQ(o->root->children[0]->length, 10);
    EXPECT_EQ(o->root->children[0]->obj_origin[0], 2.0f);
    EXPECT_TRUE(glIsList(o->subObjectLists[1]));
}

// ---------------------------------------------------------------- world positions

TEST_F(Object3DSFigure, WorldPositionsFollowTheSequence)
{
    auto o = loadFigureModel();
    glTranslatef(3.0f, 4.0f, 5.0f);  // the caller's matrix does not matter and is kept
    GLfloat before[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, before);

    o->setCurFrame(0);
    o->updateFigureWorldPos();
    expectPos(o->boneWorldPos[0], 0, 0, 0);  // the root counts no length
    auto arm = turnZ(0, 5, 90);
    expectPos(o->boneWorldPos[1], arm.first, arm.second, 0);
    auto hand = turnZ(0, 8, 90);
    expectPos(o->boneWorldPos[2], hand.first, hand.second, 0);
    expectPos(o->root->children[0]->children[0]->worldPos, arm.first, arm.second, 0);

    o->setCurFrame(5);  // the arm turns 45 more degrees about z
    o->updateFigureWorldPos();
    arm = turnZ(0, 5, 135);
    hand = turnZ(0, 8, 135);
    expectPos(o->boneWorldPos[1], arm.first, arm.second, 0);
    expectPos(o->boneWorldPos[2], hand.first, hand.second, 0);

    GLfloat after[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, after);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(after[i], before[i]);
    std::vector<GLfloat> c(4);
    glGetFloatv(GL_CURRENT_COLOR, c.data());
    EXPECT_EQ(c, (std::vector<GLfloat>{1, 1, 1, 1}));
}

TEST_F(Object3DSFigure, WorldPositionsIgnoreTheExtraTurns)
{
    auto o = loadFigureModel();
    o->boneTurnX[1] = 90.0;
    o->boneTurnY[1] = 45.0;
    o->updateFigureWorldPos();
    const auto arm = turnZ(0, 5, 90);
    expectPos(o->boneWorldPos[1], arm.first, arm.second, 0);
}

TEST_F(Object3DSFigure, WorldPositionsTurnAboutXAndYInOrder)
{
    auto o = makeObject();
    readText(*o,
             "figure { \"f\"\n  bone { \"r\"\n    bone { \"a\"\n      length { 2 }\n    }\n  }\n}\n"
             "sequence { \"s\"\n figure { \"f\" }\n frames { 2 }\n"
             " jointangle { \"a\" \"X\"\n  floatkey { 0 90 }\n }\n jointangle { \"a\" \"Y\"\n  floatkey { 0 90 }\n }\n}\n");
    o->updateFigureWorldPos();
    // Rx(90) Ry(90) (0, 2, 0): Ry leaves (0, 2, 0), Rx turns it to (0, 0, 2).
    expectPos(o->boneWorldPos[1], 0, 0, 2);
}

// ---------------------------------------------------------------- drawing

TEST_F(Object3DSFigure, RenderDrawsTheFigureWithBoundObjectsPosedByTheirBones)
{
    auto o = loadFigureModel();
    const auto faces = itemsOf(recordFeedback([&] { o->render(); }), GL_POLYGON_TOKEN);
    // Only "box" (bound to the arm) is drawn; the root's "other" never is.
    ASSERT_EQ(faces.size(), 1u);
    // The arm turns 90 degrees about z; the object sits at its origin (1, 0, 0) in the arm's frame.
    const double corners[3][2] = {{0, 0}, {1, 0}, {0, 1}};
    for (int c = 0; c < 3; ++c) {
        const auto p = turnZ(corners[c][0] + 1.0, corners[c][1], 90);
        expectAt(faces[0].vertices[c], p.first, p.second);
    }
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    std::vector<GLfloat> c(4);
    glGetFloatv(GL_CURRENT_COLOR, c.data());
    EXPECT_EQ(c, (std::vector<GLfloat>{1, 1, 1, 1}));
}

TEST_F(Object3DSFigure, SequenceAndExtraTurnsPoseTheDrawnObject)
{
    auto o = loadFigureModel();
    o->setCurFrame(10);  // arm at 90 + 90 degrees about z
    auto faces = itemsOf(recordFeedback([&] { o->renderFigure(); }), GL_POLYGON_TOKEN);
    ASSERT_EQ(faces.size(), 1u);
    auto p = turnZ(2.0, 0.0, 180);  // corner (1, 0) + origin
    expectAt(faces[0].vertices[1], p.first, p.second);

    o->setCurFrame(0);
    glDisable(GL_CULL_FACE);  // the half turn about y shows the triangle's back
    o->boneTurnY[1] = 180.0;  // about the arm's own y axis: x turns to -x
    faces = itemsOf(recordFeedback([&] { o->renderFigure(); }), GL_POLYGON_TOKEN);
    ASSERT_EQ(faces.size(), 1u);
    p = turnZ(-2.0, 0.0, 90);
    expectAt(faces[0].vertices[1], p.first, p.second);
}

TEST_F(Object3DSFigure, BoundObjectOutOfRangeDrawsNothing)
{
    auto o = loadFigureModel();
    o->root->children[0]->obj_id = 2;
    EXPECT_TRUE(itemsOf(recordFeedback([&] { o->renderFigure(); }), GL_POLYGON_TOKEN).empty());
    o->root->children[0]->obj_id = -1;
    EXPECT_TRUE(itemsOf(recordFeedback([&] { o->renderFigure(); }), GL_POLYGON_TOKEN).empty());
}

TEST_F(Object3DSFigure, BoundObjectWithoutListIsDrawnImmediately)
{
    auto o = loadFigureModel();
    glDeleteLists(o->subObjectLists[1], 1);
    o->subObjectLists[1] = 0;
    const auto faces = itemsOf(recordFeedback([&] { o->renderFigure(); }), GL_POLYGON_TOKEN);
    ASSERT_EQ(faces.size(), 1u);
    const auto p = turnZ(1.0, 0.0, 90);
    expectAt(faces[0].vertices[0], p.first, p.second);
}

TEST_F(Object3DSFigure, ShowBonesDrawsBonesAxesAndJoints)
{
    auto o = loadFigureModel();
    o->showBones = 1;
    glTranslatef(5.0f, 0.0f, 0.0f);  // keeps the joints of radius 4 inside the view
    const auto items = recordFeedback([&] { o->renderFigure(); });
    const auto lines = itemsOf(items, GL_LINE_TOKEN);
    const auto faces = itemsOf(items, GL_POLYGON_TOKEN);

    // White bone lines from each joint to its end, blue axis lines of the rest orientations.
    std::vector<FeedbackItem> white, blue;
    for (const FeedbackItem& l : lines) {
        if (l.vertices[0].r == 1.0f && l.vertices[0].b == 1.0f)
            white.push_back(l);
        else if (l.vertices[0].r == 0.0f && l.vertices[0].b == 1.0f)
            blue.push_back(l);
    }
    ASSERT_EQ(white.size(), 3u);
    ASSERT_EQ(blue.size(), 3u);
    auto armEnd = turnZ(0, 5, 90);
    auto handEnd = turnZ(0, 8, 90);
    armEnd.first += 5.0;
    handEnd.first += 5.0;
    expectAt(white[1].vertices[0], 5, 0);
    expectAt(white[1].vertices[1], armEnd.first, armEnd.second);
    expectAt(white[2].vertices[0], armEnd.first, armEnd.second);
    expectAt(white[2].vertices[1], handEnd.first, handEnd.second);

    // Joints: solid spheres of radius 4 at each end, purple for the root, dark red for the others.
    double sum[3][2] = {{0, 0}, {0, 0}, {0, 0}};
    int count[3] = {0, 0, 0};
    int box = 0;
    for (const FeedbackItem& f : faces) {
        const FeedbackVertex& v = f.vertices[0];
        int joint = -1;
        if (std::fabs(v.r - 0.7f) < 1e-6 && std::fabs(v.b - 0.7f) < 1e-6)
            joint = 0;
        else if (std::fabs(v.r - 0.7f) < 1e-6 && v.b == 0.0f)
            joint = 1;
        else
            ++box;
        if (joint < 0)
            continue;
        for (const FeedbackVertex& p : f.vertices) {
            sum[joint][0] += p.x;
            sum[joint][1] += p.y;
            ++count[joint];
        }
        for (const FeedbackVertex& p : f.vertices) {
            const double x = p.x / GLTestWindow::kWidth * 20.0 - 10.0;
            const double y = p.y / GLTestWindow::kHeight * 20.0 - 10.0;
            const double d = joint == 0 ? std::hypot(x - 5.0, y)
                                        : std::min(std::hypot(x - armEnd.first, y - armEnd.second),
                                                   std::hypot(x - handEnd.first, y - handEnd.second));
            EXPECT_LE(d, 4.0 + 1e-2);
        }
    }
    EXPECT_EQ(box, 1);
    ASSERT_GT(count[0], 100);
    ASSERT_GT(count[1], 200);
    EXPECT_NEAR(sum[0][0] / count[0], wx(5), 0.5);
    EXPECT_NEAR(sum[0][1] / count[0], wy(0), 0.5);
    // Two dark red joints of equal size: their mean lies half way between the arm's and hand's ends.
    EXPECT_NEAR(sum[1][0] / count[1], wx((armEnd.first + handEnd.first) / 2), 0.5);
    EXPECT_NEAR(sum[1][1] / count[1], wy(0), 0.5);

    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    GLfloat width = 0;
    glGetFloatv(GL_LINE_WIDTH, &width);
    EXPECT_EQ(width, 1.0f);
}

TEST_F(Object3DSFigure, RenderWithoutFigureDrawsNothingOfIt)
{
    auto o = makeObject();
    EXPECT_TRUE(recordFeedback([&] { o->renderFigure(); }).empty());
    o->updateFigureWorldPos();
    EXPECT_EQ(o->boneWorldPos[0].x, 0.0f);
}

// ---------------------------------------------------------------- binding and dumps

TEST_F(Object3DSFigure, BonesAreBoundToSubObjectsByName)
{
    auto o = loadFigureModel();
    EXPECT_EQ(o->root->obj_id, 0);
    EXPECT_EQ(o->root->children[0]->obj_id, 1);
    EXPECT_EQ(o->root->children[0]->children[0]->obj_id, -1);
    o->root->children[0]->obj_name = "other";
    StdoutCapture capture;
    Object3DSTest::assign3DS2Bone(*o, o->root->children[0]);
    EXPECT_EQ(capture.take(), "bone: \"arm\" assigned to id 0\nbone: \"hand\" assigned to id -1\n");
    EXPECT_EQ(o->root->children[0]->obj_id, 0);
}

TEST_F(Object3DSFigure, BoneDumpWritesEveryBoneIndentedByLevel)
{
    auto o = loadFigureModel();
    StdoutCapture capture;
    Object3DSTest::writeBoneData(*o, o->root->children[0], 1);
    const std::string q = o->root->children[0]->orientation.asString();
    EXPECT_EQ(capture.take(),
              "  Bone \"arm\"\n"
              "   length = 5\n"
              "   orient = " + q + "\n"
              "   dof[X].min = -45\n"
              "   dof[X].def = 0\n"
              "   dof[X].max = 45\n"
              "   dof[Y] fixed\n"
              "   dof[Z] unlimited free\n"
              "   obj_name = \"box\"\n"
              "   obj_id   = 1\n"
              "   obj_origin = (1, 0, 0)\n"
              "   obj_orient = (0, 0, 0, 1)\n"
              "    Bone \"hand\"\n"
              "     length = 3\n"
              "     orient = (0, 0, 0, 1)\n"
              "     dof[X] fixed\n"
              "     dof[Y] fixed\n"
              "     dof[Z] fixed\n"
              "     obj_name = \"\"\n"
              "     obj_id   = -1\n"
              "     obj_origin = (0, 0, 0)\n"
              "     obj_orient = (0, 0, 0, 1)\n");
    StdoutCapture none;
    Object3DSTest::writeBoneData(*o, nullptr, 0);
    EXPECT_EQ(none.take(), "");
}

TEST_F(Object3DSFigure, SequenceDumpWritesTracksAndKeys)
{
    auto o = loadFigureModel();
    StdoutCapture capture;
    Object3DSTest::writeSequenceData(*o);
    EXPECT_EQ(capture.take(),
              "Sequence:    \"wave\"\n"
              "Figure name: \"fig\"\n"
              "NumFrames:   20\n"
              "JointAngle: \"arm\"\n"
              "Axis:        2\n"
              "  FloatKey frame: 0, angle: 0\n"
              "  FloatKey frame: 10, angle: 90\n");
}

TEST_F(Object3DSFigure, CopiesOwnTheirBoneTreeAndMovesTakeIt)
{
    auto o = loadFigureModel();
    auto copy = std::make_unique<Object3DS>(*o);
    ASSERT_NE(copy->root, nullptr);
    EXPECT_NE(copy->root, o->root);
    EXPECT_EQ(countBones(copy->root), 3);
    copy->root->children[0]->length = 99;
    EXPECT_EQ(o->root->children[0]->length, 5);
    auto assigned = makeObject();
    readText(*assigned, "figure { \"x\"\n  bone { \"y\"\n  }\n}\n");
    *assigned = *o;
    EXPECT_EQ(countBones(assigned->root), 3);
    tBone* tree = copy->root;
    auto moved = std::make_unique<Object3DS>(std::move(*copy));
    EXPECT_EQ(moved->root, tree);
    EXPECT_EQ(copy->root, nullptr);
    o->dispose();
    EXPECT_EQ(o->root, nullptr);
    EXPECT_FALSE(o->hasAnimData());
    EXPECT_EQ(countBones(assigned->root), 3);
}

}  // namespace
