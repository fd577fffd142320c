// LImageTest.cpp -- LImage::LoadJPG: real JPEG files of every coding, compared with a plain decode by
// the system's libjpeg, and damaged files.
#include <ostrum_core/LImage.h>

#include "ImageTestFiles.h"
#include "TestSupport.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <jpeglib.h>

using namespace image_test;

namespace {

struct JpgRelease {
    void operator()(tImageJPG* image) const
    {
        std::free(image->data);
        std::free(image);
    }
};
using JpgPtr = std::unique_ptr<tImageJPG, JpgRelease>;

JpgPtr loadFile(const std::string& relative, int& channels)
{
    return JpgPtr(LImage::LoadJPG(assetPath(relative).c_str(), channels));
}

JpgPtr loadBytes(const std::string& file, int& channels, int maxSide = LImage::MaxImageSide)
{
    return JpgPtr(LImage::LoadJPGFromMemory(bytesOf(file), file.size(), channels, maxSide));
}

std::string pixels(const tImageJPG& image)
{
    return std::string(reinterpret_cast<char*>(image.data), static_cast<size_t>(image.rowSpan) * image.sizeY);
}

// The reference: the system's libjpeg driven in the plainest way, top row first, in the colour space
// asked for. It is reached through the dynamic loader because only ostrum_core links it.
class ReferenceDecoder {
public:
    ReferenceDecoder()
    {
        handle_ = dlopen("libjpeg.so.62", RTLD_NOW);
        if (handle_ == nullptr)
            return;
        stdError_ = reinterpret_cast<decltype(stdError_)>(dlsym(handle_, "jpeg_std_error"));
        create_ = reinterpret_cast<decltype(create_)>(dlsym(handle_, "jpeg_CreateDecompress"));
        memSrc_ = reinterpret_cast<decltype(memSrc_)>(dlsym(handle_, "jpeg_mem_src"));
        readHeader_ = reinterpret_cast<decltype(readHeader_)>(dlsym(handle_, "jpeg_read_header"));
        start_ = reinterpret_cast<decltype(start_)>(dlsym(handle_, "jpeg_start_decompress"));
        readScanlines_ = reinterpret_cast<decltype(readScanlines_)>(dlsym(handle_, "jpeg_read_scanlines"));
        finish_ = reinterpret_cast<decltype(finish_)>(dlsym(handle_, "jpeg_finish_decompress"));
        destroy_ = reinterpret_cast<decltype(destroy_)>(dlsym(handle_, "jpeg_destroy_decompress"));
    }
    ~ReferenceDecoder()
    {
        if (handle_ != nullptr)
            dlclose(handle_);
    }
    bool available() const
    {
        return stdError_ && create_ && memSrc_ && readHeader_ && start_ && readScanlines_ && finish_ && destroy_;
    }

