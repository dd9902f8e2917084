#pragma once
// The pages people open in a browser: home, help, the forgotten password and
// the outbox that stands in for the phones. HTML.
#include "PageKit.h"

class Accounts;
class Store;
namespace httplib {
class Server;
}

class PeoplePages {
public:
    PeoplePages(Store& store, Accounts& accounts);
    void Register(httplib::Server& server);

private:
    using Request = page::Request;
    using Response = page::Response;

    void Home(const Request&, Response&);
    void Help(const Request&, Response&);
    void PasswordForm(const Request&, Response&);
    void PasswordReset(const Request&, Response&);
    void OutboxPage(const Request&, Response&);

    Store& mStore;
    Accounts& mAccounts;
};
