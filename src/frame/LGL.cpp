// LGL.cpp -- colours, rectangles, solids, the fade to black, occlusion, bitmap text, modelview
// vector helpers and texture creation of the static LGL class.
#include <ostrum_gl/frame/LGL.h>

#include <ostrum_core/LFile.h>
#include <ostrum_core/LGeom.h>
#include <ostrum_core/LImage.h>
#include <ostrum_core/TGAImage.h>
#include <ostrum_gl/platform/LGLPlatform.h>

#include <GL/freeglut.h>
#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glu.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

// ================================================================ [SECTION] class-wide state

double LGL::fadeLevel = 0.0;
int LGL::fadeViewport[4] = {0, 0, 0, 0};
float LGL::tubeCos[LGL::TUBE_TABLE_SIZE] = {};
float LGL::tubeSin[LGL::TUBE_TABLE_SIZE] = {};
LGL::tCompressedTexImage2DProc LGL::glCompressedTexImage2DARB = nullptr;
bool LGL::textureCompressionChecked = false;

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

namespace {

// Byte count a * b * c, or -1 when a factor is negative or the product does not fit in size_t: the
// allocation such a request stands for cannot succeed.
long double checkedBytes(long long a, long long b, long long c)
{
    if (a < 0 || b < 0 || c < 0)
        return -1;
    return static_cast<long double>(a) * static_cast<long double>(b) * static_cast<long double>(c);
}

// malloc of a checked byte count; nullptr when the count is invalid or memory is short. Never asks
// for 0 bytes, so an empty image is not mistaken for a failure.
void* allocateBytes(long long a, long long b, long long c)
{
    long double bytes = checkedBytes(a, b, c);
    if (bytes < 0 || bytes > static_cast<long double>(SIZE_MAX / 2))
        return nullptr;
    std::size_t n = static_cast<std::size_t>(bytes);
    return std::malloc(n > 0 ? n : 1);
}

void unreadableImage(const char* operation, const std::string& file)
{
    std::printf("ERROR LGL::%s: could not read the image \"%s\"\n", operation, file.c_str());
    std::exit(-1);
}

void allocationFailed(const char* operation)
{
    std::printf("ERROR LGL::%s: memory allocation failed\n", operation);
    std::exit(-1);
}

// The minification and magnification calls of the mipmapped textures. GL_LINEAR_MIPMAP_LINEAR is not
// a magnification filter: OpenGL rejects that call (GL_INVALID_ENUM) and keeps GL_LINEAR. Kept on
// purpose, as the textures of every game built on this library have always been made.
void setMipmapFilters()
{
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR_MIPMAP_LINEAR);
}

bool isJPEGExtension(const std::string& ext)
{
    return ext == "jpg" || ext == "JPG" || ext == "jpeg" || ext == "JPEG";
}

uint32_t readLE32(const unsigned char* p)
{
    return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) | (static_cast<uint32_t>(p[2]) << 16) |
           (static_cast<uint32_t>(p[3]) << 24);
}

// Offsets inside the 124-byte surface description that follows the magic.
constexpr int kDDSDescriptionSize = 124;
constexpr int kDDSHeight = 8;
constexpr int kDDSWidth = 12;
constexpr int kDDSLinearSize = 16;
constexpr int kDDSMipMapCount = 24;
constexpr int kDDSFourCC = 80;
constexpr int kDDSMaxLevels = 32;

}  // namespace

