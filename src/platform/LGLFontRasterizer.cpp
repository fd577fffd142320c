// LGLFontRasterizer.cpp -- system fonts as bitmap display lists on Linux: fontconfig picks the face,
// FreeType renders codes 0..255 into one glBitmap list each.
#include <ostrum_gl/platform/LGLFontRasterizer.h>

#include <GL/gl.h>
#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_SYNTHESIS_H
#include FT_TRUETYPE_TABLES_H

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

constexpr int kCodes = 256;
// A positive height 0 stands for the desktop's default cell of 16 pixels.
constexpr int kDefaultCellHeight = 16;
// Larger ems would fill megabytes of display lists per font for no game's use; they are drawn at this.
constexpr double kLargestEm = 512.0;

// Windows-1252 codes 0x80..0x9F; the five undefined codes keep their C1 control number.
constexpr unsigned short kWindows1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 0x80
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  // 0x88
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 0x90
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,  // 0x98
};

// The Adobe Symbol encoding, codes 0x20..0x7F and 0xA0..0xFF, as Unicode. The private-use code points
// of the encoding's extenders and sans-serif signs are given as their nearest standard characters so
// that ordinary faces can draw them; 0 marks the two codes the encoding leaves empty.
constexpr unsigned short kSymbolLow[96] = {
    0x0020, 0x0021, 0x2200, 0x0023, 0x2203, 0x0025, 0x0026, 0x220B,  // 0x20
    0x0028, 0x0029, 0x2217, 0x002B, 0x002C, 0x2212, 0x002E, 0x002F,  // 0x28
    0x0030, 0x0031, 0x0032, 0x0033, 0x0034, 0x0035, 0x0036, 0x0037,  // 0x30
    0x0038, 0x0039, 0x003A, 0x003B, 0x003C, 0x003D, 0x003E, 0x003F,  // 0x38
    0x2245, 0x0391, 0x0392, 0x03A7, 0x0394, 0x0395, 0x03A6, 0x0393,  // 0x40
    0x0397, 0x0399, 0x03D1, 0x039A, 0x039B, 0x039C, 0x039D, 0x039F,  // 0x48
    0x03A0, 0x0398, 0x03A1, 0x03A3, 0x03A4, 0x03A5, 0x03C2, 0x03A9,  // 0x50
    0x039E, 0x03A8, 0x0396, 0x005B, 0x2234, 0x005D, 0x22A5, 0x005F,  // 0x58
    0x203E, 0x03B1, 0x03B2, 0x03C7, 0x03B4, 0x03B5, 0x03C6, 0x03B3,  // 0x60
    0x03B7, 0x03B9, 0x03D5, 0x03BA, 0x03BB, 0x03BC, 0x03BD, 0x03BF,  // 0x68
    0x03C0, 0x03B8, 0x03C1, 0x03C3, 0x03C4, 0x03C5, 0x03D6, 0x03C9,  // 0x70
    0x03BE, 0x03C8, 0x03B6, 0x007B, 0x007C, 0x007D, 0x223C, 0x007F,  // 0x78
};
constexpr unsigned short kSymbolHigh[96] = {
    0x20AC, 0x03D2, 0x2032, 0x2264, 0x2044, 0x221E, 0x0192, 0x2663,  // 0xA0
    0x2666, 0x2665, 0x2660, 0x2194, 0x2190, 0x2191, 0x2192, 0x2193,  // 0xA8
    0x00B0, 0x00B1, 0x2033, 0x2265, 0x00D7, 0x221D, 0x2202, 0x2022,  // 0xB0
    0x00F7, 0x2260, 0x2261, 0x2248, 0x2026, 0x23D0, 0x23AF, 0x21B5,  // 0xB8
    0x2135, 0x2111, 0x211C, 0x2118, 0x2297, 0x2295, 0x2205, 0x2229,  // 0xC0
    0x222A, 0x2283, 0x2287, 0x2284, 0x2282, 0x2286, 0x2208, 0x2209,  // 0xC8
    0x2220, 0x2207, 0x00AE, 0x00A9, 0x2122, 0x220F, 0x221A, 0x22C5,  // 0xD0
    0x00AC, 0x2227, 0x2228, 0x21D4, 0x21D0, 0x21D1, 0x21D2, 0x21D3,  // 0xD8
    0x25CA, 0x2329, 0x00AE, 0x00A9, 0x2122, 0x2211, 0x239B, 0x239C,  // 0xE0
    0x239D, 0x23A1, 0x23A2, 0x23A3, 0x23A7, 0x23A8, 0x23A9, 0x23AA,  // 0xE8
    0x0000, 0x232A, 0x222B, 0x2320, 0x23AE, 0x2321, 0x239E, 0x239F,  // 0xF0
    0x23A0, 0x23A4, 0x23A5, 0x23A6, 0x23AB, 0x23AC, 0x23AD, 0x0000,  // 0xF8
};

