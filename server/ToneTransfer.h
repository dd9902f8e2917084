#pragma once
// Tones in and out: the program's upload "SendT2.asp" and the links the
// phones fetch the tones from.
#include "PageKit.h"

#include <string_view>

class Accounts;
class Store;
namespace httplib {
class Server;
}

class ToneTransfer {
public:
    ToneTransfer(Store& store, Accounts& accounts, const std::string& toneFolder, const std::string& base);
    void Register(httplib::Server& server);

private:
    using Request = page::Request;
    using Response = page::Response;

    void UploadTone(const Request&, Response&, std::string_view body);
    void DownloadTone(const Request&, Response&);

    Store& mStore;
    Accounts& mAccounts;
    std::string mToneFolder;
    const std::string& mBase;
};
