#include "library/CMusicSearch.h"

#include "core/MsgBox.h"
#include "core/globals.h"
#include "library/LibraryFile.h"
#include "library/modShellFolders.h"
#include "platform/PBBalloon2.h"
#include "platform/SearchWorks.h"
#include "skin/SkinStyle.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>

namespace {
constexpr int kSaveEvery = 50;
const QString kTrayTip = QStringLiteral("Quillo Tone is searching for music...");
const QString kBalloonTitle = QStringLiteral("Quillo Tone is looking for music");
const QString kBalloonText = QStringLiteral("Quillo Tone is now searching your PC for music.\n"
                                            "This may take a while - please be patient. Thank you!");
const QString kSep = QStringLiteral("/");
const QString kDoubleSep = QStringLiteral("//");
}  // namespace

CMusicSearch::CMusicSearch(QObject* parent)
    : QObject(parent)
{
}

CMusicSearch::~CMusicSearch() { Shutdown(); }

void CMusicSearch::Start(int16_t SearchStyle)
{
    try {
        mobjTrayIcon = std::make_unique<PBTrayIcon>();
        mobjTrayIcon->SetPicture(skin::AppIcon());
        mobjTrayIcon->SetTip(kTrayTip);
        mobjBalloon = std::make_unique<PBBalloon>();
        mobjBalloon->SetTitle(kBalloonTitle, true, Qt::blue);
        mobjBalloon->SetText(kBalloonText);
        mobjBalloon->AttachTo(mobjTrayIcon.get());
        mobjBalloon->Show();

        mbCancelled = false;
        mbFinished = false;
        mFailure.reset();
        mobjLibrary = QDomDocument();
        mstrLibraryPath = gstrMyMusicPath;
        EnsureXMLDocExists();

        mobjSearch = std::make_unique<SearchWorks>();
        connect(mobjSearch.get(), &SearchWorks::FileFound, this, &CMusicSearch::mobjSearch_FileFound);
        connect(mobjSearch.get(), &SearchWorks::SearchFinished, this, &CMusicSearch::mobjSearch_SearchFinished);
        for (const char* mask : {"*.mp3", "*.wma", "*.wav"})
            mobjSearch->Masks().Add(QString::fromLatin1(mask));
        if (SearchStyle == 1) {
            mobjSearch->SetScope(SearchWorks::ScopeFolders);
            mobjSearch->Folders().Add(GetSpecialFolderPath(kMyMusicFolder));
        } else {
            mobjSearch->SetScope(SearchWorks::ScopeAllDrives);
        }

        gbSearchRunning = true;
        mobjSearch->StartSearch(true);
        while (!mbCancelled && !mbFinished) {
            QThread::msleep(1);
            QCoreApplication::processEvents();
        }
        gbSearchRunning = false;
        if (mFailure)
            throw *mFailure;
        Save();
    } catch (const CError& e) {
        gbSearchRunning = false;
        MsgBox(QStringLiteral("Unexpected error searching for music: ") + e.Description(), QMessageBox::Critical);
    }
}

