#include "core/codepage.h"

#include "wire/Windows1252.h"

namespace codepage {

unsigned char ToAnsiByte(QChar c)
{
    return wire::Windows1252Byte(c.unicode());
}

QChar FromAnsiByte(unsigned char b)
{
    return QChar(wire::Windows1252Char(b));
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
