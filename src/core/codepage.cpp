#include "core/codepage.h"

#include <array>

namespace codepage {
namespace {
// 0x80..0x9F of Windows-1252; 0 marks the five unassigned places, which map to
// the C1 control of the same value, as Windows' own table does.
constexpr std::array<char16_t, 32> kHigh = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};
}  // namespace

unsigned char ToAnsiByte(QChar c)
{
    const char16_t u = c.unicode();
    if (u < 0x80 || (u >= 0xA0 && u <= 0xFF))
        return static_cast<unsigned char>(u);
    for (size_t i = 0; i < kHigh.size(); ++i) {
        if (kHigh[i] == u)
            return static_cast<unsigned char>(0x80 + i);
    }
    return Unmappable;
}

QChar FromAnsiByte(unsigned char b)
{
    if (b >= 0x80 && b <= 0x9F)
        return QChar(kHigh[b - 0x80]);
    return QChar(b);
}

QByteArray ToAnsi(const QString& text)
{
    QByteArray out(text.size(), Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i)
        out[i] = static_cast<char>(ToAnsiByte(text[i]));
    return out;
}

QString FromAnsi(const QByteArray& bytes)
{
    QString out(bytes.size(), Qt::Uninitialized);
    for (qsizetype i = 0; i < bytes.size(); ++i)
        out[i] = FromAnsiByte(static_cast<unsigned char>(bytes[i]));
    return out;
}
}  // namespace codepage
