// Object3DS.h -- the model object: one 3DS file with its textures, display lists, bounding volumes,
// configuration file, optional skeletal figure with one animation sequence, and geometry queries.
//
// Files of a model are named after the model file given to load:
//  - its textures: the material texture names, looked up in the model file's directory;
//  - its configuration: the model path without its last five characters, then "_cfg.txt"
//    (tower1.3ds -> tower_cfg.txt);
//  - its figure: the model path without its last four characters, then "_as.an8"
//    (man.3ds -> man_as.an8), a text file in the An8 scene format.
//
// Kept on purpose:
//  - The y extents of every bounding box are measured on the negated second coordinate: minY and
//    maxY are the minimum and maximum of -y. renderBoundingBox negates them back; minBBoxDistToPt
//    uses them as they are.
//  - A texture path (model directory + texture name) must have its first dot at index 9 or later:
//    otherwise "ERROR in Object3DS::load" ends the process, even when the dot belongs to the
//    directory ("./m/wall.bmp"). Names with "_a" eight characters before that dot (animated
//    textures) and names ending "_avi" in front of it (movies) are not loaded by load; the game
//    fills animRecords/animSlot and movies/movieSlot for them afterwards.
//  - setTextureType accepts "BMP", "bmp" and "TGA", but not "tga".
//  - determineTransparentFaces prints its debugging lines whatever `verbose` says, and empties a
//    sub-object's transparentFaces list before every append, so each list keeps only its last
//    transparent face. It does not rebuild the display lists.
//  - An opaque face whose material has shininess strength sets shininess 1; a transparent one sets
//    shininess 0. The specular and emission resets at the end of a pass happen only when the last
//    face drawn set them; a pass whose last face had none leaves the earlier face's values behind.
//  - handleAnimation wraps to frame 0.0 exactly when curFrame passes numFrames - 1, dropping the
//    overshoot. updateFigureWorldPos follows the sequence alone; the extra turns boneTurnX and
//    boneTurnY are applied only when drawing.
//  - renderBoundingSphere draws at the current origin, not at the model centre.
//  - renderFigure leaves texturing off; renderBoundingBox leaves face culling off; createObjectDL
//    leaves face culling on.
//
// Choices recorded here:
//  - The imported model is the member `model` and its reader the member `loader`. load hands its
//    `verbose` flag on to the reader.
//  - The bounding volumes of sub-objects are kept in the arrays subMinX .. subCenterZ and subRadius
//    (MAX_SUBOBJECTS entries). The 3DS reader keeps at most 50 sub-objects; should numOfObjects
//    still be above 50 when measure runs, it prints
//      ERROR: Object3DS::measure: "<file>" has <n> sub-objects; bounding volumes are kept for the first 50
//    and measures the first 50.
//  - A sub-object without faces gets a box of zeros and radius 0 and does not widen the whole-model
//    box; a model none of whose sub-objects has faces gets a whole-model box of zeros.
//  - A missing plain texture gets a black 16 x 16 RGB render texture (LGL::CreateRenderTexture with
//    the format GL_RGB).
//  - loadConfig splits lines at blanks and tabs; lodDistance takes the leading decimal digits of its
//    value as atoi would, clamped to the int range.
//  - A face whose material index names no material (a model without materials, or after dispose
//    has emptied the material list) is drawn in the opaque pass, untextured, in white; it never
//    reaches the transparent pass. A material whose animSlot or movieSlot names no record or movie
//    binds its own texture.
//  - render, renderSubObject and renderBone draw a sub-object immediately when it has no display
//    list entry (after dispose has emptied subObjectLists, for instance).
//  - renderNormals draws each vertex normal as a yellow line 5% of the model radius long, with
//    texturing off; the colour is white again afterwards.
//  - handleTextureAnimation skips a record without frames or whose curFrame lies outside its frames;
//    when the frame a record turns to at an end does not exist (a record of one frame), the record
//    goes to frame 0 with time 0. handleTextureMovies counts one frame per millisecond for a movie
//    whose msPerFrame is 0, as LGLAVI does.
//  - getSubObjName also ends the process for a negative id, with the same line. anyVertexInBox(k, ...)
//    returns false for an id that names no sub-object.
//  - collidesWith counts a degenerate face (no normal) as BEHIND.
//  - determineTransparentFaces prints the first two lines for a face whose material index names no
//    material and then passes over it.
//
// Figures (the An8 reader):
//  - loadFigure and readAnimation look at lines that begin with "figure" or "sequence" in their
//    first column (the top-level blocks Anim8or writes); indented lines belong to other blocks. Only
//    the first figure and the first sequence of a file are read; later ones are passed over with
//      ** WARNING: Object3DS::loadFigure: "<file>" holds more than one figure; the first is used
//    (or "sequence"). Lines may end in "\r\n".
//  - Inside a figure, tokens are read whatever the layout: quoted strings, numbers, braces,
//    parentheses and /* comments */, across lines. A bone's "length" is truncated to an int (as
//    every float-to-int conversion here); "orientation" is a quaternion "(x y z w)", normalised when
//    read (a zero or non-finite one reads as the identity); "dof" is
//    { "X" min default max [locked { }] [unlimited { }] }: "locked" makes the axis fixed,
//    "unlimited" free, neither limited by min and max; an axis without a dof entry is fixed.
//    A namedobject takes "origin" and "orientation" written directly in it or in its "base" block
//    (as Anim8or writes them); its other blocks ("pivot", "weights", ...) are read past. A bone
//    binds the first namedobject it holds; a further one prints
//      ** WARNING: Object3DS::readBone: bone "<bone>" is already bound to "<object>"; namedobject "<other>" is ignored
//  - readBone prints "ERROR!" when a bone block has no quoted name or the text ends before the
//    block closes; the bone keeps what was read. A figure may hold MAX_BONES (50) bones: a further
//    bone prints
//      ERROR: Object3DS::readBone: "<file>" has more than 50 bones; bone "<name>" and the bones inside it are skipped
//    and is not added. Bones are numbered from 0 (the root) in file order.
//  - Sequences are read line by line: the sequence line, then its figure line, then its frames line
//    (third token), then jointangle and floatkey lines until the block's braces close. A
//    jointangle's bone is its first quoted text and its axis the second ("X", "Y" or "Z"); a track
//    without an axis is dropped with its keys. A floatkey line needs a third and a fourth token.
//    Integers are read as atoi reads them, clamped to the int range. Reading a sequence replaces
//    the tracks of an earlier one.
//  - A bone whose bound name matches no sub-object gets obj_id -1 (nothing is drawn for it).
//  - Copies own copies of the bone tree; moves take it over.
#pragma once

