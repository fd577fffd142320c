// LGLParticleSystem.cpp -- emitting, stepping, fading and drawing sparks, debris and smoke particles.
#include <ostrum_gl/effects/LGLParticleSystem.h>

#include <ostrum_core/LGeom.h>
#include <ostrum_core/LRandom.h>
#include <ostrum_gl/frame/LGL.h>
#include <ostrum_gl/models/Object3DS.h>

#include <GL/gl.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr double kDegreesPerRadian = 57.29577951308232;

}  // namespace

std::vector<unsigned int> LGLParticleSystem::textures;
std::vector<Object3DS*> LGLParticleSystem::models;
unsigned int LGLParticleSystem::quadDL = 0;
int LGLParticleSystem::bufferSize = 512;

// ---------------------------------------------------------------- class-wide resources

void LGLParticleSystem::init()
{
    bufferSize = 512;
    if (!textures.empty())
        dispose();
    textures.assign(1, 0u);
    std::printf("Creating buffer texture[0]\n");
    LGL::CreateRenderTexture(textures[0], bufferSize, bufferSize, 4, GL_RGBA);
}

void LGLParticleSystem::loadTexture(std::string path)
{
    textures.push_back(0u);
    const size_t index = textures.size() - 1;
    std::printf("Creating texture[%d]\n", static_cast<int>(index));
    unsigned int id = 0;
    int width = 0;
    int height = 0;
    LGL::CreateTransparentTexture(id, path, 0, 190, 190, 190, 0, width, height);
    textures[index] = id;
}

void LGLParticleSystem::loadSmokeTextures(std::string directory)
{
    loadTexture(directory + "smoke_24_256.bmp");
    loadTexture(directory + "smoke_02_01.bmp");
    loadTexture(directory + "smoke_03_01.bmp");
    generateQuadDL();
}

void LGLParticleSystem::load3DSModel(std::string path)
{
    std::printf("Loading particle 3DS object %s\n", path.c_str());
    Object3DS* model = new Object3DS();
    model->load(path);
    models.push_back(model);
}

void LGLParticleSystem::loadExpJunk3DS(std::string directory)
{
    for (int n = 1; n <= 5; ++n) {
        const std::string name = "junk0" + std::to_string(n);
        load3DSModel(directory + "models/" + name + "/lod0/" + name + ".3ds");
    }
}

void LGLParticleSystem::dispose()
{
    for (unsigned int& id : textures) {
        if (id != 0)
            glDeleteTextures(1, &id);
    }
    textures.clear();
    if (quadDL != 0)
        glDeleteLists(quadDL, 1);
    quadDL = 0;
    for (Object3DS* model : models) {
        model->dispose();
        delete model;
    }
    models.clear();
}

void LGLParticleSystem::generateQuadDL()
{
    if (quadDL != 0)
        glDeleteLists(quadDL, 1);
    quadDL = glGenLists(1);
    glNewList(quadDL, GL_COMPILE);
    glBegin(GL_QUADS);
    glNormal3f(0.0f, 0.0f, 1.0f);
    glTexCoord2f(0.0f, 0.0f);
    glVertex3f(-0.5f, -0.5f, 0.0f);
    glTexCoord2f(1.0f, 0.0f);
    glVertex3f(0.5f, -0.5f, 0.0f);
    glTexCoord2f(1.0f, 1.0f);
    glVertex3f(0.5f, 0.5f, 0.0f);
    glTexCoord2f(0.0f, 1.0f);
    glVertex3f(-0.5f, 0.5f, 0.0f);
    glEnd();
    glEndList();
}

// ---------------------------------------------------------------- emitter life cycle

LGLParticleSystem::LGLParticleSystem() = default;

LGLParticleSystem::~LGLParticleSystem() = default;

void LGLParticleSystem::disposeObject()
{
    particles.clear();
}

