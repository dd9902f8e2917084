#pragma once
// Whole files in one call: to lay out a test's ground and to read back what
// the program wrote.
#include <QByteArray>
#include <QString>

// Writes the bytes over the file, making its folders; false if it could not.
bool WriteFile(const QString& path, const QByteArray& bytes);
// The file's bytes; empty when it cannot be read.
QByteArray ReadFile(const QString& path);
