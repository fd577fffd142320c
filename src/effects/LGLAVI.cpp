// LGLAVI.cpp -- movie textures: opening a movie, decoding frames into the texture, playback by clock.
#include <ostrum_gl/effects/LGLAVI.h>

#include <ostrum_core/LFile.h>
#include <ostrum_gl/platform/LGLPlatform.h>

#include <GL/gl.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr size_t kBitmapBytes = static_cast<size_t>(LGLAVI::kTextureSize) * LGLAVI::kTextureSize * 3;

// The frame duration that the clock is divided by: never zero.
int clockDivisor(int msPerFrame)
{
    return msPerFrame > 0 ? msPerFrame : 1;
}

}  // namespace

LGLAVI::LGLAVI()
    : elapsed(0),
      frame(0),
      getFrame(nullptr),
      bitmapHeader(),
      lastFrame(0),
      movieWidth(0),
      movieHeight(0),
      frameData(nullptr),
      msPerFrame(0),
      dc(nullptr),
      pixels(nullptr),
      start(0),
      textures()
{
}

long LGLAVI::clockMs()
{
    using namespace std::chrono;
    return static_cast<long>(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

void LGLAVI::createMovieTexture(std::string path, int& width, int& height)
{
    dc = nullptr;
    pixels = nullptr;
    drawDib = std::make_shared<LGLMovieDecoder::Scaler>();

    openAVI(path.c_str());

    glEnable(GL_TEXTURE_2D);
    glGenTextures(kTextureNames, textures);
    glBindTexture(GL_TEXTURE_2D, textures[0]);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, kTextureSize, kTextureSize, 0, GL_RGB, GL_UNSIGNED_BYTE, pixels);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);

    width = movieWidth;
    height = movieHeight;
    elapsed = 0;
    frame = 0;
    start = clockMs();
}

void LGLAVI::openAVI(const char* path)
{
    getFrame = nullptr;
    frameData = nullptr;
    stream.reset();
    auto decoder = std::make_shared<LGLMovieDecoder>();
    if (path != nullptr && decoder->openStream(LFile::resolvePath(path)))
        stream = decoder;
    else
        LGLPlatform::messageBox("Failed To Open The AVI Stream", "Error");

    // Without a stream the information is all zero, as the stream calls would leave it.
    streamInfo = stream ? stream->streamInfo() : LGLMovieDecoder::tStreamInfo();
    movieWidth = streamInfo.frame.right - streamInfo.frame.left;
    movieHeight = streamInfo.frame.bottom - streamInfo.frame.top;
    lastFrame = streamInfo.length;
    msPerFrame = lastFrame > 0 ? streamInfo.lengthMs / lastFrame : 0;

    bitmapHeader = BITMAPINFOHEADER();
    bitmapHeader.biSize = sizeof(BITMAPINFOHEADER);
    bitmapHeader.biWidth = kTextureSize;
    bitmapHeader.biHeight = kTextureSize;
    bitmapHeader.biPlanes = 1;
    bitmapHeader.biBitCount = 24;
    bitmapHeader.biCompression = BI_RGB;
    bitmap.reset(static_cast<unsigned char*>(std::calloc(kBitmapBytes, 1)), std::free);
    pixels = bitmap.get();

    if (!stream || !stream->openFrameDecoder()) {
        std::printf("Failed To Open The AVI Frame\n");
        std::fflush(stdout);
        exit(-1);
    }
    getFrame = stream.get();
}

void LGLAVI::grabAVIFrame(int frameIndex)
{
    frameData = nullptr;
    if (getFrame != nullptr && getFrame->decodeFrame(frameIndex)) {
        frameData = getFrame->frameBits();
        if (drawDib && pixels)
            drawDib->draw(*getFrame, pixels, kTextureSize, kTextureSize);
    }
    if (pixels == nullptr || textures[0] == 0)
        return;
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, textures[0]);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, kTextureSize, kTextureSize, GL_RGB, GL_UNSIGNED_BYTE, pixels);
}

void LGLAVI::grabCurrentAVIFrame()
{
    grabAVIFrame(frame);
}

void LGLAVI::bindCurrentAVIFrameTexture()
{
    glBindTexture(GL_TEXTURE_2D, textures[0]);
}

void LGLAVI::handle(bool loop)
{
    elapsed = static_cast<int>(clockMs() - start);
    frame = elapsed / clockDivisor(msPerFrame);
    if (frame >= lastFrame) {
        if (loop)
            rewind();
        else
            frame = lastFrame - 1;
    }
}

bool LGLAVI::movieAtEnd()
{
    return frame >= lastFrame - 1;
}

void LGLAVI::rewind()
{
    elapsed = 0;
    frame = 0;
    start = clockMs();
}

void LGLAVI::cacheMovie()
{
    elapsed = 0;
    frame = 0;
    start = clockMs();
    while (frame < lastFrame - 1) {
        frame = static_cast<int>((clockMs() - start) / clockDivisor(msPerFrame));
        if (frame > lastFrame - 1)
            frame = lastFrame - 1;
        grabAVIFrame(frame);
    }
    rewind();
}

void LGLAVI::closeAVI()
{
    bitmap.reset();
    pixels = nullptr;
    frameData = nullptr;
    drawDib.reset();
    getFrame = nullptr;
    stream.reset();
}
