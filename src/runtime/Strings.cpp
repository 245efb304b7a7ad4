#include "Strings.h"

#include <cstdint>
#include <vector>

#include "RuntimeError.h"

namespace rt {

namespace {

constexpr char32_t Invalid = 0xFFFFFFFF;

// Decodes the character at `pos`; a byte that starts no well-formed sequence is one character
// of its own (Invalid), so that any byte string still has a length.
char32_t decode(std::string_view s, size_t pos, size_t &length)
{
    const auto b0 = static_cast<unsigned char>(s[pos]);
    if (b0 < 0x80) {
        length = 1;
        return b0;
    }
    size_t n;
    char32_t cp;
    char32_t minimum;
    if ((b0 & 0xE0) == 0xC0) {
        n = 2, cp = b0 & 0x1F, minimum = 0x80;
    } else if ((b0 & 0xF0) == 0xE0) {
        n = 3, cp = b0 & 0x0F, minimum = 0x800;
    } else if ((b0 & 0xF8) == 0xF0) {
        n = 4, cp = b0 & 0x07, minimum = 0x10000;
    } else {
        length = 1;
        return Invalid;
    }
    if (pos + n > s.size()) {
        length = 1;
        return Invalid;
    }
    for (size_t i = 1; i < n; ++i) {
        const auto b = static_cast<unsigned char>(s[pos + i]);
        if ((b & 0xC0) != 0x80) {
            length = 1;
            return Invalid;
        }
        cp = (cp << 6) | (b & 0x3F);
    }
    if (cp < minimum || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
        length = 1;
        return Invalid;
    }
    length = n;
    return cp;
}

void encode(char32_t cp, std::string &out)
{
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

// Byte offsets of every character start, plus the end.
std::vector<size_t> boundaries(std::string_view s)
{
    std::vector<size_t> b;
    b.reserve(s.size() + 1);
    size_t pos = 0;
    while (pos < s.size()) {
        b.push_back(pos);
        size_t len;
        decode(s, pos, len);
        pos += len;
    }
    b.push_back(s.size());
    return b;
}

// Byte offset of the character with 0-based index `index`, or s.size() past the end.
size_t offsetOf(std::string_view s, long index)
{
    size_t pos = 0;
    while (index > 0 && pos < s.size()) {
        size_t len;
        decode(s, pos, len);
        pos += len;
        --index;
    }
    return pos;
}

// Windows-1252 codes 0x80..0x9F; the five codes it leaves open map to the C1 controls.
constexpr char32_t kHighBlock[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

char32_t ansiToUnicode(unsigned char b)
{
    if (b >= 0x80 && b <= 0x9F)
        return kHighBlock[b - 0x80];
    return b;
}

// The Windows-1252 code of a character, or -1 when it has none.
int unicodeToAnsi(char32_t cp)
{
    if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF))
        return static_cast<int>(cp);
    for (int i = 0; i < 32; ++i)
        if (kHighBlock[i] == cp)
            return 0x80 + i;
    return -1;
}

// Case mapping for the scripts a European code page user meets: Latin-1, Latin Extended-A,
// basic Greek and Cyrillic. Everything else keeps its case.
char32_t toUpper(char32_t c)
{
    if (c >= 'a' && c <= 'z')
        return c - 32;
    if (c < 0x80)
        return c;
    if (c >= 0xE0 && c <= 0xFE && c != 0xF7)
        return c - 32;
    if (c == 0xFF)
        return 0x178;
    if (c >= 0x100 && c <= 0x17F) {
        if ((c >= 0x100 && c <= 0x12F) || (c >= 0x132 && c <= 0x137) || (c >= 0x14A && c <= 0x177))
            return (c % 2 == 1) ? c - 1 : c;
        if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E))
            return (c % 2 == 0) ? c - 1 : c;
        return c;
    }
    if (c == 0x3C2)
        return 0x3A3;
    if (c >= 0x3B1 && c <= 0x3C9)
        return c - 32;
    if (c >= 0x430 && c <= 0x44F)
        return c - 32;
    if (c >= 0x450 && c <= 0x45F)
        return c - 80;
    return c;
}

char32_t toLower(char32_t c)
{
    if (c >= 'A' && c <= 'Z')
        return c + 32;
    if (c < 0x80)
        return c;
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7)
        return c + 32;
    if (c == 0x178)
        return 0xFF;
    if (c >= 0x100 && c <= 0x17F) {
        if ((c >= 0x100 && c <= 0x12F) || (c >= 0x132 && c <= 0x137) || (c >= 0x14A && c <= 0x177))
            return (c % 2 == 0) ? c + 1 : c;
        if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E))
            return (c % 2 == 1) ? c + 1 : c;
        return c;
    }
    if (c >= 0x391 && c <= 0x3A9 && c != 0x3A2)
        return c + 32;
    if (c >= 0x410 && c <= 0x42F)
        return c + 32;
    if (c >= 0x400 && c <= 0x40F)
        return c + 80;
    return c;
}

