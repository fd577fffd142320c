// LGLMovieDecoder.cpp -- the FFmpeg implementation of the movie decoder contract: libavformat finds
// and reads the video stream, libavcodec decodes it, libswscale scales it into the bitmap.
#include <ostrum_gl/platform/LGLMovieDecoder.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/mathematics.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cmath>
#include <vector>

namespace {

// What a seek costs, counted in decoded frames: decoding on is preferred while it is at most this
// many frames dearer than seeking to the key frame.
constexpr int kSeekCostInFrames = 2;

// A stored picture of the video stream, as the packet scan finds it.
struct tPicture {
    int64_t pts;     // presentation time, stream time base
    int64_t seekTs;  // the decode time to seek to when this is a key frame
    bool key;
};

// a + b without overflow: timestamps come from the file and may be anything.
int64_t addSaturated(int64_t a, int64_t b)
{
    if (b > 0 && a > INT64_MAX - b)
        return INT64_MAX;
    if (b < 0 && a < INT64_MIN - b)
        return INT64_MIN;
    return a + b;
}

// A frame count from a double, kept within int.
int64_t roundFrames(double frames)
{
    if (!(frames > 0.0))
        return 0;
    return frames >= static_cast<double>(INT_MAX) ? INT_MAX : std::llround(frames);
}

int clampToInt(int64_t value)
{
    if (value < 0)
        return 0;
    return value > INT_MAX ? INT_MAX : static_cast<int>(value);
}

}  // namespace

// ---------------------------------------------------------------- decoder state

struct LGLMovieDecoder::Impl {
    std::string path;
    AVFormatContext* format = nullptr;
    AVCodecContext* codec = nullptr;
    AVPacket* packet = nullptr;
    AVFrame* frame = nullptr;     // the last picture the codec gave out
    AVFrame* incoming = nullptr;  // receives from the codec, which empties it when it has nothing
    int streamIndex = -1;
    int length = 0;

    AVRational timeBase{0, 1};
    double frameTicks = 1.0;  // one frame duration in time-base units
    int64_t firstPts = 0;
    int64_t restartTs = 0;    // the decode time of the first packet
    std::vector<int64_t> pts;  // presentation times of the stored pictures, ascending
    std::vector<int64_t> seekTs;
    std::vector<int> keyAt;    // per picture: the key picture at or before it, -1 when none

    int lastPicture = -1;     // the picture last given out by the codec; -1 before the first
    int unreachable = -1;     // a picture found past the last one the codec could give out
    bool haveFrame = false;   // `frame` holds that picture
    bool flushing = false;    // the end of the file was reached and the codec told so
    bool drained = false;     // the codec has given out all it had
    int seeks = 0;
    int decoded = 0;

    ~Impl() { release(); }

    void release()
    {
        if (codec)
            avcodec_free_context(&codec);
        if (format)
            avformat_close_input(&format);
        if (packet)
            av_packet_free(&packet);
        if (frame)
            av_frame_free(&frame);
        if (incoming)
            av_frame_free(&incoming);
        streamIndex = -1;
        haveFrame = false;
    }

    AVStream* stream() const { return format ? format->streams[streamIndex] : nullptr; }

    // Opens the file and reads its stream headers; local files only, so a playlist cannot make the
    // decoder fetch anything from elsewhere.
    bool openInput()
    {
        AVDictionary* options = nullptr;
        av_dict_set(&options, "protocol_whitelist", "file", 0);
        AVFormatContext* context = nullptr;
        int result = avformat_open_input(&context, path.c_str(), nullptr, &options);
        av_dict_free(&options);
        if (result < 0)
            return false;
        // A file whose streams cannot all be probed still plays what its header describes.
        avformat_find_stream_info(context, nullptr);
        format = context;
        return true;
    }

    int findVideoStream() const
    {
        for (unsigned int i = 0; i < format->nb_streams; ++i) {
            const AVStream* s = format->streams[i];
            if (s->codecpar && s->codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
                !(s->disposition & AV_DISPOSITION_ATTACHED_PIC))
                return static_cast<int>(i);
        }
        return -1;
    }

