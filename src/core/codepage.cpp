#include "core/codepage.h"

#include "wire/Windows1252.h"

namespace codepage {

unsigned char ToAnsiByte(QChar c)
{
    const char16_t u = c.unicode();
    if (u == 0)
        return 0;
    // The unassigned places map to the C1 control of the same value, as Windows' own table does.
    if (u >= 0x80 && u <= 0x9F && wire::kWindows1252High[u - 0x80] == 0)
        return static_cast<unsigned char>(u);
    const unsigned char b = wire::Windows1252Byte(u);
    return b ? b : Unmappable;
}

QChar FromAnsiByte(unsigned char b)
{
    if (b >= 0x80 && b <= 0x9F && wire::kWindows1252High[b - 0x80] != 0)
        return QChar(wire::kWindows1252High[b - 0x80]);
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
