// Object3DSGeometryTest.cpp -- Object3DS geometry queries: sub-object names and counts, vertices, the
// three sample passes of anyVertexInBox, the box distance, the inside test and the plane helpers.
#include "Object3DSTestSupport.h"

#include <cmath>

using namespace ostrum_test;
using namespace test3ds;
using namespace objtest;

namespace {

class Object3DSGeometry : public GLTest {
protected:
    static std::unique_ptr<Object3DS> loadBytes(const std::string& bytes)
    {
        auto o = makeObject();
        loadCaptured(*o, writeModel(bytes));
        return o;
    }

    // One triangle with file points (x, 0, y), library points (x, y, 0).
    static std::string flat(const std::string& name, float x0, float y0, float x1, float y1, float x2, float y2)
    {
        return meshObject(name, {{x0, 0, y0}, {x1, 0, y1}, {x2, 0, y2}}, {{0, 1, 2}});
    }

    // A box around the library point (x, y, 0), `half` wide on x and y and 0.1 deep.
    static bool hit(Object3DS& o, float x, float y, float half)
    {
        return o.anyVertexInBox(SVector3D(x - half, y - half, -0.1f), SVector3D(x + half, y + half, 0.1f));
    }

    // A closed tetrahedron whose faces are wound counter-clockwise seen from outside.
    static std::string tetrahedron(const std::string& name, float x, float y, float z, float s)
    {
        return meshObject(name, {{x, y, z}, {x + s, y, z}, {x, y + s, z}, {x, y, z + s}},
                          {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}});
    }

    static CVector3 point(float x, float y, float z)
    {
        CVector3 p;
        p.x = x;
        p.y = y;
        p.z = z;
        return p;
    }
};

// ---------------------------------------------------------------- names and counts

TEST_F(Object3DSGeometry, SubObjectCountAndNames)
{
    auto o = loadBytes(file3ds(flat("first", 0, 0, 1, 0, 0, 1) + flat("second", 0, 0, 1, 0, 0, 1)));
    EXPECT_EQ(o->getNumSubObjects(), 2);
    EXPECT_EQ(o->getSubObjName(0), "first");
    EXPECT_EQ(o->getSubObjName(1), "second");
    auto empty = makeObject();
    EXPECT_EQ(empty->getNumSubObjects(), 0);
}

TEST_F(Object3DSGeometry, SubObjectNameOfIdNumOfObjectsEndsProcess)
{
    auto o = loadBytes(file3ds(flat("first", 0, 0, 1, 0, 0, 1) + flat("second", 0, 0, 1, 0, 0, 1)));
    OSTRUM_EXPECT_EXIT_WITH_LINE(o->getSubObjName(2), 255, "ERROR: Illegal object id 2");
}

TEST_F(Object3DSGeometry, SubObjectNameOfNegativeIdEndsProcess)
{
    auto o = loadBytes(file3ds(flat("first", 0, 0, 1, 0, 0, 1)));
    OSTRUM_EXPECT_EXIT_WITH_LINE(o->getSubObjName(-1), 255, "ERROR: Illegal object id -1");
}

TEST_F(Object3DSGeometry, HasAnimDataFollowsTheRootBone)
{
    auto o = loadBytes(file3ds(flat("first", 0, 0, 1, 0, 0, 1)));
    EXPECT_FALSE(o->hasAnimData());
    o->root = new tBone;
    EXPECT_TRUE(o->hasAnimData());
    o->disposeFigure();
    EXPECT_FALSE(o->hasAnimData());
}

// ---------------------------------------------------------------- vertices

