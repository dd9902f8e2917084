#pragma once
// The one road to the web service. A caller makes a CHTTPCall, asks one or
// more pages and drops it; what a reply means is the caller's business.
// GetPage answers "err" when the service could not be reached at all, and
// empty text after any other failure; both after telling the user.
#include <QByteArray>
#include <QObject>
#include <QString>
#include <cstdint>
#include <memory>

class WebClient;

// The pages of the service, by PageType.
enum PageType : int32_t {
    ptServiceProviderList = 3,
    ptTerminalVendorList = 4,
    ptTerminalTypeList = 5,
    ptCountryList = 6,
    ptLogin = 7,
    ptAddCustomer = 8,
    ptActivateCustomer = 9,
    ptReferFriends = 10,
    ptPostSongData = 11,
    ptLookupMobileNumber = 12,
    ptSend = 13,
    ptAnnouncementRead = 14,
    ptUpdateTID = 15,
    ptDeleteTID = 16,
    ptCheckVersion = 17,
    ptNotLogged = 1,
};

inline const QString kServerUnreachable = QStringLiteral("err");
inline constexpr int32_t kServiceTimeOut = 10000;

class CHTTPCall : public QObject {
    Q_OBJECT
public:
    CHTTPCall();
    ~CHTTPCall() override;

    // Params loses every "'" here, in the caller's variable too.
    QString GetPage(int32_t PageType, QString& Params, bool UseHTTPS, int32_t nTimeOut);
    // Params is the whole URL. A POST when PostData is not empty; a GET's
    // body reaches the caller only through FileToCreate, which is written
    // from its start without being cut to length.
    QString SendHTTP(const QString& Params, bool bBinary, const QString& PostData, const QString& FileToCreate,
                     int32_t nTimeOut);

    // The path and what follows it for a page type; empty for one outside the table.
    static QString PagePath(int32_t PageType, const QString& Params);

private slots:
    void mobjHTTP_State();

private:
    void MakeClient();

    std::unique_ptr<WebClient> mobjHTTP;
    QByteArray mbytResponse;
    QString mstrResponse;
};