    // Decodes a whole file known to be good; width, height and components come back too.
    std::string decode(const std::string& file, J_COLOR_SPACE space, int& width, int& height, int& components,
                       bool& adobe)
    {
        jpeg_decompress_struct cinfo;
        jpeg_error_mgr err;
        cinfo.err = stdError_(&err);
        create_(&cinfo, JPEG_LIB_VERSION, sizeof cinfo);
        memSrc_(&cinfo, bytesOf(file), static_cast<unsigned long>(file.size()));
        readHeader_(&cinfo, TRUE);
        cinfo.out_color_space = space;
        start_(&cinfo);
        width = static_cast<int>(cinfo.output_width);
        height = static_cast<int>(cinfo.output_height);
        components = cinfo.output_components;
        adobe = cinfo.saw_Adobe_marker != 0;
        size_t span = static_cast<size_t>(width) * components;
        std::string out(span * height, '\0');
        while (cinfo.output_scanline < cinfo.output_height) {
            JSAMPROW row = reinterpret_cast<JSAMPROW>(&out[cinfo.output_scanline * span]);
            readScanlines_(&cinfo, &row, 1);
        }
        finish_(&cinfo);
        destroy_(&cinfo);
        return out;
    }

private:
    void* handle_ = nullptr;
    jpeg_error_mgr* (*stdError_)(jpeg_error_mgr*) = nullptr;
    void (*create_)(j_decompress_ptr, int, size_t) = nullptr;
    void (*memSrc_)(j_decompress_ptr, const unsigned char*, unsigned long) = nullptr;
    int (*readHeader_)(j_decompress_ptr, boolean) = nullptr;
    boolean (*start_)(j_decompress_ptr) = nullptr;
    JDIMENSION (*readScanlines_)(j_decompress_ptr, JSAMPARRAY, JDIMENSION) = nullptr;
    boolean (*finish_)(j_decompress_ptr) = nullptr;
    void (*destroy_)(j_decompress_ptr) = nullptr;
};

// Loads a file with LoadJPG and checks it against the reference decode in `space`.
void expectMatchesReference(const std::string& relative, J_COLOR_SPACE space, int expectedChannels)
{
    SCOPED_TRACE(relative);
    ReferenceDecoder reference;
    ASSERT_TRUE(reference.available());
    std::string file = asset(relative);
    int width = 0, height = 0, components = 0;
    bool adobe = false;
    std::string expected = reference.decode(file, space, width, height, components, adobe);
    int channels = -1;
    JpgPtr image = loadFile(relative, channels);
    ASSERT_TRUE(image);
    EXPECT_EQ(channels, expectedChannels);
    EXPECT_EQ(image->sizeX, width);
    EXPECT_EQ(image->sizeY, height);
    EXPECT_EQ(image->rowSpan, width * expectedChannels);
    EXPECT_TRUE(pixels(*image) == expected);
}

// Offset of the first marker `code` (the 0xFF byte) in the file's header segments, or npos.
size_t findMarker(const std::string& file, unsigned code)
{
    size_t at = 2;
    while (at + 4 <= file.size() && static_cast<unsigned char>(file[at]) == 0xFF) {
        unsigned marker = static_cast<unsigned char>(file[at + 1]);
        if (marker == code)
            return at;
        if (marker == 0xDA)
            break;
        at += 2 + ((static_cast<unsigned char>(file[at + 2]) << 8) | static_cast<unsigned char>(file[at + 3]));
    }
    return std::string::npos;
}

// Sets the height and width of the frame header (baseline or progressive).
std::string withFrameSize(std::string file, unsigned width, unsigned height)
{
    size_t sof = findMarker(file, 0xC0);
    if (sof == std::string::npos)
        sof = findMarker(file, 0xC2);
    EXPECT_NE(sof, std::string::npos);
    file[sof + 5] = static_cast<char>(height >> 8);
    file[sof + 6] = static_cast<char>(height & 0xFF);
    file[sof + 7] = static_cast<char>(width >> 8);
    file[sof + 8] = static_cast<char>(width & 0xFF);
    return file;
}

// Collects what is written to the standard error stream while it lives.
class StderrCapture {
public:
    StderrCapture()
    {
        std::fflush(stderr);
        path_ = ostrum_test::makeTempDir() + "/stderr.txt";
        int fd = ::open(path_.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
        saved_ = ::dup(2);
        ::dup2(fd, 2);
        ::close(fd);
    }
    ~StderrCapture() { restore(); }
    std::string take()
    {
        restore();
        return ostrum_test::readFile(path_);
    }

private:
    void restore()
    {
        if (saved_ < 0)
            return;
        std::fflush(stderr);
        ::dup2(saved_, 2);
        ::close(saved_);
        saved_ = -1;
    }
    std::string path_;
    int saved_ = -1;
};

}  // namespace

// ---------------------------------------------------------------- real files

TEST(LImageLoadJPG, BaselineColourFileGivesRgbRowsTopFirst)
{
    expectMatchesReference("jpg/libjpeg-turbo/testorig.jpg", JCS_RGB, 3);
    int channels = 0;
    JpgPtr image = loadFile("jpg/libjpeg-turbo/testorig.jpg", channels);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->sizeX, 227);
    EXPECT_EQ(image->sizeY, 149);
    EXPECT_EQ(image->rowSpan, 681);
}

