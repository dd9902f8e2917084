#pragma once
// The code page of every byte on the wire between the program and the
// service: Windows-1252. Below 0x80 and from 0xA0 it is Latin-1; the table
// holds 0x80..0x9F, with 0 in the five places the code page leaves unassigned.
#include <array>

namespace wire {
inline constexpr std::array<char16_t, 32> kWindows1252High = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,
};

// The byte of a character, or 0 when the code page has none for it (0 itself
// is its own byte: callers test the character first).
constexpr unsigned char Windows1252Byte(char16_t c)
{
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF))
        return static_cast<unsigned char>(c);
    for (unsigned i = 0; i < kWindows1252High.size(); ++i) {
        if (kWindows1252High[i] != 0 && kWindows1252High[i] == c)
            return static_cast<unsigned char>(0x80 + i);
    }
    return 0;
}
}  // namespace wire
