#include "skin/frmGenericOKDialog.h"

#include "core/modCommon.h"
#include "skin/CClickLabel.h"
#include "skin/SkinStyle.h"

#include <QCursor>
#include <QPushButton>
#include <QTimer>

namespace {
const QSize kSize(420, 240);
const QRect kOK(150, 182, 120, 42);
}  // namespace

frmGenericOKDialog::frmGenericOKDialog()
    : CSkinWindow(QStringLiteral("frmGenericOKDialog"))
{
}

void frmGenericOKDialog::Form_Load()
{
    SkinWindowDesc desc;
    desc.name = objectName();
    desc.size = kSize;
    // The message fills the body down to the button; a notice has the button hidden.
    desc.labels.append({QStringLiteral("lblMessage"), QRect(28, 90, kSize.width() - 56, 84), LabelKind::Text, {},
                        10.5, false, int(Qt::AlignCenter)});
    Build(desc);

    const SkinButton ok{QStringLiteral("picOK"), QStringLiteral("OK"), ButtonLook::Primary, kOK};
    auto* picOK = new QLabel(this);
    picOK->setObjectName(QStringLiteral("picOK"));
    picOK->setPixmap(skin::PaintButton(ok, skin::ButtonState::Rest));
    picOK->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto* picOKOver = new CClickLabel(QStringLiteral("picOKOver"), this);
    picOKOver->setPixmap(skin::PaintButton(ok, skin::ButtonState::Over));
    auto* picHover = new QLabel(this);
    picHover->setObjectName(QStringLiteral("picHover"));
    picHover->setPixmap(skin::PaintButton(ok, skin::ButtonState::Clicked));
    picHover->setAttribute(Qt::WA_TransparentForMouseEvents);
    // The two hover pictures stand exactly on picOK.
    for (QLabel* picture : {static_cast<QLabel*>(picOK), static_cast<QLabel*>(picOKOver), picHover})
        picture->setGeometry(kOK);
    picOKOver->hide();
    picHover->hide();

    connect(picOKOver, &CClickLabel::MouseDown, this, &frmGenericOKDialog::picOKOver_MouseDown);
    connect(picOKOver, &CClickLabel::MouseUp, this, &CSkinWindow::Hide);
    connect(picOKOver, &CClickLabel::Click, this, &CSkinWindow::Hide);

    // A plain button off the face; a click on it closes the window too.
    auto* command1 = new QPushButton(this);
    command1->setObjectName(QStringLiteral("Command1"));
    command1->setGeometry(0, 0, 0, 0);
    command1->setFocusPolicy(Qt::NoFocus);
    connect(command1, &QPushButton::clicked, this, &CSkinWindow::Hide);

    auto* timer1 = new QTimer(this);
    timer1->setObjectName(QStringLiteral("Timer1"));
    timer1->setInterval(50);
    connect(timer1, &QTimer::timeout, this, &frmGenericOKDialog::Timer1_Timer);
    timer1->start();

    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
}

void frmGenericOKDialog::Timer1_Timer()
{
    QLabel* picOK = Label(QStringLiteral("picOK"));
    QLabel* picOKOver = Label(QStringLiteral("picOKOver"));
    if (!picOK || !picOKOver)
        return;
    const QPoint at = QCursor::pos() - pos();
    const QRect r = picOK->geometry();
    const bool inside = at.x() > r.left() && at.x() < r.left() + r.width() && at.y() > r.top() &&
                        at.y() < r.top() + r.height();
    picOKOver->setVisible(inside);
}

void frmGenericOKDialog::picOKOver_MouseDown()
{
    if (QLabel* picHover = Label(QStringLiteral("picHover")))
        picHover->show();
}

void frmGenericOKDialog::Form_KeyDown(int key)
{
    if (key == Qt::Key_Return || key == Qt::Key_Escape)
        Hide();
}
