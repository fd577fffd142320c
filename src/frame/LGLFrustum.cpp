// LGLFrustum.cpp -- plane extraction from the GL matrices and the point, sphere, cube and block tests.
#include <ostrum_gl/frame/LGLFrustum.h>

#include <GL/gl.h>

#include <cmath>

LGLFrustum::LGLFrustum()
{
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j < 4; ++j) {
            planes[i][j] = 0.0f;
        }
    }
}

void LGLFrustum::normalizePlane(float frustum[6][4], int index)
{
    float* plane = frustum[index];
    const float magnitude = std::sqrt(plane[A] * plane[A] + plane[B] * plane[B] + plane[C] * plane[C]);
    plane[A] /= magnitude;
    plane[B] /= magnitude;
    plane[C] /= magnitude;
    plane[D] /= magnitude;
}

void LGLFrustum::calculateFrustum()
{
    float proj[16];
    float modl[16];
    glGetFloatv(GL_PROJECTION_MATRIX, proj);
    glGetFloatv(GL_MODELVIEW_MATRIX, modl);

    // clip = proj x modl, all three column-major: element (row r, column c) sits at [c * 4 + r].
    float clip[16];
    for (int c = 0; c < 4; ++c) {
        for (int r = 0; r < 4; ++r) {
            clip[c * 4 + r] = proj[0 * 4 + r] * modl[c * 4 + 0] + proj[1 * 4 + r] * modl[c * 4 + 1] +
                              proj[2 * 4 + r] * modl[c * 4 + 2] + proj[3 * 4 + r] * modl[c * 4 + 3];
        }
    }

    // Row k of clip is (clip[k], clip[4 + k], clip[8 + k], clip[12 + k]); the plane of a side is the
    // w row plus or minus the row of its axis.
    struct Side {
        int plane;
        int row;
        float sign;
    };
    static const Side sides[6] = {
        {Right, 0, -1.0f}, {Left, 0, 1.0f}, {Bottom, 1, 1.0f}, {Top, 1, -1.0f}, {Far, 2, -1.0f}, {Near, 2, 1.0f},
    };
    for (const Side& side : sides) {
        for (int k = 0; k < 4; ++k) {
            planes[side.plane][k] = clip[k * 4 + 3] + side.sign * clip[k * 4 + side.row];
        }
        normalizePlane(planes, side.plane);
    }
}

float LGLFrustum::distance(int index, float x, float y, float z) const
{
    const float* plane = planes[index];
    return plane[A] * x + plane[B] * y + plane[C] * z + plane[D];
}

bool LGLFrustum::pointInFrustum(float x, float y, float z) const
{
    for (int i = 0; i < 6; ++i) {
        if (distance(i, x, y, z) <= 0.0f) {
            return false;
        }
    }
    return true;
}

bool LGLFrustum::sphereInFrustum(float x, float y, float z, float radius) const
{
    for (int i = 0; i < 6; ++i) {
        if (distance(i, x, y, z) <= -radius) {
            return false;
        }
    }
    return true;
}

bool LGLFrustum::cubeInFrustum(float x, float y, float z, float size) const
{
    return blockInFrustum(x, y, z, size, size, size);
}

bool LGLFrustum::blockInFrustum(float x, float y, float z, float sizeX, float sizeY, float sizeZ) const
{
    for (int i = 0; i < 6; ++i) {
        if (distance(i, x - sizeX, y - sizeY, z - sizeZ) > 0.0f) continue;
        if (distance(i, x + sizeX, y - sizeY, z - sizeZ) > 0.0f) continue;
        if (distance(i, x - sizeX, y + sizeY, z - sizeZ) > 0.0f) continue;
        if (distance(i, x + sizeX, y + sizeY, z - sizeZ) > 0.0f) continue;
        if (distance(i, x - sizeX, y - sizeY, z + sizeZ) > 0.0f) continue;
        if (distance(i, x + sizeX, y - sizeY, z + sizeZ) > 0.0f) continue;
        if (distance(i, x - sizeX, y + sizeY, z + sizeZ) > 0.0f) continue;
        if (distance(i, x + sizeX, y + sizeY, z + sizeZ) > 0.0f) continue;
        return false;
    }
    return true;
}

bool LGLFrustum::cubeInFrustum2(float x, float y, float z, float size) const
{
    if (pointInFrustum(x - size, y - size, z - size)) {
        return true;
    }
    for (int i = 0; i < 6; ++i) {
        if (distance(i, x + size, y - size, z - size) <= 0.0f) {
            // Kept on purpose: from here only whole corners count, so a cube that meets the view with
            // every corner outside the frustum is outside for this test.
            return pointInFrustum(x - size, y + size, z - size) || pointInFrustum(x + size, y + size, z - size) ||
                   pointInFrustum(x - size, y - size, z + size) || pointInFrustum(x + size, y - size, z + size) ||
                   pointInFrustum(x - size, y + size, z + size) || pointInFrustum(x + size, y + size, z + size);
        }
    }
    return true;
}
