#pragma once
// Passwords are kept only as salted PBKDF2-HMAC-SHA256 hashes, in the form
// "pbkdf2-sha256$iterations$salt$hash" with salt and hash in hexadecimal.
#include <string>

namespace password {
std::string MakeHash(const std::string& plain);
bool Matches(const std::string& plain, const std::string& stored);
// A fresh password of letters and digits, for a reset.
std::string Random(int length);
// Random bytes as lower-case hexadecimal.
std::string RandomHex(int bytes);
}  // namespace password
