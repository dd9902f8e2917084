#pragma once
// Refer up to four friends, each a first name and a mobile number, for free
// quills. Send asks the user's consent, asks the service to invite them and
// sums its answer up in one message.
#include "skin/CSkinWindow.h"

#include <array>

class QLineEdit;

class frmFreeQuills : public CSkinWindow {
    Q_OBJECT
public:
    frmFreeQuills();

    static constexpr int kRows = 4;
    std::array<QLineEdit*, kRows> txtName{};
    std::array<QLineEdit*, kRows> txtMobile{};
    CPictureButton* imgSend = nullptr;
    CPictureButton* imgReset = nullptr;

    // "refCustomerID=", each filled row numbered by its place, gaps kept, then
    // the customer's account.
    QString ReferralQuery() const;
    // The one message that sums up a list of referral lines.
    static QString ReferralSummary(const QString& reply);
    // The number an "already in system" reply names; empty when it names none.
    static QString AlreadySignedUpNumber(const QString& reply);

protected:
    void Form_Load() override;

private:
    void imgSend_MouseUp();
    void imgReset_MouseDown();
};
