#pragma once
// Every page of the service. Program pages answer in plain text, Windows-1252,
// comma fields on one line; the public pages (home, help, password, outbox)
// are HTML. A request that lacks a field or carries a malformed one gets
// 400 with a short text; a refusal the program understands gets 200 and the
// refusal in its fields.
#include "Store.h"

#include <array>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

class Pages {
public:
    Pages(Store& store, std::string dataFolder);
    // The https address the service is reached at, ending in "/": tone links
    // and invitations point there.
    void SetPublicBase(const std::string& base) { mBase = base; }
    void Register(httplib::Server& server);

    // The demo account of a local installation: made if missing, given this
    // password if it has another.
    void EnsureDemoAccount(const std::string& mobile, const std::string& plainPassword);

private:
    using Request = httplib::Request;
    using Response = httplib::Response;

    std::optional<Customer> Authenticate(const std::string& mobile, const std::string& plainPassword);
    void ForgetLogin(const std::string& mobile);

    void CountryList(const Request&, Response&);
    void VendorList(const Request&, Response&);
    void ModelList(const Request&, Response&);
    void ProviderList(const Request&, Response&);
    void Login(const Request&, Response&);
    void AddCustomer(const Request&, Response&);
    void ActivateCustomer(const Request&, Response&);
    void ReferFriends(const Request&, Response&);
    void PostSongData(const Request&, Response&);
    void LookupMobileNumber(const Request&, Response&);
    void Send(const Request&, Response&);
    void AnnouncementRead(const Request&, Response&);
    void UpdateTID(const Request&, Response&);
    void DeleteTID(const Request&, Response&);
    void CheckVersion(const Request&, Response&);
    void UploadTone(const Request&, Response&, std::string_view body);
    void DownloadTone(const Request&, Response&);
    void CodePicture(const Request&, Response&);
    void Home(const Request&, Response&);
    void Help(const Request&, Response&);
    void PasswordForm(const Request&, Response&);
    void PasswordReset(const Request&, Response&);
    void OutboxPage(const Request&, Response&);

    std::string ToneLink(const std::string& token) const { return mBase + "tones/" + token; }

    Store& mStore;
    std::string mToneFolder;
    std::string mBase;

    // Logins that passed the slow hash check, so that a returning customer is
    // checked with one fast digest: mobile -> (stored hash, digest of password).
    std::mutex mLoginsMutex;
    std::unordered_map<std::string, std::pair<std::string, std::array<unsigned char, 32>>> mLogins;
    std::array<unsigned char, 32> mPepper{};
};