void LGL::CreateTexture(unsigned int& id, std::string file, int& width, int& height)
{
    if (!LFile::fileExist(file)) {
        std::printf("** ERROR LGL::CreateTexture: Texture file \"%s\" not found!\n", file.c_str());
        std::exit(-1);
    }

    const std::string ext = LFile::getFileExtension(file);
    tImageBMP* bmp = nullptr;
    TGAImage tga;
    bool isTGA = false;
    if (ext == "dds" || ext == "DDS") {
        CreateDDSTexture(id, file);
        return;
    } else if (ext == "bmp" || ext == "BMP") {
        bmp = LImage::LoadBMP(file.c_str());
        if (bmp == nullptr || bmp->data == nullptr || bmp->sizeX <= 0 || bmp->sizeY <= 0) {
            if (bmp)
                std::free(bmp->data);
            std::free(bmp);
            unreadableImage("CreateTexture", file);
        }
        width = bmp->sizeX;
        height = bmp->sizeY;
    } else if (isJPEGExtension(ext)) {
        CreateQuadraticCentredJPGTexture(id, file, false, 0);
        return;
    } else if (ext == "tga" || ext == "TGA") {
        tga.loadTGA(file.data());
        if (tga.data == nullptr || tga.width <= 0 || tga.height <= 0 || (tga.bpp != 24 && tga.bpp != 32)) {
            std::free(tga.data);
            tga.data = nullptr;
            unreadableImage("CreateTexture", file);
        }
        isTGA = true;
        width = tga.width;
        height = tga.height;
    }
    // Any other spelling (wall.Tga, wall.png) falls through: a texture name with filters and no image.

    glGenTextures(1, &id);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glBindTexture(GL_TEXTURE_2D, id);
    setMipmapFilters();

    if (bmp != nullptr) {
        gluBuild2DMipmaps(GL_TEXTURE_2D, 3, bmp->sizeX, bmp->sizeY, GL_RGB, GL_UNSIGNED_BYTE, bmp->data);
        std::free(bmp->data);
        std::free(bmp);
    } else if (isTGA) {
        if (tga.bpp >= 32)
            gluBuild2DMipmaps(GL_TEXTURE_2D, 4, tga.width, tga.height, GL_RGBA, GL_UNSIGNED_BYTE, tga.data);
        else
            gluBuild2DMipmaps(GL_TEXTURE_2D, 3, tga.width, tga.height, GL_RGB, GL_UNSIGNED_BYTE, tga.data);
        std::free(tga.data);
        tga.data = nullptr;
    }
}

void LGL::CreateTexture(unsigned int& id, std::string file)
{
    int width = 0, height = 0;
    CreateTexture(id, file, width, height);
}

void LGL::CheckTextureCompression(tProcAddressLookup lookup)
{
    // The flag goes up first: a failed check is not repeated by later calls.
    textureCompressionChecked = true;
    const char* extensions = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
    if (extensions == nullptr || std::strstr(extensions, "ARB_texture_compression") == nullptr)
        LGLPlatform::messageBox("ARB_texture_compression extension was not found", "ERROR");
    glCompressedTexImage2DARB =
        reinterpret_cast<tCompressedTexImage2DProc>(lookup ? lookup("glCompressedTexImage2DARB") : nullptr);
    if (glCompressedTexImage2DARB == nullptr)
        LGLPlatform::messageBox("One or more ARB_texture_compression functions were not found", "ERROR");
}

void LGL::CreateDDSTexture(unsigned int& id, std::string file)
{
    if (!textureCompressionChecked)
        CheckTextureCompression(LGLPlatform::getProcAddress);

    tDDSImageData* image = loadDDSTextureFile(file.c_str());
    if (image == nullptr)
        return;

    glGenTextures(1, &id);
    glBindTexture(GL_TEXTURE_2D, id);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);

    if (glCompressedTexImage2DARB != nullptr)
        for (const tDDSLevel& level : DDSLevels(image))
            glCompressedTexImage2DARB(GL_TEXTURE_2D, level.level, static_cast<GLenum>(image->format), level.width,
                                      level.height, 0, static_cast<GLsizei>(level.size), image->pixels + level.offset);
    freeDDSImage(image);
}

std::size_t LGL::DDSLevelSize(int format, long long width, long long height)
{
    const unsigned long long blockSize = format == GL_COMPRESSED_RGBA_S3TC_DXT1_EXT ? 8 : 16;
    const unsigned long long w = static_cast<unsigned long long>(std::max(width, 1LL));
    const unsigned long long h = static_cast<unsigned long long>(std::max(height, 1LL));
    // Both factors are below 2^61, and a product above SIZE_MAX saturates: no file holds such a level.
    const unsigned long long bw = (w + 3) / 4, bh = (h + 3) / 4;
    if (bw != 0 && bh > SIZE_MAX / bw / blockSize)
        return SIZE_MAX;
    return static_cast<std::size_t>(bw * bh * blockSize);
}

