#include "shell/frmIntro.h"

#include "core/MainWindow.h"
#include "core/modCommon.h"
#include "core/seams.h"
#include "shell/SubMain.h"
#include "shell/frmTitle.h"
#include "shell/modShutdown.h"
#include "skin/CPictureButton.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/SkinStyle.h"

#include <QPointer>

namespace {
QPointer<frmIntro> gIntro;
}  // namespace

frmIntro::frmIntro()
    : CSkinWindow(QStringLiteral("frmIntro"))
{
}

void frmIntro::Form_Load()
{
    SkinWindowDesc desc;
    desc.size = QSize(480, 340);
    desc.heading = QStringLiteral("Welcome to Quillotone!");
    desc.body = QStringLiteral("Turn the music you own into ringtones and send them straight to your phone. "
                               "New here? Sign up in a minute. Already a member? Sign in.");
    desc.steps = {QStringLiteral("Pick a song"), QStringLiteral("Mark your part"),
                  QStringLiteral("Send to your phone")};
    desc.buttons = {{QStringLiteral("imgOK"), QStringLiteral("Sign me up")},
                    {QStringLiteral("imgSignIn"), QStringLiteral("Sign in"), ButtonLook::Secondary},
                    {QStringLiteral("imgClose"), QString(), ButtonLook::Round, skin::CloseMarkRect(desc.size.width())}};
    Build(desc);
    connect(Button(QStringLiteral("imgClose")), &CPictureButton::Released, this, &frmIntro::imgClose_Released);
    connect(Button(QStringLiteral("imgOK")), &CPictureButton::Released, this, &frmIntro::imgOK_Released);
    connect(Button(QStringLiteral("imgSignIn")), &CPictureButton::Released, this, &frmIntro::imgSignIn_Released);

    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
    CenterOnScreen(this);
}

void frmIntro::imgClose_Released()
{
    // Leaving from the intro ends at once: no balloon, no process sweep.
    if (ConfirmExit())
        EndProgramNow(0);
}

void frmIntro::imgOK_Released()
{
    const auto& showPhoneCheck = startRoads().showPhoneCheck;
    if (!showPhoneCheck)
        return;
    showPhoneCheck();
    Hide();
}

void frmIntro::imgSignIn_Released()
{
    SetFormEnabled(this, false);
    QWidget* main = MainWindow();
    Hide();
    SetMousePointer(vbDefault);

    const LoginResult result = startRoads().login(QString());
    if (result.LoggedIn) {
        // frmTitle is not shown on this road and gbSignUpActive stays set for
        // the run: both follow from the road and are kept.
        if (main)
            main->show();
        Unload();
        SaveAppSetting(QStringLiteral("DID"), QStringLiteral("1"), kSettings);
    } else {
        SetFormEnabled(this, true);
        Show(false);
    }
}

frmIntro& IntroWindow()
{
    if (!gIntro)
        gIntro = new frmIntro;
    return *gIntro;
}

void DropStartupWindows()
{
    delete gIntro;
    DropSignUpRoad();
    DropTitleWindow();
}
