#pragma once
// The file search: finds the files whose names match any of the masks, in the
// folders given (scope 1, each with its sub-folders) or on every mounted local
// file system (scope 128). StartSearch returns at once; the walk runs on a
// worker thread and its events arrive through the event loop of the thread
// that made the object, FileFound once per file in the order found, then
// SearchFinished. After StopSearch no FileFound comes any more, and
// SearchFinished follows.
//
// The walk never follows a link to a folder (so a loop of links ends), never
// leaves the file system it started on (each mounted one is walked from its
// own root), and passes over folders it cannot read.
#include <QObject>
#include <QSemaphore>
#include <QStringList>
#include <atomic>
#include <memory>
#include <thread>

class SearchWorks : public QObject {
    Q_OBJECT
public:
    enum : int32_t { ScopeFolders = 1, ScopeAllDrives = 128 };

    // A list with the one operation the search needs of it.
    struct PathList {
        QStringList items;
        void Add(const QString& item) { items << item; }
        int Count() const { return static_cast<int>(items.size()); }
    };

    explicit SearchWorks(QObject* parent = nullptr);
    ~SearchWorks() override;

    // The full paths of the files found so far, in the order of FileFound.
    const QStringList& FoundFiles() const { return mFound; }
    void SetScope(int32_t scope) { mScope = scope; }
    int32_t Scope() const { return mScope; }
    PathList& Folders() { return mFolders; }
    PathList& Masks() { return mMasks; }

    // Starts the walk and returns; false when a search is already running.
    bool StartSearch(bool start = true);
    void StopSearch();
    bool Searching() const { return mRunning; }

    // The roots that scope 128 walks: the mount points of the local file systems.
    static QStringList LocalFileSystemRoots();

signals:
    // Path is the folder that holds the file, Name the file's own name.
    void FileFound(const QString& Path, const QString& Name);
    void SearchFinished();

private:
    // On the worker: everything it needs comes as arguments.
    void walk(QStringList roots, QStringList masks, bool stayOnDevice, std::shared_ptr<std::atomic_bool> stop,
              std::shared_ptr<QSemaphore> room);
    void deliver(const QString& folder, const QString& name);
    void finish();

    int32_t mScope = ScopeFolders;
    PathList mFolders;
    PathList mMasks;
    QStringList mFound;
    bool mRunning = false;
    // Set by StopSearch; read by the worker between entries.
    std::shared_ptr<std::atomic_bool> mStop;
    // Finds the worker has posted and the event loop not yet delivered: the
    // walk waits when too many stand, so a huge disk cannot fill the memory.
    std::shared_ptr<QSemaphore> mRoom;
    std::thread mWorker;
};
