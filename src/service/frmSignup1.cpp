#include "service/frmSignup1.h"

#include "core/CError.h"
#include "core/MsgBox.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modEncryption.h"
#include "service/CActivationCode.h"
#include "service/CHTTPCall.h"
#include "service/CSignUpManager.h"
#include "service/PendingSignUp.h"
#include "service/frmSMSConfirmation.h"
#include "service/frmSignup2.h"
#include "skin/CClickLabel.h"
#include "skin/CDialog.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/CPictureButton.h"
#include "skin/SkinStyle.h"
#include "skin/frmMessage.h"
#include "wire/Windows1252.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <algorithm>
#include <optional>

namespace {
constexpr int kTriesAtSignUp = 5;
constexpr int kShortestPassword = 6;

// The login sends the password as it stands in its query, where these cut or
// change it (and "'" is taken out of every query); a character without a byte
// in the wire's code page cannot travel at all. A password holding one could
// be signed up but never logged in with.
bool loginCarries(const QString& password)
{
    static const QString kCut = QStringLiteral("&=%+#?' ");
    return std::all_of(password.begin(), password.end(), [](QChar c) {
        const char16_t u = c.unicode();
        return u >= 0x20 && u != 0x7F && !kCut.contains(c) && (u < 0x80 || wire::Windows1252Byte(u) != 0);
    });
}

// The fields the form keeps in the settings between tries, by box.
const QList<std::pair<const char*, const char*>> kRemembered = {{"txtFirstName", "FirstName"},
                                                                {"txtLastName", "LastName"},
                                                                {"txtMobileNumber", "PhoneNumber"},
                                                                {"txtAge", "Age"},
                                                                {"txtEmailAddress", "EmailAddress"}};

struct Provider {
    QString name, prefix;
    int least = 0, greatest = 0;
};

// The row of the chosen network in gstrProviders; none when no network is
// chosen or its row does not read, and then the number tests are passed over.
std::optional<Provider> ChosenProvider(const QComboBox* networks)
{
    const qsizetype at = qsizetype(networks->currentIndex()) * 5;
    if (networks->currentIndex() < 0 || at + 4 >= gstrProviders.size())
        return std::nullopt;
    try {
        return Provider{networks->currentText(), gstrProviders[at + 2], TextToInt32(gstrProviders[at + 3]),
                        TextToInt32(gstrProviders[at + 4])};
    } catch (const CError&) {
        return std::nullopt;
    }
}

// A tick: a box, its caption that turns it on, and the tick itself, which
// turns it off and is on while it is visible.
CClickLabel* MakeTick(QWidget* window, const QString& caption, const QString& captionName,
                      const QString& tickName, QPoint at, int width)
{
    auto* box = new QLabel(window);
    box->setGeometry(QRect(at, QSize(20, 20)));
    box->setStyleSheet(QStringLiteral("border: 2px solid #8C74E0; border-radius: 4px; background: white;"));
    box->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto* label = new CClickLabel(captionName, window, CClickLabel::Link);
    label->setGeometry(QRect(at, QSize(width, 20)));
    label->setIndent(28);
    label->setText(caption);
    label->setFont(skin::Font(10));
    auto* tick = new CClickLabel(tickName, window, CClickLabel::Link);
    tick->setGeometry(QRect(at, QSize(20, 20)));
    tick->setAlignment(Qt::AlignCenter);
    tick->setText(QStringLiteral("\u2714"));
    tick->setFont(skin::Font(11, true));
    tick->hide();
    QObject::connect(tick, &CClickLabel::Click, tick, &QWidget::hide);
    return label;
}

void SetTick(CClickLabel* tick, bool on)
{
    tick->setVisible(on);
}

bool TickOn(const CClickLabel* tick)
{
    return !tick->isHidden();
}
}  // namespace

frmSignup1::frmSignup1(CSignUpManager& road) : CSkinWindow(QStringLiteral("frmSignup1")), mRoad(road) {}

