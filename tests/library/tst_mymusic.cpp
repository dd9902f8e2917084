#include "support/MusicGround.h"
#include "core/MainWindow.h"
#include "library/frmMyMusic2.h"
#include "support/DialogAnswerer.h"
#include "support/PulseServer.h"
#include "support/SoundFiles.h"

#include <QTest>
#include <QTreeWidget>
#include <memory>

namespace {
// The library file's text, with "M" standing for the music folder in each Path.
QByteArray libraryText(const MusicGround& ground, QByteArray text)
{
    return text.replace("Path=\"M", "Path=\"" + ground.music().toUtf8());
}

QStringList texts(const QTreeWidgetItem* parent)
{
    QStringList list;
    for (int i = 0; i < parent->childCount(); ++i)
        list << parent->child(i)->text(0);
    return list;
}

// "name=length" for each row of the list.
QStringList rows(QTreeWidget* list)
{
    QStringList shown;
    for (int i = 0; i < list->topLevelItemCount(); ++i)
        shown << list->topLevelItem(i)->text(0) + "=" + list->topLevelItem(i)->text(1);
    return shown;
}

void click(QTreeWidget* view, QTreeWidgetItem* item)
{
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualItemRect(item).center());
}
}  // namespace

class tst_MyMusic : public QObject {
    Q_OBJECT
    std::unique_ptr<PulseServer> pulse;
    std::unique_ptr<MusicGround> ground;
    std::unique_ptr<DialogAnswerer> answerer;
    std::unique_ptr<frmMyMusic2> window;

    QTreeWidget* tree() const { return window->findChild<QTreeWidget*>("tvwFolders"); }
    QTreeWidget* list() const { return window->findChild<QTreeWidget*>("lvwTracks"); }

    void open()
    {
        window = std::make_unique<frmMyMusic2>();
        window->Show(false);
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    }
    // Opens the window on a library of the one folder and clicks it.
    void openOn(const QString& folder)
    {
        QVERIFY(WriteFile(ground->library(), libraryText(*ground, "<?xml version=\"1.0\"?><Quillotone><Folder Path=\"M/" +
                                                                     folder.toUtf8() + "\"/></Quillotone>")));
        open();
        click(tree(), tree()->topLevelItem(0)->child(0));
    }

private slots:
    void initTestCase()
    {
        pulse = std::make_unique<PulseServer>();
        QVERIFY2(pulse->Started(), qPrintable(pulse->Error()));
    }
    void init()
    {
        ground = std::make_unique<MusicGround>();
        answerer = std::make_unique<DialogAnswerer>();
    }
    void cleanup()
    {
        window.reset();
        QVERIFY2(answerer->finishedCleanly(), qPrintable(answerer->problems()));
        answerer.reset();
        ground.reset();
    }

