// The music library: the search over a large disk, and the browser's tree
// and length pass.
#include "Bench.h"
#include "core/globals.h"
#include "core/seams.h"
#include "library/CMusicSearch.h"
#include "library/frmMyMusic2.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

namespace {
void touch(const QString& path, const QByteArray& bytes = "x")
{
    QFile f(path);
    f.open(QIODevice::WriteOnly);
    f.write(bytes);
}

// A music folder of our own, found through the desktop's music folder setting.
void pointMusicFolderAt(const QTemporaryDir& dir, const QString& music)
{
    QDir().mkpath(dir.filePath("config"));
    touch(dir.filePath("config/user-dirs.dirs"), "XDG_MUSIC_DIR=\"" + music.toUtf8() + "\"\n");
    qputenv("XDG_CONFIG_HOME", dir.filePath("config").toUtf8());
    gstrMyMusicPath = dir.filePath("MyMusic.xml");
    seams().programFolder = [path = dir.path()] { return path; };
}

// 100 000 files in 1 000 folders, two songs in each folder. The search paces
// itself at 10 ms a song found; the figure is the time beyond that pacing,
// as a share of it.
const bool search = RegisterBench("MusicSearch_100kFiles_2000Songs_OverPacing", [] {
    QTemporaryDir dir;
    const QString music = dir.filePath("Music");
    for (int f = 0; f < 1000; ++f) {
        const QString folder = QStringLiteral("%1/artist%2/album%3").arg(music).arg(f / 20).arg(f);
        QDir().mkpath(folder);
        for (int i = 0; i < 100; ++i)
            touch(folder + (i < 2 ? QStringLiteral("/track%1.mp3") : QStringLiteral("/scan%1.jpg")).arg(i));
    }
    pointMusicFolderAt(dir, music);
    QElapsedTimer timer;
    timer.start();
    CMusicSearch().Start(1);
    const double pacing = 2000 * 10.0;
    return BenchFigure{(timer.nsecsElapsed() / 1e6 - pacing) / pacing * 100.0, "% beyond pacing"};
});

const bool tree = RegisterBench("MyMusicTree_5000Entries", [] {
    QTemporaryDir dir;
    QByteArray library = "<?xml version=\"1.0\"?><Quillotone>";
    for (int i = 0; i < 5000; ++i) {
        const QString folder = dir.filePath(QStringLiteral("Music/%1/album %2").arg(i / 50).arg(i));
        QDir().mkpath(folder);
        library += "<Folder Path=\"" + folder.toUtf8() + "\"/>";
    }
    touch(dir.filePath("MyMusic.xml"), library + "</Quillotone>\n");
    pointMusicFolderAt(dir, dir.filePath("Music"));
    frmMyMusic2 window;
    window.Load();
    return BenchFigure{MedianMilliseconds(11, [&] { window.BuildTree(); }), "ms"};
});

const bool lengths = RegisterBench("MyMusicLengths_500Songs", [] {
    QTemporaryDir dir;
    const QString album = dir.filePath("Music/Album");
    QDir().mkpath(album);
    const QString song = album + "/000.mp3";
    QProcess::execute("ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i", "sine=frequency=440:duration=200", "-ac", "2",
                                 "-b:a", "192k", song});
    for (int i = 1; i < 500; ++i)
        QFile::copy(song, album + QStringLiteral("/%1.mp3").arg(i, 3, 10, QLatin1Char('0')));
    touch(dir.filePath("MyMusic.xml"), "<?xml version=\"1.0\"?><Quillotone><Folder Path=\"" + album.toUtf8() + "\"/></Quillotone>");
    pointMusicFolderAt(dir, dir.filePath("Music"));
    frmMyMusic2 window;
    window.Show(false);
    QTreeWidget* folders = window.findChild<QTreeWidget*>("tvwFolders");
    QTreeWidgetItem* node = folders->topLevelItem(0)->child(0);
    return BenchFigure{MedianMilliseconds(3, [&] {
                           QTest::mouseClick(folders->viewport(), Qt::LeftButton, {}, folders->visualItemRect(node).center());
                       }),
                       "ms"};
});
}  // namespace
