#include "service/frmSignup2.h"

#include "core/CError.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/numbers.h"
#include "service/CHTTPCall.h"
#include "service/CSignUpManager.h"
#include "service/frmCheckPhoneEnabled.h"
#include "skin/CClickLabel.h"
#include "skin/CDialog.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/CPictureButton.h"
#include "skin/SkinStyle.h"

#include <QComboBox>
#include <QSignalBlocker>

namespace {
// A list page's reply; "err" or nothing means the list did not come.
bool FetchList(int32_t pageType, const QString& params, QString& reply)
{
    QString query = params;
    reply = CHTTPCall().GetPage(pageType, query, true, kServiceTimeOut);
    return reply != kServerUnreachable && !reply.isEmpty();
}

// A new entry; a list that had no selection keeps none.
void AddEntry(QComboBox* list, const QString& text)
{
    const QSignalBlocker quiet(list);
    const int selected = list->currentIndex();
    list->addItem(text);
    list->setCurrentIndex(selected);
}

void SetItemData(QComboBox* list, int32_t data)
{
    list->setItemData(list->count() - 1, data);
}

QString SelectedId(const QComboBox* list)
{
    return QString::number(list->currentData().toInt());
}

// Runs a loading routine; any failure leaves it with false and no message of its own.
template <class Routine>
bool Loaded(Routine&& routine)
{
    try {
        return routine();
    } catch (const CError&) {
        return false;
    }
}
}  // namespace

void AddPairs(QComboBox* list, const QString& reply, const QString& chosen)
{
    const QStringList fields = reply.split(QLatin1Char(','));
    for (qsizetype i = 0; i <= fields.size() - 2; ++i) {
        if (IsEvenNumber(static_cast<int32_t>(i)))
            continue;
        AddEntry(list, fields[i]);
        SetItemData(list, TextToInt32(fields[i - 1]));
        if (!chosen.isEmpty() && fields[i] == chosen)
            list->setCurrentIndex(list->count() - 1);
    }
}

void AddProviderGroups(QComboBox* list, const QStringList& providers)
{
    // Whole groups run one past their end: the loop then stops with CError,
    // and the entries added so far stand.
    const int32_t groups = RoundToEven(providers.size() / 5.0);
    for (int32_t i = 0; i <= groups; ++i) {
        AddEntry(list, Field(providers, 5 * qsizetype(i) + 1));
        SetItemData(list, TextToInt32(Field(providers, 5 * qsizetype(i))));
    }
}

frmSignup2::frmSignup2(CSignUpManager& road) : CSkinWindow(QStringLiteral("frmSignup2")), mRoad(road) {}

void frmSignup2::Form_Load()
{
    SkinWindowDesc desc;
    desc.name = objectName();
    desc.size = QSize(440, 400);
    desc.heading = QStringLiteral("Tell us about your phone");
    desc.body = QStringLiteral("We send every tone in the format your phone plays best.");
    desc.bodyRect = QRect(28, 80, 384, 60);
    desc.closeMark = true;
    desc.minimizeMark = true;
    desc.talkingToServer = true;
    desc.buttons = {{QStringLiteral("imgBack"), QStringLiteral("Back"), ButtonLook::Secondary},
                    {QStringLiteral("imgSend"), QStringLiteral("Next")}};
    const QList<std::pair<QString, QString>> lists = {{QStringLiteral("cmbPhoneMake"), QStringLiteral("Phone make")},
                                                      {QStringLiteral("cmbPhoneModel"), QStringLiteral("Model")},
                                                      {QStringLiteral("cmbCountry"), QStringLiteral("Country")},
                                                      {QStringLiteral("cmbNetworkOperator"), QStringLiteral("Network")}};
    int top = 146;
    for (const auto& [name, caption] : lists) {
        desc.labels.append({QStringLiteral("lbl") + name.mid(3), QRect(28, top, 130, 30), LabelKind::Text, caption, 10,
                            false, int(Qt::AlignLeft | Qt::AlignVCenter)});
        top += 42;
    }
    Build(desc);

    top = 146;
    for (const auto& [name, caption] : lists) {
        auto* list = new QComboBox(this);
        list->setObjectName(name);
        list->setGeometry(160, top, 252, 30);
        list->setFont(skin::Font(10));
        list->setMaxVisibleItems(12);
        top += 42;
    }
    cmbPhoneMake = findChild<QComboBox*>(QStringLiteral("cmbPhoneMake"));
    cmbPhoneModel = findChild<QComboBox*>(QStringLiteral("cmbPhoneModel"));
    cmbCountry = findChild<QComboBox*>(QStringLiteral("cmbCountry"));
    cmbNetworkOperator = findChild<QComboBox*>(QStringLiteral("cmbNetworkOperator"));
    imgSend = Button(QStringLiteral("imgSend"));
    imgBack = Button(QStringLiteral("imgBack"));
    imgTalkingToServer = Label(QStringLiteral("imgTalkingToServer"));

    connect(cmbCountry, &QComboBox::currentIndexChanged, this, &frmSignup2::cmbCountry_Click);
    connect(cmbPhoneMake, &QComboBox::currentIndexChanged, this, &frmSignup2::cmbPhoneMake_Click);
    connect(imgSend, &CPictureButton::Released, this, &frmSignup2::imgSend_Released);
    connect(imgBack, &CPictureButton::Released, this, &frmSignup2::imgBack_Released);
    connect(static_cast<CClickLabel*>(Label(QStringLiteral("lblClose"))), &CClickLabel::Click, this,
            [this] { Run([this] { lblClose_Click(); }); });
    connect(static_cast<CClickLabel*>(Label(QStringLiteral("lblMinimize"))), &CClickLabel::Click, this,
            &QWidget::showMinimized);

    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
    CenterOnScreen(this);
}