std::vector<LGL::tDDSLevel> LGL::DDSLevels(const tDDSImageData* image)
{
    std::vector<tDDSLevel> levels;
    if (image == nullptr || image->pixels == nullptr)
        return levels;
    const int wanted = std::min(image->numMipMaps, kDDSMaxLevels);
    long long w = image->width;
    long long h = image->height;
    std::size_t offset = 0;
    for (int level = 0; level < wanted; ++level) {
        w = std::max(w, 1LL);
        h = std::max(h, 1LL);
        const std::size_t size = DDSLevelSize(image->format, w, h);
        // A level whose bytes are not all in the block ends the chain (a lying header or a cut file).
        if (size > static_cast<std::size_t>(INT_MAX) || size > image->dataSize - offset)
            break;
        levels.push_back({level, static_cast<int>(w), static_cast<int>(h), offset, size});
        offset += size;
        w /= 2;
        h /= 2;
    }
    return levels;
}

void LGL::freeDDSImage(tDDSImageData* image)
{
    if (image == nullptr)
        return;
    std::free(image->pixels);
    std::free(image);
}

LGL::tDDSImageData* LGL::loadDDSTextureFile(const char* file)
{
    const std::string name = file ? file : "";
    std::FILE* stream = LFile::openFile(name, "rb");
    if (stream == nullptr) {
        char text[256];
        std::snprintf(text, sizeof text, "loadDDSTextureFile couldn't find, or failed to load \"%s\"", name.c_str());
        LGLPlatform::messageBox(text, "ERROR");
        return nullptr;
    }
    tDDSImageData* image = loadDDSTextureStream(stream, name.c_str());
    std::fclose(stream);
    return image;
}

LGL::tDDSImageData* LGL::loadDDSTextureStream(std::FILE* stream, const char* file)
{
    const std::string name = file ? file : "";
    unsigned char magic[4];
    unsigned char description[kDDSDescriptionSize];
    if (stream == nullptr || std::fread(magic, 1, 4, stream) != 4 || std::memcmp(magic, "DDS ", 4) != 0 ||
        std::fread(description, 1, kDDSDescriptionSize, stream) != kDDSDescriptionSize) {
        LGLPlatform::messageBox("The file \"" + name + "\" doesn't appear to be a valid .dds file!", "ERROR");
        return nullptr;
    }

    tDDSImageData* image = static_cast<tDDSImageData*>(std::calloc(1, sizeof(tDDSImageData)));
    if (image == nullptr) {
        std::printf("ERROR in LGL::loadDDSTextureFile. Memory alloc failed.\n");
        std::exit(-1);
    }

    unsigned factor = 0;
    const unsigned char* fourCC = description + kDDSFourCC;
    if (std::memcmp(fourCC, "DXT1", 4) == 0) {
        image->format = GL_COMPRESSED_RGBA_S3TC_DXT1_EXT;
        image->components = 3;
        factor = 2;
    } else if (std::memcmp(fourCC, "DXT3", 4) == 0) {
        image->format = GL_COMPRESSED_RGBA_S3TC_DXT3_EXT;
        image->components = 4;
        factor = 4;
    } else if (std::memcmp(fourCC, "DXT5", 4) == 0) {
        image->format = GL_COMPRESSED_RGBA_S3TC_DXT5_EXT;
        image->components = 4;
        factor = 4;
    } else {
        LGLPlatform::messageBox("The file \"" + name + "\" doesn't appear to be compressed using DXT1, DXT3, or DXT5!",
                                "ERROR");
        std::free(image);
        return nullptr;
    }

    const uint32_t linearSize = readLE32(description + kDDSLinearSize);
    const uint32_t mipMapCount = readLE32(description + kDDSMipMapCount);
    if (linearSize == 0)
        LGLPlatform::messageBox("dwLinearSize is 0!", "ERROR");

    // What the description asks for, but never more than the bytes that are left in the file.
    unsigned long long wanted = mipMapCount > 1 ? static_cast<unsigned long long>(linearSize) * factor : linearSize;
    const long here = std::ftell(stream);
    if (here >= 0 && std::fseek(stream, 0, SEEK_END) == 0) {
        const long end = std::ftell(stream);
        std::fseek(stream, here, SEEK_SET);
        if (end >= here)
            wanted = std::min(wanted, static_cast<unsigned long long>(end - here));
    }
    const std::size_t bufferSize = static_cast<std::size_t>(std::min<unsigned long long>(wanted, SIZE_MAX / 2));

    image->pixels = static_cast<unsigned char*>(std::malloc(bufferSize > 0 ? bufferSize : 1));
    if (image->pixels == nullptr) {
        std::printf("ERROR in LGL::loadDDSTextureFile. Memory alloc failed.\n");
        std::exit(-1);
    }
    image->dataSize = std::fread(image->pixels, 1, bufferSize, stream);
    image->width = static_cast<int>(readLE32(description + kDDSWidth));
    image->height = static_cast<int>(readLE32(description + kDDSHeight));
    image->numMipMaps = static_cast<int>(mipMapCount);
    return image;
}