// Families of the desktop that the project replaces, each with the installed faces tried behind it.
struct FamilyFallback {
    const char* family;
    const char* fallbacks[3];
};
constexpr FamilyFallback kFallbacks[] = {
    {"arial", {"Liberation Sans", nullptr, nullptr}},
    {"times new roman", {"Liberation Serif", nullptr, nullptr}},
    {"courier new", {"Liberation Mono", nullptr, nullptr}},
    {"tahoma", {"DejaVu Sans", nullptr, nullptr}},
    {"verdana", {"DejaVu Sans", nullptr, nullptr}},
    {"symbol", {"Standard Symbols PS", "OpenSymbol", "DejaVu Sans"}},
};

bool sameFamily(const std::string& a, const char* lowerB)
{
    if (a.size() != std::strlen(lowerB))
        return false;
    for (size_t i = 0; i < a.size(); ++i) {
        char c = a[i];
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
        if (c != lowerB[i])
            return false;
    }
    return true;
}

int fontconfigWeight(int weight)
{
    if (weight < 1)
        weight = 400;
    if (weight > 1000)
        weight = 1000;
    return FcWeightFromOpenType(weight);
}

// What fontconfig answered, with the synthesis it asks for.
struct Match {
    LGLFontRasterizer::tResolvedFace face;
    bool hasMatrix = false;
    FcMatrix matrix{1, 0, 0, 1};
};

bool match(const LGLFontRasterizer::tFontRequest& request, Match& out)
{
    if (!FcInit())
        return false;
    FcPattern* pattern = FcPatternCreate();
    if (pattern == nullptr)
        return false;
    FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(request.faceName.c_str()));
    for (const FamilyFallback& fallback : kFallbacks) {
        if (!sameFamily(request.faceName, fallback.family))
            continue;
        for (const char* family : fallback.fallbacks) {
            if (family == nullptr)
                continue;
            FcValue value;
            value.type = FcTypeString;
            value.u.s = reinterpret_cast<const FcChar8*>(family);
            FcPatternAddWeak(pattern, FC_FAMILY, value, FcTrue);
        }
    }
    FcPatternAddInteger(pattern, FC_WEIGHT, fontconfigWeight(request.weight));
    FcPatternAddInteger(pattern, FC_SLANT, request.italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
    FcDefaultSubstitute(pattern);

    FcResult result = FcResultNoMatch;
    FcPattern* found = FcFontMatch(nullptr, pattern, &result);
    FcPatternDestroy(pattern);
    if (found == nullptr)
        return false;

    bool ok = false;
    FcChar8* text = nullptr;
    if (FcPatternGetString(found, FC_FILE, 0, &text) == FcResultMatch && text != nullptr && text[0] != 0) {
        ok = true;
        out.face.file = reinterpret_cast<const char*>(text);
        int index = 0;
        if (FcPatternGetInteger(found, FC_INDEX, 0, &index) == FcResultMatch)
            out.face.index = index;
        if (FcPatternGetString(found, FC_FAMILY, 0, &text) == FcResultMatch && text != nullptr)
            out.face.family = reinterpret_cast<const char*>(text);
        if (FcPatternGetString(found, FC_STYLE, 0, &text) == FcResultMatch && text != nullptr)
            out.face.style = reinterpret_cast<const char*>(text);
        FcBool embolden = FcFalse;
        if (FcPatternGetBool(found, FC_EMBOLDEN, 0, &embolden) == FcResultMatch)
            out.face.emboldened = embolden == FcTrue;
        FcMatrix* matrix = nullptr;
        if (FcPatternGetMatrix(found, FC_MATRIX, 0, &matrix) == FcResultMatch && matrix != nullptr) {
            out.hasMatrix = true;
            out.matrix = *matrix;
            out.face.slanted = matrix->xy != 0.0 || matrix->yx != 0.0;
        }
    }
    FcPatternDestroy(found);
    return ok;
}

// The em height in pixels for the height as the desktop call reads it.
double emPixels(FT_Face face, int height)
{
    double em;
    if (height < 0) {
        em = -static_cast<double>(height);
    } else {
        const double cell = height > 0 ? height : kDefaultCellHeight;
        double design = 0.0;
        const TT_OS2* os2 = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
        if (os2 != nullptr && os2->version != 0xFFFF)
            design = static_cast<double>(os2->usWinAscent) + os2->usWinDescent;
        if (design <= 0.0)
            design = static_cast<double>(face->ascender) - face->descender;
        if (design <= 0.0 || face->units_per_EM == 0)
            em = cell;
        else
            em = cell * face->units_per_EM / design;
    }
    // The desktop rasteriser works in whole pixels per em, and so do the widths here.
    return std::min(std::max(std::round(em), 1.0), kLargestEm);
}

