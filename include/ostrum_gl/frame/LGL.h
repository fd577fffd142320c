// LGL.h -- the static drawing helpers every renderer shares: colours, rectangles and frames, solids,
// the fade to black, occlusion, bitmap text, modelview vector helpers and texture names.
//
// Every operation issues immediate-mode OpenGL into the context current on the calling thread. The
// only state kept here is class-wide: the fade level and the viewport saved with it, and the two
// circle tables that drawTube and drawArrow fill.
//
// Index of sections:
//   [SECTION] colours
//   [SECTION] rectangles and frames
//   [SECTION] solids
//   [SECTION] fade
//   [SECTION] occlusion
//   [SECTION] text
//   [SECTION] modelview helpers
//   [SECTION] textures
//
// Choices recorded here:
//  - cColor has int as its underlying type, so any int (10, -1, ...) converts to it safely; values
//    outside Red..Olive leave the current colour alone.
//  - fadeLevel starts at 0.0 (clear) when the process starts, and fadeViewport at four zeros, as if
//    no fade had been run; InFadeOut() is therefore true until a fade has completed once.
//  - RenderFadeOut pops the projection first and the modelview last, so the matrix mode is
//    GL_MODELVIEW afterwards.
//  - drawTube pushes the modelview matrix around its own scale and pops it again, so it leaves the
//    caller's matrix as it was; drawArrow needs no scale and does not touch the matrix. For both,
//    segment counts above 49 are drawn with 49 (the circle tables hold 50 points) and negative counts
//    draw nothing; 0 means 32.
//  - The tube's side is one four-vertex triangle strip per segment, wound counter-clockwise seen from
//    outside: (p[k], +1), (p[k], -1), (p[k+1], +1), (p[k+1], -1), where p[k] is the k-th circle point
//    and the second value the z of the unit tube. Each strip carries one normal, the outward
//    direction at the middle angle of its segment, so the side is shaded flat per face. The cap at
//    z = +1 is drawn first, then the cap at z = -1, then the side; both caps face outwards.
//  - drawArrow(shaftRadius, shaftLength, headRadius, headLength, segments) stands on the origin and
//    points along +z: a shaft of radius shaftRadius from z = 0 to z = shaftLength, closed by a disc
//    at z = 0, then a cone with a base disc of radius headRadius at z = shaftLength and its tip at
//    z = shaftLength + headLength. Drawn in that order: the bottom disc, the shaft side as the tube's
//    strips, the head's base disc facing -z, and the cone as one triangle per segment (rim, next rim
//    point, tip) with the slanted outward normal of its middle angle. The segment count follows the
//    tube's rules.
//  - isOccluded compares against the far plane (depth 1.0) when the point projects outside the
//    window, where no depth can be read.
//  - WriteString with a null text draws nothing, like an empty one.
#pragma once

#include <ostrum_core/SVector3D.h>
#include <ostrum_core/tRect.h>

class LGL {
public:
    // ============================================================ [SECTION] colours

    struct tGLRGB {
        float r;
        float g;
        float b;
    };

    struct tGLRGBA {
        float r;
        float g;
        float b;
        float a;
    };

    // Unscoped, so that both LGL::Red and LGL::cColor::Red name the same value.
    enum cColor : int {
        Red = 0,
        Green = 1,
        Blue = 2,
        Yellow = 3,
        Orange = 4,
        Black = 5,
        White = 6,
        Magenta = 7,
        Cyan = 8,
        Olive = 9
    };

    static void SetColor(tGLRGB& color, float r, float g, float b);
    static void SetColor(tGLRGBA& color, float r, float g, float b, float a);
    // Each value / 255.0.
    static void SetColor256(tGLRGB& color, int r, int g, int b);
    static void SetGray256(tGLRGB& color, int grey);
    static void UseColor(const tGLRGB& color);
    static void UseColor(const tGLRGBA& color);
    static void UseColor(cColor color);

    // ============================================================ [SECTION] rectangles and frames

    // Triangle strip (right, top), (left, top), (right, bottom), (left, bottom), integer vertices.
    static void RenderRect(tRect rect);
    // The same on the rectangle shrunk by `inset` on every side; an inset beyond half the size
    // crosses the sides over and is drawn as it comes.
    static void RenderRect(tRect rect, int inset);
    // Line loop (right, top), (left, top), (left, bottom), (right, bottom).
    static void RenderRectFrame(tRect rect);
    static void RenderRectFrame(tRect rect, int inset);
    // Only the four vertices (left, top), (right, top), (right, bottom), (left, bottom) at depth z,
    // for the caller's own glBegin/glEnd.
    static void RenderRectVertices(tRect rect, int z);
    // A blended fill and an opaque frame; blending is off and the frame colour current afterwards.
    static void RenderWindow(tRect rect, tGLRGBA fill, tGLRGBA frame);
    static void RenderWindow(int x, int y, int width, int height, tGLRGBA fill, tGLRGBA frame);

    // ============================================================ [SECTION] solids

    // Six quads of the box (x1, y1, z1)-(x2, y2, z2); the fifth glBegin block is left open on purpose
    // (see LGL.cpp), which also raises GL_INVALID_OPERATION.
    static void RenderRectCube(float x1, float y1, float x2, float y2, float z1, float z2);
    // A new display list in `list` holding a textured box with fixed face normals.
    static void buildCubeList(unsigned int& list, tRect r, int z1, int z2);
    // A line loop of `segments` points on a circle in the xy plane; none for segments <= 0.
    static void drawCircle(float radius, int segments);
    // A closed cylinder around the z axis, centred on the origin, `length` long.
    static void drawTube(double radius, double length, int segments);
    // An arrow from the origin along +z (see the header comment).
    static void drawArrow(double shaftRadius, double shaftLength, double headRadius, double headLength,
                          int segments);

    static constexpr int TUBE_TABLE_SIZE = 50;
    // Unit-circle points of the last drawTube or drawArrow: (tubeCos[k], tubeSin[k]).
    static float tubeCos[TUBE_TABLE_SIZE];
    static float tubeSin[TUBE_TABLE_SIZE];

    // ============================================================ [SECTION] fade

    // A full-screen fade to black counted in frames: 100 RenderFadeOut calls go from clear to black.
    static void InitFadeOut();
    static void RenderFadeOut();
    static bool InFadeOut();

    // 0.0 clear .. 1.0 black.
    static double fadeLevel;
    // The viewport read by InitFadeOut; kept for the game, the fade itself does not use it.
    static int fadeViewport[4];

    // ============================================================ [SECTION] occlusion

    // True when something already in the depth buffer lies in front of p; a point exactly on the
    // stored depth is visible.
    static bool isOccluded(SVector3D p);

    // ============================================================ [SECTION] text

    // GLUT's 9-by-15 bitmap font; every character advances 1.3 times its width, on purpose wider
    // than the font's own spacing.
    static void WriteString(char* text, int x, int y);
    static void WriteString(const char* text, int x, int y);

    // ============================================================ [SECTION] modelview helpers

    // v := upper-left 3 x 3 of the current modelview matrix times v (w untouched).
    static void RotateVectorWithGLMatrix(SVector3D& v);
    // The same with a caller's column-major 4 x 4 matrix.
    static void RotateVectorWithGLMatrix(SVector3D& v, float* matrix);
    // v := the current modelview matrix times (v, 1): rotation plus translation (w untouched).
    static void MoveVectorWithGLMatrix(SVector3D& v);

    // ============================================================ [SECTION] textures

    // glGenTextures(1, id).
    static void GenTexture(unsigned int* id);
};
