#include "service/frmLogin.h"

#include "core/modCommon.h"
#include "core/seams.h"
#include "skin/CClickLabel.h"
#include "skin/CPictureButton.h"
#include "wire/Pages.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>

frmLogin::frmLogin() : CSkinWindow(QStringLiteral("frmLogin")) {}

void frmLogin::Form_Load()
{
    SkinWindowDesc desc;
    desc.name = QStringLiteral("frmLogin");
    desc.size = QSize(420, 330);
    desc.heading = QStringLiteral("Sign in to Quillotone");
    desc.bodyRect = QRect(28, 80, 364, 30);
    desc.buttons = {{QStringLiteral("imgSignIn"), QStringLiteral("Sign in")},
                    {QStringLiteral("imgCancel"), QStringLiteral("Cancel"), ButtonLook::Secondary}};
    desc.labels = {
        {QStringLiteral("lblMobile"), QRect(28, 122, 120, 24), LabelKind::Text, QStringLiteral("Mobile number"), 10,
         false, int(Qt::AlignLeft | Qt::AlignVCenter)},
        {QStringLiteral("lblPassword"), QRect(28, 158, 120, 24), LabelKind::Text, QStringLiteral("Password"), 10,
         false, int(Qt::AlignLeft | Qt::AlignVCenter)},
        {QStringLiteral("lblURL"), QRect(150, 188, 242, 20), LabelKind::Link, QStringLiteral("Forgotten your password?"),
         9, false, int(Qt::AlignLeft | Qt::AlignVCenter)},
        {QStringLiteral("imgTalkingToServer"), QRect(28, 212, 364, 20), LabelKind::Text,
         QStringLiteral("Talking to the Quillotone server..."), 9, true},
        {QStringLiteral("lblSignUp1"), QRect(28, 236, 180, 20), LabelKind::Link, QStringLiteral("New to Quillotone?"),
         9.5, false, int(Qt::AlignRight | Qt::AlignVCenter)},
        {QStringLiteral("lblSignUp2"), QRect(214, 236, 178, 20), LabelKind::Link, QStringLiteral("Sign up here"), 9.5,
         true, int(Qt::AlignLeft | Qt::AlignVCenter)},
    };
    desc.textBoxes = {{QStringLiteral("txtMobileNumber"), QRect(150, 120, 242, 28)},
                      {QStringLiteral("txtPassword"), QRect(150, 156, 242, 28)}};
    Build(desc);

    txtMobileNumber = findChild<QLineEdit*>(QStringLiteral("txtMobileNumber"));
    txtPassword = findChild<QLineEdit*>(QStringLiteral("txtPassword"));
    txtPassword->setEchoMode(QLineEdit::Password);
    imgSignIn = Button(QStringLiteral("imgSignIn"));
    imgCancel = Button(QStringLiteral("imgCancel"));
    lblSignUp1 = Label(QStringLiteral("lblSignUp1"));
    lblSignUp2 = Label(QStringLiteral("lblSignUp2"));
    lblURL = Label(QStringLiteral("lblURL"));
    imgTalkingToServer = Label(QStringLiteral("imgTalkingToServer"));
    imgTalkingToServer->hide();
    txtMobileNumber->installEventFilter(this);
    txtPassword->installEventFilter(this);

    connect(imgSignIn, &CPictureButton::Released, this, [this] { Run([this] { emit OKClicked(); }); });
    connect(imgCancel, &CPictureButton::Released, this, [this] { Run([this] { emit CancelClicked(); }); });
    for (QLabel* signUp : {lblSignUp1, lblSignUp2})
        connect(static_cast<CClickLabel*>(signUp), &CClickLabel::Click, this, [this] { Run([this] { emit DoSignup(); }); });
    connect(static_cast<CClickLabel*>(lblURL), &CClickLabel::Click, this, &frmLogin::lblURL_Click);

    Timer1 = new QTimer(this);
    Timer1->setObjectName(QStringLiteral("Timer1"));
    Timer1->setInterval(100);
    connect(Timer1, &QTimer::timeout, this, &frmLogin::Timer1_Timer);
    Timer1->start();

    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
}

void frmLogin::Timer1_Timer()
{
    // The first empty box: with a remembered number, the password.
    (txtMobileNumber->text().isEmpty() ? txtMobileNumber : txtPassword)->setFocus();
    Timer1->stop();
}

void frmLogin::lblURL_Click()
{
    OpenInBrowser(seams().serviceBaseUrl + QLatin1String(wire::kPassword));
}

void frmLogin::Form_KeyDown(int key)
{
    if (key == Qt::Key_Escape)
        Run([] { EndProgramNow(0); });
}

bool frmLogin::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return CSkinWindow::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    if (watched == txtPassword && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter)) {
        // Enter acts as a release on imgSignIn.
        if (imgSignIn->isEnabled())
            emit imgSignIn->Released();
        return true;
    }
    static const QList<int> kPassed = {Qt::Key_Backspace, Qt::Key_Escape, Qt::Key_Tab, Qt::Key_Backtab};
    if (watched == txtMobileNumber && !kPassed.contains(key->key()) && !key->text().isEmpty()) {
        // Digits only; every other character is swallowed. Tab moves on as everywhere.
        const QChar c = key->text().front();
        return !(c >= QLatin1Char('0') && c <= QLatin1Char('9'));
    }
    return CSkinWindow::eventFilter(watched, event);
}
