// LGLParticleSystemTest.cpp -- particle emitters: set, the three births, the frame step (motion,
// fading, rebirth, smoke release), brightness, the shared textures, debris models and quad list, and
// drawing through GL feedback and pixels on Mesa.
#include <ostrum_gl/effects/LGLParticleSystem.h>

#include <ostrum_core/LGeom.h>
#include <ostrum_core/LRandom.h>
#include <ostrum_gl/frame/LGL.h>
#include <ostrum_gl/models/Object3DS.h>

#include "../models/Object3DSTestSupport.h"
#include "TestSupport.h"

#include <GL/gl.h>
#include <GL/glu.h>

#include <cmath>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

using namespace ostrum_test;

namespace {

using PS = LGLParticleSystem;

// An emitter at (10, 20, 30) with `count` particles; spread 1 gives zero random velocities.
PS makeEmitter(int count, int respawns, float fade, int spread = 1, float rate = 1.0f, float variance = 0.0f)
{
    PS ps;
    ps.set(2.0, count, respawns, spread, rate, fade, variance, 2.0f, 3.0f, 0.25f, 0.5f, 0.75f, 10, 20, 30, 1.0,
           0.5, -2.0, PS::FADE_HOLD);
    return ps;
}

std::string writeBmp(const std::string& dir, const std::string& name, int r, int g, int b)
{
    const std::string path = dir + "/" + name;
    writeFile(path, objtest::solidBmp(r, g, b, 4));
    return path;
}

// A 3DS file with one triangle (library points (0,0,0), (1,0,0), (0,1,0)) of a textured material.
std::string writeDebris(const std::string& path, const std::string& textureName)
{
    using namespace test3ds;
    const std::string mat = material("red", textureName, 255, 0, 0);
    const std::string obj =
        objtest::meshObject("tri", {{0, 0, 0}, {1, 0, 0}, {0, 0, 1}}, {{0, 1, 2}}, faceGroup("red", {0}),
                            {{0, 0}, {1, 0}, {0, 1}});
    writeFile(path, file3ds(mat + obj));
    return path;
}

// The four corners of a drawn quad in the order given, whether feedback returns it whole or as the
// two triangles (0, 1, 3) and (1, 2, 3) that Mesa splits it into; empty for anything else.
std::vector<FeedbackVertex> quadCorners(const std::vector<FeedbackItem>& polys)
{
    if (polys.size() == 1 && polys[0].vertices.size() == 4)
        return polys[0].vertices;
    if (polys.size() == 2 && polys[0].vertices.size() == 3 && polys[1].vertices.size() == 3)
        return {polys[0].vertices[0], polys[0].vertices[1], polys[1].vertices[1], polys[0].vertices[2]};
    return {};
}

class ParticleSystem : public GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        std::srand(7);
        LRandom::setSeed(11);
        glDisable(GL_LIGHTING);
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_CULL_FACE);
    }
    void TearDown() override
    {
        PS::dispose();
        drainGLErrors();  // texture loading leaves the rejected magnification filter's error
    }
    static void drainGLErrors()
    {
        while (glGetError() != GL_NO_ERROR) {
        }
    }
};

void expectVec(const float* v, float x, float y, float z)
{
    EXPECT_FLOAT_EQ(v[0], x);
    EXPECT_FLOAT_EQ(v[1], y);
    EXPECT_FLOAT_EQ(v[2], z);
}

}  // namespace

// ---------------------------------------------------------------- set and copies

TEST_F(ParticleSystem, SetStoresEveryMemberAndSizesTheParticles)
{
    PS ps;
    ps.spinFactor = 3.0f;
    ps.active = false;
    ps.set(1.5, 4, 3, 7, 0.5f, 0.02f, 0.01f, 8.0f, 2.5f, 0.1f, 0.2f, 0.3f, -1, 2, -3, 0.25, -0.5, 0.75,
           PS::FADE_SIGMOID);
    EXPECT_DOUBLE_EQ(ps.scale, 1.5);
    EXPECT_EQ(ps.count, 4);
    EXPECT_EQ(ps.maxRespawns, 3);
    EXPECT_EQ(ps.spread, 7);
    EXPECT_EQ(ps.halfSpread, 3);
    EXPECT_FLOAT_EQ(ps.releaseRate, 0.5f);
    EXPECT_FLOAT_EQ(ps.fadeBase, 0.02f);
    EXPECT_FLOAT_EQ(ps.fadeVariance, 0.01f);
    EXPECT_FLOAT_EQ(ps.speedDivisor, 8.0f);
    EXPECT_FLOAT_EQ(ps.growth, 2.5f);
    expectVec(ps.baseColor, 0.1f, 0.2f, 0.3f);
    EXPECT_EQ(ps.emitX, -1);
    EXPECT_EQ(ps.emitY, 2);
    EXPECT_EQ(ps.emitZ, -3);
    EXPECT_FLOAT_EQ(ps.accelX, 0.25f);
    EXPECT_FLOAT_EQ(ps.accelY, -0.5f);
    EXPECT_FLOAT_EQ(ps.accelZ, 0.75f);
    EXPECT_EQ(ps.fadeFunc, PS::FADE_SIGMOID);
    EXPECT_FLOAT_EQ(ps.spinFactor, 0.5f);
    EXPECT_TRUE(ps.active);
    EXPECT_EQ(ps.particles.size(), 4u);
}

TEST_F(ParticleSystem, HalfSpreadIsTruncatedHalfOfSpread)
{
    PS ps = makeEmitter(1, 0, 0.1f, 9);
    EXPECT_EQ(ps.halfSpread, 4);
    ps = makeEmitter(1, 0, 0.1f, 1);
    EXPECT_EQ(ps.halfSpread, 0);
}

TEST_F(ParticleSystem, SpreadOfZeroIsReportedAndBecomesOne)
{
    PS ps;
    ostrum_test::StdoutCapture out;
    ps.set(1.0, 3, 0, 0, 1.0f, 0.1f, 0.0f, 1.0f, 0.0f, 1, 1, 1, 0, 0, 0, 0, 0, 0, PS::FADE_HOLD);
    EXPECT_EQ(out.take(),
              "ERROR LGLParticleSystem::set: a spread of 0 has no random velocities; a spread of 1 is used\n");
    EXPECT_EQ(ps.spread, 1);
    EXPECT_EQ(ps.halfSpread, 0);
    // Every velocity drawn from it is rand() mod 1 - 0 = 0.
    ps.triggerEmission();
    for (const PS::tParticle& p : ps.particles)
        for (float v : p.velocity)
            EXPECT_EQ(v, 0.0f);
}