TEST_F(Object3DSGeometry, GetVerticesAppendsEveryVertexInModelOrder)
{
    auto o = loadBytes(file3ds(meshObject("a", {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}}, {{0, 1, 2}}) +
                               meshObject("b", {{-1, -2, -3}, {0, 0, 1}, {0, 1, 0}}, {{0, 1, 2}})));
    std::vector<SVector3D> out = {SVector3D(100, 100, 100)};
    o->getVertices(out);
    ASSERT_EQ(out.size(), 8u);
    EXPECT_EQ(out[0].x, 100.0f);  // not cleared first
    size_t i = 1;
    for (const t3DSObject& s : o->model.pObject)
        for (const CVector3& v : s.pVerts) {
            EXPECT_EQ(out[i].x, v.x);
            EXPECT_EQ(out[i].y, v.y);
            EXPECT_EQ(out[i].z, v.z);
            EXPECT_EQ(out[i].w, 1.0f);
            ++i;
        }
    // The stored vertices are in the library frame: file (4, 5, 6) is (4, 6, -5).
    EXPECT_NEAR(out[2].x, 4.0f, 1e-5);
    EXPECT_NEAR(out[2].y, 6.0f, 1e-5);
    EXPECT_NEAR(out[2].z, -5.0f, 1e-5);
    EXPECT_NEAR(out[5].x, -1.0f, 1e-5);
}

TEST_F(Object3DSGeometry, GetVerticesTwiceDoublesTheContents)
{
    auto o = loadBytes(file3ds(flat("a", 0, 0, 1, 0, 0, 1) + flat("b", 2, 2, 3, 2, 2, 3)));
    std::vector<SVector3D> out;
    o->getVertices(out);
    ASSERT_EQ(out.size(), 6u);
    o->getVertices(out);
    ASSERT_EQ(out.size(), 12u);
    for (size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(out[i].x, out[i + 6].x);
        EXPECT_EQ(out[i].y, out[i + 6].y);
        EXPECT_EQ(out[i].z, out[i + 6].z);
    }
}

// ---------------------------------------------------------------- boxes

TEST_F(Object3DSGeometry, BoxAroundAVertexIsHit)
{
    auto o = loadBytes(file3ds(flat("a", 0, 0, 30, 0, 0, 30)));
    EXPECT_TRUE(hit(*o, 30, 0, 0.1f));
    EXPECT_TRUE(hit(*o, 0, 30, 0.1f));
    EXPECT_FALSE(hit(*o, 40, 40, 0.1f));
}

TEST_F(Object3DSGeometry, ContainmentIsInclusiveOnEveryAxis)
{
    auto o = loadBytes(file3ds(flat("a", 0, 0, 30, 0, 0, 30)));
    const CVector3& v = o->model.pObject[0].pVerts[1];
    EXPECT_TRUE(o->anyVertexInBox(SVector3D(v.x, v.y, v.z), SVector3D(v.x + 1, v.y + 1, v.z + 1)));
    EXPECT_TRUE(o->anyVertexInBox(SVector3D(v.x - 1, v.y - 1, v.z - 1), SVector3D(v.x, v.y, v.z)));
    EXPECT_TRUE(o->anyVertexInBox(SVector3D(v.x, v.y, v.z), SVector3D(v.x, v.y, v.z)));
}

TEST_F(Object3DSGeometry, BoxInsideALargeTriangleIsHitThroughTheCentroidSample)
{
    // No vertex and no edge sample lies near (10, 10); the centroid does.
    auto o = loadBytes(file3ds(flat("a", 0, 0, 30, 0, 0, 30)));
    EXPECT_TRUE(hit(*o, 10, 10, 0.1f));
    EXPECT_TRUE(o->anyVertexInBox(0, SVector3D(9.9f, 9.9f, -0.1f), SVector3D(10.1f, 10.1f, 0.1f)));
    // Elsewhere inside the triangle, away from every sample, nothing is hit.
    EXPECT_FALSE(hit(*o, 12, 12, 0.1f));
}

