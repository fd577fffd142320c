// LGLTextureBlending.h -- cross-fades two textures on one surface with the multitexture combiner.
//
// Texture unit 0 carries the first texture, unit 1 the second, and the alpha of the current colour
// sets the mix: colour = texture0 * weight + texture1 * (1 - weight). Per blended surface the caller
// runs Activate, draws giving each vertex its coordinates for both units with glMultiTexCoord2fARB,
// then Disactivate. Init runs once after the OpenGL context exists; Activate and Disactivate call
// through the fetched pointers without a check, so they must not run after a failed Init.
//
// Choices recorded here:
//  - Init(lookup) fetches the two entry points through a caller's lookup instead of the platform's;
//    Init() uses LGLPlatform::getProcAddress. A failed Init leaves the pointer it could not fetch null.
//  - Disactivate leaves unit 1's combiner settings and the current colour (with its alpha = weight)
//    as Activate set them; a caller that draws single-textured afterwards enables GL_TEXTURE_2D again
//    and sets its own colour.
#pragma once

#include <GL/gl.h>
#include <ostrum_core/WinTypes.h>

class LGLTextureBlending {
public:
    typedef void(APIENTRY* tActiveTextureProc)(unsigned int texture);
    typedef void(APIENTRY* tMultiTexCoord2fProc)(unsigned int texture, float s, float t);
    typedef void* (*tProcAddressLookup)(const char* name);

    // Null until Init has run.
    static tActiveTextureProc glActiveTextureARB;
    static tMultiTexCoord2fProc glMultiTexCoord2fARB;

    // Fetches both entry points; when either is missing shows "Multitexturing not supported!"
    // (caption "Error") and asks the game's main loop to end.
    static void Init();
    static void Init(tProcAddressLookup lookup);
    // Unit 0 textured with texture0, unit 1 with texture1 interpolating by the colour's alpha,
    // current colour (1, 1, 1, weight). Unit 1 stays the active unit.
    static void Activate(unsigned int texture0, unsigned int texture1, float weight);
    // Texturing off on unit 1, then on unit 0, which is left active.
    static void Disactivate();
    // The combiner of the active unit: the previous unit's result interpolated with this unit's
    // texture by the primary colour's alpha. Activate and the terrain's blended tiles share it.
    static void SetInterpolateCombiner();
};
