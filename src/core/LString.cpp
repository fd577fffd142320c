// LString.cpp -- splitting, trimming, lower case and number text for LString.
#include <ostrum_core/LString.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

std::vector<std::string> LString::split(std::string text, std::string separator)
{
    std::vector<std::string> pieces;
    if (separator.empty()) {
        pieces.push_back(text);
        return pieces;
    }
    size_t start = 0;
    for (;;) {
        size_t end = text.find_first_of(separator, start);
        if (end == std::string::npos) {
            pieces.push_back(text.substr(start));
            return pieces;
        }
        pieces.push_back(text.substr(start, end - start));
        start = end + 1;
    }
}

std::string LString::trimSpaces(std::string text)
{
    static const char* const blanks = " \t\r\n\v\f";
    size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return std::string();
    size_t last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

std::string LString::LowerCase(std::string text)
{
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

std::string LString::itoa(int value)
{
    return std::to_string(value);
}

std::string LString::dtoa(double value)
{
    // The shortest %g text that reads back as the same value; 17 significant digits always do.
    char buf[64];
    int precision = 1;
    for (; precision <= 17; ++precision) {
        std::snprintf(buf, sizeof buf, "%.*g", precision, value);
        if (value != value || std::strtod(buf, nullptr) == value)
            break;
    }
    // %g turns to an exponent once the decimal exponent reaches the precision (1e+06); numbers below
    // 1e17 are written out in full instead, with as many digits as their integer part has.
    if (std::isfinite(value) && precision <= 17) {
        char sci[64];
        std::snprintf(sci, sizeof sci, "%.*e", precision - 1, value);
        const char* e = std::strchr(sci, 'e');
        int exponent = e != nullptr ? std::atoi(e + 1) : 0;
        if (exponent >= precision && exponent < 17)
            std::snprintf(buf, sizeof buf, "%.*g", exponent + 1, value);
    }
    std::string text = buf;
    // printf writes the decimal point of the current locale; the text always uses '.'.
    const char* point = std::localeconv()->decimal_point;
    if (point != nullptr && std::strcmp(point, ".") != 0 && point[0] != '\0') {
        size_t at = text.find(point);
        if (at != std::string::npos)
            text.replace(at, std::strlen(point), ".");
    }
    return text;
}

std::string LString::trimZInt(int value, int width)
{
    // The magnitude as unsigned, so that INT_MIN keeps its digits.
    unsigned int magnitude = value < 0 ? 0u - static_cast<unsigned int>(value) : static_cast<unsigned int>(value);
    std::string digits = std::to_string(magnitude);
    if (width > 0 && digits.size() < static_cast<size_t>(width))
        digits.insert(0, static_cast<size_t>(width) - digits.size(), '0');
    return value < 0 ? "-" + digits : digits;
}

int LString::charCount(std::string text, char c)
{
    int count = 0;
    for (char t : text) {
        if (t == c)
            ++count;
    }
    return count;
}

std::string LString::Char2String(char c)
{
    return std::string(1, c);
}
