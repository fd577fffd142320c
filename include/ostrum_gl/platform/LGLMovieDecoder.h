// LGLMovieDecoder.h -- what movie textures need from the platform: frame n of a movie file as pixels.
//
// LGLAVI was designed around a desktop movie library that opens a file's video stream, hands out
// frame n decompressed, and draws it scaled into a 24-bit device-independent bitmap. This is the
// contract that stands in for it; the one implementation (src/platform/LGLMovieDecoder.cpp) uses
// FFmpeg, and no other file of the library sees an FFmpeg type. Any container and codec that FFmpeg
// reads plays: AVI, MP4, MKV, WebM...
//
// A movie is a sequence of frames at its frame rate. Frame n is the picture on show n frame
// durations after the first picture, so a file that stores a repeated frame as an empty chunk (as
// some AVI animations do) still counts every frame, and frame n of such a stretch is the last picture
// stored before it.
//
// Life cycle: openStream (the stream), openFrameDecoder (the decompressor), then any number of
// decodeFrame(n), each followed by Scaler::draw when the picture is wanted; close (or destruction)
// releases everything. The object is not copyable; share it through a smart pointer.
//
// Choices recorded here:
//  - openStream reads the packets of the whole video stream once (no decoding) to learn where each
//    picture and each key frame lies. That makes frame n exact in every container, at the cost of
//    one pass over the file when it is opened.
//  - The stream length is the frame count that the file's header states (the AVI stream length, the
//    MP4 sample count); when the header has none (MKV, WebM) it is the span of the stored pictures
//    over the frame duration, and when no picture is stored at all, the duration the container
//    states. A truncated file keeps its header's length: the frames past its last stored picture
//    show that picture.
//  - The frame rate is the stream's average rate, else its base rate, else 25 frames per second.
//  - lengthMs is the time of frame `length` (the end of the movie) in whole milliseconds, truncated:
//    length x 1000 x scale / rate.
//  - Sequential playback decodes forward from where the decoder stands and never seeks. A request
//    for an earlier frame, or for one far enough ahead that decoding from the key frame at or before
//    it is cheaper than decoding on, seeks to that key frame and decodes up to the frame. When a
//    seek fails or lands past the frame, the decoder starts again from the beginning of the file.
//  - A packet the codec rejects is skipped; a frame that cannot be reached makes decodeFrame return
//    false and keeps the last picture. Nothing a damaged file holds can make it read out of bounds.
#pragma once

#include <ostrum_core/tRect.h>

#include <cstdint>
#include <memory>
#include <string>

class LGLMovieDecoder {
public:
    // What the stream tells about itself; all zero when no stream is open.
    struct tStreamInfo {
        tRect frame = {0, 0, 0, 0};  // frame rectangle: (0, 0) to (width, height)
        int length = 0;              // stream length in frames
        int rate = 0;                // frames per second = rate / scale
        int scale = 0;
        int lengthMs = 0;            // time of frame `length`, whole milliseconds
        std::string codec;           // the codec's short name, for log lines
    };

    // Draws the last decoded frame of a decoder, scaled to fill a target bitmap: the stand-in for the
    // bitmap drawing library. It keeps its conversion tables between frames.
    class Scaler {
    public:
        Scaler();
        ~Scaler();
        Scaler(const Scaler&) = delete;
        Scaler& operator=(const Scaler&) = delete;

        // Scales the whole last decoded frame of `source` to width x height pixels of 24 bits in the
        // layout of a device-independent bitmap: blue, green, red per pixel, bottom row first, each
        // row padded to a multiple of 4 bytes. False (bits untouched) when there is no frame.
        bool draw(const LGLMovieDecoder& source, unsigned char* bits, int width, int height);

    private:
        struct Impl;
        std::unique_ptr<Impl> impl_;
    };

    LGLMovieDecoder();
    ~LGLMovieDecoder();
    LGLMovieDecoder(const LGLMovieDecoder&) = delete;
    LGLMovieDecoder& operator=(const LGLMovieDecoder&) = delete;

    // Opens the first video stream of the file (attached cover pictures do not count); false when the
    // file cannot be read or holds no video stream.
    bool openStream(const std::string& path);
    bool isStreamOpen() const;
    const tStreamInfo& streamInfo() const { return info_; }

    // Opens the decompressor of the open stream; false without a stream or when FFmpeg has no
    // decoder for its codec.
    bool openFrameDecoder();
    bool isFrameDecoderOpen() const;

    // Decodes frame n (0 <= n < length) and keeps it as the last decoded frame; false when n is out
    // of range or the frame cannot be decoded.
    bool decodeFrame(int n);
    // The pixel bits (first plane) of the last decoded frame, valid until the next decodeFrame;
    // null when there is none.
    unsigned char* frameBits() const;

    // Releases the decoder and the stream.
    void close();

    // Counters of the work done since openStream, for tests and benchmarks: seeks made, and frames
    // that came out of the codec.
    int seekCount() const;
    int decodedFrameCount() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
    tStreamInfo info_;
};