#include <ostrum_core/SVector3D.h>
#include <ostrum_gl/effects/LGLAVI.h>
#include <ostrum_gl/frame/Quaternion.h>
#include <ostrum_gl/models/3dsLoader.h>

#include <fstream>
#include <istream>
#include <string>
#include <vector>

// One bone of a skeletal figure; owned by its parent (the root by its Object3DS).
struct tBone {
    // How an axis of a joint may turn.
    enum cDof : int {
        DofFixed = 0,      // "locked", or no dof entry for the axis
        DofLimited = 1,    // between min and max
        DofUnlimited = 2   // "unlimited": free
    };

    // One degree of freedom: angles in degrees.
    struct tDof {
        int type = DofFixed;
        double min = 0.0;
        double def = 0.0;
        double max = 0.0;
    };

    int id = 0;                   // running number in file order; indexes the per-bone arrays
    std::string name;             // bone name from the file
    int length = 0;               // bone length (scaled by scaleBone, rounded)
    Quaternion orientation;       // rest orientation
    tDof dof[3];                  // axes X, Y, Z
    std::string obj_name;         // bound 3DS sub-object ("namedobject"), empty when none
    int obj_id = -1;              // its index in the model, -1 when none matches
    float obj_origin[3] = {0.0f, 0.0f, 0.0f};  // its origin (scaled by scaleBone)
    Quaternion obj_orient;        // its orientation
    SVector3D worldPos;           // world position of the joint (updateFigureWorldPos)
    std::vector<tBone*> children; // owned child bones, in file order
};

