#pragma once

#include <string>
#include <string_view>

#include "Integer.h"

namespace rt {

// Round half to even, as the platform's CInt/CLng do; out of range is error 6.
Integer CInt(double v);
Long CLng(double v);
// Text conversions of CInt/CLng/CDbl: a text that is no number is error 13, an empty text too.
Integer CInt(std::string_view text);
Long CLng(std::string_view text);
double CDbl(std::string_view text);
// CBool of a text: "True"/"False" (any case) or a number, non-zero being true; otherwise error 13.
bool CBool(std::string_view text);

// Int: the largest whole number not above v (Int(-2.5) is -3).
double Int(double v);
// Fix: the whole part, towards zero.
double Fix(double v);

// Str: decimal text of a number with a leading blank for non-negative values (" 243", "-5", " 2.5").
std::string Str(double v);
// Val: the leading number of a text, blanks ignored anywhere, 0 if none ("  12 3ab" is 123).
double Val(std::string_view text);

// The decimal text a number gets when it is joined to a text: no leading blank ("243", "2.5", "-5").
std::string numberText(double v);

// IsNumeric of a text: whether CDbl would accept it.
bool IsNumeric(std::string_view text);

namespace detail {
// |v| to the 15 significant digits the platform keeps when it shows a double: the digits without
// trailing zeros ("0" for zero) and the power of ten of the first digit.
struct DecimalDigits {
    std::string digits;
    int exponent = 0;
    bool negative = false;
};
DecimalDigits decimalDigits(double v);
// The number a text reads as under CDbl's rules; false when it is none.
bool parseNumber(std::string_view text, double &out);
} // namespace detail

} // namespace rt
