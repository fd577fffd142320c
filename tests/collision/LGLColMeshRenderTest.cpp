// LGLColMeshRenderTest.cpp -- LGLColMesh on real GL and real models: the wire-frame display (edge order,
// line widths, colours, tubes, spheres), models as collision shapes and box grids over written models.
#include <ostrum_gl/collision/LGLColMesh.h>
#include <ostrum_gl/models/Object3DS.h>

#include "../models/Object3DSTestSupport.h"

#include <algorithm>
#include <cmath>

using namespace ostrum_test;
using namespace objtest;

namespace {

constexpr double kHalfPi = 1.5707963267948966;
const int kEdgeOrder[12][2] = {{0, 1}, {0, 2}, {0, 4}, {1, 3}, {1, 5}, {2, 3},
                               {2, 6}, {3, 7}, {4, 5}, {4, 6}, {5, 7}, {6, 7}};

SVector3D v(float x, float y, float z)
{
    return SVector3D(x, y, z, 1.0f);
}

class LGLColMeshRender : public GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        // Window pixels on x and y, a deep z range so that turned boxes stay inside.
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0, GLTestWindow::kWidth, 0, GLTestWindow::kHeight, -1000, 1000);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glDisable(GL_CULL_FACE);
        glDisable(GL_LIGHTING);
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_DEPTH_TEST);
    }

    // The twelve edges of corners c, as window x, y pairs in drawing order.
    static void expectEdges(const std::vector<FeedbackItem>& lines, size_t first, const SVector3D c[8], float r,
                            float g, float b)
    {
        ASSERT_GE(lines.size(), first + 12);
        for (int e = 0; e < 12; ++e) {
            const FeedbackItem& item = lines[first + e];
            ASSERT_EQ(item.vertices.size(), 2u);
            for (int k = 0; k < 2; ++k) {
                const SVector3D& p = c[kEdgeOrder[e][k]];
                EXPECT_NEAR(item.vertices[k].x, p.x, 1e-2) << "edge " << e << " vertex " << k;
                EXPECT_NEAR(item.vertices[k].y, p.y, 1e-2) << "edge " << e << " vertex " << k;
                EXPECT_NEAR(item.vertices[k].r, r, 1e-3);
                EXPECT_NEAR(item.vertices[k].g, g, 1e-3);
                EXPECT_NEAR(item.vertices[k].b, b, 1e-3);
            }
        }
    }

    static void bounds(const std::vector<FeedbackItem>& items, float& x0, float& x1, float& y0, float& y1)
    {
        x0 = y0 = 1e9f;
        x1 = y1 = -1e9f;
        for (const FeedbackItem& item : items)
            for (const FeedbackVertex& p : item.vertices) {
                x0 = std::min(x0, p.x);
                x1 = std::max(x1, p.x);
                y0 = std::min(y0, p.y);
                y1 = std::max(y1, p.y);
            }
    }
};

// ---------------------------------------------------------------- boxes

TEST_F(LGLColMeshRender, GroupedBoxDrawsTwelveEdgesInOrderInGreen)
{
    LGLColMesh m;
    m.beginBoxGroup(v(0, 0, 0), 1);
    m.addBox(v(100, 100, 0), v(0, 0, 0), 20, 10, 5);
    m.endBoxGroup();
    m.position = v(10, 20, 0);
    const auto lines = itemsOf(recordFeedback([&] { m.render(); }), GL_LINE_TOKEN);
    ASSERT_EQ(lines.size(), 12u);
    SVector3D c[8];
    for (int i = 0; i < 8; ++i)
        c[i] = v((i & 4) ? 130 : 90, (i & 2) ? 130 : 110, (i & 1) ? 5 : -5);
    expectEdges(lines, 0, c, 0, 1, 0);
}

TEST_F(LGLColMeshRender, RenderUsesTheGivenColourAndLeavesWhite)
{
    LGLColMesh m;
    m.beginBoxGroup(v(0, 0, 0), 1);
    m.addBox(v(100, 100, 0), v(0, 0, 0), 10);
    m.endBoxGroup();
    const auto lines = itemsOf(recordFeedback([&] { m.render(0.25f, 0.5f, 0.75f); }), GL_LINE_TOKEN);
    SVector3D c[8];
    for (int i = 0; i < 8; ++i)
        c[i] = v((i & 4) ? 110 : 90, (i & 2) ? 110 : 90, (i & 1) ? 10 : -10);
    expectEdges(lines, 0, c, 0.25f, 0.5f, 0.75f);
    GLfloat colour[4];
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_FLOAT_EQ(colour[0], 1.0f);
    EXPECT_FLOAT_EQ(colour[1], 1.0f);
    EXPECT_FLOAT_EQ(colour[2], 1.0f);
}

