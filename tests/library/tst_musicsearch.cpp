#include "support/MusicGround.h"
#include "library/CMusicSearch.h"
#include "library/LibraryFile.h"
#include "library/frmSearching4Music.h"
#include "platform/SearchWorks.h"
#include "support/DialogAnswerer.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QSignalSpy>
#include <QStorageInfo>
#include <QTest>
#include <QTimer>
#include <memory>

namespace {
// "Album" is a folder under the music folder, "=x" the path x as it stands, "." the music folder itself.
QStringList absolute(const MusicGround& ground, const QStringList& folders)
{
    QStringList paths;
    for (const QString& f : folders)
        paths << (f.startsWith('=') ? f.mid(1) : f == "." ? ground.music() : ground.music() + "/" + f);
    return paths;
}

QStringList numbered(const QString& folder, int count)
{
    QStringList files;
    for (int i = 0; i < count; ++i)
        files << QStringLiteral("%1/%2.mp3").arg(folder).arg(i, 4, 10, QLatin1Char('0'));
    return files;
}
}  // namespace

class tst_MusicSearch : public QObject {
    Q_OBJECT
    std::unique_ptr<MusicGround> ground;
    std::unique_ptr<DialogAnswerer> answerer;

private slots:
    void init()
    {
        ground = std::make_unique<MusicGround>();
        answerer = std::make_unique<DialogAnswerer>();
    }
    void cleanup()
    {
        QVERIFY2(answerer->finishedCleanly(), qPrintable(answerer->problems()));
        answerer.reset();
        ground.reset();
    }