TEST_F(ParticleSystem, SetWithNegativeCountEmptiesTheParticles)
{
    PS ps = makeEmitter(3, 0, 0.1f);
    ps.set(1.0, -2, 0, 1, 1.0f, 0.1f, 0.0f, 1.0f, 0.0f, 1, 1, 1, 0, 0, 0, 0, 0, 0, PS::FADE_HOLD);
    EXPECT_TRUE(ps.particles.empty());
}

TEST_F(ParticleSystem, DisposeObjectEmptiesTheParticles)
{
    PS ps = makeEmitter(3, 0, 0.1f);
    ps.disposeObject();
    EXPECT_TRUE(ps.particles.empty());
}

TEST_F(ParticleSystem, CopyAndMoveCarryEveryMemberAndTheParticles)
{
    PS ps = makeEmitter(2, 5, 0.1f, 9);
    ps.smoke = true;
    ps.prerender = true;
    ps.triggerEmission();
    ps.particles[1].position[0] = 42.0f;
    PS copy(ps);
    EXPECT_EQ(copy.particles.size(), 2u);
    EXPECT_FLOAT_EQ(copy.particles[1].position[0], 42.0f);
    EXPECT_EQ(copy.maxRespawns, 5);
    EXPECT_EQ(copy.halfSpread, 4);
    EXPECT_TRUE(copy.smoke);
    EXPECT_TRUE(copy.prerender);
    copy.particles[1].position[0] = 1.0f;
    EXPECT_FLOAT_EQ(ps.particles[1].position[0], 42.0f);  // the sequence is copied, not shared
    PS assigned;
    assigned = copy;
    EXPECT_FLOAT_EQ(assigned.particles[1].position[0], 1.0f);
    EXPECT_DOUBLE_EQ(assigned.scale, 2.0);
    PS moved(std::move(assigned));
    EXPECT_EQ(moved.particles.size(), 2u);
    EXPECT_EQ(moved.emitZ, 30);
    PS moveAssigned;
    moveAssigned = std::move(moved);
    EXPECT_FLOAT_EQ(moveAssigned.baseColor[2], 0.75f);
    EXPECT_EQ(moveAssigned.particles.size(), 2u);
}

// ---------------------------------------------------------------- births

class ParticleSystemProbe : public LGLParticleSystem {
public:
    using LGLParticleSystem::render;
    using LGLParticleSystem::triggerExplosionEmission;
    using LGLParticleSystem::triggerSmokeEmission;
    using LGLParticleSystem::triggerSparksEmission;
};

TEST_F(ParticleSystem, ExplosionBirthDrawsVelocitySpinRotationAndShape)
{
    ParticleSystemProbe ps;
    ps.set(1.0, 3, 0, 9, 1.0f, 0.05f, 0.02f, 1.0f, 0.0f, 0.25f, 0.5f, 0.75f, 4, 5, 6, 1.0, 2.0, 3.0,
           PS::FADE_RISE_FALL);
    for (int i = 0; i < 3; ++i)
        PS::models.push_back(new Object3DS());
    ps.active = false;
    std::srand(3);
    LRandom::setSeed(5);
    ps.triggerEmission();
    EXPECT_TRUE(ps.active);

    std::srand(3);
    LRandom::setSeed(5);
    for (const auto& p : ps.particles) {
        const double fade = 0.05f + LRandom::getUniformRand(-0.01, 0.01);
        EXPECT_FLOAT_EQ(p.fadeStep, static_cast<float>(fade));
        EXPECT_TRUE(p.alive);
        EXPECT_FLOAT_EQ(p.life, 1.0f);
        EXPECT_EQ(p.respawns, 0);
        EXPECT_EQ(p.delay, 0);
        expectVec(p.color, 0.25f, 0.5f, 0.75f);
        expectVec(p.position, 4, 5, 6);
        expectVec(p.acceleration, 1, 2, 3);
        for (int k = 0; k < 3; ++k) {
            const int v = std::rand() % 9 - 4;
            EXPECT_FLOAT_EQ(p.velocity[k], static_cast<float>(v));
        }
        const int spin = std::rand() % 10 - 5;
        expectVec(p.spin, spin * 0.5f, 0, 0);
        for (int k = 0; k < 3; ++k)
            EXPECT_FLOAT_EQ(p.rotation[k], static_cast<float>(std::rand() % 360));
        EXPECT_EQ(p.shape, LRandom::getUniformRandInt(0, 2));
    }
}

TEST_F(ParticleSystem, ExplosionShapesCoverEveryDebrisModel)
{
    for (int i = 0; i < 3; ++i)
        PS::models.push_back(new Object3DS());
    PS ps = makeEmitter(200, 0, 0.1f, 9);
    ps.triggerEmission();
    std::set<int> shapes;
    for (const auto& p : ps.particles) {
        shapes.insert(p.shape);
        EXPECT_GE(p.spin[0], -2.5f);
        EXPECT_LE(p.spin[0], 2.0f);
        EXPECT_GE(p.velocity[0], -4.0f);
        EXPECT_LE(p.velocity[0], 4.0f);
    }
    EXPECT_EQ(shapes, (std::set<int>{0, 1, 2}));
}

TEST_F(ParticleSystem, SparksBirthThrowsTenfoldVelocities)
{
    ParticleSystemProbe ps;
    ps.set(1.0, 4, 0, 9, 1.0f, 0.1f, 0.0f, 1.0f, 0.0f, 1, 1, 1, 0, 0, 0, 0, 0, 0, PS::FADE_HOLD);
    ps.active = false;
    std::srand(9);
    ps.triggerSparksEmission();
    EXPECT_TRUE(ps.active);
    std::srand(9);
    for (const auto& p : ps.particles) {
        EXPECT_FLOAT_EQ(p.fadeStep, 0.1f);
        EXPECT_EQ(p.delay, 0);
        for (int k = 0; k < 3; ++k)
            EXPECT_FLOAT_EQ(p.velocity[k], static_cast<float>((std::rand() % 50 - 25) * 10));
        expectVec(p.spin, 0, 0, 0);
    }
}