TEST_F(Object3DSGeometry, BoxNearACornerWeightedSampleIsHit)
{
    // 0.6 of corner 1 and 0.2 of the others: (18, 6).
    auto o = loadBytes(file3ds(flat("a", 0, 0, 30, 0, 0, 30)));
    EXPECT_TRUE(hit(*o, 18, 6, 0.1f));
    EXPECT_TRUE(hit(*o, 6, 18, 0.1f));
    EXPECT_TRUE(hit(*o, 6, 6, 0.1f));
}

TEST_F(Object3DSGeometry, EdgesAreSampledAtTenPoints)
{
    // Edge corner 0 - corner 1 from (0, 0) to (30, 0): samples at x = 30 * (1 - k / 11).
    auto o = loadBytes(file3ds(flat("a", 0, 0, 30, 0, 0, 30)));
    EXPECT_TRUE(hit(*o, 30.0f * (1.0f - 5.0f / 11.0f), 0, 0.05f));
    EXPECT_TRUE(hit(*o, 30.0f * (1.0f - 10.0f / 11.0f), 0, 0.05f));
    EXPECT_FALSE(hit(*o, 1.25f, 0, 0.2f));  // between the corner and the first sample
    // Edge corner 1 - corner 2 from (30, 0) to (0, 30): its midpoint is not a sample, k = 4 is.
    EXPECT_FALSE(hit(*o, 15, 15, 0.2f));
    EXPECT_TRUE(hit(*o, 30.0f * 4.0f / 11.0f, 30.0f * 7.0f / 11.0f, 0.05f));
}

TEST_F(Object3DSGeometry, BoxCrossedOnlyByTheEdgeFromCornerTwoToCornerZeroIsNotHit)
{
    // The edge from (0, 30) back to (0, 0) runs through x = 0 but is never sampled.
    auto o = loadBytes(file3ds(flat("a", 0, 0, 30, 0, 0, 30)));
    EXPECT_FALSE(hit(*o, 0, 15, 0.5f));
    EXPECT_FALSE(o->anyVertexInBox(0, SVector3D(-0.5f, 14.5f, -0.1f), SVector3D(0.5f, 15.5f, 0.1f)));
}

TEST_F(Object3DSGeometry, SingleSubObjectFormLooksAtThatSubObjectOnly)
{
    auto o = loadBytes(file3ds(flat("a", 0, 0, 1, 0, 0, 1) + flat("b", 20, 20, 21, 20, 20, 21)));
    EXPECT_TRUE(hit(*o, 20, 20, 0.1f));
    EXPECT_FALSE(o->anyVertexInBox(0, SVector3D(19.9f, 19.9f, -0.1f), SVector3D(20.1f, 20.1f, 0.1f)));
    EXPECT_TRUE(o->anyVertexInBox(1, SVector3D(19.9f, 19.9f, -0.1f), SVector3D(20.1f, 20.1f, 0.1f)));
    // An id that names no sub-object touches nothing.
    EXPECT_FALSE(o->anyVertexInBox(2, SVector3D(-100, -100, -100), SVector3D(100, 100, 100)));
    EXPECT_FALSE(o->anyVertexInBox(-1, SVector3D(-100, -100, -100), SVector3D(100, 100, 100)));
}

// ---------------------------------------------------------------- box distance

TEST_F(Object3DSGeometry, BoxDistanceAtModelCentreIsZero)
{
    auto o = loadBytes(file3ds(meshObject("a", {{0, 0, 1}, {2, 0, 1}, {0, -4, 3}}, {{0, 1, 2}})));
    const SVector3D centre(static_cast<float>(o->centerX), static_cast<float>(o->centerY),
                           static_cast<float>(o->centerZ));
    EXPECT_EQ(o->minBBoxDistToPt(centre), 0.0);
}

