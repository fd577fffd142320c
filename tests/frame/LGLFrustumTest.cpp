// LGLFrustumTest.cpp -- LGLFrustum against planes built from the camera geometry, exact boxes and GL clipping.
#include <ostrum_gl/frame/LGLFrustum.h>

#include <GL/gl.h>
#include <GL/glu.h>

#include <TestSupport.h>

#include <array>
#include <cmath>
#include <utility>

namespace {

using ostrum_test::GLTest;

struct Vec {
    double x, y, z;
};
Vec operator+(Vec a, Vec b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Vec operator-(Vec a, Vec b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Vec operator*(Vec a, double k) { return {a.x * k, a.y * k, a.z * k}; }
double dot(Vec a, Vec b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Vec cross(Vec a, Vec b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
Vec unit(Vec a) { return a * (1.0 / std::sqrt(dot(a, a))); }

using Plane = std::array<double, 4>;

// The six planes of a perspective camera worked out from its geometry alone: the near and far planes
// are perpendicular to the view direction at the near and far distances, and each side plane passes
// through the eye, tilted by the half field of view (vertical) or its aspect-widened tangent
// (horizontal). Each normal points into the view and has length 1.
struct Camera {
    double fovy, aspect, zNear, zFar;
    Vec eye, centre, up;

    Vec forward() const { return unit(centre - eye); }
    Vec side() const { return unit(cross(forward(), up)); }
    Vec upright() const { return cross(side(), forward()); }
    double tanY() const { return std::tan(fovy * M_PI / 360.0); }
    double tanX() const { return tanY() * aspect; }

    static Plane through(Vec normal, Vec point)
    {
        normal = unit(normal);
        return {normal.x, normal.y, normal.z, -dot(normal, point)};
    }
    // Order: right, left, bottom, top, far, near.
    std::array<Plane, 6> planes() const
    {
        const Vec f = forward(), s = side(), u = upright();
        return {through(f * tanX() - s, eye), through(f * tanX() + s, eye), through(f * tanY() + u, eye),
                through(f * tanY() - u, eye), through(f * -1.0, eye + f * zFar), through(f, eye + f * zNear)};
    }
    // The middle of each face of the frustum, in the same order.
    std::array<Vec, 6> faceCentres() const
    {
        const Vec f = forward(), s = side(), u = upright();
        const double mid = (zNear + zFar) / 2.0;
        const Vec axis = eye + f * mid;
        return {axis + s * (mid * tanX()), axis - s * (mid * tanX()), axis - u * (mid * tanY()),
                axis + u * (mid * tanY()), eye + f * zFar,          eye + f * zNear};
    }
    void apply() const
    {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        gluPerspective(fovy, aspect, zNear, zFar);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        gluLookAt(eye.x, eye.y, eye.z, centre.x, centre.y, centre.z, up.x, up.y, up.z);
    }
};

double planeDist(const Plane& p, Vec v) { return p[0] * v.x + p[1] * v.y + p[2] * v.z + p[3]; }

bool insideAll(const std::array<Plane, 6>& planes, Vec v)
{
    for (const Plane& p : planes) {
        if (planeDist(p, v) <= 0.0) return false;
    }
    return true;
}

// How many of the eight corners of the cube (centre, half-extent size) lie inside all planes.
int cornersInside(const std::array<Plane, 6>& planes, Vec centre, double size)
{
    int count = 0;
    for (int corner = 0; corner < 8; ++corner) {
        const Vec c{centre.x + ((corner & 1) ? size : -size), centre.y + ((corner & 2) ? size : -size),
                    centre.z + ((corner & 4) ? size : -size)};
        count += insideAll(planes, c) ? 1 : 0;
    }
    return count;
}

// A camera placed off the axes, looking down and sideways.
const Camera kCamera{60.0, 4.0 / 3.0, 1.0, 50.0, {3.0, 2.0, 10.0}, {-1.0, 0.5, 2.0}, {0.0, 1.0, 0.0}};

const char* const kPlaneNames[6] = {"right", "left", "bottom", "top", "far", "near"};

class LGLFrustumTest : public GLTest {
protected:
    LGLFrustum frustum;

    void useCamera(const Camera& camera)
    {
        camera.apply();
        frustum.calculateFrustum();
    }
    // Ortho box x in (-2, 2), y in (-1, 1), z in (-3, -1), every plane value exact in float.
    void useOrthoBox()
    {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-2.0, 2.0, -1.0, 1.0, 1.0, 3.0);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        frustum.calculateFrustum();
    }
    // A 90-degree square view from (0, 0, 5) towards the origin with near 1 and far 3: the near plane is
    // z = 4 and the far plane z = 2, both exact in float.
    void useExactPerspective()
    {
        useCamera(Camera{90.0, 1.0, 1.0, 3.0, {0.0, 0.0, 5.0}, {0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}});
    }
    void setPlane(int index, float a, float b, float c, float d)
    {
        frustum.planes[index][0] = a;
        frustum.planes[index][1] = b;
        frustum.planes[index][2] = c;
        frustum.planes[index][3] = d;
    }
    void expectPlane(int index, float a, float b, float c, float d)
    {
        SCOPED_TRACE(kPlaneNames[index]);
        EXPECT_FLOAT_EQ(frustum.planes[index][0], a);
        EXPECT_FLOAT_EQ(frustum.planes[index][1], b);
        EXPECT_FLOAT_EQ(frustum.planes[index][2], c);
        EXPECT_FLOAT_EQ(frustum.planes[index][3], d);
    }
    bool point(Vec v) const
    {
        return frustum.pointInFrustum(float(v.x), float(v.y), float(v.z));
    }
};

// ---------------------------------------------------------------- plane extraction

TEST_F(LGLFrustumTest, OrthographicBoxGivesItsSixFacesInOrderRightLeftBottomTopFarNear)
{
    useOrthoBox();
    expectPlane(LGLFrustum::Right, -1.0f, 0.0f, 0.0f, 2.0f);
    expectPlane(LGLFrustum::Left, 1.0f, 0.0f, 0.0f, 2.0f);
    expectPlane(LGLFrustum::Bottom, 0.0f, 1.0f, 0.0f, 1.0f);
    expectPlane(LGLFrustum::Top, 0.0f, -1.0f, 0.0f, 1.0f);
    expectPlane(LGLFrustum::Far, 0.0f, 0.0f, 1.0f, 3.0f);
    expectPlane(LGLFrustum::Near, 0.0f, 0.0f, -1.0f, -1.0f);
}

TEST_F(LGLFrustumTest, PerspectivePlanesMatchPlanesWorkedOutFromFieldOfViewAspectDepthsAndEye)
{
    useCamera(kCamera);
    const std::array<Plane, 6> expected = kCamera.planes();
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(kPlaneNames[i]);
        EXPECT_NEAR(frustum.planes[i][0], expected[i][0], 1e-5);
        EXPECT_NEAR(frustum.planes[i][1], expected[i][1], 1e-5);
        EXPECT_NEAR(frustum.planes[i][2], expected[i][2], 1e-5);
        EXPECT_NEAR(frustum.planes[i][3], expected[i][3], 2e-5 * std::max(1.0, std::fabs(expected[i][3])));
    }
}

TEST_F(LGLFrustumTest, EveryPlaneIsNormalisedSoItsValueIsASignedDistance)
{
    useCamera(kCamera);
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(kPlaneNames[i]);
        const float* p = frustum.planes[i];
        EXPECT_NEAR(std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]), 1.0, 1e-6);
    }
    // The eye lies on the four side planes and at the near distance outside the near plane.
    const Vec eye = kCamera.eye;
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(frustum.planes[i][0] * eye.x + frustum.planes[i][1] * eye.y + frustum.planes[i][2] * eye.z +
                        frustum.planes[i][3],
                    0.0, 1e-4)
            << kPlaneNames[i];
    }
    const float* nearPlane = frustum.planes[LGLFrustum::Near];
    EXPECT_NEAR(nearPlane[0] * eye.x + nearPlane[1] * eye.y + nearPlane[2] * eye.z + nearPlane[3], -kCamera.zNear, 1e-4);
}

