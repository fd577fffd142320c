// LGL.cpp -- colours, rectangles, solids, the fade to black, occlusion, bitmap text, modelview
// vector helpers and texture names of the static LGL class.
#include <ostrum_gl/frame/LGL.h>

#include <ostrum_core/LGeom.h>

#include <GL/freeglut.h>
#include <GL/gl.h>
#include <GL/glu.h>

#include <cmath>

// ================================================================ [SECTION] class-wide state

double LGL::fadeLevel = 0.0;
int LGL::fadeViewport[4] = {0, 0, 0, 0};
float LGL::tubeCos[LGL::TUBE_TABLE_SIZE] = {};
float LGL::tubeSin[LGL::TUBE_TABLE_SIZE] = {};

namespace {

constexpr double kTwoPi = 6.283185307179586;

// Fills the circle tables with segments + 1 points at angles k * 2 pi / segments and returns the
// number of segments to draw: 0 stands for 32, more than the tables hold is cut to 49, and a
// negative count gives 0 (nothing drawn).
int fillCircleTables(int segments)
{
    if (segments == 0)
        segments = 32;
    if (segments < 0)
        return 0;
    if (segments > LGL::TUBE_TABLE_SIZE - 1)
        segments = LGL::TUBE_TABLE_SIZE - 1;
    for (int k = 0; k <= segments; ++k) {
        double angle = k * kTwoPi / segments;
        LGL::tubeCos[k] = static_cast<float>(std::cos(angle));
        LGL::tubeSin[k] = static_cast<float>(std::sin(angle));
    }
    return segments;
}

// A disc of the circle tables at height z, made of `segments` triangles that each end in the centre,
// facing +z when `up` is true and -z otherwise (counter-clockwise seen from the side it faces).
void drawDisc(int segments, float radius, float z, bool up)
{
    glBegin(GL_TRIANGLES);
    glNormal3f(0.0f, 0.0f, up ? 1.0f : -1.0f);
    for (int k = 0; k < segments; ++k) {
        int first = up ? k : k + 1;
        int second = up ? k + 1 : k;
        glVertex3f(radius * LGL::tubeCos[first], radius * LGL::tubeSin[first], z);
        glVertex3f(radius * LGL::tubeCos[second], radius * LGL::tubeSin[second], z);
        glVertex3f(0.0f, 0.0f, z);
    }
    glEnd();
}

// The side of a cylinder around the z axis from z0 to z1 (z1 > z0): one four-vertex triangle strip
// per segment with the outward normal at the segment's middle angle.
void drawSide(int segments, float radius, float z0, float z1)
{
    for (int k = 0; k < segments; ++k) {
        const double middle = (k + 0.5) * kTwoPi / segments;
        glBegin(GL_TRIANGLE_STRIP);
        glNormal3f(static_cast<float>(std::cos(middle)), static_cast<float>(std::sin(middle)), 0.0f);
        glVertex3f(radius * LGL::tubeCos[k], radius * LGL::tubeSin[k], z1);
        glVertex3f(radius * LGL::tubeCos[k], radius * LGL::tubeSin[k], z0);
        glVertex3f(radius * LGL::tubeCos[k + 1], radius * LGL::tubeSin[k + 1], z1);
        glVertex3f(radius * LGL::tubeCos[k + 1], radius * LGL::tubeSin[k + 1], z0);
        glEnd();
    }
}

// A cone around the z axis with its base rim at zBase and its tip on the axis at zTip > zBase: one
// triangle per segment, with the slanted outward normal at the segment's middle angle.
void drawCone(int segments, float radius, float zBase, float zTip)
{
    // The outward normal is (H cos a, H sin a, R) / sqrt(H^2 + R^2) for height H and base radius R.
    const double height = static_cast<double>(zTip) - zBase;
    const double slant = std::sqrt(height * height + static_cast<double>(radius) * radius);
    const double along = slant > 0.0 ? height / slant : 0.0;
    const double up = slant > 0.0 ? radius / slant : 1.0;
    glBegin(GL_TRIANGLES);
    for (int k = 0; k < segments; ++k) {
        const double middle = (k + 0.5) * kTwoPi / segments;
        glNormal3f(static_cast<float>(std::cos(middle) * along), static_cast<float>(std::sin(middle) * along),
                   static_cast<float>(up));
        glVertex3f(radius * LGL::tubeCos[k], radius * LGL::tubeSin[k], zBase);
        glVertex3f(radius * LGL::tubeCos[k + 1], radius * LGL::tubeSin[k + 1], zBase);
        glVertex3f(0.0f, 0.0f, zTip);
    }
    glEnd();
}

// v := m * v on x, y, z (m column-major), with or without the translation column; w is kept.
void transformVector(SVector3D& v, const float* m, bool withTranslation)
{
    const float x = v.x;
    const float y = v.y;
    const float z = v.z;
    v.x = m[0] * x + m[4] * y + m[8] * z;
    v.y = m[1] * x + m[5] * y + m[9] * z;
    v.z = m[2] * x + m[6] * y + m[10] * z;
    if (withTranslation) {
        v.x += m[12];
        v.y += m[13];
        v.z += m[14];
    }
}

tRect insetRect(tRect rect, int inset)
{
    rect.left += inset;
    rect.top += inset;
    rect.right -= inset;
    rect.bottom -= inset;
    return rect;
}

}  // namespace