TEST_F(Object3DSGeometry, BoxDistanceUsesStoredExtentsWithSecondAxisNegated)
{
    // Library box: x 0..2, y 1..3, z 0..4; stored y extents -3..-1.
    auto o = loadBytes(file3ds(meshObject("a", {{0, 0, 1}, {2, 0, 1}, {0, -4, 3}}, {{0, 1, 2}})));
    ASSERT_NEAR(o->minY, -3.0, 1e-5);
    ASSERT_NEAR(o->maxY, -1.0, 1e-5);
    // The stored corner (0, -3, 0) is at distance 0.
    EXPECT_NEAR(o->minBBoxDistToPt(SVector3D(0, -3, 0)), 0.0, 1e-5);
    // The model's real corner (0, 3, 0) is 4 from the nearest stored corner (0, -1, 0).
    EXPECT_NEAR(o->minBBoxDistToPt(SVector3D(0, 3, 0)), 4.0, 1e-5);
    // Not a distance to the box surface: a point inside the box, off the centre, is positive.
    const double inside = o->minBBoxDistToPt(SVector3D(1.0f, -2.0f, 1.5f));
    EXPECT_NEAR(inside, 0.5, 1e-5);  // the centre (1, -2, 2) is nearest
}

// ---------------------------------------------------------------- the inside test

TEST_F(Object3DSGeometry, PointInsideClosedSolidCollidesAndOutsideDoesNot)
{
    auto o = loadBytes(file3ds(tetrahedron("t", 0, 0, 0, 4)));
    EXPECT_TRUE(o->collidesWith(libraryPoint(1, 1, 1)));
    EXPECT_FALSE(o->collidesWith(libraryPoint(5, 5, 5)));
    EXPECT_FALSE(o->collidesWith(libraryPoint(-1, 1, 1)));
    EXPECT_FALSE(o->collidesWith(libraryPoint(1, 1, -0.5f)));
    EXPECT_TRUE(o->collidesWith(libraryPoint(0.1f, 0.1f, 0.1f)));
}

TEST_F(Object3DSGeometry, PointOnAFacePlaneDoesNotCollide)
{
    // The bottom face lies in the plane z = 0 of the file (library z = 0 up to rounding of the turn):
    // use a point taken on the stored plane itself so that its distance is exactly 0.
    auto o = loadBytes(file3ds(meshObject("one", {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}, {{0, 2, 1}})));
    const CVector3* v = o->model.pObject[0].pVerts.data();
    const CVector3 onPlane = v[0];
    EXPECT_FALSE(o->collidesWith(onPlane));
    CVector3 tri[3] = {v[0], v[2], v[1]};
    CVector3 n = Normal(tri);
    n.x = -n.x;
    n.y = -n.y;
    n.z = -n.z;
    CVector3 behind = v[0];
    behind.x -= n.x;
    behind.y -= n.y;
    behind.z -= n.z;
    EXPECT_TRUE(o->collidesWith(behind));
}

TEST_F(Object3DSGeometry, SingleOpenTriangleCollidesWithEveryPointBehindItsPlane)
{
    // Library triangle (0, 0, 0), (1, 0, 0), (0, 1, 0) wound counter-clockwise from +z: N = +z.
    auto o = loadBytes(file3ds(flat("a", 0, 0, 1, 0, 0, 1)));
    EXPECT_TRUE(o->collidesWith(point(0.2f, 0.2f, -1.0f)));
    EXPECT_TRUE(o->collidesWith(point(500.0f, -300.0f, -0.5f)));  // far beside the triangle
    EXPECT_FALSE(o->collidesWith(point(0.2f, 0.2f, 1.0f)));
    EXPECT_FALSE(o->collidesWith(point(-50.0f, 7.0f, 2.0f)));
}

TEST_F(Object3DSGeometry, PointInsideAnySubObjectCollides)
{
    auto o = loadBytes(file3ds(tetrahedron("a", 0, 0, 0, 4) + tetrahedron("b", 10, 0, 0, 4)));
    EXPECT_TRUE(o->collidesWith(libraryPoint(1, 1, 1)));
    EXPECT_TRUE(o->collidesWith(libraryPoint(11, 1, 1)));
    EXPECT_FALSE(o->collidesWith(libraryPoint(7, 1, 1)));
}

