#include "service/CActivationCode.h"

#include "core/modCommon.h"
#include "core/seams.h"
#include "service/CHTTPCall.h"
#include "service/frmActivationCode.h"
#include "skin/frmMessage.h"
#include "wire/Pages.h"

#include <QLabel>
#include <QLineEdit>
#include <QPixmap>

namespace {
constexpr int kCodeLength = 7;
const QString kDone = QStringLiteral("DONE");
}  // namespace

CActivationCode::CActivationCode() = default;
CActivationCode::~CActivationCode() = default;

void CActivationCode::ShowPicture()
{
    mfrm->Image1->setPixmap(QPixmap(mstrImagePath));
}

void CActivationCode::FetchCode()
{
    mstrCode = CreateUniqueName().left(kCodeLength).toUpper();
    CHTTPCall().SendHTTP(seams().serviceBaseUrl + QLatin1String(wire::kCodePicture) + QLatin1Char('?') + mstrCode, true, QString(),
                         mstrImagePath, kServiceTimeOut);
    mfrm->Tag = mstrCode;
    ShowPicture();
}

bool CActivationCode::DisplayDialog()
{
    mstrImagePath = GetTempFolder() + QStringLiteral("qtc.jpg");
    mfrm = std::make_unique<frmActivationCode>();
    connect(mfrm.get(), &frmActivationCode::CodeEntered, this, &CActivationCode::mfrm_CodeEntered);
    mfrm->Load();
    FetchCode();
    mfrm->Tag = mstrCode;
    ShowPicture();
    CenterOnScreen(mfrm.get());
    SetMousePointer(vbDefault);
    mfrm->Show(true);
    const bool passed = mfrm->Tag == kDone;
    mfrm->Unload();
    mfrm.reset();
    return passed;
}

void CActivationCode::mfrm_CodeEntered(const QString&)
{
    // The box, not the event's copy, is compared: it is what the user sees.
    if (mfrm->txtCode->text() == mfrm->Tag) {
        mfrm->Tag = kDone;
        mfrm->Hide();
        return;
    }
    ShowMessageWindow(QStringLiteral("frmInvalidCaptchaCode"));
    SetFormEnabled(mfrm.get(), false);
    FetchCode();
    SetFormEnabled(mfrm.get(), true);
    mfrm->txtCode->clear();
}
