#include "LayoutText.h"

#include <cmath>
#include <limits>
#include <string_view>
#include <vector>

#include "runtime/Conversions.h"
#include "runtime/Format.h"
#include "runtime/ResumeNext.h"
#include "runtime/Strings.h"

namespace layout {

namespace {

// The text as its characters, one string each, so that positions count as Len and Mid count.
std::vector<std::string> characters(std::string_view text)
{
    std::vector<std::string> out;
    while (!text.empty()) {
        std::string c = rt::Left(text, 1);
        text.remove_prefix(c.size());
        out.push_back(std::move(c));
    }
    return out;
}

// Text of a number through "00", taken from its Str text (leading blank and all).
std::string twoDigitText(rt::Integer v) { return rt::Format(rt::Str(v.value()), "00"); }

} // namespace

std::string pFormatSongTitle(const std::string &path)
{
    rt::ResumeNext on;

    std::vector<std::string> s = characters(path);
    const long n = static_cast<long>(s.size());
    long start = 1;
    long end = n + 1;
    for (long i = 1; i <= n; ++i) {
        std::string &c = s[static_cast<size_t>(i - 1)];
        if (c == "_") {
            c = " ";
        } else if (c == ".") {
            // Only a dot near the end starts the extension; the last such dot wins.
            if (i > n - 5)
                end = i;
            c = " ";
        } else if (c == "\\") {
            start = i + 1;
        }
    }
    std::string text;
    for (const std::string &c : s)
        text += c;

    // A dot before the last "\" gives a negative length: the cut fails and the title stays "".
    std::string title;
    on([&] { title = rt::Mid(text, start, end - start); });

    // A two-digit track number, "07-" or "07 -"; both tests look at the title as it then is.
    // A Val that overflows still lets the tests run.
    on.If([&] { return rt::Val(title) > 0; },
          [&] {
              on.If([&] { return rt::Mid(title, 3, 1) == "-"; }, [&] { on([&] { title = rt::Mid(title, 4); }); });
              on.If([&] { return rt::Mid(title, 3, 2) == " -"; }, [&] { on([&] { title = rt::Mid(title, 5); }); });
          });

    std::string result;
    on([&] { result = rt::LTrim(title); });
    return result;
}

std::string FormatTrackTime(double seconds)
{
    // The parameter is a single; a value it cannot hold fails the call itself.
    if (std::isfinite(seconds) && std::fabs(seconds) > std::numeric_limits<float>::max())
        rt::raise(rt::ErrOverflow);
    const float s = static_cast<float>(seconds);

    rt::ResumeNext on;
    rt::Integer h, m, w;
    on([&] { h = rt::CInt(rt::Int(s / 3600.0f)); });
    // From ten hours on h * 3600 overflows: minutes and seconds keep their 0.
    on([&] {
        const float rest = s - static_cast<float>((h * rt::Integer(3600)).value());
        m = rt::CInt(rt::Int(rest / 60.0f));
    });
    on([&] {
        const float rest = s - static_cast<float>((h * rt::Integer(3600)).value());
        w = rt::CInt(rt::Int(rest - static_cast<float>((m * rt::Integer(60)).value())));
    });

    std::string result;
    if (h > rt::Integer(0))
        result = twoDigitText(h) + "-";
    result += twoDigitText(m) + ":" + twoDigitText(w);
    return result;
}

std::string pMilliToMinutes(const std::string &milliseconds, bool withHundredths)
{
    rt::ResumeNext on;

    std::string v;
    on([&] { v = rt::numberText(rt::CDbl(milliseconds) / 1000); });

    // Behind the first ".", less the last character. Without a "." p is 1 and the whole text
    // less its last character is taken; an empty v asks for length -1, which fails.
    long p = 0;
    on([&] { p = rt::InStr(v, ".") + 1; });
    std::string frac;
    on([&] { frac = rt::Mid(v, p, rt::Len(v) - p); });
    if (rt::Len(frac) == 1)
        frac += "0";

    rt::Long total, m, w;
    on([&] { total = rt::Long(rt::CLng(milliseconds).value() / 1000); });
    on([&] { m = rt::Long(total.value() / 60); });
    on([&] { w = total - m * rt::Long(60); });

    std::string minutes = rt::numberText(m.value());
    if (rt::Len(minutes) == 1)
        minutes = "0" + minutes;
    std::string secs = rt::numberText(w.value());
    if (rt::Len(secs) == 1)
        secs = "0" + secs;

    if (withHundredths)
        return minutes + ":" + secs + ":" + frac;
    return minutes + ":" + secs;
}

TimeLeftState timeLeftState(rt::Integer seconds)
{
    if (seconds > rt::Integer(60))
        return TimeLeftState::Plenty;
    if (seconds < rt::Integer(60))
        return TimeLeftState::Overtime;
    return TimeLeftState::ExactlySixty;
}

std::optional<std::string> convertTimeText(rt::Integer seconds)
{
    switch (timeLeftState(seconds)) {
    case TimeLeftState::Plenty: {
        // Single precision, as the time left was always worked out.
        float s = static_cast<float>(seconds.value());
        float m = static_cast<float>(rt::Int(s / 60.0f));
        s = s - m * 60.0f;
        const float h = static_cast<float>(rt::Int(m / 60.0f));
        m = m - h * 60.0f;
        const std::string text = rt::numberText(h) + "." + rt::numberText(m) + "." + rt::numberText(s);
        return rt::Format(std::string_view(text), "H:MM:SS");
    }
    case TimeLeftState::Overtime: {
        const std::string text = "00.00." + rt::numberText(seconds.value());
        return rt::Format(std::string_view(text), "HH.MM.SS");
    }
    case TimeLeftState::ExactlySixty:
        break;
    }
    return std::nullopt;
}

} // namespace layout