void LGL::CreateQuadraticCentredJPGTexture(unsigned int& id, std::string file, bool fitInside, int targetSize)
{
    if (!isJPEGExtension(LFile::getFileExtension(file)))
        return;

    int channels = 0;
    tImageJPG* jpg = LImage::LoadJPG(file.c_str(), channels);
    if (jpg == nullptr || jpg->data == nullptr || jpg->sizeX <= 0 || jpg->sizeY <= 0 ||
        (channels != 1 && channels < 3)) {
        if (jpg)
            std::free(jpg->data);
        std::free(jpg);
        std::printf("ERROR LGL::CreateQuadraticCentredJPGTexture: could not read the image \"%s\"\n", file.c_str());
        std::exit(0);
    }

    const int sizeX = jpg->sizeX;
    const int sizeY = jpg->sizeY;
    long long size = fitInside ? std::min(sizeX, sizeY) : std::max(sizeX, sizeY);
    if (size % 16 != 0)
        size += 16 - size % 16;

    unsigned char* square = static_cast<unsigned char*>(allocateBytes(size, size, 3));
    if (square == nullptr) {
        std::free(jpg->data);
        std::free(jpg);
        allocationFailed("CreateQuadraticCentredJPGTexture");
    }
    std::memset(square, 0, static_cast<std::size_t>(size * size * 3));

    // Centred in the square; rows written bottom-up, so the image's top row lands near the top of the
    // texture (the last rows of the block).
    const long long offsetX = size / 2 - sizeX / 2;
    const long long offsetY = size / 2 - sizeY / 2;
    const unsigned char* src = jpg->data;
    const long long pixelCount = static_cast<long long>(sizeX) * sizeY;
    for (long long iy = 0; iy < sizeY; ++iy) {
        const long long canvasY = iy + offsetY;
        if (canvasY < 0 || canvasY >= size)
            continue;
        unsigned char* row = square + (size - 1 - canvasY) * size * 3;
        for (long long ix = 0; ix < sizeX; ++ix) {
            const long long canvasX = ix + offsetX;
            if (canvasX < 0 || canvasX >= size)
                continue;
            unsigned char* dst = row + canvasX * 3;
            const long long index = iy * sizeX + ix;
            if (channels >= 3) {
                const unsigned char* p = src + index * channels;
                dst[0] = p[0];
                dst[1] = p[1];
                dst[2] = p[2];
            } else if (fitInside) {
                dst[0] = dst[1] = dst[2] = src[index];
            } else {
                // Kept on purpose: the grey source advances after the first byte only, so green and
                // blue take the next pixel's value.
                const long long next = index + 1 < pixelCount ? index + 1 : index;
                dst[0] = src[index];
                dst[1] = src[next];
                dst[2] = src[next];
            }
        }
    }
    std::free(jpg->data);
    std::free(jpg);

    if (targetSize == 0)
        targetSize = static_cast<int>(size);
    const long long factor = targetSize > 0 ? size / targetSize : 0;
    long long textureSize = size;
    if (factor > 1) {
        unsigned char* scaled = static_cast<unsigned char*>(allocateBytes(targetSize, targetSize, 3));
        if (scaled == nullptr) {
            std::free(square);
            allocationFailed("CreateQuadraticCentredJPGTexture");
        }
        const long long blockPixels = factor * factor;
        for (long long ty = 0; ty < targetSize; ++ty) {
            for (long long tx = 0; tx < targetSize; ++tx) {
                unsigned long long sum[3] = {0, 0, 0};
                for (long long by = 0; by < factor; ++by) {
                    const unsigned char* p = square + ((ty * factor + by) * size + tx * factor) * 3;
                    for (long long bx = 0; bx < factor; ++bx, p += 3) {
                        sum[0] += p[0];
                        sum[1] += p[1];
                        sum[2] += p[2];
                    }
                }
                unsigned char* dst = scaled + (ty * targetSize + tx) * 3;
                for (int c = 0; c < 3; ++c)
                    dst[c] = static_cast<unsigned char>(sum[c] / blockPixels);
            }
        }
        std::free(square);
        square = scaled;
        textureSize = targetSize;
    }

    glGenTextures(1, &id);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glBindTexture(GL_TEXTURE_2D, id);
    setMipmapFilters();
    glTexParameteri(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, GL_TRUE);
    glTexImage2D(GL_TEXTURE_2D, 0, 3, static_cast<GLsizei>(textureSize), static_cast<GLsizei>(textureSize), 0, GL_RGB,
                 GL_UNSIGNED_BYTE, square);
    std::free(square);
}