    void tree_showsEachFolderThatIsThereOnce_data()
    {
        QTest::addColumn<QByteArray>("library");
        QTest::addColumn<QStringList>("nodes");
        const QByteArray head = "<?xml version=\"1.0\"?><Quillotone>";
        QTest::addRow("the same folder ten times") << head + QByteArray("<Folder Path=\"M/Album\"/>").repeated(10) + "</Quillotone>"
                                                   << QStringList{"Album"};
        QTest::addRow("a folder that has gone") << head + "<Folder Path=\"M/Gone\"/><Folder Path=\"M/Album\"/></Quillotone>"
                                                << QStringList{"Album"};
        QTest::addRow("in file order") << head + "<Folder Path=\"M/Other\"/><Folder Path=\"M/Album\"/></Quillotone>"
                                       << QStringList{"Other", "Album"};
        QTest::addRow("truncated: the whole entries") << head + "<Folder Path=\"M/Album\"/><Folder Path=\"M/Other\"/><Folder Pa"
                                                      << QStringList{"Album", "Other"};
        QTest::addRow("not XML") << QByteArray("Album\nOther\n") << QStringList{};
        QTest::addRow("empty file") << QByteArray() << QStringList{};
        QTest::addRow("the decline's line") << QByteArray("<?xml version=\"1.0\" ?><Quillotone></Quillotone>\n") << QStringList{};
        QTest::addRow("hand-edited: a relative path, marks, blanks")
            << QByteArray("<?xml version=\"1.0\"?>\n<Quillotone>\n <Folder Path=\"Album\"/>\n <Folder Path=\"M/A &amp; B\"/>\n</Quillotone>")
            << QStringList{"A & B"};
    }
    void tree_showsEachFolderThatIsThereOnce()
    {
        QFETCH(QByteArray, library);
        QFETCH(QStringList, nodes);
        for (const char* folder : {"Album", "Other", "A & B"})
            QDir().mkpath(ground->music() + "/" + folder);
        QVERIFY(WriteFile(ground->library(), libraryText(*ground, library)));
        open();
        QTreeWidgetItem* root = tree()->topLevelItem(0);
        QCOMPARE(tree()->topLevelItemCount(), 1);
        QVERIFY(root->isExpanded());
        QCOMPARE(texts(root), nodes);
        for (int i = 0; i < root->childCount(); ++i)
            QCOMPARE(frmMyMusic2::Key(root->child(i)), ground->music() + "/" + nodes[i]);
    }