TEST_F(ParticleSystem, SmokeBirthDelaysEachParticleByItsReleaseRate)
{
    PS::textures = {0u, 0u, 0u, 0u};  // three smoke slots after the buffer
    PS ps = makeEmitter(4, 0, 0.1f, 9, 0.5f);
    ps.smoke = true;
    std::srand(4);
    LRandom::setSeed(2);
    ps.triggerEmission();
    const int delays[4] = {2, 4, 6, 8};
    std::srand(4);
    LRandom::setSeed(2);
    for (int i = 0; i < 4; ++i) {
        const auto& p = ps.particles[static_cast<size_t>(i)];
        EXPECT_EQ(p.delay, delays[i]);
        LRandom::getUniformRand(0, 0);  // the fade step's draw
        for (int k = 0; k < 3; ++k)
            EXPECT_FLOAT_EQ(p.velocity[k], static_cast<float>(std::rand() % 9 - 4));
        EXPECT_FLOAT_EQ(p.rotation[2], static_cast<float>(LRandom::getUniformRandInt(0, 360)));
        EXPECT_EQ(p.shape, LRandom::getUniformRandInt(1, 3));
    }
    PS fast = makeEmitter(4, 0, 0.1f, 9, 2.0f);
    fast.smoke = true;
    fast.triggerEmission();
    EXPECT_EQ(fast.particles[0].delay, 0);
    EXPECT_EQ(fast.particles[1].delay, 1);
    EXPECT_EQ(fast.particles[2].delay, 1);
    EXPECT_EQ(fast.particles[3].delay, 2);
}

TEST_F(ParticleSystem, SmokeShapesNameSmokeTexturesOnly)
{
    PS::textures = {0u, 0u, 0u, 0u};
    PS ps = makeEmitter(200, 0, 0.1f, 9, 1.0f);
    ps.smoke = true;
    ps.triggerEmission();
    std::set<int> shapes;
    for (const auto& p : ps.particles) {
        shapes.insert(p.shape);
        EXPECT_GE(p.rotation[2], 0.0f);
        EXPECT_LE(p.rotation[2], 360.0f);
    }
    EXPECT_EQ(shapes, (std::set<int>{1, 2, 3}));
}

TEST_F(ParticleSystem, FadeStepVariesWithinHalfTheVarianceEachWay)
{
    PS ps = makeEmitter(300, 0, 0.5f, 1, 1.0f, 0.2f);
    ps.triggerEmission();
    float low = 1, high = 0;
    for (const auto& p : ps.particles) {
        low = std::min(low, p.fadeStep);
        high = std::max(high, p.fadeStep);
    }
    EXPECT_GE(low, 0.4f - 1e-6f);
    EXPECT_LE(high, 0.6f + 1e-6f);
    EXPECT_LT(low, 0.42f);
    EXPECT_GT(high, 0.58f);
}

// ---------------------------------------------------------------- frame step

TEST_F(ParticleSystem, HandleMovesByVelocityOverDivisorThenAccelerates)
{
    PS ps = makeEmitter(1, 0, 0.25f);
    ps.triggerEmission();
    auto& p = ps.particles[0];
    p.velocity[0] = 4;
    p.velocity[1] = -2;
    p.velocity[2] = 6;
    p.spin[0] = 3;
    p.rotation[0] = 10;
    p.rotation[1] = 20;
    p.rotation[2] = 30;
    ps.handle();  // divisor 2, acceleration (1, 0.5, -2)
    expectVec(p.position, 12, 19, 33);
    expectVec(p.velocity, 5, -1.5f, 4);
    expectVec(p.rotation, 13, 20, 30);
    EXPECT_FLOAT_EQ(p.life, 0.75f);
    ps.handle();
    expectVec(p.position, 14.5f, 18.25f, 35);
    expectVec(p.velocity, 6, -1, 2);
    expectVec(p.rotation, 16, 20, 30);
    EXPECT_FLOAT_EQ(p.life, 0.5f);
}

TEST_F(ParticleSystem, HandleDoesNothingWhileInactive)
{
    PS ps = makeEmitter(1, 0, 0.25f);
    ps.triggerEmission();
    ps.active = false;
    ps.particles[0].velocity[0] = 4;
    ps.handle();
    expectVec(ps.particles[0].position, 10, 20, 30);
    EXPECT_FLOAT_EQ(ps.particles[0].life, 1.0f);
}

TEST_F(ParticleSystem, EmitterWithoutBirthsTurnsInactiveOnFirstHandle)
{
    PS ps = makeEmitter(2, 0, 0.25f);
    EXPECT_TRUE(ps.active);
    ps.handle();
    EXPECT_FALSE(ps.active);
}

TEST_F(ParticleSystem, RespawnsMinusOneNeverBecomesInactive)
{
    PS ps = makeEmitter(3, -1, 0.5f, 9);
    ps.triggerEmission();
    for (int frame = 0; frame < 300; ++frame) {
        ps.handle();
        ASSERT_TRUE(ps.active) << frame;
        for (const auto& p : ps.particles)
            ASSERT_TRUE(p.alive);
    }
    // life 1 -> 0.5 -> 0 -> -0.5 (reborn) every third frame: 100 rebirths.
    EXPECT_EQ(ps.particles[0].respawns, 100);
}

TEST_F(ParticleSystem, RespawnsZeroEndsEveryParticleOnceAndTheEmitterTheFrameAfterTheLast)
{
    PS ps = makeEmitter(2, 0, 0.3f);
    ps.triggerEmission();
    ps.particles[0].fadeStep = 0.5f;  // 1, 0.5, 0, -0.5: ends in frame 3
    ps.particles[1].fadeStep = 0.3f;  // 0.7, 0.4, 0.1, -0.2: ends in frame 4
    ps.handle();
    ps.handle();
    EXPECT_TRUE(ps.particles[0].alive);
    ps.handle();
    EXPECT_FALSE(ps.particles[0].alive);
    EXPECT_TRUE(ps.particles[1].alive);
    EXPECT_TRUE(ps.active);
    ps.handle();
    EXPECT_FALSE(ps.particles[1].alive);
    EXPECT_TRUE(ps.active);
    ps.handle();
    EXPECT_FALSE(ps.active);
    EXPECT_EQ(ps.particles[0].respawns, 0);
    EXPECT_EQ(ps.particles[1].respawns, 0);
}

