#include "service/CHTTPCall.h"

#include "core/CError.h"
#include "core/MsgBox.h"
#include "core/codepage.h"
#include "core/modCommon.h"
#include "core/seams.h"
#include "platform/WebClient.h"
#include "skin/CDialog.h"
#include "skin/frmGenericOKDialog.h"
#include "wire/Pages.h"

#include <QCoreApplication>
#include <QFile>
#include <QVersionNumber>

namespace {
const QString kUnreachableMessage =
    QStringLiteral("The Quillo Tone server cannot be reached. Please check your Internet connection.");
const QString kSendFailedMessage = QStringLiteral("An error occured connecting to Quillotone - please try again.");
// A service that cannot prove its identity is not the user's fault and not a
// wrong password: say what it is and what to do about it.
const QString kUntrustedMessage = QStringLiteral(
    "The Quillotone service could not prove its identity: its certificate is not the one this computer "
    "trusts, so nothing was sent. If the service was moved or has a new certificate, ask its operator for "
    "the certificate file and name it as ServiceCertificate in the program's settings.");

// The program's version as major.minor.revision, plain decimals.
QString ProgramVersion()
{
    const QVersionNumber v = QVersionNumber::fromString(QCoreApplication::applicationVersion());
    return QStringLiteral("%1.%2.%3").arg(v.majorVersion()).arg(v.minorVersion()).arg(v.microVersion());
}

// A page's name with what follows it.
QString page(const char* name, const char* rest = "")
{
    return QLatin1String(name) + QLatin1String(rest);
}
}  // namespace

CHTTPCall::CHTTPCall() = default;
CHTTPCall::~CHTTPCall() = default;

QString CHTTPCall::PagePath(int32_t PageType, const QString& Params)
{
    switch (PageType) {
    case ptServiceProviderList: return page(wire::kServiceProviderList, "?CountryID=") + Params;
    case ptTerminalVendorList: return page(wire::kTerminalVendorList);
    case ptTerminalTypeList: return page(wire::kTerminalTypeList, "?TerminalVendorID=") + Params;
    case ptCountryList: return page(wire::kCountryList);
    case ptLogin: return page(wire::kLogin, "?") + Params;
    case ptAddCustomer: return page(wire::kAddCustomer, "?") + Params;
    case ptActivateCustomer: return page(wire::kActivateCustomer, "?") + Params;
    case ptReferFriends: return page(wire::kReferFriends, "?") + Params;
    case ptPostSongData: return page(wire::kPostSongData, "?") + Params;
    case ptLookupMobileNumber: return page(wire::kLookupMobileNumber, "?") + Params;
    case ptSend: return page(wire::kSend, "?") + Params;
    case ptAnnouncementRead: return page(wire::kAnnouncementRead, "?") + Params;
    case ptUpdateTID: return page(wire::kUpdateTID, "?") + Params;
    case ptDeleteTID: return page(wire::kDeleteTID, "?") + Params;
    case ptCheckVersion: return page(wire::kCheckVersion, "?Version=") + ProgramVersion();
    default: return {};
    }
}

void CHTTPCall::MakeClient()
{
    if (mobjHTTP)
        return;
    mobjHTTP = std::make_unique<WebClient>();
    connect(mobjHTTP.get(), &WebClient::State, this, &CHTTPCall::mobjHTTP_State);
}

void CHTTPCall::mobjHTTP_State()
{
    // Asked and let be: nothing here depends on the state.
    [[maybe_unused]] const int state = mobjHTTP->state();
}

QString CHTTPCall::GetPage(int32_t PageType, QString& Params, bool UseHTTPS, int32_t nTimeOut)
{
    try {
        MakeClient();
        mstrResponse.clear();
        mobjHTTP->Timeout = nTimeOut;
        if (UseHTTPS)
            mobjHTTP->Security = WebClient::kSecure;
        Params.remove(QLatin1Char('\''));
        const QString path = PagePath(PageType, Params);
        if (!path.isEmpty())
            mobjHTTP->URL = seams().serviceBaseUrl + path;
        mobjHTTP->Get(mstrResponse);
        if (PageType != ptNotLogged) {
            WriteLog(QStringLiteral("----[ HTTP Call Start ]----"));
            WriteLog(QStringLiteral("URL: ") + mobjHTTP->URL);
            WriteLog(QStringLiteral("Response: ") + mstrResponse);
            WriteLog(QStringLiteral("----[ HTTP Call End ]----"));
        }
        return mstrResponse;
    } catch (const CError& e) {
        if (e.Number() == WebClient::kSecureFailure) {
            // An impostor is not the service: this counts as not reaching it.
            CDialog().Display(kUntrustedMessage, true, nullptr);
            return kServerUnreachable;
        }
        if (e.Number() == WebClient::kNameNotResolved || e.Number() == WebClient::kCannotConnect) {
            CDialog().Display(kUnreachableMessage, true, nullptr);
            return kServerUnreachable;
        }
        MsgBox(e.Description());
        return {};
    }
}

QString CHTTPCall::SendHTTP(const QString& Params, bool bBinary, const QString& PostData, const QString& FileToCreate,
                            int32_t nTimeOut)
{
    try {
        MakeClient();
        mobjHTTP->Timeout = nTimeOut;
        if (Params.left(5) == QLatin1String("https"))
            mobjHTTP->Security = WebClient::kSecure;
        mobjHTTP->URL = Params;
        QString result;
        if (!PostData.isEmpty()) {
            QString reply;
            mobjHTTP->Post(PostData, reply);
            result = reply;
        } else if (bBinary) {
            mobjHTTP->Get(mbytResponse);
        } else {
            mobjHTTP->Get(mstrResponse);
        }
        if (!FileToCreate.isEmpty()) {
            // ReadWrite opens without cutting the file: a shorter reply leaves the old tail.
            QFile file(FileToCreate);
            if (!file.open(QIODevice::ReadWrite))
                throw CError(ErrNo::PathFileAccess, QStringLiteral("Path/File access error"), QStringLiteral("SendHTTP"));
            const QByteArray bytes = bBinary ? mbytResponse : codepage::ToAnsi(mstrResponse);
            if (file.write(bytes) != bytes.size())
                throw CError(ErrNo::DiskFull, QStringLiteral("Disk full"), QStringLiteral("SendHTTP"));
        }
        return result;
    } catch (const CError& e) {
        CDialog().Display(e.Number() == WebClient::kSecureFailure ? kUntrustedMessage : kSendFailedMessage, true,
                          nullptr);
        return {};
    }
}
