// The send pipeline's stops against a stand-in host: every road that ends
// before the upload, with what the pipeline asks of the main window on each.
// The end-to-end sends from the real main window are in tst_sendtone.
#include "core/globals.h"
#include "core/modCommon.h"
#include "delivery/SendTone.h"
#include "platform/AudioEditor2.h"
#include "support/DialogAnswerer.h"
#include "support/QuietOffscreen.h"
#include "support/SoundFiles.h"
#include "support/TestGround.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTest>
#include <memory>

namespace {
class FakeHost : public SendToneHost {
public:
    FakeHost()
    {
        window.resize(600, 400);
        editor = new AudioEditor2(&window);
        status = new QLabel(QStringLiteral("song.mp3"), &window);
        lastUrl = new QLabel(&window);
    }

    QWidget* HostWindow() override { return &window; }
    AudioEditor2* HostEditor() override { return editor; }
    QString CurrentFile() const override { return file; }
    bool Trimmed() const override { return trimmed; }
    void SetLoadStage(int32_t stage) override { loadStage = stage; }
    void ClearBusy() override { busyCleared = true; }
    QLabel* SoundFileLabel() override { return status; }
    QObject* LastUrlLabel() override { return lastUrl; }
    void SetStatusText(const QString& text) override { status->setText(text); }
    void CheckToneSize(const QString&, bool& result) override { result = sizeAccepted; }
    void RefreshFreeQuillCount() override { ++refreshes; }

    QWidget window;
    AudioEditor2* editor;
    QLabel* status;
    QLabel* lastUrl;
    QString file;
    bool trimmed = false;
    bool sizeAccepted = true;
    int32_t loadStage = 0;
    bool busyCleared = false;
    int refreshes = 0;
};
}  // namespace

class tst_SendPipeline : public QObject {
    Q_OBJECT
    std::unique_ptr<TestGround> ground;
    QString song;

private slots:
    void initTestCase()
    {
        QuietOffscreenPlugin();
        ground = std::make_unique<TestGround>();
        song = MakeTone(ground->root() + "/song.mp3", 8.0);
        QVERIFY(!song.isEmpty());
    }
    void cleanupTestCase() { ground.reset(); }

    void stopsBeforeTheUpload_data()
    {
        QTest::addColumn<QString>("situation");
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("status");  // the status label afterwards
        QTest::addColumn<int>("loadStage");
        QTest::addColumn<bool>("busyCleared");
        QTest::addColumn<int>("tonesMade");
        QTest::addRow("nothing loaded") << "empty" << "frmNoToneSelected" << "imgOK" << "song.mp3" << 0 << false << 0;
        QTest::addRow("nothing marked") << "unmarked" << "frmToneNotTrimmed" << "imgOK" << "song.mp3" << 0 << false
                                        << 0;
        QTest::addRow("song gone") << "gone" << "frmGenericOKDialog" << "Enter" << "song.mp3" << 0 << false << 0;
        QTest::addRow("pending tone kept") << "pending" << "frmTonePending" << "imgOK" << "song.mp3" << 0 << false
                                           << 0;
        QTest::addRow("too big, not sent") << "big" << "" << "" << "Ready." << 2 << true << 1;
        QTest::addRow("charge declined") << "charge" << "frmCharged" << "imgCancel" << "song.mp3" << 2 << true << 1;
        QTest::addRow("trimmed, quill kept") << "trimmedEmpty" << "frmAboutToUseFreeQuill" << "imgCancel"
                                                        << "song.mp3" << 2 << true << 1;
    }
    void stopsBeforeTheUpload()
    {
        QFETCH(QString, situation);
        QFETCH(QString, window);
        QFETCH(QString, control);
        QDir(ground->programFolder() + "/servercache").removeRecursively();
        SaveAppSetting("CurrentTone", "", kToneData);
        gbUseTunnel = false;
        gintFreeQuills = situation == "charge" ? 0 : 2;
        gstrPreferredFormat = "WAV";

        FakeHost host;
        if (situation != "empty") {
            host.file = situation == "gone" ? ground->root() + "/gone.mp3" : song;
            host.editor->OpenFile(song);
        }
        if (situation == "gone" || situation == "trimmedEmpty") {
            host.trimmed = true;  // the view of a fresh zoom: nothing between its ends
            host.editor->ZoomToRange(0, 0);
        } else if (situation != "unmarked" && situation != "empty") {
            host.editor->SetSelectionStart(44100);
            host.editor->SetSelectionEnd(3 * 44100);
        }
        if (situation == "pending") {
            gbUseTunnel = true;
            SaveAppSetting("CurrentTone", "AB12", kToneData);
        }
        host.sizeAccepted = situation != "big";

        DialogAnswerer answers;
        if (!window.isEmpty())
            answers.answer(window, control);
        SendTone(host);
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        QTEST(host.status->text(), "status");
        QTEST(host.loadStage, "loadStage");
        QTEST(host.busyCleared, "busyCleared");
        QTEST(int(QDir(ground->programFolder() + "/servercache").entryList(QDir::Files).size()), "tonesMade");
        QVERIFY(host.window.isEnabled());
        QCOMPARE(host.refreshes, 0);
        QCOMPARE(gintFreeQuills, int16_t(situation == "charge" ? 0 : 2));
    }
};

QTEST_MAIN(tst_SendPipeline)
#include "tst_sendpipeline.moc"