TEST(LImageLoadJPG, ProgressiveFilesLoad)
{
    expectMatchesReference("3ds/assimp-nonbsd/jeep1.jpg", JCS_RGB, 3);
    expectMatchesReference("jpg/pillow/app13-multiple.jpg", JCS_RGB, 3);
    int channels = 0;
    JpgPtr jeep = loadFile("3ds/assimp-nonbsd/jeep1.jpg", channels);
    ASSERT_TRUE(jeep);
    EXPECT_EQ(jeep->sizeX, 512);
    EXPECT_EQ(jeep->sizeY, 512);
}

TEST(LImageLoadJPG, ArithmeticCodedFileMatchesItsHuffmanCodedTwin)
{
    // The same picture with the same quantisation, coded two ways: the pixels must be identical.
    int channels = 0;
    JpgPtr arithmetic = loadFile("jpg/libjpeg-turbo/testimgari.jpg", channels);
    ASSERT_TRUE(arithmetic);
    EXPECT_EQ(channels, 3);
    JpgPtr huffman = loadFile("jpg/libjpeg-turbo/testimgint.jpg", channels);
    ASSERT_TRUE(huffman);
    ASSERT_EQ(arithmetic->sizeX, huffman->sizeX);
    ASSERT_EQ(arithmetic->sizeY, huffman->sizeY);
    EXPECT_TRUE(pixels(*arithmetic) == pixels(*huffman));
}

TEST(LImageLoadJPG, GreyFileGivesOneChannel)
{
    expectMatchesReference("jpg/pillow/hopper_gray.jpg", JCS_GRAYSCALE, 1);
    expectMatchesReference("jpg/magnum/gray.jpg", JCS_GRAYSCALE, 1);
}

TEST(LImageLoadJPG, GreyFileIsTheLuminanceOfItsColourTwin)
{
    int channels = 0;
    JpgPtr colour = loadFile("jpg/pillow/hopper.jpg", channels);
    ASSERT_TRUE(colour);
    ASSERT_EQ(channels, 3);
    JpgPtr grey = loadFile("jpg/pillow/hopper_gray.jpg", channels);
    ASSERT_TRUE(grey);
    ASSERT_EQ(channels, 1);
    ASSERT_EQ(grey->sizeX * grey->sizeY, colour->sizeX * colour->sizeY);
    // Y = 0.299 R + 0.587 G + 0.114 B, within the rounding of two separate lossy codings.
    double total = 0;
    double worst = 0;
    int count = grey->sizeX * grey->sizeY;
    for (int i = 0; i < count; ++i) {
        const unsigned char* p = colour->data + i * 3;
        double luminance = 0.299 * p[0] + 0.587 * p[1] + 0.114 * p[2];
        double difference = std::fabs(luminance - grey->data[i]);
        total += difference;
        worst = std::max(worst, difference);
    }
    EXPECT_LT(total / count, 1.0);
    EXPECT_LE(worst, 12.0);
}

TEST(LImageLoadJPG, ImagesSmallerThanOneBlockLoad)
{
    expectMatchesReference("jpg/magnum/rgb.jpg", JCS_RGB, 3);
}

TEST(LImageLoadJPG, UpperCaseExtensionAndNameCaseDoNotMatter)
{
    expectMatchesReference("jpg/dxsdk/lobbyxpos.JPG", JCS_RGB, 3);
    std::string dir = ostrum_test::makeTempDir();
    ostrum_test::writeFile(dir + "/IMAGE1.jpg", asset("jpg/magnum/rgb.jpg"));
    int channels = 0;
    JpgPtr image(LImage::LoadJPG((dir + "/image1.JPG").c_str(), channels));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->sizeX, 3);
    EXPECT_EQ(channels, 3);
}