TEST_F(LGLColMeshRender, LineWidthIsOneAfterwardsAndTheModelviewIsRestored)
{
    LGLColMesh m;
    m.beginBoxGroup(v(0, 0, 0), 1);
    m.addBox(v(100, 100, 0), v(0, 0, 0), 10);
    m.endBoxGroup();
    m.addTube(v(0, 0, 0), v(0, 0, -1), 5, 5);
    m.addSphere(v(50, 50, 0), 5);
    glLineWidth(5.0f);
    glTranslatef(3, 4, 0);
    GLfloat before[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, before);
    m.render();
    GLfloat width = 0;
    glGetFloatv(GL_LINE_WIDTH, &width);
    EXPECT_FLOAT_EQ(width, 1.0f);
    GLfloat after[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, after);
    for (int i = 0; i < 16; ++i)
        EXPECT_FLOAT_EQ(after[i], before[i]);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(LGLColMeshRender, EdgesAreDrawnTwoPixelsWide)
{
    LGLColMesh m;
    m.beginBoxGroup(v(0, 0, 0), 1);
    m.addBox(v(200, 200, 0), v(0, 0, 0), 50);  // bottom edge on y = 150
    m.endBoxGroup();
    m.render();
    int green = 0;
    for (int y = 140; y < 160; ++y)
        if (readPixel(200, y)[1] == 255)
            ++green;
    EXPECT_EQ(green, 2);
}

TEST_F(LGLColMeshRender, BoxesOutsideGroupsAreNotDrawnAndGroupsDrawInOrder)
{
    LGLColMesh m;
    m.addBox(v(300, 300, 0), v(0, 0, 0), 10);  // loose
    m.beginBoxGroup(v(0, 0, 0), 1);
    m.addBox(v(100, 100, 0), v(0, 0, 0), 10);
    m.endBoxGroup();
    m.beginBoxGroup(v(0, 0, 0), 1);
    m.addBox(v(200, 100, 0), v(0, 0, 0), 10);
    m.endBoxGroup();
    const auto lines = itemsOf(recordFeedback([&] { m.render(); }), GL_LINE_TOKEN);
    ASSERT_EQ(lines.size(), 24u);
    SVector3D a[8], b[8];
    for (int i = 0; i < 8; ++i) {
        a[i] = v((i & 4) ? 110 : 90, (i & 2) ? 110 : 90, (i & 1) ? 10 : -10);
        b[i] = v((i & 4) ? 210 : 190, (i & 2) ? 110 : 90, (i & 1) ? 10 : -10);
    }
    expectEdges(lines, 0, a, 0, 1, 0);
    expectEdges(lines, 12, b, 0, 1, 0);
}

TEST_F(LGLColMeshRender, BoxCornersTurnWithTheMeshAngles)
{
    LGLColMesh m;
    m.beginBoxGroup(v(0, 0, 0), 1);
    m.addBox(v(0, 0, 100), v(0, 0, 0), 20, 10, 5);
    m.endBoxGroup();
    m.yaw = kHalfPi;  // (x, y, z) -> (z, y, -x)
    m.position = v(200, 300, 0);
    const auto lines = itemsOf(recordFeedback([&] { m.render(); }), GL_LINE_TOKEN);
    SVector3D c[8];
    for (int i = 0; i < 8; ++i) {
        const float x = (i & 4) ? 20 : -20, y = (i & 2) ? 10 : -10, z = (i & 1) ? 105 : 95;
        c[i] = v(z + 200, y + 300, -x);
    }
    expectEdges(lines, 0, c, 0, 1, 0);
}

TEST_F(LGLColMeshRender, ExtraTurnsTheBoxOnScreenOnly)
{
    // extra (0, 0, 1): heading half a turn, so every corner turns by pi about y before the mesh angles.
    LGLColMesh m;
    m.beginBoxGroup(v(0, 0, 0), 1);
    m.addBox(v(-100, 100, 0), v(0, 0, 1), 10);
    m.endBoxGroup();
    m.position = v(200, 0, 0);
    const auto lines = itemsOf(recordFeedback([&] { m.render(); }), GL_LINE_TOKEN);
    SVector3D c[8];
    for (int i = 0; i < 8; ++i) {
        const float x = (i & 4) ? -90 : -110, y = (i & 2) ? 110 : 90, z = (i & 1) ? 10 : -10;
        c[i] = v(-x + 200, y, -z);
    }
    expectEdges(lines, 0, c, 0, 1, 0);
    // The collision test ignores extra: the box stays at local x -110 .. -90.
    m.updateWorldCoordinates();
    EXPECT_TRUE(m.collidesWith(v(100, 100, 0)));
    EXPECT_FALSE(m.collidesWith(v(300, 100, 0)));
}

TEST_F(LGLColMeshRender, RenderLinesIssuesTheTwoPoints)
{
    SVector3D pts[3] = {v(10, 20, 0), v(30, 40, 0), v(50, 60, 0)};
    LGLColMesh m;
    const auto lines = itemsOf(recordFeedback([&] {
                                   glBegin(GL_LINES);
                                   m.renderLines(pts, 2, 0);
                                   glEnd();
                               }),
                               GL_LINE_TOKEN);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NEAR(lines[0].vertices[0].x, 50, 1e-3);
    EXPECT_NEAR(lines[0].vertices[0].y, 60, 1e-3);
    EXPECT_NEAR(lines[0].vertices[1].x, 10, 1e-3);
    EXPECT_NEAR(lines[0].vertices[1].y, 20, 1e-3);
}

// ---------------------------------------------------------------- tubes and spheres

TEST_F(LGLColMeshRender, TubeStandsAtPositionPlusA)
{
    // b = (0, 0, -1) has both angles 0: the tube keeps drawTube's z axis, seen end-on as a circle.
    LGLColMesh m;
    m.addTube(v(10, 20, 0), v(0, 0, -1), 30, 40);
    m.position = v(200, 200, 0);
    const auto items = recordFeedback([&] { m.render(); });
    const auto polys = itemsOf(items, GL_POLYGON_TOKEN);
    ASSERT_FALSE(polys.empty());
    float x0, x1, y0, y1;
    bounds(polys, x0, x1, y0, y1);
    EXPECT_NEAR(x0, 180, 0.5);
    EXPECT_NEAR(x1, 240, 0.5);
    EXPECT_NEAR(y0, 190, 0.5);
    EXPECT_NEAR(y1, 250, 0.5);
    EXPECT_NEAR(polys[0].vertices[0].g, 1.0f, 1e-3);
}

TEST_F(LGLColMeshRender, TubeTurnsWithYawBeforeItsOffset)
{
    // Yaw a quarter turn: a (10, 20, 0) becomes (0, 20, -10) and the tube's axis lies along x.
    LGLColMesh m;
    m.addTube(v(10, 20, 0), v(0, 0, -1), 30, 40);
    m.position = v(200, 200, 0);
    m.yaw = kHalfPi;
    const auto polys = itemsOf(recordFeedback([&] { m.render(); }), GL_POLYGON_TOKEN);
    ASSERT_FALSE(polys.empty());
    float x0, x1, y0, y1;
    bounds(polys, x0, x1, y0, y1);
    EXPECT_NEAR(x0, 180, 0.5);
    EXPECT_NEAR(x1, 220, 0.5);
    EXPECT_NEAR(y0, 190, 0.5);
    EXPECT_NEAR(y1, 250, 0.5);
}

TEST_F(LGLColMeshRender, TubeFollowsTheDirectionOfB)
{
    // b = (1, 0, 0): heading a quarter turn, the tube's axis lies along x.
    LGLColMesh m;
    m.addTube(v(0, 0, 0), v(1, 0, 0), 10, 100);
    m.position = v(300, 200, 0);
    const auto polys = itemsOf(recordFeedback([&] { m.render(); }), GL_POLYGON_TOKEN);
    ASSERT_FALSE(polys.empty());
    float x0, x1, y0, y1;
    bounds(polys, x0, x1, y0, y1);
    EXPECT_NEAR(x0, 250, 0.5);
    EXPECT_NEAR(x1, 350, 0.5);
    EXPECT_NEAR(y0, 190, 0.5);
    EXPECT_NEAR(y1, 210, 0.5);
}

TEST_F(LGLColMeshRender, SpheresIgnorePositionAndAngles)
{
    LGLColMesh m;
    m.addSphere(v(100, 120, 0), 10);
    m.position = v(300, 300, 0);
    m.yaw = 1.0;
    const auto polys = itemsOf(recordFeedback([&] { m.render(0, 0, 1); }), GL_POLYGON_TOKEN);
    ASSERT_FALSE(polys.empty());
    float x0, x1, y0, y1;
    bounds(polys, x0, x1, y0, y1);
    EXPECT_NEAR(x0, 90, 0.5);
    EXPECT_NEAR(x1, 110, 0.5);
    EXPECT_NEAR(y0, 110, 0.5);
    EXPECT_NEAR(y1, 130, 0.5);
}

// ---------------------------------------------------------------- models

// Two tiny triangles at opposite corners of the library box (0, 0, 0)-(4, 4, 4). File points are
// (x, -z, y) of the library point (x, y, z).
std::string twoCornerModel()
{
    return test3ds::file3ds(
        meshObject("near", {{0, 0, 0}, {0.1f, 0, 0}, {0, 0, 0.1f}}, {{0, 1, 2}}) +
        meshObject("far", {{4, -4, 4}, {3.9f, -4, 4}, {4, -4, 3.9f}}, {{0, 1, 2}}));
}

// A closed tetrahedron (file frame), wound counter-clockwise seen from outside.
std::string tetrahedron(float s)
{
    return test3ds::file3ds(
        meshObject("t", {{0, 0, 0}, {s, 0, 0}, {0, s, 0}, {0, 0, s}}, {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}}));
}