void LGL::CreateTransparentTexture(unsigned int& id, std::string file, int mode, int r, int g, int b, int alpha,
                                   int& width, int& height)
{
    const std::string ext = LFile::getFileExtension(file);
    unsigned char* rgb = nullptr;       // 3 bytes per pixel, to be keyed
    unsigned char* ownAlpha = nullptr;  // a TGA's own RGBA pixels
    if (ext == "bmp" || ext == "BMP") {
        tImageBMP* bmp = LImage::LoadBMP(file.c_str());
        if (bmp == nullptr || bmp->data == nullptr || bmp->sizeX <= 0 || bmp->sizeY <= 0) {
            if (bmp)
                std::free(bmp->data);
            std::free(bmp);
            unreadableImage("CreateTransparentTexture", file);
        }
        width = bmp->sizeX;
        height = bmp->sizeY;
        rgb = bmp->data;
        std::free(bmp);
    } else if (ext == "tga" || ext == "TGA") {
        TGAImage tga;
        tga.loadTGA(file.data());
        if (tga.data == nullptr || tga.width <= 0 || tga.height <= 0 || (tga.bpp != 24 && tga.bpp != 32)) {
            std::free(tga.data);
            tga.data = nullptr;
            unreadableImage("CreateTransparentTexture", file);
        }
        width = tga.width;
        height = tga.height;
        if (tga.bpp >= 32)
            ownAlpha = tga.data;
        else
            rgb = tga.data;
        tga.data = nullptr;
    } else {
        std::printf("ERROR LGL::CreateTransparentTexture: unsupported image type \"%s\"\n", file.c_str());
        return;
    }

    glGenTextures(1, &id);
    glBindTexture(GL_TEXTURE_2D, id);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_NEAREST);

    if (ownAlpha != nullptr) {
        gluBuild2DMipmaps(GL_TEXTURE_2D, 4, width, height, GL_RGBA, GL_UNSIGNED_BYTE, ownAlpha);
        std::free(ownAlpha);
        return;
    }

    unsigned char* rgba = static_cast<unsigned char*>(allocateBytes(width, height, 4));
    if (rgba == nullptr) {
        std::free(rgb);
        allocationFailed("CreateTransparentTexture");
    }
    const int key[3] = {r, g, b};
    const long long pixels = static_cast<long long>(width) * height;
    for (long long i = 0; i < pixels; ++i) {
        const unsigned char* src = rgb + i * 3;
        unsigned char* dst = rgba + i * 4;
        dst[0] = src[0];
        dst[1] = src[1];
        dst[2] = src[2];
        if (mode == -1) {
            dst[3] = static_cast<unsigned char>(alpha);
            continue;
        }
        int matches = 0;
        for (int c = 0; c < 3; ++c) {
            if (mode == 1)
                matches += src[c] < key[c];
            else if (mode == 2)
                matches += src[c] > key[c];
            else
                matches += src[c] == key[c];
        }
        dst[3] = matches == 3 ? static_cast<unsigned char>(alpha) : 255;
    }
    gluBuild2DMipmaps(GL_TEXTURE_2D, 4, width, height, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
    std::free(rgba);
    std::free(rgb);
}

