// LGLColourTest.cpp -- colour records, the named colours and UseColor, observed through the colours
// that GL feedback reports.
#include <ostrum_gl/frame/LGL.h>

#include "LGLTestHelpers.h"

#include <cstddef>
#include <type_traits>

using lgl_test::LGLDrawTest;
using ostrum_test::FeedbackItem;
using ostrum_test::recordFeedback;

namespace {

// The colour that a point drawn right after `setColour` carries through feedback.
ostrum_test::FeedbackVertex colourAfter(const std::function<void()>& setColour)
{
    std::vector<FeedbackItem> items = recordFeedback([&] {
        setColour();
        glBegin(GL_POINTS);
        glVertex2i(10, 10);
        glEnd();
    });
    EXPECT_EQ(items.size(), 1u);
    if (items.empty() || items[0].vertices.empty())
        return {};
    return items[0].vertices[0];
}

void expectColour(const ostrum_test::FeedbackVertex& v, float r, float g, float b, float a)
{
    EXPECT_NEAR(v.r, r, 1e-6f);
    EXPECT_NEAR(v.g, g, 1e-6f);
    EXPECT_NEAR(v.b, b, 1e-6f);
    EXPECT_NEAR(v.a, a, 1e-6f);
}

}  // namespace

class LGLColours : public LGLDrawTest {
protected:
    void SetUp() override
    {
        LGLDrawTest::SetUp();
        setPixelProjection();
    }
};

TEST(LGLColourRecords, HoldTheirFloatsInRedGreenBlueAlphaOrder)
{
    static_assert(sizeof(LGL::tGLRGB) == 3 * sizeof(float));
    static_assert(sizeof(LGL::tGLRGBA) == 4 * sizeof(float));
    static_assert(offsetof(LGL::tGLRGB, r) == 0 && offsetof(LGL::tGLRGB, g) == sizeof(float) &&
                  offsetof(LGL::tGLRGB, b) == 2 * sizeof(float));
    static_assert(offsetof(LGL::tGLRGBA, a) == 3 * sizeof(float));
    static_assert(std::is_same_v<decltype(LGL::tGLRGB::r), float>);
    static_assert(std::is_same_v<decltype(LGL::tGLRGBA::a), float>);
    LGL::tGLRGBA c{0.1f, 0.2f, 0.3f, 0.4f};
    const float* f = &c.r;
    EXPECT_EQ(f[0], 0.1f);
    EXPECT_EQ(f[3], 0.4f);
}

TEST(LGLColourRecords, NamedColoursAreNumberedZeroToNineAndReachableBothWays)
{
    static_assert(LGL::Red == LGL::cColor::Red);
    static_assert(LGL::Olive == LGL::cColor::Olive);
    EXPECT_EQ(static_cast<int>(LGL::Red), 0);
    EXPECT_EQ(static_cast<int>(LGL::Green), 1);
    EXPECT_EQ(static_cast<int>(LGL::Blue), 2);
    EXPECT_EQ(static_cast<int>(LGL::Yellow), 3);
    EXPECT_EQ(static_cast<int>(LGL::Orange), 4);
    EXPECT_EQ(static_cast<int>(LGL::Black), 5);
    EXPECT_EQ(static_cast<int>(LGL::White), 6);
    EXPECT_EQ(static_cast<int>(LGL::Magenta), 7);
    EXPECT_EQ(static_cast<int>(LGL::Cyan), 8);
    EXPECT_EQ(static_cast<int>(LGL::cColor::Olive), 9);
}

TEST(LGLColourRecords, SetColorStoresThreeValues)
{
    LGL::tGLRGB c{0, 0, 0};
    LGL::SetColor(c, 0.25f, 0.5f, 0.75f);
    EXPECT_EQ(c.r, 0.25f);
    EXPECT_EQ(c.g, 0.5f);
    EXPECT_EQ(c.b, 0.75f);
}

TEST(LGLColourRecords, SetColorStoresFourValues)
{
    LGL::tGLRGBA c{0, 0, 0, 0};
    LGL::SetColor(c, 0.125f, 0.375f, 0.625f, 0.875f);
    EXPECT_EQ(c.r, 0.125f);
    EXPECT_EQ(c.g, 0.375f);
    EXPECT_EQ(c.b, 0.625f);
    EXPECT_EQ(c.a, 0.875f);
}

TEST(LGLColourRecords, SetColor256Of255And128And0GivesOneHalfAndZero)
{
    LGL::tGLRGB c{0.3f, 0.3f, 0.3f};
    LGL::SetColor256(c, 255, 128, 0);
    EXPECT_NEAR(c.r, 1.0f, 1e-6f);
    EXPECT_NEAR(c.g, 0.50196f, 1e-5f);
    EXPECT_NEAR(c.g, 128.0f / 255.0f, 1e-7f);
    EXPECT_EQ(c.b, 0.0f);
}

TEST(LGLColourRecords, SetGray256StoresTheSameShareInAllThree)
{
    LGL::tGLRGB c{0, 1, 0};
    LGL::SetGray256(c, 51);
    EXPECT_NEAR(c.r, 0.2f, 1e-7f);
    EXPECT_EQ(c.g, c.r);
    EXPECT_EQ(c.b, c.r);
}

TEST_F(LGLColours, UseColorOfThreeValuesSetsThemWithFullAlpha)
{
    LGL::tGLRGB c{0.25f, 0.5f, 0.75f};
    auto v = colourAfter([&] {
        glColor4f(0, 0, 0, 0.3f);
        LGL::UseColor(c);
    });
    expectColour(v, 0.25f, 0.5f, 0.75f, 1.0f);
}

TEST_F(LGLColours, UseColorOfFourValuesSetsAllFour)
{
    LGL::tGLRGBA c{0.125f, 0.375f, 0.625f, 0.5f};
    auto v = colourAfter([&] { LGL::UseColor(c); });
    expectColour(v, 0.125f, 0.375f, 0.625f, 0.5f);
}

TEST_F(LGLColours, NamedColoursGiveTheirTableValues)
{
    const float table[10][3] = {{1.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 1.0f}, {1.0f, 1.0f, 0.0f},
                                {1.0f, 0.5f, 0.0f}, {0.0f, 0.0f, 0.0f}, {1.0f, 1.0f, 1.0f}, {1.0f, 0.0f, 1.0f},
                                {0.0f, 1.0f, 1.0f}, {0.5f, 0.5f, 0.2f}};
    for (int i = 0; i < 10; ++i) {
        SCOPED_TRACE("colour " + std::to_string(i));
        auto v = colourAfter([&] {
            glColor4f(0.3f, 0.3f, 0.3f, 0.3f);
            LGL::UseColor(static_cast<LGL::cColor>(i));
        });
        // glColor3f: the alpha becomes 1.
        expectColour(v, table[i][0], table[i][1], table[i][2], 1.0f);
    }
    auto v = colourAfter([] { LGL::UseColor(LGL::Olive); });
    expectColour(v, 0.5f, 0.5f, 0.2f, 1.0f);
}

TEST_F(LGLColours, UseColorWithTenOrMinusOneChangesNoColour)
{
    for (int value : {10, -1}) {
        SCOPED_TRACE("value " + std::to_string(value));
        auto v = colourAfter([&] {
            glColor4f(0.25f, 0.5f, 0.75f, 0.125f);
            LGL::UseColor(static_cast<LGL::cColor>(value));
        });
        expectColour(v, 0.25f, 0.5f, 0.75f, 0.125f);
    }
}