std::unique_ptr<Object3DS> loadModel(const std::string& bytes)
{
    auto o = makeObject();
    loadCaptured(*o, writeModel(bytes));
    return o;
}

TEST_F(LGLColMeshRender, WholeModelBoxGridCoversOccupiedCellsOnly)
{
    auto o = loadModel(twoCornerModel());
    ASSERT_EQ(o->getNumSubObjects(), 2);
    LGLColMesh m;
    m.create3DSBoxGrid(o.get(), 2);
    ASSERT_EQ(m.boxes.size(), 2u);
    ASSERT_EQ(m.boxGroups.size(), 1u);
    const LGLColMesh::tBox& a = m.boxes[0];
    const LGLColMesh::tBox& b = m.boxes[1];
    EXPECT_NEAR(a.centre.x, 1, 1e-4);
    EXPECT_NEAR(a.centre.y, 1, 1e-4);
    EXPECT_NEAR(a.centre.z, 1, 1e-4);
    EXPECT_NEAR(b.centre.x, 3, 1e-4);
    EXPECT_NEAR(b.centre.y, 3, 1e-4);
    EXPECT_NEAR(b.centre.z, 3, 1e-4);
    EXPECT_NEAR(a.boundRadius, 1, 1e-6);
    // Corners held once each: the reader's quarter turn leaves z a float step off, so whether the
    // corner near (2, 2, 2) is shared is counted from the boxes themselves.
    std::vector<SVector3D> distinct;
    for (const LGLColMesh::tBox* box : {&a, &b})
        for (const SVector3D& c : box->corners)
            if (std::none_of(distinct.begin(), distinct.end(),
                             [&](const SVector3D& d) { return d.x == c.x && d.y == c.y && d.z == c.z; }))
                distinct.push_back(c);
    EXPECT_EQ(m.localPoints.size(), distinct.size());
    EXPECT_GE(m.localPoints.size(), 15u);
    const LGLColMesh::tBoxGroup& g = m.boxGroups[0];
    EXPECT_EQ(g.firstBox, 0);
    EXPECT_EQ(g.lastBox, 1);
    EXPECT_NEAR(g.min.x, 0, 1e-4);
    EXPECT_NEAR(g.min.y, 0, 1e-4);
    EXPECT_NEAR(g.max.z, 4, 1e-4);
    EXPECT_NEAR(g.centre.x, o->centerX, 1e-5);
    EXPECT_NEAR(g.centre.y, o->centerY, 1e-5);
    EXPECT_NEAR(g.centre.z, o->centerZ, 1e-5);
    EXPECT_DOUBLE_EQ(g.size, o->radius);
    EXPECT_NEAR(m.offset.x, o->centerX, 1e-5);
    EXPECT_NEAR(m.offset.y, o->centerY, 1e-5);
    EXPECT_NEAR(m.offset.z, o->centerZ, 1e-5);
    EXPECT_EQ(m.offset.w, 1.0f);
    EXPECT_DOUBLE_EQ(m.spareValue, o->radius);

    m.updateWorldCoordinates();
    EXPECT_TRUE(m.collidesWith(v(0.5f, 0.5f, 0.5f)));
    EXPECT_TRUE(m.collidesWith(v(2, 2, 1.9999f)));
    EXPECT_TRUE(m.collidesWith(v(3.5f, 3.5f, 3.5f)));
    EXPECT_FALSE(m.collidesWith(v(1, 3, 1)));  // an empty cell inside the group's bounds
    EXPECT_FALSE(m.collidesWith(v(5, 5, 5)));
}

