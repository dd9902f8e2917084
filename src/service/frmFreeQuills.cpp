#include "service/frmFreeQuills.h"

#include "core/MsgBox.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "service/CHTTPCall.h"
#include "skin/CClickLabel.h"
#include "skin/CDialog.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/CPictureButton.h"
#include "skin/frmMessage.h"

#include <QLineEdit>
#include <QRegularExpressionValidator>

namespace {
constexpr int kShortestMobile = 8;
const QString kBoth = QStringLiteral("Please specify both a name and mobile number.");

QString Friends(int count)
{
    return QString::number(count) + (count == 1 ? QStringLiteral(" friend") : QStringLiteral(" friends"));
}
}  // namespace

frmFreeQuills::frmFreeQuills() : CSkinWindow(QStringLiteral("frmFreeQuills")) {}

void frmFreeQuills::Form_Load()
{
    SkinWindowDesc desc;
    desc.name = objectName();
    desc.size = QSize(460, 420);
    desc.heading = QStringLiteral("Free quills for friends");
    desc.body = QStringLiteral("Tell up to four friends about Quillotone and earn free tones.");
    desc.bodyRect = QRect(28, 80, 404, 44);
    desc.closeMark = true;
    desc.buttons = {{QStringLiteral("imgReset"), QStringLiteral("Clear"), ButtonLook::Secondary},
                    {QStringLiteral("imgSend"), QStringLiteral("Invite")}};
    desc.labels = {{QStringLiteral("lblNameCaption"), QRect(28, 126, 190, 18), LabelKind::Text,
                    QStringLiteral("First name"), 9.5, false, int(Qt::AlignLeft | Qt::AlignVCenter)},
                   {QStringLiteral("lblMobileCaption"), QRect(232, 126, 200, 18), LabelKind::Text,
                    QStringLiteral("Mobile number"), 9.5, false, int(Qt::AlignLeft | Qt::AlignVCenter)}};
    for (int i = 0; i < kRows; ++i) {
        const int y = 148 + i * 40;
        desc.textBoxes.append({QStringLiteral("txtName%1").arg(i), QRect(28, y, 190, 30)});
        desc.textBoxes.append({QStringLiteral("txtMobile%1").arg(i), QRect(232, y, 200, 30), false, false, true});
    }
    Build(desc);

    for (int i = 0; i < kRows; ++i) {
        txtName[i] = findChild<QLineEdit*>(QStringLiteral("txtName%1").arg(i));
        txtMobile[i] = findChild<QLineEdit*>(QStringLiteral("txtMobile%1").arg(i));
        // "=" and "&" would break the query.
        txtName[i]->setValidator(
            new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[^=&]*")), txtName[i]));
    }
    imgSend = Button(QStringLiteral("imgSend"));
    imgReset = Button(QStringLiteral("imgReset"));
    connect(imgSend, &CPictureButton::Released, this, &frmFreeQuills::imgSend_MouseUp);
    connect(imgReset, &CPictureButton::MouseDown, this, &frmFreeQuills::imgReset_MouseDown);
    auto* close = static_cast<CClickLabel*>(Label(QStringLiteral("lblClose")));
    close->setAttribute(Qt::WA_TranslucentBackground);
    connect(close, &CClickLabel::Click, this, &CSkinWindow::Unload);

    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
    CenterOnMainWindow(this);
}

void frmFreeQuills::imgReset_MouseDown()
{
    for (int i = 0; i < kRows; ++i) {
        txtName[i]->clear();
        txtMobile[i]->clear();
    }
}

QString frmFreeQuills::ReferralQuery() const
{
    QString query = QStringLiteral("refCustomerID=") + gstrCustomerID + QStringLiteral("&");
    for (int i = 0; i < kRows; ++i) {
        if (txtName[i]->text().isEmpty())
            continue;
        const QString n = QString::number(i + 1);
        query += QStringLiteral("FirstName") + n + QStringLiteral("=") + EncodeForUrl(txtName[i]->text()) +
                 QStringLiteral("&MobileNumber") + n + QStringLiteral("=") + EncodeForUrl(txtMobile[i]->text()) +
                 QStringLiteral("&");
    }
    // The service takes referrals only from the customer's own account.
    return query + BuildAccountQuery();
}

QString frmFreeQuills::ReferralSummary(const QString& reply)
{
    // A line break closes each line, so what follows the last one is no friend.
    const QStringList lines = reply.split(QStringLiteral("\r\n"));
    int total = 0;
    int already = 0;
    for (qsizetype i = 0; i + 1 < lines.size(); ++i) {
        ++total;
        if (lines[i].split(QLatin1Char(',')).first() == QLatin1String("0"))
            ++already;
    }
    QString message = QStringLiteral("You have referred ") + Friends(total) + QStringLiteral(". ");
    if (already > 0)
        message += Friends(already) + QStringLiteral(" have already been referred.");
    return message;
}

QString frmFreeQuills::AlreadySignedUpNumber(const QString& reply)
{
    // The number stands in the reply as a word that begins with "+".
    for (const QString& word : reply.split(QLatin1Char(' '))) {
        if (word.startsWith(QLatin1Char('+')))
            return word;
    }
    return {};
}

void frmFreeQuills::imgSend_MouseUp()
{
    bool anyFilled = false;
    for (int i = 0; i < kRows; ++i) {
        txtName[i]->setText(txtName[i]->text().trimmed());
        txtMobile[i]->setText(txtMobile[i]->text().trimmed());
        const QString name = txtName[i]->text();
        const QString mobile = txtMobile[i]->text();
        if (name.isEmpty() != mobile.isEmpty()) {
            CDialog().Display(kBoth, true, nullptr);
            return;
        }
        anyFilled = anyFilled || !name.isEmpty();
        if (!mobile.isEmpty() && (mobile.size() < kShortestMobile || !IsNumeric(mobile))) {
            CDialog().Display(QStringLiteral("Please specify a valid mobile number."), true, nullptr);
            return;
        }
    }
    if (!anyFilled) {
        CDialog().Display(QStringLiteral("Enter at least one friend's name and mobile number!."), true, nullptr);
        return;
    }
    // Without the user's consent nothing is sent, and the window keeps its rows.
    if (ShowMessageWindow(QStringLiteral("frmSMSPermission")) == QLatin1String("Q"))
        return;

    QString query = ReferralQuery();
    const QString reply = CHTTPCall().GetPage(ptReferFriends, query, true, kServiceTimeOut);
    if (reply == kServerUnreachable) {
        MsgBox(QStringLiteral("error"));
        return;
    }
    if (reply.contains(QStringLiteral("No more referrals available"), Qt::CaseInsensitive)) {
        CDialog().Display(QStringLiteral("You have signed up your maximum amount. Enjoy the free quills!"), true, this);
        Unload();
        return;
    }
    if (reply.contains(QStringLiteral("already in system"), Qt::CaseInsensitive)) {
        // The window stays so that the user can correct the row.
        const QString number = AlreadySignedUpNumber(reply);
        if (!number.isEmpty()) {
            CDialog().Display(QStringLiteral("The phone number ") + number +
                                  QStringLiteral(" is already signed up to Quillo Tone!"),
                              true, this);
            return;
        }
    }
    CDialog().Display(ReferralSummary(reply), true, this);
    Unload();
}
