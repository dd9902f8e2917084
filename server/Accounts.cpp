#include "Accounts.h"

#include "PasswordHash.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

namespace {
std::array<unsigned char, 32> Digest(const std::array<unsigned char, 32>& pepper, const std::string& plain)
{
    std::array<unsigned char, 32> out{};
    std::string input(reinterpret_cast<const char*>(pepper.data()), pepper.size());
    input += plain;
    unsigned int length = 0;
    EVP_Digest(input.data(), input.size(), out.data(), &length, EVP_sha256(), nullptr);
    return out;
}
}  // namespace

Accounts::Accounts(Store& store) : mStore(store)
{
    RAND_bytes(mPepper.data(), static_cast<int>(mPepper.size()));
}

std::optional<Customer> Accounts::Authenticate(const std::string& mobile, const std::string& plainPassword)
{
    auto customer = mStore.CustomerByMobile(mobile);
    if (!customer || !customer->activated)
        return std::nullopt;
    const auto digest = Digest(mPepper, plainPassword);
    {
        std::lock_guard lock(mLoginsMutex);
        const auto it = mLogins.find(mobile);
        if (it != mLogins.end() && it->second.first == customer->passwordHash)
            return CRYPTO_memcmp(it->second.second.data(), digest.data(), digest.size()) == 0
                       ? customer
                       : std::nullopt;
    }
    if (!password::Matches(plainPassword, customer->passwordHash))
        return std::nullopt;
    std::lock_guard lock(mLoginsMutex);
    mLogins[mobile] = {customer->passwordHash, digest};
    return customer;
}

void Accounts::ForgetLogin(const std::string& mobile)
{
    std::lock_guard lock(mLoginsMutex);
    mLogins.erase(mobile);
}

std::string Accounts::RandomCode()
{
    unsigned char bytes[2];
    RAND_bytes(bytes, sizeof bytes);
    return std::to_string(1000 + (bytes[0] * 256 + bytes[1]) % 9000);
}

void Accounts::EnsureDemoAccount(const std::string& mobile, const std::string& plainPassword)
{
    if (auto existing = mStore.CustomerByMobile(mobile)) {
        if (!password::Matches(plainPassword, existing->passwordHash))
            mStore.SetPassword(existing->id, password::MakeHash(plainPassword));
        if (!existing->activated)
            mStore.Activate(existing->id, existing->activationCode, "Welcome back to Quillo Tone!");
        return;
    }
    const auto provider = mStore.Providers(1).front();
    const auto country = mStore.CountryById(provider.countryId);
    Customer c;
    c.mobile = mobile;
    c.firstName = "Demo";
    c.lastName = "User";
    c.gender = "female";
    c.email = "demo@example.com";
    c.passwordHash = password::MakeHash(plainPassword);
    c.age = 30;
    c.countryId = provider.countryId;
    c.providerId = provider.id;
    c.vendorId = 1;
    c.modelId = mStore.Models(1).front().id;
    c.preferredFormat = mStore.ModelById(c.modelId)->format;
    c.chargeText = country->chargeText;
    c.freeQuills = 5;
    c.activationCode = RandomCode();
    const auto id = mStore.AddCustomer(c);
    mStore.Activate(*id, c.activationCode,
                    "Welcome to Quillo Tone!\r\nThis is the demo account: it has 5 free quills to try.\r\n"
                    "Every tone you send shows up in the service's outbox.");
}
