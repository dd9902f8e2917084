#include "service/CSignUpManager.h"

#include "service/frmCheckPhoneEnabled.h"
#include "service/frmSignup1.h"
#include "service/frmSignup2.h"

CSignUpManager::CSignUpManager()
    : mfrmCheckPhoneEnabled(std::make_unique<frmCheckPhoneEnabled>(*this)),
      mfrmSignup2(std::make_unique<frmSignup2>(*this)),
      mfrmSignup1(std::make_unique<frmSignup1>(*this))
{
}

CSignUpManager::~CSignUpManager() = default;

void CSignUpManager::BeginSignUp()
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
