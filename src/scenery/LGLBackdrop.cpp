// LGLBackdrop.cpp -- a textured rectangle in the scene: its texture, placement, drawing and outline.
#include <ostrum_gl/scenery/LGLBackdrop.h>

#include <ostrum_core/LGeom.h>
#include <ostrum_gl/frame/LGL.h>
#include <ostrum_gl/frame/LGLCamera.h>

#include <GL/gl.h>
#include <GL/glext.h>

namespace {

constexpr double kDegreesPerRadian = 57.29577951308232;
// Inset of the texture coordinates from the picture's border.
constexpr double kTexLow = 0.005;
constexpr double kTexHigh = 0.995;

}  // namespace

LGLBackdrop::LGLBackdrop()
    : pos(0.0f, 0.0f, 0.0f),
      rotX(0.0f),
      rotY(0.0f),
      rotZ(0.0f),
      relativeToCamera(false),
      faceCamera(false),
      alpha(1.0f),
      halfWidth(0),
      halfHeight(0),
      rect{0, 0, 0, 0},
      texture(0)
{
}

bool LGLBackdrop::isTransparentName(const std::string& fileName)
{
    const size_t dot = fileName.rfind('.');
    if (dot == std::string::npos || dot < 2)
        return false;
    return fileName.compare(dot - 2, 2, "_t") == 0;
}

void LGLBackdrop::loadTexture(std::string fileName)
{
    if (isTransparentName(fileName)) {
        int width = 0, height = 0;
        LGL::CreateTransparentTexture(texture, fileName, 1, 5, 5, 5, 0, width, height);
    } else {
        LGL::CreateTexture(texture, fileName);
    }
}

void LGLBackdrop::set(SVector3D pos_, float rotX_, float rotY_, float rotZ_, int width, int height,
                      bool relativeToCamera_, bool faceCamera_, float alpha_)
{
    pos = pos_;
    rotX = rotX_;
    rotY = rotY_;
    rotZ = rotZ_;
    relativeToCamera = relativeToCamera_;
    faceCamera = faceCamera_;
    alpha = alpha_;
    LGeom::setRect(rect, 0, 0, width, height);
    halfWidth = width / 2;
    halfHeight = height / 2;
}

void LGLBackdrop::applyPlacement(const LGLCamera& camera) const
{
    SVector3D at = pos;
    if (relativeToCamera)
        at += camera.position;
    glTranslatef(at.x, at.y, at.z);
    glTranslatef(static_cast<float>(halfWidth), static_cast<float>(halfHeight), 0.0f);
    glRotatef(rotY, 0.0f, 1.0f, 0.0f);
    glRotatef(-rotX, 1.0f, 0.0f, 0.0f);
    glRotatef(rotZ, 0.0f, 0.0f, 1.0f);
    glTranslatef(static_cast<float>(-halfWidth), static_cast<float>(-halfHeight), 0.0f);
}

void LGLBackdrop::render(LGLCamera& camera)
{
    if (texture == 0)
        return;
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, 0.0f);
    glDisable(GL_CULL_FACE);
    glPushMatrix();

    if (faceCamera) {
        double yaw = 0.0, pitch = 0.0;
        // The viewing direction (view - position) through SVector3D::GetAngles.
        camera.GetViewAngles(yaw, pitch);
        glTranslatef(pos.x, pos.y, pos.z);
        glTranslatef(static_cast<float>(halfWidth), static_cast<float>(halfHeight), 0.0f);
        glRotated(-yaw * kDegreesPerRadian, 0.0, 1.0, 0.0);
        glRotated(180.0 - pitch * kDegreesPerRadian, 1.0, 0.0, 0.0);
        glTranslatef(static_cast<float>(-halfWidth), static_cast<float>(-halfHeight), 0.0f);
    } else {
        applyPlacement(camera);
    }

    const bool blended = alpha < 1.0f;
    if (blended) {
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glColor4f(1.0f, 1.0f, 1.0f, alpha);
    }

    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glBegin(GL_TRIANGLE_STRIP);
    glTexCoord2d(kTexLow, kTexHigh);
    glVertex3i(rect.left, rect.top, 0);
    glTexCoord2d(kTexHigh, kTexHigh);
    glVertex3i(rect.right, rect.top, 0);
    glTexCoord2d(kTexLow, kTexLow);
    glVertex3i(rect.left, rect.bottom, 0);
    glTexCoord2d(kTexHigh, kTexLow);
    glVertex3i(rect.right, rect.bottom, 0);
    glEnd();

    if (blended)
        glDisable(GL_BLEND);
    glPopMatrix();
    glDisable(GL_ALPHA_TEST);
    glEnable(GL_CULL_FACE);
}

void LGLBackdrop::renderFrame(LGLCamera& camera)
{
    if (texture == 0)
        return;
    glDisable(GL_TEXTURE_2D);
    glPushMatrix();
    applyPlacement(camera);
    glColor3f(1.0f, 1.0f, 1.0f);
    glLineWidth(2.0f);
    glBegin(GL_LINE_STRIP);
    glVertex3i(rect.left, rect.top, 0);
    glVertex3i(rect.right, rect.top, 0);
    glVertex3i(rect.right, rect.bottom, 0);
    glVertex3i(rect.left, rect.bottom, 0);
    glVertex3i(rect.left, rect.top, 0);
    glEnd();
    glPopMatrix();
    glLineWidth(1.0f);
    glEnable(GL_TEXTURE_2D);
}

void LGLBackdrop::dispose()
{
    if (texture != 0) {
        glDeleteTextures(1, &texture);
        texture = 0;
    }
}
