// LString.h -- static string helpers: splitting, trimming, case, number text.
//
// Choices recorded here:
//  - split treats every character of `separator` as a separator of its own ("\t/" splits at tabs and
//    at slashes). Each separator ends a piece, so separators side by side, or at either end, give
//    empty pieces: split("a  b", " ") is {"a", "", "b"} and the number of pieces is always the number
//    of separators found plus one (an empty text gives one empty piece). Callers that want words drop
//    the empty pieces. An empty separator gives the whole text as the one piece.
//  - trimSpaces removes every kind of blank: space, tab, carriage return, line feed, vertical tab and
//    form feed, so lines of files written with "\r\n" endings lose their '\r' too.
//  - LowerCase changes the ASCII letters A-Z only; other bytes (UTF-8 sequences included) stay as
//    they are, whatever the process locale.
//  - dtoa gives the shortest text that reads back as the same double, in the style of printf's %g:
//    5.0 is "5", 0.1 is "0.1", 2.5e-07 is "2.5e-07", 1e+20 is "1e+20"; numbers of magnitude below
//    1e17 are written without an exponent (1000000.0 is "1000000", 0.0001 is "0.0001"), smaller than
//    0.0001 with one. Infinities and NaN are "inf", "-inf" and "nan" ("-nan" when the sign bit is
//    set). The decimal point is always '.', whatever the process locale.
//  - trimZInt pads the digits with zeros to `width` and puts a minus sign in front of them, so
//    trimZInt(-7, 3) is "-007"; a number with more digits than `width` is written whole.
#pragma once

#include <string>
#include <vector>

class LString {
public:
    static std::vector<std::string> split(std::string text, std::string separator);
    static std::string trimSpaces(std::string text);
    static std::string LowerCase(std::string text);
    static std::string itoa(int value);
    static std::string dtoa(double value);
    static std::string trimZInt(int value, int width);
    static int charCount(std::string text, char c);
    static std::string Char2String(char c);
};