bool frmSignup2::LoadLists()
{
    for (QComboBox* list : {cmbPhoneMake, cmbPhoneModel, cmbCountry, cmbNetworkOperator})
        list->clear();
    return LoadProviders() && LoadVendors() && Initialize();
}

bool frmSignup2::LoadProviders()
{
    // Every network of every country, names only, until a country is chosen.
    return Loaded([this] {
        QString reply;
        if (!FetchList(ptServiceProviderList, QString(), reply))
            return false;
        const QStringList fields = reply.split(QLatin1Char(','));
        for (qsizetype i = 0; i <= fields.size() - 2; ++i) {
            if (!IsEvenNumber(static_cast<int32_t>(i)))
                AddEntry(cmbNetworkOperator, fields[i]);
        }
        return true;
    });
}

bool frmSignup2::LoadVendors()
{
    return Loaded([this] {
        QString reply;
        if (!FetchList(ptTerminalVendorList, QString(), reply))
            return false;
        AddPairs(cmbPhoneMake, reply);
        return true;
    });
}

bool frmSignup2::Initialize()
{
    return Loaded([this] {
        QString reply;
        if (!FetchList(ptCountryList, QString(), reply))
            return false;
        // Chosen at once, which fetches its networks; later entries leave the choice alone.
        AddPairs(cmbCountry, reply, QStringLiteral("Australia"));
        return true;
    });
}

bool frmSignup2::LoadTerminalTypes(const QString& VendorID)
{
    return Loaded([&] {
        QString query = VendorID;
        const QString reply = CHTTPCall().GetPage(ptTerminalTypeList, query, true, kServiceTimeOut);
        cmbPhoneModel->clear();
        AddPairs(cmbPhoneModel, reply);
        return true;
    });
}

bool frmSignup2::LoadCountryProviders(const QString& CountryID)
{
    return Loaded([&] {
        QString query = CountryID;
        const QString reply = CHTTPCall().GetPage(ptServiceProviderList, query, true, kServiceTimeOut);
        cmbNetworkOperator->clear();
        gstrProviders = reply.split(QLatin1Char(','));
        AddProviderGroups(cmbNetworkOperator, gstrProviders);
        return true;
    });
}

void frmSignup2::cmbCountry_Click(int index)
{
    if (index < 0)
        return;
    SetFormEnabled(this, false);
    imgTalkingToServer->show();
    LoadCountryProviders(SelectedId(cmbCountry));
    imgTalkingToServer->hide();
    SetFormEnabled(this, true);
}

void frmSignup2::cmbPhoneMake_Click(int index)
{
    if (index < 0)
        return;
    SetFormEnabled(this, false);
    imgTalkingToServer->show();
    LoadTerminalTypes(SelectedId(cmbPhoneMake));
    imgTalkingToServer->hide();
    SetFormEnabled(this, true);
}

void frmSignup2::imgSend_Released()
{
    imgSend->ShowRest();
    const QList<std::pair<QComboBox*, QString>> checks = {
        {cmbPhoneMake, QStringLiteral("Please select your phone make.")},
        {cmbPhoneModel, QStringLiteral("Please select your phone model.")},
        {cmbCountry, QStringLiteral("Please select your country.")},
        {cmbNetworkOperator, QStringLiteral("Please select your phone company/network provider.")}};
    for (const auto& [list, message] : checks) {
        if (list->currentIndex() < 0) {
            CDialog().Display(message, true, this);
            return;
        }
    }
    mRoad.ShowPersonalDetails();
    Hide();
}

void frmSignup2::imgBack_Released()
{
    imgBack->ShowRest();
    mRoad.PhoneCheck().Show(false);
    Hide();
}

void frmSignup2::lblClose_Click()
{
    mRoad.LeaveIfConfirmed();
}