TEST(LImageLoadJPG, CmykFileIsConvertedToRgb)
{
    ReferenceDecoder reference;
    ASSERT_TRUE(reference.available());
    std::string file = asset("jpg/pillow/pil_sample_cmyk.jpg");
    int width = 0, height = 0, components = 0;
    bool adobe = false;
    std::string ink = reference.decode(file, JCS_CMYK, width, height, components, adobe);
    ASSERT_EQ(components, 4);
    ASSERT_TRUE(adobe);  // Adobe writers store inverted ink: 255 means none
    int channels = 0;
    JpgPtr image = loadBytes(file, channels);
    ASSERT_TRUE(image);
    EXPECT_EQ(channels, 3);
    EXPECT_EQ(image->sizeX, width);
    EXPECT_EQ(image->rowSpan, width * 3);
    for (int i = 0; i < width * height; i += 97) {
        int k = static_cast<unsigned char>(ink[i * 4 + 3]);
        for (int c = 0; c < 3; ++c) {
            int expected = (static_cast<unsigned char>(ink[i * 4 + c]) * k + 127) / 255;
            ASSERT_EQ(image->data[i * 3 + c], expected) << i << " " << c;
        }
    }
    // The picture has red in its top left corner and black in the opposite one.
    const unsigned char* topLeft = image->data;
    EXPECT_GT(topLeft[0], 200);
    EXPECT_LT(topLeft[1], 60);
    EXPECT_LT(topLeft[2], 60);
    const unsigned char* bottomRight = image->data + (static_cast<size_t>(width) * height - 1) * 3;
    EXPECT_LT(bottomRight[0] + bottomRight[1] + bottomRight[2], 40);
}

TEST(LImageLoadJPG, TwelveBitFileGivesNullAndNoChannels)
{
    int channels = 7;
    EXPECT_FALSE(loadFile("jpg/libjpeg-turbo/monkey12.jpg", channels));
    EXPECT_EQ(channels, 0);
}

TEST(LImageLoadJPG, TruncatedProgressiveFileGivesNull)
{
    int channels = 7;
    EXPECT_FALSE(loadFile("jpg/pillow/truncated_jpeg.jpg", channels));
    EXPECT_EQ(channels, 0);
}

TEST(LImageLoadJPG, MissingFileAndNullPathGiveNull)
{
    int channels = 7;
    EXPECT_FALSE(JpgPtr(LImage::LoadJPG((ostrum_test::makeTempDir() + "/none.jpg").c_str(), channels)));
    EXPECT_EQ(channels, 0);
    channels = 7;
    EXPECT_FALSE(JpgPtr(LImage::LoadJPG(nullptr, channels)));
    EXPECT_EQ(channels, 0);
    EXPECT_FALSE(JpgPtr(LImage::LoadJPGFromMemory(nullptr, 10, channels)));
}

// ---------------------------------------------------------------- damaged files

TEST(LImageLoadJPG, EveryTruncationGivesNull)
{
    for (const char* name : {"jpg/libjpeg-turbo/testorig.jpg", "jpg/pillow/app13-multiple.jpg",
                             "jpg/libjpeg-turbo/testimgari.jpg"}) {
        std::string file = asset(name);
        ASSERT_EQ(file.substr(file.size() - 2), bytes({0xFF, 0xD9}));
        for (size_t length = 0; length < file.size(); length += 1 + length / 10) {
            int channels = 7;
            ASSERT_FALSE(JpgPtr(LImage::LoadJPGFromMemory(bytesOf(file), length, channels))) << name << " " << length;
            ASSERT_EQ(channels, 0);
        }
        // Even a file that only lacks its end-of-image marker.
        int channels = 0;
        EXPECT_FALSE(JpgPtr(LImage::LoadJPGFromMemory(bytesOf(file), file.size() - 2, channels))) << name;
        EXPECT_TRUE(JpgPtr(LImage::LoadJPGFromMemory(bytesOf(file), file.size(), channels))) << name;
    }
}

TEST(LImageLoadJPG, MarkerInsideCodedDataGivesNull)
{
    std::string file = asset("jpg/libjpeg-turbo/testorig.jpg");
    size_t sos = findMarker(file, 0xDA);
    ASSERT_NE(sos, std::string::npos);
    // Put a restart marker into the middle of the coded data of a file without restart intervals.
    std::string damaged = file;
    size_t middle = (sos + file.size()) / 2;
    damaged[middle] = static_cast<char>(0xFF);
    damaged[middle + 1] = static_cast<char>(0xD3);
    int channels = 7;
    EXPECT_FALSE(loadBytes(damaged, channels));
    EXPECT_EQ(channels, 0);
}