void LGL::CreateTransparentTexture(unsigned int& id, std::string file)
{
    int width = 0, height = 0;
    CreateTransparentTexture(id, file, 0, 0, 0, 0, 0, width, height);
}

void LGL::CreateRenderTexture(unsigned int& id, int width, int height, int channels, int format)
{
    unsigned int* buffer = nullptr;
    if (width > 0 && height > 0) {
        const long long components = std::max(channels, 4);
        const long double bytes = checkedBytes(static_cast<long long>(width) * height, components, sizeof(unsigned int));
        if (bytes < 0 || bytes > static_cast<long double>(SIZE_MAX / 2))
            allocationFailed("CreateRenderTexture");
        buffer = static_cast<unsigned int*>(std::calloc(static_cast<std::size_t>(width) * height * components,
                                                        sizeof(unsigned int)));
        if (buffer == nullptr)
            allocationFailed("CreateRenderTexture");
    }
    glGenTextures(1, &id);
    glBindTexture(GL_TEXTURE_2D, id);
    glTexImage2D(GL_TEXTURE_2D, 0, channels, width, height, 0, static_cast<GLenum>(format), GL_UNSIGNED_INT, buffer);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    std::free(buffer);
}

void LGL::CreateRenderTexture(unsigned int& id, int size, int channels, int format)
{
    CreateRenderTexture(id, size, size, channels, format);
}

void LGL::CreateBlankTexture(unsigned int& id, int r, int g, int b, int width, int height)
{
    // r, g and b are ignored on purpose: a blank texture is always black.
    (void)r;
    (void)g;
    (void)b;
    unsigned char* buffer = static_cast<unsigned char*>(allocateBytes(width, height, 3));
    if (buffer == nullptr) {
        std::printf("ERROR in CreateBlankTexture memory allocation\n");
        std::exit(-1);
    }
    const std::size_t rowBytes = static_cast<std::size_t>(width) * 3;
    for (int y = 0; y < height; ++y)
        std::memset(buffer + y * rowBytes, 0, rowBytes);

    glGenTextures(1, &id);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glBindTexture(GL_TEXTURE_2D, id);
    glTexImage2D(GL_TEXTURE_2D, 0, 3, width, height, 0, GL_RGB, GL_UNSIGNED_BYTE, buffer);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    std::free(buffer);
}

void LGL::FlipBitmapVertical(unsigned char* data, int width, int height, int bytesPerPixel)
{
    unsigned char* row = static_cast<unsigned char*>(allocateBytes(width, bytesPerPixel, 1));
    if (row == nullptr) {
        std::printf("ERROR in FlipBitmapVertical memory allocation\n");
        std::exit(-1);
    }
    const std::size_t rowBytes = static_cast<std::size_t>(width) * bytesPerPixel;
    for (int top = 0, bottom = height - 1; top < bottom; ++top, --bottom) {
        unsigned char* a = data + top * rowBytes;
        unsigned char* b = data + bottom * rowBytes;
        std::memcpy(row, a, rowBytes);
        std::memcpy(a, b, rowBytes);
        std::memcpy(b, row, rowBytes);
    }
    std::free(row);
}

void LGL::FlipBitmapHorizontal(unsigned char* data, int width, int height, int bytesPerPixel)
{
    unsigned char* row = static_cast<unsigned char*>(allocateBytes(width, bytesPerPixel, 1));
    if (row == nullptr) {
        std::printf("ERROR in FlipBitmapHorizontal memory allocation\n");
        std::exit(-1);
    }
    const std::size_t bpp = static_cast<std::size_t>(bytesPerPixel);
    const std::size_t rowBytes = static_cast<std::size_t>(width) * bpp;
    for (int y = 0; y < height; ++y) {
        unsigned char* line = data + y * rowBytes;
        std::memcpy(row, line, rowBytes);
        for (int x = 0; x < width; ++x)
            std::memcpy(line + x * bpp, row + (width - 1 - x) * bpp, bpp);
    }
    std::free(row);
}
