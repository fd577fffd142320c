// LGLColMeshTest.cpp -- LGLColMesh: boxes and their shared corners, groups, moving with the owner, the
// point and mesh tests, the text file reader and its fatal line, save, and copies.
#include <ostrum_gl/collision/LGLColMesh.h>

#include "TestSupport.h"

#include <cmath>
#include <sstream>
#include <sys/stat.h>

using namespace ostrum_test;

namespace {

constexpr float kTol = 1e-4f;
constexpr double kHalfPi = 1.5707963267948966;

SVector3D v(float x, float y, float z)
{
    return SVector3D(x, y, z, 1.0f);
}

void expectVec(const SVector3D& got, float x, float y, float z, float tol = kTol)
{
    EXPECT_NEAR(got.x, x, tol);
    EXPECT_NEAR(got.y, y, tol);
    EXPECT_NEAR(got.z, z, tol);
}

// A mesh with one group holding a box of half sizes (sx, sy, sz) at `centre`.
LGLColMesh groupedBox(SVector3D centre, double sx, double sy, double sz)
{
    LGLColMesh m;
    m.beginBoxGroup(centre, 1.0);
    m.addBox(centre, v(0, 0, 0), sx, sy, sz);
    m.endBoxGroup();
    return m;
}

std::string writeMesh(const std::string& text)
{
    const std::string path = makeTempDir() + "/mesh.txt";
    writeFile(path, text);
    return path;
}

// ---------------------------------------------------------------- construction and records

TEST(LGLColMesh, NewMeshIsEmptyWithoutModel)
{
    LGLColMesh m;
    EXPECT_EQ(m.model, nullptr);
    EXPECT_TRUE(m.tubes.empty());
    EXPECT_TRUE(m.boxes.empty());
    EXPECT_TRUE(m.spheres.empty());
    EXPECT_TRUE(m.localPoints.empty());
    EXPECT_TRUE(m.worldPoints.empty());
    EXPECT_TRUE(m.boxGroups.empty());
}

TEST(LGLColMesh, AddBoxStoresCornersInSignOrderWithMinMaxAndBoundRadius)
{
    LGLColMesh m;
    m.addBox(SVector3D(1, 2, 3, 0.5f), v(7, 8, 9), 0.5, 2.0, 1.0);
    ASSERT_EQ(m.boxes.size(), 1u);
    const LGLColMesh::tBox& b = m.boxes[0];
    expectVec(b.centre, 1, 2, 3);
    expectVec(b.extra, 7, 8, 9);
    EXPECT_DOUBLE_EQ(b.boundRadius, 2.0);
    const float xs[2] = {0.5f, 1.5f}, ys[2] = {0.0f, 4.0f}, zs[2] = {2.0f, 4.0f};
    for (int c = 0; c < 8; ++c) {
        expectVec(b.corners[c], xs[(c >> 2) & 1], ys[(c >> 1) & 1], zs[c & 1]);
        EXPECT_EQ(b.corners[c].w, 0.5f);  // the centre's fourth component
    }
    expectVec(b.min, 0.5f, 0.0f, 2.0f);
    expectVec(b.max, 1.5f, 4.0f, 4.0f);
    ASSERT_EQ(m.localPoints.size(), 8u);
    EXPECT_EQ(m.worldPoints.size(), 8u);
    for (int c = 0; c < 8; ++c)
        expectVec(m.localPoints[c], b.corners[c].x, b.corners[c].y, b.corners[c].z, 0.0f);
}

TEST(LGLColMesh, AddBoxWithOneSizeIsACube)
{
    LGLColMesh m;
    m.addBox(v(0, 1.5f, 0), v(0, 0, 0), 0.5);
    expectVec(m.boxes[0].min, -0.5f, 1.0f, -0.5f);
    expectVec(m.boxes[0].max, 0.5f, 2.0f, 0.5f);
    EXPECT_DOUBLE_EQ(m.boxes[0].boundRadius, 0.5);
}

TEST(LGLColMesh, TwoBoxesSharingAFaceContributeTwelveCorners)
{
    LGLColMesh m;
    m.addBox(v(0, 0, 0), v(0, 0, 0), 1.0);
    m.addBox(v(2, 0, 0), v(0, 0, 0), 1.0);
    EXPECT_EQ(m.boxes.size(), 2u);
    EXPECT_EQ(m.localPoints.size(), 12u);
    EXPECT_EQ(m.worldPoints.size(), 12u);
    // The second box's new corners follow in corner order: (3, -1, -1), (3, -1, 1), (3, 1, -1), (3, 1, 1).
    expectVec(m.localPoints[8], 3, -1, -1);
    expectVec(m.localPoints[11], 3, 1, 1);
}

TEST(LGLColMesh, TubesAndSpheresAreStoredAsGiven)
{
    LGLColMesh m;
    m.addTube(v(1, 2, 3), v(4, 5, 6), 0.25, 3.0);
    m.addSphere(v(7, 8, 9), 1.5);
    ASSERT_EQ(m.tubes.size(), 1u);
    ASSERT_EQ(m.spheres.size(), 1u);
    expectVec(m.tubes[0].a, 1, 2, 3);
    expectVec(m.tubes[0].b, 4, 5, 6);
    EXPECT_DOUBLE_EQ(m.tubes[0].radiusA, 0.25);
    EXPECT_DOUBLE_EQ(m.tubes[0].radiusB, 3.0);
    expectVec(m.spheres[0].centre, 7, 8, 9);
    EXPECT_DOUBLE_EQ(m.spheres[0].radius, 1.5);
    EXPECT_TRUE(m.localPoints.empty());
}

TEST(LGLColMesh, BoxGroupSpansItsBoxesAndEnclosesThem)
{
    LGLColMesh m;
    m.addBox(v(50, 50, 50), v(0, 0, 0), 1.0);  // outside any group
    m.beginBoxGroup(v(1, 2, 3), 4.5);
    ASSERT_EQ(m.boxGroups.size(), 1u);
    EXPECT_EQ(m.boxGroups[0].firstBox, 1);
    EXPECT_EQ(m.boxGroups[0].lastBox, 1);
    m.addBox(v(0, 0, 0), v(0, 0, 0), 1.0, 2.0, 3.0);
    m.addBox(v(5, -4, 1), v(0, 0, 0), 0.5);
    m.endBoxGroup();
    const LGLColMesh::tBoxGroup& g = m.boxGroups[0];
    EXPECT_EQ(g.firstBox, 1);
    EXPECT_EQ(g.lastBox, 2);
    expectVec(g.centre, 1, 2, 3);
    EXPECT_DOUBLE_EQ(g.size, 4.5);
    expectVec(g.min, -1.0f, -4.5f, -3.0f);
    expectVec(g.max, 5.5f, 2.0f, 3.0f);
}

TEST(LGLColMesh, EndBoxGroupWithoutGroupDoesNothing)
{
    LGLColMesh m;
    m.addBox(v(0, 0, 0), v(0, 0, 0), 1.0);
    m.endBoxGroup();
    EXPECT_TRUE(m.boxGroups.empty());
    EXPECT_FALSE(m.collidesWith(v(0, 0, 0)));
}

TEST(LGLColMesh, EmptyGroupNeverCollides)
{
    LGLColMesh m;
    m.beginBoxGroup(v(0, 0, 0), 1.0);
    m.endBoxGroup();
    EXPECT_EQ(m.boxGroups[0].lastBox, -1);
    m.updateWorldCoordinates();
    EXPECT_FALSE(m.collidesWith(v(0, 0, 0)));
}

TEST(LGLColMesh, InitDoesNothingAndDisposeEmptiesEverything)
{
    LGLColMesh m = groupedBox(v(0, 0, 0), 1, 1, 1);
    m.addTube(v(0, 0, 0), v(0, 0, 1), 1, 1);
    m.addSphere(v(0, 0, 0), 1);
    int dummy = 0;
    m.model = reinterpret_cast<Object3DS*>(&dummy);
    m.init();
    EXPECT_EQ(m.boxes.size(), 1u);
    EXPECT_EQ(m.model, reinterpret_cast<Object3DS*>(&dummy));
    m.dispose();
    EXPECT_EQ(m.model, nullptr);
    EXPECT_TRUE(m.tubes.empty());
    EXPECT_TRUE(m.boxes.empty());
    EXPECT_TRUE(m.spheres.empty());
    EXPECT_TRUE(m.localPoints.empty());
    EXPECT_TRUE(m.worldPoints.empty());
    EXPECT_TRUE(m.boxGroups.empty());
}

TEST(LGLColMesh, CopiesAreDeepAndMovesCarryEverything)
{
    LGLColMesh a = groupedBox(v(1, 1, 1), 1, 1, 1);
    a.position = v(3, 4, 5);
    a.yaw = 0.5;
    a.pitch = 0.25;
    a.roll = 0.125;
    a.spareValue = 7.0;
    LGLColMesh b(a);
    b.boxes[0].centre.x = 99.0f;
    b.localPoints.clear();
    EXPECT_EQ(a.boxes[0].centre.x, 1.0f);
    EXPECT_EQ(a.localPoints.size(), 8u);
    LGLColMesh c;
    c = a;
    EXPECT_EQ(c.boxes.size(), 1u);
    EXPECT_DOUBLE_EQ(c.yaw, 0.5);
    EXPECT_DOUBLE_EQ(c.spareValue, 7.0);
    LGLColMesh d(std::move(c));
    EXPECT_EQ(d.boxGroups.size(), 1u);
    EXPECT_DOUBLE_EQ(d.roll, 0.125);
    expectVec(d.position, 3, 4, 5);
    LGLColMesh e;
    e = std::move(d);
    EXPECT_EQ(e.localPoints.size(), 8u);
    EXPECT_DOUBLE_EQ(e.pitch, 0.25);
}

// ---------------------------------------------------------------- world coordinates

TEST(LGLColMesh, WorldPointsFollowPositionWithoutTurns)
{
    LGLColMesh m = groupedBox(v(0, 0, 0), 1, 2, 3);
    m.position = v(10, 20, 30);
    m.updateWorldCoordinates();
    ASSERT_EQ(m.worldPoints.size(), 8u);
    for (size_t i = 0; i < 8; ++i)
        expectVec(m.worldPoints[i], m.localPoints[i].x + 10, m.localPoints[i].y + 20, m.localPoints[i].z + 30);
}

TEST(LGLColMesh, WorldPointsTurnRollThenPitchThenYaw)
{
    LGLColMesh m;
    m.addBox(v(2, 0, 0), v(0, 0, 0), 1.0);  // corner 0 is (1, -1, -1)
    m.roll = kHalfPi;                        // about z: (x, y, z) -> (-y, x, z)
    m.pitch = kHalfPi;                       // about x: (x, y, z) -> (x, -z, y)
    m.yaw = kHalfPi;                         // about y: (x, y, z) -> (z, y, -x)
    m.position = v(100, 0, 0);
    m.updateWorldCoordinates();
    // (1, -1, -1) -roll-> (1, 1, -1) -pitch-> (1, 1, 1) -yaw-> (1, 1, -1) -> + position
    expectVec(m.worldPoints[0], 101, 1, -1);
    // (3, 1, 1) -roll-> (-1, 3, 1) -pitch-> (-1, -1, 3) -yaw-> (3, -1, 1)
    expectVec(m.worldPoints[7], 103, -1, 1);
}

// ---------------------------------------------------------------- point test

TEST(LGLColMesh, PointInsideGroupedBoxCollidesAndOutsideDoesNot)
{
    LGLColMesh m = groupedBox(v(0, 0, 0), 1, 2, 3);
    EXPECT_TRUE(m.collidesWith(v(0.5f, -1.5f, 2.5f)));
    EXPECT_FALSE(m.collidesWith(v(1.01f, 0, 0)));
    EXPECT_FALSE(m.collidesWith(v(0, 2.01f, 0)));
    EXPECT_FALSE(m.collidesWith(v(0, 0, -3.01f)));
}

TEST(LGLColMesh, PointExactlyOnABoxFaceCollides)
{
    LGLColMesh m = groupedBox(v(0, 0, 0), 1, 2, 3);
    EXPECT_TRUE(m.collidesWith(v(1, 0, 0)));
    EXPECT_TRUE(m.collidesWith(v(0, -2, 0)));
    EXPECT_TRUE(m.collidesWith(v(0, 0, 3)));
    EXPECT_TRUE(m.collidesWith(v(-1, 2, -3)));  // a corner
}

TEST(LGLColMesh, BoxOutsideAnyGroupNeverCollides)
{
    LGLColMesh m;
    m.addBox(v(0, 0, 0), v(0, 0, 0), 1.0);
    m.updateWorldCoordinates();
    EXPECT_FALSE(m.collidesWith(v(0, 0, 0)));
}

TEST(LGLColMesh, TubeOrSphereAloneNeverCollides)
{
    LGLColMesh tube;
    tube.addTube(v(0, 0, 0), v(0, 0, 1), 5.0, 10.0);
    LGLColMesh sphere;
    sphere.addSphere(v(0, 0, 0), 5.0);
    LGLColMesh box = groupedBox(v(0, 0, 0), 2, 2, 2);
    for (LGLColMesh* m : {&tube, &sphere}) {
        m->updateWorldCoordinates();
        EXPECT_FALSE(m->collidesWith(v(0, 0, 0)));
        EXPECT_FALSE(m->collidesWith(v(0, 0, 1)));
        EXPECT_FALSE(m->collidesWith(box));
    }
    box.updateWorldCoordinates();
    EXPECT_FALSE(box.collidesWith(tube));
    EXPECT_FALSE(box.collidesWith(sphere));
}

TEST(LGLColMesh, PointTestUndoesPositionAndTurns)
{
    // A long box along local +x: 0..10 on x, -1..1 on y and z.
    LGLColMesh m = groupedBox(v(5, 0, 0), 5, 1, 1);
    m.position = v(100, 50, 0);
    m.yaw = kHalfPi;  // local +x turns to world -z
    m.updateWorldCoordinates();
    EXPECT_TRUE(m.collidesWith(v(100, 50, -8)));
    EXPECT_FALSE(m.collidesWith(v(108, 50, 0)));
    EXPECT_FALSE(m.collidesWith(v(100, 50, 8)));

    m.yaw = 0.0;
    m.pitch = kHalfPi;  // local +x stays on x; local +y turns to +z
    EXPECT_TRUE(m.collidesWith(v(108, 50, 0.5f)));
    m.pitch = 0.0;
    m.roll = kHalfPi;  // local +x turns to world +y
    EXPECT_TRUE(m.collidesWith(v(100, 58, 0)));
    EXPECT_FALSE(m.collidesWith(v(108, 50, 0)));
}

TEST(LGLColMesh, PointTestChecksGroupsInTurn)
{
    LGLColMesh m;
    m.beginBoxGroup(v(0, 0, 0), 1.0);
    m.addBox(v(0, 0, 0), v(0, 0, 0), 1.0);
    m.endBoxGroup();
    m.beginBoxGroup(v(10, 0, 0), 1.0);
    m.addBox(v(8, 0, 0), v(0, 0, 0), 1.0);
    m.addBox(v(12, 0, 0), v(0, 0, 0), 1.0);
    m.endBoxGroup();
    EXPECT_TRUE(m.collidesWith(v(0, 0, 0)));
    EXPECT_TRUE(m.collidesWith(v(12.5f, 0.5f, -0.5f)));
    EXPECT_TRUE(m.collidesWith(v(7, 1, 1)));
    // Inside the second group's bounds, between its boxes.
    EXPECT_FALSE(m.collidesWith(v(10, 0, 0)));
}

// ---------------------------------------------------------------- mesh test

TEST(LGLColMesh, MeshCollidesWhenACornerOfTheOtherIsInside)
{
    LGLColMesh big = groupedBox(v(0, 0, 0), 2, 2, 2);
    LGLColMesh small = groupedBox(v(0, 0, 0), 0.5, 0.5, 0.5);
    small.position = v(2.5f, 0, 0);  // corners at x 2 and 3: the x = 2 corners lie on big's face
    small.updateWorldCoordinates();
    big.updateWorldCoordinates();
    EXPECT_TRUE(big.collidesWith(small));
    small.position = v(2.6f, 0, 0);
    small.updateWorldCoordinates();
    EXPECT_FALSE(big.collidesWith(small));
}

TEST(LGLColMesh, MeshTestIsNotSymmetric)
{
    // small sits wholly inside big: its corners are inside big, none of big's corners inside small.
    LGLColMesh big = groupedBox(v(0, 0, 0), 2, 2, 2);
    LGLColMesh small = groupedBox(v(0, 0, 0), 0.5, 0.5, 0.5);
    big.updateWorldCoordinates();
    small.updateWorldCoordinates();
    EXPECT_TRUE(big.collidesWith(small));
    EXPECT_FALSE(small.collidesWith(big));
}

TEST(LGLColMesh, OverlappingBoxesWithoutACornerInsideDoNotCollide)
{
    // A cross: a long thin bar on x through a long thin bar on z.
    LGLColMesh a = groupedBox(v(0, 0, 0), 5, 1, 1);
    LGLColMesh b = groupedBox(v(0, 0, 0), 1, 1, 5);
    b.position = v(0, 0.5f, 0);
    a.updateWorldCoordinates();
    b.updateWorldCoordinates();
    EXPECT_FALSE(a.collidesWith(b));
    EXPECT_FALSE(b.collidesWith(a));
}

TEST(LGLColMesh, MeshTestUsesTheOthersWorldPointsAsLastUpdated)
{
    LGLColMesh big = groupedBox(v(0, 0, 0), 2, 2, 2);
    LGLColMesh small = groupedBox(v(0, 0, 0), 0.5, 0.5, 0.5);
    small.position = v(100, 0, 0);
    small.updateWorldCoordinates();
    small.position = v(0, 0, 0);  // not yet updated
    EXPECT_FALSE(big.collidesWith(small));
    small.updateWorldCoordinates();
    EXPECT_TRUE(big.collidesWith(small));
}

// ---------------------------------------------------------------- file reader

TEST(LGLColMesh, LoadReadsBoxesTubesAndSpheres)
{
    const std::string path = writeMesh("# a comment\n"
                                       "\n"
                                       "box 0 1.5 0 0 0 0 0.5\n"
                                       "tube 1 2 3 4 5 6 0.25 7\n"
                                       "sphere 1 2 3 4\n"
                                       "box 2 0 0 0 0 1 0.5 extra tokens\n");
    LGLColMesh m;
    m.load(path);
    ASSERT_EQ(m.boxes.size(), 2u);
    expectVec(m.boxes[0].centre, 0, 1.5f, 0);
    EXPECT_EQ(m.boxes[0].centre.w, 1.0f);
    expectVec(m.boxes[0].min, -0.5f, 1.0f, -0.5f);
    expectVec(m.boxes[0].max, 0.5f, 2.0f, 0.5f);
    expectVec(m.boxes[1].extra, 0, 0, 1);
    EXPECT_EQ(m.boxes[1].extra.w, 1.0f);
    ASSERT_EQ(m.tubes.size(), 1u);
    expectVec(m.tubes[0].a, 1, 2, 3);
    expectVec(m.tubes[0].b, 4, 5, 6);
    EXPECT_DOUBLE_EQ(m.tubes[0].radiusA, 0.25);
    EXPECT_DOUBLE_EQ(m.tubes[0].radiusB, 7.0);
    ASSERT_EQ(m.spheres.size(), 1u);
    expectVec(m.spheres[0].centre, 1, 2, 3);
    EXPECT_DOUBLE_EQ(m.spheres[0].radius, 4.0);
    EXPECT_EQ(m.localPoints.size(), 16u);
    EXPECT_TRUE(m.boxGroups.empty());
}

TEST(LGLColMesh, LoadedBoxesBelongToNoGroupUnlessBracketed)
{
    const std::string path = writeMesh("box 0 0 0 0 0 0 1\n");
    LGLColMesh loose;
    loose.load(path);
    loose.updateWorldCoordinates();
    EXPECT_FALSE(loose.collidesWith(v(0, 0, 0)));

    LGLColMesh grouped;
    grouped.beginBoxGroup(v(0, 0, 0), 1.0);
    grouped.load(path);
    grouped.endBoxGroup();
    EXPECT_TRUE(grouped.collidesWith(v(0, 0, 0)));
    EXPECT_TRUE(grouped.collidesWith(v(1, 1, 1)));
}

TEST(LGLColMesh, UnknownKeywordAndHashLinesAreIgnored)
{
    const std::string path = writeMesh("cylinder 1 2 3\n#box 1 2 3\n# box 1 2 3\nBOX 1 2 3\n box 1 2 3\n");
    LGLColMesh m;
    m.load(path);
    EXPECT_TRUE(m.boxes.empty());
    EXPECT_TRUE(m.tubes.empty());
    EXPECT_TRUE(m.spheres.empty());
}

TEST(LGLColMeshDeathTest, BoxLineWithFourTokensEndsTheProcess)
{
    const std::string path = writeMesh("box 1 2 3\n");
    LGLColMesh m;
    OSTRUM_EXPECT_EXIT_WITH_LINE(m.load(path), 255, "Error in colmesh file...");
}

TEST(LGLColMeshDeathTest, BoxLineOneTokenShortEndsTheProcess)
{
    const std::string path = writeMesh("box 0 0 0 0 0 0\n");
    LGLColMesh m;
    OSTRUM_EXPECT_EXIT_WITH_LINE(m.load(path), 255, "Error in colmesh file...");
}

TEST(LGLColMeshDeathTest, TubeLineOneTokenShortEndsTheProcess)
{
    const std::string path = writeMesh("box 0 0 0 0 0 0 1\ntube 1 2 3 4 5 6 7\n");
    LGLColMesh m;
    OSTRUM_EXPECT_EXIT_WITH_LINE(m.load(path), 255, "Error in colmesh file...");
}

TEST(LGLColMeshDeathTest, SphereLineOneTokenShortEndsTheProcess)
{
    const std::string path = writeMesh("sphere 1 2 3");
    LGLColMesh m;
    OSTRUM_EXPECT_EXIT_WITH_LINE(m.load(path), 255, "Error in colmesh file...");
}

TEST(LGLColMeshDeathTest, BareKeywordEndsTheProcess)
{
    const std::string path = writeMesh("tube\n");
    LGLColMesh m;
    OSTRUM_EXPECT_EXIT_WITH_LINE(m.load(path), 255, "Error in colmesh file...");
}

TEST(LGLColMesh, ReaderStopsAtTheShortLineAfterKeepingEarlierLines)
{
    std::istringstream in("box 0 0 0 0 0 0 1\nsphere 1 2\nbox 5 5 5 0 0 0 1\n");
    LGLColMesh m;
    EXPECT_FALSE(m.read(in));
    EXPECT_EQ(m.boxes.size(), 1u);
    EXPECT_TRUE(m.spheres.empty());
}

TEST(LGLColMesh, RepeatedBlanksMakeEmptyTokensThatReadAsZero)
{
    // Splitting at single blanks: "box  1 2 3 4 5 6" has eight tokens, the second empty.
    const std::string path = writeMesh("box  1 2 3 4 5 6\n");
    LGLColMesh m;
    m.load(path);
    ASSERT_EQ(m.boxes.size(), 1u);
    expectVec(m.boxes[0].centre, 0, 1, 2);
    expectVec(m.boxes[0].extra, 3, 4, 5);
    EXPECT_DOUBLE_EQ(m.boxes[0].boundRadius, 6.0);
}

TEST(LGLColMesh, BadNumbersReadAsZero)
{
    const std::string path = writeMesh("sphere x y z r\ntube 1e999 nan - + 2abc 3 0 0\n");
    LGLColMesh m;
    StdoutCapture capture;
    m.load(path);
    EXPECT_EQ(capture.take(), "");
    ASSERT_EQ(m.spheres.size(), 1u);
    expectVec(m.spheres[0].centre, 0, 0, 0);
    EXPECT_DOUBLE_EQ(m.spheres[0].radius, 0.0);
    ASSERT_EQ(m.tubes.size(), 1u);
    EXPECT_TRUE(std::isinf(m.tubes[0].a.x));
    EXPECT_TRUE(std::isnan(m.tubes[0].a.y));
    EXPECT_FLOAT_EQ(m.tubes[0].a.z, 0.0f);
    expectVec(m.tubes[0].b, 0, 2, 3);  // "+" reads as 0, "2abc" as 2
}

TEST(LGLColMesh, LastLineWithoutLineEndIsRead)
{
    const std::string path = writeMesh("sphere 1 2 3 4");
    LGLColMesh m;
    m.load(path);
    ASSERT_EQ(m.spheres.size(), 1u);
}

TEST(LGLColMesh, MissingFileIsSilentAndKeepsContentsButClearsModel)
{
    LGLColMesh m = groupedBox(v(0, 0, 0), 1, 1, 1);
    int dummy = 0;
    m.model = reinterpret_cast<Object3DS*>(&dummy);
    StdoutCapture capture;
    m.load(makeTempDir() + "/none.txt");
    EXPECT_EQ(capture.take(), "");
    EXPECT_EQ(m.model, nullptr);
    EXPECT_EQ(m.boxes.size(), 1u);
    EXPECT_EQ(m.boxGroups.size(), 1u);
}

TEST(LGLColMesh, LoadAppendsToWhatTheMeshHolds)
{
    const std::string path = writeMesh("box 0 0 0 0 0 0 1\n");
    LGLColMesh m;
    m.load(path);
    m.load(path);
    EXPECT_EQ(m.boxes.size(), 2u);
    EXPECT_EQ(m.localPoints.size(), 8u);
}

TEST(LGLColMesh, SaveLeavesNoFileBehind)
{
    const std::string dir = makeTempDir();
    LGLColMesh m = groupedBox(v(0, 0, 0), 1, 1, 1);
    m.addTube(v(0, 0, 0), v(0, 0, 1), 1, 1);
    m.addSphere(v(0, 0, 0), 1);
    m.save(dir + "/out.txt");
    struct stat st;
    EXPECT_NE(::stat((dir + "/out.txt").c_str(), &st), 0);
}

TEST(LGLColMesh, SaveLeavesAnExistingFileUntouched)
{
    const std::string path = writeMesh("box 0 0 0 0 0 0 1\n");
    LGLColMesh m;
    m.addSphere(v(0, 0, 0), 1);
    m.save(path);
    EXPECT_EQ(readFile(path), "box 0 0 0 0 0 0 1\n");
}

TEST(LGLColMesh, HandWrittenFileRoundTripsThroughItsRecords)
{
    // The reader's records written back in the same keywords read to the same records.
    const std::string text = "box 0.5 1.5 -2 0 0 1 0.75\ntube 1 2 3 0 1 0 0.5 4\nsphere -1 -2 -3 2.5\n";
    LGLColMesh a;
    a.load(writeMesh(text));
    std::ostringstream out;
    for (const auto& b : a.boxes)
        out << "box " << b.centre.x << ' ' << b.centre.y << ' ' << b.centre.z << ' ' << b.extra.x << ' '
            << b.extra.y << ' ' << b.extra.z << ' ' << b.boundRadius << '\n';
    for (const auto& t : a.tubes)
        out << "tube " << t.a.x << ' ' << t.a.y << ' ' << t.a.z << ' ' << t.b.x << ' ' << t.b.y << ' ' << t.b.z << ' '
            << t.radiusA << ' ' << t.radiusB << '\n';
    for (const auto& s : a.spheres)
        out << "sphere " << s.centre.x << ' ' << s.centre.y << ' ' << s.centre.z << ' ' << s.radius << '\n';
    EXPECT_EQ(out.str(), text);
}

}  // namespace
