#pragma once
// The code page of every byte on the wire between the program and the
// service: Windows-1252. Below 0x80 and from 0xA0 it is Latin-1; the table
// holds 0x80..0x9F. The five places the code page leaves unassigned (0x81,
// 0x8D, 0x8F, 0x90, 0x9D) read as the C1 control of the same value, as
// Windows and web browsers read them, so that any bytes come back unchanged
// from a round trip through text.
#include <array>

namespace wire {
inline constexpr std::array<char16_t, 32> kWindows1252High = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

// What a character the code page cannot hold becomes, as the platform's own
// conversion does.
inline constexpr unsigned char kUnmappable = '?';

constexpr char16_t Windows1252Char(unsigned char b)
{
    return b >= 0x80 && b <= 0x9F ? kWindows1252High[b - 0x80] : char16_t{b};
}

constexpr unsigned char Windows1252Byte(char16_t c)
{
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF))
        return static_cast<unsigned char>(c);
    for (unsigned i = 0; i < kWindows1252High.size(); ++i) {
        if (kWindows1252High[i] == c)
            return static_cast<unsigned char>(0x80 + i);
    }
    return kUnmappable;
}
}  // namespace wire
