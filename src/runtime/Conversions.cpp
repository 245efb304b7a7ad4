#include "Conversions.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <system_error>

namespace rt {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

double roundHalfEven(double v)
{
    const double below = std::floor(v);
    const double diff = v - below; // exact: both lie in the same binade or v is whole
    if (diff > 0.5)
        return below + 1;
    if (diff < 0.5)
        return below;
    return std::fmod(below, 2.0) == 0 ? below : below + 1;
}

// "&H..." / "&O..." as the platform reads such literals: up to &HFFFF it is an Integer (so &HFFFF
// is -1), above that a Long; past 32 bits it overflows. `pos` stands after the "&H"/"&O".
// Returns false when no digit follows.
bool readRadix(std::string_view s, size_t &pos, int radix, double &out)
{
    uint64_t value = 0;
    bool any = false;
    bool tooBig = false;
    while (pos < s.size()) {
        const char c = s[pos];
        int d;
        if (isDigit(c))
            d = c - '0';
        else if (radix == 16 && c >= 'a' && c <= 'f')
            d = c - 'a' + 10;
        else if (radix == 16 && c >= 'A' && c <= 'F')
            d = c - 'A' + 10;
        else
            break;
        if (d >= radix)
            break;
        any = true;
        value = value * radix + d;
        if (value > 0xFFFFFFFFull)
            tooBig = true, value = 0xFFFFFFFFull + 1;
        ++pos;
    }
    if (!any)
        return false;
    if (tooBig)
        out = HUGE_VAL;
    else if (value <= 0xFFFF)
        out = static_cast<int16_t>(static_cast<uint16_t>(value));
    else
        out = static_cast<int32_t>(static_cast<uint32_t>(value));
    return true;
}

// Reads "[+-]digits[.digits][E[+-]digits]" from `s` at `pos` (E may also be D, either case).
// Returns false when there is no digit in the mantissa. Overflow reads as infinity.
bool readDecimal(std::string_view s, size_t &pos, double &out)
{
    std::string text;
    size_t i = pos;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) {
        if (s[i] == '-')
            text += '-';
        ++i;
    }
    bool digits = false;
    long intDigits = 0;
    while (i < s.size() && isDigit(s[i])) {
        text += s[i++];
        digits = true;
        ++intDigits;
    }
    if (i < s.size() && s[i] == '.') {
        text += '.';
        ++i;
        while (i < s.size() && isDigit(s[i])) {
            text += s[i++];
            digits = true;
        }
    }
    if (!digits)
        return false;
    long exponent = 0;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E' || s[i] == 'd' || s[i] == 'D')) {
        size_t j = i + 1;
        bool negative = false;
        if (j < s.size() && (s[j] == '+' || s[j] == '-'))
            negative = s[j++] == '-';
        if (j < s.size() && isDigit(s[j])) {
            while (j < s.size() && isDigit(s[j])) {
                if (exponent < 100000)
                    exponent = exponent * 10 + (s[j] - '0');
                ++j;
            }
            if (negative)
                exponent = -exponent;
            text += 'e';
            text += std::to_string(exponent);
            i = j;
        }
    }
    pos = i;
    double value = 0;
    const char *first = text.data();
    const char *last = text.data() + text.size();
    const auto result = std::from_chars(first, last, value);
    if (result.ec == std::errc::result_out_of_range) {
        // Too large or too small for a double: which one follows from where the point lands.
        value = (intDigits + exponent > 0) ? HUGE_VAL : 0.0;
        if (text[0] == '-')
            value = -value;
    } else if (result.ec != std::errc()) {
        return false;
    }
    out = value;
    return true;
}

bool isBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view trimBlanks(std::string_view s)
{
    while (!s.empty() && isBlank(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && isBlank(s.back()))
        s.remove_suffix(1);
    return s;
}

double requireNumber(std::string_view text)
{
    double v = 0;
    if (!detail::parseNumber(text, v))
        raise(ErrTypeMismatch);
    if (!std::isfinite(v))
        raise(ErrOverflow);
    return v;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z')
            x = static_cast<char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z')
            y = static_cast<char>(y - 'A' + 'a');
        if (x != y)
            return false;
    }
    return true;
}

