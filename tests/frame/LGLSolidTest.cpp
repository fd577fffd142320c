// LGLSolidTest.cpp -- boxes, the textured cube display list, circles, tubes and arrows, observed
// through GL feedback (positions, colours under a known light, texture coordinates) and list queries.
#include <ostrum_gl/frame/LGL.h>

#include "LGLTestHelpers.h"

#include <cmath>

using lgl_test::CompareOptions;
using lgl_test::expectAt;
using lgl_test::expectSameFeedback;
using lgl_test::LGLDrawTest;
using ostrum_test::FeedbackItem;
using ostrum_test::FeedbackVertex;
using ostrum_test::itemsOf;
using ostrum_test::recordFeedback;

namespace {

const double kPi = 3.14159265358979323846;

struct Point {
    double x, y, z;
};

// Under the solids' projection glOrtho(-32, 32, -24, 24, -10, 10) on the 640 x 480 window, one unit
// is ten pixels and window depth is 0.5 - z / 20; this undoes it.
Point objectPoint(const FeedbackVertex& v)
{
    return {(v.x - 320.0) / 10.0, (v.y - 240.0) / 10.0, (0.5 - v.z) * 20.0};
}

Point sub(Point a, Point b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Point cross(Point a, Point b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
double dot(Point a, Point b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
double radial(Point p) { return std::sqrt(p.x * p.x + p.y * p.y); }

// The face normal of a triangle by its winding (counter-clockwise front), not normalised.
Point windingNormal(const FeedbackItem& triangle)
{
    Point a = objectPoint(triangle.vertices[0]);
    Point b = objectPoint(triangle.vertices[1]);
    Point c = objectPoint(triangle.vertices[2]);
    return cross(sub(b, a), sub(c, a));
}

Point centroid(const FeedbackItem& triangle)
{
    Point sum{0, 0, 0};
    for (const auto& v : triangle.vertices) {
        Point p = objectPoint(v);
        sum = {sum.x + p.x, sum.y + p.y, sum.z + p.z};
    }
    return {sum.x / 3, sum.y / 3, sum.z / 3};
}

// Triangles [first, first + count) wind counter-clockwise seen from outside a convex part whose inner
// point is `inside`; degenerate triangles (no area) are skipped and counted.
int expectFacingAwayFrom(const std::vector<FeedbackItem>& triangles, size_t first, size_t count, Point inside)
{
    int degenerate = 0;
    for (size_t i = first; i < first + count; ++i) {
        SCOPED_TRACE("triangle " + std::to_string(i));
        Point n = windingNormal(triangles[i]);
        if (dot(n, n) < 1e-10) {
            ++degenerate;
            continue;
        }
        EXPECT_GT(dot(n, sub(centroid(triangles[i]), inside)), 0.0);
    }
    return degenerate;
}

void expectGrey(const FeedbackVertex& v, double value, double tolerance = 2e-3)
{
    EXPECT_NEAR(v.r, value, tolerance);
    EXPECT_NEAR(v.g, value, tolerance);
    EXPECT_NEAR(v.b, value, tolerance);
}

}  // namespace

class LGLSolids : public LGLDrawTest {
protected:
    void SetUp() override
    {
        LGLDrawTest::SetUp();
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-32, 32, -24, 24, -10, 10);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
    }
};

// ---------------------------------------------------------------- RenderRectCube

TEST_F(LGLSolids, RenderRectCubeDrawsSixFacesInTheirOrder)
{
    const float x1 = -5, y1 = -4, x2 = 6, y2 = 7, z1 = -3, z2 = 2;
    auto actual = recordFeedback([&] { LGL::RenderRectCube(x1, y1, x2, y2, z1, z2); });
    while (glGetError() != GL_NO_ERROR) {
    }
    auto expected = recordFeedback([&] {
        const float faces[6][4][3] = {
            {{x1, y1, z1}, {x2, y1, z1}, {x2, y2, z1}, {x1, y2, z1}},  // z = z1
            {{x1, y1, z2}, {x2, y1, z2}, {x2, y2, z2}, {x1, y2, z2}},  // z = z2
            {{x2, y1, z1}, {x2, y1, z2}, {x2, y2, z2}, {x2, y2, z1}},  // x = x2
            {{x1, y1, z1}, {x1, y1, z2}, {x1, y2, z2}, {x1, y2, z1}},  // x = x1
            {{x1, y2, z1}, {x1, y2, z2}, {x2, y2, z2}, {x2, y2, z1}},  // y = y2
            {{x1, y1, z1}, {x1, y1, z2}, {x2, y1, z2}, {x2, y1, z1}},  // y = y1
        };
        for (const auto& face : faces) {
            glBegin(GL_QUADS);
            for (const auto& v : face)
                glVertex3fv(v);
            glEnd();
        }
    });
    ASSERT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    ASSERT_EQ(actual.size(), 12u);
    expectSameFeedback(actual, expected);
    expectAt(actual[0].vertices[0], 320 + 10 * x1, 240 + 10 * y1);
}

TEST_F(LGLSolids, RenderRectCubeLeavesTheFifthBlockOpenSoItsEightVerticesFormTheLastTwoQuads)
{
    auto actual = recordFeedback([] { LGL::RenderRectCube(-5, -4, 6, 7, -3, 2); });
    // The sixth glBegin comes inside the open fifth block and is refused.
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_OPERATION));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    auto triangles = itemsOf(actual, GL_POLYGON_TOKEN);
    ASSERT_EQ(triangles.size(), 12u);
    // The last two quads (four triangles) lie on y = 7 and y = -4 in that order.
    for (size_t i = 8; i < 12; ++i)
        for (const auto& v : triangles[i].vertices)
            EXPECT_NEAR(objectPoint(v).y, i < 10 ? 7.0 : -4.0, 1e-4);
    // Nothing is left open afterwards: a new block begins cleanly.
    glBegin(GL_POINTS);
    glEnd();
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

// ---------------------------------------------------------------- buildCubeList

namespace {

struct CubeFace {
    float normal[3];
    // x, y, z, s, t per vertex
    float v[4][5];
};

// The box of buildCubeList for r = {left, top, right, bottom} and z1, z2, face by face.
std::vector<CubeFace> cubeFaces(float left, float top, float right, float bottom, float z1, float z2)
{
    return {
        {{0, 0, -1}, {{left, top, z2, 1, 1}, {right, top, z2, 0, 1}, {right, bottom, z2, 0, 0}, {left, bottom, z2, 1, 0}}},
        {{0, 0, 1}, {{left, top, z1, 0, 1}, {left, bottom, z1, 0, 0}, {right, bottom, z1, 1, 0}, {right, top, z1, 1, 1}}},
        {{0, -1, 0}, {{left, bottom, z2, 0, 0}, {right, bottom, z2, 1, 0}, {right, bottom, z1, 1, 1}, {left, bottom, z1, 0, 1}}},
        {{0, 1, 0}, {{left, top, z2, 1, 0}, {left, top, z1, 1, 1}, {right, top, z1, 0, 1}, {right, top, z2, 0, 0}}},
        {{1, 0, 0}, {{right, top, z2, 1, 0}, {right, top, z1, 1, 1}, {right, bottom, z1, 0, 1}, {right, bottom, z2, 0, 0}}},
        {{-1, 0, 0}, {{left, top, z2, 0, 0}, {left, bottom, z2, 1, 0}, {left, bottom, z1, 1, 1}, {left, top, z1, 0, 1}}},
    };
}

void drawFaces(const std::vector<CubeFace>& faces)
{
    glBegin(GL_QUADS);
    for (const auto& face : faces) {
        glNormal3fv(face.normal);
        for (const auto& v : face.v) {
            glTexCoord2f(v[3], v[4]);
            glVertex3f(v[0], v[1], v[2]);
        }
    }
    glEnd();
}

}  // namespace

TEST_F(LGLSolids, BuildCubeListMakesANewDisplayListEachTime)
{
    unsigned int first = 0;
    unsigned int second = 0;
    LGL::buildCubeList(first, tRect{-5, 6, 7, -8}, -2, 3);
    LGL::buildCubeList(second, tRect{-5, 6, 7, -8}, -2, 3);
    EXPECT_NE(first, 0u);
    EXPECT_NE(second, 0u);
    EXPECT_NE(first, second);
    EXPECT_TRUE(glIsList(first));
    EXPECT_TRUE(glIsList(second));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    // Compiled, not executed: building drew nothing.
    auto drawn = recordFeedback([] {
        unsigned int list = 0;
        LGL::buildCubeList(list, tRect{-5, 6, 7, -8}, -2, 3);
        glDeleteLists(list, 1);
    });
    EXPECT_TRUE(drawn.empty());
    glDeleteLists(first, 1);
    glDeleteLists(second, 1);
}

TEST_F(LGLSolids, BuildCubeListHoldsSixFacesWithTheirVerticesAndTextureCoordinates)
{
    unsigned int list = 0;
    LGL::buildCubeList(list, tRect{-5, 6, 7, -8}, -2, 3);
    glColor4f(0.2f, 0.4f, 0.6f, 0.8f);
    auto actual = recordFeedback([&] { glCallList(list); });
    auto expected = recordFeedback([] { drawFaces(cubeFaces(-5, 6, 7, -8, -2, 3)); });
    ASSERT_EQ(actual.size(), 12u);
    CompareOptions options;
    options.texture = true;
    expectSameFeedback(actual, expected, options);
    // First vertex: (left, top, z2) with (1, 1).
    expectAt(actual[0].vertices[0], 320 - 50, 240 + 60);
    EXPECT_NEAR(objectPoint(actual[0].vertices[0]).z, 3.0, 1e-4);
    EXPECT_EQ(actual[0].vertices[0].s, 1.0f);
    EXPECT_EQ(actual[0].vertices[0].t, 1.0f);
    glDeleteLists(list, 1);
}

TEST_F(LGLSolids, BuildCubeListNormalsAreFixedWhateverTheOrderOfTheArguments)
{
    // Under a white light from L (and then from -L) each face's brightness is max(0, N . L) of its
    // designed normal, also when z1 > z2 and top < bottom turn the box inside out.
    const float light[3] = {1.0f, 2.0f, 3.0f};
    const double length = std::sqrt(14.0);
    const int fixedNormals[6][3] = {{0, 0, -1}, {0, 0, 1}, {0, -1, 0}, {0, 1, 0}, {1, 0, 0}, {-1, 0, 0}};
    for (int flipped = 0; flipped < 2; ++flipped) {
        unsigned int list = 0;
        if (flipped)
            LGL::buildCubeList(list, tRect{-5, -8, 7, 6}, 3, -2);
        else
            LGL::buildCubeList(list, tRect{-5, 6, 7, -8}, -2, 3);
        for (float sign : {1.0f, -1.0f}) {
            SCOPED_TRACE("flipped " + std::to_string(flipped) + ", light sign " + std::to_string(sign));
            lightFrom(sign * light[0], sign * light[1], sign * light[2]);
            auto items = recordFeedback([&] { glCallList(list); });
            glDisable(GL_LIGHTING);
            ASSERT_EQ(items.size(), 12u);
            for (int face = 0; face < 6; ++face) {
                const double nDotL = sign * (fixedNormals[face][0] * light[0] + fixedNormals[face][1] * light[1] +
                                             fixedNormals[face][2] * light[2]) / length;
                for (int half = 0; half < 2; ++half)
                    for (const auto& v : items[face * 2 + half].vertices)
                        expectGrey(v, std::max(0.0, nDotL));
            }
        }
        glDeleteLists(list, 1);
    }
}

// ---------------------------------------------------------------- drawCircle

TEST_F(LGLSolids, DrawCircleWithZeroSegmentsEmitsAnEmptyLineLoop)
{
    auto items = recordFeedback([] { LGL::drawCircle(5.0f, 0); });
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    items = recordFeedback([] { LGL::drawCircle(5.0f, -3); });
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(LGLSolids, DrawCircleIsALineLoopOfSegmentsPointsOnTheRadius)
{
    const int segments = 8;
    const double radius = 20.0;
    auto items = recordFeedback([&] { LGL::drawCircle(static_cast<float>(radius), segments); });
    auto lines = itemsOf(items, GL_LINE_TOKEN);
    ASSERT_EQ(items.size(), static_cast<size_t>(segments));
    ASSERT_EQ(lines.size(), static_cast<size_t>(segments));
    for (int k = 0; k < segments; ++k) {
        SCOPED_TRACE("segment " + std::to_string(k));
        const double a0 = k * 2 * kPi / segments;
        const double a1 = (k + 1) * 2 * kPi / segments;
        Point from = objectPoint(lines[k].vertices[0]);
        Point to = objectPoint(lines[k].vertices[1]);
        EXPECT_NEAR(from.x, radius * std::cos(a0), 1e-3);
        EXPECT_NEAR(from.y, radius * std::sin(a0), 1e-3);
        EXPECT_NEAR(from.z, 0.0, 1e-4);
        EXPECT_NEAR(to.x, radius * std::cos(a1), 1e-3);
        EXPECT_NEAR(to.y, radius * std::sin(a1), 1e-3);
    }
}

// ---------------------------------------------------------------- drawTube

TEST_F(LGLSolids, DrawTubeSpansItsRadiusAndLengthCentredOnTheOrigin)
{
    const double radius = 5.0;
    const double length = 8.0;
    const int segments = 12;
    auto items = recordFeedback([&] { LGL::drawTube(radius, length, segments); });
    auto triangles = itemsOf(items, GL_POLYGON_TOKEN);
    // Two caps of `segments` triangles, then two triangles per side segment.
    ASSERT_EQ(items.size(), static_cast<size_t>(4 * segments));
    ASSERT_EQ(triangles.size(), items.size());
    for (int i = 0; i < 4 * segments; ++i) {
        SCOPED_TRACE("triangle " + std::to_string(i));
        ASSERT_EQ(triangles[i].vertices.size(), 3u);
        for (int k = 0; k < 3; ++k) {
            Point p = objectPoint(triangles[i].vertices[k]);
            if (i < 2 * segments) {
                // Caps: two rim points and the centre last.
                EXPECT_NEAR(p.z, i < segments ? length / 2 : -length / 2, 1e-3);
                EXPECT_NEAR(radial(p), k == 2 ? 0.0 : radius, 1e-3);
            } else {
                EXPECT_NEAR(std::fabs(p.z), length / 2, 1e-3);
                EXPECT_NEAR(radial(p), radius, 1e-3);
            }
        }
    }
    // The rim points stand at the angles k * 2 pi / segments.
    for (int k = 0; k < segments; ++k) {
        Point p = objectPoint(triangles[k].vertices[0]);
        const double a = k * 2 * kPi / segments;
        EXPECT_NEAR(p.x, radius * std::cos(a), 1e-3);
        EXPECT_NEAR(p.y, radius * std::sin(a), 1e-3);
    }
}

TEST_F(LGLSolids, DrawTubeFacesWindOutwards)
{
    auto items = recordFeedback([] { LGL::drawTube(5.0, 8.0, 10); });
    ASSERT_EQ(items.size(), 40u);
    EXPECT_EQ(expectFacingAwayFrom(items, 0, 40, Point{0, 0, 0}), 0);
}

TEST_F(LGLSolids, DrawTubeNormalsPointOutOfCapsAndSideFaces)
{
    const int segments = 10;
    glEnable(GL_NORMALIZE);
    // From +z: only the cap at +length/2 is lit, fully.
    lightFrom(0, 0, 1);
    auto items = recordFeedback([&] { LGL::drawTube(5.0, 8.0, segments); });
    ASSERT_EQ(items.size(), static_cast<size_t>(4 * segments));
    for (int i = 0; i < 4 * segments; ++i) {
        SCOPED_TRACE("triangle " + std::to_string(i));
        for (const auto& v : items[i].vertices)
            expectGrey(v, i < segments ? 1.0 : 0.0);
    }
    // From +x: each side face shows the cosine of its middle angle; caps stay dark.
    lightFrom(1, 0, 0);
    items = recordFeedback([&] { LGL::drawTube(5.0, 8.0, segments); });
    ASSERT_EQ(items.size(), static_cast<size_t>(4 * segments));
    for (int i = 0; i < 2 * segments; ++i)
        for (const auto& v : items[i].vertices)
            expectGrey(v, 0.0);
    for (int face = 0; face < segments; ++face) {
        SCOPED_TRACE("side face " + std::to_string(face));
        const double middle = (face + 0.5) * 2 * kPi / segments;
        for (int half = 0; half < 2; ++half)
            for (const auto& v : items[2 * segments + 2 * face + half].vertices)
                expectGrey(v, std::max(0.0, std::cos(middle)));
    }
}

TEST_F(LGLSolids, DrawTubeWithZeroSegmentsUsesThirtyTwo)
{
    auto items = recordFeedback([] { LGL::drawTube(2.0, 4.0, 0); });
    EXPECT_EQ(items.size(), static_cast<size_t>(4 * 32));
    for (int k = 0; k <= 32; ++k) {
        EXPECT_NEAR(LGL::tubeCos[k], std::cos(k * 2 * kPi / 32), 1e-6);
        EXPECT_NEAR(LGL::tubeSin[k], std::sin(k * 2 * kPi / 32), 1e-6);
    }
}

TEST_F(LGLSolids, DrawTubeWithMoreSegmentsThanTheTablesHoldDrawsFortyNine)
{
    auto items = recordFeedback([] { LGL::drawTube(2.0, 4.0, 100); });
    EXPECT_EQ(items.size(), static_cast<size_t>(4 * 49));
    EXPECT_EQ(LGL::TUBE_TABLE_SIZE, 50);
    EXPECT_NEAR(LGL::tubeCos[49], 1.0, 1e-6);
    EXPECT_NEAR(LGL::tubeSin[49], 0.0, 1e-6);
    EXPECT_NEAR(LGL::tubeCos[1], std::cos(2 * kPi / 49), 1e-6);
    items = recordFeedback([] { LGL::drawTube(2.0, 4.0, 49); });
    EXPECT_EQ(items.size(), static_cast<size_t>(4 * 49));
}

TEST_F(LGLSolids, DrawTubeWithNegativeSegmentsDrawsNothing)
{
    auto items = recordFeedback([] { LGL::drawTube(2.0, 4.0, -5); });
    EXPECT_TRUE(items.empty());
}

TEST_F(LGLSolids, DrawTubeLeavesTheModelviewMatrixAsItWas)
{
    glTranslatef(1, 2, 3);
    GLfloat before[16];
    GLfloat after[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, before);
    LGL::drawTube(3.0, 5.0, 8);
    glGetFloatv(GL_MODELVIEW_MATRIX, after);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(before[i], after[i]);
    GLint depth = 0;
    glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &depth);
    EXPECT_EQ(depth, 1);
}

// ---------------------------------------------------------------- drawArrow

TEST_F(LGLSolids, DrawArrowStandsOnTheOriginAndPointsAlongZ)
{
    const double shaftRadius = 1.0, shaftLength = 5.0, headRadius = 2.0, headLength = 3.0;
    const int segments = 8;
    auto items = recordFeedback([&] { LGL::drawArrow(shaftRadius, shaftLength, headRadius, headLength, segments); });
    // Bottom disc, shaft side (two per segment), head base disc, head cone (one per segment).
    ASSERT_EQ(items.size(), static_cast<size_t>(5 * segments));
    double highest = -1e9;
    double lowest = 1e9;
    for (int i = 0; i < 5 * segments; ++i) {
        SCOPED_TRACE("triangle " + std::to_string(i));
        for (const auto& v : items[i].vertices) {
            Point p = objectPoint(v);
            highest = std::max(highest, p.z);
            lowest = std::min(lowest, p.z);
            if (i < segments) {
                EXPECT_NEAR(p.z, 0.0, 1e-3);
                EXPECT_LE(radial(p), shaftRadius + 1e-3);
            } else if (i < 3 * segments) {
                EXPECT_NEAR(radial(p), shaftRadius, 1e-3);
                EXPECT_TRUE(std::fabs(p.z) < 1e-3 || std::fabs(p.z - shaftLength) < 1e-3) << p.z;
            } else if (i < 4 * segments) {
                EXPECT_NEAR(p.z, shaftLength, 1e-3);
                EXPECT_LE(radial(p), headRadius + 1e-3);
            } else {
                // The cone: its base rim on the head radius, its tip on the axis.
                if (std::fabs(p.z - shaftLength) < 1e-3)
                    EXPECT_NEAR(radial(p), headRadius, 1e-3);
                else {
                    EXPECT_NEAR(p.z, shaftLength + headLength, 1e-3);
                    EXPECT_NEAR(radial(p), 0.0, 1e-3);
                }
            }
        }
    }
    EXPECT_NEAR(lowest, 0.0, 1e-3);
    EXPECT_NEAR(highest, shaftLength + headLength, 1e-3);
}

TEST_F(LGLSolids, DrawArrowFacesWindOutwardsAndTheConeLeansUp)
{
    const double shaftLength = 5.0, headRadius = 2.0, headLength = 3.0;
    const int segments = 8;
    auto items = recordFeedback([&] { LGL::drawArrow(1.0, shaftLength, headRadius, headLength, segments); });
    ASSERT_EQ(items.size(), static_cast<size_t>(5 * segments));
    EXPECT_EQ(expectFacingAwayFrom(items, 0, 3 * segments, Point{0, 0, shaftLength / 2}), 0);
    EXPECT_EQ(expectFacingAwayFrom(items, 3 * segments, 2 * segments, Point{0, 0, shaftLength + headLength / 4}), 0);

    // From +z only the cone is lit, by the z share of its slanted normal: R / sqrt(H^2 + R^2).
    lightFrom(0, 0, 1);
    items = recordFeedback([&] { LGL::drawArrow(1.0, shaftLength, headRadius, headLength, segments); });
    ASSERT_EQ(items.size(), static_cast<size_t>(5 * segments));
    const double coneLight = headRadius / std::sqrt(headLength * headLength + headRadius * headRadius);
    for (int i = 0; i < 5 * segments; ++i) {
        SCOPED_TRACE("triangle " + std::to_string(i));
        for (const auto& v : items[i].vertices)
            expectGrey(v, i < 4 * segments ? 0.0 : coneLight);
    }
}