void frmSignup1::Form_Load()
{
    SkinWindowDesc desc;
    desc.name = objectName();
    desc.size = QSize(520, 512);
    desc.heading = QStringLiteral("A little about you");
    desc.body = QStringLiteral("Just a few details and your first tones are on their way.");
    desc.bodyRect = QRect(28, 78, 464, 48);
    desc.closeMark = true;
    desc.minimizeMark = true;
    desc.talkingToServer = true;
    desc.buttons = {{QStringLiteral("imgBack"), QStringLiteral("Back"), ButtonLook::Secondary},
                    {QStringLiteral("imgSend"), QStringLiteral("Sign me up")}};
    struct Field {
        const char* name;
        const char* caption;
        int column, row;
        bool digits;
    };
    const Field fields[] = {{"txtFirstName", "First name", 0, 0, false},
                            {"txtLastName", "Last name", 1, 0, false},
                            {"txtMobileNumber", "Mobile number", 0, 1, true},
                            {"txtAge", "Age", 1, 1, true},
                            {"txtPassword", "Password", 0, 2, false},
                            {"txtConfirmPassword", "Confirm password", 1, 2, false},
                            {"txtEmailAddress", "Email address", 0, 3, false}};
    for (const Field& f : fields) {
        const int x = 28 + f.column * 244;
        const int y = 132 + f.row * 54;
        const int width = f.row == 3 ? 464 : 220;
        desc.labels.append({QStringLiteral("lbl") + QString::fromLatin1(f.name).mid(3), QRect(x, y, width, 18),
                            LabelKind::Text, QString::fromLatin1(f.caption), 9.5, false,
                            int(Qt::AlignLeft | Qt::AlignVCenter)});
        desc.textBoxes.append({QString::fromLatin1(f.name), QRect(x, y + 20, width, 28), false, false, f.digits});
    }
    desc.labels.append({QStringLiteral("lblGender"), QRect(28, 354, 100, 20), LabelKind::Text,
                        QStringLiteral("I'm a"), 10, false, int(Qt::AlignLeft | Qt::AlignVCenter)});
    Build(desc);

    txtFirstName = findChild<QLineEdit*>(QStringLiteral("txtFirstName"));
    txtLastName = findChild<QLineEdit*>(QStringLiteral("txtLastName"));
    txtMobileNumber = findChild<QLineEdit*>(QStringLiteral("txtMobileNumber"));
    txtAge = findChild<QLineEdit*>(QStringLiteral("txtAge"));
    txtPassword = findChild<QLineEdit*>(QStringLiteral("txtPassword"));
    txtConfirmPassword = findChild<QLineEdit*>(QStringLiteral("txtConfirmPassword"));
    txtEmailAddress = findChild<QLineEdit*>(QStringLiteral("txtEmailAddress"));
    for (QLineEdit* secret : {txtPassword, txtConfirmPassword})
        secret->setEchoMode(QLineEdit::Password);
    for (QLineEdit* box : findChildren<QLineEdit*>())
        SelectAllOnFocus(box);

    lblGuy = MakeTick(this, QStringLiteral("guy"), QStringLiteral("lblGuy"), QStringLiteral("imgGuyChecked"),
                      QPoint(90, 354), 90);
    lblGal = MakeTick(this, QStringLiteral("gal"), QStringLiteral("lblGal"), QStringLiteral("imgGalChecked"),
                      QPoint(190, 354), 90);
    lblUpToDate = MakeTick(this, QStringLiteral("Keep me up to date with new features and offers"),
                           QStringLiteral("lblUpToDate"), QStringLiteral("imgUpToDateChecked"), QPoint(28, 386), 464);
    imgGuyChecked = findChild<CClickLabel*>(QStringLiteral("imgGuyChecked"));
    imgGalChecked = findChild<CClickLabel*>(QStringLiteral("imgGalChecked"));
    imgUpToDateChecked = findChild<CClickLabel*>(QStringLiteral("imgUpToDateChecked"));
    imgSend = Button(QStringLiteral("imgSend"));
    imgBack = Button(QStringLiteral("imgBack"));
    picTalkingToServer = Label(QStringLiteral("imgTalkingToServer"));
    picTalkingToServer->setObjectName(QStringLiteral("picTalkingToServer"));

    connect(lblGuy, &CClickLabel::Click, this, [this] {
        SetTick(imgGalChecked, false);
        SetTick(imgGuyChecked, true);
    });
    connect(lblGal, &CClickLabel::Click, this, [this] {
        SetTick(imgGuyChecked, false);
        SetTick(imgGalChecked, true);
    });
    connect(lblUpToDate, &CClickLabel::Click, this, [this] { SetTick(imgUpToDateChecked, true); });
    connect(imgSend, &CPictureButton::Released, this, [this] { Run([this] { imgSend_Released(); }); });
    connect(imgBack, &CPictureButton::Released, this, [this] {
        imgBack->ShowRest();
        mRoad.PhoneDetails().Show(false);
        Hide();
    });
    connect(static_cast<CClickLabel*>(Label(QStringLiteral("lblClose"))), &CClickLabel::Click, this,
            [this] { Run([this] { lblClose_Click(); }); });
    connect(static_cast<CClickLabel*>(Label(QStringLiteral("lblMinimize"))), &CClickLabel::Click, this,
            &QWidget::showMinimized);

    // The passwords are never restored.
    for (const auto& [box, key] : kRemembered)
        findChild<QLineEdit*>(QString::fromLatin1(box))->setText(GetAppSetting(QString::fromLatin1(key), kSettings));

    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
    CenterOnScreen(this);
}

