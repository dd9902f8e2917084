#pragma once
// Every page of the service, by audience: the program's pages, the pages for
// people, and the tone transfer. A request that lacks a field or carries a
// malformed one gets 400 with a short text.
#include "Accounts.h"
#include "PeoplePages.h"
#include "ProgramPages.h"
#include "ToneTransfer.h"

#include <string>

class Store;
namespace httplib {
class Server;
}

class Pages {
public:
    Pages(Store& store, std::string dataFolder);
    // The https address the service is reached at, ending in "/": tone links
    // and invitations point there.
    void SetPublicBase(const std::string& base) { mBase = base; }
    // The operator's key; with none the all-numbers view is off.
    void SetOperatorKey(const std::string& key) { mPeople.SetOperatorKey(key); }
    void Register(httplib::Server& server);

    void EnsureDemoAccount(const std::string& mobile, const std::string& plainPassword)
    {
        mAccounts.EnsureDemoAccount(mobile, plainPassword);
    }

private:
    std::string mBase;
    Accounts mAccounts;
    ProgramPages mProgram;
    PeoplePages mPeople;
    ToneTransfer mTones;
};
