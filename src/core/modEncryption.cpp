#include "core/modEncryption.h"

#include "core/CError.h"
#include "core/MsgBox.h"
#include "core/codepage.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modMACAddress.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <memory>

namespace {
constexpr int kKeyBytes = 32;   // 256-bit key
constexpr int kBlockBytes = 16; // AES block, and the IV
constexpr long kBadData = 0x80090005;

using CipherCtx = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;
using DigestCtx = std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)>;

// The failing OpenSSL statement, as a CError with the library's own words.
[[noreturn]] void raiseCryptoError(const char* source)
{
    const unsigned long code = ERR_get_error();
    ERR_clear_error();
    const char* reason = code ? ERR_reason_error_string(code) : nullptr;
    throw CError(code ? static_cast<long>(code) : kBadData,
                 reason ? QString::fromLatin1(reason) : QStringLiteral("Bad data"), QString::fromLatin1(source));
}

void check(int ok, const char* source)
{
    if (ok != 1)
        raiseCryptoError(source);
}

void showFailure(const QString& fixedLine, const ErrObject& err)
{
    MsgBox(fixedLine + QLatin1Char('\n') + err.Description + QStringLiteral(" (") +
           QString::number(static_cast<unsigned long>(err.Number) & 0xFFFFFFFFul, 16).toUpper() + QLatin1Char(')'));
}

QByteArray sha256(const QByteArray& data)
{
    QByteArray digest(EVP_MAX_MD_SIZE, Qt::Uninitialized);
    unsigned int length = 0;
    check(EVP_Digest(data.constData(), data.size(), reinterpret_cast<unsigned char*>(digest.data()), &length,
                     EVP_sha256(), nullptr),
          "Hash");
    digest.truncate(length);
    return digest;
}

// The pass phrase goes through the same hash as Hash() to become the key.
QByteArray keyFrom(const QString& passPhrase)
{
    return sha256(codepage::ToAnsi(passPhrase)).left(kKeyBytes);
}

QByteArray runCipher(bool encrypt, const QByteArray& key, const QByteArray& iv, const QByteArray& input)
{
    CipherCtx ctx(EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free);
    const char* source = encrypt ? "Encrypt" : "Decrypt";
    if (!ctx)
        raiseCryptoError(source);
    const auto* k = reinterpret_cast<const unsigned char*>(key.constData());
    const auto* v = reinterpret_cast<const unsigned char*>(iv.constData());
    check(EVP_CipherInit_ex(ctx.get(), EVP_aes_256_cbc(), nullptr, k, v, encrypt ? 1 : 0), source);
    QByteArray out(input.size() + kBlockBytes, Qt::Uninitialized);
    int written = 0;
    int tail = 0;
    auto* o = reinterpret_cast<unsigned char*>(out.data());
    check(EVP_CipherUpdate(ctx.get(), o, &written, reinterpret_cast<const unsigned char*>(input.constData()),
                           static_cast<int>(input.size())),
          source);
    check(EVP_CipherFinal_ex(ctx.get(), o + written, &tail), source);
    out.truncate(written + tail);
    return out;
}
}  // namespace

QString BytesToHex(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toHex().toUpper());
}

namespace {
int hexDigit(QChar c)
{
    const char16_t u = c.unicode();
    if (u >= '0' && u <= '9')
        return u - '0';
    if (u >= 'A' && u <= 'F')
        return u - 'A' + 10;
    if (u >= 'a' && u <= 'f')
        return u - 'a' + 10;
    return -1;
}
}  // namespace

QByteArray HexToBytes(const QString& hex)
{
    QByteArray bytes;
    bytes.reserve((hex.size() + 1) / 2);
    for (qsizetype i = 0; i < hex.size(); i += 2) {
        // A pair that is not hexadecimal is 0; a last single digit is a byte of its own.
        int value = hexDigit(hex[i]);
        if (i + 1 < hex.size()) {
            const int low = hexDigit(hex[i + 1]);
            value = (value < 0 || low < 0) ? 0 : value * 16 + low;
        }
        bytes.append(static_cast<char>(value < 0 ? 0 : value));
    }
    return bytes;
}

QString Encrypt(const QString& Value, const QString& PassPhrase)
{
    ErrObject err;
    QString hex;
    ResumeNext(err, [&] {
        QByteArray iv(kBlockBytes, Qt::Uninitialized);
        check(RAND_bytes(reinterpret_cast<unsigned char*>(iv.data()), kBlockBytes), "Encrypt");
        hex = BytesToHex(iv + runCipher(true, keyFrom(PassPhrase), iv, codepage::ToAnsi(Value)));
    });
    if (err.Stands()) {
        showFailure(QStringLiteral("Error during Encrypt."), err);
        return {};
    }
    return hex;
}

QString Decrypt(const QString& Value, const QString& PassPhrase)
{
    ErrObject err;
    QByteArray plain;
    ResumeNext(err, [&] {
        const QByteArray data = HexToBytes(Value);
        if (data.size() < 2 * kBlockBytes || data.size() % kBlockBytes != 0)
            throw CError(kBadData, QStringLiteral("Bad data"), QStringLiteral("Decrypt"));
        plain = runCipher(false, keyFrom(PassPhrase), data.left(kBlockBytes), data.mid(kBlockBytes));
    });
    if (err.Stands()) {
        showFailure(QStringLiteral("Error during Decrypt."), err);
        return {};
    }
    return codepage::FromAnsi(plain);
}

QString Hash(const QString& Value)
{
    DigestCtx ctx(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    ErrObject err;
    ResumeNext(err, [&] {
        if (!ctx)
            raiseCryptoError("Hash");
        check(EVP_DigestInit_ex(ctx.get(), EVP_sha256(), nullptr), "Hash");
    });
    if (err.Stands()) {
        showFailure(QStringLiteral("Error during HashingMethod initialization."), err);
        return {};
    }
    const QByteArray data = codepage::ToAnsi(Value);
    QByteArray digest(EVP_MAX_MD_SIZE, Qt::Uninitialized);
    unsigned int length = 0;
    ResumeNext(err, [&] {
        check(EVP_DigestUpdate(ctx.get(), data.constData(), data.size()), "Hash");
        check(EVP_DigestFinal_ex(ctx.get(), reinterpret_cast<unsigned char*>(digest.data()), &length), "Hash");
    });
    if (err.Stands()) {
        showFailure(QStringLiteral("Error during Hash."), err);
        return {};
    }
    if (length != kKeyBytes) {
        showFailure(QStringLiteral("Error in hash value."),
                    ErrObject{kBadData, QStringLiteral("Hash value of unexpected size"), QStringLiteral("Hash")});
        return {};
    }
    digest.truncate(length);
    return BytesToHex(digest);
}

void InitMachineKey()
{
    const QString key = Hash(GetMACAddress());
    // Read as the old program did; the stored value is never trusted as the key.
    gstrMachineKey = GetAppSetting(QStringLiteral("DefaultProc"), kSettings);
    SaveAppSetting(QStringLiteral("DefaultProc"), key, kSettings);
    gstrMachineKey = key;
}