bool frmSignup1::ValidateForm()
{
    for (QLineEdit* box : findChildren<QLineEdit*>())
        box->setText(box->text().trimmed());
    const QString mobile = txtMobileNumber->text();
    const QString password = txtPassword->text();
    const QString email = txtEmailAddress->text();

    struct Check {
        bool fails;
        QString message;
        QWidget* focus;  // none: the focus stays
    };
    QList<Check> checks = {
        {txtFirstName->text().isEmpty(), QStringLiteral("Please enter your first name."), txtFirstName},
        {txtLastName->text().isEmpty(), QStringLiteral("Please enter your last name."), txtLastName},
        {mobile.isEmpty(), QStringLiteral("Please enter your mobile phone number."), txtMobileNumber},
    };
    if (const auto provider = ChosenProvider(mRoad.PhoneDetails().cmbNetworkOperator)) {
        const QString valid = QStringLiteral("Please enter a valid ") + provider->name + QStringLiteral(" phone number (");
        const QString least = QString::number(provider->least);
        const QString greatest = QString::number(provider->greatest);
        checks.append({!mobile.startsWith(provider->prefix),
                       valid + QStringLiteral("should begin with ") + provider->prefix + QStringLiteral(")."),
                       txtMobileNumber});
        checks.append({mobile.size() < provider->least || mobile.size() > provider->greatest,
                       provider->least != provider->greatest
                           ? valid + QStringLiteral("between ") + least + QStringLiteral(" and ") + greatest +
                                 QStringLiteral(" numbers.).")
                           : valid + least + QStringLiteral(" numbers)."),
                       txtMobileNumber});
    }
    checks += {
        {txtAge->text().isEmpty(), QStringLiteral("Please enter your age."), txtMobileNumber},
        {password.isEmpty(), QStringLiteral("Please enter your password."), txtPassword},
        {txtConfirmPassword->text().isEmpty(), QStringLiteral("Please confirm your password."), txtConfirmPassword},
        {password.size() < kShortestPassword, QStringLiteral("Your password should be at least 6 characters long."),
         txtPassword},
        {!loginCarries(password), kPasswordCharacters, txtPassword},
        {password != txtConfirmPassword->text(), QStringLiteral("Passwords do not match. Please try again."),
         txtPassword},
        {email.isEmpty() || !email.contains(QLatin1Char('@')) || !email.contains(QLatin1Char('.')),
         QStringLiteral("Please enter a valid email address. (An invalid email address will prevent usage)."),
         txtPassword},
        {!TickOn(imgGuyChecked) && !TickOn(imgGalChecked), QStringLiteral("Are you a guy or a gal?"), nullptr},
    };
    for (const Check& check : checks) {
        if (!check.fails)
            continue;
        CDialog().Display(check.message, true, this);
        if (check.focus)
            check.focus->setFocus();
        return false;
    }
    return true;
}