TEST(LImageLoadJPG, StrayBytesBetweenMarkersAreTolerated)
{
    // Stray bytes before the frame header make libjpeg warn about extraneous data and skip them.
    std::string file = asset("jpg/magnum/rgb.jpg");
    size_t sof = findMarker(file, 0xC0);
    ASSERT_NE(sof, std::string::npos);
    std::string padded = file.substr(0, sof) + bytes({0x12, 0x34, 0x56}) + file.substr(sof);
    int channels = 0;
    JpgPtr original = loadBytes(file, channels);
    JpgPtr image = loadBytes(padded, channels);
    ASSERT_TRUE(original);
    ASSERT_TRUE(image);
    EXPECT_TRUE(pixels(*image) == pixels(*original));
}

TEST(LImageLoadJPG, NotAJpegGivesNull)
{
    int channels = 7;
    EXPECT_FALSE(loadBytes(asset("bmp/bmpsuite/pal8.bmp"), channels));
    EXPECT_EQ(channels, 0);
    EXPECT_FALSE(loadBytes(std::string(), channels));
    EXPECT_FALSE(loadBytes(bytes({0xFF, 0xD8}), channels));
    EXPECT_FALSE(loadBytes(bytes({0xFF, 0xD8, 0xFF, 0xD9}), channels));
    std::string dir = ostrum_test::makeTempDir();
    ostrum_test::writeFile(dir + "/empty.jpg", "");
    EXPECT_FALSE(JpgPtr(LImage::LoadJPG((dir + "/empty.jpg").c_str(), channels)));
    EXPECT_FALSE(JpgPtr(LImage::LoadJPG(dir.c_str(), channels)));
}

TEST(LImageLoadJPG, FrameLargerThan16384OrEmptyGivesNull)
{
    std::string file = asset("jpg/magnum/rgb.jpg");
    int channels = 7;
    EXPECT_FALSE(loadBytes(withFrameSize(file, 16385, 2), channels));
    EXPECT_EQ(channels, 0);
    EXPECT_FALSE(loadBytes(withFrameSize(file, 3, 16385), channels));
    EXPECT_FALSE(loadBytes(withFrameSize(file, 65535, 65535), channels));
    EXPECT_FALSE(loadBytes(withFrameSize(file, 0, 2), channels));
    EXPECT_FALSE(loadBytes(withFrameSize(file, 3, 0), channels));
}

TEST(LImageLoadJPG, SmallerLimitOfTheMemoryEntryIsHonoured)
{
    std::string file = asset("jpg/libjpeg-turbo/testorig.jpg");
    int channels = 0;
    EXPECT_TRUE(loadBytes(file, channels, 227));
    EXPECT_FALSE(loadBytes(file, channels, 226));
}

TEST(LImageLoadJPG, CorruptedBytesNeverEndTheProcess)
{
    // Every header byte of a small file set to a few hostile values: libjpeg's fatal errors must come
    // back as null, never as an exit; whatever loads is sized as its frame says.
    std::string file = asset("jpg/magnum/gray.jpg");
    for (size_t at = 2; at < file.size(); ++at) {
        for (int value : {0x00, 0x01, 0x7F, 0xFF}) {
            std::string damaged = file;
            damaged[at] = static_cast<char>(value);
            int channels = 0;
            JpgPtr image = loadBytes(damaged, channels);
            if (image) {
                ASSERT_TRUE(channels == 1 || channels == 3);
                ASSERT_EQ(image->rowSpan, image->sizeX * channels);
            } else {
                ASSERT_EQ(channels, 0);
            }
        }
    }
}

TEST(LImageLoadJPG, NothingIsPrinted)
{
    ostrum_test::StdoutCapture out;
    StderrCapture err;
    int channels = 0;
    JpgPtr truncated = loadFile("jpg/pillow/truncated_jpeg.jpg", channels);
    JpgPtr twelveBit = loadFile("jpg/libjpeg-turbo/monkey12.jpg", channels);
    std::string file = asset("jpg/magnum/rgb.jpg");
    size_t sof = findMarker(file, 0xC0);
    JpgPtr stray = loadBytes(file.substr(0, sof) + bytes({1, 2}) + file.substr(sof), channels);
    JpgPtr good = loadFile("jpg/magnum/rgb.jpg", channels);
    EXPECT_EQ(err.take(), "");
    EXPECT_EQ(out.take(), "");
}