void LGLParticleSystem::set(double scale_, int count_, int respawns, int spread_, float rate, float fade,
                            float fadeVariance_, float speedDivisor_, float growth_, float r, float g, float b,
                            int x, int y, int z, double accelX_, double accelY_, double accelZ_,
                            tfade_func fadeFunc_)
{
    scale = scale_;
    count = count_;
    maxRespawns = respawns;
    spread = spread_;
    releaseRate = rate;
    fadeBase = fade;
    fadeVariance = fadeVariance_;
    speedDivisor = speedDivisor_;
    growth = growth_;
    baseColor[0] = r;
    baseColor[1] = g;
    baseColor[2] = b;
    emitX = x;
    emitY = y;
    emitZ = z;
    accelX = static_cast<float>(accelX_);
    accelY = static_cast<float>(accelY_);
    accelZ = static_cast<float>(accelZ_);
    fadeFunc = fadeFunc_;
    spinFactor = 0.5f;
    active = true;
    // Velocities are remainders by spread: a spread of 0 would divide by zero, so it becomes 1.
    if (spread == 0) {
        std::printf("ERROR LGLParticleSystem::set: a spread of 0 has no random velocities; a spread of 1 is used\n");
        spread = 1;
    }
    halfSpread = static_cast<int>(spread * 0.5);
    particles.resize(count > 0 ? static_cast<size_t>(count) : 0u);
}

void LGLParticleSystem::initPrerendering()
{
    prerender = true;
}

// ---------------------------------------------------------------- emission

int LGLParticleSystem::randomVelocity() const
{
    return (std::rand() % spread) - halfSpread;
}

void LGLParticleSystem::birth(tParticle& p)
{
    p.alive = true;
    p.life = 1.0f;
    p.respawns = 0;
    p.fadeStep = static_cast<float>(fadeBase + LRandom::getUniformRand(-fadeVariance * 0.5, fadeVariance * 0.5));
    for (int k = 0; k < 3; ++k)
        p.color[k] = baseColor[k];
    p.position[0] = static_cast<float>(emitX);
    p.position[1] = static_cast<float>(emitY);
    p.position[2] = static_cast<float>(emitZ);
    p.acceleration[0] = accelX;
    p.acceleration[1] = accelY;
    p.acceleration[2] = accelZ;
    active = true;
}

void LGLParticleSystem::triggerEmission()
{
    if (smoke)
        triggerSmokeEmission();
    else
        triggerExplosionEmission();
}

void LGLParticleSystem::triggerSparksEmission()
{
    active = true;
    for (tParticle& p : particles) {
        birth(p);
        p.delay = 0;
        for (int k = 0; k < 3; ++k)
            p.velocity[k] = static_cast<float>(((std::rand() % 50) - 25) * 10);
    }
}

void LGLParticleSystem::triggerExplosionEmission()
{
    active = true;
    for (tParticle& p : particles) {
        birth(p);
        p.delay = 0;
        for (int k = 0; k < 3; ++k)
            p.velocity[k] = static_cast<float>(randomVelocity());
        p.spin[0] = static_cast<float>((std::rand() % 10) - 5) * spinFactor;
        p.spin[1] = 0.0f;
        p.spin[2] = 0.0f;
        for (int k = 0; k < 3; ++k)
            p.rotation[k] = static_cast<float>(std::rand() % 360);
        p.shape = LRandom::getUniformRandInt(0, static_cast<int>(models.size()) - 1);
    }
}

void LGLParticleSystem::triggerSmokeEmission()
{
    active = true;
    for (size_t i = 0; i < particles.size(); ++i) {
        tParticle& p = particles[i];
        birth(p);
        p.delay = static_cast<int>((static_cast<float>(i) + 1.0f) / releaseRate);
        for (int k = 0; k < 3; ++k)
            p.velocity[k] = static_cast<float>(randomVelocity());
        p.rotation[2] = static_cast<float>(LRandom::getUniformRandInt(0, 360));
        p.shape = LRandom::getUniformRandInt(1, static_cast<int>(textures.size()) - 1);
    }
}

// ---------------------------------------------------------------- frame step

void LGLParticleSystem::handle()
{
    if (!active)
        return;
    bool anyAlive = false;
    for (tParticle& p : particles) {
        if (p.delay > 0) {
            --p.delay;
            if (p.delay > 0)
                return;
            p.position[0] = static_cast<float>(emitX);
            p.position[1] = static_cast<float>(emitY);
            p.position[2] = static_cast<float>(emitZ);
            return;
        }
        if (p.alive) {
            anyAlive = true;
            for (int k = 0; k < 3; ++k) {
                p.position[k] += p.velocity[k] / speedDivisor;
                p.velocity[k] += p.acceleration[k];
                p.rotation[k] += p.spin[k];
            }
            p.life -= p.fadeStep;
        }
        if (p.life < 0.0f) {
            if (maxRespawns == -1 || p.respawns < maxRespawns) {
                p.life = 1.0f;
                p.delay = 0;
                p.respawns = (p.respawns + 1) % 1000;
                p.position[0] = static_cast<float>(emitX);
                p.position[1] = static_cast<float>(emitY);
                p.position[2] = static_cast<float>(emitZ);
                for (int k = 0; k < 3; ++k)
                    p.color[k] = baseColor[k];
                for (int k = 0; k < 3; ++k)
                    p.velocity[k] = static_cast<float>(randomVelocity());
            } else {
                p.alive = false;
            }
        }
    }
    if (!anyAlive)
        active = false;
}

