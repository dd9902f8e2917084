#pragma once
// Who a request speaks for: the password check every page with an account
// goes through, and the codes that sign-up hands out.
#include "Store.h"

#include <array>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

class Accounts {
public:
    explicit Accounts(Store& store);

    // The active customer whose password this is.
    std::optional<Customer> Authenticate(const std::string& mobile, const std::string& plainPassword);
    // After a change of password.
    void ForgetLogin(const std::string& mobile);

    // A four-digit confirmation code.
    static std::string RandomCode();

    // The demo account of a local installation: made if missing, given this
    // password if it has another.
    void EnsureDemoAccount(const std::string& mobile, const std::string& plainPassword);

private:
    Store& mStore;
    // Logins that passed the slow hash check, so that a returning customer is
    // checked with one fast digest: mobile -> (stored hash, digest of password).
    std::mutex mLoginsMutex;
    std::unordered_map<std::string, std::pair<std::string, std::array<unsigned char, 32>>> mLogins;
    std::array<unsigned char, 32> mPepper{};
};
