// LGLSkybox.cpp -- the sky box: face files, the box's display list, centring on the camera, fogged faces.
#include <ostrum_gl/scenery/LGLSkybox.h>

#include <ostrum_core/LFile.h>

#include <GL/gl.h>
#include <GL/glext.h>

const char* const LGLSkybox::kDefaultNames[LGLSkybox::kNumNames] = {
    "clear",  "clouds", "dawn",   "dusk",   "sunset",  "night",    "stars",  "storm",
    "overcast", "haze", "desert", "mountains", "island", "ocean", "arctic", "forest",
    "canyon", "volcano", "city",  "moon",   "nebula",  "space",    "alien"};

std::string LGLSkybox::skyboxDir;
std::vector<std::string> LGLSkybox::skyboxNames;

namespace {

const char* const kNumberedSuffix[LGLSkybox::kFaces] = {"_01", "_02", "_03", "_04", "_05", "_06"};
const char* const kDirectionSuffix[LGLSkybox::kFaces] = {"_rt", "_ft", "_lf", "_bk", "_up", "_dn"};

// One face strip: four corners with texture coordinates (0, 0), (1, 0), (0, 1), (1, 1).
void faceStrip(const int corners[4][3])
{
    static const int tex[4][2] = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};
    glBegin(GL_TRIANGLE_STRIP);
    for (int i = 0; i < 4; ++i) {
        glTexCoord2i(tex[i][0], tex[i][1]);
        glVertex3i(corners[i][0], corners[i][1], corners[i][2]);
    }
    glEnd();
}

// A strip over the whole fog square: top right, top left, bottom right, bottom left.
void fogSquareStrip(bool textured)
{
    const int s = LGLSkybox::kFogSize;
    glBegin(GL_TRIANGLE_STRIP);
    if (textured)
        glTexCoord2i(1, 1);
    glVertex2i(s, 0);
    if (textured)
        glTexCoord2i(0, 1);
    glVertex2i(0, 0);
    if (textured)
        glTexCoord2i(1, 0);
    glVertex2i(s, s);
    if (textured)
        glTexCoord2i(0, 0);
    glVertex2i(0, s);
    glEnd();
}

}  // namespace

LGLSkybox::LGLSkybox() : texSetBase(kLoadedSet), size{0, 0, 0}, halfSize{0, 0, 0}, displayList(kNoList)
{
    for (auto& set : faceTextures) {
        for (unsigned int& id : set)
            id = kNoTexture;
    }
    for (const char* name : kDefaultNames)
        skyboxNames.push_back(name);
}

void LGLSkybox::setDir(std::string dir)
{
    skyboxDir = dir;
}

int LGLSkybox::getNumTexIDs()
{
    return static_cast<int>(skyboxNames.size());
}

std::string LGLSkybox::faceSuffix(int k, bool numbered)
{
    if (k < 0 || k >= kFaces)
        return std::string();
    return numbered ? kNumberedSuffix[k] : kDirectionSuffix[k];
}

// ---------------------------------------------------------------- loading

void LGLSkybox::loadTextures(std::string name, int w, int h, int d)
{
    const std::string stem = skyboxDir + "sky_" + name;
    bool numbered;
    std::string extension;
    if (LFile::fileExist(stem + "_01.bmp")) {
        numbered = true;
        extension = ".bmp";
    } else if (LFile::fileExist(stem + "_rt.bmp")) {
        numbered = false;
        extension = ".bmp";
    } else if (LFile::fileExist(stem + "_01.jpg")) {
        numbered = true;
        extension = ".jpg";
    } else {
        // The last probe (stem + "_rt.jpg") decides: found or not, the direction names in JPEG are
        // loaded, and a missing face ends the process in the texture maker.
        numbered = false;
        extension = ".jpg";
    }

    for (int k = 0; k < kFaces; ++k)
        LGL::CreateTexture(faceTextures[0][k], stem + faceSuffix(k, numbered) + extension);

    size[0] = w;
    size[1] = h;
    size[2] = d;
    halfSize[0] = w / 2;
    halfSize[1] = h / 2;
    halfSize[2] = d / 2;
    generateDL();
}

