#include "DataFolder.h"

#include "Store.h"

#include <filesystem>
#include <set>
#include <sys/stat.h>

namespace fs = std::filesystem;

void MakeDataFolderPrivate(const std::string& folder)
{
    // The folder itself stays open to others, who read the certificate in it.
    fs::create_directories(folder);
    ::umask(077);
    fs::create_directories(folder + "/tones");
    fs::permissions(folder + "/tones", fs::perms::owner_all);
    // Files an older version made with wider rights.
    for (const char* name : {"service.db", "service.db-wal", "service.db-shm", "service.key"}) {
        std::error_code absent;
        fs::permissions(folder + "/" + name, fs::perms::owner_read | fs::perms::owner_write, absent);
    }
}

void TidyTones(const std::string& toneFolder, Store& store)
{
    std::set<fs::path> recorded;
    for (const auto& path : store.TonePaths())
        recorded.insert(fs::path(path).filename());
    for (const auto& entry : fs::directory_iterator(toneFolder)) {
        if (!entry.is_regular_file())
            continue;
        std::error_code ignored;
        if (entry.path().extension() == ".part" || !recorded.count(entry.path().filename()))
            fs::remove(entry.path(), ignored);
        else
            fs::permissions(entry.path(), fs::perms::owner_read | fs::perms::owner_write, ignored);
    }
}