TEST_F(ParticleSystem, RebirthRestartsAtTheEmitterWithBaseColourAndFreshVelocity)
{
    PS ps = makeEmitter(1, 2, 0.6f, 9);
    ps.triggerEmission();
    auto& p = ps.particles[0];
    p.velocity[0] = 100;
    p.color[0] = 0.9f;
    p.delay = 0;
    ps.handle();  // 0.4
    std::srand(21);
    ps.handle();  // -0.2: reborn
    std::srand(21);
    EXPECT_FLOAT_EQ(p.life, 1.0f);
    EXPECT_EQ(p.respawns, 1);
    expectVec(p.position, 10, 20, 30);
    expectVec(p.color, 0.25f, 0.5f, 0.75f);
    for (int k = 0; k < 3; ++k)
        EXPECT_FLOAT_EQ(p.velocity[k], static_cast<float>(std::rand() % 9 - 4));
    ps.handle();
    ps.handle();  // reborn a second time
    EXPECT_EQ(p.respawns, 2);
    EXPECT_TRUE(p.alive);
    ps.handle();
    ps.handle();  // no more rebirths
    EXPECT_FALSE(p.alive);
    EXPECT_EQ(p.respawns, 2);
}

TEST_F(ParticleSystem, RespawnCounterWrapsFrom999To0)
{
    PS ps = makeEmitter(1, -1, 0.5f);
    ps.triggerEmission();
    ps.particles[0].respawns = 999;
    ps.particles[0].life = 0.25f;
    ps.handle();
    EXPECT_EQ(ps.particles[0].respawns, 0);
    EXPECT_FLOAT_EQ(ps.particles[0].life, 1.0f);
    EXPECT_TRUE(ps.particles[0].alive);
}

TEST_F(ParticleSystem, SmokeWithRateOneReleasesOneParticleAtATime)
{
    PS::textures = {0u, 0u};
    PS ps = makeEmitter(4, 0, 0.01f, 1, 1.0f);
    ps.smoke = true;
    ps.triggerEmission();
    for (auto& p : ps.particles) {
        p.velocity[0] = 2;  // divisor 2: one unit per frame
        p.acceleration[0] = 0;
        p.acceleration[1] = 0;
        p.acceleration[2] = 0;
    }
    std::vector<int> releaseFrame(4, 0);
    for (int frame = 1; frame <= 12; ++frame) {
        std::vector<int> before;
        for (const auto& p : ps.particles)
            before.push_back(p.delay);
        ps.handle();
        int released = 0;
        for (size_t i = 0; i < 4; ++i) {
            if (before[i] > 0 && ps.particles[i].delay == 0) {
                ++released;
                releaseFrame[i] = frame;
                EXPECT_FLOAT_EQ(ps.particles[i].position[0], 10.0f);
            }
        }
        EXPECT_LE(released, 1) << frame;
        EXPECT_TRUE(ps.active);
    }
    // Each particle waits its own delay (1, 2, 3, 4) once the ones ahead of it have left.
    EXPECT_EQ(releaseFrame, (std::vector<int>{1, 3, 6, 10}));
    // Released in frame 1, moved in frames 2..12; released in frame 10, moved in 11 and 12.
    EXPECT_FLOAT_EQ(ps.particles[0].position[0], 21.0f);
    EXPECT_FLOAT_EQ(ps.particles[3].position[0], 12.0f);
}

TEST_F(ParticleSystem, WaitingSmokeParticleHoldsBackTheOnesBehindIt)
{
    PS::textures = {0u, 0u};
    PS ps = makeEmitter(3, 0, 0.01f, 1, 0.5f);
    ps.smoke = true;
    ps.triggerEmission();
    ps.particles[2].velocity[0] = 2;
    ps.particles[2].delay = 0;  // ready, but behind waiting ones
    ps.handle();
    EXPECT_EQ(ps.particles[0].delay, 1);
    EXPECT_EQ(ps.particles[1].delay, 4);
    expectVec(ps.particles[2].position, 10, 20, 30);
    EXPECT_FLOAT_EQ(ps.particles[2].life, 1.0f);
}

// ---------------------------------------------------------------- brightness

TEST_F(ParticleSystem, RiseFallBrightnessRisesToPointSevenThenFalls)
{
    EXPECT_NEAR(PS::brightness(PS::FADE_RISE_FALL, 1.0f), 0.0, 1e-6);
    EXPECT_NEAR(PS::brightness(PS::FADE_RISE_FALL, 0.85f), 0.85 * 0.5, 1e-6);
    EXPECT_NEAR(PS::brightness(PS::FADE_RISE_FALL, 0.7f), 0.7, 1e-6);
    EXPECT_NEAR(PS::brightness(PS::FADE_RISE_FALL, 0.35f), 0.35 * 0.35 / 0.7, 1e-6);
    EXPECT_NEAR(PS::brightness(PS::FADE_RISE_FALL, 0.0f), 0.0, 1e-6);
}

TEST_F(ParticleSystem, HoldBrightnessStaysFullAbovePointThreeThenFallsInProportion)
{
    EXPECT_FLOAT_EQ(PS::brightness(PS::FADE_HOLD, 1.0f), 1.0f);
    EXPECT_FLOAT_EQ(PS::brightness(PS::FADE_HOLD, 0.31f), 1.0f);
    EXPECT_NEAR(PS::brightness(PS::FADE_HOLD, 0.15f), 0.5, 1e-6);
    EXPECT_NEAR(PS::brightness(PS::FADE_HOLD, 0.03f), 0.1, 1e-6);
}

TEST_F(ParticleSystem, SigmoidBrightnessFollowsTheLogisticCurve)
{
    EXPECT_NEAR(PS::brightness(PS::FADE_SIGMOID, 0.5f), 0.5, 1e-6);
    EXPECT_NEAR(PS::brightness(PS::FADE_SIGMOID, 1.0f), 1.0 / (1.0 + std::exp(-4.0)), 1e-6);
    EXPECT_NEAR(PS::brightness(PS::FADE_SIGMOID, 0.25f), 1.0 / (1.0 + std::exp(2.0)), 1e-6);
}

