#include "Format.h"

#include <cmath>
#include <vector>

#include "Conversions.h"

namespace rt {

namespace {

// ---- number patterns ----
//
// A pattern has up to three sections split by ";" (positive; negative; zero). In a section,
// "0" and "#" are digit places, the first "." is the decimal point, "%" shows the value times
// a hundred, "," between digit places groups thousands and "," right after the last digit place
// divides by a thousand. "\x" and "..." are literal, as is every other character.

struct Item {
    enum Kind { Zero, Hash, Point, Literal } kind;
    std::string text; // for literals
};

std::vector<std::string_view> splitSections(std::string_view pattern)
{
    std::vector<std::string_view> sections;
    size_t start = 0;
    bool quoted = false;
    for (size_t i = 0; i < pattern.size(); ++i) {
        const char c = pattern[i];
        if (c == '"')
            quoted = !quoted;
        else if (!quoted && c == '\\')
            ++i;
        else if (!quoted && c == ';') {
            sections.push_back(pattern.substr(start, i - start));
            start = i + 1;
        }
    }
    sections.push_back(pattern.substr(start));
    return sections;
}

struct Section {
    std::vector<Item> items;
    bool grouping = false;
    double scale = 1;
};

Section parseSection(std::string_view s)
{
    Section section;
    bool seenPoint = false;
    // Commas are settled once the digit places around them are known.
    std::vector<size_t> commaAt; // index into items where a comma stood (before that item)
    auto literal = [&](std::string text) {
        if (!section.items.empty() && section.items.back().kind == Item::Literal)
            section.items.back().text += text;
        else
            section.items.push_back({Item::Literal, std::move(text)});
    };
    for (size_t i = 0; i < s.size(); ++i) {
        const char c = s[i];
        switch (c) {
        case '0':
            section.items.push_back({Item::Zero, {}});
            break;
        case '#':
            section.items.push_back({Item::Hash, {}});
            break;
        case '.':
            if (seenPoint) {
                literal(".");
            } else {
                seenPoint = true;
                section.items.push_back({Item::Point, {}});
            }
            break;
        case '%':
            section.scale *= 100;
            literal("%");
            break;
        case ',':
            if (seenPoint)
                literal(",");
            else
                commaAt.push_back(section.items.size());
            break;
        case '\\':
            if (i + 1 < s.size())
                literal(std::string(1, s[++i]));
            break;
        case '"': {
            const size_t end = s.find('"', i + 1);
            const size_t stop = end == std::string_view::npos ? s.size() : end;
            literal(std::string(s.substr(i + 1, stop - i - 1)));
            i = stop;
            break;
        }
        default:
            literal(std::string(1, c));
            break;
        }
    }
    // Integer digit places lie before the point.
    size_t firstPlace = std::string::npos, lastPlace = std::string::npos;
    for (size_t i = 0; i < section.items.size(); ++i) {
        const Item::Kind k = section.items[i].kind;
        if (k == Item::Point)
            break;
        if (k == Item::Zero || k == Item::Hash) {
            if (firstPlace == std::string::npos)
                firstPlace = i;
            lastPlace = i;
        }
    }
    // Insert literal commas from the back so that earlier indexes stay valid.
    for (auto it = commaAt.rbegin(); it != commaAt.rend(); ++it) {
        const size_t at = *it;
        if (firstPlace != std::string::npos && at > firstPlace && at <= lastPlace) {
            section.grouping = true;
        } else if (firstPlace != std::string::npos && at > lastPlace) {
            section.scale /= 1000;
        } else {
            section.items.insert(section.items.begin() + static_cast<long>(at), Item{Item::Literal, ","});
        }
    }
    return section;
}

// |v| rounded half away from zero to `decimals` places, on its 15-digit decimal form (so 2.675
// rounds to 2.68, as it reads). Integer digits come without leading zeros ("" for zero).
void roundDecimal(double v, int decimals, std::string &intPart, std::string &fracPart)
{
    const detail::DecimalDigits d = detail::decimalDigits(v);
    intPart.clear();
    fracPart.clear();
    if (d.digits != "0") {
        const int n = static_cast<int>(d.digits.size());
        const int e = d.exponent;
        if (e >= 0) {
            for (int i = 0; i <= e; ++i)
                intPart += i < n ? d.digits[i] : '0';
            if (n > e + 1)
                fracPart = d.digits.substr(static_cast<size_t>(e + 1));
        } else {
            fracPart.assign(static_cast<size_t>(-e - 1), '0');
            fracPart += d.digits;
        }
    }
    if (static_cast<int>(fracPart.size()) > decimals) {
        const bool up = fracPart[static_cast<size_t>(decimals)] >= '5';
        fracPart.resize(static_cast<size_t>(decimals));
        if (up) {
            std::string all = intPart + fracPart;
            int i = static_cast<int>(all.size()) - 1;
            while (i >= 0 && all[static_cast<size_t>(i)] == '9')
                all[static_cast<size_t>(i--)] = '0';
            if (i >= 0)
                ++all[static_cast<size_t>(i)];
            else
                all.insert(all.begin(), '1');
            intPart = all.substr(0, all.size() - fracPart.size());
            fracPart = all.substr(all.size() - fracPart.size());
        }
    }
    fracPart.resize(static_cast<size_t>(decimals), '0');
    const size_t nonZero = intPart.find_first_not_of('0');
    intPart = nonZero == std::string::npos ? std::string() : intPart.substr(nonZero);
}

std::string formatSection(double value, const Section &section, bool showSign)
{
    int intPlaces = 0, fracPlaces = 0;
    bool afterPoint = false;
    bool hasPoint = false;
    int minIntDigits = 0; // grouping: places from the leftmost "0" on
    for (const Item &item : section.items) {
        if (item.kind == Item::Point) {
            afterPoint = hasPoint = true;
        } else if (item.kind == Item::Zero || item.kind == Item::Hash) {
            if (afterPoint) {
                ++fracPlaces;
            } else {
                ++intPlaces;
                if (item.kind == Item::Zero && minIntDigits == 0)
                    minIntDigits = 1;
                else if (minIntDigits > 0)
                    ++minIntDigits;
            }
        }
    }

    std::string digits, fraction;
    roundDecimal(std::fabs(value) * section.scale, fracPlaces, digits, fraction);

    std::string intText = digits;
    if (section.grouping) {
        if (static_cast<int>(intText.size()) < minIntDigits)
            intText.insert(0, static_cast<size_t>(minIntDigits) - intText.size(), '0');
        std::string grouped;
        for (size_t i = 0; i < intText.size(); ++i) {
            if (i > 0 && (intText.size() - i) % 3 == 0)
                grouped += ',';
            grouped += intText[i];
        }
        intText = std::move(grouped);
    }

    // Fraction places: trailing "#" places with a zero digit show nothing.
    std::vector<bool> showFrac(static_cast<size_t>(fracPlaces), true);
    {
        int k = fracPlaces - 1;
        for (auto it = section.items.rbegin(); it != section.items.rend() && k >= 0; ++it) {
            if (it->kind == Item::Point)
                break;
            if (it->kind == Item::Zero)
                break;
            if (it->kind == Item::Hash) {
                if (fraction[static_cast<size_t>(k)] != '0')
                    break;
                showFrac[static_cast<size_t>(k--)] = false;
            }
        }
    }

    std::string out;
    if (showSign && value < 0)
        out += '-';
    int place = 0;
    int fracIndex = 0;
    afterPoint = false;
    bool intWritten = false;
    auto writeWholeDigits = [&] {
        // A pattern without integer places still shows the integer digits, before the point.
        if (!intWritten && intPlaces == 0)
            out += intText;
        intWritten = true;
    };
    for (const Item &item : section.items) {
        switch (item.kind) {
        case Item::Literal:
            out += item.text;
            break;
        case Item::Point:
            writeWholeDigits();
            afterPoint = true;
            out += '.';
            break;
        case Item::Zero:
        case Item::Hash:
            if (afterPoint) {
                if (showFrac[static_cast<size_t>(fracIndex)])
                    out += fraction[static_cast<size_t>(fracIndex)];
                ++fracIndex;
                break;
            }
            if (section.grouping) {
                if (place == 0)
                    out += intText;
            } else {
                // Digits fill the places from the right; surplus digits go to the first place.
                const long j = static_cast<long>(intText.size()) - intPlaces + place;
                if (place == 0 && j > 0)
                    out.append(intText, 0, static_cast<size_t>(j));
                if (j >= 0)
                    out += intText[static_cast<size_t>(j)];
                else if (item.kind == Item::Zero)
                    out += '0';
            }
            ++place;
            break;
        }
    }
    if (!hasPoint)
        writeWholeDigits();
    return out;
}

// ---- time patterns ----

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// A time as the platform's date reader takes it: "h:m:s", "h.m.s" or "h:m", each part a whole
// number without sign, hours 0-23, minutes and seconds 0-59, blanks around allowed.
bool parseTime(std::string_view text, int &h, int &m, int &s)
{
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    std::vector<int> parts;
    char separator = 0;
    size_t i = 0;
    for (;;) {
        if (i >= text.size() || !isDigit(text[i]))
            return false;
        long v = 0;
        while (i < text.size() && isDigit(text[i])) {
            v = v * 10 + (text[i] - '0');
            if (v > 1000)
                return false;
            ++i;
        }
        parts.push_back(static_cast<int>(v));
        if (i == text.size())
            break;
        const char c = text[i];
        if (c != '.' && c != ':')
            return false;
        if (separator == 0)
            separator = c;
        else if (c != separator)
            return false;
        ++i;
    }
    if (parts.size() == 2 && separator == ':')
        parts.push_back(0);
    if (parts.size() != 3)
        return false;
    h = parts[0], m = parts[1], s = parts[2];
    return h <= 23 && m <= 59 && s <= 59;
}

char lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool isTimePattern(std::string_view pattern)
{
    bool quoted = false;
    for (size_t i = 0; i < pattern.size(); ++i) {
        const char c = pattern[i];
        if (c == '"')
            quoted = !quoted;
        else if (!quoted && c == '\\')
            ++i;
        else if (!quoted && (lower(c) == 'h' || lower(c) == 'n' || lower(c) == 's'))
            return true;
    }
    return false;
}

std::string twoDigits(int v)
{
    std::string t = std::to_string(v);
    return v < 10 ? "0" + t : t;
}

// "h"/"hh" hours, "m"/"mm" or "n"/"nn" minutes (the text holds only a time, so "m" is always
// the minute), "s"/"ss" seconds, "AM/PM" a twelve-hour clock; other characters are literal.
std::string formatTime(int h, int m, int s, std::string_view pattern)
{
    bool twelveHour = false;
    for (size_t i = 0; i + 5 <= pattern.size(); ++i) {
        std::string word;
        for (char c : pattern.substr(i, 5))
            word += lower(c);
        if (word == "am/pm")
            twelveHour = true;
    }
    std::string out;
    for (size_t i = 0; i < pattern.size();) {
        const char c = pattern[i];
        const char l = lower(c);
        if (c == '"') {
            const size_t end = pattern.find('"', i + 1);
            const size_t stop = end == std::string_view::npos ? pattern.size() : end;
            out += pattern.substr(i + 1, stop - i - 1);
            i = stop + 1;
            continue;
        }
        if (c == '\\') {
            if (i + 1 < pattern.size())
                out += pattern[i + 1];
            i += 2;
            continue;
        }
        if (l == 'a' && i + 5 <= pattern.size()) {
            std::string word;
            for (char x : pattern.substr(i, 5))
                word += lower(x);
            if (word == "am/pm") {
                const bool upper = c == 'A';
                out += h < 12 ? (upper ? "AM" : "am") : (upper ? "PM" : "pm");
                i += 5;
                continue;
            }
        }
        if (l == 'h' || l == 'm' || l == 'n' || l == 's') {
            size_t run = 1;
            while (i + run < pattern.size() && lower(pattern[i + run]) == (l == 'n' ? 'n' : l))
                ++run;
            int v = l == 'h' ? h : (l == 's' ? s : m);
            if (l == 'h' && twelveHour)
                v = (h % 12 == 0) ? 12 : h % 12;
            out += run >= 2 ? twoDigits(v) : std::to_string(v);
            i += run;
            continue;
        }
        out += c;
        ++i;
    }
    return out;
}

} // namespace

std::string Format(double value, std::string_view pattern)
{
    if (pattern.empty())
        return numberText(value);
    const std::vector<std::string_view> sections = splitSections(pattern);
    if (value < 0 && sections.size() >= 2 && !sections[1].empty())
        return formatSection(value, parseSection(sections[1]), false);
    if (value == 0 && sections.size() >= 3 && !sections[2].empty())
        return formatSection(value, parseSection(sections[2]), false);
    return formatSection(value, parseSection(sections[0]), true);
}

// A text is shown in a time pattern when it reads as a time. Anything else comes back as it
// stands: the program feeds this with whatever a file held, and an odd entry such as "0.0.-95"
// must stay visible as it was rather than become a made-up time. A text that reads as a number
// under a number pattern is formatted as that number.
std::string Format(std::string_view text, std::string_view pattern)
{
    if (pattern.empty())
        return std::string(text);
    if (isTimePattern(pattern)) {
        int h = 0, m = 0, s = 0;
        if (parseTime(text, h, m, s))
            return formatTime(h, m, s, pattern);
        return std::string(text);
    }
    double v = 0;
    if (detail::parseNumber(text, v) && std::isfinite(v))
        return Format(v, pattern);
    return std::string(text);
}

} // namespace rt
