#include "EqIniFile.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

#include "runtime/Paths.h"

namespace platform::audio {

namespace {

// Larger than any equaliser file; a bigger one is not ours.
constexpr std::uintmax_t MaxFileBytes = 1 << 20;
constexpr int MaxBands = 1000;

// Carriage returns count as blanks, so a line reads the same however many a DOS editor left.
std::string trimmed(const std::string &s)
{
    const auto first = s.find_first_not_of(" \t\r");
    if (first == std::string::npos)
        return {};
    const auto last = s.find_last_not_of(" \t\r");
    return s.substr(first, last - first + 1);
}

bool sameName(const std::string &a, const std::string &b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

std::optional<std::string> readText(const std::filesystem::path &file)
{
    std::error_code ec;
    if (!std::filesystem::is_regular_file(file, ec))
        return std::nullopt;
    const auto size = std::filesystem::file_size(file, ec);
    if (ec || size > MaxFileBytes)
        return std::nullopt;
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return std::nullopt;
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (text.find('\0') != std::string::npos)
        return std::nullopt; // binary
    return text;
}

// Lines as they stand, carriage returns kept, so a rewrite copies other sections byte for byte.
std::vector<std::string> linesOf(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line))
        lines.push_back(line);
    return lines;
}

// "[name]" -> name
std::optional<std::string> sectionName(const std::string &line)
{
    const std::string t = trimmed(line);
    if (t.size() >= 2 && t.front() == '[' && t.back() == ']')
        return trimmed(t.substr(1, t.size() - 2));
    return std::nullopt;
}

// "BandN" -> N
std::optional<int> bandIndex(const std::string &key)
{
    if (key.size() < 5 || !sameName(key.substr(0, 4), "Band"))
        return std::nullopt;
    int index = 0;
    const char *begin = key.data() + 4;
    const char *end = key.data() + key.size();
    const auto [p, ec] = std::from_chars(begin, end, index);
    if (ec != std::errc() || p != end || index < 0 || index >= MaxBands)
        return std::nullopt;
    return index;
}

std::optional<double> number(const std::string &text)
{
    double value = 0;
    const char *begin = text.data();
    const char *end = text.data() + text.size();
    if (begin != end && *begin == '+')
        ++begin;
    const auto [p, ec] = std::from_chars(begin, end, value);
    if (ec != std::errc() || p != end || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::string numberText(double value)
{
    char buffer[64];
    const auto [p, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return ec == std::errc() ? std::string(buffer, p) : std::string("0");
}

} // namespace

std::optional<std::map<int, double>> readEqGains(const std::filesystem::path &file, const std::string &section)
{
    const std::optional<std::string> text = readText(file);
    if (!text)
        return std::nullopt;
    std::map<int, double> gains;
    bool found = false;
    bool inside = false;
    for (const std::string &line : linesOf(*text)) {
        if (const auto name = sectionName(line)) {
            inside = sameName(*name, section);
            found = found || inside;
            continue;
        }
        if (!inside)
            continue;
        const std::string t = trimmed(line);
        if (t.empty() || t.front() == ';' || t.front() == '#')
            continue;
        const auto eq = t.find('=');
        if (eq == std::string::npos)
            return std::nullopt;
        const auto index = bandIndex(trimmed(t.substr(0, eq)));
        if (!index)
            continue; // another key of ours ("Bands") or someone else's
        const auto gain = number(trimmed(t.substr(eq + 1)));
        if (!gain)
            return std::nullopt;
        gains[*index] = *gain;
    }
    if (!found)
        return std::nullopt;
    return gains;
}

bool writeEqGains(const std::filesystem::path &file, const std::string &section, const std::vector<double> &gains)
{
    std::string body = "[" + section + "]\n";
    body += "Bands=" + std::to_string(gains.size()) + "\n";
    for (size_t i = 0; i < gains.size(); ++i)
        body += "Band" + std::to_string(i) + "=" + numberText(gains[i]) + "\n";

    // The other sections of an existing file stay; a file that isn't text is replaced.
    std::string out;
    bool written = false;
    if (const std::optional<std::string> old = readText(file)) {
        bool skipping = false;
        for (const std::string &line : linesOf(*old)) {
            if (const auto name = sectionName(line)) {
                skipping = sameName(*name, section);
                if (skipping && !written) {
                    out += body;
                    written = true;
                }
                if (skipping)
                    continue;
            }
            if (!skipping)
                out += line + "\n";
        }
    }
    if (!written) {
        if (!out.empty() && !out.ends_with("\n\n"))
            out += "\n";
        out += body;
    }
    return rt::writeFileAtomically(file, out);
}

} // namespace platform::audio