// ---------------------------------------------------------------- shared resources

TEST_F(ParticleSystem, InitCreatesTheBufferTexture)
{
    StdoutCapture out;
    PS::init();
    EXPECT_EQ(out.take(), "Creating buffer texture[0]\n");
    EXPECT_EQ(PS::bufferSize, 512);
    ASSERT_EQ(PS::textures.size(), 1u);
    ASSERT_TRUE(glIsTexture(PS::textures[0]));
    glBindTexture(GL_TEXTURE_2D, PS::textures[0]);
    GLint w = 0, h = 0, format = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &w);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &h);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
    EXPECT_EQ(w, 512);
    EXPECT_EQ(h, 512);
    EXPECT_TRUE(format == GL_RGBA || format == 4 || format == GL_RGBA8) << format;
}

TEST_F(ParticleSystem, InitAgainDisposesWhatWasLoaded)
{
    const std::string dir = makeTempDir();
    PS::init();
    PS::loadTexture(writeBmp(dir, "a.bmp", 1, 2, 3));
    PS::generateQuadDL();
    const unsigned int oldSmoke = PS::textures[1];
    const unsigned int oldList = PS::quadDL;
    PS::init();
    EXPECT_FALSE(glIsTexture(oldSmoke));
    EXPECT_FALSE(glIsList(oldList));
    EXPECT_EQ(PS::quadDL, 0u);
    ASSERT_EQ(PS::textures.size(), 1u);
    EXPECT_TRUE(glIsTexture(PS::textures[0]));
}

TEST_F(ParticleSystem, LoadTextureMakesKeyGreyTransparent)
{
    const std::string dir = makeTempDir();
    const std::string path = dir + "/key.bmp";
    writeFile(path, objtest::bmp24(2, 1, [](int x, int) {
                  return x == 0 ? std::vector<int>{190, 190, 190} : std::vector<int>{190, 190, 191};
              }));
    PS::init();
    StdoutCapture out;
    PS::loadTexture(path);
    EXPECT_EQ(out.take(), "Creating texture[1]\n");
    ASSERT_EQ(PS::textures.size(), 2u);
    ASSERT_TRUE(glIsTexture(PS::textures[1]));
    glBindTexture(GL_TEXTURE_2D, PS::textures[1]);
    GLint w = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &w);
    std::vector<unsigned char> pixels(static_cast<size_t>(w) * 4 * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    EXPECT_EQ(pixels[3], 0);
    EXPECT_EQ(pixels[static_cast<size_t>(w - 1) * 4 + 3], 255);
}

TEST_F(ParticleSystem, LoadTextureOfMissingFileEndsTheProcess)
{
    const std::string path = "/nonexistent_ostrum_particles/missing.bmp";
    OSTRUM_EXPECT_EXIT_WITH_LINE(PS::loadTexture(path), 255,
                                 "ERROR LGL::CreateTransparentTexture: could not read the image \"" + path + "\"");
}

TEST_F(ParticleSystem, LoadSmokeTexturesLoadsThreeInOrderAndBuildsTheQuadList)
{
    const std::string dir = makeTempDir() + "/";
    writeBmp(dir, "smoke_24_256.bmp", 10, 0, 0);
    writeBmp(dir, "smoke_02_01.bmp", 0, 20, 0);
    writeBmp(dir, "smoke_03_01.bmp", 0, 0, 30);
    PS::init();
    StdoutCapture out;
    PS::loadSmokeTextures(dir);
    EXPECT_EQ(out.take(), "Creating texture[1]\nCreating texture[2]\nCreating texture[3]\n");
    ASSERT_EQ(PS::textures.size(), 4u);
    const int expected[3][3] = {{10, 0, 0}, {0, 20, 0}, {0, 0, 30}};
    for (int i = 1; i <= 3; ++i) {
        ASSERT_TRUE(glIsTexture(PS::textures[static_cast<size_t>(i)]));
        glBindTexture(GL_TEXTURE_2D, PS::textures[static_cast<size_t>(i)]);
        std::vector<unsigned char> pixels(4 * 4 * 4);
        glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        EXPECT_EQ(pixels[0], expected[i - 1][0]);
        EXPECT_EQ(pixels[1], expected[i - 1][1]);
        EXPECT_EQ(pixels[2], expected[i - 1][2]);
    }
    EXPECT_TRUE(glIsList(PS::quadDL));
}

TEST_F(ParticleSystem, QuadListDrawsAUnitSquareCentredOnTheOrigin)
{
    PS::generateQuadDL();
    const unsigned int first = PS::quadDL;
    PS::generateQuadDL();
    EXPECT_FALSE(glIsList(first) && first != PS::quadDL);
    setPixelProjection();
    glTranslatef(100, 200, 0);
    glScalef(40, 40, 1);
    const auto polys = itemsOf(recordFeedback([] { glCallList(PS::quadDL); }), GL_POLYGON_TOKEN);
    const auto v = quadCorners(polys);
    ASSERT_EQ(v.size(), 4u);
    const float xs[4] = {80, 120, 120, 80}, ys[4] = {180, 180, 220, 220};
    const float ss[4] = {0, 1, 1, 0}, ts[4] = {0, 0, 1, 1};
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(v[static_cast<size_t>(i)].x, xs[i], 1e-3);
        EXPECT_NEAR(v[static_cast<size_t>(i)].y, ys[i], 1e-3);
        EXPECT_NEAR(v[static_cast<size_t>(i)].s, ss[i], 1e-6);
        EXPECT_NEAR(v[static_cast<size_t>(i)].t, ts[i], 1e-6);
    }
}

TEST_F(ParticleSystem, Load3DSModelAppendsADebrisModel)
{
    const std::string dir = makeTempDir();
    writeBmp(dir, "red.bmp", 255, 0, 0);
    const std::string path = writeDebris(dir + "/debris.3ds", "red.bmp");
    StdoutCapture out;
    PS::load3DSModel(path);
    const std::string text = out.take();
    EXPECT_EQ(text.rfind("Loading particle 3DS object " + path + "\n", 0), 0u) << text;
    ASSERT_EQ(PS::models.size(), 1u);
    EXPECT_EQ(PS::models[0]->model.numOfObjects, 1);
}

