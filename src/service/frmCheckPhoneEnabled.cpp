#include "service/frmCheckPhoneEnabled.h"

#include "core/modCommon.h"
#include "core/seams.h"
#include "service/CSignUpManager.h"
#include "service/frmSignup2.h"
#include "skin/CClickLabel.h"
#include "skin/CPictureButton.h"
#include "skin/SkinStyle.h"
#include "skin/frmMessage.h"
#include "wire/Pages.h"

#include <QCoreApplication>

namespace {
const QRect kYesRect(90, 176, 110, 40);
const QRect kNoRect(220, 176, 110, 40);

// A choice: its caption stands in the face, its chosen look in a hidden twin.
CClickLabel* makeChoice(QWidget* window, const QString& name, const QRect& rect)
{
    auto* choice = new CClickLabel(name, window, CClickLabel::Link);
    choice->setGeometry(rect);
    return choice;
}

QLabel* makeChosenPicture(QWidget* window, const QString& name, const QString& caption, const QRect& rect)
{
    auto* picture = new QLabel(window);
    picture->setObjectName(name);
    picture->setGeometry(rect);
    picture->setPixmap(skin::PaintButton({name, caption, ButtonLook::Primary, rect}, skin::ButtonState::Clicked));
    picture->hide();
    return picture;
}
}  // namespace

frmCheckPhoneEnabled::frmCheckPhoneEnabled(CSignUpManager& road)
    : CSkinWindow(QStringLiteral("frmCheckPhoneEnabled")), mRoad(road)
{
}

void frmCheckPhoneEnabled::Form_Load()
{
    SkinWindowDesc desc;
    desc.name = objectName();
    desc.size = QSize(420, 330);
    desc.heading = QStringLiteral("Can your phone take tones?");
    desc.body = QStringLiteral("Your phone needs GPRS and WAP switched on to receive our tones. "
                               "Does your phone have them?");
    desc.bodyRect = QRect(28, 80, 364, 90);
    desc.buttons = {{QStringLiteral("lblYesFace"), QStringLiteral("Yes"), ButtonLook::Secondary, kYesRect},
                    {QStringLiteral("lblNoFace"), QStringLiteral("No"), ButtonLook::Secondary, kNoRect},
                    {QStringLiteral("imgOK"), QStringLiteral("Continue")},
                    {QStringLiteral("Image1"), QString(), ButtonLook::Round, skin::CloseMarkRect(desc.size.width())}};
    desc.labels = {{QStringLiteral("lblClickHere"), QRect(28, 222, 364, 20), LabelKind::Link,
                    QStringLiteral("Not sure? Click here to find out."), 9}};
    desc.talkingToServer = true;
    Build(desc);
    // The Yes and No faces are painted only; the choices lie over them.
    for (const char* face : {"lblYesFace", "lblNoFace"}) {
        CPictureButton* painted = Button(QString::fromLatin1(face));
        painted->OverTwin()->deleteLater();
        painted->ClickedTwin()->deleteLater();
        painted->deleteLater();
        painted->setParent(nullptr);
    }
    imgYesClicked = makeChosenPicture(this, QStringLiteral("imgYesClicked"), QStringLiteral("Yes"), kYesRect);
    imgNoClicked = makeChosenPicture(this, QStringLiteral("imgNoClicked"), QStringLiteral("No"), kNoRect);
    imgYes = makeChoice(this, QStringLiteral("imgYes"), kYesRect);
    imgNo = makeChoice(this, QStringLiteral("imgNo"), kNoRect);
    imgOK = Button(QStringLiteral("imgOK"));
    Image1 = Button(QStringLiteral("Image1"));
    lblClickHere = Label(QStringLiteral("lblClickHere"));
    picTalkingToServer = Label(QStringLiteral("imgTalkingToServer"));
    picTalkingToServer->setObjectName(QStringLiteral("picTalkingToServer"));
    picBlock = new QWidget(this);
    picBlock->setObjectName(QStringLiteral("picBlock"));
    picBlock->hide();

    connect(imgYes, &CClickLabel::Click, this, &frmCheckPhoneEnabled::imgYes_Click);
    connect(imgNo, &CClickLabel::Click, this, &frmCheckPhoneEnabled::imgNo_Click);
    connect(imgOK, &CPictureButton::Released, this, [this] { Run([this] { imgOK_MouseUp(); }); });
    connect(Image1, &CPictureButton::Released, this, [this] { Run([this] { Image1_Click(); }); });
    connect(static_cast<CClickLabel*>(lblClickHere), &CClickLabel::Click, this,
            [] { OpenInBrowser(seams().serviceBaseUrl + QLatin1String(wire::kHelp)); });

    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
    CenterOnScreen(this);
}

void frmCheckPhoneEnabled::imgYes_Click()
{
    imgYes->setPixmap(imgYesClicked->pixmap());
    imgNo->setPixmap(QPixmap());
}

void frmCheckPhoneEnabled::imgNo_Click()
{
    imgNo->setPixmap(imgNoClicked->pixmap());
    imgYes->setPixmap(QPixmap());
}

void frmCheckPhoneEnabled::imgOK_MouseUp()
{
    if (imgYes->pixmap().isNull() && imgNo->pixmap().isNull()) {
        ShowMessageWindow(QStringLiteral("frmTellUsAboutPhone"));
        return;
    }
    if (!imgNo->pixmap().isNull()) {
        // The window stays: the user can answer again.
        ShowMessageWindow(QStringLiteral("frmPhoneNotCapable"));
        return;
    }
    imgOK->hide();
    picBlock->setGeometry(imgOK->geometry());
    picBlock->show();
    picTalkingToServer->show();
    QCoreApplication::processEvents();
    SetFormEnabled(this, false);
    frmSignup2& details = mRoad.PhoneDetails();
    details.Load();
    // When the lists cannot be fetched the user has been told why, and this window stays for another try.
    if (details.LoadLists()) {
        details.Show(false);
        Hide();
    }
    SetFormEnabled(this, true);
    imgOK->show();
    picBlock->hide();
    picTalkingToServer->hide();
}

void frmCheckPhoneEnabled::Image1_Click()
{
    mRoad.LeaveIfConfirmed();
}
