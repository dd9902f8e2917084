#pragma once
// Protection of stored values under a key tied to this computer. Cipher texts
// and hashes are text, two upper-case hexadecimal digits a byte. Text turns
// into bytes through the program's code page (see codepage.h).
//
// Cipher: AES-256-CBC with PKCS#7 padding; the key is the SHA-256 of the pass
// phrase; each call draws a fresh random IV and puts it in front of the cipher
// text, so a cipher text holds all that Decrypt needs but the pass phrase.
#include <QByteArray>
#include <QString>

QString Encrypt(const QString& Value, const QString& PassPhrase);
QString Decrypt(const QString& Value, const QString& PassPhrase);
QString Hash(const QString& Value);

QString BytesToHex(const QByteArray& bytes);
QByteArray HexToBytes(const QString& hex);

// Computes gstrMachineKey from the adapter address and stores it as "DefaultProc".
void InitMachineKey();