TEST_F(LGLFrustumTest, CalculateFrustumReadsTheMatricesCurrentWhenItIsCalled)
{
    useOrthoBox();
    // Moving the world by +5 in x moves the box to x in (-7, -3) in object coordinates.
    glTranslatef(5.0f, 0.0f, 0.0f);
    EXPECT_FLOAT_EQ(frustum.planes[LGLFrustum::Right][3], 2.0f);  // not yet recalculated
    frustum.calculateFrustum();
    expectPlane(LGLFrustum::Right, -1.0f, 0.0f, 0.0f, -3.0f);
    expectPlane(LGLFrustum::Left, 1.0f, 0.0f, 0.0f, 7.0f);
    expectPlane(LGLFrustum::Near, 0.0f, 0.0f, -1.0f, -1.0f);
    // A wider projection with the same modelview.
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-4.0, 4.0, -1.0, 1.0, 1.0, 3.0);
    glMatrixMode(GL_MODELVIEW);
    frustum.calculateFrustum();
    expectPlane(LGLFrustum::Right, -1.0f, 0.0f, 0.0f, -1.0f);
    expectPlane(LGLFrustum::Left, 1.0f, 0.0f, 0.0f, 9.0f);
}

TEST_F(LGLFrustumTest, ExactPerspectiveHasNearPlaneAtFourAndFarPlaneAtTwo)
{
    useExactPerspective();
    expectPlane(LGLFrustum::Near, 0.0f, 0.0f, -1.0f, 4.0f);
    expectPlane(LGLFrustum::Far, 0.0f, 0.0f, 1.0f, -2.0f);
}