TEST_F(ParticleSystem, Load3DSModelOfMissingFileEndsTheProcess)
{
    const std::string path = "/nonexistent_ostrum_particles/none.3ds";
    OSTRUM_EXPECT_EXIT_WITH_LINE(PS::load3DSModel(path), 244, "3ds file: \"" + path + "\" not found.");
}

TEST_F(ParticleSystem, LoadExpJunk3DSLoadsFiveNumberedModels)
{
    const std::string dir = makeTempDir() + "/";
    objtest::makeDir(dir + "models");
    std::string expected;
    for (int n = 1; n <= 5; ++n) {
        const std::string name = "junk0" + std::to_string(n);
        objtest::makeDir(dir + "models/" + name);
        objtest::makeDir(dir + "models/" + name + "/lod0");
        writeBmp(dir + "models/" + name + "/lod0", "red.bmp", 255, 0, 0);
        writeDebris(dir + "models/" + name + "/lod0/" + name + ".3ds", "red.bmp");
        expected += "Loading particle 3DS object " + dir + "models/" + name + "/lod0/" + name + ".3ds\n";
    }
    StdoutCapture out;
    PS::loadExpJunk3DS(dir);
    const std::string text = out.take();
    std::string loadingLines;
    size_t at = 0;
    while ((at = text.find("Loading particle 3DS object ", at)) != std::string::npos) {
        const size_t end = text.find('\n', at);
        loadingLines += text.substr(at, end - at + 1);
        at = end;
    }
    EXPECT_EQ(loadingLines, expected);
    EXPECT_EQ(PS::models.size(), 5u);
}

TEST_F(ParticleSystem, DisposeFreesTexturesListAndModels)
{
    const std::string dir = makeTempDir();
    writeBmp(dir, "red.bmp", 255, 0, 0);
    PS::init();
    PS::loadTexture(dir + "/red.bmp");
    PS::generateQuadDL();
    {
        StdoutCapture out;
        PS::load3DSModel(writeDebris(dir + "/d.3ds", "red.bmp"));
    }
    const std::vector<unsigned int> ids = PS::textures;
    const unsigned int list = PS::quadDL;
    PS::dispose();
    for (unsigned int id : ids)
        EXPECT_FALSE(glIsTexture(id));
    EXPECT_FALSE(glIsList(list));
    EXPECT_EQ(PS::quadDL, 0u);
    EXPECT_TRUE(PS::textures.empty());
    EXPECT_TRUE(PS::models.empty());
}

// ---------------------------------------------------------------- drawing

namespace {

// A one-particle smoke emitter at `where`, full brightness (fade function 1 at life 1), no growth.
PS smokeAt(const SVector3D& where, double scale)
{
    PS ps;
    ps.set(scale, 1, 0, 1, 100.0f, 0.1f, 0.0f, 1.0f, 0.0f, 0.2f, 0.4f, 0.6f, static_cast<int>(where.x),
           static_cast<int>(where.y), static_cast<int>(where.z), 0, 0, 0, PS::FADE_HOLD);
    ps.smoke = true;
    ps.triggerEmission();
    ps.particles[0].rotation[2] = 0;
    ps.particles[0].shape = 1;
    return ps;
}

void loadWhiteSmoke()
{
    const std::string dir = makeTempDir();
    writeBmp(dir, "white.bmp", 255, 255, 255);
    StdoutCapture out;
    PS::init();
    PS::loadTexture(dir + "/white.bmp");
    PS::generateQuadDL();
}

}  // namespace

TEST_F(ParticleSystem, SmokeQuadFacesTheCameraFromEveryDirection)
{
    loadWhiteSmoke();
    struct Dir {
        float x, y, z;
    };
    const Dir dirs[] = {{0, 0, -1}, {1, 0, 0}, {0, 0, 1}, {-1, 0, 0}, {1, -1, -1}, {-1, 1, 1}, {0.3f, 0.8f, -0.5f}};
    for (const Dir& d : dirs) {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        gluPerspective(60.0, 640.0 / 480.0, 1.0, 1000.0);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        const float len = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
        const SVector3D eye(5, 6, 7);
        const SVector3D target(eye.x + 40 * d.x / len, eye.y + 40 * d.y / len, eye.z + 40 * d.z / len);
        LGLCamera cam;
        cam.SetPosAndView(eye.x, eye.y, eye.z, target.x, target.y, target.z, 0, 1, 0);
        cam.Look();
        PS ps = smokeAt(SVector3D(std::trunc(target.x), std::trunc(target.y), std::trunc(target.z)), 4.0);
        const auto polys = itemsOf(recordFeedback([&] { ps.render(cam); }), GL_POLYGON_TOKEN);
        const auto v = quadCorners(polys);
        ASSERT_EQ(v.size(), 4u);
        for (int i = 1; i < 4; ++i)
            EXPECT_NEAR(v[static_cast<size_t>(i)].z, v[0].z, 2e-5) << d.x << " " << d.y << " " << d.z;
        // Upright and unmirrored: the first corner (texture 0, 0) is bottom left, the edges axis-aligned.
        EXPECT_NEAR(v[0].y, v[1].y, 0.05);
        EXPECT_NEAR(v[1].x, v[2].x, 0.05);
        EXPECT_NEAR(v[2].y, v[3].y, 0.05);
        EXPECT_LT(v[0].x, v[1].x);
        EXPECT_LT(v[1].y, v[2].y);
        EXPECT_NEAR(v[1].x - v[0].x, v[2].y - v[1].y, 0.05);
        EXPECT_NEAR(v[0].r, 0.2f, 1e-3);
        EXPECT_NEAR(v[0].g, 0.4f, 1e-3);
        EXPECT_NEAR(v[0].b, 0.6f, 1e-3);
        EXPECT_NEAR(v[0].a, 1.0f, 1e-3);
    }
}