    // Reads every packet of the video stream once: where the pictures lie and which are key frames.
    void scanPictures()
    {
        std::vector<tPicture> pictures;
        int64_t end = 0;
        bool haveEnd = false;
        int64_t lastTs = 0;
        bool haveRestart = false;
        while (av_read_frame(format, packet) >= 0) {
            if (packet->stream_index == streamIndex && !(packet->flags & AV_PKT_FLAG_DISCARD)) {
                int64_t ts = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
                if (ts == AV_NOPTS_VALUE)
                    ts = pictures.empty() ? 0 : addSaturated(lastTs, std::llround(frameTicks));
                int64_t dts = packet->dts != AV_NOPTS_VALUE ? std::min(packet->dts, ts) : ts;
                pictures.push_back({ts, dts, (packet->flags & AV_PKT_FLAG_KEY) != 0});
                int64_t duration = packet->duration > 0 ? packet->duration
                                                        : static_cast<int64_t>(std::llround(frameTicks));
                if (!haveEnd || addSaturated(ts, duration) > end)
                    end = addSaturated(ts, duration);
                haveEnd = true;
                if (!haveRestart || dts < restartTs)
                    restartTs = dts;
                haveRestart = true;
                lastTs = ts;
            }
            av_packet_unref(packet);
        }
        std::stable_sort(pictures.begin(), pictures.end(),
                         [](const tPicture& a, const tPicture& b) { return a.pts < b.pts; });
        pts.clear();
        seekTs.clear();
        keyAt.clear();
        int key = -1;
        for (const tPicture& picture : pictures) {
            if (picture.key)
                key = static_cast<int>(pts.size());
            pts.push_back(picture.pts);
            seekTs.push_back(picture.seekTs);
            keyAt.push_back(key);
        }
        firstPts = pts.empty() ? 0 : pts.front();
        spanFrames = haveEnd ? (static_cast<double>(end) - static_cast<double>(firstPts)) / frameTicks : 0.0;
    }
    double spanFrames = 0.0;

    // The picture on show at frame n: the last one stored before the middle of frame n's time.
    int pictureOfFrame(int n) const
    {
        double limit = static_cast<double>(firstPts) + (n + 0.5) * frameTicks;
        auto it = std::lower_bound(pts.begin(), pts.end(), limit,
                                   [](int64_t value, double bound) { return static_cast<double>(value) < bound; });
        int p = static_cast<int>(it - pts.begin()) - 1;
        return std::max(p, 0);
    }

    // The stored picture that a decoded frame shows.
    int pictureOfDecodedFrame() const
    {
        int64_t ts = frame->best_effort_timestamp;
        if (ts == AV_NOPTS_VALUE)
            ts = frame->pts;
        int last = static_cast<int>(pts.size()) - 1;
        if (ts == AV_NOPTS_VALUE)
            return std::min(lastPicture + 1, last);
        auto it = std::upper_bound(pts.begin(), pts.end(), ts);
        return std::max(static_cast<int>(it - pts.begin()) - 1, 0);
    }

    void resetCodec()
    {
        if (codec)
            avcodec_flush_buffers(codec);
        flushing = false;
        drained = false;
        haveFrame = false;
    }

    bool seekToPicture(int key)
    {
        ++seeks;
        resetCodec();
        if (key < 0 || av_seek_frame(format, streamIndex, seekTs[key], AVSEEK_FLAG_BACKWARD) < 0)
            return false;
        lastPicture = key - 1;
        return true;
    }

    // Back to the first packet of the file; reopens the file when it cannot seek there.
    bool restart()
    {
        ++seeks;
        resetCodec();
        lastPicture = -1;
        if (av_seek_frame(format, streamIndex, restartTs, AVSEEK_FLAG_BACKWARD) >= 0)
            return true;
        avformat_close_input(&format);
        if (!openInput())
            return false;
        if (streamIndex >= static_cast<int>(format->nb_streams)) {
            avformat_close_input(&format);
            return false;
        }
        return true;
    }

    // Hands the codec the next packet of the stream, or the end of the file.
    void feed()
    {
        while (!flushing) {
            if (av_read_frame(format, packet) < 0) {
                avcodec_send_packet(codec, nullptr);
                flushing = true;
                return;
            }
            bool ours = packet->stream_index == streamIndex;
            int result = ours ? avcodec_send_packet(codec, packet) : -1;
            av_packet_unref(packet);
            // A packet the codec rejects is skipped.
            if (ours && result >= 0)
                return;
        }
    }

    enum tOutcome { kReached, kPassed, kFailed };

    // Decodes on until picture p, or a later one, comes out of the codec.
    tOutcome decodeUntil(int p)
    {
        int errors = 0;
        for (;;) {
            int result = avcodec_receive_frame(codec, incoming);
            if (result == 0) {
                av_frame_unref(frame);
                av_frame_move_ref(frame, incoming);
                ++decoded;
                haveFrame = true;
                lastPicture = pictureOfDecodedFrame();
                if (lastPicture >= p)
                    return lastPicture == p ? kReached : kPassed;
                continue;
            }
            if (result == AVERROR_EOF) {
                drained = true;
                return kFailed;
            }
            if (result != AVERROR(EAGAIN) && ++errors > 64) {
                drained = true;
                return kFailed;
            }
            if (flushing && result == AVERROR(EAGAIN)) {
                drained = true;
                return kFailed;
            }
            feed();
        }
    }
};

// ---------------------------------------------------------------- open and close