TEST_F(LGLColMeshRender, BoxGridPerAxisCountsSplitEachAxis)
{
    auto o = loadModel(twoCornerModel());
    LGLColMesh m;
    m.create3DSBoxGrid(o.get(), 1, 2, 4);
    // Cells of 4 x 2 x 1: the near cell (x 0..4, y 0..2, z 0..1) and the far one (y 2..4, z 3..4).
    ASSERT_EQ(m.boxes.size(), 2u);
    EXPECT_NEAR(m.boxes[0].centre.x, 2, 1e-4);
    EXPECT_NEAR(m.boxes[0].centre.y, 1, 1e-4);
    EXPECT_NEAR(m.boxes[0].centre.z, 0.5, 1e-4);
    EXPECT_NEAR(m.boxes[1].centre.y, 3, 1e-4);
    EXPECT_NEAR(m.boxes[1].centre.z, 3.5, 1e-4);
    EXPECT_NEAR(m.boxes[0].boundRadius, 2, 1e-6);
}

TEST_F(LGLColMeshRender, BoxGridWithAZeroCountDoesNothing)
{
    auto o = loadModel(twoCornerModel());
    LGLColMesh m;
    m.create3DSBoxGrid(o.get(), 0);
    m.create3DSBoxGrid(o.get(), 2, 0, 2);
    m.create3DSBoxGrid(o.get(), 0, 2, 2, 0);
    EXPECT_TRUE(m.boxes.empty());
    EXPECT_TRUE(m.boxGroups.empty());
    EXPECT_DOUBLE_EQ(m.spareValue, 0.0);
}