bool setSize(FT_Face face, int height)
{
    const double em = emPixels(face, height);
    if (FT_IS_SCALABLE(face))
        return FT_Set_Char_Size(face, 0, static_cast<FT_F26Dot6>(std::lround(em * 64.0)), 72, 72) == 0;
    if (face->num_fixed_sizes <= 0)
        return false;
    int best = 0;
    for (int i = 1; i < face->num_fixed_sizes; ++i)
        if (std::fabs(face->available_sizes[i].y_ppem / 64.0 - em) <
            std::fabs(face->available_sizes[best].y_ppem / 64.0 - em))
            best = i;
    return FT_Select_Size(face, best) == 0;
}

// How the codes of the request find their glyphs in the face.
struct CodeMap {
    bool msSymbol = false;
    bool symbolSet = false;
};

CodeMap selectCharmap(FT_Face face, bool symbolSet)
{
    CodeMap map;
    map.symbolSet = symbolSet;
    if (symbolSet && FT_Select_Charmap(face, FT_ENCODING_MS_SYMBOL) == 0) {
        map.msSymbol = true;
        return map;
    }
    FT_Select_Charmap(face, FT_ENCODING_UNICODE);
    return map;
}

FT_UInt glyphOf(FT_Face face, const CodeMap& map, int code)
{
    if (map.msSymbol) {
        FT_UInt glyph = FT_Get_Char_Index(face, 0xF000u + static_cast<FT_ULong>(code));
        return glyph != 0 ? glyph : FT_Get_Char_Index(face, static_cast<FT_ULong>(code));
    }
    const unsigned int character = LGLFontRasterizer::unicodeOf(code, map.symbolSet);
    if (character == 0 && code != 0)
        return 0;
    return FT_Get_Char_Index(face, character);
}

// The glyph bitmap as OpenGL's glBitmap takes it: rows bottom-up, 1 bit a pixel, most significant bit
// first, rows padded to whole bytes.
struct GlyphBitmap {
    int width = 0;
    int rows = 0;
    std::vector<GLubyte> bits;
};

bool inkAt(const FT_Bitmap& bitmap, const unsigned char* row, unsigned int x)
{
    switch (bitmap.pixel_mode) {
    case FT_PIXEL_MODE_MONO:
        return (row[x >> 3] & (0x80 >> (x & 7))) != 0;
    case FT_PIXEL_MODE_GRAY:
        return row[x] >= 128;
    case FT_PIXEL_MODE_BGRA:
        return row[x * 4 + 3] >= 128;
    default:
        return false;
    }
}

GlyphBitmap convert(const FT_Bitmap& bitmap)
{
    GlyphBitmap out;
    if (bitmap.width == 0 || bitmap.rows == 0 || bitmap.buffer == nullptr)
        return out;
    out.width = static_cast<int>(bitmap.width);
    out.rows = static_cast<int>(bitmap.rows);
    const size_t bytesPerRow = (bitmap.width + 7) / 8;
    out.bits.assign(bytesPerRow * bitmap.rows, 0);
    const int pitch = bitmap.pitch;
    for (unsigned int top = 0; top < bitmap.rows; ++top) {
        // A negative pitch means the buffer already runs bottom-up.
        const unsigned char* row = pitch >= 0 ? bitmap.buffer + static_cast<size_t>(top) * pitch
                                              : bitmap.buffer + static_cast<size_t>(bitmap.rows - 1 - top) * -pitch;
        GLubyte* dest = &out.bits[(bitmap.rows - 1 - top) * bytesPerRow];
        for (unsigned int x = 0; x < bitmap.width; ++x)
            if (inkAt(bitmap, row, x))
                dest[x >> 3] = static_cast<GLubyte>(dest[x >> 3] | (0x80 >> (x & 7)));
    }
    return out;
}

// Mesa drops a glBitmap from a display list, with GL_OUT_OF_MEMORY, when its pixel pointer is null,
// even for a bitmap of no pixels; empty glyphs point here instead.
const GLubyte kNoPixels[1] = {0};

