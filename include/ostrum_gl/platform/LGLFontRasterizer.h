// LGLFontRasterizer.h -- what LGLFont needs from the platform: a system font turned into 256 bitmap
// display lists and the width table that agrees with them.
//
// LGLFont was designed around a desktop font mapper and a call that renders a selected font into
// OpenGL bitmap lists. This is the one contract through which it reaches their Linux stand-ins; the
// implementation (fontconfig picks the face, FreeType renders it) lives in src/platform/ and is the
// only code that includes those headers.
//
//  face choice     fontconfig matches the face name, the weight and the italic flag and, like the
//                  desktop mapper, always answers: a name that is not installed gives fontconfig's best
//                  match. Families of the desktop that are not installed here are helped by a small
//                  table of fallbacks added behind the name (so an installed original still wins):
//                  Arial -> Liberation Sans, Times New Roman -> Liberation Serif, Courier New ->
//                  Liberation Mono (the metric-compatible faces), Tahoma and Verdana -> DejaVu Sans
//                  (the sans face of the Verdana family's proportions that the project installs), and
//                  "symbol" -> Standard Symbols PS, OpenSymbol, DejaVu Sans.
//  height          as the desktop call reads it: a positive height is the cell height in pixels (the
//                  face's Windows ascent plus descent, usWinAscent + usWinDescent, scaled to it); a
//                  negative one is the em height in pixels; 0 means a cell of 16 pixels. The em
//                  is rounded to whole pixels, as the desktop rasteriser works, and kept between 1
//                  and 512 pixels.
//  widths          each code's advance is the face's design advance at that em, rounded to whole
//                  pixels (monochrome hinting would move some advances by a pixel away from the
//                  metrics the stand-in faces share with the desktop's), plus what synthetic bold
//                  adds.
//  weight          the desktop scale 1..1000 (400 normal, 700 bold); 0, or anything below 1, is the
//                  normal weight and values above 1000 count as 1000. A bold request that matches only
//                  a lighter face is emboldened by FreeType, and an italic request that matches only an
//                  upright face is slanted, as fontconfig's synthetic rules ask.
//  character set   the ANSI set reads codes as Windows-1252 (0x80 is the euro sign; the five codes
//                  1252 leaves undefined stand for the C1 controls of the same number). The symbol set
//                  uses the face's own symbol encoding when it has one (code c at U+F000 + c, then at
//                  c) and otherwise the Adobe Symbol encoding translated to Unicode (a is alpha, p is
//                  pi, 0xA5 is infinity, ...), which faces with Greek and mathematical signs cover.
//  glyphs          a code the face has no glyph for draws the face's default glyph (glyph 0, usually
//                  a box) with that glyph's advance, as the desktop renders unmapped codes.
//  display lists   list listBase + c holds exactly one glBitmap: the glyph's 1-bit bitmap (hinted for
//                  monochrome), placed so that its baseline origin is the raster position, and an
//                  advance of widths[c] pixels in x and none in y. The pixel-unpack state in force
//                  while compiling is the rasteriser's own and the caller's is restored afterwards.
//  no face at all  when fontconfig finds no font file or FreeType cannot open it, every list is still
//                  compiled as an empty bitmap with no advance and every width is 0; the result is
//                  false so that the caller can say so.
#pragma once

#include <string>

class LGLFontRasterizer {
public:
    struct tFontRequest {
        std::string faceName;
        int height = 0;
        int weight = 0;
        bool italic = false;
        bool symbolSet = false;
    };

    // The face fontconfig chose for a request.
    struct tResolvedFace {
        std::string family;   // the first family name of the face, e.g. "Liberation Sans"
        std::string style;    // e.g. "Regular", "Bold Italic"
        std::string file;     // the font file
        int index = 0;        // the face's index inside the file
        bool emboldened = false;  // bold is synthesised
        bool slanted = false;     // italic is synthesised by a shear
    };

    // Picks the face for the request; false when no font file can be found at all.
    static bool resolveFace(const tFontRequest& request, tResolvedFace& face);

    // Compiles the 256 display lists listBase .. listBase + 255 in the current OpenGL context and
    // fills widths[0..255] with their advances in pixels. Must not be called between glBegin and
    // glEnd nor while a display list is being compiled. False when no face could be loaded (the
    // lists are then empty bitmaps without advance and the widths 0).
    static bool buildLists(const tFontRequest& request, unsigned int listBase, int widths[256]);

    // The Unicode character that code 0..255 stands for in the ANSI set (Windows-1252) or in the
    // symbol set (Adobe Symbol); 0 for a symbol code that encoding leaves empty and for codes outside
    // 0..255.
    static unsigned int unicodeOf(int code, bool symbolSet);
};
