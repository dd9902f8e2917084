#include "ServiceGround.h"

#include "FuzzKit.h"
#include "Listener.h"
#include "Pages.h"
#include "Store.h"

#include <filesystem>
#include <memory>

namespace {
std::string MadeFolder(const std::string& path)
{
    std::filesystem::create_directories(path);
    return path;
}

struct Service {
    std::string folder = MadeFolder(ScratchFolder().toStdString() + "/service");
    Store store{"sqlite:" + folder + "/service.db"};
    Pages pages{store, folder};
    Router router;

    Service()
    {
        pages.SetPublicBase("https://127.0.0.1:8443/");
        pages.EnsureDemoAccount("0400000000", "secret");
        pages.Register(router);
    }
};

Router& TheRouter()
{
    static const std::unique_ptr<Service> service = std::make_unique<Service>();
    return service->router;
}
}  // namespace

std::string Serve(const std::string& bytes)
{
    // The glue to the transport: the head up to its blank line, the rest its body.
    const size_t blank = bytes.find("\r\n\r\n");
    const size_t split = blank == std::string::npos ? bytes.size() : blank + 4;
    bool close = false;
    return TheRouter().Answer(bytes.substr(0, split), bytes.substr(split), "127.0.0.1", 40000, close);
}
