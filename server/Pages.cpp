#include "Pages.h"

#include "PageKit.h"

#include <httplib.h>

namespace {
constexpr size_t kMaxUploadBody = 4 * 1024 * 1024;
}

Pages::Pages(Store& store, std::string dataFolder)
    : mAccounts(store),
      mProgram(store, mAccounts, mBase),
      mPeople(store, mAccounts),
      mTones(store, mAccounts, dataFolder + "/tones", mBase)
{
}

void Pages::Register(httplib::Server& server)
{
    mProgram.Register(server);
    mPeople.Register(server);
    mTones.Register(server);
    server.set_payload_max_length(kMaxUploadBody);
    server.set_error_handler([](const httplib::Request&, httplib::Response& res) {
        if (res.body.empty())
            page::Reply(res, res.status == 404 ? "No such page" : "The request could not be served");
    });
    server.set_exception_handler([](const httplib::Request&, httplib::Response& res, std::exception_ptr) {
        res.status = 500;
        page::Reply(res, "The service could not do that just now. Please try again.");
    });
}
