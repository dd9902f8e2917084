#include "core/globals.h"
#include "cd/CDManager.h"
#include "cd/frmRipCD.h"
#include "editing/frmMain.h"
#include "platform/AudioEditor2.h"
#include "platform/CDSource.h"
#include "platform/NCTAudioCDGrabber2.h"
#include "platform/SoundOutput.h"
#include "skin/CPictureButton.h"
#include "skin/ControlTag.h"
#include "support/CddbServer.h"
#include "support/DialogAnswerer.h"
#include "support/DiscImage.h"
#include "support/Files.h"
#include "support/MainWindowFixture.h"
#include "support/PulseServer.h"
#include "support/QuietOffscreen.h"
#include "support/SoundFiles.h"
#include "support/TestGround.h"

#include <QTest>
#include <QTreeWidget>
#include <memory>

// The Rip button, as the user meets it: with no disc, and with a disc whose
// track ends up in the editor. Then every Play of the program on a machine
// without sound output.
class tst_RipRoad : public QObject {
    Q_OBJECT
    std::unique_ptr<PulseServer> pulse;
    std::unique_ptr<TestGround> ground;
    std::unique_ptr<MainWindowFixture<frmMain>> window;
    std::unique_ptr<DiscImage> disc;
    std::unique_ptr<CddbServer> cddb;
    frmMain* form = nullptr;

    QString status() { return form->findChild<QLabel*>("lblSoundFile")->text(); }

private slots:
    void initTestCase()
    {
        QuietOffscreenPlugin();
        pulse = std::make_unique<PulseServer>();
        QVERIFY2(pulse->Started(), qPrintable(pulse->Error()));
    }
    void init()
    {
        ground = std::make_unique<TestGround>();
        window = std::make_unique<MainWindowFixture<frmMain>>(MainForm, DropMainForm);
        disc = std::make_unique<DiscImage>(ground->root(), QList<double>{4.0, 5.0});
        cddb = std::make_unique<CddbServer>();
        cddb->know(disc->discId(), disc->offsets(), disc->discSeconds(), "Band", "Album", {"Intro", "Hook"});
        freeDBServer() = {"127.0.0.1", cddb->port()};
        form = &window->Load();
    }
    void cleanup()
    {
        window.reset();
        delete gobjCDManager;
        gobjCDManager = nullptr;
        freeDBServer() = FreeDBServer();
        SetCDImage({});
        form = nullptr;
        ground.reset();
    }

    // Straight away, with no list and no name lookup: a disc of data alone
    // is no audio CD.
    void noAudioCD_data()
    {
        QTest::addColumn<QString>("image");
        QTest::addRow("no disc") << "nothing.cue";
        QTest::addRow("a data disc") << "data";
    }
    void noAudioCD()
    {
        QFETCH(QString, image);
        SetCDImage(image == "data" ? DiscImage::MakeDataDisc(ground->root()) : ground->root() + "/" + image);
        DialogAnswerer answers;
        answers.answer("frmInsertCD", "imgOK");
        emit form->Button("cmdRip")->Released();
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        QVERIFY(cddb->commands.isEmpty());
        QCOMPARE(status(), QString("Select a sound file or rip a CD..."));
        QVERIFY(form->Button("cmdRip")->isEnabled());
    }

    void ripIntoEditor()
    {
        SetCDImage(disc->cue());
        DialogAnswerer answers;
        answers.answer("frmRipCD", [](QWidget* window) {
            auto* list = window->findChild<QTreeWidget*>("lvwTracks");
            list->setCurrentItem(list->topLevelItem(1));
            emit window->findChild<CPictureButton*>("cmdRipIt")->Released();
        });
        answers.answer("frmRipping", [](QWidget*) {});
        emit form->Button("cmdRip")->Released();
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        QCOMPARE(status(), QString("2: Hook"));
        const QString path = ControlTag(form->findChild<QObject*>("lblSoundFile"));
        QVERIFY(path.endsWith(".mp3") && QFileInfo(path).isFile());
        // The editor holds the whole track.
        QVERIFY(std::abs(form->AudioEditor21->TotalSamples() - disc->sectors(1) * 588) <= 1152);
    }

    // Last: it takes the sound server's output away for the rest of the run.
    // Each Play says so, and nothing turns to playing.
    void playWithoutSoundOutput_data()
    {
        QTest::addColumn<QString>("where");
        QTest::addRow("CD window") << "cmdRip";
        QTest::addRow("My Music preview") << "cmdMyMusic";
        QTest::addRow("editor") << "cmdPlay";
    }
    void playWithoutSoundOutput()
    {
        QFETCH(QString, where);
        pulse->UnplugDevices();
        QTRY_VERIFY_WITH_TIMEOUT(!SoundOutputAvailable(), 10000);
        const QString song = MakeTone(ground->tempFolder() + "/song.wav", 2.0);
        SetCDImage(disc->cue());
        QVERIFY(WriteFile(gstrMyMusicPath, "<?xml version=\"1.0\"?><Quillotone><Folder Path=\"" +
                                               ground->tempFolder().toUtf8() + "\"/></Quillotone>"));
        DialogAnswerer answers;
        if (where == "cmdRip") {
            answers.answer("frmRipCD", [](QWidget* window) {
                auto* list = window->findChild<QTreeWidget*>("lvwTracks");
                list->setCurrentItem(list->topLevelItem(0));
                emit window->findChild<CPictureButton*>("cmdPlay")->Released();
                QVERIFY(!list->topLevelItem(0)->font(0).bold());
                emit window->findChild<CPictureButton*>("cmdCancel")->Released();
            });
        } else if (where == "cmdMyMusic") {
            answers.answer("frmMyMusic2", [](QWidget* window) {
                auto* tree = window->findChild<QTreeWidget*>("tvwFolders");
                emit tree->itemClicked(tree->topLevelItem(0)->child(0), 0);
                auto* list = window->findChild<QTreeWidget*>("lvwTracks");
                list->topLevelItem(0)->setSelected(true);
                emit window->findChild<CPictureButton*>("cmdPlay")->Released();
                emit window->findChild<CPictureButton*>("imgCancel")->Released();
            });
        } else {
            form->LoadSoundFile(song);
        }
        answers.answer("frmNoSoundOutput", "imgOK");
        emit form->Button(where)->Released();
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        QVERIFY(!form->AudioEditor21->IsPlaying());
    }
};

QTEST_MAIN(tst_RipRoad)
#include "tst_riproad.moc"