template <class Map>
std::string mapCase(std::string_view s, Map map)
{
    std::string out;
    out.reserve(s.size());
    size_t pos = 0;
    while (pos < s.size()) {
        size_t len;
        const char32_t cp = decode(s, pos, len);
        if (cp == Invalid)
            out.append(s.substr(pos, len));
        else
            encode(map(cp), out);
        pos += len;
    }
    return out;
}

} // namespace

long Len(std::string_view s)
{
    long n = 0;
    size_t pos = 0;
    while (pos < s.size()) {
        size_t len;
        decode(s, pos, len);
        pos += len;
        ++n;
    }
    return n;
}

// The length is optional in the language: without it the rest is taken. A length that is given
// and negative is error 5, -1 included, since computed lengths can come out as -1.
std::string Mid(std::string_view s, long start)
{
    if (start < 1)
        raise(ErrInvalidCall);
    const size_t from = offsetOf(s, start - 1);
    if (from >= s.size())
        return {};
    return std::string(s.substr(from));
}

std::string Mid(std::string_view s, long start, long length)
{
    if (start < 1 || length < 0)
        raise(ErrInvalidCall);
    const size_t from = offsetOf(s, start - 1);
    if (from >= s.size() || length == 0)
        return {};
    const std::string_view rest = s.substr(from);
    return std::string(rest.substr(0, offsetOf(rest, length)));
}

std::string Left(std::string_view s, long length)
{
    if (length < 0)
        raise(ErrInvalidCall);
    return std::string(s.substr(0, offsetOf(s, length)));
}

std::string Right(std::string_view s, long length)
{
    if (length < 0)
        raise(ErrInvalidCall);
    const long total = Len(s);
    if (length >= total)
        return std::string(s);
    return std::string(s.substr(offsetOf(s, total - length)));
}

long InStr(std::string_view haystack, std::string_view needle) { return InStr(1, haystack, needle); }

// Binary comparison. An empty text to search in gives 0 before anything else; an empty
// needle then gives start as long as start is within the text or just after it.
long InStr(long start, std::string_view haystack, std::string_view needle)
{
    if (start < 1)
        raise(ErrInvalidCall);
    if (haystack.empty())
        return 0;
    const std::vector<size_t> b = boundaries(haystack);
    const long chars = static_cast<long>(b.size()) - 1;
    if (start > chars + 1)
        return 0;
    if (needle.empty())
        return start;
    if (start > chars)
        return 0;
    for (long i = start - 1; i < chars; ++i) {
        if (haystack.substr(b[i]).starts_with(needle))
            return i + 1;
    }
    return 0;
}

std::string LTrim(std::string_view s)
{
    const size_t first = s.find_first_not_of(' ');
    return first == std::string_view::npos ? std::string() : std::string(s.substr(first));
}

std::string RTrim(std::string_view s)
{
    const size_t last = s.find_last_not_of(' ');
    return last == std::string_view::npos ? std::string() : std::string(s.substr(0, last + 1));
}

std::string Trim(std::string_view s) { return LTrim(RTrim(s)); }

std::string UCase(std::string_view s) { return mapCase(s, toUpper); }

std::string LCase(std::string_view s) { return mapCase(s, toLower); }

std::string Space(long n)
{
    if (n < 0)
        raise(ErrInvalidCall);
    return std::string(static_cast<size_t>(n), ' ');
}

std::string Chr(int code)
{
    if (code < 0 || code > 255)
        raise(ErrInvalidCall);
    std::string out;
    encode(ansiToUnicode(static_cast<unsigned char>(code)), out);
    return out;
}

// A character the code page lacks reads as "?" (63), as it does when the platform converts it.
int Asc(std::string_view s)
{
    if (s.empty())
        raise(ErrInvalidCall);
    size_t len;
    const char32_t cp = decode(s, 0, len);
    if (cp == Invalid)
        return '?';
    const int code = unicodeToAnsi(cp);
    return code < 0 ? '?' : code;
}

std::string Replace(std::string_view s, std::string_view find, std::string_view with)
{
    if (find.empty())
        return std::string(s);
    std::string out;
    out.reserve(s.size());
    size_t pos = 0;
    for (;;) {
        const size_t hit = s.find(find, pos);
        if (hit == std::string_view::npos) {
            out.append(s.substr(pos));
            return out;
        }
        out.append(s.substr(pos, hit - pos));
        out.append(with);
        pos = hit + find.size();
    }
}

std::string fromAnsi(std::string_view bytes)
{
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 4);
    for (char c : bytes)
        encode(ansiToUnicode(static_cast<unsigned char>(c)), out);
    return out;
}

bool isUtf8(std::string_view bytes)
{
    size_t pos = 0;
    while (pos < bytes.size()) {
        size_t len;
        if (decode(bytes, pos, len) == Invalid)
            return false;
        pos += len;
    }
    return true;
}

std::string toAnsi(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    size_t pos = 0;
    while (pos < text.size()) {
        size_t len;
        const char32_t cp = decode(text, pos, len);
        const int code = cp == Invalid ? -1 : unicodeToAnsi(cp);
        out += code < 0 ? '?' : static_cast<char>(code);
        pos += len;
    }
    return out;
}

} // namespace rt
