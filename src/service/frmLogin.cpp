#include "service/frmLogin.h"

#include "core/modCommon.h"
#include "core/seams.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

namespace {
QLabel* Link(const QString& name, const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setObjectName(name);
    label->setCursor(Qt::PointingHandCursor);
    label->installEventFilter(parent);
    return label;
}
}  // namespace

frmLogin::frmLogin(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmLogin"));
    setWindowTitle(QStringLiteral("Quillo Tone - Sign in"));
    txtMobileNumber = new QLineEdit(this);
    txtMobileNumber->setObjectName(QStringLiteral("txtMobileNumber"));
    txtMobileNumber->installEventFilter(this);
    txtPassword = new QLineEdit(this);
    txtPassword->setObjectName(QStringLiteral("txtPassword"));
    txtPassword->setEchoMode(QLineEdit::Password);
    txtPassword->installEventFilter(this);
    imgSignIn = new QPushButton(QStringLiteral("Sign in"), this);
    imgSignIn->setObjectName(QStringLiteral("imgSignIn"));
    imgSignIn->setAutoDefault(false);
    imgCancel = new QPushButton(QStringLiteral("Cancel"), this);
    imgCancel->setObjectName(QStringLiteral("imgCancel"));
    imgCancel->setAutoDefault(false);
    lblSignUp1 = Link(QStringLiteral("lblSignUp1"), QStringLiteral("New to Quillo Tone?"), this);
    lblSignUp2 = Link(QStringLiteral("lblSignUp2"), QStringLiteral("<u>Sign up here</u>"), this);
    lblURL = Link(QStringLiteral("lblURL"), QStringLiteral("<u>Forgotten your password?</u>"), this);
    imgTalkingToServer = new QLabel(QStringLiteral("Talking to the Quillo Tone server..."), this);
    imgTalkingToServer->setObjectName(QStringLiteral("imgTalkingToServer"));
    imgTalkingToServer->hide();
    Timer1 = new QTimer(this);
    Timer1->setObjectName(QStringLiteral("Timer1"));
    Timer1->setInterval(100);

    auto* grid = new QGridLayout(this);
    grid->addWidget(new QLabel(QStringLiteral("Mobile number"), this), 0, 0);
    grid->addWidget(txtMobileNumber, 0, 1, 1, 2);
    grid->addWidget(new QLabel(QStringLiteral("Password"), this), 1, 0);
    grid->addWidget(txtPassword, 1, 1, 1, 2);
    grid->addWidget(lblURL, 2, 1, 1, 2);
    grid->addWidget(imgSignIn, 3, 1);
    grid->addWidget(imgCancel, 3, 2);
    grid->addWidget(lblSignUp1, 4, 0);
    grid->addWidget(lblSignUp2, 4, 1);
    grid->addWidget(imgTalkingToServer, 5, 0, 1, 3);

    // Buttons act on release.
    connect(imgSignIn, &QPushButton::clicked, this, [this] { Run([this] { emit OKClicked(); }); });
    connect(imgCancel, &QPushButton::clicked, this, [this] { Run([this] { emit CancelClicked(); }); });
    connect(Timer1, &QTimer::timeout, this, &frmLogin::Timer1_Timer);
    Timer1->start();
}

template <class Handler>
void frmLogin::Run(Handler&& handler)
{
    try {
        handler();
    } catch (const ProgramEnded&) {
        hide();
    }
}

void frmLogin::Show()
{
    exec();
}

void frmLogin::Timer1_Timer()
{
    txtPassword->setFocus();
    Timer1->stop();
}

void frmLogin::lblURL_Click()
{
    OpenInBrowser(seams().serviceBaseUrl + QStringLiteral("password.asp"));
}

void frmLogin::reject()
{
    // Esc anywhere in the window.
    Run([] { EndProgramNow(0); });
}

void frmLogin::closeEvent(QCloseEvent* event)
{
    event->ignore();
}

bool frmLogin::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonRelease) {
        if (watched == lblSignUp1 || watched == lblSignUp2) {
            Run([this] { emit DoSignup(); });
            return true;
        }
        if (watched == lblURL) {
            lblURL_Click();
            return true;
        }
    }
    if (event->type() != QEvent::KeyPress)
        return QDialog::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    if (watched == txtPassword && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter)) {
        imgSignIn->click();
        return true;
    }
    if (watched == txtMobileNumber && key->key() != Qt::Key_Backspace && key->key() != Qt::Key_Escape &&
        !key->text().isEmpty()) {
        // Digits only; every other character is swallowed.
        const QChar c = key->text().front();
        return !(c >= QLatin1Char('0') && c <= QLatin1Char('9'));
    }
    return QDialog::eventFilter(watched, event);
}
