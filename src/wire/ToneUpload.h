#pragma once
// The tone upload to "SendT2.asp" carries the tone in hexadecimal, in fields
// "tonedata1", "tonedata2", ... of this many characters (16380 bytes of tone);
// only the last field is shorter.
#include <cstddef>

namespace wire {
inline constexpr std::size_t kToneFieldChars = 32760;
}  // namespace wire
