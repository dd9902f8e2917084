#include "service/PendingSignUp.h"

#include "core/MsgBox.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modEncryption.h"
#include "service/CHTTPCall.h"
#include "service/frmSMSConfirmation.h"
#include "skin/frmMessage.h"

#include <QLabel>
#include <QLineEdit>

namespace {
constexpr int kTriesAtStart = 3;
}  // namespace

void ActivateCustomer(const QString& customerId, const QString& code)
{
    QString query = QStringLiteral("CustomerID=") + customerId + QStringLiteral("&ActivationCode=") + code;
    CHTTPCall().GetPage(ptActivateCustomer, query, true, kServiceTimeOut);
}

PendingSignUpOutcome ConfirmPendingSignUp()
{
    const QString code = Decrypt(GetAppSetting(QStringLiteral("t1nuc"), kSettings), gstrMachineKey);
    const QString customerId = Decrypt(GetAppSetting(QStringLiteral("t2nuc"), kSettings), gstrMachineKey);
    if (!IsNumeric(code) || !IsNumeric(customerId)) {
        MsgBox(kUnusableSignUpText, QMessageBox::Warning, kUnusableSignUpTitle);
        DeleteAppSetting(QStringLiteral("t1nuc"), kSettings);
        DeleteAppSetting(QStringLiteral("t2nuc"), kSettings);
        SaveAppSetting(QStringLiteral("DID"), QString(), kSettings);
        return PendingSignUpOutcome::Unusable;
    }

    // An empty box counts as a wrong code here; each round has a fresh window.
    for (int attempts = 0;;) {
        frmSMSConfirmation window;
        window.Load();
        window.lblPhoneNumber->setText(GetAppSetting(QStringLiteral("LastPhoneNumber"), kSettings));
        window.Show(true);
        if (window.Tag == QLatin1String("Q")) {
            ShowMessageWindow(QStringLiteral("frmActivationCodeCancelled"));
            return PendingSignUpOutcome::GivenUp;
        }
        if (window.txtCode->text() == code)
            break;
        ShowMessageWindow(QStringLiteral("frmInvalidCaptchaCode"));
        if (++attempts == kTriesAtStart)
            return PendingSignUpOutcome::GivenUp;
        window.Unload();
    }
    ActivateCustomer(customerId, code);
    SaveAppSetting(QStringLiteral("DID"), QStringLiteral("1"), kSettings);
    DeleteAppSetting(QStringLiteral("t1nuc"), kSettings);
    DeleteAppSetting(QStringLiteral("t2nuc"), kSettings);
    return PendingSignUpOutcome::Confirmed;
}
