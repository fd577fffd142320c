// LGLAnimTexture.cpp -- flip-book animations: loading frame textures, stepping slots, drawing quads.
#include <ostrum_gl/effects/LGLAnimTexture.h>

#include <ostrum_core/LFile.h>
#include <ostrum_core/LString.h>
#include <ostrum_gl/frame/LGL.h>
#include <ostrum_gl/frame/LGLCamera.h>

#include <GL/gl.h>

#include <algorithm>
#include <cstdio>

namespace {

constexpr double kDegreesPerRadian = 57.29577951308232;

}  // namespace

std::vector<LGLAnimTexture::tAnim> LGLAnimTexture::anim;

LGLAnimTexture::LGLAnimTexture() : slots(), type(-1), defaultWidth(0), defaultHeight(0), loop(false)
{
    clearAll();
}

// ---------------------------------------------------------------- types

std::string LGLAnimTexture::frameFile(const std::string& directory, const std::string& name, int index)
{
    std::string base = directory;
    if (!base.empty() && base.back() != '/')
        base += '/';
    base += name + LString::trimZInt(index, 3);
    if (LFile::fileExist(base + ".tga"))
        return base + ".tga";
    return base + ".bmp";
}

void LGLAnimTexture::load(int& type, std::string directory, std::string name, int frameCount, int frameDelay)
{
    tAnim loaded = {};
    loaded.frameDelay = frameDelay;
    const int wanted = std::clamp(frameCount, 0, kMaxFrames);
    for (int i = 0; i < wanted; ++i) {
        std::string file = frameFile(directory, name, i);
        if (!LFile::fileExist(file)) {
            std::printf("ERROR LGLAnimTexture::load: frame file \"%s\" not found\n", file.c_str());
            break;
        }
        unsigned int texture = 0;
        int width = 0, height = 0;
        LGL::CreateTransparentTexture(texture, file, 0, kKeyColor, kKeyColor, kKeyColor, 0, width, height);
        loaded.frameTextures[i] = texture;
        // The picture is stretched over its whole texture: it spans all of it.
        loaded.texExtent[i] = width > 0 && height > 0 ? 1.0 : 0.0;
        loaded.texStart[i] = 0.5 - loaded.texExtent[i] * 0.5;
        loaded.frameCount = i + 1;
    }
    type = static_cast<int>(anim.size());
    anim.push_back(loaded);
}

void LGLAnimTexture::dispose()
{
    for (tAnim& a : anim) {
        if (a.frameCount > 0)
            glDeleteTextures(a.frameCount, a.frameTextures);
    }
    anim.clear();
}

const LGLAnimTexture::tAnim* LGLAnimTexture::currentType() const
{
    if (type < 0 || type >= static_cast<int>(anim.size()))
        return nullptr;
    return &anim[static_cast<size_t>(type)];
}

// ---------------------------------------------------------------- slots

void LGLAnimTexture::init(int type_, int width, int height, bool loop_)
{
    type = type_;
    defaultWidth = width;
    defaultHeight = height;
    loop = loop_;
    clearAll();
}

void LGLAnimTexture::clearAll()
{
    for (tSlot& slot : slots)
        slot.active = false;
}

void LGLAnimTexture::schedule(SVector3D position, int width, int height)
{
    for (tSlot& slot : slots) {
        if (slot.active)
            continue;
        slot.position = position;
        slot.width = width;
        slot.height = height;
        slot.lastSwitch = 0;
        slot.frame = 0;
        slot.active = true;
        return;
    }
}

void LGLAnimTexture::schedule(SVector3D position)
{
    schedule(position, defaultWidth, defaultHeight);
}

void LGLAnimTexture::handle()
{
    const tAnim* a = currentType();
    if (a == nullptr)
        return;
    const int64_t now = timer.read();
    for (tSlot& slot : slots) {
        if (!slot.active)
            continue;
        if (a->frameCount <= 0) {
            slot.active = false;
            continue;
        }
        if (now - slot.lastSwitch > a->frameDelay) {
            ++slot.frame;
            slot.lastSwitch = now;
        }
        if (slot.frame == a->frameCount) {
            slot.frame = 0;
            slot.active = loop;
        }
    }
}

// ---------------------------------------------------------------- drawing

void LGLAnimTexture::renderQuad(tRect area, int frame)
{
    const tAnim* a = currentType();
    if (a == nullptr || frame < 0 || frame >= a->frameCount)
        return;
    glBindTexture(GL_TEXTURE_2D, a->frameTextures[frame]);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glColor4f(1.0f, 1.0f, 1.0f, 0.9f);
    const double s0 = a->texStart[frame];
    const double s1 = a->texStart[frame] + a->texExtent[frame];
    glBegin(GL_QUADS);
    glTexCoord2d(s0, s1);
    glVertex3i(area.left, area.top, 0);
    glTexCoord2d(s1, s1);
    glVertex3i(area.right, area.top, 0);
    glTexCoord2d(s1, s0);
    glVertex3i(area.right, area.bottom, 0);
    glTexCoord2d(s0, s0);
    glVertex3i(area.left, area.bottom, 0);
    glEnd();
    glDisable(GL_BLEND);
}

void LGLAnimTexture::render(LGLCamera& camera)
{
    if (currentType() == nullptr)
        return;
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_CULL_FACE);
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, 0.0f);
    for (const tSlot& slot : slots) {
        if (!slot.active)
            continue;
        double yaw = 0.0, pitch = 0.0;
        camera.GetViewAngles(yaw, pitch);
        glPushMatrix();
        glTranslatef(slot.position.x, slot.position.y, slot.position.z);
        glRotated(-yaw * kDegreesPerRadian, 0.0, 1.0, 0.0);
        glRotated(180.0 - pitch * kDegreesPerRadian, 1.0, 0.0, 0.0);
        glTranslatef(static_cast<float>(-(slot.width / 2)), static_cast<float>(-(slot.height / 2)), 0.0f);
        renderQuad(tRect{0, 0, slot.width, slot.height}, slot.frame);
        glPopMatrix();
    }
    glDisable(GL_ALPHA_TEST);
}

void LGLAnimTexture::render_raw()
{
    if (currentType() == nullptr)
        return;
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_CULL_FACE);
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, 0.0f);
    for (const tSlot& slot : slots) {
        if (!slot.active)
            continue;
        glPushMatrix();
        glTranslatef(slot.position.x, slot.position.y, slot.position.z);
        renderQuad(tRect{0, 0, defaultWidth, defaultHeight}, slot.frame);
        glPopMatrix();
    }
    glDisable(GL_ALPHA_TEST);
}
