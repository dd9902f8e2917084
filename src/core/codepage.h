#pragma once
// The program's single-byte code page is Windows-1252. Text turns into bytes
// and back through it wherever a byte value counts: the log, the cipher and
// hash input, and the percent encoding of service values. A character that the
// code page cannot hold becomes "?" (63), as the platform's conversion does;
// wire/Windows1252.h says how the five unassigned bytes read.
#include <QByteArray>
#include <QString>

namespace codepage {
unsigned char ToAnsiByte(QChar c);
QChar FromAnsiByte(unsigned char b);
QByteArray ToAnsi(const QString& text);
QString FromAnsi(const QByteArray& bytes);
}  // namespace codepage