// ---------------------------------------------------------------- points

TEST_F(LGLFrustumTest, PointOnTheNearPlaneIsOutside)
{
    useExactPerspective();
    EXPECT_FALSE(frustum.pointInFrustum(0.0f, 0.0f, 4.0f));
    EXPECT_TRUE(frustum.pointInFrustum(0.0f, 0.0f, 3.999f));
    EXPECT_FALSE(frustum.pointInFrustum(0.0f, 0.0f, 2.0f));  // on the far plane
    EXPECT_TRUE(frustum.pointInFrustum(0.0f, 0.0f, 2.001f));
}

TEST_F(LGLFrustumTest, PointsJustInsideEachPlaneAreInAndJustOutsideAreOut)
{
    useCamera(kCamera);
    const std::array<Plane, 6> planes = kCamera.planes();
    const std::array<Vec, 6> faces = kCamera.faceCentres();
    const double step = 0.01;
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(kPlaneNames[i]);
        const Vec normal{planes[i][0], planes[i][1], planes[i][2]};
        const Vec in = faces[i] + normal * step;
        const Vec out = faces[i] - normal * step;
        ASSERT_TRUE(insideAll(planes, in));
        ASSERT_FALSE(insideAll(planes, out));
        EXPECT_TRUE(point(in));
        EXPECT_FALSE(point(out));
    }
}

TEST_F(LGLFrustumTest, PointTestAgreesWithWhatGLClippingKeeps)
{
    useCamera(kCamera);
    const Vec f = kCamera.forward(), s = kCamera.side(), u = kCamera.upright();
    int inside = 0, outside = 0;
    for (int i = 0; i <= 12; ++i) {
        for (int j = 0; j <= 8; ++j) {
            for (int k = 0; k <= 6; ++k) {
                // A lattice over and around the frustum, in view-aligned steps that keep clear of the planes.
                const double depth = -2.03 + k * 9.07;
                const double across = (i - 6) * 0.157 * depth + 0.011;
                const double upward = (j - 4) * 0.163 * depth + 0.013;
                const Vec v = kCamera.eye + f * depth + s * across + u * upward;
                const auto fed = ostrum_test::itemsOf(ostrum_test::recordFeedback([&] {
                    glBegin(GL_POINTS);
                    glVertex3d(v.x, v.y, v.z);
                    glEnd();
                }, 64),
                                                      GL_POINT_TOKEN);
                const bool kept = !fed.empty();
                ASSERT_EQ(insideAll(kCamera.planes(), v), kept);
                EXPECT_EQ(point(v), kept) << "depth " << depth << " across " << across << " up " << upward;
                (kept ? inside : outside) += 1;
            }
        }
    }
    EXPECT_GT(inside, 20);
    EXPECT_GT(outside, 20);
}

// ---------------------------------------------------------------- spheres

TEST_F(LGLFrustumTest, SphereOfRadiusZeroOnAPlaneIsOutside)
{
    useExactPerspective();
    EXPECT_FALSE(frustum.sphereInFrustum(0.0f, 0.0f, 4.0f, 0.0f));  // near
    EXPECT_FALSE(frustum.sphereInFrustum(0.0f, 0.0f, 2.0f, 0.0f));  // far
    EXPECT_TRUE(frustum.sphereInFrustum(0.0f, 0.0f, 3.0f, 0.0f));
}

