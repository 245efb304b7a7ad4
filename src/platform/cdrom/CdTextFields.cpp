#include "CdTextFields.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace platform::cdrom {

namespace {

bool validUtf8(const std::string &s)
{
    size_t i = 0;
    while (i < s.size()) {
        const auto b = static_cast<unsigned char>(s[i]);
        int extra = b < 0x80 ? 0 : (b >= 0xC2 && b <= 0xDF) ? 1 : (b >= 0xE0 && b <= 0xEF) ? 2 : (b >= 0xF0 && b <= 0xF4) ? 3 : -1;
        if (extra < 0 || i + static_cast<size_t>(extra) >= s.size() + (extra == 0 ? 1 : 0))
            return false;
        for (int k = 1; k <= extra; ++k)
            if ((static_cast<unsigned char>(s[i + static_cast<size_t>(k)]) & 0xC0) != 0x80)
                return false;
        i += static_cast<size_t>(extra) + 1;
    }
    return true;
}

} // namespace

std::string trimmed(std::string s)
{
    while (!s.empty() && (s.back() == ' ' || s.back() == '\0'))
        s.pop_back();
    while (!s.empty() && s.front() == ' ')
        s.erase(s.begin());
    return s;
}

std::string asUtf8(const char *text)
{
    if (!text)
        return {};
    std::string s = text;
    if (validUtf8(s))
        return s;
    std::string out;
    for (char c : s) {
        const auto b = static_cast<unsigned char>(c);
        if (b < 0x80) {
            out += c;
        } else {
            out += static_cast<char>(0xC0 | (b >> 6));
            out += static_cast<char>(0x80 | (b & 0x3F));
        }
    }
    return out;
}

bool validIsrc(const std::string &s)
{
    return s.size() == 12 && std::all_of(s.begin(), s.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)); });
}

} // namespace platform::cdrom
