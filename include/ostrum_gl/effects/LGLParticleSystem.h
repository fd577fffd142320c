// LGLParticleSystem.h -- one emitter of sparks, explosion debris or smoke quads, with the textures,
// debris models and quad display list that all emitters share.
//
// The game loads the shared resources once (init, loadSmokeTextures, loadExpJunk3DS), configures an
// emitter with set, starts it with triggerEmission, calls handle once per frame and render with the
// camera, and frees the shared resources with dispose. Motion and fading count frames, not time.
//
// Kept on purpose:
//  - Smoke leaves the emitter one particle at a time: while a particle waits out its delay, handle
//    ends the frame there and the particles behind it neither move nor count down. Particle i waits
//    trunc((i + 1) / releaseRate) frames of its own, counted only once the particles ahead of it have
//    left, so with rate 1 the particles leave in frames 1, 3, 6, 10, ... and never two in one frame.
//  - A frame that ends on a waiting particle never clears `active`.
//  - A reborn particle takes fresh velocities from spread and halfSpread, sparks included.
//  - set turns a spread of 0 (a remainder by zero for every velocity) into 1, after a line beginning
//    with "ERROR" on standard output.
//  - The respawn counter wraps from 999 to 0.
//
// Choices recorded here:
//  - "rand()" is the C library's std::rand (seed it with std::srand for repeatable runs); the fade
//    steps and the uniform integers come from LRandom (LRandom::setSeed). A birth draws in this
//    order: the fade step, then velocity x, y, z, then (explosion) spin x and rotation x, y, z
//    followed by the shape, or (smoke) rotation z followed by the shape.
//  - Sparks are drawn like explosion debris (they have no texture of their own): debris model
//    `shape`, which is 0 for them. A shape that names no loaded texture or model is skipped, so an
//    emitter without loaded resources draws nothing but changes the GL state as designed.
//  - The quad display list is a unit square centred on the origin in the xy plane, corners
//    (-0.5, -0.5) to (0.5, 0.5), counter-clockwise seen from +z, texture coordinates 0 to 1.
//    generateQuadDL deletes the list it built before.
//  - When facing the camera a quad is turned by minus the pitch about x and then by minus the heading
//    about y (the angles of LGLCamera::GetViewAngles in degrees): its +z side then points back at the
//    eye and its +y side up the screen, so the quad lies parallel to the view plane, upright and
//    unmirrored. (The backdrop and animated-texture quads turn by 180 degrees minus the pitch because
//    their rectangles grow downwards; the particle quad grows upwards.) Debris never faces the camera: it turns by its
//    rotation about x, then y, then z.
//  - Fade function 1 falls as l / 0.3 below l = 0.3 (factor 1). A fade function outside 0..2 gives
//    full brightness.
//  - loadTexture makes the key colour (190, 190, 190) fully transparent (alpha 0) with the exact
//    match rule of LGL::CreateTransparentTexture.
//  - loadExpJunk3DS loads five debris models, n = 1 to 5 written as one digit: "models/junk01/lod0/
//    junk01.3ds" to "models/junk05/lod0/junk05.3ds".
//  - load3DSModel ends its progress line with a line end.
//  - set with a negative count empties the particle sequence.
//  - renderBuffer draws the buffer texture over the whole viewport in an orthographic projection of
//    its own (both matrices are restored afterwards), in the current colour, and leaves texturing off.
//  - The prerendering viewport is restored to what it was before render.
#pragma once

#include <ostrum_gl/frame/LGLCamera.h>

#include <string>
#include <vector>

class Object3DS;

class LGLParticleSystem {
public:
    // How `life` turns into brightness.
    enum tfade_func {
        FADE_RISE_FALL = 0,   // 0 at birth, up to 0.7 at life 0.7, then down as life^2 / 0.7
        FADE_HOLD = 1,        // full until life 0.3, then falling in proportion
        FADE_SIGMOID = 2      // LGeom::sigmoid(life)
    };

    struct tParticle {
        bool alive = false;
        float life = 0.0f;
        int respawns = 0;
        int delay = 0;
        float fadeStep = 0.0f;
        float color[3] = {0.0f, 0.0f, 0.0f};
        float position[3] = {0.0f, 0.0f, 0.0f};
        float velocity[3] = {0.0f, 0.0f, 0.0f};
        float acceleration[3] = {0.0f, 0.0f, 0.0f};
        float spin[3] = {0.0f, 0.0f, 0.0f};
        float rotation[3] = {0.0f, 0.0f, 0.0f};
        int shape = 0;
    };

    // ---------------------------------------------------------------- class-wide
    // Entry 0 the 512 x 512 buffer texture, then the smoke textures.
    static std::vector<unsigned int> textures;
    // The debris models, owned by the table (dispose deletes them).
    static std::vector<Object3DS*> models;
    // The unit-quad display list, 0 until generateQuadDL.
    static unsigned int quadDL;
    // Side of the buffer texture, set by init.
    static int bufferSize;

    // ---------------------------------------------------------------- per emitter
    int emitX = 0;
    int emitY = 0;
    int emitZ = 0;
    tfade_func fadeFunc = FADE_RISE_FALL;
    double scale = 1.0;
    float baseColor[3] = {1.0f, 1.0f, 1.0f};
    float spinFactor = 0.5f;
    bool smoke = false;
    bool prerender = false;
    bool active = false;
    int maxRespawns = 0;
    std::vector<tParticle> particles;
    int count = 0;
    float accelX = 0.0f;
    float accelY = 0.0f;
    float accelZ = 0.0f;
    int spread = 1;
    float releaseRate = 1.0f;
    int halfSpread = 0;
    float fadeBase = 0.0f;
    float fadeVariance = 0.0f;
    float speedDivisor = 1.0f;
    float growth = 0.0f;

    static void init();
    static void loadTexture(std::string path);
    static void loadSmokeTextures(std::string directory);
    static void load3DSModel(std::string path);
    static void loadExpJunk3DS(std::string directory);
    static void dispose();
    static void generateQuadDL();

    LGLParticleSystem();
    LGLParticleSystem(const LGLParticleSystem& other) = default;
    LGLParticleSystem(LGLParticleSystem&& other) = default;
    LGLParticleSystem& operator=(const LGLParticleSystem& other) = default;
    LGLParticleSystem& operator=(LGLParticleSystem&& other) = default;
    ~LGLParticleSystem();

    void disposeObject();

    void set(double scale, int count, int respawns, int spread, float rate, float fade, float fadeVariance,
             float speedDivisor, float growth, float r, float g, float b, int x, int y, int z, double accelX,
             double accelY, double accelZ, tfade_func fadeFunc);

    void triggerEmission();
    void handle();
    void initPrerendering();

    void render(LGLCamera camera);
    void render();
    void renderBuffer();

    // The brightness of a particle of life `life` under fade function `func`.
    static float brightness(tfade_func func, float life);

protected:
    void triggerSparksEmission();
    void triggerExplosionEmission();
    void triggerSmokeEmission();
    void render(LGLCamera camera, bool faceCamera);

private:
    // Steps 1 to 3 of every birth: alive, life, counter, fade step, colour, position, acceleration.
    void birth(tParticle& p);
    int randomVelocity() const;
};
