// LGLAVI.h -- a movie played into one OpenGL texture, frame by frame, following the wall clock.
//
// The movie's video stream is decoded through the platform's movie decoder (FFmpeg: AVI, and any
// other container and codec it reads, MP4, MKV or WebM alike); each frame is scaled to fill a
// 512 x 512, 24-bit bitmap (blue, green, red per pixel, bottom row first) and replaces the pixels of
// textures[0] in place with glTexSubImage2D. The bytes go up as they lie, declared as RGB: no swizzle
// and no flip; the quads that show movies use texture coordinates that match.
//
// Kept on purpose:
//  - All 5000 names of `textures` are reserved with one glGenTextures call, and only the first is
//    ever used; neither the names nor `dc` are released by closeAVI.
//  - Playback follows the clock: handle sets `frame` to the frame whose time has come, and does not
//    decode; grabCurrentAVIFrame does.
//  - A stream that cannot be opened shows the message box "Failed To Open The AVI Stream" (caption
//    "Error") and the set-up carries on; a decompressor that cannot be opened (which follows, for a
//    file FFmpeg cannot read at all) prints "Failed To Open The AVI Frame" and ends the process with
//    exit(-1).
//  - cacheMovie runs for the movie's own duration and decodes as many frames as time allows.
//
// Choices recorded here:
//  - The clock is a monotonic millisecond clock (clockMs, std::chrono::steady_clock), never CPU time.
//  - The handles of the desktop movie library are the platform decoder's objects, held by shared
//    pointers: `stream` is the decoder with its open stream, `getFrame` the same decoder once its
//    decompressor is open (null otherwise), `drawDib` the scaler, `bitmap` the malloc'ed 512 x 512
//    pixel block that `pixels` points into. There is no device context on Linux: `dc` stays null.
//  - Copies and moves copy every member: the copies share the decoder, the bitmap and the texture,
//    as the handles were shared. closeAVI lets go of this object's share only; the decoder is
//    released when the last object holding it is closed or destroyed, so closing one copy never
//    leaves another with a dangling decoder. A moved-from object keeps its share too.
//  - A movie path is resolved case-insensitively (LFile::resolvePath) before it is opened.
//  - A movie with no frame would divide by zero in msPerFrame; such a movie gets msPerFrame 0, and a
//    movie whose frames last under a millisecond also has msPerFrame 0: handle and cacheMovie then
//    count one frame per millisecond instead of dividing by zero.
//  - A frame that cannot be decoded (out of range, a damaged or truncated file) leaves the bitmap as
//    it was: the texture keeps the last picture and frameData is null. Nothing is uploaded before
//    createMovieTexture has made the texture, nor after closeAVI.
//  - The bitmap starts black, so the texture is black until the first frame is grabbed.
#pragma once

#include <ostrum_core/WinTypes.h>
#include <ostrum_gl/platform/LGLMovieDecoder.h>

#include <memory>
#include <string>

class LGLAVI {
public:
    // Size of the bitmap and of the texture, in pixels; fixed so that every frame replaces the
    // texture's pixels in place.
    static constexpr int kTextureSize = 512;
    // How many texture names are reserved.
    static constexpr int kTextureNames = 5000;

    int elapsed;                                  // milliseconds since playback started
    int frame;                                    // index of the current frame
    LGLMovieDecoder::tStreamInfo streamInfo;      // what the video stream tells about itself
    std::shared_ptr<LGLMovieDecoder> stream;      // the opened video stream; null when it failed
    LGLMovieDecoder* getFrame;                    // the stream once its decompressor is open, else null
    BITMAPINFOHEADER bitmapHeader;                // 40, 512 x 512, 1 plane, 24 bits, no compression
    int lastFrame;                                // stream length in frames
    int movieWidth;                               // size of the stream's frame rectangle
    int movieHeight;
    unsigned char* frameData;                     // pixel bits of the last fetched frame, or null
    int msPerFrame;                               // movie duration over its length, whole milliseconds
    std::shared_ptr<LGLMovieDecoder::Scaler> drawDib;  // scales frames into the bitmap
    std::shared_ptr<unsigned char> bitmap;        // 512 x 512 x 3 bytes, bottom row first
    HDC dc;                                       // always null: no device context on Linux
    unsigned char* pixels;                        // the bits of `bitmap`
    long start;                                   // clock value (milliseconds) at which playback started
    unsigned int textures[kTextureNames];         // reserved texture names; only textures[0] is used

    LGLAVI();
    LGLAVI(const LGLAVI& other) = default;
    LGLAVI& operator=(const LGLAVI& other) = default;
    // Moving copies every member, as copying does; the source keeps its share of the decoder.
    LGLAVI(LGLAVI&& other) : LGLAVI(static_cast<const LGLAVI&>(other)) {}
    LGLAVI& operator=(LGLAVI&& other) { return *this = static_cast<const LGLAVI&>(other); }
    ~LGLAVI() = default;

    // Opens the movie and creates its texture; width and height receive the movie's frame size.
    void createMovieTexture(std::string path, int& width, int& height);
    // Opens the first video stream and its decompressor (called by createMovieTexture).
    void openAVI(const char* path);
    // Decodes frame frameIndex into the texture.
    void grabAVIFrame(int frameIndex);
    // grabAVIFrame(frame).
    void grabCurrentAVIFrame();
    // Binds textures[0] as the current 2-D texture.
    void bindCurrentAVIFrameTexture();
    // Advances `frame` by the clock; at the end it rewinds with `loop`, or stays on the last frame.
    void handle(bool loop);
    // True when frame >= lastFrame - 1.
    bool movieAtEnd();
    // elapsed = 0, frame = 0, start = now.
    void rewind();
    // Decodes the whole movie once in real time, then rewinds.
    void cacheMovie();
    // Releases the decoder, the scaler and the bitmap.
    void closeAVI();

    // The monotonic millisecond clock that `start` is read from.
    static long clockMs();
};