// ================================================================ [SECTION] colours

void LGL::SetColor(tGLRGB& color, float r, float g, float b)
{
    color.r = r;
    color.g = g;
    color.b = b;
}

void LGL::SetColor(tGLRGBA& color, float r, float g, float b, float a)
{
    color.r = r;
    color.g = g;
    color.b = b;
    color.a = a;
}

void LGL::SetColor256(tGLRGB& color, int r, int g, int b)
{
    color.r = static_cast<float>(r / 255.0);
    color.g = static_cast<float>(g / 255.0);
    color.b = static_cast<float>(b / 255.0);
}

void LGL::SetGray256(tGLRGB& color, int grey)
{
    const float value = static_cast<float>(grey / 255.0);
    color.r = value;
    color.g = value;
    color.b = value;
}

void LGL::UseColor(const tGLRGB& color)
{
    glColor3f(color.r, color.g, color.b);
}

void LGL::UseColor(const tGLRGBA& color)
{
    glColor4f(color.r, color.g, color.b, color.a);
}

void LGL::UseColor(cColor color)
{
    static const float table[10][3] = {
        {1.0f, 0.0f, 0.0f},  // Red
        {0.0f, 1.0f, 0.0f},  // Green
        {0.0f, 0.0f, 1.0f},  // Blue
        {1.0f, 1.0f, 0.0f},  // Yellow
        {1.0f, 0.5f, 0.0f},  // Orange
        {0.0f, 0.0f, 0.0f},  // Black
        {1.0f, 1.0f, 1.0f},  // White
        {1.0f, 0.0f, 1.0f},  // Magenta
        {0.0f, 1.0f, 1.0f},  // Cyan
        {0.5f, 0.5f, 0.2f},  // Olive
    };
    const int index = static_cast<int>(color);
    if (index < 0 || index > 9)
        return;
    glColor3f(table[index][0], table[index][1], table[index][2]);
}

// ================================================================ [SECTION] rectangles and frames

void LGL::RenderRect(tRect rect)
{
    glBegin(GL_TRIANGLE_STRIP);
    glVertex2i(rect.right, rect.top);
    glVertex2i(rect.left, rect.top);
    glVertex2i(rect.right, rect.bottom);
    glVertex2i(rect.left, rect.bottom);
    glEnd();
}

void LGL::RenderRect(tRect rect, int inset)
{
    // No check on purpose: an inset past the middle turns the strip inside out.
    RenderRect(insetRect(rect, inset));
}

void LGL::RenderRectFrame(tRect rect)
{
    glBegin(GL_LINE_LOOP);
    glVertex2i(rect.right, rect.top);
    glVertex2i(rect.left, rect.top);
    glVertex2i(rect.left, rect.bottom);
    glVertex2i(rect.right, rect.bottom);
    glEnd();
}

void LGL::RenderRectFrame(tRect rect, int inset)
{
    RenderRectFrame(insetRect(rect, inset));
}

void LGL::RenderRectVertices(tRect rect, int z)
{
    glVertex3i(rect.left, rect.top, z);
    glVertex3i(rect.right, rect.top, z);
    glVertex3i(rect.right, rect.bottom, z);
    glVertex3i(rect.left, rect.bottom, z);
}

void LGL::RenderWindow(tRect rect, tGLRGBA fill, tGLRGBA frame)
{
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    UseColor(fill);
    RenderRect(rect);
    glDisable(GL_BLEND);
    UseColor(frame);
    RenderRectFrame(rect);
}

void LGL::RenderWindow(int x, int y, int width, int height, tGLRGBA fill, tGLRGBA frame)
{
    tRect rect;
    LGeom::setRectExt(rect, x, y, width, height);
    RenderWindow(rect, fill, frame);
}

// ================================================================ [SECTION] solids