LGLMovieDecoder::LGLMovieDecoder() = default;

LGLMovieDecoder::~LGLMovieDecoder() = default;

bool LGLMovieDecoder::openStream(const std::string& path)
{
    close();
    auto impl = std::make_unique<Impl>();
    impl->path = path;
    impl->packet = av_packet_alloc();
    impl->frame = av_frame_alloc();
    impl->incoming = av_frame_alloc();
    if (!impl->packet || !impl->frame || !impl->incoming || !impl->openInput())
        return false;
    impl->streamIndex = impl->findVideoStream();
    if (impl->streamIndex < 0)
        return false;

    AVStream* s = impl->stream();
    impl->timeBase = s->time_base;
    if (impl->timeBase.num <= 0 || impl->timeBase.den <= 0)
        impl->timeBase = AVRational{1, 25};
    AVRational rate = s->avg_frame_rate;
    if (rate.num <= 0 || rate.den <= 0)
        rate = s->r_frame_rate;
    if (rate.num <= 0 || rate.den <= 0)
        rate = AVRational{25, 1};
    impl->frameTicks = static_cast<double>(impl->timeBase.den) * rate.den /
                       (static_cast<double>(impl->timeBase.num) * rate.num);
    if (!(impl->frameTicks > 0.0) || !std::isfinite(impl->frameTicks))
        impl->frameTicks = 1.0;

    impl->scanPictures();

    int64_t length = 0;
    if (s->nb_frames > 0)
        length = s->nb_frames;
    else if (!impl->pts.empty())
        length = std::max<int64_t>(roundFrames(impl->spanFrames), 1);
    else if (s->duration != AV_NOPTS_VALUE && s->duration > 0)
        length = roundFrames(static_cast<double>(s->duration) / impl->frameTicks);
    else if (impl->format->duration != AV_NOPTS_VALUE && impl->format->duration > 0)
        length = av_rescale_q(impl->format->duration, AV_TIME_BASE_Q, AVRational{rate.den, rate.num});
    impl->length = clampToInt(length);

    // Back to the start for decoding; the file may have been opened anew, with new stream records.
    if (!impl->restart())
        return false;
    impl->seeks = 0;
    s = impl->stream();

    const AVCodecParameters* parameters = s->codecpar;
    info_.frame = {0, 0, std::max(parameters->width, 0), std::max(parameters->height, 0)};
    info_.length = impl->length;
    info_.rate = rate.num;
    info_.scale = rate.den;
    info_.lengthMs = clampToInt(av_rescale_rnd(impl->length, 1000LL * rate.den, rate.num, AV_ROUND_DOWN));
    info_.codec = avcodec_get_name(parameters->codec_id);
    impl_ = std::move(impl);
    return true;
}

bool LGLMovieDecoder::isStreamOpen() const
{
    return impl_ && impl_->format;
}

bool LGLMovieDecoder::openFrameDecoder()
{
    if (!isStreamOpen())
        return false;
    if (impl_->codec)
        return true;
    const AVCodecParameters* parameters = impl_->stream()->codecpar;
    const AVCodec* decoder = avcodec_find_decoder(parameters->codec_id);
    if (!decoder)
        return false;
    AVCodecContext* context = avcodec_alloc_context3(decoder);
    if (!context)
        return false;
    if (avcodec_parameters_to_context(context, parameters) < 0 || avcodec_open2(context, decoder, nullptr) < 0) {
        avcodec_free_context(&context);
        return false;
    }
    context->pkt_timebase = impl_->timeBase;
    impl_->codec = context;
    return true;
}

bool LGLMovieDecoder::isFrameDecoderOpen() const
{
    return impl_ && impl_->codec;
}

void LGLMovieDecoder::close()
{
    impl_.reset();
    info_ = tStreamInfo();
}

int LGLMovieDecoder::seekCount() const
{
    return impl_ ? impl_->seeks : 0;
}

int LGLMovieDecoder::decodedFrameCount() const
{
    return impl_ ? impl_->decoded : 0;
}

// ---------------------------------------------------------------- decoding

bool LGLMovieDecoder::decodeFrame(int n)
{
    if (!isFrameDecoderOpen() || !impl_->format || n < 0 || n >= impl_->length || impl_->pts.empty())
        return false;
    Impl& d = *impl_;
    int p = d.pictureOfFrame(n);
    if (d.haveFrame && (p == d.lastPicture || (d.drained && p == d.unreachable)))
        return true;

    int key = d.keyAt[p];
    bool decodeOn = !d.drained && p > d.lastPicture &&
                    (key < 0 || p - d.lastPicture <= p - key + 1 + kSeekCostInFrames);
    Impl::tOutcome outcome;
    if (decodeOn) {
        outcome = d.decodeUntil(p);
    } else {
        outcome = d.seekToPicture(key) ? d.decodeUntil(p) : Impl::kPassed;
        // The seek failed, landed past the frame, or nothing from there on decodes (a damaged
        // file): start again from the beginning of the file.
        if (outcome == Impl::kPassed || (outcome == Impl::kFailed && !d.haveFrame)) {
            if (!d.restart())
                return false;
            outcome = d.decodeUntil(p);
        }
    }
    // A picture that the codec could not give out is stood in for by the next one it gave, or, at
    // the end of a damaged file, by the last one it gave.
    if (outcome == Impl::kFailed && d.haveFrame) {
        d.unreachable = p;
        return true;
    }
    return outcome != Impl::kFailed;
}

