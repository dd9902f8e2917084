#include "service/frmSMSConfirmation.h"

#include "core/modCommon.h"
#include "core/seams.h"
#include "skin/CClickLabel.h"
#include "skin/CPictureButton.h"

#include <QLineEdit>

frmSMSConfirmation::frmSMSConfirmation() : CSkinWindow(QStringLiteral("frmSMSConfirmation")) {}

void frmSMSConfirmation::Form_Load()
{
    SkinWindowDesc desc;
    desc.name = objectName();
    desc.size = QSize(420, 320);
    desc.heading = QStringLiteral("Check your phone");
    desc.body = QStringLiteral("We've texted a four-digit code to");
    desc.bodyRect = QRect(28, 80, 364, 60);
    desc.labels = {
        {QStringLiteral("lblPhoneNumber"), QRect(28, 136, 364, 24), LabelKind::Text, {}, 12, true},
        {QStringLiteral("lblCodePrompt"), QRect(28, 172, 170, 30), LabelKind::Text, QStringLiteral("Your code:"), 10,
         false, int(Qt::AlignRight | Qt::AlignVCenter)},
        {QStringLiteral("lblURL"), QRect(28, 212, 364, 20), LabelKind::Link,
         QStringLiteral("No text message? Visit the Quillotone web site"), 9},
    };
    desc.textBoxes = {{QStringLiteral("txtCode"), QRect(208, 172, 90, 30), false, false, true}};
    desc.buttons = {{QStringLiteral("imgOK"), QStringLiteral("Confirm")},
                    {QStringLiteral("imgCancel"), QStringLiteral("Later"), ButtonLook::Secondary}};
    Build(desc);

    lblPhoneNumber = Label(QStringLiteral("lblPhoneNumber"));
    lblURL = Label(QStringLiteral("lblURL"));
    txtCode = findChild<QLineEdit*>(QStringLiteral("txtCode"));
    txtCode->setText(QStringLiteral("XXXX"));
    SelectAllOnFocus(txtCode);
    imgOK = Button(QStringLiteral("imgOK"));
    imgCancel = Button(QStringLiteral("imgCancel"));

    connect(imgOK, &CPictureButton::Released, this, &CSkinWindow::Hide);
    connect(imgCancel, &CPictureButton::Released, this, &frmSMSConfirmation::imgCancel_Released);
    // Enter in the code acts as a release on imgOK.
    connect(txtCode, &QLineEdit::returnPressed, imgOK, &CPictureButton::Released);
    connect(static_cast<CClickLabel*>(lblURL), &CClickLabel::Click, this,
            [] { OpenInBrowser(seams().serviceBaseUrl); });

    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
    CenterOnScreen(this);
}

void frmSMSConfirmation::imgCancel_Released()
{
    txtCode->clear();
    Tag = QStringLiteral("Q");
    Hide();
}