// Renders one glyph and compiles it into `list`; returns its advance in pixels.
int compileGlyph(FT_Face face, FT_UInt glyph, bool embolden, GLuint list)
{
    int advance = 0;
    GlyphBitmap bitmap;
    float originX = 0.0f, originY = 0.0f;
    if (FT_Load_Glyph(face, glyph, FT_LOAD_DEFAULT | FT_LOAD_TARGET_MONO) == 0) {
        FT_GlyphSlot slot = face->glyph;
        // Monochrome hinting may move a glyph's advance by a pixel or more away from the face's
        // design; the advance is the design width rounded instead, so that the faces that stand in
        // for the desktop's keep their metrics.
        FT_Fixed advance16 = FT_IS_SCALABLE(face) ? slot->linearHoriAdvance : slot->advance.x * 1024;
        if (embolden) {
            const FT_Pos before = slot->advance.x;
            FT_GlyphSlot_Embolden(slot);
            advance16 += (slot->advance.x - before) * 1024;
        }
        if (slot->format == FT_GLYPH_FORMAT_BITMAP || FT_Render_Glyph(slot, FT_RENDER_MODE_MONO) == 0) {
            bitmap = convert(slot->bitmap);
            // glBitmap's origin is measured from the bitmap's lower-left corner.
            originX = static_cast<float>(-slot->bitmap_left);
            originY = static_cast<float>(bitmap.rows - slot->bitmap_top);
        }
        advance = static_cast<int>((advance16 + 32768) >> 16);
        if (advance < 0)
            advance = 0;
    }
    glNewList(list, GL_COMPILE);
    glBitmap(bitmap.width, bitmap.rows, originX, originY, static_cast<float>(advance), 0.0f,
             bitmap.bits.empty() ? kNoPixels : bitmap.bits.data());
    glEndList();
    return advance;
}

void compileEmptyLists(GLuint listBase, int widths[kCodes])
{
    for (int code = 0; code < kCodes; ++code) {
        glNewList(listBase + static_cast<GLuint>(code), GL_COMPILE);
        glBitmap(0, 0, 0.0f, 0.0f, 0.0f, 0.0f, kNoPixels);
        glEndList();
        widths[code] = 0;
    }
}

}  // namespace

unsigned int LGLFontRasterizer::unicodeOf(int code, bool symbolSet)
{
    if (code < 0 || code > 255)
        return 0;
    if (!symbolSet) {
        if (code >= 0x80 && code < 0xA0)
            return kWindows1252High[code - 0x80];
        return static_cast<unsigned int>(code);
    }
    if (code >= 0x20 && code < 0x80)
        return kSymbolLow[code - 0x20];
    if (code >= 0xA0)
        return kSymbolHigh[code - 0xA0];
    // Controls below 0x20 and 0x80..0x9F are not part of the encoding; they keep their number.
    return static_cast<unsigned int>(code);
}

bool LGLFontRasterizer::resolveFace(const tFontRequest& request, tResolvedFace& face)
{
    Match found;
    if (!match(request, found))
        return false;
    face = found.face;
    return true;
}

bool LGLFontRasterizer::buildLists(const tFontRequest& request, unsigned int listBase, int widths[256])
{
    // The unpack state of the caller must not shape the bitmaps compiled into the lists.
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
    glPixelStorei(GL_UNPACK_LSB_FIRST, GL_FALSE);
    glPixelStorei(GL_UNPACK_SWAP_BYTES, GL_FALSE);

    bool built = false;
    Match found;
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    if (match(request, found) && FT_Init_FreeType(&library) == 0 &&
        FT_New_Face(library, found.face.file.c_str(), found.face.index, &face) == 0 && setSize(face, request.height)) {
        if (found.hasMatrix) {
            FT_Matrix matrix;
            matrix.xx = static_cast<FT_Fixed>(std::lround(found.matrix.xx * 65536.0));
            matrix.xy = static_cast<FT_Fixed>(std::lround(found.matrix.xy * 65536.0));
            matrix.yx = static_cast<FT_Fixed>(std::lround(found.matrix.yx * 65536.0));
            matrix.yy = static_cast<FT_Fixed>(std::lround(found.matrix.yy * 65536.0));
            FT_Set_Transform(face, &matrix, nullptr);
        }
        const CodeMap map = selectCharmap(face, request.symbolSet);
        for (int code = 0; code < kCodes; ++code)
            widths[code] = compileGlyph(face, glyphOf(face, map, code), found.face.emboldened,
                                        listBase + static_cast<GLuint>(code));
        built = true;
    }
    if (!built)
        compileEmptyLists(listBase, widths);
    if (face != nullptr)
        FT_Done_Face(face);
    if (library != nullptr)
        FT_Done_FreeType(library);
    glPopClientAttrib();
    return built;
}
