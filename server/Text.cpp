#include "Text.h"

#include <QString>
#include <QStringDecoder>
#include <array>

namespace {
// Windows-1252 0x80-0x9F; the rest of the code page is Latin-1. 0 marks a hole.
constexpr std::array<char16_t, 32> kHigh = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

char ToAnsiByte(char16_t c)
{
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF))
        return static_cast<char>(c);
    for (size_t i = 0; i < kHigh.size(); ++i) {
        if (kHigh[i] != 0 && kHigh[i] == c)
            return static_cast<char>(0x80 + i);
    }
    return '?';
}
}  // namespace

namespace text {
std::string FromWire(const std::string& bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString asUtf8 = utf8.decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    if (!utf8.hasError())
        return bytes;
    QString out;
    out.reserve(static_cast<qsizetype>(bytes.size()));
    for (const char ch : bytes) {
        const auto b = static_cast<unsigned char>(ch);
        if (b >= 0x80 && b < 0xA0)
            out += QChar(kHigh[b - 0x80] ? kHigh[b - 0x80] : u'?');
        else
            out += QChar(b);
    }
    return out.toStdString();
}

std::string ToWire(const std::string& utf8)
{
    const QString s = QString::fromStdString(utf8);
    std::string out;
    out.reserve(static_cast<size_t>(s.size()));
    for (const QChar c : s)
        out += ToAnsiByte(c.unicode());
    return out;
}

std::string Field(const std::string& value)
{
    std::string out;
    for (const char c : value) {
        if (c == ',' || c == '\r' || c == '\n')
            out += ' ';
        else
            out += c;
    }
    return out;
}

bool IsDigits(const std::string& value)
{
    if (value.empty())
        return false;
    for (const char c : value) {
        if (c < '0' || c > '9')
            return false;
    }
    return true;
}

std::string Html(const std::string& value)
{
    std::string out;
    for (const char c : value) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    }
    return out;
}

std::string Trim(const std::string& value)
{
    const auto first = value.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return {};
    const auto last = value.find_last_not_of(" \t\r\n");
    return value.substr(first, last - first + 1);
}
}  // namespace text