class Object3DS {
    // The model tests reach the private steps (setTextureType, measure, the non-list renders, the
    // figure dumps) through this class.
    friend class Object3DSTest;
    // Collision meshes draw a model's normals (renderSubObjectNormalsNonDL).
    friend class LGLColMesh;

public:
    static constexpr int MAX_TEXTURES = 120;   // materials (and textures) of one model
    static constexpr int MAX_SUBOBJECTS = 50;  // sub-objects whose bounding volumes are kept
    static constexpr int MAX_BONES = 50;       // bones of one figure
    static constexpr int MAX_MOVIES = 10;      // movies of one model

    // A frame-sequence texture animation that replaces a material's texture (see animSlot).
    struct tTexAnim {
        std::vector<unsigned int> frameTextures;  // one GL texture per frame
        std::vector<int> frameEnds;               // cumulative end time of each frame, ascending
        int curFrame = 0;                         // frame shown
        int time = 0;                             // accumulated animation time
        int step = 0;                             // added to time per update; its sign is the direction
        int mode = 0;                             // 2: back and forth; anything else: loop
    };

    // One key of a joint-angle track.
    struct tFloatKey {
        int frame = 0;
        double angle = 0.0;  // degrees
    };

    // The joint angles of one bone about one axis over the sequence.
    struct tJointAngle {
        std::string boneName;
        int axis = 0;  // 0 = X, 1 = Y, 2 = Z
        std::vector<tFloatKey> keys;
    };

    // ---------------------------------------------------------------- bounding volumes
    double minX, maxX, minY, maxY, minZ, maxZ;  // whole model (y extents on the negated y)
    double centerX, centerY, centerZ;
    double subMinX[MAX_SUBOBJECTS];
    double subMaxX[MAX_SUBOBJECTS];
    double subMinY[MAX_SUBOBJECTS];
    double subMaxY[MAX_SUBOBJECTS];
    double subMinZ[MAX_SUBOBJECTS];
    double subMaxZ[MAX_SUBOBJECTS];
    double subCenterX[MAX_SUBOBJECTS];
    double subCenterY[MAX_SUBOBJECTS];
    double subCenterZ[MAX_SUBOBJECTS];
    double radius;                      // whole-model bounding sphere
    double subRadius[MAX_SUBOBJECTS];   // per sub-object
    int numFacesTotal;                  // faces of all sub-objects, set by load
    int lodDistance;                    // 1000 unless the configuration file says otherwise
    bool verbose;                       // progress lines of load (and of its reader)

    // ---------------------------------------------------------------- figure state
    SVector3D boneWorldPos[MAX_BONES];  // end point of each bone (updateFigureWorldPos)
    double boneTurnX[MAX_BONES];        // extra turns (degrees) applied when drawing; set by the game
    double boneTurnY[MAX_BONES];
    double boneTurnZ[MAX_BONES];        // kept for the game; not read by this class
    std::string sequenceName;
    std::string figureName;
    int numFrames;
    double curFrame;
    std::vector<tJointAngle> jointAngles;
    int showBones;                      // draw bones and joints over the figure
    double frameStep;                   // frames advanced per update

    // ---------------------------------------------------------------- files, lists, textures
    char fileName[256];                 // the model path given to load
    unsigned int opaqueList;            // all opaque faces
    unsigned int transparentList;       // all transparent faces
    std::vector<unsigned int> subObjectLists;  // opaque faces per sub-object, 0: drawn immediately
    int textureType;                    // 0 BMP, 1 TGA
    unsigned int textures[MAX_TEXTURES];  // GL texture per material index
    int animSlot[MAX_TEXTURES];         // animRecords index per material, -1: none
    std::vector<tTexAnim> animRecords;
    int movieSlot[MAX_TEXTURES];        // movies index per material, -1: none
    LGLAVI movies[MAX_MOVIES];
    int numMovies;

