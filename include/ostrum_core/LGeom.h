// LGeom.h -- static geometry helpers: rectangles, point distances, triangle normals, the sigmoid curve.
//
// Choices recorded here:
//  - calcNormal gives normalize((b - a) x (c - a)): for a triangle whose corners a, b, c run
//    counter-clockwise as seen from its front, the normal points towards the viewer, which is the
//    winding OpenGL treats as front-facing by default. A degenerate triangle (collinear or repeated
//    corners) gives the zero vector. The normal's w is 1.
//  - sigmoid(x) = 1 / (1 + e^(-4 (2x - 1))): the logistic curve stretched so that the interval the
//    callers use, 0 .. 1, covers nearly all of its rise. It is 0.5 at x = 0.5, about 0.018 at 0 and
//    about 0.982 at 1, and never leaves 0 .. 1 for any x (no NaN far out). It is the same curve the
//    terrain uses to blend its edges, so a brush weight of sigmoid(1 - d/r) is near 1 at the centre
//    and near 0 at the rim, and a particle fading with sigmoid(life) dims from full to almost nothing.
//  - The rectangle helpers do plain int arithmetic; nothing is normalised or clamped.
#pragma once

#include <ostrum_core/SVector3D.h>
#include <ostrum_core/tRect.h>

class LGeom {
public:
    static void setRect(tRect& rect, int left, int top, int right, int bottom);
    // right = left + width, bottom = top + height.
    static void setRectExt(tRect& rect, int left, int top, int width, int height);
    static void moveRect(tRect& rect, int dx, int dy);
    // Euclidean distance of two points (x, y, z; w is not used).
    static double pointDist(const SVector3D& a, const SVector3D& b);
    // Euclidean distance of two points in the plane.
    static double pointDist(double x1, double y1, double x2, double y2);
    // Unit normal of the triangle a, b, c (see the header comment for its orientation).
    static void calcNormal(SVector3D a, SVector3D b, SVector3D c, SVector3D& normal);
    static double sigmoid(double x);
};
