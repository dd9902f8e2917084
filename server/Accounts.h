#pragma once
// Who a request speaks for, and what guessing costs. Every password check,
// sign-up, activation code and password reset goes through here, limited per
// account (the number) and per address, with a wait that doubles.
#include "Store.h"
#include "Throttle.h"

#include <optional>
#include <string>

class Accounts {
public:
    explicit Accounts(Store& store);

    // The active customer whose password this is. An unknown number costs
    // the same time as a known one.
    std::optional<Customer> Authenticate(const std::string& mobile, const std::string& plainPassword,
                                         const std::string& address);
    // The same for the owner of a number, active or still signing up.
    std::optional<Customer> Owner(const std::string& mobile, const std::string& plainPassword,
                                  const std::string& address);

    struct SignUp {
        std::optional<int64_t> id;  // with the code when the sign-up stands
        std::string code, refusal;
    };
    // Stores a customer waiting for activation, and the code goes to the
    // number's outbox. A sign-up again for a number that waits, with the same
    // password, gets the same code once more; with another it is refused.
    SignUp AddCustomer(Customer c, const std::string& plainPassword, const std::string& address);
    bool Activate(int64_t customerId, const std::string& code, const std::string& welcome,
                  const std::string& address);

    // A one-time code to the number's outbox, when it has an account.
    void StartReset(const std::string& mobile, const std::string& address);
    // The new password, when the code is the one sent and still fresh.
    bool FinishReset(const std::string& mobile, const std::string& code, const std::string& newPassword,
                     const std::string& address);

    // The demo account of a local installation: made if missing, given this
    // password if it has another.
    void EnsureDemoAccount(const std::string& mobile, const std::string& plainPassword);

    // Why a new password cannot be taken, or empty when it can.
    static std::string PasswordRefusal(const std::string& plainPassword);
    // The number has an account, or a sign-up that cannot be replaced yet.
    bool InUse(const std::string& mobile);

private:
    std::optional<Customer> Check(const std::string& mobile, const std::string& plainPassword,
                                  const std::string& address, bool pendingToo);
    static std::string RandomCode();

    Store& mStore;
    // Checked against when the number has no account, so that both take as long.
    const std::string mStandInHash;
    Throttle mWrongPasswordByNumber, mWrongPasswordByAddress;
    Throttle mWrongCodeByAddress;
    Throttle mSignUpsByAddress, mSignUpsByNumber;
    Throttle mResetsByNumber, mResetsByAddress;
};
