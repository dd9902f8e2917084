#include "service/CSignUpManager.h"

#include "core/seams.h"
#include "service/frmCheckPhoneEnabled.h"
#include "service/frmSignup1.h"
#include "service/frmSignup2.h"
#include "skin/frmMessage.h"

CSignUpManager::CSignUpManager(LogIn logIn)
    : mLogIn(std::move(logIn)),
      mfrmCheckPhoneEnabled(std::make_unique<frmCheckPhoneEnabled>(*this)),
      mfrmSignup2(std::make_unique<frmSignup2>(*this)),
      mfrmSignup1(std::make_unique<frmSignup1>(*this))
{
}

CSignUpManager::~CSignUpManager() = default;

void CSignUpManager::ShowPhoneCheck()
{
    mfrmCheckPhoneEnabled->Show(false);
}

frmCheckPhoneEnabled& CSignUpManager::PhoneCheck()
{
    return *mfrmCheckPhoneEnabled;
}

frmSignup2& CSignUpManager::PhoneDetails()
{
    return *mfrmSignup2;
}

frmSignup1& CSignUpManager::PersonalDetails()
{
    return *mfrmSignup1;
}

void CSignUpManager::ShowPersonalDetails()
{
    mfrmSignup1->Unload();
    mfrmSignup1->Load();
    mfrmSignup1->Show(false);
}

void CSignUpManager::LeaveIfConfirmed()
{
    if (ShowMessageWindow(QStringLiteral("frmConfirmExit")) != QLatin1String("Q"))
        EndProgramNow(0);
}
