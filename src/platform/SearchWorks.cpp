#include "platform/SearchWorks.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QStorageInfo>

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unordered_set>

namespace {
// Finds that may wait for the event loop before the walk holds back: few,
// so that a cancel, which lets the waiting ones in first, ends soon.
constexpr int kBacklog = 16;

// File systems that are no disk of the user's: kernel views, memory, the
// network, packed read-only images.
const QSet<QByteArray>& notLocal()
{
    static const QSet<QByteArray> types{
        "proc", "sysfs", "devtmpfs", "devpts", "tmpfs", "ramfs", "cgroup", "cgroup2", "securityfs",
        "debugfs", "tracefs", "configfs", "pstore", "bpf", "mqueue", "hugetlbfs", "fusectl", "autofs",
        "binfmt_misc", "efivarfs", "nsfs", "rpc_pipefs", "squashfs", "nfs", "nfs4", "cifs", "smb3",
        "smbfs", "ncpfs", "afs", "9p", "ceph", "glusterfs", "fuse.sshfs", "sshfs", "davfs", "fuse.davfs2",
        "fuse.gvfsd-fuse", "fuse.portal"};
    return types;
}

struct DirId {
    dev_t dev;
    ino_t ino;
    bool operator==(const DirId&) const = default;
};
struct DirIdHash {
    size_t operator()(const DirId& id) const { return std::hash<uint64_t>()(uint64_t(id.dev) * 1000003u ^ uint64_t(id.ino)); }
};

struct Folder {
    QByteArray path;
    dev_t dev;
};

// The masks as patterns of whole file names, letters in either case, as the
// desktop's own file search takes them.
QList<QRegularExpression> patterns(const QStringList& masks)
{
    QList<QRegularExpression> list;
    for (const QString& mask : masks)
        list << QRegularExpression(QRegularExpression::wildcardToRegularExpression(mask, QRegularExpression::UnanchoredWildcardConversion),
                                   QRegularExpression::CaseInsensitiveOption);
    for (QRegularExpression& re : list)
        re.setPattern(QStringLiteral("\\A(?:") + re.pattern() + QStringLiteral(")\\z"));
    return list;
}
}  // namespace

SearchWorks::SearchWorks(QObject* parent)
    : QObject(parent)
{
}

SearchWorks::~SearchWorks()
{
    if (mStop)
        mStop->store(true);
    if (mRoom)
        mRoom->release(kBacklog);
    if (mWorker.joinable())
        mWorker.join();
}

bool SearchWorks::StartSearch(bool start)
{
    if (!start || mRunning)
        return false;
    if (mWorker.joinable())
        mWorker.join();
    mRunning = true;
    mStop = std::make_shared<std::atomic_bool>(false);
    mRoom = std::make_shared<QSemaphore>(kBacklog);
    QStringList roots = mScope == ScopeAllDrives ? LocalFileSystemRoots() : mFolders.items;
    mWorker = std::thread(&SearchWorks::walk, this, roots, mMasks.items, mScope == ScopeAllDrives, mStop, mRoom);
    return true;
}

void SearchWorks::StopSearch()
{
    if (!mRunning)
        return;
    mStop->store(true);
    mRoom->release(kBacklog);  // a walk that waits for room sees the stop at once
}

void SearchWorks::walk(QStringList roots, QStringList masks, bool stayOnDevice, std::shared_ptr<std::atomic_bool> stop,
                       std::shared_ptr<QSemaphore> room)
{
    const QList<QRegularExpression> wanted = patterns(masks);
    std::unordered_set<DirId, DirIdHash> seen;

    for (const QString& root : roots) {
        struct stat st {};
        const QByteArray rootPath = QFile::encodeName(QDir::cleanPath(root));
        if (stop->load() || rootPath.isEmpty() || ::stat(rootPath.constData(), &st) != 0 || !S_ISDIR(st.st_mode))
            continue;
        std::vector<Folder> pending{{rootPath, st.st_dev}};
        while (!pending.empty() && !stop->load()) {
            const Folder folder = std::move(pending.back());
            pending.pop_back();
            DIR* dir = ::opendir(folder.path.constData());
            if (!dir)
                continue;  // gone, or not ours to read
            struct stat self {};
            if (::fstat(::dirfd(dir), &self) != 0 || !seen.insert({self.st_dev, self.st_ino}).second) {
                ::closedir(dir);
                continue;
            }
            const QByteArray prefix = folder.path.endsWith('/') ? folder.path : folder.path + '/';
            QStringList files;
            std::vector<QByteArray> subfolders;
            while (dirent* entry = ::readdir(dir)) {
                const char* name = entry->d_name;
                if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
                    continue;
                unsigned char type = entry->d_type;
                if (type == DT_UNKNOWN) {
                    struct stat est {};
                    if (::fstatat(::dirfd(dir), name, &est, AT_SYMLINK_NOFOLLOW) != 0)
                        continue;
                    type = S_ISDIR(est.st_mode) ? DT_DIR : S_ISLNK(est.st_mode) ? DT_LNK : DT_REG;
                }
                if (type == DT_LNK) {
                    // A link to a file is a file; one to a folder is not walked, so no loop of links.
                    struct stat target {};
                    if (::fstatat(::dirfd(dir), name, &target, 0) != 0 || S_ISDIR(target.st_mode))
                        continue;
                    type = DT_REG;
                }
                if (type == DT_DIR)
                    subfolders.push_back(prefix + name);
                else
                    files << QFile::decodeName(name);
            }
            ::closedir(dir);

            // Found in a stable order: by name, files before the folders below.
            std::sort(files.begin(), files.end());
            const QString folderName = QFile::decodeName(folder.path);
            for (const QString& name : std::as_const(files)) {
                if (stop->load())
                    break;
                const bool match = std::any_of(wanted.begin(), wanted.end(),
                                               [&](const QRegularExpression& re) { return re.match(name).hasMatch(); });
                if (!match)
                    continue;
                while (!room->tryAcquire(1, 50)) {
                    if (stop->load())
                        break;
                }
                if (stop->load())
                    break;
                QMetaObject::invokeMethod(this, [this, folderName, name] { deliver(folderName, name); }, Qt::QueuedConnection);
            }
            std::sort(subfolders.begin(), subfolders.end(), std::greater<>());
            for (QByteArray& sub : subfolders) {
                if (stayOnDevice) {
                    struct stat sst {};
                    if (::lstat(sub.constData(), &sst) != 0 || sst.st_dev != folder.dev)
                        continue;  // another file system: walked from its own root
                }
                pending.push_back({std::move(sub), folder.dev});
            }
        }
    }
    QMetaObject::invokeMethod(this, [this] { finish(); }, Qt::QueuedConnection);
}

void SearchWorks::deliver(const QString& folder, const QString& name)
{
    mRoom->release();
    if (mStop->load())
        return;
    mFound << QDir(folder).filePath(name);
    emit FileFound(folder, name);
}

void SearchWorks::finish()
{
    if (mWorker.joinable())
        mWorker.join();
    mRunning = false;
    emit SearchFinished();
}

QStringList SearchWorks::LocalFileSystemRoots()
{
    // A file system mounted twice (a bind mount) is walked once all the same:
    // the walk passes over a folder it has already been through.
    QStringList roots;
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes()) {
        if (volume.isValid() && volume.isReady() && !notLocal().contains(volume.fileSystemType()))
            roots << volume.rootPath();
    }
    // The top first, so that the folders of the system disk come in their order.
    std::sort(roots.begin(), roots.end());
    return roots;
}