TEST_F(ParticleSystem, RenderWithoutCameraLeavesTheQuadInItsPlane)
{
    loadWhiteSmoke();
    setPixelProjection();
    PS ps = smokeAt(SVector3D(100, 100, 0), 20.0);
    ps.particles[0].rotation[2] = 90;
    const auto polys = itemsOf(recordFeedback([&] { ps.render(); }), GL_POLYGON_TOKEN);
    const auto v = quadCorners(polys);
    ASSERT_EQ(v.size(), 4u);
    // A quarter turn about z: corner (-0.5, -0.5) goes to (0.5, -0.5), times 20 about (100, 100).
    EXPECT_NEAR(v[0].x, 110, 1e-3);
    EXPECT_NEAR(v[0].y, 90, 1e-3);
    EXPECT_NEAR(v[2].x, 90, 1e-3);
    EXPECT_NEAR(v[2].y, 110, 1e-3);
}

TEST_F(ParticleSystem, SmokeGrowsAndFadesAsItAges)
{
    loadWhiteSmoke();
    setPixelProjection();
    PS ps = smokeAt(SVector3D(100, 100, 0), 10.0);
    ps.growth = 2.0f;
    ps.fadeFunc = PS::FADE_HOLD;
    ps.particles[0].delay = 0;
    ps.particles[0].fadeStep = 0.375f;
    ps.handle();
    ps.handle();  // life 0.25: brightness 0.25 / 0.3, scale (1 - 0.25) x 2 + 0.1 = 1.6
    const auto polys = itemsOf(recordFeedback([&] { ps.render(); }), GL_POLYGON_TOKEN);
    const auto v = quadCorners(polys);
    ASSERT_EQ(v.size(), 4u);
    EXPECT_NEAR(v[1].x - v[0].x, 16.0, 1e-3);
    EXPECT_NEAR(v[0].x, 92.0, 1e-3);
    EXPECT_NEAR(v[0].a, 0.25 / 0.3, 1e-3);
    EXPECT_NEAR(v[0].r, 0.2, 1e-3);
}

TEST_F(ParticleSystem, RenderSetsBlendingAndLeavesItOff)
{
    loadWhiteSmoke();
    setPixelProjection();
    PS ps = smokeAt(SVector3D(100, 100, 0), 20.0);
    drainGLErrors();
    ps.render();
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_FALSE(glIsEnabled(GL_ALPHA_TEST));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    GLint func = 0, src = 0, dst = 0;
    GLfloat ref = 0, colour[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_ALPHA_TEST_FUNC, &func);
    glGetFloatv(GL_ALPHA_TEST_REF, &ref);
    glGetIntegerv(GL_BLEND_SRC, &src);
    glGetIntegerv(GL_BLEND_DST, &dst);
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_EQ(func, GL_GREATER);
    EXPECT_NEAR(ref, 0.01f, 1e-6);
    EXPECT_EQ(src, GL_SRC_ALPHA);
    EXPECT_EQ(dst, GL_ONE_MINUS_SRC_ALPHA);
    for (int i = 0; i < 4; ++i)
        EXPECT_FLOAT_EQ(colour[i], 1.0f);
}

TEST_F(ParticleSystem, SmokeIsBlendedOverTheSceneWithItsAlpha)
{
    loadWhiteSmoke();
    setPixelProjection();
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    PS ps = smokeAt(SVector3D(100, 100, 0), 40.0);
    ps.baseColor[0] = 1.0f;
    ps.particles[0].color[0] = 1.0f;
    ps.particles[0].color[1] = 1.0f;
    ps.particles[0].color[2] = 0.0f;
    ps.fadeFunc = PS::FADE_HOLD;
    ps.particles[0].life = 0.15f;  // brightness 0.5
    ps.render();
    const auto inside = readPixel(100, 100);
    EXPECT_NEAR(inside[0], 128, 2);
    EXPECT_NEAR(inside[1], 128, 2);
    EXPECT_NEAR(inside[2], 0, 1);
    const auto outside = readPixel(150, 100);
    EXPECT_EQ(outside[0], 0);
}

TEST_F(ParticleSystem, InactiveEmitterDrawsNothingAndTouchesNoState)
{
    loadWhiteSmoke();
    setPixelProjection();
    PS ps = smokeAt(SVector3D(100, 100, 0), 20.0);
    ps.active = false;
    glEnable(GL_BLEND);
    const auto items = recordFeedback([&] { ps.render(); });
    EXPECT_TRUE(itemsOf(items, GL_POLYGON_TOKEN).empty());
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    glDisable(GL_BLEND);
}

TEST_F(ParticleSystem, DeadParticlesAreNotDrawn)
{
    loadWhiteSmoke();
    setPixelProjection();
    PS ps = smokeAt(SVector3D(100, 100, 0), 20.0);
    ps.particles[0].alive = false;
    EXPECT_TRUE(itemsOf(recordFeedback([&] { ps.render(); }), GL_POLYGON_TOKEN).empty());
}

TEST_F(ParticleSystem, ExplosionDrawsDebrisTurnedByItsRotation)
{
    const std::string dir = makeTempDir();
    writeBmp(dir, "red.bmp", 255, 0, 0);
    {
        StdoutCapture out;
        PS::load3DSModel(writeDebris(dir + "/d.3ds", "red.bmp"));
    }
    setPixelProjection();
    PS ps;
    ps.set(100.0, 1, 0, 1, 1.0f, 0.1f, 0.0f, 1.0f, 0.0f, 1, 1, 1, 200, 200, 0, 0, 0, 0, PS::FADE_HOLD);
    ps.triggerEmission();
    auto& p = ps.particles[0];
    ASSERT_EQ(p.shape, 0);
    // The triangle (0, 0), (1, 0), (0, 1) scaled by 100 about (200, 200); one probe inside each
    // quarter around the emitter tells where it went.
    auto redAt = [](int x, int y) { return readPixel(x, y)[0] > 200; };
    auto draw = [&](float rx, float ry, float rz) {
        glClear(GL_COLOR_BUFFER_BIT);
        p.rotation[0] = rx;
        p.rotation[1] = ry;
        p.rotation[2] = rz;
        ps.render();
    };
    draw(0, 0, 0);
    EXPECT_TRUE(redAt(220, 220));
    EXPECT_FALSE(redAt(180, 220));
    EXPECT_FALSE(redAt(180, 180));
    draw(0, 0, 90);  // (1, 0) -> (0, 1), (0, 1) -> (-1, 0)
    EXPECT_FALSE(redAt(220, 220));
    EXPECT_TRUE(redAt(180, 220));
    EXPECT_FALSE(redAt(180, 180));
    draw(180, 180, 0);  // about y then x: (1, 0) -> (-1, 0), (0, 1) -> (0, -1)
    EXPECT_FALSE(redAt(220, 220));
    EXPECT_FALSE(redAt(180, 220));
    EXPECT_TRUE(redAt(180, 180));
}