unsigned char* LGLMovieDecoder::frameBits() const
{
    if (!impl_ || !impl_->haveFrame)
        return nullptr;
    return impl_->frame->data[0];
}

// ---------------------------------------------------------------- scaling

struct LGLMovieDecoder::Scaler::Impl {
    SwsContext* context = nullptr;
    // What the colour conversion was last set up for.
    int sourceFormat = -1;
    int sourceRange = -1;
    int sourceSpace = -1;
    int sourceWidth = 0;
    int sourceHeight = 0;
    int targetWidth = 0;
    int targetHeight = 0;

    ~Impl() { sws_freeContext(context); }
};

LGLMovieDecoder::Scaler::Scaler() : impl_(std::make_unique<Impl>()) {}

LGLMovieDecoder::Scaler::~Scaler() = default;

bool LGLMovieDecoder::Scaler::draw(const LGLMovieDecoder& source, unsigned char* bits, int width, int height)
{
    const AVFrame* frame = source.impl_ && source.impl_->haveFrame ? source.impl_->frame : nullptr;
    if (!frame || !bits || width <= 0 || height <= 0 || frame->width <= 0 || frame->height <= 0 || !frame->data[0])
        return false;

    // The full-range ("J") YUV formats are the plain ones with the full range set explicitly.
    AVPixelFormat format = static_cast<AVPixelFormat>(frame->format);
    int range = frame->color_range == AVCOL_RANGE_JPEG ? 1 : 0;
    switch (format) {
    case AV_PIX_FMT_YUVJ420P: format = AV_PIX_FMT_YUV420P; range = 1; break;
    case AV_PIX_FMT_YUVJ422P: format = AV_PIX_FMT_YUV422P; range = 1; break;
    case AV_PIX_FMT_YUVJ444P: format = AV_PIX_FMT_YUV444P; range = 1; break;
    case AV_PIX_FMT_YUVJ440P: format = AV_PIX_FMT_YUV440P; range = 1; break;
    case AV_PIX_FMT_YUVJ411P: format = AV_PIX_FMT_YUV411P; range = 1; break;
    default: break;
    }
    int space = frame->colorspace == AVCOL_SPC_UNSPECIFIED ? SWS_CS_DEFAULT : static_cast<int>(frame->colorspace);

    // The context is made anew only when the frame's format or size changes; the colour range and
    // matrix are set on it once. (sws_getCachedContext would replace a context whose colour details
    // were set, silently losing them.)
    Impl& s = *impl_;
    if (!s.context || format != s.sourceFormat || range != s.sourceRange || space != s.sourceSpace ||
        frame->width != s.sourceWidth || frame->height != s.sourceHeight || width != s.targetWidth ||
        height != s.targetHeight) {
        sws_freeContext(s.context);
        s.context = sws_getContext(frame->width, frame->height, format, width, height, AV_PIX_FMT_BGR24, SWS_BILINEAR,
                                   nullptr, nullptr, nullptr);
        s.sourceFormat = -1;
        if (!s.context)
            return false;
        // Colour details matter to YUV sources only; set on an RGB or paletted source they would
        // make the scaler convert a range that is not there.
        const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
        if (descriptor && !(descriptor->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)))
            sws_setColorspaceDetails(s.context, sws_getCoefficients(space), range, sws_getCoefficients(SWS_CS_DEFAULT),
                                     1, 0, 1 << 16, 1 << 16);
        s.sourceFormat = format;
        s.sourceRange = range;
        s.sourceSpace = space;
        s.sourceWidth = frame->width;
        s.sourceHeight = frame->height;
        s.targetWidth = width;
        s.targetHeight = height;
    }

    // A device-independent bitmap lies bottom row first, each row padded to four bytes: the scaler
    // writes the top row at the end of the block and walks backwards.
    int stride = (width * 3 + 3) & ~3;
    uint8_t* target[4] = {bits + static_cast<size_t>(height - 1) * stride, nullptr, nullptr, nullptr};
    int targetStride[4] = {-stride, 0, 0, 0};
    return sws_scale(s.context, frame->data, frame->linesize, 0, frame->height, target, targetStride) > 0;
}