void frmSignup1::imgSend_Released()
{
    imgSend->ShowRest();
    QCoreApplication::processEvents();
    if (!ValidateForm())
        return;
    SetFormEnabled(this, false);
    SetMousePointer(vbHourglass);
    QCoreApplication::processEvents();
    picTalkingToServer->show();
    QCoreApplication::processEvents();

    QString query = QStringLiteral("MobileNumber=") + txtMobileNumber->text();
    const QString reply = CHTTPCall().GetPage(ptLookupMobileNumber, query, true, kServiceTimeOut);
    if (reply == QLatin1String("1")) {
        CDialog().Display(QStringLiteral("The mobile number you have selected is already in use. Please try again."),
                          true, this);
    } else if (reply != kServerUnreachable) {
        // An empty reply counts the number as free.
        SetMousePointer(vbHourglass);
        QCoreApplication::processEvents();
        SaveFormFields();
        CreateSubmit();
        return;
    }
    StopTalking();
}

void frmSignup1::StopTalking()
{
    SetFormEnabled(this, true);
    SetMousePointer(vbDefault);
    picTalkingToServer->hide();
}

void frmSignup1::SaveFormFields()
{
    for (const auto& [box, key] : kRemembered)
        SaveAppSetting(QString::fromLatin1(key), findChild<QLineEdit*>(QString::fromLatin1(box))->text(), kSettings);
    SaveAppSetting(QStringLiteral("Password"), Encrypt(txtPassword->text(), gstrMachineKey), kSettings);
}

void frmSignup1::SaveConfirmationState(const QString& code, const QString& customerId)
{
    SaveAppSetting(QStringLiteral("t1nuc"), Encrypt(code, gstrMachineKey), kSettings);
    SaveAppSetting(QStringLiteral("t2nuc"), Encrypt(customerId, gstrMachineKey), kSettings);
}

