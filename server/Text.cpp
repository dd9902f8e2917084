#include "Text.h"

#include "wire/Windows1252.h"

#include <QString>
#include <QStringDecoder>

namespace text {
std::string FromWire(const std::string& bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString asUtf8 = utf8.decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    if (!utf8.hasError())
        return bytes;
    QString out;
    out.reserve(static_cast<qsizetype>(bytes.size()));
    for (const char ch : bytes)
        out += QChar(wire::Windows1252Char(static_cast<unsigned char>(ch)));
    return out.toStdString();
}

std::string ToWire(const std::string& utf8)
{
    const QString s = QString::fromStdString(utf8);
    std::string out;
    out.reserve(static_cast<size_t>(s.size()));
    for (const QChar c : s)
        out += static_cast<char>(wire::Windows1252Byte(c.unicode()));
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