    void noLibrary_asksFirst_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QStringList>("nodes");
        QTest::addRow("no: the root alone, and no file") << "imgCancel" << QStringList{};
        QTest::addRow("yes: searched in its own window") << "imgOK" << QStringList{"Album"};
    }
    void noLibrary_asksFirst()
    {
        QFETCH(QString, answer);
        QFETCH(QStringList, nodes);
        ground->songs({"Album/a.mp3"});
        QWidget mainWindow;
        QWidget* cmdOpen = new QWidget(&mainWindow);
        SetMainWindow([&] { return &mainWindow; });
        answerer->answer("frmConfirmSearch", answer);
        // The search shows its count and cancel, and nothing else starts meanwhile.
        if (answer == "imgOK")
            answerer->answer("frmSearching4Music", [&](QWidget*) { QVERIFY(!cmdOpen->isEnabled()); });
        open();
        SetMainWindow({});
        QVERIFY(cmdOpen->isEnabled());
        QCOMPARE(texts(tree()->topLevelItem(0)), nodes);
        QCOMPARE(QFile::exists(ground->library()), !nodes.isEmpty());
        click(tree(), tree()->topLevelItem(0));
        QCOMPARE(list()->topLevelItemCount(), 0);
    }

    void listing_songsAndTheirLengths_data()
    {
        QTest::addColumn<QStringList>("files");  // name=seconds; 0: no sound
        QTest::addColumn<QStringList>("shown");
        QTest::addRow("by name, lower-case endings only")
            << QStringList{"b.mp3=2", "a.wav=3", "D.MP3=2", "e.Wav=2", "notes.txt=0"} << QStringList{"a.wav=0m 03s", "b.mp3=0m 02s"};
        QTest::addRow("a wma shows the length read before it")
            << QStringList{"a.wav=3", "b.wma=2", "c.mp3=65"} << QStringList{"a.wav=0m 03s", "b.wma=0m 03s", "c.mp3=1m 05s"};
        QTest::addRow("wma only: the first value") << QStringList{"a.wma=2", "b.wma=3"} << QStringList{"a.wma=0m 00s", "b.wma=0m 00s"};
        QTest::addRow("a name that starts with a dot, as the search finds it")
            << QStringList{".b.mp3=2", "a.wav=3"} << QStringList{".b.mp3=0m 02s", "a.wav=0m 03s"};
        QTest::addRow("no sound, no dot: the last length")
            << QStringList{"a.wav=4", "b.mp3=0", "cmp3=0"} << QStringList{"a.wav=0m 04s", "b.mp3=0m 04s", "cmp3=0m 04s"};
    }
    void listing_songsAndTheirLengths()
    {
        QFETCH(QStringList, files);
        QFETCH(QStringList, shown);
        for (const QString& file : files) {
            const QString path = ground->music() + "/Album/" + file.section('=', 0, 0);
            const int seconds = file.section('=', 1).toInt();
            if (seconds == 0 || path.endsWith("wma"))
                QVERIFY(WriteFile(path, "not a sound"));
            else
                QVERIFY(!MakeTone(path, seconds).isEmpty());
        }
        openOn("Album");
        QCOMPARE(rows(list()), shown);
        QCOMPARE(frmMyMusic2::Key(list()->topLevelItem(0)), ground->music() + "/Album/" + shown[0].section('=', 0, 0));
    }

    void leaving_data()
    {
        QTest::addColumn<bool>("select");
        QTest::addColumn<QString>("control");
        QTest::addColumn<bool>("shown");
        QTest::addColumn<bool>("loaded");
        QTest::addRow("grab with nothing selected") << false << "imgGrab" << true << true;
        QTest::addRow("close box while playing") << true << "lblClose" << false << false;
    }
    void leaving()
    {
        QFETCH(bool, select);
        QFETCH(QString, control);
        QFETCH(bool, shown);
        QFETCH(bool, loaded);
        MakeTone(ground->music() + "/Album/a.mp3", 6);
        openOn("Album");
        if (select) {
            list()->setCurrentItem(list()->topLevelItem(0));
            window->PlaySelected();
            QVERIFY(window->Playing());
        }
        QTest::mouseClick(window->findChild<QWidget*>(control), Qt::LeftButton);
        QVERIFY(window->Tag.isEmpty());
        QCOMPARE(window->isVisible(), shown);
        QCOMPARE(window->IsLoaded(), loaded);
    }

    void playing_followsTheSelection()
    {
        for (const char* name : {"a.mp3", "b.mp3", "c.mp3"})
            MakeTone(ground->music() + "/Album/" + name, 5);
        openOn("Album");
        QTest::mouseClick(window->findChild<QWidget*>("cmdNext"), Qt::LeftButton);  // nothing selected: nothing to follow
        QVERIFY(list()->selectedItems().isEmpty());
        list()->setCurrentItem(list()->topLevelItem(1));
        window->PlaySelected();
        QCOMPARE(window->PlayingIndex(), 1);
        QTest::mouseClick(window->findChild<QWidget*>("cmdNext"), Qt::LeftButton);
        QCOMPARE(window->PlayingIndex(), 2);
        QTest::mouseClick(window->findChild<QWidget*>("cmdNext"), Qt::LeftButton);  // past the end: stays
        QCOMPARE(window->PlayingIndex(), 2);
        QTest::mouseClick(window->findChild<QWidget*>("cmdPrev"), Qt::LeftButton);
        QCOMPARE(window->PlayingIndex(), 1);
        QTest::mouseClick(window->findChild<QWidget*>("cmdStop"), Qt::LeftButton);
        QVERIFY(!window->Playing());
        QTest::mouseClick(window->findChild<QWidget*>("cmdNext"), Qt::LeftButton);  // stopped: moves, stays quiet
        QCOMPARE(list()->currentItem(), list()->topLevelItem(2));
        QVERIFY(!window->Playing());
    }

    void playing_aSongThatDoesNotOpenSaysSo()
    {
        QVERIFY(WriteFile(ground->music() + "/Album/a.mp3", "not a sound"));
        openOn("Album");
        list()->setCurrentItem(list()->topLevelItem(0));
        answerer->answer("frmInvalidFileFormat", "imgOK");
        QTest::keyClick(list(), Qt::Key_Return);
        QVERIFY(answerer->allAnswered());
    }
};

QTEST_MAIN(tst_MyMusic)
#include "tst_mymusic.moc"