// ---------------------------------------------------------------- drawing

float LGLParticleSystem::brightness(tfade_func func, float life)
{
    const double l = life;
    switch (func) {
    case FADE_RISE_FALL:
        if (l > 0.7)
            return static_cast<float>(l * (1.0 - (l - 0.7) / 0.3));
        return static_cast<float>(l * (1.0 - (0.7 - l) / 0.7));
    case FADE_HOLD:
        if (l > 0.3)
            return 1.0f;
        return static_cast<float>(l / 0.3);
    case FADE_SIGMOID:
        return static_cast<float>(LGeom::sigmoid(l));
    }
    return 1.0f;
}

void LGLParticleSystem::render(LGLCamera camera)
{
    render(camera, true);
}

void LGLParticleSystem::render()
{
    render(LGLCamera(), false);
}

void LGLParticleSystem::render(LGLCamera camera, bool faceCamera)
{
    if (!active)
        return;
    GLint viewport[4] = {0, 0, 0, 0};
    if (prerender) {
        glGetIntegerv(GL_VIEWPORT, viewport);
        glViewport(0, 0, bufferSize, bufferSize);
    }
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, 0.01f);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_TEXTURE_2D);

    double heading = 0.0;
    double pitch = 0.0;
    if (faceCamera)
        camera.GetViewAngles(heading, pitch);

    for (const tParticle& p : particles) {
        if (!p.alive)
            continue;
        glPushMatrix();
        glTranslatef(p.position[0], p.position[1], p.position[2]);
        glScaled(scale, scale, scale);
        const float k = brightness(fadeFunc, p.life);
        if (smoke) {
            glColor4f(p.color[0], p.color[1], p.color[2], k);
            if (p.life < 1.0f) {
                const float grow = (1.0f - p.life) * growth + 0.1f;
                glScalef(grow, grow, grow);
            }
            if (faceCamera) {
                glRotated(-heading * kDegreesPerRadian, 0.0, 1.0, 0.0);
                glRotated(-pitch * kDegreesPerRadian, 1.0, 0.0, 0.0);
            }
            glRotatef(p.rotation[2], 0.0f, 0.0f, 1.0f);
            if (p.shape >= 0 && static_cast<size_t>(p.shape) < textures.size() && quadDL != 0) {
                glBindTexture(GL_TEXTURE_2D, textures[static_cast<size_t>(p.shape)]);
                glCallList(quadDL);
            }
        } else {
            glColor4f(p.color[0] * k, p.color[1] * k, p.color[2] * k, k);
            glRotatef(p.rotation[0], 1.0f, 0.0f, 0.0f);
            glRotatef(p.rotation[1], 0.0f, 1.0f, 0.0f);
            glRotatef(p.rotation[2], 0.0f, 0.0f, 1.0f);
            if (p.shape >= 0 && static_cast<size_t>(p.shape) < models.size())
                models[static_cast<size_t>(p.shape)]->render();
        }
        glPopMatrix();
    }

    if (prerender) {
        if (!textures.empty()) {
            glBindTexture(GL_TEXTURE_2D, textures[0]);
            glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 0, 0, bufferSize, bufferSize, 0);
        }
        glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
    }
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_BLEND);
    glDisable(GL_ALPHA_TEST);
    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
}

void LGLParticleSystem::renderBuffer()
{
    if (textures.empty())
        return;
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glOrtho(0.0, 1.0, 0.0, 1.0, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, textures[0]);
    glBegin(GL_QUADS);
    glTexCoord2f(0.0f, 0.0f);
    glVertex2f(0.0f, 0.0f);
    glTexCoord2f(1.0f, 0.0f);
    glVertex2f(1.0f, 0.0f);
    glTexCoord2f(1.0f, 1.0f);
    glVertex2f(1.0f, 1.0f);
    glTexCoord2f(0.0f, 1.0f);
    glVertex2f(0.0f, 1.0f);
    glEnd();
    glDisable(GL_TEXTURE_2D);
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
}
