// Object3DS.cpp -- the model object: loading, configuration, measuring and scaling, display lists and
// rendering passes, texture animations, skeletal figures read from An8 text, and geometry queries.
//
// Index of sections:
//   [SECTION] construction and copies
//   [SECTION] loading and configuration
//   [SECTION] bounding volumes and scaling
//   [SECTION] rendering
//   [SECTION] time-varying textures
//   [SECTION] the An8 reader
//   [SECTION] figures
//   [SECTION] geometry queries
#include <ostrum_gl/models/Object3DS.h>

#include <ostrum_core/LFile.h>
#include <ostrum_core/LGeom.h>
#include <ostrum_core/LString.h>
#include <ostrum_gl/frame/LGL.h>

#include <GL/freeglut.h>
#include <GL/gl.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

constexpr double kDegreesPerRadian = 57.29577951308232;
constexpr const char* kAxisNames[3] = {"X", "Y", "Z"};

// A double as an int: truncated toward zero, clamped to the int range, 0 for not-a-number.
int toInt(double v)
{
    if (std::isnan(v))
        return 0;
    if (v >= static_cast<double>(INT_MAX))
        return INT_MAX;
    if (v <= static_cast<double>(INT_MIN))
        return INT_MIN;
    return static_cast<int>(v);
}

// The leading decimal integer of a text as atoi reads it, clamped to the int range.
int atoiClamped(const std::string& text)
{
    errno = 0;
    const long long v = std::strtoll(text.c_str(), nullptr, 10);
    if (v > INT_MAX)
        return INT_MAX;
    if (v < INT_MIN)
        return INT_MIN;
    return static_cast<int>(v);
}

// The words of a line: split at blanks and tabs, empty pieces dropped.
std::vector<std::string> words(const std::string& line)
{
    std::vector<std::string> out;
    for (std::string& piece : LString::split(line, " \t"))
        if (!piece.empty())
            out.push_back(std::move(piece));
    return out;
}

bool startsWith(const std::string& text, const char* prefix)
{
    return text.compare(0, std::strlen(prefix), prefix) == 0;
}

// Reads one line; a trailing '\r' of a "\r\n" file is dropped.
bool getLine(std::istream& in, std::string& line)
{
    if (!std::getline(in, line))
        return false;
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return true;
}

// The texts between the first pairs of double quotes on a line, in order (at most `count`).
std::vector<std::string> quotedTexts(const std::string& line, size_t count)
{
    std::vector<std::string> out;
    size_t pos = 0;
    while (out.size() < count) {
        const size_t open = line.find('"', pos);
        if (open == std::string::npos)
            break;
        const size_t close = line.find('"', open + 1);
        if (close == std::string::npos)
            break;
        out.push_back(line.substr(open + 1, close - open - 1));
        pos = close + 1;
    }
    return out;
}

std::string quotedText(const std::string& line)
{
    std::vector<std::string> q = quotedTexts(line, 1);
    return q.empty() ? std::string() : q[0];
}

// Opening minus closing braces of a line, quoted text left out.
int braceDelta(const std::string& line)
{
    int delta = 0;
    bool quoted = false;
    for (char c : line) {
        if (c == '"')
            quoted = !quoted;
        else if (!quoted && c == '{')
            ++delta;
        else if (!quoted && c == '}')
            --delta;
    }
    return delta;
}

SVector3D vec(const CVector3& v)
{
    return SVector3D(v.x, v.y, v.z);
}

CVector3 cvec(float x, float y, float z)
{
    CVector3 v;
    v.x = x;
    v.y = y;
    v.z = z;
    return v;
}

CVector3 sub(const CVector3& a, const CVector3& b)
{
    return cvec(a.x - b.x, a.y - b.y, a.z - b.z);
}

