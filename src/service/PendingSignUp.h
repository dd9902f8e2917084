#pragma once
// A sign-up that waits for its SMS code survives a restart: its code and
// customer id stand enciphered in "t1nuc" and "t2nuc". At start the user gets
// three tries to type the code; a match activates the account.
#include <QString>

enum class PendingSignUpOutcome {
    Confirmed,  // "DID" is "1": the normal login follows
    GivenUp,    // cancelled or three wrong codes: the program ends
    Unusable,   // the stored values did not decipher to numbers: told, cleared, the next start is a first run
};

PendingSignUpOutcome ConfirmPendingSignUp();

// Tells the service that the customer typed the right code. The reply is not read.
void ActivateCustomer(const QString& customerId, const QString& code);

// The message of stored values that cannot be used.
inline const QString kUnusableSignUpTitle = QStringLiteral("Quillotone [Error 1001]");
inline const QString kUnusableSignUpText =
    QStringLiteral("Quillotone could not read the details of your unfinished sign-up! Please sign up again.");
