// LGLTest.cpp -- occlusion against a real depth buffer, bitmap text, the modelview vector helpers and
// texture names of LGL.
#include <ostrum_gl/frame/LGL.h>

#include "LGLTestHelpers.h"

#include <GL/freeglut.h>

#include <cstring>

using lgl_test::LGLDrawTest;
using ostrum_test::itemsOf;
using ostrum_test::recordFeedback;

// ---------------------------------------------------------------- isOccluded

class LGLOcclusion : public LGLDrawTest {
protected:
    // Pixels in x and y; depth 0.5 - z / 20, so z = 10 is nearest and z = -10 farthest.
    static void setDepthProjection(double zNear = -10, double zFar = 10)
    {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0, 640, 0, 480, zNear, zFar);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
    }
    // A quad at z = 0 over (200, 150)-(440, 330), drawn with depth testing into the depth buffer.
    static void drawNearQuad()
    {
        glEnable(GL_DEPTH_TEST);
        glBegin(GL_QUADS);
        glVertex3f(200, 150, 0);
        glVertex3f(440, 150, 0);
        glVertex3f(440, 330, 0);
        glVertex3f(200, 330, 0);
        glEnd();
        glFinish();
    }
};

TEST_F(LGLOcclusion, PointBehindANearQuadIsOccluded)
{
    setDepthProjection();
    drawNearQuad();
    EXPECT_TRUE(LGL::isOccluded(SVector3D(320, 240, -5)));
    EXPECT_TRUE(LGL::isOccluded(SVector3D(210.5f, 160.5f, -0.5f)));
}

TEST_F(LGLOcclusion, PointInFrontOfTheQuadIsVisible)
{
    setDepthProjection();
    drawNearQuad();
    EXPECT_FALSE(LGL::isOccluded(SVector3D(320, 240, 5)));
    EXPECT_FALSE(LGL::isOccluded(SVector3D(430.5f, 320.5f, 0.5f)));
}

TEST_F(LGLOcclusion, PointBesideTheQuadIsVisibleAtAnyDepthInsideTheView)
{
    setDepthProjection();
    drawNearQuad();
    EXPECT_FALSE(LGL::isOccluded(SVector3D(100, 100, -5)));
    EXPECT_FALSE(LGL::isOccluded(SVector3D(500, 400, -9.5f)));
}

TEST_F(LGLOcclusion, PointExactlyOnTheStoredDepthCountsAsVisible)
{
    // glOrtho(..., -1, 1): z = -1 lands on window depth exactly 1.0, the cleared depth.
    setDepthProjection(-1, 1);
    EXPECT_FALSE(LGL::isOccluded(SVector3D(320, 240, -1)));
    // Cleared to 0.0: z = 1 lands exactly on it, anything farther is hidden.
    glClearDepth(0.0);
    glClear(GL_DEPTH_BUFFER_BIT);
    EXPECT_FALSE(LGL::isOccluded(SVector3D(320, 240, 1)));
    EXPECT_TRUE(LGL::isOccluded(SVector3D(320, 240, 0.5f)));
}

TEST_F(LGLOcclusion, PointBehindTheFarPlaneIsAlwaysOccluded)
{
    // Nothing drawn: the whole depth buffer holds the far plane, 1.0, and window z of 1.5 is above it.
    setDepthProjection(-1, 1);
    EXPECT_TRUE(LGL::isOccluded(SVector3D(320, 240, -2)));
    setDepthProjection();
    EXPECT_TRUE(LGL::isOccluded(SVector3D(50, 50, -30)));
}

TEST_F(LGLOcclusion, PointOutsideTheWindowIsComparedWithTheFarPlane)
{
    setDepthProjection();
    glClearDepth(0.0);
    glClear(GL_DEPTH_BUFFER_BIT);
    EXPECT_FALSE(LGL::isOccluded(SVector3D(-100, 240, 5)));
    EXPECT_FALSE(LGL::isOccluded(SVector3D(320, 900, -5)));
    EXPECT_TRUE(LGL::isOccluded(SVector3D(-100, 240, -30)));
}

// ---------------------------------------------------------------- WriteString

class LGLText : public LGLDrawTest {
protected:
    void SetUp() override
    {
        LGLDrawTest::SetUp();
        setPixelProjection();
    }
};

TEST_F(LGLText, WriteStringAdvancesOnePointThreeTimesTheGlyphWidth)
{
    const char* text = "Hello, W0rld!";
    auto items = recordFeedback([&] { LGL::WriteString(text, 10, 20); });
    auto bitmaps = itemsOf(items, GL_BITMAP_TOKEN);
    ASSERT_EQ(items.size(), std::strlen(text));
    ASSERT_EQ(bitmaps.size(), items.size());
    float expectedX = 10.0f;
    for (size_t i = 0; i < bitmaps.size(); ++i) {
        SCOPED_TRACE("character " + std::to_string(i));
        EXPECT_NEAR(bitmaps[i].vertices[0].x, expectedX, 1e-3f);
        EXPECT_NEAR(bitmaps[i].vertices[0].y, 20.0f, 1e-3f);
        expectedX += 1.3f * glutBitmapWidth(GLUT_BITMAP_9_BY_15, static_cast<unsigned char>(text[i]));
    }
    // Every glyph of the 9-by-15 font is 9 wide: the characters stand 11.7 apart.
    EXPECT_NEAR(bitmaps[1].vertices[0].x - bitmaps[0].vertices[0].x, 11.7f, 1e-3f);
}

