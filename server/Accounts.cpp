#include "Accounts.h"

#include "PasswordHash.h"

#include "Text.h"

#include <openssl/rand.h>

using namespace std::chrono_literals;

namespace {
// A waiting sign-up takes its code for 30 days, so that "come back later" at
// the code step never becomes a dead end; after its first hour a new sign-up
// for the number may take its place, so nobody holds a number for a month.
constexpr int64_t kPendingLifetime = 30 * 24 * 3600;
constexpr int64_t kPendingHold = 3600;
constexpr size_t kMinPasswordLength = 6;
constexpr int64_t kActivationTries = 10;
constexpr int64_t kResetTries = 5;
constexpr int64_t kResetLifetimeMs = 30 * 60 * 1000;
}  // namespace

Accounts::Accounts(Store& store)
    : mStore(store),
      mStandInHash(password::MakeHash(password::RandomHex(16))),
      // The program gives five tries a run, each also asking for announcements.
      mWrongPasswordByNumber(store, "password/number", 10, 1s, 15min),
      // Many people may share one address.
      mWrongPasswordByAddress(store, "password/address", 100, 1s, 15min),
      mWrongCodeByAddress(store, "code/address", 20, 1s, 15min),
      mSignUpsByAddress(store, "sign-up/address", 20, 1h, 1h),
      mSignUpsByNumber(store, "sign-up/number", 3, 24h, 24h),
      mResetsByNumber(store, "reset/number", 3, 1h, 1h),
      mResetsByAddress(store, "reset/address", 10, 1h, 1h)
{
}

std::optional<Customer> Accounts::Check(const std::string& mobile, const std::string& plainPassword,
                                        const std::string& address, bool pendingToo)
{
    if (mWrongPasswordByNumber.Blocked(mobile) || mWrongPasswordByAddress.Blocked(address))
        return std::nullopt;
    auto customer = mStore.CustomerByMobile(mobile);
    const bool matches = password::Matches(plainPassword, customer ? customer->passwordHash : mStandInHash);
    if (matches && customer &&
        (customer->activated || (pendingToo && customer->ageSeconds < kPendingLifetime))) {
        mWrongPasswordByNumber.Clear(mobile);
        return customer;
    }
    mWrongPasswordByNumber.Count(mobile);
    mWrongPasswordByAddress.Count(address);
    return std::nullopt;
}

std::optional<Customer> Accounts::Authenticate(const std::string& mobile, const std::string& plainPassword,
                                               const std::string& address)
{
    return Check(mobile, plainPassword, address, false);
}

std::optional<Customer> Accounts::Owner(const std::string& mobile, const std::string& plainPassword,
                                        const std::string& address)
{
    return Check(mobile, plainPassword, address, true);
}

std::string Accounts::PasswordRefusal(const std::string& plainPassword)
{
    if (plainPassword.size() < kMinPasswordLength)
        return "The password should be at least 6 characters long";
    // The login and the uploads send the password as it stands in the query,
    // so it must read back unchanged there and in the program's code page.
    const std::string refusal =
        "Please choose a password without spaces and without & = % + # ? or letters from outside Western Europe";
    for (size_t i = 0; i < plainPassword.size();) {
        const auto c = static_cast<unsigned char>(plainPassword[i]);
        const size_t length = c < 0x80 ? 1 : c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : 2;
        const std::string one = plainPassword.substr(i, length);
        if (c <= 0x20 || c == 0x7F || std::string_view("&=%+#?").find(plainPassword[i]) != std::string_view::npos ||
            text::ToWire(one) == "?")
            return refusal;
        i += length;
    }
    return {};
}

bool Accounts::InUse(const std::string& mobile)
{
    const auto customer = mStore.CustomerByMobile(mobile);
    return customer && (customer->activated || customer->ageSeconds < kPendingHold);
}

