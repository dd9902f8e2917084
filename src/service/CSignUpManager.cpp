#include "service/CSignUpManager.h"

#include "core/StartupParts.h"
#include "core/seams.h"
#include "service/PendingSignUp.h"
#include "service/frmCheckPhoneEnabled.h"
#include "service/frmSignup1.h"
#include "service/frmSignup2.h"

#include <QWidget>

namespace {
// The program's one sign-up road, made on first use; a new customer lands on the main window.
CSignUpManager& SignUpRoad()
{
    static CSignUpManager* road = [] {
        auto* made = new CSignUpManager;
        QObject::connect(made, &CSignUpManager::SignedUp, made, [] {
            if (QWidget* main = seams().mainWindow ? seams().mainWindow() : nullptr)
                main->show();
        });
        return made;
    }();
    return *road;
}
}  // namespace

void RegisterSignUp()
{
    startupParts().showPhoneCheck = [] { SignUpRoad().BeginSignUp(); };
    startupParts().confirmPendingSignUp = [] {
        switch (ConfirmPendingSignUp()) {
        case PendingSignUpOutcome::Confirmed:
            return PendingSignUp::Confirmed;
        case PendingSignUpOutcome::GivenUp:
            return PendingSignUp::GivenUp;
        case PendingSignUpOutcome::Unusable:
            break;
        }
        return PendingSignUp::ValuesFailed;
    };
}

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
