#pragma once
// One search of the disks for music: runs the file search, records in the
// library the folder of every song found, and shows its progress on a tray
// icon and balloon. Start runs the whole search and returns when it has
// ended; CancelTheSearch (from a handler that runs meanwhile) ends it early
// with what was found saved.
#include "core/CError.h"

#include <QDomDocument>
#include <QObject>
#include <QSet>
#include <QString>
#include <cstdint>
#include <memory>
#include <optional>

class SearchWorks;
class PBTrayIcon;
class PBBalloon;

class CMusicSearch : public QObject {
    Q_OBJECT
public:
    explicit CMusicSearch(QObject* parent = nullptr);
    ~CMusicSearch() override;

    // 1: the user's music folder and everything under it; any other value:
    // every local disk.
    void Start(int16_t SearchStyle);
    void CancelTheSearch();
    QStringList FilesFound() const;
    void Shutdown();

    int32_t NewFolders() const { return mlngNewFolders; }

signals:
    void FileCount(const QString& CountString, int32_t n);

private:
    void EnsureXMLDocExists();
    void RecordFolder(const QString& folder);
    void Save();
    void mobjSearch_FileFound(const QString& Path, const QString& Name);
    void mobjSearch_SearchFinished();

    std::unique_ptr<SearchWorks> mobjSearch;
    std::unique_ptr<PBTrayIcon> mobjTrayIcon;
    std::unique_ptr<PBBalloon> mobjBalloon;
    QDomDocument mobjLibrary;
    QString mstrLibraryPath;
    int32_t mlngNewFolders = 0;
    bool mbCancelled = false;
    bool mbFinished = false;
    // The Path of every Folder in the document, for the query of each find.
    QSet<QString> mPaths;
    // The first failure of a handler that ran inside the wait; Start reports it.
    std::optional<CError> mFailure;
};
