// LStringTest.cpp -- splitting, trimming, lower case, number text and counting of LString.
#include <ostrum_core/LString.h>

#include "TestSupport.h"

#include <stdlib.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

using Pieces = std::vector<std::string>;

// ---------------------------------------------------------------- split

TEST(LStringSplit, PiecesBetweenSeparatorsInOrder)
{
    EXPECT_EQ(LString::split("Terrain h.bmp 4096 64 10", " "), (Pieces{"Terrain", "h.bmp", "4096", "64", "10"}));
}

TEST(LStringSplit, TextWithoutSeparatorIsOnePiece)
{
    EXPECT_EQ(LString::split("lodDistance", " "), (Pieces{"lodDistance"}));
}

TEST(LStringSplit, AdjacentSeparatorsGiveEmptyPieces)
{
    EXPECT_EQ(LString::split("a  b", " "), (Pieces{"a", "", "b"}));
}

TEST(LStringSplit, SeparatorsAtTheEndsGiveEmptyPieces)
{
    EXPECT_EQ(LString::split(" a b ", " "), (Pieces{"", "a", "b", ""}));
    EXPECT_EQ(LString::split(" ", " "), (Pieces{"", ""}));
}

TEST(LStringSplit, EmptyTextIsOneEmptyPiece)
{
    EXPECT_EQ(LString::split("", " "), (Pieces{""}));
}

TEST(LStringSplit, EachCharacterOfTheSeparatorSplits)
{
    EXPECT_EQ(LString::split("Name\tScore/Time", "\t/"), (Pieces{"Name", "Score", "Time"}));
    EXPECT_EQ(LString::split("a/\tb", "\t/"), (Pieces{"a", "", "b"}));
}

TEST(LStringSplit, EmptySeparatorKeepsTextWhole)
{
    EXPECT_EQ(LString::split("a b", ""), (Pieces{"a b"}));
}

TEST(LStringSplit, PieceCountIsSeparatorCountPlusOne)
{
    std::string text = "box 0 1.5 0  0 0 0 0.5 ";
    EXPECT_EQ(LString::split(text, " ").size(), static_cast<size_t>(LString::charCount(text, ' ')) + 1);
}

// ---------------------------------------------------------------- trimSpaces

TEST(LStringTrimSpaces, RemovesLeadingAndTrailingBlanks)
{
    EXPECT_EQ(LString::trimSpaces("   lodDistance 500  "), "lodDistance 500");
    EXPECT_EQ(LString::trimSpaces("\t tree\t"), "tree");
}

TEST(LStringTrimSpaces, KeepsInnerBlanks)
{
    EXPECT_EQ(LString::trimSpaces("a  \t b"), "a  \t b");
}

TEST(LStringTrimSpaces, RemovesLineEndsOfWindowsFiles)
{
    EXPECT_EQ(LString::trimSpaces("lodDistance 500\r\n"), "lodDistance 500");
    EXPECT_EQ(LString::trimSpaces("\v\fx\f\v"), "x");
}

TEST(LStringTrimSpaces, BlankOrEmptyTextBecomesEmpty)
{
    EXPECT_EQ(LString::trimSpaces("    "), "");
    EXPECT_EQ(LString::trimSpaces(" \t\r\n"), "");
    EXPECT_EQ(LString::trimSpaces(""), "");
}

TEST(LStringTrimSpaces, TextWithoutBlanksIsUnchanged)
{
    EXPECT_EQ(LString::trimSpaces("x"), "x");
    EXPECT_EQ(LString::trimSpaces("#comment"), "#comment");
}

// ---------------------------------------------------------------- LowerCase

TEST(LStringLowerCase, LowersAsciiLetters)
{
    EXPECT_EQ(LString::LowerCase("IMAGE1.JPG"), "image1.jpg");
    EXPECT_EQ(LString::LowerCase("MiXeD Case 09_!"), "mixed case 09_!");
    EXPECT_EQ(LString::LowerCase(""), "");
}

TEST(LStringLowerCase, LeavesOtherBytesAlone)
{
    // "ÄÖ" in UTF-8 and a byte from Windows-1252 stay as they are.
    EXPECT_EQ(LString::LowerCase("\xC3\x84\xC3\x96X"), "\xC3\x84\xC3\x96x");
    EXPECT_EQ(LString::LowerCase(std::string("\xC4", 1)), std::string("\xC4", 1));
}

// ---------------------------------------------------------------- itoa and dtoa

TEST(LStringItoa, DecimalTextOfTheInt)
{
    EXPECT_EQ(LString::itoa(0), "0");
    EXPECT_EQ(LString::itoa(42), "42");
    EXPECT_EQ(LString::itoa(-17), "-17");
    EXPECT_EQ(LString::itoa(INT_MAX), "2147483647");
    EXPECT_EQ(LString::itoa(INT_MIN), "-2147483648");
}

TEST(LStringDtoa, WholeNumbersHaveNoFraction)
{
    EXPECT_EQ(LString::dtoa(5.0), "5");
    EXPECT_EQ(LString::dtoa(0.0), "0");
    EXPECT_EQ(LString::dtoa(-12.0), "-12");
    EXPECT_EQ(LString::dtoa(1000000.0), "1000000");
}