void LGLSkybox::loadTextures(std::string name, int cubeSize)
{
    loadTextures(name, cubeSize, cubeSize, cubeSize);
}

void LGLSkybox::loadTexturesByID(int id, int cubeSize)
{
    if (id < 0 || id > getNumTexIDs() - 1)
        return;
    loadTextures(skyboxNames[static_cast<size_t>(id)], cubeSize);
}

// ---------------------------------------------------------------- drawing

void LGLSkybox::render()
{
    const int W = size[0], H = size[1], D = size[2];
    // The faces in drawing order, each with its four strip corners.
    struct Face {
        int k;
        int corners[4][3];
    };
    const Face faces[kFaces] = {
        {2, {{0, 0, 0}, {W, 0, 0}, {0, H, 0}, {W, H, 0}}},
        {0, {{W, 0, D}, {0, 0, D}, {W, H, D}, {0, H, D}}},
        {4, {{W, H, D}, {0, H, D}, {W, H, 0}, {0, H, 0}}},
        {1, {{0, 0, D}, {0, 0, 0}, {0, H, D}, {0, H, 0}}},
        {3, {{W, 0, 0}, {W, 0, D}, {W, H, 0}, {W, H, D}}},
        {5, {{W, 0, 0}, {0, 0, 0}, {W, 0, D}, {0, 0, D}}},
    };

    glEnable(GL_TEXTURE_2D);
    glEnable(GL_CULL_FACE);
    const unsigned int* set = faceTextures[selectedSet()];
    for (const Face& face : faces) {
        if (set[face.k] == kNoTexture)
            continue;
        glBindTexture(GL_TEXTURE_2D, set[face.k]);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        faceStrip(face.corners);
    }
}

void LGLSkybox::generateDL()
{
    if (displayList != kNoList)
        glDeleteLists(displayList, 1);
    displayList = glGenLists(1);
    glNewList(displayList, GL_COMPILE);
    render();
    glEndList();
}

void LGLSkybox::renderDL(int x, int y, int z)
{
    if (displayList == kNoList)
        return;
    glPushMatrix();
    glTranslatef(static_cast<float>(x - halfSize[0]), static_cast<float>(y - halfSize[1]),
                 static_cast<float>(z - halfSize[2]));
    glCallList(displayList);
    glPopMatrix();
}

// ---------------------------------------------------------------- fog

void LGLSkybox::applyFog(double amount, LGL::tGLRGB colour)
{
    for (unsigned int id : faceTextures[0]) {
        if (id == kNoTexture)
            return;
    }

    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    glViewport(0, 0, kFogSize, kFogSize);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glOrtho(0.0, kFogSize, kFogSize, 0.0, -1.0, 1.0);
    glDisable(GL_DEPTH_TEST);

    // Only the first fog after loading makes the render textures; later ones draw into them again.
    if (texSetBase == kLoadedSet) {
        for (unsigned int& id : faceTextures[1])
            LGL::CreateRenderTexture(id, kFogSize, 4, GL_RGBA);
    }
    texSetBase = kLoadedSet;

    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
    for (int k = 0; k < kFaces; ++k) {
        glEnable(GL_TEXTURE_2D);
        glBindTexture(GL_TEXTURE_2D, faceTextures[0][k]);
        fogSquareStrip(true);
        glDisable(GL_TEXTURE_2D);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glColor4d(colour.r, colour.g, colour.b, amount);
        fogSquareStrip(false);
        glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
        glBindTexture(GL_TEXTURE_2D, faceTextures[1][k]);
        glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 0, 0, kFogSize, kFogSize, 0);
    }

    texSetBase = kFoggedSet;
    glEnable(GL_DEPTH_TEST);
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);

    generateDL();
}

// ---------------------------------------------------------------- release

void LGLSkybox::dispose()
{
    if (displayList != kNoList) {
        glDeleteLists(displayList, 1);
        displayList = kNoList;
    }
    for (auto& set : faceTextures) {
        for (unsigned int& id : set) {
            if (id != kNoTexture) {
                glDeleteTextures(1, &id);
                id = kNoTexture;
            }
        }
    }
    texSetBase = kLoadedSet;
}
