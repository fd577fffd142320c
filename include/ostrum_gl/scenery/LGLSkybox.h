// LGLSkybox.h -- a textured box drawn around the camera for sky and horizon, with an optional fogged
// copy of its six faces that matches the terrain's fog colour.
//
// Six face images sky_<name>_01 .. _06 (or _rt, _ft, _lf, _bk, _up, _dn), BMP or JPEG, are read from
// the class-wide skybox directory. The box spans (0, 0, 0) to (W, H, D) and is compiled into a display
// list that renderDL replays centred on a point, normally the camera position.
//
// Face k of a set and the box face it covers:
//   k = 0  "_01" / "_rt"  z = D        k = 3  "_04" / "_bk"  x = W
//   k = 1  "_02" / "_ft"  x = 0        k = 4  "_05" / "_up"  y = H (top)
//   k = 2  "_03" / "_lf"  z = 0        k = 5  "_06" / "_dn"  y = 0 (bottom)
//
// Kept on purpose:
//  - The file scheme is chosen by probing stem + "_01.bmp", "_rt.bmp", "_01.jpg" and "_rt.jpg" in that
//    order; the last probe decides: a name with none of these files loads the direction names in
//    ".jpg", and the first missing face ends the process as every missing texture does
//    ("** ERROR LGL::CreateTexture: Texture file "..." not found!", exit(-1)).
//  - halfSize is integer halving: an odd size centres the box half a unit off (W = 11 puts it from
//    x - 5 to x + 6).
//  - Each constructor appends the 23 names to the class-wide name table, so a second skybox object
//    makes getNumTexIDs 46, ids 23..45 repeating 0..22. Nothing removes them.
//  - applyFog leaves blending enabled.
//  - loadTextures does not change texSetBase: after an applyFog the box keeps drawing the fogged set
//    until the next applyFog re-renders it from the newly loaded faces.
//
// Choices recorded here:
//  - The skybox directory is used as given, followed directly by "sky_": setDir takes the directory
//    with its trailing separator ("data/skies/").
//  - The 23 skybox names are the game's content; the library ships the table kDefaultNames (below).
//  - loadTextures(name, size) is a cube: loadTextures(name, size, size, size); loadTexturesByID does
//    the same with the id-th name.
//  - loadTextures does not delete the face textures of an earlier load: call dispose before loading
//    another sky to release them.
//  - render skips a face whose slot is empty (9999), so generateDL before any load compiles texturing
//    and culling only; renderDL draws nothing while there is no display list. applyFog does nothing
//    before the faces are loaded.
//  - applyFog sets the colour to opaque white before the first face, so every face is copied
//    untinted whatever colour the game left current. The fog square is drawn with the corners in the
//    order of the face strip. Each fogged face is read from the lower left 512 x 512 pixels of the
//    current read buffer: the window must be at least 512 pixels wide and high for the whole face to
//    be rendered; rows beyond the window are undefined.
//  - dispose sets displayList back to -1 and every face slot back to 9999, so a second dispose
//    deletes nothing.
//  - render leaves texturing and face culling enabled and the last face's texture bound.
#pragma once

#include <ostrum_gl/frame/LGL.h>

#include <string>
#include <vector>

class LGLSkybox {
public:
    static constexpr int kNumNames = 23;
    static constexpr int kFaces = 6;
    // texSetBase values.
    static constexpr int kLoadedSet = 10;
    static constexpr int kFoggedSet = 20;
    // Marks an empty face slot.
    static constexpr unsigned int kNoTexture = 9999;
    // displayList when there is none.
    static constexpr unsigned int kNoList = static_cast<unsigned int>(-1);
    // Side of the off-screen square that applyFog renders each face into.
    static constexpr int kFogSize = 512;

    // The skybox names that each constructor appends to skyboxNames.
    static const char* const kDefaultNames[kNumNames];
    // The skybox directory, with its trailing separator.
    static std::string skyboxDir;
    // The names that loadTexturesByID picks from.
    static std::vector<std::string> skyboxNames;

    int texSetBase;                           // 10: draw the loaded set, 20: the fogged set
    unsigned int faceTextures[2][kFaces];     // [0] loaded set, [1] fogged set; 9999 = empty
    int size[3];                              // W, H, D
    int halfSize[3];                          // W / 2, H / 2, D / 2
    unsigned int displayList;                 // the compiled box; -1 when none

    LGLSkybox();

    static void setDir(std::string dir);
    // Number of names in skyboxNames.
    static int getNumTexIDs();
    // File suffix of face k: "_01".."_06" when numbered, else "_rt", "_ft", "_lf", "_bk", "_up", "_dn".
    static std::string faceSuffix(int k, bool numbered);

    // Loads the six faces of skyboxDir + "sky_" + name and builds the display list.
    void loadTextures(std::string name, int w, int h, int d);
    void loadTextures(std::string name, int size);
    // loadTextures with the id-th name when 0 <= id < getNumTexIDs(); otherwise nothing.
    void loadTexturesByID(int id, int size);

    // Draws the box from (0, 0, 0) to (W, H, D) with the selected set.
    void render();
    // Compiles render() into a new display list, deleting the old one.
    void generateDL();
    // Draws the list centred on (x, y, z).
    void renderDL(int x, int y, int z);

    // Renders fogged copies of the six faces (colour at opacity `amount`) and draws them from now on.
    void applyFog(double amount, LGL::tGLRGB colour);

    // Deletes the display list and every face texture.
    void dispose();

private:
    // Index into faceTextures of the set texSetBase selects.
    int selectedSet() const { return texSetBase == kFoggedSet ? 1 : 0; }
};
