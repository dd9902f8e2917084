#pragma once
// The pages people open in a browser: home, help, the forgotten password,
// the outbox that stands in for each phone, and the operator's view of all
// of them. HTML.
#include "PageKit.h"
#include "Throttle.h"

#include <array>

class Accounts;
class Store;
namespace httplib {
class Server;
}

class PeoplePages {
public:
    PeoplePages(Store& store, Accounts& accounts, const std::string& base);
    // The all-numbers view answers only to this key; with none it is off.
    void SetOperatorKey(const std::string& key);
    void Register(httplib::Server& server);

private:
    using Request = page::Request;
    using Response = page::Response;

    void Home(const Request&, Response&);
    void Help(const Request&, Response&);
    void PasswordForm(const Request&, Response&);
    void PasswordReset(const Request&, Response&);
    void OutboxForm(const Request&, Response&);
    void OutboxOfOwner(const Request&, Response&);
    void OperatorView(const Request&, Response&);
    void OperatorLink(const Request&, Response&);

    // Answers the refusal itself when the request is not the operator's.
    bool IsOperator(const Request&, Response&);
    void ShowPhone(Response& res, const std::string& mobile);

    Store& mStore;
    Accounts& mAccounts;
    const std::string& mBase;
    bool mOperatorOn = false;
    std::array<unsigned char, 32> mOperatorDigest{};
    Throttle mOperatorGuesses;
};
