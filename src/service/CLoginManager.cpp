#include "service/CLoginManager.h"

#include "core/CError.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modEncryption.h"
#include "core/seams.h"
#include "core/twips.h"
#include "service/CAnnouncements.h"
#include "service/CHTTPCall.h"
#include "service/frmLogin.h"
#include "skin/CDialog.h"
#include "skin/frmGenericOKDialog.h"

#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <cmath>

namespace {
const QString kEnterBoth = QStringLiteral("Please enter your mobile number and password.");
const QString kInvalidLogin = QStringLiteral("Invalid login. Please try again.");
const QString kDefaultFormat = QStringLiteral("AMR Narrowband");
constexpr int kMostFailedAttempts = 5;

// "Origin" as the service gets it: a number, else "0".
QString Origin()
{
    const QString origin = GetAppSetting(QStringLiteral("Origin"), kSettings);
    bool numeric = false;
    origin.trimmed().toDouble(&numeric);
    return numeric ? origin : QStringLiteral("0");
}
}  // namespace

CLoginManager::CLoginManager()
{
    NewWindow();
}

CLoginManager::~CLoginManager() = default;

void CLoginManager::NewWindow()
{
    mfrmLogin = std::make_unique<frmLogin>();
    connect(mfrmLogin.get(), &frmLogin::OKClicked, this, &CLoginManager::mfrmLogin_OKClicked);
    connect(mfrmLogin.get(), &frmLogin::CancelClicked, this, &CLoginManager::mfrmLogin_CancelClicked);
    connect(mfrmLogin.get(), &frmLogin::DoSignup, this, &CLoginManager::mfrmLogin_DoSignup);
}

void CLoginManager::Login(const QString& DefaultNumber)
{
    NewWindow();
    mstrDefaultNumber = DefaultNumber;
    mfrmLogin->Load();
    CenterOnMainWindow(mfrmLogin.get());
    QString number = mstrDefaultNumber;
    if (number.isEmpty())
        number = GetAppSetting(QStringLiteral("LastPhoneNumber"), kSettings);
    if (!number.isEmpty()) {
        mfrmLogin->txtMobileNumber->setText(number);
        mfrmLogin->txtMobileNumber->setCursorPosition(static_cast<int>(number.size()));
    }
    emit BackdropWanted(mfrmLogin->width() - TwipsToPixelsX(600), mfrmLogin->height() - TwipsToPixelsY(800));
    mfrmLogin->Show(true);
    // The window has been hidden by one of the three outcomes.
    mfrmLogin->Unload();
    mfrmLogin.reset();
}

void CLoginManager::ReadLoginReply(const QString& reply)
{
    ErrObject err;
    const QStringList fields = reply.split(QLatin1Char(','));
    ResumeNext(err, [&] { mbLoggedIn = Field(fields, 0) == QLatin1String("1"); });
    ResumeNext(err, [&] {
        gintFreeQuills = TextToInt16(Field(fields, 7));
        emit FreeQuillsRead();
    });
    ResumeNext(err, [&] { gstrCustomerID = QString::number(TextToInt16(Field(fields, 1))); });
    ResumeNext(err, [&] { gstrChargeText = Field(fields, 10); });
    ResumeNext(err, [&] { gstrPreferredFormat = Field(fields, 9); });
    if (gstrPreferredFormat.isEmpty())
        gstrPreferredFormat = kDefaultFormat;
}

void CLoginManager::mfrmLogin_OKClicked()
{
    frmLogin* window = mfrmLogin.get();
    SetFormEnabled(window, false);
    window->imgTalkingToServer->show();
    QCoreApplication::processEvents();

    window->txtMobileNumber->setText(window->txtMobileNumber->text().trimmed());
    if (window->txtMobileNumber->text().isEmpty()) {
        CDialog().Display(kEnterBoth, true, window);
        SetFormEnabled(window, true);
        return;
    }
    if (window->txtPassword->text().isEmpty()) {
        CDialog().Display(kEnterBoth, true, window);
        SetFormEnabled(window, true);
        window->txtPassword->setFocus();
        return;
    }

    QString query = QStringLiteral("MobileNumber=") + window->txtMobileNumber->text() + QStringLiteral("&Password=") +
                    window->txtPassword->text() + QStringLiteral("&Origin=") + Origin();
    CHTTPCall call;
    const QString reply = call.GetPage(ptLogin, query, true, kServiceTimeOut);
    if (reply == kServerUnreachable) {
        SetFormEnabled(window, true);
        window->imgTalkingToServer->hide();
        return;
    }
    if (!reply.isEmpty()) {
        ReadLoginReply(reply);
        gstrPassword = Encrypt(window->txtPassword->text(), gstrMachineKey);
        gstrMobileNumber = window->txtMobileNumber->text();
        SaveAppSetting(QStringLiteral("LastPhoneNumber"), gstrMobileNumber, kSettings);
    }

    CAnnouncements().CheckForAnnouncements();

    if (mbLoggedIn) {
        emit BackdropDone(true);
        QCoreApplication::processEvents();
        window->Hide();
        return;
    }
    CDialog().Display(kInvalidLogin, true, window);
    ++mintFailedAttempts;
    if (mintFailedAttempts > kMostFailedAttempts)
        EndProgramNow(0);
    window->imgTalkingToServer->hide();
    SetFormEnabled(window, true);
    window->txtPassword->setFocus();
}

void CLoginManager::mfrmLogin_CancelClicked()
{
    emit BackdropDone(false);
    mbCancelled = true;
    mfrmLogin->Hide();
}

void CLoginManager::mfrmLogin_DoSignup()
{
    mbDoSignup = true;
    gbSignUpActive = true;
    mfrmLogin->Hide();
    emit SignUpChosen();
}
