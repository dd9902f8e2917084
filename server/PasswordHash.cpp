#include "PasswordHash.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <stdexcept>
#include <vector>

namespace {
constexpr int kIterations = 40000;
constexpr int kSaltBytes = 16;
constexpr int kHashBytes = 32;

std::string ToHex(const unsigned char* bytes, size_t n)
{
    static const char digits[] = "0123456789abcdef";
    std::string out;
    for (size_t i = 0; i < n; ++i) {
        out += digits[bytes[i] >> 4];
        out += digits[bytes[i] & 0xF];
    }
    return out;
}

bool FromHex(const std::string& hex, std::vector<unsigned char>& out)
{
    if (hex.size() % 2 != 0)
        return false;
    const auto nibble = [](char c) -> int {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        return -1;
    };
    out.clear();
    for (size_t i = 0; i < hex.size(); i += 2) {
        const int hi = nibble(hex[i]);
        const int lo = nibble(hex[i + 1]);
        if (hi < 0 || lo < 0)
            return false;
        out.push_back(static_cast<unsigned char>(hi * 16 + lo));
    }
    return true;
}

std::vector<unsigned char> Derive(const std::string& plain, const std::vector<unsigned char>& salt, int iterations)
{
    std::vector<unsigned char> out(kHashBytes);
    if (PKCS5_PBKDF2_HMAC(plain.data(), static_cast<int>(plain.size()), salt.data(), static_cast<int>(salt.size()),
                          iterations, EVP_sha256(), kHashBytes, out.data()) != 1)
        throw std::runtime_error("PBKDF2 failed");
    return out;
}

std::vector<unsigned char> RandomBytes(int n)
{
    std::vector<unsigned char> bytes(static_cast<size_t>(n));
    if (RAND_bytes(bytes.data(), n) != 1)
        throw std::runtime_error("no random bytes");
    return bytes;
}
}  // namespace

namespace password {
std::string MakeHash(const std::string& plain)
{
    const auto salt = RandomBytes(kSaltBytes);
    const auto hash = Derive(plain, salt, kIterations);
    return "pbkdf2-sha256$" + std::to_string(kIterations) + "$" + ToHex(salt.data(), salt.size()) + "$" +
           ToHex(hash.data(), hash.size());
}

bool Matches(const std::string& plain, const std::string& stored)
{
    const auto a = stored.find('$');
    const auto b = stored.find('$', a + 1);
    const auto c = stored.find('$', b + 1);
    if (a == std::string::npos || b == std::string::npos || c == std::string::npos ||
        stored.substr(0, a) != "pbkdf2-sha256")
        return false;
    int iterations = 0;
    try {
        iterations = std::stoi(stored.substr(a + 1, b - a - 1));
    } catch (const std::exception&) {
        return false;
    }
    std::vector<unsigned char> salt, hash;
    if (iterations < 1 || !FromHex(stored.substr(b + 1, c - b - 1), salt) || !FromHex(stored.substr(c + 1), hash) ||
        hash.size() != kHashBytes)
        return false;
    const auto derived = Derive(plain, salt, iterations);
    return CRYPTO_memcmp(derived.data(), hash.data(), hash.size()) == 0;
}

std::string Random(int length)
{
    static const char alphabet[] = "abcdefghjkmnpqrstuvwxyz23456789";
    const auto bytes = RandomBytes(length);
    std::string out;
    for (const unsigned char b : bytes)
        out += alphabet[b % (sizeof(alphabet) - 1)];
    return out;
}

std::string RandomHex(int bytes)
{
    const auto raw = RandomBytes(bytes);
    return ToHex(raw.data(), raw.size());
}
}  // namespace password