TEST_F(LGLFrustumTest, SphereTouchingAPlaneFromOutsideIsOutside)
{
    useExactPerspective();
    // Centre half a unit beyond the near plane.
    EXPECT_FALSE(frustum.sphereInFrustum(0.0f, 0.0f, 4.5f, 0.5f));
    EXPECT_TRUE(frustum.sphereInFrustum(0.0f, 0.0f, 4.5f, 0.5001f));
    // Centre one unit beyond the far plane.
    EXPECT_FALSE(frustum.sphereInFrustum(0.0f, 0.0f, 1.0f, 1.0f));
    EXPECT_TRUE(frustum.sphereInFrustum(0.0f, 0.0f, 1.0f, 1.0001f));
}

TEST_F(LGLFrustumTest, SpheresJustReachingOrJustMissingEachPlane)
{
    useCamera(kCamera);
    const std::array<Plane, 6> planes = kCamera.planes();
    const std::array<Vec, 6> faces = kCamera.faceCentres();
    const double radius = 0.75, step = 0.01;
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(kPlaneNames[i]);
        const Vec normal{planes[i][0], planes[i][1], planes[i][2]};
        const Vec c = faces[i] - normal * radius;  // a sphere of this radius touches the plane from outside
        EXPECT_TRUE(frustum.sphereInFrustum(float(c.x), float(c.y), float(c.z), float(radius + step)));
        EXPECT_FALSE(frustum.sphereInFrustum(float(c.x), float(c.y), float(c.z), float(radius - step)));
        // A sphere whose centre is inside is inside whatever its radius.
        const Vec in = faces[i] + normal * step;
        EXPECT_TRUE(frustum.sphereInFrustum(float(in.x), float(in.y), float(in.z), 0.0f));
    }
}

// ---------------------------------------------------------------- cubes and blocks

TEST_F(LGLFrustumTest, CubeCentredOnTheCameraAndLargerThanTheViewIsInsideForCubeAndBlockTests)
{
    useCamera(kCamera);
    const Vec eye = kCamera.eye;
    const float size = 100.0f;
    // Every corner lies outside the frustum.
    const std::array<Plane, 6> planes = kCamera.planes();
    for (int corner = 0; corner < 8; ++corner) {
        const Vec c{eye.x + ((corner & 1) ? size : -size), eye.y + ((corner & 2) ? size : -size),
                    eye.z + ((corner & 4) ? size : -size)};
        EXPECT_FALSE(point(c));
    }
    ASSERT_EQ(cornersInside(planes, eye, size), 0);
    EXPECT_TRUE(frustum.cubeInFrustum(float(eye.x), float(eye.y), float(eye.z), size));
    EXPECT_TRUE(frustum.blockInFrustum(float(eye.x), float(eye.y), float(eye.z), size, size, size));
}

TEST_F(LGLFrustumTest, SameCubeWithAllCornersOutsideIsOutsideForCubeInFrustum2)
{
    useCamera(kCamera);
    const Vec eye = kCamera.eye;
    EXPECT_FALSE(frustum.cubeInFrustum2(float(eye.x), float(eye.y), float(eye.z), 100.0f));
    // A cube that swallows the whole ortho box: again the two cube tests disagree.
    useOrthoBox();
    EXPECT_TRUE(frustum.cubeInFrustum(0.0f, 0.0f, -2.0f, 5.0f));
    EXPECT_FALSE(frustum.cubeInFrustum2(0.0f, 0.0f, -2.0f, 5.0f));
}

TEST_F(LGLFrustumTest, CubesStraddlingEachPlaneAreInsideAndCubesBeyondItAreOutside)
{
    useCamera(kCamera);
    const std::array<Plane, 6> planes = kCamera.planes();
    const std::array<Vec, 6> faces = kCamera.faceCentres();
    const float size = 0.4f;
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(kPlaneNames[i]);
        const Vec normal{planes[i][0], planes[i][1], planes[i][2]};
        const Vec straddling = faces[i] - normal * 0.1;  // centre just outside, corners on both sides
        const Vec beyond = faces[i] - normal * (size * std::sqrt(3.0) + 0.05);
        ASSERT_FALSE(insideAll(planes, straddling));
        ASSERT_GE(cornersInside(planes, straddling, size), 1);
        ASSERT_EQ(cornersInside(planes, beyond, size), 0);
        EXPECT_TRUE(frustum.cubeInFrustum(float(straddling.x), float(straddling.y), float(straddling.z), size));
        EXPECT_TRUE(frustum.cubeInFrustum2(float(straddling.x), float(straddling.y), float(straddling.z), size));
        EXPECT_TRUE(
            frustum.blockInFrustum(float(straddling.x), float(straddling.y), float(straddling.z), size, size, size));
        EXPECT_FALSE(frustum.cubeInFrustum(float(beyond.x), float(beyond.y), float(beyond.z), size));
        EXPECT_FALSE(frustum.cubeInFrustum2(float(beyond.x), float(beyond.y), float(beyond.z), size));
        EXPECT_FALSE(frustum.blockInFrustum(float(beyond.x), float(beyond.y), float(beyond.z), size, size, size));
    }
}