TEST_F(Object3DSGeometry, ModelWithoutSubObjectsNeverCollides)
{
    auto o = makeObject();
    EXPECT_FALSE(o->collidesWith(point(0, 0, 0)));
    auto empty = loadBytes(file3ds(material("m", "")));
    EXPECT_FALSE(empty->collidesWith(point(0, 0, 0)));
}

TEST_F(Object3DSGeometry, DegenerateFaceCountsAsBehind)
{
    auto o = loadBytes(file3ds(meshObject("line", {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {{0, 1, 2}})));
    EXPECT_TRUE(o->collidesWith(point(5, 5, 5)));
}

TEST_F(Object3DSGeometry, RealCubeHoldsItsCentre)
{
    const std::string dir = makeTempDir();
    ASSERT_TRUE(LFile::copy(assetsDir() + "/3ds/assimp/RotatingCube.3DS", dir + "/cube.3ds"));
    auto o = makeObject();
    loadCaptured(*o, dir + "/cube.3ds");
    ASSERT_EQ(o->model.numOfObjects, 1);
    const CVector3 centre = point(static_cast<float>(o->centerX), static_cast<float>(-o->centerY),
                                  static_cast<float>(o->centerZ));
    EXPECT_TRUE(o->collidesWith(centre));
    CVector3 outside = centre;
    outside.x += static_cast<float>(2.0 * o->radius);
    EXPECT_FALSE(o->collidesWith(outside));
    std::vector<SVector3D> verts;
    o->getVertices(verts);
    EXPECT_EQ(verts.size(), 26u);
    EXPECT_TRUE(o->anyVertexInBox(SVector3D(verts[5].x, verts[5].y, verts[5].z),
                                  SVector3D(verts[5].x, verts[5].y, verts[5].z)));
}

// ---------------------------------------------------------------- plane helpers

TEST(Object3DSPlanes, NormalIsUnitCrossProductOfSecondAndFirstEdge)
{
    CVector3 tri[3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const CVector3 n = Normal(tri);
    EXPECT_EQ(n.x, 0.0f);
    EXPECT_EQ(n.y, 0.0f);
    EXPECT_EQ(n.z, -1.0f);
    CVector3 tilted[3] = {{1, 1, 1}, {1, 4, 1}, {1, 1, 5}};  // (P2 - P0) x (P1 - P0) = (0,0,4) x (0,3,0)
    const CVector3 m = Normal(tilted);
    EXPECT_FLOAT_EQ(m.x, -1.0f);
    EXPECT_FLOAT_EQ(m.y, 0.0f);
    EXPECT_FLOAT_EQ(m.z, 0.0f);
}

TEST(Object3DSPlanes, ClassifySphereAgainstPlane)
{
    CVector3 normal = {0, 0, 1};
    CVector3 point = {3, -2, 1};
    CVector3 above = {7, 7, 6};
    CVector3 below = {0, 0, -4};
    float d = 0;
    EXPECT_EQ(ClassifySphere(above, normal, point, 6.0f, d), 1);  // radius beyond the distance
    EXPECT_EQ(d, 5.0f);
    EXPECT_EQ(ClassifySphere(above, normal, point, 5.0f, d), 2);  // touching counts as FRONT
    EXPECT_EQ(ClassifySphere(above, normal, point, 2.0f, d), 2);
    EXPECT_EQ(ClassifySphere(below, normal, point, 2.0f, d), 0);
    EXPECT_EQ(d, -5.0f);
    EXPECT_EQ(ClassifySphere(below, normal, point, 5.0f, d), 0);
    EXPECT_EQ(ClassifySphere(below, normal, point, 5.5f, d), 1);
    CVector3 onPlane = {9, 9, 1};
    EXPECT_EQ(ClassifySphere(onPlane, normal, point, 0.0f, d), 2);  // d = 0 with radius 0: FRONT
    EXPECT_EQ(d, 0.0f);
}

}  // namespace