TEST_F(LGLText, WriteStringOfEmptyTextDrawsNothing)
{
    char empty[] = "";
    auto items = recordFeedback([&] { LGL::WriteString(empty, 10, 20); });
    EXPECT_TRUE(items.empty());
    items = recordFeedback([] { LGL::WriteString(static_cast<const char*>(nullptr), 10, 20); });
    EXPECT_TRUE(items.empty());
}

TEST_F(LGLText, WriteStringPutsGlyphPixelsInTheCurrentColour)
{
    char text[] = "HH";
    glColor3f(0, 1, 0);
    LGL::WriteString(text, 100, 100);
    glFinish();
    // The glyphs stand on the raster position and rise up to 15 pixels above it.
    std::vector<unsigned char> block(40 * 20 * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(95, 95, 40, 20, GL_RGBA, GL_UNSIGNED_BYTE, block.data());
    int lit = 0;
    int litRight = 0;
    for (int row = 0; row < 20; ++row)
        for (int col = 0; col < 40; ++col) {
            const unsigned char* p = &block[(row * 40 + col) * 4];
            if (p[1] == 255) {
                EXPECT_EQ(p[0], 0);
                ++lit;
                if (95 + col >= 100 + 11)
                    ++litRight;
            }
        }
    EXPECT_GT(lit, 10);
    EXPECT_GT(litRight, 5) << "the second H stands to the right of the first";
}

// ---------------------------------------------------------------- modelview helpers

class LGLMatrixHelpers : public LGLDrawTest {
protected:
    void SetUp() override
    {
        LGLDrawTest::SetUp();
        // M = translate (5, 6, 7) * rotate 90 degrees about z: (x, y, z) -> (5 - y, 6 + x, 7 + z).
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glTranslatef(5, 6, 7);
        glRotatef(90, 0, 0, 1);
    }
};

TEST_F(LGLMatrixHelpers, RotateVectorWithGLMatrixAppliesTheUpperLeftThreeByThreeOnly)
{
    SVector3D v(1, 2, 3, 0.25f);
    LGL::RotateVectorWithGLMatrix(v);
    EXPECT_NEAR(v.x, -2.0f, 1e-6f);
    EXPECT_NEAR(v.y, 1.0f, 1e-6f);
    EXPECT_NEAR(v.z, 3.0f, 1e-6f);
    EXPECT_EQ(v.w, 0.25f);
}

TEST_F(LGLMatrixHelpers, MoveVectorWithGLMatrixAddsTheTranslation)
{
    SVector3D v(1, 2, 3, 0.25f);
    LGL::MoveVectorWithGLMatrix(v);
    EXPECT_NEAR(v.x, 3.0f, 1e-6f);
    EXPECT_NEAR(v.y, 7.0f, 1e-6f);
    EXPECT_NEAR(v.z, 10.0f, 1e-6f);
    EXPECT_EQ(v.w, 0.25f);
}

TEST_F(LGLMatrixHelpers, HelpersFollowAScaledModelview)
{
    glLoadIdentity();
    glScalef(2, 3, 4);
    glTranslatef(1, 1, 1);
    SVector3D rotated(1, 1, 1);
    LGL::RotateVectorWithGLMatrix(rotated);
    EXPECT_NEAR(rotated.x, 2.0f, 1e-6f);
    EXPECT_NEAR(rotated.y, 3.0f, 1e-6f);
    EXPECT_NEAR(rotated.z, 4.0f, 1e-6f);
    SVector3D moved(1, 1, 1);
    LGL::MoveVectorWithGLMatrix(moved);
    EXPECT_NEAR(moved.x, 4.0f, 1e-6f);
    EXPECT_NEAR(moved.y, 6.0f, 1e-6f);
    EXPECT_NEAR(moved.z, 8.0f, 1e-6f);
}

TEST_F(LGLMatrixHelpers, RotateVectorWithACallersMatrixReadsItColumnMajor)
{
    float m[16];
    for (int i = 0; i < 16; ++i)
        m[i] = static_cast<float>(i + 1);
    SVector3D v(1, 2, 3, 0.5f);
    LGL::RotateVectorWithGLMatrix(v, m);
    // x' = 1*1 + 5*2 + 9*3, y' = 2*1 + 6*2 + 10*3, z' = 3*1 + 7*2 + 11*3; the GL matrix plays no part.
    EXPECT_EQ(v.x, 38.0f);
    EXPECT_EQ(v.y, 44.0f);
    EXPECT_EQ(v.z, 50.0f);
    EXPECT_EQ(v.w, 0.5f);
}

// ---------------------------------------------------------------- texture names

class LGLTextureNames : public LGLDrawTest {};

TEST_F(LGLTextureNames, GenTextureMakesANewTextureName)
{
    unsigned int first = 0;
    unsigned int second = 0;
    LGL::GenTexture(&first);
    LGL::GenTexture(&second);
    EXPECT_NE(first, 0u);
    EXPECT_NE(second, 0u);
    EXPECT_NE(first, second);
    glBindTexture(GL_TEXTURE_2D, first);
    EXPECT_TRUE(glIsTexture(first));
    glBindTexture(GL_TEXTURE_2D, 0);
    glDeleteTextures(1, &first);
    glDeleteTextures(1, &second);
}