Accounts::SignUp Accounts::AddCustomer(Customer c, const std::string& plainPassword, const std::string& address)
{
    if (const auto waiting = mStore.CustomerByMobile(c.mobile);
        waiting && !waiting->activated && waiting->ageSeconds < kPendingHold) {
        if (!Check(c.mobile, plainPassword, address, true))
            return {std::nullopt, {}, "This number is waiting for its confirmation code. Please try again later"};
        mStore.AddOutbox(c.mobile, "Quillo Tone: your confirmation code is " + waiting->activationCode + ".");
        return {waiting->id, waiting->activationCode, {}};
    }
    if (mSignUpsByAddress.Blocked(address) || mSignUpsByNumber.Blocked(c.mobile))
        return {std::nullopt, {}, "Too many sign-ups. Please try again later"};
    c.passwordHash = password::MakeHash(plainPassword);
    c.activationCode = RandomCode();
    const auto id = mStore.AddCustomer(c, kPendingHold);
    if (!id)
        return {std::nullopt, {}, "The mobile number is already in use"};
    mSignUpsByAddress.Count(address);
    mSignUpsByNumber.Count(c.mobile);
    mStore.AddOutbox(c.mobile, "Quillo Tone: your confirmation code is " + c.activationCode + ".");
    return {id, c.activationCode, {}};
}

bool Accounts::Activate(int64_t customerId, const std::string& code, const std::string& welcome,
                        const std::string& address)
{
    if (mWrongCodeByAddress.Blocked(address))
        return false;
    const auto outcome = mStore.Activate(customerId, code, welcome, kActivationTries, kPendingLifetime);
    if (outcome != Store::Activation::Done)
        mWrongCodeByAddress.Count(address);
    return outcome == Store::Activation::Done;
}

void Accounts::StartReset(const std::string& mobile, const std::string& address)
{
    if (mResetsByNumber.Blocked(mobile) || mResetsByAddress.Blocked(address))
        return;
    mResetsByNumber.Count(mobile);
    mResetsByAddress.Count(address);
    const auto customer = mStore.CustomerByMobile(mobile);
    if (!customer || !customer->activated)
        return;
    const std::string code = password::Random(8);
    mStore.PutReset(mobile, password::MakeHash(code), Store::NowMs() + kResetLifetimeMs);
    mStore.AddOutbox(mobile, "Quillo Tone: your password reset code is " + code +
                                 ". It works once, for 30 minutes. If you did not ask for it, ignore this message.");
}

bool Accounts::FinishReset(const std::string& mobile, const std::string& code, const std::string& newPassword,
                           const std::string& address)
{
    if (!PasswordRefusal(newPassword).empty() || mWrongCodeByAddress.Blocked(address))
        return false;
    const auto hash = mStore.TryReset(mobile, Store::NowMs(), kResetTries);
    if (!hash || !password::Matches(code, *hash)) {
        mWrongCodeByAddress.Count(address);
        return false;
    }
    // Used once: a second use of the same code finds it gone.
    if (!mStore.TakeReset(mobile, *hash))
        return false;
    const auto customer = mStore.CustomerByMobile(mobile);
    if (!customer)
        return false;
    mStore.SetPassword(customer->id, password::MakeHash(newPassword));
    mWrongPasswordByNumber.Clear(mobile);
    mStore.AddOutbox(mobile, "Quillo Tone: your password was changed.");
    return true;
}

std::string Accounts::RandomCode()
{
    unsigned char bytes[2];
    RAND_bytes(bytes, sizeof bytes);
    return std::to_string(1000 + (bytes[0] * 256 + bytes[1]) % 9000);
}

void Accounts::EnsureDemoAccount(const std::string& mobile, const std::string& plainPassword)
{
    constexpr int64_t kAlways = std::numeric_limits<int64_t>::max();
    if (auto existing = mStore.CustomerByMobile(mobile)) {
        if (!password::Matches(plainPassword, existing->passwordHash))
            mStore.SetPassword(existing->id, password::MakeHash(plainPassword));
        if (!existing->activated)
            mStore.Activate(existing->id, existing->activationCode, "Welcome back to Quillo Tone!", kAlways, kAlways);
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
    const auto id = mStore.AddCustomer(c, kPendingHold);
    // Another process sharing the store made it first.
    if (!id)
        return EnsureDemoAccount(mobile, plainPassword);
    mStore.Activate(*id, c.activationCode,
                    "Welcome to Quillo Tone!\r\nThis is the demo account: it has 5 free quills to try.\r\n"
                    "Every tone you send shows up in the service's outbox.",
                    kAlways, kAlways);
}
