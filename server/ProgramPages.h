#pragma once
// The pages the program calls: lists, login, sign-up, referrals, reports,
// announcements and the picture code. Plain text, Windows-1252, comma fields
// on one line; a refusal the program understands comes as 200 and fields.
#include "PageKit.h"
#include "Store.h"

#include <optional>

class Accounts;
namespace httplib {
class Server;
}

class ProgramPages {
public:
    // base: the service's address ending in "/", read at each request.
    ProgramPages(Store& store, Accounts& accounts, const std::string& base);
    void Register(httplib::Server& server);

private:
    using Request = page::Request;
    using Response = page::Response;

    // The customer whose number and password the request carries.
    std::optional<Customer> Caller(const Request&);

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
    void CodePicture(const Request&, Response&);

    Store& mStore;
    Accounts& mAccounts;
    const std::string& mBase;
};