// Writes a number in the platform's way: fixed notation while the first digit's power of ten
// lies in -4..14, otherwise "1.5E+16" with a signed two-digit (at least) exponent.
// `leadingZero` says whether a value below one shows its "0" before the point: the implicit
// conversion does ("0.5"), Str does not (" .5").
std::string writeNumber(double v, bool leadingZero)
{
    if (std::isnan(v))
        return "-1.#IND";
    if (std::isinf(v))
        return v > 0 ? "1.#INF" : "-1.#INF";
    const detail::DecimalDigits d = detail::decimalDigits(v);
    if (d.digits == "0")
        return "0";
    std::string out = d.negative ? "-" : "";
    const std::string &digits = d.digits;
    const int n = static_cast<int>(digits.size());
    const int e = d.exponent;
    if (e >= 15 || e < -4) {
        out += digits[0];
        if (n > 1) {
            out += '.';
            out.append(digits, 1);
        }
        out += 'E';
        out += e < 0 ? '-' : '+';
        const int a = e < 0 ? -e : e;
        if (a < 10)
            out += '0';
        out += std::to_string(a);
        return out;
    }
    if (e >= 0) {
        if (n <= e + 1) {
            out += digits;
            out.append(static_cast<size_t>(e + 1 - n), '0');
        } else {
            out.append(digits, 0, static_cast<size_t>(e + 1));
            out += '.';
            out.append(digits, static_cast<size_t>(e + 1));
        }
        return out;
    }
    if (leadingZero)
        out += '0';
    out += '.';
    out.append(static_cast<size_t>(-e - 1), '0');
    out += digits;
    return out;
}

} // namespace

namespace detail {

DecimalDigits decimalDigits(double v)
{
    DecimalDigits d;
    if (v == 0 || !std::isfinite(v)) {
        d.digits = "0";
        return d;
    }
    d.negative = v < 0;
    char buf[64];
    // 15 significant digits: one before the point and 14 after, then "e±x".
    const auto r = std::to_chars(buf, buf + sizeof buf, std::fabs(v), std::chars_format::scientific, 14);
    const std::string_view text(buf, static_cast<size_t>(r.ptr - buf));
    const size_t ePos = text.find('e');
    for (char c : text.substr(0, ePos))
        if (c != '.')
            d.digits += c;
    int exponent = 0;
    std::from_chars(text.data() + ePos + 1 + (text[ePos + 1] == '+'), text.data() + text.size(), exponent);
    d.exponent = exponent;
    while (d.digits.size() > 1 && d.digits.back() == '0')
        d.digits.pop_back();
    return d;
}

bool parseNumber(std::string_view text, double &out)
{
    const std::string_view s = trimBlanks(text);
    if (s.empty())
        return false;
    size_t pos = 0;
    double v = 0;
    if (s.size() >= 2 && s[0] == '&' && (s[1] == 'H' || s[1] == 'h' || s[1] == 'O' || s[1] == 'o')) {
        pos = 2;
        if (!readRadix(s, pos, (s[1] == 'H' || s[1] == 'h') ? 16 : 8, v))
            return false;
    } else if (!readDecimal(s, pos, v)) {
        return false;
    }
    if (pos != s.size())
        return false;
    out = v;
    return true;
}

} // namespace detail

Integer CInt(double v)
{
    if (std::isnan(v))
        raise(ErrOverflow);
    const double r = roundHalfEven(v);
    if (r < -32768.0 || r > 32767.0)
        raise(ErrOverflow);
    return Integer(static_cast<long long>(r));
}

Long CLng(double v)
{
    if (std::isnan(v))
        raise(ErrOverflow);
    const double r = roundHalfEven(v);
    if (r < -2147483648.0 || r > 2147483647.0)
        raise(ErrOverflow);
    return Long(static_cast<long long>(r));
}

Integer CInt(std::string_view text) { return CInt(requireNumber(text)); }

Long CLng(std::string_view text) { return CLng(requireNumber(text)); }

double CDbl(std::string_view text) { return requireNumber(text); }

bool CBool(std::string_view text)
{
    const std::string_view s = trimBlanks(text);
    if (equalsIgnoringCase(s, "true"))
        return true;
    if (equalsIgnoringCase(s, "false"))
        return false;
    return requireNumber(s) != 0;
}

bool IsNumeric(std::string_view text)
{
    double v = 0;
    return detail::parseNumber(text, v) && std::isfinite(v);
}

double Int(double v) { return std::floor(v); }

double Fix(double v) { return std::trunc(v); }

std::string Str(double v)
{
    std::string text = writeNumber(v, false);
    if (text[0] == '-')
        return text;
    return " " + text;
}

std::string numberText(double v) { return writeNumber(v, true); }

double Val(std::string_view text)
{
    // Blanks, tabs and line feeds do not count anywhere, so they go first.
    std::string s;
    s.reserve(text.size());
    for (char c : text)
        if (c != ' ' && c != '\t' && c != '\n')
            s += c;
    size_t pos = 0;
    double v = 0;
    bool read;
    if (s.size() >= 2 && s[0] == '&' && (s[1] == 'H' || s[1] == 'h' || s[1] == 'O' || s[1] == 'o')) {
        pos = 2;
        read = readRadix(s, pos, (s[1] == 'H' || s[1] == 'h') ? 16 : 8, v);
    } else {
        read = readDecimal(s, pos, v);
    }
    if (!read)
        return 0;
    if (!std::isfinite(v))
        raise(ErrOverflow);
    return v == 0 ? 0.0 : v; // no negative zero from "-0"
}

} // namespace rt
