// LGLBackdrop.h -- one textured rectangle in the scene (a painted backdrop, a sign, a distant
// silhouette), placed in the world or relative to the camera, rotated about its centre or turned to
// face the view, optionally semi-transparent, with an outline drawing for editors.
//
// The rectangle lies in its own plane from (0, 0) to (width, height) at z = 0 and is placed by `pos`.
// A texture whose file name ends in "_t" before its extension (tree_t.bmp) has every pixel whose red,
// green and blue are all below 5 made transparent; the alpha test drops those pixels.
//
// Kept on purpose:
//  - The picture's upper edge lies on the rectangle's top (y = 0, the corner at `pos`) and its lower
//    edge at y = height. In the camera-facing render the half turn about x stands it upright; an
//    unrotated placed backdrop shows its picture upside down in a y-up world, and rotX = 180 stands it
//    upright (unmirrored: the half turn about x keeps left and right).
//  - Texture coordinates run from 0.005 to 0.995 so that the border texels do not bleed in.
//  - The rotation centre is (halfWidth, halfHeight) with integer halving: an odd width turns about a
//    point half a unit left of the true centre.
//  - The camera-facing render ignores relativeToCamera and the three rotations; renderFrame always
//    uses the placed rotations, never the camera-facing turn.
//  - With alpha of 1 or more the rectangle is drawn without blending and without setting a colour:
//    the current colour tints it (set white to show the picture as it is). Below 1 the colour is set
//    to (1, 1, 1, alpha) and left current afterwards.
//  - render leaves texturing on, culling on, the alpha test and blending off and the backdrop's
//    texture bound; renderFrame leaves the colour white, the line width 1 and texturing on.
//
// Choices recorded here:
//  - Construction sets `texture` to 0 and gives the other members plain values: zero
//    (pos (0, 0, 0), no rotation, both flags false, sizes 0) with alpha 1, so that a fresh backdrop
//    copies and compares without reading indeterminate values. render still draws nothing until a
//    texture is loaded.
//  - The "_t" test looks at the two characters before the last "." of the whole name; a name without
//    a "." or with fewer than two characters before it is an ordinary texture.
//  - loadTexture does not delete a texture loaded before; call dispose first. A "_t" name of a type
//    that the transparent-texture maker does not read (JPEG, DDS) leaves `texture` unchanged after
//    its message.
//  - dispose sets `texture` back to 0, so nothing is drawn afterwards and a second dispose deletes
//    nothing. Copies share the texture name: dispose it through one copy only.
//  - renderFrame pushes the matrix around its placement and pops it again.
#pragma once

#include <ostrum_core/SVector3D.h>
#include <ostrum_core/tRect.h>

#include <string>

class LGLCamera;

class LGLBackdrop {
public:
    SVector3D pos;          // lower-left corner, or offset from the camera position
    float rotX;             // degrees, about the rectangle's centre
    float rotY;
    float rotZ;
    bool relativeToCamera;  // pos is added to the camera position
    bool faceCamera;        // turn towards the view instead of the three rotations
    float alpha;            // opacity; below 1 the rectangle is blended
    int halfWidth;          // width / 2
    int halfHeight;         // height / 2
    tRect rect;             // (0, 0) to (width, height) in the rectangle's plane
    unsigned int texture;   // 0: nothing loaded, nothing drawn

    LGLBackdrop();
    LGLBackdrop(const LGLBackdrop& other) = default;
    LGLBackdrop(LGLBackdrop&& other) = default;
    LGLBackdrop& operator=(const LGLBackdrop& other) = default;
    LGLBackdrop& operator=(LGLBackdrop&& other) = default;

    // True when the two characters before the last "." of fileName are "_t".
    static bool isTransparentName(const std::string& fileName);

    void loadTexture(std::string fileName);
    void set(SVector3D pos, float rotX, float rotY, float rotZ, int width, int height, bool relativeToCamera,
             bool faceCamera, float alpha);

    // The textured rectangle.
    void render(LGLCamera& camera);
    // White outline of the rectangle, two pixels wide.
    void renderFrame(LGLCamera& camera);

    // Deletes the texture.
    void dispose();

private:
    // Translation and rotations of a placed (not camera-facing) backdrop.
    void applyPlacement(const LGLCamera& camera) const;
};
