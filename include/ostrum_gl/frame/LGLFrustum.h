// LGLFrustum.h -- the six clipping planes of the current view and the visibility tests built on them.
//
// A plane is (A, B, C, D); a point (x, y, z) lies on its inner side when A*x + B*y + C*z + D > 0.
// calculateFrustum builds the planes from the current GL projection and modelview matrices and
// normalises each one, so that the plane value is a signed distance. The planes are stored in the
// order right, left, bottom, top, far, near (indices 0 to 5, see the Plane constants).
//
// The tests stop at the first plane that rejects and allocate nothing: callers test the whole terrain
// tile by tile every frame.
//
// Choices recorded here:
//  - A new frustum starts with all planes zero (every coefficient 0). With such planes every point and
//    every cube is outside, and a sphere of positive radius is inside. Call calculateFrustum (or set
//    the planes) before testing.
#pragma once

class LGLFrustum {
public:
    // Indices into planes.
    enum Plane { Right = 0, Left = 1, Bottom = 2, Top = 3, Far = 4, Near = 5 };
    // Indices into one plane.
    enum Coefficient { A = 0, B = 1, C = 2, D = 3 };

    float planes[6][4];

    LGLFrustum();
    LGLFrustum(const LGLFrustum& other) = default;
    LGLFrustum(LGLFrustum&& other) = default;
    LGLFrustum& operator=(const LGLFrustum& other) = default;
    LGLFrustum& operator=(LGLFrustum&& other) = default;

    // Reads GL_PROJECTION_MATRIX and GL_MODELVIEW_MATRIX and sets the six normalised planes of
    // projection x modelview. Call it after the camera has set the modelview matrix.
    void calculateFrustum();

    // True when the point is strictly inside all six planes; a point on a plane is outside.
    bool pointInFrustum(float x, float y, float z) const;
    // False as soon as the centre lies at distance radius or more outside some plane.
    bool sphereInFrustum(float x, float y, float z, float radius) const;
    // The conservative cube test (size is the half-extent): false only when some plane has all eight
    // corners on or outside it. A large cube crossing the view with every corner outside counts as
    // inside.
    bool cubeInFrustum(float x, float y, float z, float size) const;
    // The stricter cube test: true only when some corner itself is inside the frustum. Kept on purpose
    // beside cubeInFrustum: a cube that meets the view while all its corners lie outside the frustum
    // is reported outside here.
    bool cubeInFrustum2(float x, float y, float z, float size) const;
    // cubeInFrustum with a half-extent per axis.
    bool blockInFrustum(float x, float y, float z, float sizeX, float sizeY, float sizeZ) const;

private:
    // Divides A, B, C and D of frustum[index] by the length of (A, B, C).
    void normalizePlane(float frustum[6][4], int index);
    // A*x + B*y + C*z + D of plane index.
    float distance(int index, float x, float y, float z) const;
};
