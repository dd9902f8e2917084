#include "core/globals.h"
#include "cd/CDManager.h"
#include "cd/frmRipCD.h"
#include "editing/frmMain.h"
#include "platform/AudioEditor2.h"
#include "platform/CDSource.h"
#include "platform/NCTAudioCDGrabber2.h"
#include "skin/CPictureButton.h"
#include "skin/ControlTag.h"
#include "support/CddbServer.h"
#include "support/DialogAnswerer.h"
#include "support/DiscImage.h"
#include "support/MainWindowFixture.h"
#include "support/QuietOffscreen.h"
#include "support/TestGround.h"

#include <QTest>
#include <QTreeWidget>
#include <memory>

// The Rip button, as the user meets it: with no disc, and with a disc whose
// track ends up in the editor.
class tst_RipRoad : public QObject {
    Q_OBJECT
    std::unique_ptr<TestGround> ground;
    std::unique_ptr<MainWindowFixture<frmMain>> window;
    std::unique_ptr<DiscImage> disc;
    std::unique_ptr<CddbServer> cddb;
    frmMain* form = nullptr;

    QString status() { return form->findChild<QLabel*>("lblSoundFile")->text(); }

private slots:
    void initTestCase() { QuietOffscreenPlugin(); }
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

    void noDisc()
    {
        SetCDImage(ground->root() + "/nothing.cue");
        DialogAnswerer answers;
        answers.answer("frmInsertCD", "imgOK");
        emit form->Button("cmdRip")->Released();
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
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
};

QTEST_MAIN(tst_RipRoad)
#include "tst_riproad.moc"
