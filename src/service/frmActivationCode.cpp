#include "service/frmActivationCode.h"

#include "core/modCommon.h"
#include "skin/CDialog.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/CPictureButton.h"

#include <QLabel>
#include <QLineEdit>

frmActivationCode::frmActivationCode() : CSkinWindow(QStringLiteral("frmActivationCode")) {}

void frmActivationCode::Form_Load()
{
    mbLoaded = false;
    SkinWindowDesc desc;
    desc.name = objectName();
    desc.size = QSize(420, 330);
    desc.heading = QStringLiteral("Are you a person?");
    desc.body = QStringLiteral("Type the code you see in the picture.");
    desc.bodyRect = QRect(28, 80, 364, 56);
    desc.labels = {{QStringLiteral("Image1"), QRect(70, 134, 280, 76), LabelKind::Text}};
    desc.textBoxes = {{QStringLiteral("txtCode"), QRect(110, 220, 200, 30)}};
    desc.buttons = {{QStringLiteral("imgOK"), QStringLiteral("OK")},
                    {QStringLiteral("imgCancel"), QStringLiteral("Cancel"), ButtonLook::Secondary}};
    Build(desc);

    Image1 = Label(QStringLiteral("Image1"));
    Image1->setAlignment(Qt::AlignCenter);
    txtCode = findChild<QLineEdit*>(QStringLiteral("txtCode"));
    txtCode->setText(kEnterCodeHere);
    txtCode->setAlignment(Qt::AlignCenter);
    txtCode->setStyleSheet(txtCode->styleSheet() + QStringLiteral(" border: none;"));
    imgOK = Button(QStringLiteral("imgOK"));
    imgCancel = Button(QStringLiteral("imgCancel"));

    connect(txtCode, &QLineEdit::textChanged, this, &frmActivationCode::txtCode_Change);
    connect(txtCode, &QLineEdit::returnPressed, imgOK, &CPictureButton::Released);
    connect(imgOK, &CPictureButton::Released, this, [this] { Run([this] { imgOK_Released(); }); });
    connect(imgCancel, &CPictureButton::Released, this, &frmActivationCode::imgCancel_Released);

    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
    // Selected whole, so that the first key replaces the placeholder.
    txtCode->setFocus();
    SelectAllText(txtCode);
    CenterOnScreen(this);
    mbLoaded = true;
}

void frmActivationCode::txtCode_Change()
{
    if (!mbLoaded)
        return;
    const QString upper = txtCode->text().toUpper();
    if (upper != txtCode->text())
        txtCode->setText(upper);
    txtCode->setCursorPosition(static_cast<int>(upper.size()));
}

void frmActivationCode::imgOK_Released()
{
    if (txtCode->text() == kEnterCodeHere) {
        CDialog().Display(QStringLiteral("Please enter the code shown above."), true, this);
        return;
    }
    emit CodeEntered(txtCode->text());
    imgOK->ShowRest();
}

void frmActivationCode::imgCancel_Released()
{
    Tag = QStringLiteral("Q");
    Hide();
}
