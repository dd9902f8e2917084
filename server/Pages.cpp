#include "Pages.h"

#include "PageKit.h"

#include <httplib.h>

Pages::Pages(Store& store, std::string dataFolder)
    : mAccounts(store),
      mProgram(store, mAccounts, mBase),
      mPeople(store, mAccounts, mBase),
      mTones(store, mAccounts, dataFolder + "/tones", mBase)
{
}

void Pages::Register(httplib::Server& server)
{
    mProgram.Register(server);
    mPeople.Register(server);
    mTones.Register(server);
    // No body is larger than the upload's; the upload keeps its own rule.
    server.set_payload_max_length(ToneTransfer::kMaxBody);
    server.set_error_handler([](const httplib::Request&, httplib::Response& res) {
        if (res.body.empty())
            page::Reply(res, res.status == 404 ? "No such page" : "The request could not be served");
    });
    server.set_exception_handler([](const httplib::Request&, httplib::Response& res, std::exception_ptr) {
        res.status = 500;
        page::Reply(res, "The service could not do that just now. Please try again.");
    });
}
