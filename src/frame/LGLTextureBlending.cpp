// LGLTextureBlending.cpp -- two-texture cross-fades through the ARB multitexture and combine
// extensions.
#include <ostrum_gl/frame/LGLTextureBlending.h>

#include <ostrum_gl/platform/LGLPlatform.h>

#include <GL/gl.h>
#include <GL/glext.h>

LGLTextureBlending::tActiveTextureProc LGLTextureBlending::glActiveTextureARB = nullptr;
LGLTextureBlending::tMultiTexCoord2fProc LGLTextureBlending::glMultiTexCoord2fARB = nullptr;

void LGLTextureBlending::Init()
{
    Init(LGLPlatform::getProcAddress);
}

void LGLTextureBlending::Init(tProcAddressLookup lookup)
{
    glActiveTextureARB = reinterpret_cast<tActiveTextureProc>(lookup ? lookup("glActiveTextureARB") : nullptr);
    glMultiTexCoord2fARB = reinterpret_cast<tMultiTexCoord2fProc>(lookup ? lookup("glMultiTexCoord2fARB") : nullptr);
    if (glActiveTextureARB == nullptr || glMultiTexCoord2fARB == nullptr) {
        LGLPlatform::messageBox("Multitexturing not supported!", "Error");
        LGLPlatform::postQuit();
    }
}

void LGLTextureBlending::Activate(unsigned int texture0, unsigned int texture1, float weight)
{
    glActiveTextureARB(GL_TEXTURE0_ARB);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, texture0);

    glActiveTextureARB(GL_TEXTURE1_ARB);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, texture1);

    SetInterpolateCombiner();

    glColor4f(1.0f, 1.0f, 1.0f, weight);
}

void LGLTextureBlending::Disactivate()
{
    glActiveTextureARB(GL_TEXTURE1_ARB);
    glDisable(GL_TEXTURE_2D);
    glActiveTextureARB(GL_TEXTURE0_ARB);
    glDisable(GL_TEXTURE_2D);
}

void LGLTextureBlending::SetInterpolateCombiner()
{
    // previous * alpha + texture * (1 - alpha), the alpha being the primary colour's.
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_COMBINE_ARB);
    glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB_ARB, GL_INTERPOLATE_ARB);
    glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE0_RGB_ARB, GL_PREVIOUS_ARB);
    glTexEnvi(GL_TEXTURE_ENV, GL_OPERAND0_RGB_ARB, GL_SRC_COLOR);
    glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE1_RGB_ARB, GL_TEXTURE);
    glTexEnvi(GL_TEXTURE_ENV, GL_OPERAND1_RGB_ARB, GL_SRC_COLOR);
    glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE2_RGB_ARB, GL_PRIMARY_COLOR_ARB);
    glTexEnvi(GL_TEXTURE_ENV, GL_OPERAND2_RGB_ARB, GL_SRC_ALPHA);
}
