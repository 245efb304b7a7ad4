#pragma once

#include <compare>
#include <cstdint>
#include <limits>

#include "RuntimeError.h"

namespace rt {

// 16-bit signed integer: every result outside -32768..32767 is error 6.
class Integer {
public:
    constexpr Integer() = default;
    constexpr Integer(long long v) : m_value(check(v)) {}

    constexpr int16_t value() const { return m_value; }
    // The value read as unsigned, as the platform's truth tests sometimes do (-1 is 65535).
    constexpr uint16_t unsignedValue() const { return static_cast<uint16_t>(m_value); }
    constexpr bool isTrue() const { return m_value != 0; }

    friend constexpr Integer operator+(Integer a, Integer b) { return Integer(static_cast<long long>(a.m_value) + b.m_value); }
    friend constexpr Integer operator-(Integer a, Integer b) { return Integer(static_cast<long long>(a.m_value) - b.m_value); }
    friend constexpr Integer operator*(Integer a, Integer b) { return Integer(static_cast<long long>(a.m_value) * b.m_value); }
    constexpr Integer operator-() const { return Integer(-static_cast<long long>(m_value)); }
    Integer &operator+=(Integer o) { return *this = *this + o; }
    Integer &operator-=(Integer o) { return *this = *this - o; }
    Integer &operator*=(Integer o) { return *this = *this * o; }
    friend constexpr bool operator==(Integer a, Integer b) { return a.m_value == b.m_value; }
    friend constexpr auto operator<=>(Integer a, Integer b) { return a.m_value <=> b.m_value; }

    static constexpr int16_t check(long long v)
    {
        if (v < std::numeric_limits<int16_t>::min() || v > std::numeric_limits<int16_t>::max())
            raise(ErrOverflow);
        return static_cast<int16_t>(v);
    }

private:
    int16_t m_value = 0;
};

// 32-bit signed integer: every result outside -2147483648..2147483647 is error 6.
class Long {
public:
    constexpr Long() = default;
    constexpr Long(long long v) : m_value(check(v)) {}
    constexpr Long(Integer v) : m_value(v.value()) {}

    constexpr int32_t value() const { return m_value; }
    constexpr bool isTrue() const { return m_value != 0; }

    friend constexpr Long operator+(Long a, Long b) { return Long(static_cast<long long>(a.m_value) + b.m_value); }
    friend constexpr Long operator-(Long a, Long b) { return Long(static_cast<long long>(a.m_value) - b.m_value); }
    friend constexpr Long operator*(Long a, Long b) { return Long(static_cast<long long>(a.m_value) * b.m_value); }
    constexpr Long operator-() const { return Long(-static_cast<long long>(m_value)); }
    Long &operator+=(Long o) { return *this = *this + o; }
    Long &operator-=(Long o) { return *this = *this - o; }
    Long &operator*=(Long o) { return *this = *this * o; }
    friend constexpr bool operator==(Long a, Long b) { return a.m_value == b.m_value; }
    friend constexpr auto operator<=>(Long a, Long b) { return a.m_value <=> b.m_value; }

    static constexpr int32_t check(long long v)
    {
        if (v < std::numeric_limits<int32_t>::min() || v > std::numeric_limits<int32_t>::max())
            raise(ErrOverflow);
        return static_cast<int32_t>(v);
    }

private:
    int32_t m_value = 0;
};

// Truth values are integers: -1 true, 0 false.
inline constexpr int16_t True = -1;
inline constexpr int16_t False = 0;
constexpr Integer truth(bool b) { return Integer(b ? True : False); }

} // namespace rt