void frmSignup1::CreateSubmit()
{
    SetFormEnabled(this, false);
    picTalkingToServer->show();
    QCoreApplication::processEvents();

    QString reply;
    try {
        CActivationCode check;
        if (!check.DisplayDialog()) {
            // Left at the picture: back to the form with nothing sent.
            SetFormEnabled(this, true);
            picTalkingToServer->hide();
            return;
        }
        const frmSignup2& phone = mRoad.PhoneDetails();
        const auto id = [](const QComboBox* list) { return QString::number(list->currentData().toInt()); };
        QString query =
            QStringLiteral("FirstName=") + EncodeForUrl(txtFirstName->text()) + QStringLiteral("&LastName=") +
            EncodeForUrl(txtLastName->text()) + QStringLiteral("&gender=") +
            (TickOn(imgGalChecked) ? QStringLiteral("female") : QStringLiteral("male")) +
            QStringLiteral("&MobileNumber=") + txtMobileNumber->text() + QStringLiteral("&Email=") +
            EncodeForUrl(txtEmailAddress->text()) + QStringLiteral("&Password=") + EncodeForUrl(txtPassword->text()) +
            QStringLiteral("&Age=") + txtAge->text() + QStringLiteral("&CountryID=") + id(phone.cmbCountry) +
            QStringLiteral("&TerminalVendorID=") + id(phone.cmbPhoneMake) + QStringLiteral("&TerminalTypeID=") +
            id(phone.cmbPhoneModel) + QStringLiteral("&ServiceProviderID=") + id(phone.cmbNetworkOperator) +
            QStringLiteral("&ReceiveMarketing=") + (TickOn(imgUpToDateChecked) ? QStringLiteral("1") : QStringLiteral("0")) +
            QStringLiteral("&PartnerID=") + GetAppSetting(QStringLiteral("PartnerID"), kSettings);
        reply = CHTTPCall().GetPage(ptAddCustomer, query, true, kServiceTimeOut);
        if (!reply.startsWith(QLatin1Char('1'))) {
            // The settings stay, so the next try finds the form filled.
            CDialog().Display(QStringLiteral("Problem talking to Quillo Tone. Please contact technical support."), true,
                              this);
            SetFormEnabled(this, true);
            picTalkingToServer->hide();
            return;
        }
    } catch (const CError& e) {
        MsgBox(QStringLiteral("Error in CreateSubmit: ") + e.Description());
        return;
    }

    const QStringList fields = reply.split(QLatin1Char(','));
    const QString code = fields.value(2);
    const QString customerId = fields.value(1);
    // Four characters pass, and so does a number of any length.
    if (code.size() != 4 && !IsNumeric(code)) {
        MsgBox(QStringLiteral("Internal error - invalid activation code came back. Fatal."), QMessageBox::Information);
        EndProgramNow(0);
    }
    SaveConfirmationState(code, customerId);
    ConfirmMobileNumber(code, customerId);

    ActivateCustomer(customerId, code);
    SaveAppSetting(QStringLiteral("DID"), QStringLiteral("1"), kSettings);
    DeleteAppSetting(QStringLiteral("t1nuc"), kSettings);
    DeleteAppSetting(QStringLiteral("t2nuc"), kSettings);

    Hide();
    if (!mRoad.FirstLogin(txtMobileNumber->text()))
        EndProgramNow(0);
    DeleteAppSetting(QStringLiteral("t1nuc"), kSettings);
    DeleteAppSetting(QStringLiteral("t2nuc"), kSettings);
    emit mRoad.SignedUp();
    SetMousePointer(vbDefault);

    for (const char* key : {"t1nuc", "t2nuc", "EmailAddress", "Name", "Age", "Password", "FirstName", "LastName",
                            "PhoneNumber"})
        DeleteAppSetting(QString::fromLatin1(key), kSettings);
}

void frmSignup1::ConfirmMobileNumber(const QString& code, const QString& customerId)
{
    frmSMSConfirmation sms;
    sms.Load();
    const auto giveUp = [&sms] {
        // The stored code stays, so the next start comes back to the confirmation.
        ShowMessageWindow(QStringLiteral("frmActivationCodeCancelled"));
        sms.Unload();
        SaveAppSetting(QStringLiteral("DID"), QStringLiteral("-1"), kSettings);
        EndProgramNow(0);
    };
    for (int attempts = 0;;) {
        sms.lblPhoneNumber->setText(txtMobileNumber->text());
        SetMousePointer(vbDefault);
        sms.Show(true);
        if (sms.Tag == QLatin1String("Q"))
            giveUp();
        // An empty box is no try here: the state is stored afresh and the window comes again.
        if (sms.txtCode->text().isEmpty()) {
            SaveConfirmationState(code, customerId);
            continue;
        }
        if (sms.txtCode->text() == code)
            break;
        ShowMessageWindow(QStringLiteral("frmInvalidCaptchaCode"));
        if (++attempts == kTriesAtSignUp)
            giveUp();
    }
    sms.Unload();
}

void frmSignup1::lblClose_Click()
{
    mRoad.LeaveIfConfirmed();
}
