#include "Accounts.h"

#include "PasswordHash.h"

#include <openssl/rand.h>

using namespace std::chrono_literals;

namespace {
constexpr int64_t kPendingLifetime = 3600;  // seconds a sign-up waits for its code
constexpr int64_t kActivationTries = 10;
constexpr int kResetTries = 5;
constexpr auto kResetLifetime = 30min;
constexpr size_t kMaxResets = 10000;
}  // namespace

Accounts::Accounts(Store& store)
    : mStore(store),
      mStandInHash(password::MakeHash(password::RandomHex(16))),
      // The program gives five tries a run, each also asking for announcements.
      mWrongPasswordByNumber(10, 1s, 15min),
      // Many people may share one address.
      mWrongPasswordByAddress(100, 1s, 15min),
      mWrongCodeByAddress(20, 1s, 15min),
      mSignUpsByAddress(20, 1h, 1h),
      mSignUpsByNumber(3, 24h, 24h),
      mResetsByNumber(3, 1h, 1h),
      mResetsByAddress(10, 1h, 1h)
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

Accounts::SignUp Accounts::AddCustomer(Customer c, const std::string& plainPassword, const std::string& address)
{
    if (const auto waiting = mStore.CustomerByMobile(c.mobile);
        waiting && !waiting->activated && waiting->ageSeconds < kPendingLifetime) {
        if (!Check(c.mobile, plainPassword, address, true))
            return {std::nullopt, {}, "This number is waiting for its confirmation code. Please try again later"};
        mStore.AddOutbox(c.mobile, "Quillo Tone: your confirmation code is " + waiting->activationCode + ".");
        return {waiting->id, waiting->activationCode, {}};
    }
    if (mSignUpsByAddress.Blocked(address) || mSignUpsByNumber.Blocked(c.mobile))
        return {std::nullopt, {}, "Too many sign-ups. Please try again later"};
    c.passwordHash = password::MakeHash(plainPassword);
    c.activationCode = RandomCode();
    const auto id = mStore.AddCustomer(c, kPendingLifetime);
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
    {
        std::lock_guard lock(mResetMutex);
        if (mResets.size() >= kMaxResets)
            std::erase_if(mResets, [](const auto& r) { return r.second.expires <= Throttle::Clock::now(); });
        if (mResets.size() >= kMaxResets)
            return;
        mResets[mobile] = {password::MakeHash(code), Throttle::Clock::now() + kResetLifetime, 0};
    }
    mStore.AddOutbox(mobile, "Quillo Tone: your password reset code is " + code +
                                 ". It works once, for 30 minutes. If you did not ask for it, ignore this message.");
}

bool Accounts::FinishReset(const std::string& mobile, const std::string& code, const std::string& newPassword,
                           const std::string& address)
{
    if (newPassword.size() < kMinPasswordLength || mWrongCodeByAddress.Blocked(address))
        return false;
    std::string hash;
    {
        std::lock_guard lock(mResetMutex);
        const auto it = mResets.find(mobile);
        if (it == mResets.end())
            return mWrongCodeByAddress.Count(address), false;
        if (it->second.expires <= Throttle::Clock::now() || ++it->second.tries > kResetTries) {
            mResets.erase(it);
            return mWrongCodeByAddress.Count(address), false;
        }
        hash = it->second.hash;
    }
    if (!password::Matches(code, hash)) {
        mWrongCodeByAddress.Count(address);
        return false;
    }
    {
        std::lock_guard lock(mResetMutex);
        const auto it = mResets.find(mobile);
        // Used once: a second use of the same code finds it gone.
        if (it == mResets.end() || it->second.hash != hash)
            return false;
        mResets.erase(it);
    }
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
    const auto id = mStore.AddCustomer(c, kPendingLifetime);
    mStore.Activate(*id, c.activationCode,
                    "Welcome to Quillo Tone!\r\nThis is the demo account: it has 5 free quills to try.\r\n"
                    "Every tone you send shows up in the service's outbox.",
                    kAlways, kAlways);
}