TEST_F(LGLColMeshRender, SubObjectBoxGridCoversThatSubObjectOnly)
{
    auto o = loadModel(twoCornerModel());
    LGLColMesh m;
    m.create3DSBoxGrid(o.get(), 1, 1, 1, 1);
    ASSERT_EQ(m.boxes.size(), 1u);
    const LGLColMesh::tBox& b = m.boxes[0];
    EXPECT_NEAR(b.centre.x, 3.95, 1e-4);
    EXPECT_NEAR(b.centre.y, 3.95, 1e-4);
    EXPECT_NEAR(b.centre.z, 4.0, 1e-4);
    EXPECT_NEAR(b.boundRadius, 0.05, 1e-5);
    EXPECT_NEAR(b.extra.x, 0, 0);
    EXPECT_NEAR(b.extra.z, 1, 0);
    ASSERT_EQ(m.boxGroups.size(), 1u);
    EXPECT_NEAR(m.boxGroups[0].centre.x, o->subCenterX[1], 1e-5);
    EXPECT_NEAR(m.boxGroups[0].centre.y, o->subCenterY[1], 1e-5);
    EXPECT_NEAR(m.boxGroups[0].centre.z, o->subCenterZ[1], 1e-5);
    EXPECT_DOUBLE_EQ(m.boxGroups[0].size, o->subRadius[1]);
    EXPECT_DOUBLE_EQ(m.spareValue, o->radius);
    EXPECT_NEAR(m.offset.x, o->centerX, 1e-5);
    EXPECT_NEAR(m.offset.y, o->centerY, 1e-5);
    m.updateWorldCoordinates();
    EXPECT_TRUE(m.collidesWith(b.centre));  // a box of no depth: z as the model measured it
    EXPECT_FALSE(m.collidesWith(v(0.01f, 0.01f, 0.0f)));

    // Two cells on x over sub-object 0: both hold a corner of its triangle.
    LGLColMesh n;
    n.create3DSBoxGrid(o.get(), 0, 2, 1, 1);
    ASSERT_EQ(n.boxes.size(), 2u);
    EXPECT_NEAR(n.boxes[0].centre.x, 0.025, 1e-4);
    EXPECT_NEAR(n.boxes[1].centre.x, 0.075, 1e-4);
}