TEST_F(ParticleSystem, ExplosionDebrisShowsItsTextureInPixels)
{
    const std::string dir = makeTempDir();
    writeBmp(dir, "red.bmp", 255, 0, 0);
    {
        StdoutCapture out;
        PS::load3DSModel(writeDebris(dir + "/d.3ds", "red.bmp"));
    }
    setPixelProjection();
    PS ps;
    ps.set(100.0, 1, 0, 1, 1.0f, 0.1f, 0.0f, 1.0f, 0.0f, 1, 1, 1, 200, 200, 0, 0, 0, 0, PS::FADE_HOLD);
    ps.triggerEmission();
    ps.particles[0].rotation[0] = ps.particles[0].rotation[1] = ps.particles[0].rotation[2] = 0;
    ps.render();
    const auto inside = readPixel(220, 220);
    EXPECT_GT(inside[0], 200);
    EXPECT_LT(inside[1], 40);
    const auto outside = readPixel(290, 290);
    EXPECT_EQ(outside[0], 0);
}

TEST_F(ParticleSystem, PrerenderingCopiesTheFrameIntoTheBufferAndRestoresTheViewport)
{
    loadWhiteSmoke();
    PS ps = smokeAt(SVector3D(0, 0, 0), 1.0);
    ps.initPrerendering();
    EXPECT_TRUE(ps.prerender);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-1, 1, -1, 1, -1, 1);  // the unit quad covers the middle half of the buffer
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    const auto polys = itemsOf(recordFeedback([&] { ps.render(); }), GL_POLYGON_TOKEN);
    const auto v = quadCorners(polys);
    ASSERT_EQ(v.size(), 4u);
    EXPECT_NEAR(v[0].x, 128, 1e-3);  // drawn in the 512 x 512 viewport
    EXPECT_NEAR(v[2].y, 384, 1e-3);
    GLint during[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_VIEWPORT, during);
    EXPECT_EQ(during[2], GLTestWindow::kWidth);
    EXPECT_EQ(during[3], GLTestWindow::kHeight);

    glClear(GL_COLOR_BUFFER_BIT);
    ps.render();
    std::vector<unsigned char> pixels(512 * 512 * 4);
    glBindTexture(GL_TEXTURE_2D, PS::textures[0]);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    auto at = [&](int x, int y) { return &pixels[(static_cast<size_t>(y) * 512 + static_cast<size_t>(x)) * 4]; };
    EXPECT_NEAR(at(256, 256)[0], 51, 2);   // colour 0.2, 0.4, 0.6 at full alpha
    EXPECT_NEAR(at(256, 256)[2], 153, 2);
    EXPECT_EQ(at(20, 20)[2], 0);
}

TEST_F(ParticleSystem, RenderBufferCoversTheWholeViewport)
{
    loadWhiteSmoke();
    const auto polys = itemsOf(recordFeedback([] { PS().renderBuffer(); }), GL_POLYGON_TOKEN);
    const auto v = quadCorners(polys);
    ASSERT_EQ(v.size(), 4u);
    EXPECT_NEAR(v[0].x, 0, 1e-3);
    EXPECT_NEAR(v[0].y, 0, 1e-3);
    EXPECT_NEAR(v[2].x, GLTestWindow::kWidth, 1e-3);
    EXPECT_NEAR(v[2].y, GLTestWindow::kHeight, 1e-3);
    EXPECT_NEAR(v[2].s, 1, 1e-6);
    EXPECT_NEAR(v[2].t, 1, 1e-6);
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    GLdouble m[16];
    glGetDoublev(GL_PROJECTION_MATRIX, m);
    EXPECT_DOUBLE_EQ(m[0], 1.0);  // the caller's identity projection is back
}

TEST_F(ParticleSystem, RenderBufferShowsWhatWasPrerendered)
{
    loadWhiteSmoke();
    PS ps = smokeAt(SVector3D(0, 0, 0), 1.0);
    ps.initPrerendering();
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-1, 1, -1, 1, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    ps.render();
    glClear(GL_COLOR_BUFFER_BIT);
    glColor4f(1, 1, 1, 1);
    ps.renderBuffer();
    // Buffer middle (texture 0.5, 0.5) at the window middle; buffer corner area is black.
    const auto middle = readPixel(320, 240);
    EXPECT_NEAR(middle[0], 51, 3);
    EXPECT_NEAR(middle[2], 153, 3);
    const auto corner = readPixel(10, 10);
    EXPECT_EQ(corner[2], 0);
}

TEST_F(ParticleSystem, DebrisIgnoresTheCameraWhenDrawnFacingIt)
{
    const std::string dir = makeTempDir();
    writeBmp(dir, "red.bmp", 255, 0, 0);
    {
        StdoutCapture out;
        PS::load3DSModel(writeDebris(dir + "/d.3ds", "red.bmp"));
    }
    setPixelProjection();
    PS ps;
    ps.set(100.0, 1, 0, 1, 1.0f, 0.1f, 0.0f, 1.0f, 0.0f, 1, 1, 1, 200, 200, 0, 0, 0, 0, PS::FADE_HOLD);
    ps.triggerEmission();
    ps.particles[0].rotation[0] = ps.particles[0].rotation[1] = ps.particles[0].rotation[2] = 0;
    LGLCamera cam;
    cam.SetPosAndView(0, 0, 0, 1, -1, 0, 0, 1, 0);  // heading 90 degrees, pitch 45 degrees
    ps.render(cam);
    EXPECT_GT(readPixel(220, 220)[0], 200);  // the triangle where render() puts it
    EXPECT_EQ(readPixel(180, 220)[0], 0);
    EXPECT_EQ(readPixel(220, 180)[0], 0);
}