    void start_recordsTheFolderOfEachSongFound_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QStringList>("links");  // name, target
        QTest::addColumn<QByteArray>("before");  // the library file before; empty: none
        QTest::addColumn<QStringList>("folders");
        const QByteArray one = "<?xml version=\"1.0\"?><Quillotone><Folder Path=\"/elsewhere\"/></Quillotone>";
        QTest::addRow("no songs") << QStringList{"notes.txt", "a.mp3.txt"} << QStringList{} << QByteArray() << QStringList{};
        QTest::addRow("three songs in a folder: three entries")
            << QStringList{"Album/a.mp3", "Album/b.wav", "Album/c.wma", "Album/cover.jpg"} << QStringList{} << QByteArray()
            << QStringList{"Album", "Album", "Album"};
        QTest::addRow("apostrophes left out") << QStringList{"Rock 'n' Roll/a.mp3"} << QStringList{} << QByteArray()
                                              << QStringList{"Rock n Roll"};
        QTest::addRow("any case, any depth, in the folder itself")
            << QStringList{"TOP.MP3", "Sub/deeper/x.Wav"} << QStringList{} << QByteArray() << QStringList{".", "Sub/deeper"};
        QTest::addRow("an existing library is appended to") << QStringList{"Album/a.mp3"} << QStringList{} << one
                                                            << QStringList{"=/elsewhere", "Album"};
        QTest::addRow("the decline's empty library is appended to")
            << QStringList{"Album/a.mp3"} << QStringList{} << QByteArray("<?xml version=\"1.0\" ?><Quillotone></Quillotone>\n")
            << QStringList{"Album"};
        QTest::addRow("links to folders are not walked: no loop")
            << QStringList{"Album/a.mp3"} << QStringList{"Album/loop", "..", "Link", "Album"} << QByteArray()
            << QStringList{"Album"};
        QTest::addRow("a link to a song is a song") << QStringList{"Album/a.mp3"} << QStringList{"Other/b.mp3", "../Album/a.mp3"}
                                                    << QByteArray() << QStringList{"Album", "Other"};
    }
    void start_recordsTheFolderOfEachSongFound()
    {
        QFETCH(QStringList, files);
        QFETCH(QStringList, links);
        QFETCH(QByteArray, before);
        QFETCH(QStringList, folders);
        ground->songs(files);
        for (int i = 0; i < links.size(); i += 2) {
            QDir().mkpath(QFileInfo(ground->music() + "/" + links[i]).path());
            QVERIFY(QFile::link(links[i + 1], ground->music() + "/" + links[i]));
        }
        if (!before.isEmpty())
            QVERIFY(WriteFile(ground->library(), before));

        CMusicSearch search;
        QSignalSpy counts(&search, &CMusicSearch::FileCount);
        search.Start(1);

        QCOMPARE(ground->libraryPaths(), absolute(*ground, folders));
        const int songs = static_cast<int>(folders.size() - (before.contains("elsewhere") ? 1 : 0));
        QCOMPARE(counts.size(), songs);
        if (songs > 0)
            QCOMPARE(counts.last(), QVariantList({QStringLiteral("%1 song(s)").arg(songs), songs}));
        if (folders.isEmpty())
            QCOMPARE(ReadFile(ground->library()), kSearchEmptyLibrary.toUtf8() + "\n");
    }

    void start_writesOneLineWithNoAddedSpace()
    {
        ground->songs({"Album One/a.mp3", "Album Two/b.mp3"});
        CMusicSearch().Start(1);
        const QString m = ground->music();
        QCOMPARE(QString::fromUtf8(ReadFile(ground->library())),
                 "<?xml version=\"1.0\"?><Quillotone><Folder Path=\"" + m + "/Album One\"/><Folder Path=\"" + m +
                     "/Album Two\"/></Quillotone>\n");
    }

    void start_savesEveryFiftyAndACancelKeepsAllFound()
    {
        ground->songs(numbered("Many", 150));
        CMusicSearch search;
        QMap<int, int> onDisk;  // find -> entries in the file just after it
        connect(&search, &CMusicSearch::FileCount, this, [&](const QString&, int n) {
            if (n == 49 || n == 50 || n == 99 || n == 100)
                onDisk[n] = static_cast<int>(ground->libraryPaths().size());
            if (n == 120)
                search.CancelTheSearch();
        });
        QSignalSpy counts(&search, &CMusicSearch::FileCount);
        search.Start(1);
        QCOMPARE(onDisk, (QMap<int, int>{{49, 0}, {50, 50}, {99, 50}, {100, 100}}));
        QVERIFY(counts.size() >= 120 && counts.size() < 150);
        QCOMPARE(ground->libraryPaths().size(), counts.size());
    }

    void damagedLibrary_isKeptAndTheSearchGoesOn_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<bool>("complaint");
        QTest::addColumn<QStringList>("folders");
        QTest::addRow("empty file") << QByteArray() << true << QStringList{"Album"};
        QTest::addRow("truncated") << QByteArray("<?xml version=\"1.0\"?><Quillotone><Folder Path=\"/a\"/><Folder Path=\"/b\"/><Fol")
                                   << true << QStringList{"=/a", "=/b", "Album"};
        QTest::addRow("not XML") << QByteArray("my songs:\n/home/x\n") << true << QStringList{"Album"};
        QTest::addRow("hand-edited, odd paths")
            << QByteArray("<?xml version=\"1.0\"?>\n<Quillotone>\n  <Folder Path=\"relative/dir\"/>\n"
                          "  <Folder Path=\"/a &amp; &lt;b&gt;\"/>\n</Quillotone>\n")
            << false << QStringList{"=relative/dir", "=/a & <b>", "Album"};
    }
    void damagedLibrary_isKeptAndTheSearchGoesOn()
    {
        QFETCH(QByteArray, before);
        QFETCH(bool, complaint);
        QFETCH(QStringList, folders);
        ground->songs({"Album/a.mp3"});
        QVERIFY(WriteFile(ground->library(), before));
        if (complaint)
            answerer->answer("MsgBox", "OK");
        CMusicSearch().Start(1);
        if (complaint)
            QVERIFY(answerer->seen.value(0).text.endsWith(" [EnsureXMLDocExists]"));
        QCOMPARE(ground->libraryPaths(), absolute(*ground, folders));
        // Nothing of an unreadable file is lost: it stands aside as it was.
        QCOMPARE(QFile::exists(ground->library() + ".unreadable"), complaint && !before.isEmpty());
        if (complaint && !before.isEmpty())
            QCOMPARE(ReadFile(ground->library() + ".unreadable"), before);
    }

    void unwritableLibrary_saysSoAndEnds()
    {
        ground->songs({"Album/a.mp3"});
        gstrMyMusicPath = ground->programFolder() + "/missing/MyMusic.xml";
        answerer->answer("MsgBox", "OK").answer("MsgBox", "OK");
        CMusicSearch().Start(1);
        QCOMPARE(answerer->seen.size(), 2);
        QVERIFY(answerer->seen[0].text.endsWith(" [EnsureXMLDocExists]"));
        QVERIFY(answerer->seen[1].text.startsWith("Unexpected error searching for music: "));
        QVERIFY(!gbSearchRunning);
    }

    void manyFolders_deepAndWide()
    {
        for (int i = 0; i < 10000; ++i)
            QDir().mkpath(ground->music() + QStringLiteral("/wide/%1").arg(i));
        const QString deep = QStringLiteral("d/").repeated(1500);
        ground->songs({"top.mp3", deep + "bottom.mp3", QStringLiteral("wide/9999/x.wma")});
        CMusicSearch().Start(1);
        QCOMPARE(ground->libraryPaths(), absolute(*ground, {".", deep.chopped(1), "wide/9999"}));
    }

    void stopSearch_endsTheFindsAndFinishes()
    {
        ground->songs(numbered("Many", 600));
        SearchWorks works;
        works.Masks().Add("*.mp3");
        works.Folders().Add(ground->music());
        QSignalSpy finished(&works, &SearchWorks::SearchFinished);
        int afterStop = 0;
        bool stopped = false;
        connect(&works, &SearchWorks::FileFound, this, [&] {
            afterStop += stopped;
            if (!stopped && works.FoundFiles().size() == 10) {
                works.StopSearch();
                stopped = true;
            }
        });
        QVERIFY(works.StartSearch(true));
        QVERIFY(finished.wait(10000));
        QCOMPARE(afterStop, 0);
        QCOMPARE(works.FoundFiles().size(), 10);
        QVERIFY(!finished.wait(200));  // once
    }

    void allDrives_areTheLocalFileSystems()
    {
        const QStringList roots = SearchWorks::LocalFileSystemRoots();
        QVERIFY(roots.contains(QStorageInfo(ground->root()).rootPath()));
        QVERIFY(!roots.contains("/proc"));
        QVERIFY(!roots.contains("/sys"));
    }

    // The window: it starts by itself, counts, and goes when the search ends.
    void frmSearching4Music_runsAndCancels_data()
    {
        QTest::addColumn<QString>("control");  // what is pressed once songs are coming in
        QTest::addColumn<QString>("answer");   // to the question of lblCancel
        QTest::addColumn<bool>("whole");
        QTest::addRow("left alone") << QString() << QString() << true;
        QTest::addRow("imgCancel stops at once") << "imgCancel" << QString() << false;
        QTest::addRow("lblCancel, yes") << "lblCancel" << "Yes" << false;
        QTest::addRow("lblCancel, no") << "lblCancel" << "No" << true;
    }
    void frmSearching4Music_runsAndCancels()
    {
        QFETCH(QString, control);
        QFETCH(QString, answer);
        QFETCH(bool, whole);
        ground->songs(numbered("Many", 120));
        QTimer watch;
        QString counted;
        answerer->answer("frmSearching4Music", [&](QWidget* window) {
            connect(&watch, &QTimer::timeout, window, [&, window] {
                counted = window->findChild<QLabel*>("lblCount")->text();
                if (counted.section(" ", 0, 0).toInt() < 5 || control.isEmpty())
                    return;
                watch.stop();
                if (!answer.isEmpty())
                    answerer->answer("MsgBox", answer);
                QTest::mouseClick(window->findChild<QWidget*>(control), Qt::LeftButton);
            });
            watch.start(20);
        });
        frmSearching4Music window;
        window.Show(true);
        QVERIFY(!window.IsLoaded());
        QVERIFY(!gbSearchRunning);
        const int entries = static_cast<int>(ground->libraryPaths().size());
        QVERIFY2(whole ? entries == 120 : entries >= 5 && entries < 120, qPrintable(QString::number(entries)));
        QVERIFY(counted.endsWith(" song(s)"));
    }

    void frmSearching4Music_cancelledBeforeItStarts()
    {
        ground->songs({"Album/a.mp3"});
        answerer->answer("frmSearching4Music", "imgCancel");
        frmSearching4Music window;
        window.Show(true);
        QVERIFY(!QFile::exists(ground->library()));
    }
};

QTEST_MAIN(tst_MusicSearch)
#include "tst_musicsearch.moc"