TEST_F(LGLFrustumTest, CubeWhollyInsideIsInsideForAllCubeTests)
{
    useCamera(kCamera);
    const Vec centre = kCamera.eye + kCamera.forward() * 10.0;
    EXPECT_TRUE(frustum.cubeInFrustum(float(centre.x), float(centre.y), float(centre.z), 0.5f));
    EXPECT_TRUE(frustum.cubeInFrustum2(float(centre.x), float(centre.y), float(centre.z), 0.5f));
    EXPECT_TRUE(frustum.blockInFrustum(float(centre.x), float(centre.y), float(centre.z), 0.5f, 0.5f, 0.5f));
}

TEST_F(LGLFrustumTest, CubeInFrustum2IsInsideWhenAnySingleCornerIsInside)
{
    useCamera(kCamera);
    const std::array<Plane, 6> planes = kCamera.planes();
    const Vec deep = kCamera.eye + kCamera.forward() * 10.0;
    const double size = 150.0;
    for (int corner = 0; corner < 8; ++corner) {
        SCOPED_TRACE(corner);
        const Vec sign{(corner & 1) ? 1.0 : -1.0, (corner & 2) ? 1.0 : -1.0, (corner & 4) ? 1.0 : -1.0};
        const Vec centre = deep - sign * size;
        ASSERT_EQ(cornersInside(planes, centre, size), 1);
        ASSERT_TRUE(insideAll(planes, deep));
        EXPECT_TRUE(frustum.cubeInFrustum2(float(centre.x), float(centre.y), float(centre.z), float(size)));
        EXPECT_TRUE(frustum.cubeInFrustum(float(centre.x), float(centre.y), float(centre.z), float(size)));
    }
}

TEST_F(LGLFrustumTest, BlockUsesEachHalfExtentOnItsOwnAxis)
{
    useOrthoBox();  // x in (-2, 2), y in (-1, 1), z in (-3, -1)
    // To the right: only sizeX can reach the box; a corner on the plane x = 2 does not count.
    EXPECT_FALSE(frustum.blockInFrustum(3.0f, 0.0f, -2.0f, 1.0f, 0.1f, 0.1f));
    EXPECT_TRUE(frustum.blockInFrustum(3.0f, 0.0f, -2.0f, 1.5f, 0.1f, 0.1f));
    EXPECT_FALSE(frustum.blockInFrustum(3.0f, 0.0f, -2.0f, 0.5f, 10.0f, 10.0f));
    // Above: only sizeY.
    EXPECT_FALSE(frustum.blockInFrustum(0.0f, 2.0f, -2.0f, 0.1f, 1.0f, 0.1f));
    EXPECT_TRUE(frustum.blockInFrustum(0.0f, 2.0f, -2.0f, 0.1f, 1.5f, 0.1f));
    EXPECT_FALSE(frustum.blockInFrustum(0.0f, 2.0f, -2.0f, 10.0f, 0.5f, 10.0f));
    // In front of the near plane: only sizeZ.
    EXPECT_FALSE(frustum.blockInFrustum(0.0f, 0.0f, 0.0f, 0.1f, 0.1f, 1.0f));
    EXPECT_TRUE(frustum.blockInFrustum(0.0f, 0.0f, 0.0f, 0.1f, 0.1f, 1.5f));
    EXPECT_FALSE(frustum.blockInFrustum(0.0f, 0.0f, 0.0f, 10.0f, 10.0f, 0.5f));
}