TEST(LStringDtoa, ShortestTextThatReadsBack)
{
    EXPECT_EQ(LString::dtoa(0.1), "0.1");
    EXPECT_EQ(LString::dtoa(2.5), "2.5");
    EXPECT_EQ(LString::dtoa(-0.75), "-0.75");
    EXPECT_EQ(LString::dtoa(1.0 / 3.0), "0.3333333333333333");
    EXPECT_EQ(LString::dtoa(0.1 + 0.2), "0.30000000000000004");
}

TEST(LStringDtoa, NumbersBelowTenToTheSeventeenHaveNoExponent)
{
    EXPECT_EQ(LString::dtoa(1e16), "10000000000000000");
    EXPECT_EQ(LString::dtoa(-123456789012.0), "-123456789012");
    EXPECT_EQ(LString::dtoa(1234567.5), "1234567.5");
    EXPECT_EQ(LString::dtoa(0.0001), "0.0001");
}

TEST(LStringDtoa, VeryLargeAndSmallUseExponent)
{
    EXPECT_EQ(LString::dtoa(1e17), "1e+17");
    EXPECT_EQ(LString::dtoa(0.00001), "1e-05");
    EXPECT_EQ(LString::dtoa(1e20), "1e+20");
    EXPECT_EQ(LString::dtoa(2.5e-7), "2.5e-07");
}

TEST(LStringDtoa, EveryValueReadsBackExactly)
{
    const double values[] = {3.141592653589793, -1e-300, 123456.789, 0.7071067811865476,
                             std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min(),
                             static_cast<double>(1.5707964f)};
    for (double v : values)
        EXPECT_EQ(std::strtod(LString::dtoa(v).c_str(), nullptr), v) << LString::dtoa(v);
}

TEST(LStringDtoa, InfinityAndNan)
{
    EXPECT_EQ(LString::dtoa(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(LString::dtoa(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(LString::dtoa(std::nan("")), "nan");
}

TEST(LStringDtoa, DecimalPointIsAlwaysADot)
{
    // A locale with a decimal comma: an installed one, or one built into a temporary folder.
    std::string saved = std::setlocale(LC_NUMERIC, nullptr);
    const char* active = nullptr;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8"}) {
        if ((active = std::setlocale(LC_NUMERIC, name)) != nullptr)
            break;
    }
    const char* oldLocPath = std::getenv("LOCPATH");
    std::string savedLocPath = oldLocPath != nullptr ? oldLocPath : "";
    if (active == nullptr) {
        std::string dir = ostrum_test::makeTempDir();
        std::string command = "localedef -i de_DE -f UTF-8 " + dir + "/de_DE.UTF-8 >/dev/null 2>&1";
        if (std::system(command.c_str()) == 0 || std::ifstream(dir + "/de_DE.UTF-8/LC_NUMERIC").good()) {
            setenv("LOCPATH", dir.c_str(), 1);
            active = std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
        }
    }
    char probe[16];
    std::snprintf(probe, sizeof probe, "%g", 2.5);
    std::string text = LString::dtoa(2.5);
    std::string large = LString::dtoa(-1234567.25);
    std::setlocale(LC_NUMERIC, saved.c_str());
    if (oldLocPath != nullptr)
        setenv("LOCPATH", savedLocPath.c_str(), 1);
    else
        unsetenv("LOCPATH");
    if (active == nullptr)
        GTEST_SKIP() << "no locale with a decimal comma available";
    EXPECT_STREQ(probe, "2,5") << "the locale writes a decimal comma";
    EXPECT_EQ(text, "2.5");
    EXPECT_EQ(large, "-1234567.25");
}

// ---------------------------------------------------------------- trimZInt

TEST(LStringTrimZInt, PadsWithLeadingZerosToWidth)
{
    EXPECT_EQ(LString::trimZInt(7, 3), "007");
    EXPECT_EQ(LString::trimZInt(42, 3), "042");
    EXPECT_EQ(LString::trimZInt(0, 4), "0000");
    EXPECT_EQ(LString::trimZInt(999, 3), "999");
}

TEST(LStringTrimZInt, WiderNumberIsWrittenWhole)
{
    EXPECT_EQ(LString::trimZInt(1234, 3), "1234");
    EXPECT_EQ(LString::trimZInt(5, 0), "5");
    EXPECT_EQ(LString::trimZInt(5, -2), "5");
}

TEST(LStringTrimZInt, NegativeValueHasSignBeforeZeros)
{
    EXPECT_EQ(LString::trimZInt(-7, 3), "-007");
    EXPECT_EQ(LString::trimZInt(INT_MIN, 12), "-002147483648");
}

// ---------------------------------------------------------------- charCount and Char2String

TEST(LStringCharCount, CountsOccurrences)
{
    EXPECT_EQ(LString::charCount("a/b/c/", '/'), 3);
    EXPECT_EQ(LString::charCount("abc", 'x'), 0);
    EXPECT_EQ(LString::charCount("", 'a'), 0);
    EXPECT_EQ(LString::charCount("aAaA", 'a'), 2);
    EXPECT_EQ(LString::charCount(std::string("a\0b\0", 4), '\0'), 2);
}

TEST(LStringChar2String, OneCharacterString)
{
    EXPECT_EQ(LString::Char2String('x'), "x");
    EXPECT_EQ(LString::Char2String(' '), " ");
    std::string zero = LString::Char2String('\0');
    EXPECT_EQ(zero.size(), 1u);
    EXPECT_EQ(zero[0], '\0');
}