TEST_F(LGLColMeshRender, SubObjectBoxGridOutsideTheBoundingVolumeTableIsRefused)
{
    auto o = loadModel(twoCornerModel());
    LGLColMesh m;
    for (int sub : {-1, Object3DS::MAX_SUBOBJECTS}) {
        StdoutCapture capture;
        m.create3DSBoxGrid(o.get(), sub, 2, 2, 2);
        EXPECT_EQ(capture.take(), "ERROR: LGLColMesh::create3DSBoxGrid: sub-object " + std::to_string(sub) + " of \"" +
                                      std::string(o->fileName) + "\" has no bounding volume\n");
    }
    EXPECT_TRUE(m.boxes.empty());
    EXPECT_TRUE(m.boxGroups.empty());
}

TEST_F(LGLColMeshRender, SubObjectBoxGridOfAMissingSubObjectHoldsNoBox)
{
    auto o = loadModel(twoCornerModel());
    LGLColMesh m;
    m.create3DSBoxGrid(o.get(), 5, 2, 2, 2);
    EXPECT_TRUE(m.boxes.empty());
    ASSERT_EQ(m.boxGroups.size(), 1u);
    m.updateWorldCoordinates();
    EXPECT_FALSE(m.collidesWith(v(0, 0, 0)));
}

TEST_F(LGLColMeshRender, BoxGridWithoutModelDoesNothing)
{
    LGLColMesh m;
    StdoutCapture capture;
    m.create3DSBoxGrid(nullptr, 2);
    m.create3DSBoxGrid(nullptr, 0, 2, 2, 2);
    EXPECT_EQ(capture.take(), "");
    EXPECT_TRUE(m.boxGroups.empty());
}

TEST_F(LGLColMeshRender, ModelIsItsOwnCollisionShape)
{
    auto o = loadModel(tetrahedron(4));
    LGLColMesh m;
    m.assign3DSCollisionModel(o.get());
    EXPECT_EQ(m.model, o.get());
    // Library point (1, 1, -1) is file (1, 1, 1), inside the solid.
    EXPECT_TRUE(m.collidesWith(v(1, 1, -1)));
    EXPECT_FALSE(m.collidesWith(v(5, 5, -5)));
    // Placed: moved by the position and turned by yaw a quarter turn, (x, y, z) -> (z, y, -x).
    m.position = v(100, 0, 0);
    m.yaw = kHalfPi;
    EXPECT_TRUE(m.collidesWith(v(99, 1, -1)));
    EXPECT_FALSE(m.collidesWith(v(101, 1, -1)));

    // Another mesh's box corner inside the model collides too.
    LGLColMesh probe;
    probe.beginBoxGroup(v(0, 0, 0), 1);
    probe.addBox(v(0, 0, 0), v(0, 0, 0), 0.1);
    probe.endBoxGroup();
    probe.position = v(99, 1, -1);
    probe.updateWorldCoordinates();
    EXPECT_TRUE(m.collidesWith(probe));
    probe.position = v(0, 50, 0);
    probe.updateWorldCoordinates();
    EXPECT_FALSE(m.collidesWith(probe));
}

TEST_F(LGLColMeshRender, ModelIsDrawnPlacedWithItsNormals)
{
    auto o = loadModel(tetrahedron(40));
    LGLColMesh m;
    m.assign3DSCollisionModel(o.get());
    m.position = v(300, 200, 0);
    const auto items = recordFeedback([&] { m.render(); });
    const auto polys = itemsOf(items, GL_POLYGON_TOKEN);
    const auto lines = itemsOf(items, GL_LINE_TOKEN);
    ASSERT_FALSE(polys.empty());
    EXPECT_EQ(lines.size(), 4u);  // one normal per vertex of the one sub-object
    float x0, x1, y0, y1;
    bounds(polys, x0, x1, y0, y1);
    // Library extents x 0..40, y 0..40 (file z), moved by the position.
    EXPECT_NEAR(x0, 300, 0.5);
    EXPECT_NEAR(x1, 340, 0.5);
    EXPECT_NEAR(y0, 200, 0.5);
    EXPECT_NEAR(y1, 240, 0.5);
}

}  // namespace