TEST_F(LGLFrustumTest, CubeTestIsTheBlockTestWithEqualHalfExtents)
{
    useOrthoBox();
    for (float size : {0.5f, 1.0f, 1.5f}) {
        for (float cx : {-3.0f, 0.0f, 3.0f}) {
            for (float cz : {0.0f, -2.0f, -4.5f}) {
                EXPECT_EQ(frustum.cubeInFrustum(cx, 0.0f, cz, size), frustum.blockInFrustum(cx, 0.0f, cz, size, size, size))
                    << size << " " << cx << " " << cz;
            }
        }
    }
    EXPECT_TRUE(frustum.cubeInFrustum(3.0f, 0.0f, -2.0f, 1.5f));
    EXPECT_FALSE(frustum.cubeInFrustum(3.0f, 0.0f, -2.0f, 1.0f));
}

TEST_F(LGLFrustumTest, CubeWhoseNearestCornersLieOnAPlaneIsOutsideForBothCubeTests)
{
    useOrthoBox();
    // Corners at x = 2 and x = 3: the nearest lie on the right plane, which counts as outside.
    EXPECT_FALSE(frustum.cubeInFrustum2(2.5f, 0.0f, -2.0f, 0.5f));
    EXPECT_FALSE(frustum.cubeInFrustum(2.5f, 0.0f, -2.0f, 0.5f));
    EXPECT_TRUE(frustum.cubeInFrustum2(2.45f, 0.0f, -2.0f, 0.5f));
    EXPECT_TRUE(frustum.cubeInFrustum(2.45f, 0.0f, -2.0f, 0.5f));
}

// ---------------------------------------------------------------- value behaviour and hand-set planes

TEST(LGLFrustumValueTest, NewFrustumHasAllPlanesZero)
{
    LGLFrustum frustum;
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j < 4; ++j) {
            EXPECT_EQ(frustum.planes[i][j], 0.0f);
        }
    }
    EXPECT_FALSE(frustum.pointInFrustum(0.0f, 0.0f, 0.0f));
    EXPECT_TRUE(frustum.sphereInFrustum(0.0f, 0.0f, 0.0f, 1.0f));
    EXPECT_FALSE(frustum.cubeInFrustum(0.0f, 0.0f, 0.0f, 1.0f));
}

TEST(LGLFrustumValueTest, TestsUseWhateverPlanesWereSetByHand)
{
    // The slab 0 < x < 10 with four planes that accept everything (0, 0, 0, 1).
    LGLFrustum frustum;
    const float slab[6][4] = {{-1, 0, 0, 10}, {1, 0, 0, 0}, {0, 0, 0, 1}, {0, 0, 0, 1}, {0, 0, 0, 1}, {0, 0, 0, 1}};
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j < 4; ++j) frustum.planes[i][j] = slab[i][j];
    }
    EXPECT_TRUE(frustum.pointInFrustum(5.0f, 1000.0f, -1000.0f));
    EXPECT_FALSE(frustum.pointInFrustum(0.0f, 0.0f, 0.0f));
    EXPECT_FALSE(frustum.pointInFrustum(10.0f, 0.0f, 0.0f));
    EXPECT_TRUE(frustum.sphereInFrustum(-1.5f, 0.0f, 0.0f, 2.0f));
    EXPECT_FALSE(frustum.sphereInFrustum(-2.0f, 0.0f, 0.0f, 2.0f));
    EXPECT_TRUE(frustum.cubeInFrustum(-1.0f, 0.0f, 0.0f, 1.5f));
    EXPECT_FALSE(frustum.cubeInFrustum(-1.0f, 0.0f, 0.0f, 1.0f));
    EXPECT_TRUE(frustum.cubeInFrustum2(-1.0f, 0.0f, 0.0f, 1.5f));
    EXPECT_TRUE(frustum.blockInFrustum(12.0f, 0.0f, 0.0f, 2.5f, 0.0f, 0.0f));
    EXPECT_FALSE(frustum.blockInFrustum(12.0f, 0.0f, 0.0f, 2.0f, 50.0f, 50.0f));
}

TEST(LGLFrustumValueTest, CopyAndMoveCarryThePlanes)
{
    LGLFrustum a;
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j < 4; ++j) a.planes[i][j] = float(i * 4 + j) + 0.5f;
    }
    LGLFrustum copied(a);
    LGLFrustum assigned;
    assigned = a;
    LGLFrustum moved(std::move(copied));
    LGLFrustum moveAssigned;
    moveAssigned = std::move(assigned);
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j < 4; ++j) {
            EXPECT_EQ(moved.planes[i][j], float(i * 4 + j) + 0.5f);
            EXPECT_EQ(moveAssigned.planes[i][j], float(i * 4 + j) + 0.5f);
        }
    }
}

}  // namespace