CVector3 cross(const CVector3& a, const CVector3& b)
{
    return cvec(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

float dot(const CVector3& a, const CVector3& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

bool inBox(float x, float y, float z, const SVector3D& lo, const SVector3D& hi)
{
    return lo.x <= x && x <= hi.x && lo.y <= y && y <= hi.y && lo.z <= z && z <= hi.z;
}

// The three corners of a face, or false when one of its indices names no vertex.
bool corners(const t3DSObject& o, const t3DSFace& f, const CVector3*& p0, const CVector3*& p1, const CVector3*& p2)
{
    const int n = static_cast<int>(o.pVerts.size());
    for (int c = 0; c < 3; ++c)
        if (f.vertIndex[c] < 0 || f.vertIndex[c] >= n)
            return false;
    p0 = &o.pVerts[f.vertIndex[0]];
    p1 = &o.pVerts[f.vertIndex[1]];
    p2 = &o.pVerts[f.vertIndex[2]];
    return true;
}

// Faces of a sub-object that can be walked: never more than its array holds.
int faceCount(const t3DSObject& o)
{
    return std::max(0, std::min(o.numOfFaces, static_cast<int>(o.pFaces.size())));
}

int vertCount(const t3DSObject& o)
{
    return std::max(0, std::min(o.numOfVerts, static_cast<int>(o.pVerts.size())));
}

// The largest distance from a centre to the eight corners of a box.
double boxRadius(double cx, double cy, double cz, double x0, double x1, double y0, double y1, double z0, double z1)
{
    const SVector3D centre(static_cast<float>(cx), static_cast<float>(cy), static_cast<float>(cz));
    double r = 0.0;
    for (int i = 0; i < 8; ++i) {
        const SVector3D corner(static_cast<float>((i & 1) ? x1 : x0), static_cast<float>((i & 2) ? y1 : y0),
                               static_cast<float>((i & 4) ? z1 : z0));
        r = std::max(r, LGeom::pointDist(centre, corner));
    }
    return r;
}

tBone* copyBone(const tBone* bone)
{
    if (bone == nullptr)
        return nullptr;
    tBone* copy = new tBone(*bone);
    for (tBone*& child : copy->children)
        child = copyBone(child);
    return copy;
}

int countBones(const tBone* bone)
{
    if (bone == nullptr)
        return 0;
    int n = 1;
    for (const tBone* child : bone->children)
        n += countBones(child);
    return n;
}

// Axis and angle (degrees) of a rest orientation, as glRotate takes them.
void axisAngle(const Quaternion& q, SVector3D& axis, double& degrees)
{
    float angle = 0.0f;
    q.GetAxisAngle(axis, angle);
    degrees = angle * kDegreesPerRadian;
}

}  // namespace

// ============================================================ [SECTION] construction and copies

Object3DS::Object3DS()
    : minX(0.0), maxX(0.0), minY(0.0), maxY(0.0), minZ(0.0), maxZ(0.0),
      centerX(0.0), centerY(0.0), centerZ(0.0),
      subMinX(), subMaxX(), subMinY(), subMaxY(), subMinZ(), subMaxZ(),
      subCenterX(), subCenterY(), subCenterZ(),
      radius(0.0), subRadius(), numFacesTotal(0), lodDistance(1000), verbose(false),
      boneWorldPos(), boneTurnX(), boneTurnY(), boneTurnZ(),
      numFrames(0), curFrame(0.0), showBones(0), frameStep(0.2),
      fileName(), opaqueList(0), transparentList(0), textureType(0), textures(),
      numMovies(0), root(nullptr)
{
    for (int i = 0; i < MAX_TEXTURES; ++i) {
        animSlot[i] = -1;
        movieSlot[i] = -1;
    }
    for (SVector3D& p : boneWorldPos)
        p = SVector3D(0.0f, 0.0f, 0.0f, 1.0f);
}

Object3DS::Object3DS(const Object3DS& other) : Object3DS()
{
    copyFrom(other);
}

Object3DS::Object3DS(Object3DS&& other) noexcept : Object3DS()
{
    *this = std::move(other);
}

Object3DS& Object3DS::operator=(const Object3DS& other)
{
    if (this != &other)
        copyFrom(other);
    return *this;
}

Object3DS& Object3DS::operator=(Object3DS&& other) noexcept
{
    if (this == &other)
        return *this;
    // Everything is copied as plain values; the bone tree is handed over instead of duplicated.
    tBone* tree = other.root;
    other.root = nullptr;
    copyFrom(other);
    disposeBone(root);
    root = tree;
    jointAngles = std::move(other.jointAngles);
    animRecords = std::move(other.animRecords);
    model = std::move(other.model);
    subObjectLists = std::move(other.subObjectLists);
    return *this;
}

Object3DS::~Object3DS()
{
    disposeBone(root);
}

void Object3DS::copyFrom(const Object3DS& o)
{
    minX = o.minX; maxX = o.maxX; minY = o.minY; maxY = o.maxY; minZ = o.minZ; maxZ = o.maxZ;
    centerX = o.centerX; centerY = o.centerY; centerZ = o.centerZ;
    std::copy(std::begin(o.subMinX), std::end(o.subMinX), subMinX);
    std::copy(std::begin(o.subMaxX), std::end(o.subMaxX), subMaxX);
    std::copy(std::begin(o.subMinY), std::end(o.subMinY), subMinY);
    std::copy(std::begin(o.subMaxY), std::end(o.subMaxY), subMaxY);
    std::copy(std::begin(o.subMinZ), std::end(o.subMinZ), subMinZ);
    std::copy(std::begin(o.subMaxZ), std::end(o.subMaxZ), subMaxZ);
    std::copy(std::begin(o.subCenterX), std::end(o.subCenterX), subCenterX);
    std::copy(std::begin(o.subCenterY), std::end(o.subCenterY), subCenterY);
    std::copy(std::begin(o.subCenterZ), std::end(o.subCenterZ), subCenterZ);
    radius = o.radius;
    std::copy(std::begin(o.subRadius), std::end(o.subRadius), subRadius);
    numFacesTotal = o.numFacesTotal;
    lodDistance = o.lodDistance;
    verbose = o.verbose;
    std::copy(std::begin(o.boneWorldPos), std::end(o.boneWorldPos), boneWorldPos);
    std::copy(std::begin(o.boneTurnX), std::end(o.boneTurnX), boneTurnX);
    std::copy(std::begin(o.boneTurnY), std::end(o.boneTurnY), boneTurnY);
    std::copy(std::begin(o.boneTurnZ), std::end(o.boneTurnZ), boneTurnZ);
    sequenceName = o.sequenceName;
    figureName = o.figureName;
    numFrames = o.numFrames;
    curFrame = o.curFrame;
    jointAngles = o.jointAngles;
    showBones = o.showBones;
    frameStep = o.frameStep;
    std::memcpy(fileName, o.fileName, sizeof fileName);
    opaqueList = o.opaqueList;
    transparentList = o.transparentList;
    subObjectLists = o.subObjectLists;
    textureType = o.textureType;
    std::copy(std::begin(o.textures), std::end(o.textures), textures);
    std::copy(std::begin(o.animSlot), std::end(o.animSlot), animSlot);
    animRecords = o.animRecords;
    std::copy(std::begin(o.movieSlot), std::end(o.movieSlot), movieSlot);
    for (int i = 0; i < MAX_MOVIES; ++i)
        movies[i] = o.movies[i];
    numMovies = o.numMovies;
    loader = o.loader;
    model = o.model;
    animFileName = o.animFileName;
    tBone* tree = copyBone(o.root);
    disposeBone(root);
    root = tree;
}

// ============================================================ [SECTION] loading and configuration

void Object3DS::load(std::string name)
{
    std::strncpy(fileName, name.c_str(), sizeof fileName - 1);
    fileName[sizeof fileName - 1] = '\0';

    animRecords.clear();
    textureType = 0;
    model.numOfMaterials = 0;
    model.numOfObjects = 0;

    const size_t slash = name.rfind('/');
    const std::string directory = slash == std::string::npos ? std::string() : name.substr(0, slash + 1);

    if (verbose)
        std::printf("Loading 3DS model \"%s\"...\n", name.c_str());
    loader.verbose = verbose;
    loader.import3DS(model, name.c_str());
    measure();
    if (verbose)
        std::printf("\n");

    if (model.numOfMaterials > MAX_TEXTURES) {
        std::printf("ERROR: Too many textures. Increase MAX_TEXTURES\n");
        std::exit(-1);
    }

    const int materials = std::min(model.numOfMaterials, static_cast<int>(model.pMaterials.size()));
    for (int i = 0; i < materials; ++i) {
        t3DSMaterial& material = model.pMaterials[i];
        animSlot[i] = -1;
        movieSlot[i] = -1;
        material.textureId = -1;
        if (material.fileName[0] == '\0')
            continue;

        const std::string path = directory + material.fileName;
        const size_t dot = path.find('.');
        if (dot == std::string::npos || dot < 9) {
            std::printf("ERROR in Object3DS::load\n");
            std::exit(-1);
        }
        material.textureId = i;

        if (path.compare(dot - 8, 2, "_a") == 0)
            continue;  // an animated texture: the game sets up its frames
        if (path.compare(dot - 4, 4, "_avi") == 0)
            continue;  // a movie texture: the game opens the movie

        if (LFile::fileExist(path)) {
            if (verbose)
                std::printf("Loading texture \"%s\"...\n", path.c_str());
            LGL::CreateTexture(textures[i], path);
        } else {
            std::printf("** WARNING: Texture file \"%s\" not found!\n", path.c_str());
            LGL::CreateRenderTexture(textures[i], 16, 16, 3, GL_RGB);
        }
    }

    createObjectDL();

    numFacesTotal = 0;
    for (int k = 0; k < model.numOfObjects && k < static_cast<int>(model.pObject.size()); ++k)
        numFacesTotal += model.pObject[k].numOfFaces;

    loadFigure(name);
    lodDistance = 1000;
    loadConfig(name);
}

void Object3DS::loadConfig(std::string name)
{
    const std::string stem = name.size() < 5 ? name : name.substr(0, name.size() - 5);
    const std::string path = stem + "_cfg.txt";
    if (!LFile::fileExist(path))
        return;

    std::FILE* file = LFile::openFile(path, "rb");
    if (file == nullptr)
        return;
    std::string line;
    int c = 0;
    do {
        c = std::fgetc(file);
        if (c != EOF && c != '\n') {
            line += static_cast<char>(c);
            continue;
        }
        const std::string trimmed = LString::trimSpaces(line);
        line.clear();
        if (trimmed.size() <= 1 || trimmed[0] == '#')
            continue;
        const std::vector<std::string> tokens = words(trimmed);
        if (tokens.size() == 2 && tokens[0] == "lodDistance")
            lodDistance = atoiClamped(tokens[1]);
    } while (c != EOF);
    std::fclose(file);
}

int Object3DS::setTextureType(char* name)
{
    const char* dot = name == nullptr ? nullptr : std::strchr(name, '.');
    const std::string extension = dot == nullptr ? std::string() : std::string(dot + 1).substr(0, 3);
    if (extension == "BMP" || extension == "bmp")
        textureType = 0;
    else if (extension == "TGA")
        textureType = 1;
    else
        std::printf("%s is a non supported texture type\n", extension.c_str());
    return textureType;
}

void Object3DS::dispose()
{
    const int materials = std::min(model.numOfMaterials, MAX_TEXTURES);
    if (materials > 0)
        glDeleteTextures(materials, textures);
    model.pMaterials.clear();
    deleteLists();
    disposeFigure();
}

void Object3DS::toString()
{
    for (int k = 0; k < model.numOfObjects && k < static_cast<int>(model.pObject.size()); ++k) {
        const t3DSObject& o = model.pObject[k];
        std::printf("Name = %s\n", o.name);
        std::printf("NumOfFaces = %i\n", o.numOfFaces);
        std::printf("NumOfVerts = %i\n", o.numOfVerts);
        std::printf("NumOfTexVertex = %i\n\n", o.numOfTexVertex);
    }
}

// ============================================================ [SECTION] bounding volumes and scaling

int Object3DS::measuredObjects() const
{
    return std::max(0, std::min({model.numOfObjects, MAX_SUBOBJECTS, static_cast<int>(model.pObject.size())}));
}

void Object3DS::measure()
{
    if (model.numOfObjects > 0 && model.pObject.empty()) {
        std::printf("Error in Object3DS::measure!\n");
        std::exit(-1);
    }
    if (model.numOfObjects > MAX_SUBOBJECTS)
        std::printf("ERROR: Object3DS::measure: \"%s\" has %i sub-objects; bounding volumes are kept for the first "
                    "50\n",
                    fileName, model.numOfObjects);

    const int n = measuredObjects();
    bool anyBox = false;
    for (int k = 0; k < n; ++k) {
        const t3DSObject& o = model.pObject[k];
        bool first = true;
        double x0 = 0, x1 = 0, y0 = 0, y1 = 0, z0 = 0, z1 = 0;
        const int faces = faceCount(o);
        for (int f = 0; f < faces; ++f) {
            const CVector3* p[3];
            if (!corners(o, o.pFaces[f], p[0], p[1], p[2]))
                continue;
            for (const CVector3* v : p) {
                // Kept on purpose: the second extent is measured on -y.
                const double x = v->x, y = -v->y, z = v->z;
                if (first) {
                    x0 = x1 = x;
                    y0 = y1 = y;
                    z0 = z1 = z;
                    first = false;
                } else {
                    x0 = std::min(x0, x); x1 = std::max(x1, x);
                    y0 = std::min(y0, y); y1 = std::max(y1, y);
                    z0 = std::min(z0, z); z1 = std::max(z1, z);
                }
            }
        }
        subMinX[k] = x0; subMaxX[k] = x1;
        subMinY[k] = y0; subMaxY[k] = y1;
        subMinZ[k] = z0; subMaxZ[k] = z1;
        subCenterX[k] = (x0 + x1) * 0.5;
        subCenterY[k] = (y0 + y1) * 0.5;
        subCenterZ[k] = (z0 + z1) * 0.5;
        subRadius[k] = boxRadius(subCenterX[k], subCenterY[k], subCenterZ[k], x0, x1, y0, y1, z0, z1);
        if (first)
            continue;  // no face: the sub-object does not widen the model's box
        if (!anyBox) {
            minX = x0; maxX = x1; minY = y0; maxY = y1; minZ = z0; maxZ = z1;
            anyBox = true;
        } else {
            minX = std::min(minX, x0); maxX = std::max(maxX, x1);
            minY = std::min(minY, y0); maxY = std::max(maxY, y1);
            minZ = std::min(minZ, z0); maxZ = std::max(maxZ, z1);
        }
    }
    if (!anyBox)
        minX = maxX = minY = maxY = minZ = maxZ = 0.0;
    centerX = (minX + maxX) * 0.5;
    centerY = (minY + maxY) * 0.5;
    centerZ = (minZ + maxZ) * 0.5;
    radius = boxRadius(centerX, centerY, centerZ, minX, maxX, minY, maxY, minZ, maxZ);
}

void Object3DS::deleteLists()
{
    glDeleteLists(opaqueList, 1);
    glDeleteLists(transparentList, 1);
    for (unsigned int list : subObjectLists)
        if (list != 0)
            glDeleteLists(list, 1);
    subObjectLists.clear();
}

void Object3DS::scale(double factor)
{
    deleteLists();
    for (t3DSObject& o : model.pObject)
        for (CVector3& v : o.pVerts) {
            v.x = static_cast<float>(v.x * factor);
            v.y = static_cast<float>(v.y * factor);
            v.z = static_cast<float>(v.z * factor);
        }
    if (root != nullptr)
        scaleBone(root, 0, factor);
    createObjectDL();
    measure();
}

double Object3DS::scaleTo(double size)
{
    measure();
    const double factor = size / radius;
    scale(factor);
    return factor;
}

// ============================================================ [SECTION] rendering

const t3DSMaterial* Object3DS::materialOf(int m) const
{
    if (m < 0 || m >= model.numOfMaterials || m >= static_cast<int>(model.pMaterials.size()) || m >= MAX_TEXTURES)
        return nullptr;
    return &model.pMaterials[m];
}

unsigned int Object3DS::faceTexture(int m, bool useMovies)
{
    if (useMovies && movieSlot[m] > -1 && movieSlot[m] < MAX_MOVIES)
        return movies[movieSlot[m]].textures[0];
    if (animSlot[m] > -1 && animSlot[m] < static_cast<int>(animRecords.size())) {
        const tTexAnim& anim = animRecords[animSlot[m]];
        if (anim.curFrame >= 0 && anim.curFrame < static_cast<int>(anim.frameTextures.size()))
            return anim.frameTextures[anim.curFrame];
    }
    return textures[m];
}

bool Object3DS::subObjectHasAnimatedTexture(int k)
{
    if (k < 0 || k >= static_cast<int>(model.pObject.size()))
        return false;
    const t3DSObject& o = model.pObject[k];
    if (faceCount(o) == 0 || !o.hasTexture)
        return false;
    for (int f = 0; f < faceCount(o); ++f) {
        const int m = o.pFaces[f].matID;
        if (materialOf(m) != nullptr && (animSlot[m] > -1 || movieSlot[m] > -1))
            return true;
    }
    return false;
}

void Object3DS::createObjectDL()
{
    if (verbose)
        std::printf("Creating %i subobject DLs\n", model.numOfObjects);
    glEnable(GL_CULL_FACE);
    const int n = std::max(0, model.numOfObjects);
    subObjectLists.assign(static_cast<size_t>(n), 0u);
    for (int k = 0; k < n; ++k) {
        if (subObjectHasAnimatedTexture(k))
            continue;  // drawn immediately every frame with its current texture
        subObjectLists[k] = glGenLists(1);
        glNewList(subObjectLists[k], GL_COMPILE);
        if (!model.pObject.empty())
            renderSubObjectNonDL(k);
        glEndList();
    }

    opaqueList = glGenLists(1);
    glNewList(opaqueList, GL_COMPILE);
    for (int k = 0; k < n; ++k)
        renderSubObjectNonDL(k);
    glEndList();

    transparentList = glGenLists(1);
    glNewList(transparentList, GL_COMPILE);
    for (int k = 0; k < n; ++k)
        renderTranspFacesNonDL(k);
    glEndList();
}

namespace {

// Specular and emission of a face's material, set only when the material has them or the face before
// had them, so a run of plain faces issues no material calls. The opaque pass sets shininess 1, the
// transparent pass 0.
void setMaterialLight(double s, double e, GLfloat shininess, bool& specularSet, bool& emissionSet)
{
    if (s > 0.0 || specularSet) {
        const GLfloat colour[4] = {static_cast<GLfloat>(s), static_cast<GLfloat>(s), static_cast<GLfloat>(s), 1.0f};
        glMaterialfv(GL_FRONT, GL_SPECULAR, colour);
        glMaterialf(GL_FRONT, GL_SHININESS, shininess);
        specularSet = s > 0.0;
    }
    if (e > 0.0 || emissionSet) {
        const GLfloat colour[4] = {static_cast<GLfloat>(e), static_cast<GLfloat>(e), static_cast<GLfloat>(e), 1.0f};
        glMaterialfv(GL_FRONT, GL_EMISSION, colour);
        emissionSet = e > 0.0;
    }
}

// Back to no specular and no emission after a pass that left either set.
void clearMaterialLight(bool specularSet, bool emissionSet)
{
    const GLfloat black[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    if (specularSet) {
        glMaterialfv(GL_FRONT, GL_SPECULAR, black);
        glMaterialf(GL_FRONT, GL_SHININESS, 0.0f);
    }
    if (emissionSet)
        glMaterialfv(GL_FRONT, GL_EMISSION, black);
}

}  // namespace

void Object3DS::renderSubObjectNonDL(int k)
{
    if (k < 0 || k >= static_cast<int>(model.pObject.size()))
        return;
    const t3DSObject& o = model.pObject[k];
    const int faces = faceCount(o);
    if (faces == 0)
        return;
    bool specularSet = false;
    bool emissionSet = false;
    for (int f = 0; f < faces; ++f) {
        const t3DSFace& face = o.pFaces[f];
        const int m = face.matID;
        const t3DSMaterial* material = materialOf(m);
        if (material != nullptr && material->transparency != 0.0)
            continue;
        const double s = material ? material->specular : 0.0;
        const double e = material ? material->emissive : 0.0;
        setMaterialLight(s, e, 1.0f, specularSet, emissionSet);
        const bool textured = material != nullptr && material->fileName[0] != '\0';
        if (textured) {
            glColor3f(1.0f, 1.0f, 1.0f);
            glEnable(GL_TEXTURE_2D);
            glBindTexture(GL_TEXTURE_2D, faceTexture(m, true));
        } else {
            glDisable(GL_TEXTURE_2D);
        }
        const unsigned char white[3] = {255, 255, 255};
        const unsigned char* colour = material ? material->color : white;
        glBegin(GL_TRIANGLES);
        for (int c = 0; c < 3; ++c) {
            const int v = face.vertIndex[c];
            if (v < 0 || v >= static_cast<int>(o.pVerts.size()))
                continue;
            if (v < static_cast<int>(o.pNormals.size()))
                glNormal3f(o.pNormals[v].x, o.pNormals[v].y, o.pNormals[v].z);
            if (textured && o.numOfTexVertex > 0 && v < static_cast<int>(o.pTexVerts.size()))
                glTexCoord2f(o.pTexVerts[v].x, o.pTexVerts[v].y);
            if (!textured)
                glColor3ub(colour[0], colour[1], colour[2]);
            glVertex3f(o.pVerts[v].x, o.pVerts[v].y, o.pVerts[v].z);
            glColor4ub(255, 255, 255, 255);
        }
        glEnd();
        glColor3f(1.0f, 1.0f, 1.0f);
    }
    clearMaterialLight(specularSet, emissionSet);
}

void Object3DS::renderTranspFacesNonDL(int k)
{
    if (k < 0 || k >= static_cast<int>(model.pObject.size()))
        return;
    const t3DSObject& o = model.pObject[k];
    const int faces = faceCount(o);
    if (faces == 0)
        return;
    bool specularSet = false;
    bool emissionSet = false;
    for (int f = 0; f < faces; ++f) {
        const t3DSFace& face = o.pFaces[f];
        const int m = face.matID;
        const t3DSMaterial* material = materialOf(m);
        if (material == nullptr || !(material->transparency > 0.0))
            continue;
        const double t = material->transparency;
        const double s = material->specular;
        const double e = material->emissive;
        setMaterialLight(s, e, 0.0f, specularSet, emissionSet);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glDisable(GL_ALPHA_TEST);
        const bool textured = material->fileName[0] != '\0';
        if (textured) {
            glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
            glEnable(GL_TEXTURE_2D);
            glBindTexture(GL_TEXTURE_2D, faceTexture(m, false));
        } else {
            glDisable(GL_TEXTURE_2D);
        }
        // Rounded half away from zero: transparency 0.3 gives 179.
        const long alpha = std::max(0L, std::min(255L, std::lround((1.0 - t) * 255.0)));
        glBegin(GL_TRIANGLES);
        for (int c = 0; c < 3; ++c) {
            const int v = face.vertIndex[c];
            if (v < 0 || v >= static_cast<int>(o.pVerts.size()))
                continue;
            if (v < static_cast<int>(o.pNormals.size()))
                glNormal3f(o.pNormals[v].x, o.pNormals[v].y, o.pNormals[v].z);
            if (textured && o.numOfTexVertex > 0 && v < static_cast<int>(o.pTexVerts.size()))
                glTexCoord2f(o.pTexVerts[v].x, o.pTexVerts[v].y);
            if (!textured)
                glColor4ub(material->color[0], material->color[1], material->color[2], static_cast<GLubyte>(alpha));
            glVertex3f(o.pVerts[v].x, o.pVerts[v].y, o.pVerts[v].z);
            glColor4ub(255, 255, 255, 255);
        }
        glEnd();
        glColor3f(1.0f, 1.0f, 1.0f);
        glDisable(GL_BLEND);
        glEnable(GL_ALPHA_TEST);
    }
    clearMaterialLight(specularSet, emissionSet);
}

void Object3DS::renderSubObjectNormalsNonDL(int k)
{
    if (k < 0 || k >= static_cast<int>(model.pObject.size()))
        return;
    const t3DSObject& o = model.pObject[k];
    const float length = static_cast<float>(radius * 0.05);
    glDisable(GL_TEXTURE_2D);
    glColor3f(1.0f, 1.0f, 0.0f);
    glBegin(GL_LINES);
    const int n = std::min(vertCount(o), static_cast<int>(o.pNormals.size()));
    for (int v = 0; v < n; ++v) {
        const CVector3& p = o.pVerts[v];
        const CVector3& d = o.pNormals[v];
        glVertex3f(p.x, p.y, p.z);
        glVertex3f(p.x + d.x * length, p.y + d.y * length, p.z + d.z * length);
    }
    glEnd();
    glColor3f(1.0f, 1.0f, 1.0f);
}

void Object3DS::render()
{
    if (root != nullptr) {
        renderFigure();
        return;
    }
    for (int k = 0; k < model.numOfObjects; ++k) {
        if (k < static_cast<int>(subObjectLists.size()) && subObjectLists[k] != 0)
            glCallList(subObjectLists[k]);
        else
            renderSubObjectNonDL(k);
    }
    glCallList(transparentList);
}

void Object3DS::renderSubObject(int k)
{
    if (k < 0 || k >= static_cast<int>(subObjectLists.size()))
        return;
    if (subObjectLists[k] != 0)
        glCallList(subObjectLists[k]);
    else
        renderSubObjectNonDL(k);
}

void Object3DS::renderTranspFaces()
{
    glCallList(transparentList);
}

void Object3DS::renderNormals()
{
    for (int k = 0; k < model.numOfObjects; ++k)
        renderSubObjectNormalsNonDL(k);
}

void Object3DS::renderBoundingBox()
{
    glDisable(GL_CULL_FACE);
    glPushMatrix();
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glColor4f(0.0f, 0.2f, 0.5f, 0.1f);
    // The y extents are stored on -y: negated back here.
    LGL::RenderRectCube(static_cast<float>(minX), static_cast<float>(-minY), static_cast<float>(maxX),
                        static_cast<float>(-maxY), static_cast<float>(minZ), static_cast<float>(maxZ));
    glLineWidth(2.0f);
    glColor4f(1.0f, 1.0f, 1.0f, 0.5f);
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    LGL::RenderRectCube(static_cast<float>(minX), static_cast<float>(-minY), static_cast<float>(maxX),
                        static_cast<float>(-maxY), static_cast<float>(minZ), static_cast<float>(maxZ));
    glLineWidth(1.0f);
    glPopMatrix();
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glDisable(GL_BLEND);
    glColor3f(1.0f, 1.0f, 1.0f);
}

void Object3DS::renderBoundingSphere()
{
    glDisable(GL_TEXTURE_2D);
    glColor3f(1.0f, 0.0f, 0.0f);
    glutWireSphere(radius, 30, 30);
    glColor3f(1.0f, 1.0f, 1.0f);
    glEnable(GL_TEXTURE_2D);
}

void Object3DS::determineTransparentFaces(bool forceTransparency)
{
    std::printf("a\n");
    if (model.numOfObjects < 1) {
        std::printf("d\n");
        return;
    }
    for (int k = 0; k < model.numOfObjects && k < static_cast<int>(model.pObject.size()); ++k) {
        t3DSObject& o = model.pObject[k];
        for (int f = 0; f < faceCount(o); ++f) {
            const t3DSFace& face = o.pFaces[f];
            std::printf("materialID %i, MaterialSize %i\n", face.matID, static_cast<int>(model.pMaterials.size()));
            std::printf("face  %i, numFaces %i\n", f, o.numOfFaces);
            t3DSMaterial* material = const_cast<t3DSMaterial*>(materialOf(face.matID));
            if (material == nullptr)
                continue;  // no material to read: the face is left out
            if (forceTransparency)
                material->transparency = 0.8;
            std::printf("transp  %f\n", material->transparency);
            if (material->transparency > 0.0) {
                std::printf("1\n");
                o.transparentFaces.clear();  // kept on purpose: only the last transparent face stays
                std::printf("1b\n");
                o.transparentFaces.push_back(face);
                std::printf("2\n");
            }
        }
        std::printf("c\n");
    }
    std::printf("d\n");
}

// ============================================================ [SECTION] time-varying textures

void Object3DS::handleTextureAnimation()
{
    for (tTexAnim& a : animRecords) {
        const int n = static_cast<int>(a.frameEnds.size());
        if (n == 0 || a.curFrame < 0 || a.curFrame >= n)
            continue;
        int t = a.time + a.step;
        int f = a.curFrame;
        if (a.step > 0 && t >= a.frameEnds[f])
            f = f + 1;
        if (a.step < 0 && ((f > 0 && t <= a.frameEnds[f - 1]) || (f == 0 && t <= 0)))
            f = f - 1;
        if (f == n || f == -1) {
            if (a.mode == 2)
                a.step = -a.step;
            // The frame to go on from, and whether the time restarts at 0 or at the end of a frame.
            int target = f;
            int endOf = -1;
            if (a.step >= 1) {
                target = f == n ? 0 : 1;
                endOf = f == n ? -1 : 0;
            } else if (a.step < 0) {
                target = f == n ? n - 2 : n - 1;
                endOf = target;
            }
            if (target < 0 || target >= n) {
                // A record of one frame has no frame to turn to.
                f = 0;
                t = 0;
            } else {
                f = target;
                t = endOf < 0 ? 0 : a.frameEnds[endOf];
            }
        }
        a.curFrame = f;
        a.time = t;
    }
}

void Object3DS::handleTextureMovies()
{
    for (int i = 0; i < numMovies && i < MAX_MOVIES; ++i) {
        LGLAVI& movie = movies[i];
        long elapsed = LGLAVI::clockMs() - movie.start;
        long frame = movie.msPerFrame > 0 ? elapsed / movie.msPerFrame : elapsed;
        if (frame >= movie.lastFrame) {
            frame = 0;
            elapsed = 0;
            movie.start = LGLAVI::clockMs();
        }
        movie.elapsed = static_cast<int>(elapsed);
        movie.frame = static_cast<int>(frame);
        movie.grabAVIFrame(movie.frame);
    }
}

// ============================================================ [SECTION] the An8 reader

namespace {

// Tokens of An8 text, read across lines from a stream: braces, parentheses, quoted strings and
// words (numbers and keywords); blanks and /* comments */ are passed over. The scanner starts with a
// line already read and pulls further lines as it needs them; what follows the last token it was
// asked for on its line is dropped, so the stream continues at the next line.
class An8Scanner {
public:
    enum Kind { End, Open, Close, LParen, RParen, String, Word };
    struct Token {
        Kind kind = End;
        std::string text;
    };

    An8Scanner(std::istream& in, std::string first) : in_(in), line_(std::move(first)) {}

    Token next()
    {
        if (peeked_) {
            peeked_ = false;
            return peek_;
        }
        return scan();
    }

    const Token& peek()
    {
        if (!peeked_) {
            peek_ = scan();
            peeked_ = true;
        }
        return peek_;
    }

    // After an opening brace: everything up to its closing brace. False when the text ends first.
    bool skipBlock()
    {
        long depth = 1;
        while (depth > 0) {
            const Token t = next();
            if (t.kind == End)
                return false;
            if (t.kind == Open)
                ++depth;
            else if (t.kind == Close)
                --depth;
        }
        return true;
    }

    // After a keyword: its block, when one follows.
    bool skipValue()
    {
        if (peek().kind != Open)
            return true;
        next();
        return skipBlock();
    }

    // After a keyword: the strings, numbers and words directly inside its block (nested blocks are
    // passed over, their keywords kept in `names`). False when no block follows or the text ends.
    bool readValues(std::vector<std::string>& strings, std::vector<double>& numbers, std::vector<std::string>& names)
    {
        constexpr size_t kMaxValues = 16;
        if (peek().kind != Open)
            return false;
        next();
        for (;;) {
            const Token t = next();
            switch (t.kind) {
            case End:
                return false;
            case Close:
                return true;
            case Open:
                if (!skipBlock())
                    return false;
                break;
            case String:
                if (strings.size() < kMaxValues)
                    strings.push_back(t.text);
                break;
            case Word: {
                char* end = nullptr;
                const double v = std::strtod(t.text.c_str(), &end);
                if (end != t.text.c_str() && *end == '\0') {
                    if (numbers.size() < kMaxValues)
                        numbers.push_back(v);
                } else if (names.size() < kMaxValues) {
                    names.push_back(t.text);
                }
                break;
            }
            default:
                break;
            }
        }
    }

private:
    bool fill()
    {
        while (pos_ >= line_.size()) {
            if (ended_ || !std::getline(in_, line_)) {
                ended_ = true;
                line_.clear();
                pos_ = 0;
                return false;
            }
            pos_ = 0;
        }
        return true;
    }

    static bool blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f'; }
    static bool delimiter(char c) { return c == '{' || c == '}' || c == '(' || c == ')' || c == '"'; }

    bool commentStart() const { return line_[pos_] == '/' && pos_ + 1 < line_.size() && line_[pos_ + 1] == '*'; }

    Token scan()
    {
        for (;;) {
            if (!fill())
                return Token();
            const char c = line_[pos_];
            if (blank(c)) {
                ++pos_;
                continue;
            }
            if (commentStart()) {
                pos_ += 2;
                for (;;) {
                    if (!fill())
                        return Token();
                    const size_t close = line_.find("*/", pos_);
                    if (close != std::string::npos) {
                        pos_ = close + 2;
                        break;
                    }
                    pos_ = line_.size();
                }
                continue;
            }
            Token t;
            switch (c) {
            case '{': ++pos_; t.kind = Open; return t;
            case '}': ++pos_; t.kind = Close; return t;
            case '(': ++pos_; t.kind = LParen; return t;
            case ')': ++pos_; t.kind = RParen; return t;
            case '"':
                ++pos_;
                t.kind = String;
                while (pos_ < line_.size() && line_[pos_] != '"') {
                    if (line_[pos_] == '\\' && pos_ + 1 < line_.size())
                        ++pos_;
                    t.text += line_[pos_++];
                }
                if (pos_ < line_.size())
                    ++pos_;  // the closing quote; a string left open ends with its line
                return t;
            default:
                t.kind = Word;
                // The first character always belongs to the word (a NUL byte included), so every token
                // moves the scanner on.
                do
                    t.text += line_[pos_++];
                while (pos_ < line_.size() && !blank(line_[pos_]) && !delimiter(line_[pos_]) && !commentStart());
                return t;
            }
        }
    }

    std::istream& in_;
    std::string line_;
    size_t pos_ = 0;
    bool ended_ = false;
    bool peeked_ = false;
    Token peek_;
};

// What the bone reader needs besides the tokens: the file for messages and the next bone number.
struct BoneReading {
    std::string file;
    int nextId = 0;
};

Quaternion quaternionOf(const std::vector<double>& n)
{
    if (n.size() < 4)
        return Quaternion();
    const float x = static_cast<float>(n[0]), y = static_cast<float>(n[1]);
    const float z = static_cast<float>(n[2]), w = static_cast<float>(n[3]);
    const double norm = std::sqrt(static_cast<double>(x) * x + static_cast<double>(y) * y +
                                  static_cast<double>(z) * z + static_cast<double>(w) * w);
    if (!std::isfinite(norm) || norm <= 0.0)
        return Quaternion();
    return Quaternion(x, y, z, w);
}

float toFloat(double v)
{
    if (std::isnan(v))
        return 0.0f;
    return static_cast<float>(std::max(-3.0e38, std::min(3.0e38, v)));
}

// Inside a namedobject (or its base block) after the opening brace: origin and orientation.
void readNamedObjectBody(An8Scanner& sc, tBone* bone, bool bind, bool inBase)
{
    for (;;) {
        const An8Scanner::Token t = sc.next();
        if (t.kind == An8Scanner::End || t.kind == An8Scanner::Close)
            return;
        if (t.kind == An8Scanner::Open) {
            if (!sc.skipBlock())
                return;
            continue;
        }
        if (t.kind != An8Scanner::Word)
            continue;
        if (t.text == "origin" || t.text == "orientation") {
            std::vector<std::string> strings, names;
            std::vector<double> numbers;
            sc.readValues(strings, numbers, names);
            if (!bind)
                continue;
            if (t.text == "origin") {
                for (size_t i = 0; i < 3 && i < numbers.size(); ++i)
                    bone->obj_origin[i] = toFloat(numbers[i]);
            } else {
                bone->obj_orient = quaternionOf(numbers);
            }
        } else if (t.text == "base" && !inBase && sc.peek().kind == An8Scanner::Open) {
            sc.next();
            readNamedObjectBody(sc, bone, bind, true);
        } else if (!sc.skipValue()) {
            return;
        }
    }
}

// A bone block after its keyword "bone". Returns the bone, or null when it was not added.
tBone* readBoneBlock(An8Scanner& sc, BoneReading& reading)
{
    if (sc.peek().kind != An8Scanner::Open) {
        std::printf("ERROR!\n");
        return nullptr;
    }
    sc.next();
    std::string name;
    const bool named = sc.peek().kind == An8Scanner::String;
    if (named)
        name = sc.next().text;
    if (reading.nextId >= Object3DS::MAX_BONES) {
        std::printf("ERROR: Object3DS::readBone: \"%s\" has more than 50 bones; bone \"%s\" and the bones inside it "
                    "are skipped\n",
                    reading.file.c_str(), name.c_str());
        sc.skipBlock();
        return nullptr;
    }
    tBone* bone = new tBone;
    bone->id = reading.nextId++;
    bone->name = name;
    std::printf("Adding bone #%i \"%s\"\n", bone->id, name.c_str());
    if (!named)
        std::printf("ERROR!\n");

    bool bound = false;
    for (;;) {
        const An8Scanner::Token t = sc.next();
        if (t.kind == An8Scanner::End) {
            std::printf("ERROR!\n");
            return bone;
        }
        if (t.kind == An8Scanner::Close)
            return bone;
        if (t.kind == An8Scanner::Open) {
            sc.skipBlock();
            continue;
        }
        if (t.kind != An8Scanner::Word)
            continue;

        std::vector<std::string> strings, names;
        std::vector<double> numbers;
        if (t.text == "length") {
            sc.readValues(strings, numbers, names);
            if (!numbers.empty())
                bone->length = toInt(numbers[0]);
        } else if (t.text == "orientation") {
            sc.readValues(strings, numbers, names);
            bone->orientation = quaternionOf(numbers);
        } else if (t.text == "dof") {
            sc.readValues(strings, numbers, names);
            int axis = -1;
            for (int a = 0; a < 3 && !strings.empty(); ++a)
                if (strings[0] == kAxisNames[a])
                    axis = a;
            if (axis < 0)
                continue;
            tBone::tDof& dof = bone->dof[axis];
            dof.min = numbers.size() > 0 ? numbers[0] : 0.0;
            dof.def = numbers.size() > 1 ? numbers[1] : 0.0;
            dof.max = numbers.size() > 2 ? numbers[2] : 0.0;
            dof.type = tBone::DofLimited;
            for (const std::string& n : names) {
                if (n == "locked")
                    dof.type = tBone::DofFixed;
                else if (n == "unlimited")
                    dof.type = tBone::DofUnlimited;
            }
        } else if (t.text == "namedobject") {
            if (sc.peek().kind != An8Scanner::Open)
                continue;
            sc.next();
            std::string object;
            if (sc.peek().kind == An8Scanner::String)
                object = sc.next().text;
            if (bound) {
                std::printf("** WARNING: Object3DS::readBone: bone \"%s\" is already bound to \"%s\"; namedobject "
                            "\"%s\" is ignored\n",
                            bone->name.c_str(), bone->obj_name.c_str(), object.c_str());
                readNamedObjectBody(sc, bone, false, false);
                continue;
            }
            bound = true;
            bone->obj_name = object;
            std::printf("bone[%i] assigned to 3DS %s\n", bone->id, object.c_str());
            readNamedObjectBody(sc, bone, true, false);
        } else if (t.text == "bone") {
            tBone* child = readBoneBlock(sc, reading);
            if (child != nullptr)
                bone->children.push_back(child);
        } else {
            sc.skipValue();
        }
    }
}

}  // namespace

void Object3DS::readAnimation(std::istream& in)
{
    bool figureRead = false;
    bool sequenceRead = false;
    std::string line;
    while (getLine(in, line)) {
        if (startsWith(line, "figure")) {
            if (!figureRead) {
                figureRead = true;
                readFigure(in, line);
            } else {
                std::printf("** WARNING: Object3DS::loadFigure: \"%s\" holds more than one figure; the first is used\n",
                            animFileName.c_str());
                An8Scanner sc(in, line);
                while (sc.peek().kind != An8Scanner::Open && sc.peek().kind != An8Scanner::End)
                    sc.next();
                sc.skipValue();
            }
        } else if (startsWith(line, "sequence")) {
            if (!sequenceRead) {
                sequenceRead = true;
                readSequence(in, line);
            } else {
                std::printf("** WARNING: Object3DS::loadFigure: \"%s\" holds more than one sequence; the first is "
                            "used\n",
                            animFileName.c_str());
                int depth = braceDelta(line);
                while (depth > 0 && getLine(in, line))
                    depth += braceDelta(line);
            }
        }
    }
    assignObjects2Figure();
    writeBoneData(root, 0);
}

void Object3DS::readFigure(std::ifstream& in, std::string line)
{
    readFigure(static_cast<std::istream&>(in), std::move(line));
}

void Object3DS::readFigure(std::istream& in, std::string line)
{
    An8Scanner sc(in, std::move(line));
    sc.next();  // "figure"
    if (sc.peek().kind != An8Scanner::Open)
        return;
    sc.next();
    if (sc.peek().kind == An8Scanner::String)
        sc.next();  // the figure's own name; the sequence names the figure it animates
    BoneReading reading{animFileName, countBones(root)};
    for (;;) {
        const An8Scanner::Token t = sc.next();
        if (t.kind == An8Scanner::End || t.kind == An8Scanner::Close)
            return;
        if (t.kind == An8Scanner::Open) {
            sc.skipBlock();
        } else if (t.kind == An8Scanner::Word && t.text == "bone" && root == nullptr) {
            root = readBoneBlock(sc, reading);
        } else if (t.kind == An8Scanner::Word) {
            sc.skipValue();  // a second root bone or anything else of the figure
        }
    }
}

void Object3DS::readBone(std::ifstream& in, std::string line, tBone*& bone)
{
    readBone(static_cast<std::istream&>(in), std::move(line), bone);
}

void Object3DS::readBone(std::istream& in, std::string line, tBone*& bone)
{
    An8Scanner sc(in, std::move(line));
    const An8Scanner::Token t = sc.next();
    if (t.kind != An8Scanner::Word || t.text != "bone") {
        std::printf("ERROR!\n");
        return;
    }
    BoneReading reading{animFileName, countBones(root)};
    disposeBone(bone);
    bone = readBoneBlock(sc, reading);
}

void Object3DS::readSequence(std::ifstream& in, std::string line)
{
    readSequence(static_cast<std::istream&>(in), std::move(line));
}

void Object3DS::readSequence(std::istream& in, std::string line)
{
    jointAngles.clear();
    sequenceName = quotedText(line);
    figureName.clear();
    numFrames = 0;
    curFrame = 0.0;
    int depth = braceDelta(line);
    if (depth <= 0)
        return;

    std::string next;
    if (!getLine(in, next))
        return;
    figureName = quotedText(next);
    depth += braceDelta(next);
    if (depth <= 0)
        return;

    if (!getLine(in, next))
        return;
    const std::vector<std::string> frames = words(LString::trimSpaces(next));
    if (frames.size() >= 3)
        numFrames = atoiClamped(frames[2]);
    curFrame = 0.0;
    depth += braceDelta(next);

    int track = -1;
    while (depth > 0 && getLine(in, next)) {
        const std::vector<std::string> tokens = words(LString::trimSpaces(next));
        if (!tokens.empty() && tokens[0] == "jointangle") {
            const std::vector<std::string> quoted = quotedTexts(next, 2);
            int axis = -1;
            for (int a = 0; a < 3 && quoted.size() == 2; ++a)
                if (quoted[1] == kAxisNames[a])
                    axis = a;
            track = -1;
            if (axis >= 0) {
                tJointAngle angle;
                angle.boneName = quoted[0];
                angle.axis = axis;
                jointAngles.push_back(angle);
                track = static_cast<int>(jointAngles.size()) - 1;
            }
        } else if (!tokens.empty() && tokens[0] == "floatkey" && track >= 0 && tokens.size() >= 4) {
            tFloatKey key;
            key.frame = atoiClamped(tokens[2]);
            key.angle = std::atof(tokens[3].c_str());
            jointAngles[track].keys.push_back(key);
        }
        depth += braceDelta(next);
    }
}

// ============================================================ [SECTION] figures

void Object3DS::loadFigure(std::string name)
{
    const std::string stem = name.size() < 4 ? name : name.substr(0, name.size() - 4);
    const std::string path = stem + "_as.an8";
    if (!LFile::fileExist(path))
        return;
    disposeFigure();
    animFileName = path;
    std::ifstream in(LFile::resolvePath(path));
    if (!in.is_open()) {
        std::printf("Cannot open file '%s'!\n\n", path.c_str());
        std::exit(3);
    }
    std::printf("Loading animation file \"%s\"...\n\n", path.c_str());
    readAnimation(in);
}

void Object3DS::disposeFigure()
{
    disposeBone(root);
}

void Object3DS::disposeBone(tBone*& bone)
{
    if (bone == nullptr)
        return;
    for (tBone*& child : bone->children)
        disposeBone(child);
    delete bone;
    bone = nullptr;
}

void Object3DS::assign3DS2Bone(tBone* bone)
{
    if (bone == nullptr)
        return;
    bone->obj_id = -1;
    for (int k = 0; k < model.numOfObjects && k < static_cast<int>(model.pObject.size()); ++k)
        if (bone->obj_name == model.pObject[k].name) {
            bone->obj_id = k;
            break;
        }
    std::printf("bone: \"%s\" assigned to id %i\n", bone->name.c_str(), bone->obj_id);
    for (tBone* child : bone->children)
        assign3DS2Bone(child);
}

void Object3DS::assignObjects2Figure()
{
    assign3DS2Bone(root);
}

void Object3DS::writeSequenceData()
{
    std::printf("Sequence:    \"%s\"\n", sequenceName.c_str());
    std::printf("Figure name: \"%s\"\n", figureName.c_str());
    std::printf("NumFrames:   %i\n", numFrames);
    for (const tJointAngle& track : jointAngles) {
        std::printf("JointAngle: \"%s\"\n", track.boneName.c_str());
        std::printf("Axis:        %i\n", track.axis);
        for (const tFloatKey& key : track.keys)
            std::printf("  FloatKey frame: %i, angle: %s\n", key.frame, LString::dtoa(key.angle).c_str());
    }
}

void Object3DS::writeBoneData(tBone* bone, int level)
{
    if (bone == nullptr)
        return;
    const std::string in(static_cast<size_t>(std::max(0, level)) * 2, ' ');
    const char* p = in.c_str();
    std::printf("%sBone \"%s\"\n", p, bone->name.c_str());
    std::printf("%s length = %i\n", p, bone->length);
    std::printf("%s orient = %s\n", p, bone->orientation.asString().c_str());
    for (int a = 0; a < 3; ++a) {
        const tBone::tDof& dof = bone->dof[a];
        if (dof.type == tBone::DofFixed) {
            std::printf("%s dof[%s] fixed\n", p, kAxisNames[a]);
        } else if (dof.type == tBone::DofLimited) {
            std::printf("%s dof[%s].min = %s\n", p, kAxisNames[a], LString::dtoa(dof.min).c_str());
            std::printf("%s dof[%s].def = %s\n", p, kAxisNames[a], LString::dtoa(dof.def).c_str());
            std::printf("%s dof[%s].max = %s\n", p, kAxisNames[a], LString::dtoa(dof.max).c_str());
        } else {
            std::printf("%s dof[%s] unlimited free\n", p, kAxisNames[a]);
        }
    }
    std::printf("%s obj_name = \"%s\"\n", p, bone->obj_name.c_str());
    std::printf("%s obj_id   = %i\n", p, bone->obj_id);
    std::printf("%s obj_origin = (%s, %s, %s)\n", p, LString::dtoa(bone->obj_origin[0]).c_str(),
                LString::dtoa(bone->obj_origin[1]).c_str(), LString::dtoa(bone->obj_origin[2]).c_str());
    std::printf("%s obj_orient = %s\n", p, bone->obj_orient.asString().c_str());
    for (tBone* child : bone->children)
        writeBoneData(child, level + 1);
}

void Object3DS::getAnimAngles(const std::string& boneName, double& ax, double& ay, double& az)
{
    ax = ay = az = 0.0;
    double* out[3] = {&ax, &ay, &az};
    for (const tJointAngle& track : jointAngles) {
        if (track.boneName != boneName || track.axis < 0 || track.axis > 2)
            continue;
        const size_t n = track.keys.size();
        for (size_t i = 0; i < n; ++i) {
            const tFloatKey& key = track.keys[i];
            if (!(curFrame >= key.frame))
                continue;
            if (i + 1 < n) {
                const tFloatKey& next = track.keys[i + 1];
                const double t = (curFrame - key.frame) / (static_cast<double>(next.frame) - key.frame);
                *out[track.axis] = (1.0 - t) * key.angle + t * next.angle;
            } else {
                *out[track.axis] = key.angle;
            }
        }
    }
}

void Object3DS::handleAnimation()
{
    curFrame += frameStep;
    if (curFrame > numFrames - 1.0)
        curFrame = 0.0;
}

void Object3DS::setCurFrame(int frame)
{
    curFrame = frame;
}

void Object3DS::stepForward()
{
    curFrame += frameStep;
    if (curFrame > numFrames - 1.0)
        curFrame = numFrames - 1.0;
}

void Object3DS::stepBackwards()
{
    curFrame -= frameStep;
    if (curFrame < 0.0)
        curFrame = 0.0;
}

void Object3DS::scaleBone(tBone* bone, int level, double factor)
{
    if (bone == nullptr)
        return;
    bone->length = toInt(std::round(bone->length * factor));
    for (float& c : bone->obj_origin)
        c = toFloat(c * factor);
    for (tBone* child : bone->children)
        scaleBone(child, level + 1, factor);
}

void Object3DS::scaleFigure(double factor)
{
    if (root != nullptr)
        scaleBone(root, 0, factor);
}

void Object3DS::renderFigure()
{
    glDisable(GL_TEXTURE_2D);
    glPushMatrix();
    renderBone(root, 0);
    glColor3f(1.0f, 1.0f, 1.0f);
    glPopMatrix();
    glDisable(GL_TEXTURE_2D);
}

void Object3DS::renderBone(tBone* bone, int level)
{
    if (bone == nullptr)
        return;
    const double length = level == 0 ? 0.0 : bone->length;
    glPushMatrix();
    double ax = 0.0, ay = 0.0, az = 0.0;
    getAnimAngles(bone->name, ax, ay, az);

    SVector3D axis;
    double degrees = 0.0;
    axisAngle(bone->orientation, axis, degrees);
    glRotated(degrees, axis.x, axis.y, axis.z);
    glRotated(ax, 1.0, 0.0, 0.0);
    glRotated(ay, 0.0, 1.0, 0.0);
    glRotated(az, 0.0, 0.0, 1.0);
    const int id = bone->id >= 0 && bone->id < MAX_BONES ? bone->id : 0;
    glRotated(boneTurnY[id], 0.0, 1.0, 0.0);
    glRotated(boneTurnX[id], 1.0, 0.0, 0.0);

    if (showBones) {
        glDisable(GL_TEXTURE_2D);
        glColor3f(1.0f, 1.0f, 1.0f);
        glLineWidth(4.0f);
        glBegin(GL_LINES);
        glVertex3d(0.0, 0.0, 0.0);
        glVertex3d(0.0, length, 0.0);
        glEnd();
        glColor3f(0.0f, 0.0f, 1.0f);
        glBegin(GL_LINES);
        glVertex3d(-10.0 * axis.x, -10.0 * axis.y, -10.0 * axis.z);
        glVertex3d(10.0 * axis.x, 10.0 * axis.y, 10.0 * axis.z);
        glEnd();
        glLineWidth(1.0f);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glColor4f(1.0f, 1.0f, 1.0f, 0.5f);
    }

    if (level >= 1 && !bone->obj_name.empty()) {
        glPushMatrix();
        glTranslated(bone->obj_origin[0], bone->obj_origin[1], bone->obj_origin[2]);
        SVector3D objAxis;
        double objDegrees = 0.0;
        axisAngle(bone->obj_orient, objAxis, objDegrees);
        glRotated(objDegrees, objAxis.x, objAxis.y, objAxis.z);
        if (bone->obj_id >= 0 && bone->obj_id <= static_cast<int>(subObjectLists.size()) - 1) {
            if (subObjectLists[bone->obj_id] != 0)
                glCallList(subObjectLists[bone->obj_id]);
            else
                renderSubObjectNonDL(bone->obj_id);
        }
        glPopMatrix();
    }

    if (showBones) {
        glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
        glDisable(GL_BLEND);
    }
    glTranslated(0.0, length, 0.0);
    if (showBones) {
        glDisable(GL_TEXTURE_2D);
        if (level == 0)
            glColor3f(0.7f, 0.0f, 0.7f);
        else
            glColor3f(0.7f, 0.0f, 0.0f);
        glutSolidSphere(4.0, 20, 20);
        glColor3f(1.0f, 1.0f, 1.0f);
    }
    for (tBone* child : bone->children)
        renderBone(child, level + 1);
    glPopMatrix();
}

void Object3DS::updateFigureWorldPos()
{
    glPushMatrix();
    glLoadIdentity();
    updateBoneWorldPos(root, 0);
    glColor3f(1.0f, 1.0f, 1.0f);
    glPopMatrix();
}

void Object3DS::updateBoneWorldPos(tBone* bone, int level)
{
    if (bone == nullptr)
        return;
    const double length = level == 0 ? 0.0 : bone->length;
    glPushMatrix();
    GLdouble m[16];
    glGetDoublev(GL_MODELVIEW_MATRIX, m);
    bone->worldPos = SVector3D(static_cast<float>(m[12]), static_cast<float>(m[13]), static_cast<float>(m[14]));

    double ax = 0.0, ay = 0.0, az = 0.0;
    getAnimAngles(bone->name, ax, ay, az);
    SVector3D axis;
    double degrees = 0.0;
    axisAngle(bone->orientation, axis, degrees);
    glRotated(degrees, axis.x, axis.y, axis.z);
    glRotated(ax, 1.0, 0.0, 0.0);
    glRotated(ay, 0.0, 1.0, 0.0);
    glRotated(az, 0.0, 0.0, 1.0);
    glTranslated(0.0, length, 0.0);

    glGetDoublev(GL_MODELVIEW_MATRIX, m);
    if (bone->id >= 0 && bone->id < MAX_BONES)
        boneWorldPos[bone->id] =
            SVector3D(static_cast<float>(m[12]), static_cast<float>(m[13]), static_cast<float>(m[14]));
    for (tBone* child : bone->children)
        updateBoneWorldPos(child, level + 1);
    glPopMatrix();
}

// ============================================================ [SECTION] geometry queries

int Object3DS::getNumSubObjects()
{
    return model.numOfObjects;
}

std::string Object3DS::getSubObjName(int k)
{
    if (k > model.numOfObjects - 1 || k < 0 || k >= static_cast<int>(model.pObject.size())) {
        std::printf("ERROR: Illegal object id %i\n", k);
        std::exit(-1);
    }
    return model.pObject[k].name;
}

bool Object3DS::hasAnimData()
{
    return root != nullptr;
}

void Object3DS::getVertices(std::vector<SVector3D>& out)
{
    for (int k = 0; k < model.numOfObjects && k < static_cast<int>(model.pObject.size()); ++k) {
        const t3DSObject& o = model.pObject[k];
        for (int v = 0; v < vertCount(o); ++v)
            out.push_back(vec(o.pVerts[v]));
    }
}

bool Object3DS::sampleInBox(int k, const SVector3D& lo, const SVector3D& hi, int pass) const
{
    const t3DSObject& o = model.pObject[k];
    if (pass == 0) {
        for (int v = 0; v < vertCount(o); ++v)
            if (inBox(o.pVerts[v].x, o.pVerts[v].y, o.pVerts[v].z, lo, hi))
                return true;
        return false;
    }
    for (int f = 0; f < faceCount(o); ++f) {
        const CVector3* p[3];
        if (!corners(o, o.pFaces[f], p[0], p[1], p[2]))
            continue;
        if (pass == 1) {
            // Edges corner 0-1 and 1-2; the edge 2-0 is not sampled.
            for (int e = 0; e < 2; ++e) {
                const CVector3& a = *p[e];
                const CVector3& b = *p[e + 1];
                for (int s = 1; s <= 10; ++s) {
                    const double t = s / 11.0;
                    const float x = static_cast<float>(t * a.x + (1.0 - t) * b.x);
                    const float y = static_cast<float>(t * a.y + (1.0 - t) * b.y);
                    const float z = static_cast<float>(t * a.z + (1.0 - t) * b.z);
                    if (inBox(x, y, z, lo, hi))
                        return true;
                }
            }
        } else {
            const float third = 0.33333334f;
            if (inBox(p[0]->x * third + p[1]->x * third + p[2]->x * third,
                      p[0]->y * third + p[1]->y * third + p[2]->y * third,
                      p[0]->z * third + p[1]->z * third + p[2]->z * third, lo, hi))
                return true;
            for (int c = 0; c < 3; ++c) {
                const CVector3& m = *p[c];
                const CVector3& a = *p[(c + 1) % 3];
                const CVector3& b = *p[(c + 2) % 3];
                if (inBox(m.x * 0.6f + a.x * 0.2f + b.x * 0.2f, m.y * 0.6f + a.y * 0.2f + b.y * 0.2f,
                          m.z * 0.6f + a.z * 0.2f + b.z * 0.2f, lo, hi))
                    return true;
            }
        }
    }
    return false;
}

bool Object3DS::anyVertexInBox(SVector3D boxMin, SVector3D boxMax)
{
    const int n = std::min(model.numOfObjects, static_cast<int>(model.pObject.size()));
    for (int pass = 0; pass < 3; ++pass)
        for (int k = 0; k < n; ++k)
            if (sampleInBox(k, boxMin, boxMax, pass))
                return true;
    return false;
}

bool Object3DS::anyVertexInBox(int k, SVector3D boxMin, SVector3D boxMax)
{
    if (k < 0 || k >= model.numOfObjects || k >= static_cast<int>(model.pObject.size()))
        return false;
    for (int pass = 0; pass < 3; ++pass)
        if (sampleInBox(k, boxMin, boxMax, pass))
            return true;
    return false;
}

double Object3DS::minBBoxDistToPt(SVector3D p)
{
    // The extents as stored: the y extents stay on -y.
    double best = LGeom::pointDist(p, SVector3D(static_cast<float>(centerX), static_cast<float>(centerY),
                                                static_cast<float>(centerZ)));
    for (int i = 0; i < 8; ++i) {
        const SVector3D corner(static_cast<float>((i & 1) ? maxX : minX), static_cast<float>((i & 2) ? maxY : minY),
                               static_cast<float>((i & 4) ? maxZ : minZ));
        best = std::min(best, LGeom::pointDist(p, corner));
    }
    return best;
}

bool Object3DS::collidesWith(CVector3 p)
{
    if (model.numOfObjects < 1)
        return false;
    const int n = std::min(model.numOfObjects, static_cast<int>(model.pObject.size()));
    for (int k = 0; k < n; ++k) {
        const t3DSObject& o = model.pObject[k];
        const int faces = faceCount(o);
        if (faces == 0)
            continue;
        bool front = false;
        for (int f = 0; f < faces && !front; ++f) {
            const CVector3* c[3];
            if (!corners(o, o.pFaces[f], c[0], c[1], c[2]))
                continue;
            CVector3 triangle[3] = {*c[0], *c[1], *c[2]};
            // The outward normal of the model's winding: the negation of what Normal gives.
            CVector3 normal = Normal(triangle);
            normal = cvec(-normal.x, -normal.y, -normal.z);
            float distance = 0.0f;
            front = ClassifySphere(p, normal, triangle[0], 0.0f, distance) == 2;
        }
        if (!front)
            return true;
    }
    return false;
}

CVector3 Normal(CVector3 triangle[3])
{
    const CVector3 n = cross(sub(triangle[2], triangle[0]), sub(triangle[1], triangle[0]));
    const float length = std::sqrt(dot(n, n));
    return cvec(n.x / length, n.y / length, n.z / length);
}

int ClassifySphere(CVector3& center, CVector3& normal, CVector3& point, float radius, float& distance)
{
    const float d = dot(normal, center) - dot(normal, point);
    distance = d;
    if (radius > std::fabs(d))
        return 1;
    if (d >= radius)
        return 2;
    return 0;
}
