// LGLAnimTexture.h -- flip-book animations (fire, flashes, impacts) drawn as textured quads at up to
// 20 places of the world at once, turned towards the viewing direction or unrotated.
//
// The frames of an animation are loaded once into the class-wide table `anim` (one tAnim per load);
// an object then plays one type at up to 20 slots, each with its own frame counter on the object's
// shared timer (LTime, milliseconds).
//
// Kept on purpose:
//  - A frame advances only when strictly more than frameDelay milliseconds have passed since the last
//    change; a slot scheduled with lastSwitch 0 therefore advances on its first handle once the
//    object's timer has run longer than frameDelay.
//  - A one-shot slot ends (inactive, frame 0) when its frame count reaches frameCount, right after
//    the change that would show the frame past the last.
//  - render_raw draws every slot at the object's default size, never at the slot's own size, and
//    with no rotation and no centring.
//  - The quad maps (left, top) to (texStart, texStart + texExtent) with top = 0 and bottom = height:
//    the facing render's half turn about x makes the picture upright; render_raw shows it as it lies.
//  - render and render_raw leave texturing on, face culling off and the alpha test off; renderQuad
//    leaves the frame's texture bound and blending off.
//
// Choices recorded here:
//  - Frame files: frame i (i = 0 .. frameCount - 1) of type `name` in `directory` is
//    directory + "/" + name + LString::trimZInt(i, 3) + ".tga", or ".bmp" when no such TGA exists
//    (fire000.tga, fire001.tga, ...; names are resolved without regard to letter case). A TGA of 32
//    bits keeps its own alpha; every other frame gets the key colour (75, 75, 75) transparent
//    (LGL::CreateTransparentTexture, mode 0, alpha 0).
//  - A frame file that is missing prints "ERROR LGLAnimTexture::load: frame file "<path>" not found"
//    and ends the loading of that type: the type is still appended, with the frames found before the
//    missing one as its frameCount. A frame file that exists but cannot be read ends the process as
//    every unreadable texture does (LGL::CreateTransparentTexture).
//  - texExtent: the width of the picture in its texture over the width of the texture. The texture
//    maker stretches a picture of any size over its whole (power-of-two) texture, so the picture
//    always spans its texture: texExtent is 1 and texStart 0 for every frame that loaded. A game may
//    set a smaller extent by hand to crop a frame's border; the quad then shows the centred part.
//    Entries of frames that were not loaded stay 0 (texture name 0, extent 0, start 0).
//  - A requested frame count below 0 counts as 0; above 50 it is clamped to 50.
//  - An object starts with type -1 (none), default size 0 x 0, loop off and all slots inactive;
//    handle and render do nothing while `type` names no loaded type, and a slot whose frame lies
//    outside its type's frames is not drawn. Slots of a type without frames end on their first handle.
//  - handle reads the timer once per call, so all slots of one call see the same time.
//  - Copies (construction and assignment) copy the slots and every member; the copied timer keeps
//    the original's start (LTime copies share it).
#pragma once

#include <ostrum_core/LTime.h>
#include <ostrum_core/SVector3D.h>
#include <ostrum_core/tRect.h>

#include <cstdint>
#include <string>
#include <vector>

class LGLCamera;

class LGLAnimTexture {
public:
    static constexpr int kMaxFrames = 50;
    static constexpr int kSlots = 20;
    // Red, green and blue of the colour that frame files show where they are transparent.
    static constexpr int kKeyColor = 75;

    // One animation type of the class-wide table.
    struct tAnim {
        unsigned int frameTextures[kMaxFrames];  // one texture name per frame
        double texExtent[kMaxFrames];            // the part of each texture that holds the picture
        double texStart[kMaxFrames];             // 0.5 - texExtent * 0.5: the picture centred
        int frameCount;                          // number of frames, at most 50
        int frameDelay;                          // milliseconds each frame is shown
    };

    // One place where the animation plays.
    struct tSlot {
        bool active;
        int64_t lastSwitch;  // timer reading at the last frame change
        SVector3D position;  // the quad's anchor
        int frame;           // current frame
        int width;           // quad size in world units
        int height;
    };

    // The animation types, in the order they were loaded.
    static std::vector<tAnim> anim;

    tSlot slots[kSlots];
    int type;
    int defaultWidth;
    int defaultHeight;
    bool loop;
    LTime timer;

    LGLAnimTexture();
    LGLAnimTexture(const LGLAnimTexture& other) = default;
    LGLAnimTexture& operator=(const LGLAnimTexture& other) = default;

    // Loads frameCount frames of `name` from `directory` as a new type; its index goes to `type`.
    static void load(int& type, std::string directory, std::string name, int frameCount, int frameDelay);
    // Deletes the frame textures of every type and empties the table.
    static void dispose();
    // The file that frame `index` of `name` is read from (see the header comment).
    static std::string frameFile(const std::string& directory, const std::string& name, int index);

    // Stores the members and deactivates all slots.
    void init(int type, int width, int height, bool loop);
    void clearAll();
    // Starts the animation in the first inactive slot; ignored when all 20 are busy.
    void schedule(SVector3D position, int width, int height);
    void schedule(SVector3D position);
    // Advances the frames; call once per frame.
    void handle();
    // Draws all active slots parallel to the view plane of `camera`.
    void render(LGLCamera& camera);
    // Draws all active slots unrotated at the default size.
    void render_raw();

private:
    // The loaded type this object plays, or null.
    const tAnim* currentType() const;
    void renderQuad(tRect area, int frame);
};