    // ---------------------------------------------------------------- imported model
    Load3DS loader;
    t3DSModel model;                    // numOfObjects, numOfMaterials, pMaterials, pObject
    std::string animFileName;           // the figure file last loaded
    tBone* root;                        // the figure's root bone, null without a figure

    Object3DS();
    Object3DS(const Object3DS& other);
    Object3DS(Object3DS&& other) noexcept;
    Object3DS& operator=(const Object3DS& other);
    Object3DS& operator=(Object3DS&& other) noexcept;
    // Releases the bone tree and the containers; GL objects stay (dispose releases them).
    ~Object3DS();

    // ---------------------------------------------------------------- loading and configuration
    void load(std::string fileName);
    void loadConfig(std::string fileName);
    void scale(double factor);
    double scaleTo(double size);
    void dispose();
    void toString();

    // ---------------------------------------------------------------- rendering
    void render();
    void renderSubObject(int k);
    void renderTranspFaces();
    void renderNormals();
    void renderBoundingBox();
    void renderBoundingSphere();
    void handleTextureAnimation();
    void handleTextureMovies();
    void determineTransparentFaces(bool forceTransparency);

    // ---------------------------------------------------------------- figures
    void loadFigure(std::string fileName);
    void disposeFigure();
    // Reads the figure and sequence blocks of An8 text (step 6 of loadFigure), binds the bones to
    // sub-objects and dumps the bone tree: loadFigure without the file, for any stream.
    void readAnimation(std::istream& in);
    void readFigure(std::ifstream& in, std::string line);
    void readFigure(std::istream& in, std::string line);
    void renderFigure();
    void updateFigureWorldPos();
    void scaleFigure(double factor);
    void handleAnimation();
    void setCurFrame(int frame);
    void stepForward();
    void stepBackwards();

    // ---------------------------------------------------------------- geometry queries
    int getNumSubObjects();
    std::string getSubObjName(int k);
    bool hasAnimData();
    void getVertices(std::vector<SVector3D>& out);
    bool anyVertexInBox(SVector3D boxMin, SVector3D boxMax);
    bool anyVertexInBox(int k, SVector3D boxMin, SVector3D boxMax);
    double minBBoxDistToPt(SVector3D p);
    bool collidesWith(CVector3 p);

private:
    int setTextureType(char* fileName);
    void measure();
    void createObjectDL();
    void renderSubObjectNonDL(int k);
    void renderTranspFacesNonDL(int k);
    void renderSubObjectNormalsNonDL(int k);
    bool subObjectHasAnimatedTexture(int k);

    void disposeBone(tBone*& bone);
    void readBone(std::ifstream& in, std::string line, tBone*& bone);
    void readBone(std::istream& in, std::string line, tBone*& bone);
    void readSequence(std::ifstream& in, std::string line);
    void readSequence(std::istream& in, std::string line);
    void assign3DS2Bone(tBone* bone);
    void assignObjects2Figure();
    void writeSequenceData();
    void writeBoneData(tBone* bone, int level);
    void getAnimAngles(const std::string& boneName, double& ax, double& ay, double& az);
    void renderBone(tBone* bone, int level);
    void updateBoneWorldPos(tBone* bone, int level);
    void scaleBone(tBone* bone, int level, double factor);

    // Helpers.
    const t3DSMaterial* materialOf(int m) const;   // null when m names no material
    unsigned int faceTexture(int m, bool movies);  // the texture a textured face of material m binds
    int measuredObjects() const;                   // sub-objects measured: at most MAX_SUBOBJECTS
    void deleteLists();
    void copyFrom(const Object3DS& other);
    bool sampleInBox(int k, const SVector3D& boxMin, const SVector3D& boxMax, int pass) const;
};

// Unit normal of a triangle: (P2 - P0) x (P1 - P0) over its length.
CVector3 Normal(CVector3 triangle[3]);

// Where a sphere lies against the plane through `point` with unit normal `normal`: 0 BEHIND,
// 1 INTERSECTS, 2 FRONT; `distance` receives the signed distance of the centre from the plane.
int ClassifySphere(CVector3& center, CVector3& normal, CVector3& point, float radius, float& distance);