void CMusicSearch::EnsureXMLDocExists()
{
    mPaths.clear();
    try {
        if (!QFileInfo::exists(mstrLibraryPath) && !WriteLibraryLine(mstrLibraryPath, kSearchEmptyLibrary))
            throw CError(ErrNo::PathFileAccess, QStringLiteral("Cannot create ") + QDir::toNativeSeparators(mstrLibraryPath));
        QFile file(mstrLibraryPath);
        if (!file.open(QIODevice::ReadOnly))
            throw CError(ErrNo::PathFileAccess, file.errorString());
        QString error;
        int line = 0;
        int column = 0;
        if (!mobjLibrary.setContent(&file, false, &error, &line, &column) || mobjLibrary.documentElement().isNull())
            throw CError(ErrNo::PathFileAccess, QStringLiteral("%1 (line %2, column %3)").arg(error).arg(line).arg(column));
    } catch (const CError& e) {
        MsgBox(e.Description() + QStringLiteral(" [EnsureXMLDocExists]"), QMessageBox::Critical);
        // The search goes on. What could be read of a damaged file is kept,
        // and the file itself is set aside, so that the save at the end
        // loses nothing of it.
        mobjLibrary = QDomDocument();
        QDomElement root = mobjLibrary.createElement(QStringLiteral("Quillotone"));
        mobjLibrary.appendChild(root);
        if (QFileInfo(mstrLibraryPath).size() > 0) {
            const QString aside = mstrLibraryPath + QStringLiteral(".unreadable");
            QFile::remove(aside);
            QFile::copy(mstrLibraryPath, aside);
        }
        for (const QString& path : ReadLibrary(mstrLibraryPath).paths) {
            QDomElement folder = mobjLibrary.createElement(QStringLiteral("Folder"));
            folder.setAttribute(QStringLiteral("Path"), path);
            root.appendChild(folder);
        }
    }
    const QDomNodeList folders = mobjLibrary.elementsByTagName(QStringLiteral("Folder"));
    for (int i = 0; i < folders.size(); ++i)
        mPaths.insert(folders.at(i).toElement().attribute(QStringLiteral("Path")));
}

void CMusicSearch::RecordFolder(const QString& folder)
{
    // The query is made the way the library has always made it: separators
    // doubled, apostrophes removed. Stored paths hold single separators, so a
    // path with a separator in it finds nothing, and each song found appends
    // its folder again; readers take the repeats.
    QString query = folder;
    query.replace(kSep, kDoubleSep);
    query.remove(QLatin1Char('\''));
    try {
        if (!mPaths.contains(query)) {
            QString path = query;
            path.replace(kDoubleSep, kSep);
            // A name XML cannot hold would make the whole file unreadable.
            if (!StorablePath(path))
                return;
            QDomElement element = mobjLibrary.createElement(QStringLiteral("Folder"));
            element.setAttribute(QStringLiteral("Path"), path);
            mobjLibrary.documentElement().appendChild(element);
            mPaths.insert(path);
        }
        if (++mlngNewFolders % kSaveEvery == 0)
            Save();
    } catch (const CError& e) {
        throw CError(e.Number(), e.Description() + QStringLiteral(" [%1]").arg(e.Number()), e.Source());
    }
}

void CMusicSearch::Save()
{
    SaveLibrary(mobjLibrary, mstrLibraryPath);
}

void CMusicSearch::mobjSearch_FileFound(const QString& Path, const QString&)
{
    if (mFailure)
        return;
    try {
        RecordFolder(Path);
    } catch (const CError& e) {
        // The library cannot be written: the search ends, and Start says why.
        mFailure = e;
        mobjSearch->StopSearch();
        return;
    }
    const int32_t n = static_cast<int32_t>(mobjSearch->FoundFiles().size());
    emit FileCount(QString::number(n) + QStringLiteral(" song(s)"), n);
    if (mobjTrayIcon)
        mobjTrayIcon->SetTip(QStringLiteral("Quillo Tone is searching for music. ") + QString::number(n) +
                             QStringLiteral(" songs found so far..."));
    // Paces the search, so that the disk work leaves the computer usable.
    QThread::msleep(10);
}

void CMusicSearch::mobjSearch_SearchFinished()
{
    mbFinished = true;
    if (mobjBalloon)
        mobjBalloon->Hide();
    if (mobjTrayIcon)
        mobjTrayIcon->Remove();
    mobjBalloon.reset();
    mobjTrayIcon.reset();
}

void CMusicSearch::CancelTheSearch()
{
    if (!mobjSearch)
        return;
    QCoreApplication::processEvents();
    QThread::msleep(100);
    try {
        Save();
    } catch (const CError& e) {
        if (!mFailure)
            mFailure = e;
    }
    mbCancelled = true;
    mobjSearch->StopSearch();
}

QStringList CMusicSearch::FilesFound() const
{
    return mobjSearch ? mobjSearch->FoundFiles() : QStringList();
}

void CMusicSearch::Shutdown()
{
    mobjSearch.reset();
    mobjLibrary = QDomDocument();
    mobjBalloon.reset();
    mobjTrayIcon.reset();
}