void LGL::RenderRectCube(float x1, float y1, float x2, float y2, float z1, float z2)
{
    glBegin(GL_QUADS);
    glVertex3f(x1, y1, z1);
    glVertex3f(x2, y1, z1);
    glVertex3f(x2, y2, z1);
    glVertex3f(x1, y2, z1);
    glEnd();

    glBegin(GL_QUADS);
    glVertex3f(x1, y1, z2);
    glVertex3f(x2, y1, z2);
    glVertex3f(x2, y2, z2);
    glVertex3f(x1, y2, z2);
    glEnd();

    glBegin(GL_QUADS);
    glVertex3f(x2, y1, z1);
    glVertex3f(x2, y1, z2);
    glVertex3f(x2, y2, z2);
    glVertex3f(x2, y2, z1);
    glEnd();

    glBegin(GL_QUADS);
    glVertex3f(x1, y1, z1);
    glVertex3f(x1, y1, z2);
    glVertex3f(x1, y2, z2);
    glVertex3f(x1, y2, z1);
    glEnd();

    // Kept on purpose: this block has no glEnd. The next glBegin is refused by OpenGL
    // (GL_INVALID_OPERATION) and its four vertices continue this block, so the eight vertices form
    // the last two quads and the final glEnd closes them both.
    glBegin(GL_QUADS);
    glVertex3f(x1, y2, z1);
    glVertex3f(x1, y2, z2);
    glVertex3f(x2, y2, z2);
    glVertex3f(x2, y2, z1);

    glBegin(GL_QUADS);
    glVertex3f(x1, y1, z1);
    glVertex3f(x1, y1, z2);
    glVertex3f(x2, y1, z2);
    glVertex3f(x2, y1, z1);
    glEnd();
}

void LGL::buildCubeList(unsigned int& list, tRect r, int z1, int z2)
{
    const float left = static_cast<float>(r.left);
    const float right = static_cast<float>(r.right);
    const float top = static_cast<float>(r.top);
    const float bottom = static_cast<float>(r.bottom);
    const float zFirst = static_cast<float>(z1);
    const float zSecond = static_cast<float>(z2);

    list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    glBegin(GL_QUADS);
    // The normals are fixed: they do not follow the order of the arguments.
    glNormal3f(0.0f, 0.0f, -1.0f);
    glTexCoord2f(1.0f, 1.0f); glVertex3f(left, top, zSecond);
    glTexCoord2f(0.0f, 1.0f); glVertex3f(right, top, zSecond);
    glTexCoord2f(0.0f, 0.0f); glVertex3f(right, bottom, zSecond);
    glTexCoord2f(1.0f, 0.0f); glVertex3f(left, bottom, zSecond);

    glNormal3f(0.0f, 0.0f, 1.0f);
    glTexCoord2f(0.0f, 1.0f); glVertex3f(left, top, zFirst);
    glTexCoord2f(0.0f, 0.0f); glVertex3f(left, bottom, zFirst);
    glTexCoord2f(1.0f, 0.0f); glVertex3f(right, bottom, zFirst);
    glTexCoord2f(1.0f, 1.0f); glVertex3f(right, top, zFirst);

    glNormal3f(0.0f, -1.0f, 0.0f);
    glTexCoord2f(0.0f, 0.0f); glVertex3f(left, bottom, zSecond);
    glTexCoord2f(1.0f, 0.0f); glVertex3f(right, bottom, zSecond);
    glTexCoord2f(1.0f, 1.0f); glVertex3f(right, bottom, zFirst);
    glTexCoord2f(0.0f, 1.0f); glVertex3f(left, bottom, zFirst);

    glNormal3f(0.0f, 1.0f, 0.0f);
    glTexCoord2f(1.0f, 0.0f); glVertex3f(left, top, zSecond);
    glTexCoord2f(1.0f, 1.0f); glVertex3f(left, top, zFirst);
    glTexCoord2f(0.0f, 1.0f); glVertex3f(right, top, zFirst);
    glTexCoord2f(0.0f, 0.0f); glVertex3f(right, top, zSecond);

    glNormal3f(1.0f, 0.0f, 0.0f);
    glTexCoord2f(1.0f, 0.0f); glVertex3f(right, top, zSecond);
    glTexCoord2f(1.0f, 1.0f); glVertex3f(right, top, zFirst);
    glTexCoord2f(0.0f, 1.0f); glVertex3f(right, bottom, zFirst);
    glTexCoord2f(0.0f, 0.0f); glVertex3f(right, bottom, zSecond);

    glNormal3f(-1.0f, 0.0f, 0.0f);
    glTexCoord2f(0.0f, 0.0f); glVertex3f(left, top, zSecond);
    glTexCoord2f(1.0f, 0.0f); glVertex3f(left, bottom, zSecond);
    glTexCoord2f(1.0f, 1.0f); glVertex3f(left, bottom, zFirst);
    glTexCoord2f(0.0f, 1.0f); glVertex3f(left, top, zFirst);
    glEnd();
    glEndList();
}

