// LGLTestHelpers.h -- the fixture and feedback comparisons shared by the tests of the LGL helpers.
#pragma once

#include "TestSupport.h"

#include <GL/gl.h>

#include <cmath>
#include <functional>
#include <vector>

namespace lgl_test {

using ostrum_test::FeedbackItem;
using ostrum_test::FeedbackVertex;

// GLTest with the switches these tests depend on set to OpenGL's defaults before and after each
// test, since several LGL operations deliberately leave state behind.
class LGLDrawTest : public ostrum_test::GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        resetState();
        while (glGetError() != GL_NO_ERROR) {
        }
    }
    void TearDown() override { resetState(); }

    static void resetState()
    {
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_BLEND);
        glDisable(GL_LIGHTING);
        glDisable(GL_LIGHT0);
        glDisable(GL_NORMALIZE);
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_CULL_FACE);
        glDepthFunc(GL_LESS);
        glBlendFunc(GL_ONE, GL_ZERO);
        glClearDepth(1.0);
        glMatrixMode(GL_MODELVIEW);
        glColor4f(1, 1, 1, 1);
    }

    // Diffuse white light from the direction (x, y, z) (normalised here), no ambient term and a
    // white diffuse material: a lit vertex then gets the colour max(0, N . L) in r, g and b.
    static void lightFrom(float x, float y, float z)
    {
        const float length = std::sqrt(x * x + y * y + z * z);
        const GLfloat position[4] = {x / length, y / length, z / length, 0.0f};
        const GLfloat zero[4] = {0.0f, 0.0f, 0.0f, 1.0f};
        const GLfloat one[4] = {1.0f, 1.0f, 1.0f, 1.0f};
        glMatrixMode(GL_MODELVIEW);
        glPushMatrix();
        glLoadIdentity();
        glLightfv(GL_LIGHT0, GL_POSITION, position);
        glPopMatrix();
        glLightfv(GL_LIGHT0, GL_AMBIENT, zero);
        glLightfv(GL_LIGHT0, GL_DIFFUSE, one);
        glLightfv(GL_LIGHT0, GL_SPECULAR, zero);
        glLightModelfv(GL_LIGHT_MODEL_AMBIENT, zero);
        glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, zero);
        glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, one);
        glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, zero);
        glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, zero);
        glEnable(GL_LIGHTING);
        glEnable(GL_LIGHT0);
    }
};

struct CompareOptions {
    float positionTolerance = 1e-3f;
    bool colour = true;
    bool texture = false;
};

// Item by item: the same tokens, the same vertices (window position, and colour and texture
// coordinates when asked) in the same order.
inline void expectSameFeedback(const std::vector<FeedbackItem>& actual, const std::vector<FeedbackItem>& expected,
                               CompareOptions options = {})
{
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t i = 0; i < actual.size(); ++i) {
        SCOPED_TRACE("feedback item " + std::to_string(i));
        ASSERT_EQ(actual[i].token, expected[i].token);
        ASSERT_EQ(actual[i].vertices.size(), expected[i].vertices.size());
        for (size_t k = 0; k < actual[i].vertices.size(); ++k) {
            SCOPED_TRACE("vertex " + std::to_string(k));
            const FeedbackVertex& a = actual[i].vertices[k];
            const FeedbackVertex& e = expected[i].vertices[k];
            EXPECT_NEAR(a.x, e.x, options.positionTolerance);
            EXPECT_NEAR(a.y, e.y, options.positionTolerance);
            EXPECT_NEAR(a.z, e.z, options.positionTolerance);
            if (options.colour) {
                EXPECT_NEAR(a.r, e.r, 1e-4f);
                EXPECT_NEAR(a.g, e.g, 1e-4f);
                EXPECT_NEAR(a.b, e.b, 1e-4f);
                EXPECT_NEAR(a.a, e.a, 1e-4f);
            }
            if (options.texture) {
                EXPECT_NEAR(a.s, e.s, 1e-5f);
                EXPECT_NEAR(a.t, e.t, 1e-5f);
            }
        }
    }
}

// The window position of one feedback vertex, as (x, y).
inline void expectAt(const FeedbackVertex& v, float x, float y, float tolerance = 1e-3f)
{
    EXPECT_NEAR(v.x, x, tolerance);
    EXPECT_NEAR(v.y, y, tolerance);
}

}  // namespace lgl_test