void LGL::drawCircle(float radius, int segments)
{
    glBegin(GL_LINE_LOOP);
    if (segments > 0) {
        const float step = 6.28318530718f / segments;
        for (int k = 0; k < segments; ++k)
            glVertex3f(radius * std::cos(k * step), radius * std::sin(k * step), 0.0f);
    }
    glEnd();
}

void LGL::drawTube(double radius, double length, int segments)
{
    segments = fillCircleTables(segments);
    if (segments == 0)
        return;
    glPushMatrix();
    glScaled(radius, radius, length / 2.0);
    drawDisc(segments, 1.0f, 1.0f, true);
    drawDisc(segments, 1.0f, -1.0f, false);
    drawSide(segments, 1.0f, -1.0f, 1.0f);
    glPopMatrix();
}

void LGL::drawArrow(double shaftRadius, double shaftLength, double headRadius, double headLength, int segments)
{
    segments = fillCircleTables(segments);
    if (segments == 0)
        return;
    const float shaftR = static_cast<float>(shaftRadius);
    const float shaftEnd = static_cast<float>(shaftLength);
    const float headR = static_cast<float>(headRadius);
    const float tip = static_cast<float>(shaftLength + headLength);
    drawDisc(segments, shaftR, 0.0f, false);
    drawSide(segments, shaftR, 0.0f, shaftEnd);
    drawDisc(segments, headR, shaftEnd, false);
    drawCone(segments, headR, shaftEnd, tip);
}

// ================================================================ [SECTION] fade

void LGL::InitFadeOut()
{
    fadeLevel = 0.0;
    glGetIntegerv(GL_VIEWPORT, fadeViewport);
}

void LGL::RenderFadeOut()
{
    fadeLevel += 0.01;
    if (fadeLevel > 1.0)
        fadeLevel = 1.0;

    glDisable(GL_DEPTH_TEST);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glOrtho(0.0, 1.0, 1.0, 0.0, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    // Texturing stays off after the fade.
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glColor4f(0.0f, 0.0f, 0.0f, static_cast<float>(fadeLevel));
    glBegin(GL_TRIANGLE_STRIP);
    glVertex2f(1.0f, 0.0f);
    glVertex2f(0.0f, 0.0f);
    glVertex2f(1.0f, 1.0f);
    glVertex2f(0.0f, 1.0f);
    glEnd();
    glDisable(GL_BLEND);
    glColor3f(1.0f, 1.0f, 1.0f);
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    glEnable(GL_DEPTH_TEST);
}

bool LGL::InFadeOut()
{
    return fadeLevel < 1.0;
}

// ================================================================ [SECTION] occlusion

bool LGL::isOccluded(SVector3D p)
{
    GLint viewport[4];
    GLdouble modelview[16];
    GLdouble projection[16];
    glGetIntegerv(GL_VIEWPORT, viewport);
    glGetDoublev(GL_MODELVIEW_MATRIX, modelview);
    glGetDoublev(GL_PROJECTION_MATRIX, projection);

    GLdouble wx = 0.0;
    GLdouble wy = 0.0;
    GLdouble wz = 0.0;
    gluProject(p.x, p.y, p.z, modelview, projection, viewport, &wx, &wy, &wz);

    // Outside the window nothing is read back, and the far plane stands in for the depth.
    GLfloat depth = 1.0f;
    glReadPixels(static_cast<GLint>(wx), static_cast<GLint>(wy), 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
    return wz > depth;
}

// ================================================================ [SECTION] text

void LGL::WriteString(char* text, int x, int y)
{
    WriteString(static_cast<const char*>(text), x, y);
}

void LGL::WriteString(const char* text, int x, int y)
{
    if (text == nullptr)
        return;
    float advance = 0.0f;
    for (const char* c = text; *c != '\0'; ++c) {
        const int character = static_cast<unsigned char>(*c);
        glRasterPos2f(static_cast<float>(x) + advance, static_cast<float>(y));
        glutBitmapCharacter(GLUT_BITMAP_9_BY_15, character);
        // Deliberately 30 % wider than the font's own spacing.
        advance += 1.3f * static_cast<float>(glutBitmapWidth(GLUT_BITMAP_9_BY_15, character));
    }
}

// ================================================================ [SECTION] modelview helpers

void LGL::RotateVectorWithGLMatrix(SVector3D& v)
{
    GLfloat matrix[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, matrix);
    transformVector(v, matrix, false);
}

void LGL::RotateVectorWithGLMatrix(SVector3D& v, float* matrix)
{
    transformVector(v, matrix, false);
}

void LGL::MoveVectorWithGLMatrix(SVector3D& v)
{
    GLfloat matrix[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, matrix);
    transformVector(v, matrix, true);
}

// ================================================================ [SECTION] textures

void LGL::GenTexture(unsigned int* id)
{
    glGenTextures(1, id);
}
