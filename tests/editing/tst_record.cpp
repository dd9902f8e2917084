#include "core/globals.h"
#include "core/seams.h"
#include "editing/CAudioRecorder.h"
#include "editing/frmMain.h"
#include "platform/CDSource.h"
#include "platform/AudioEditor2.h"
#include "platform/NCTAmpBar2.h"
#include "platform/NCTAudioPlayer2.h"
#include "skin/CPictureButton.h"
#include "support/Files.h"
#include "support/MainWindowFixture.h"
#include "support/QuietOffscreen.h"
#include "support/SoundFiles.h"
#include "support/SoundTestCase.h"
#include "support/TakeRecorder.h"

#include <QDir>
#include <QMediaDevices>
#include <memory>
#include <QSignalSpy>
#include <csignal>
#include <sys/resource.h>

// The record road through the real sound server: what plays into the null
// sink comes back from its monitor as the take.
class tst_Record : public SoundTestCase {
    Q_OBJECT
    frmMain* form = nullptr;
    double elapsed = 0;  // the take's last reported time

    // The window lives as long as what this gives back.
    std::unique_ptr<MainWindowFixture<frmMain>> openMainWindow()
    {
        static const bool quiet = (QuietOffscreenPlugin(), true);
        Q_UNUSED(quiet);
        auto window = std::make_unique<MainWindowFixture<frmMain>>(MainForm, DropMainForm);
        form = &window->Load();
        elapsed = 0;
        connect(form->mobjRecord.get(), &CAudioRecorder::Timer, this, [this](double s) { elapsed = s; });
        return window;
    }
    void release(const char* name) { emit form->Button(name)->Released(); }
    QString text(const char* name) { return form->findChild<QLabel*>(name)->text(); }
    NCTAmpBar2* bar(const char* name) { return form->findChild<NCTAmpBar2*>(name); }
    QString recordings() const { return scratch("qtrecordings"); }
    // Rec arms the window, the second Rec starts the take once frmStartRecording is answered.
    void startTake()
    {
        answerer->answer("frmStartRecording", "imgOK");
        release("cmdRecord");
        release("cmdRecord");
    }
    // Plays a sound file into the null sink; the player must live on until
    // the server has played what it still holds after EndPlay.
    static std::unique_ptr<NCTAudioPlayer2> play(const QString& path)
    {
        NCTAudioFileReader2 reader;
        reader.OpenFile(path, 0, 1);
        auto player = std::make_unique<NCTAudioPlayer2>();
        player->SetFormat(reader.SampleRate(), reader.Channels());
        player->StartArrayPlay();
        player->LoadArray(reader.ReadBlock(player->BytesForMilliseconds(60000)));
        QSignalSpy ended(player.get(), &NCTAudioPlayer2::EndPlay);
        if (player->Status() != 0 || !ended.wait(20000))
            return {};
        return player;
    }

private slots:
    void recordRoad()
    {
        const auto window = openMainWindow();
        const QString tone = MakeTone(scratch("tone.wav"), 3.0, 500);
        release("cmdRecord");
        QVERIFY(form->mbRecordMode && !form->mbRecording);
        release("cmdStop");  // nothing to stop yet
        QVERIFY(form->mbRecordMode);
        answerer->answer("frmStartRecording", "imgOK");
        release("cmdRecord");
        QVERIFY(form->mbRecording && form->mobjRecord->Recording());
        QVERIFY(answerer->allAnswered());
        release("imgStartRecording");  // a second Start asks nothing and the take runs on
        QVERIFY(form->mobjRecord->Recording());

        // At silence the bars rest just above zero; the tone lifts them.
        auto* recorder = form->mobjRecord->findChild<NCTAudioRecord2*>();
        QTRY_VERIFY2_WITH_TIMEOUT(elapsed >= 0.3, qPrintable(QString("status %1, devices %2").arg(recorder->Status()).arg(recorder->DeviceCount())), 10000);
        QCOMPARE(bar("ampbarLeft")->Value(), 2);
        int loudest = 0;
        connect(form->mobjRecord.get(), &CAudioRecorder::Timer, this,
                [&] { loudest = std::max({loudest, bar("ampbarLeft")->Value(), bar("ampbarRight")->Value()}); });
        const auto player = play(tone);
        QVERIFY(player);
        QTRY_COMPARE_WITH_TIMEOUT(bar("ampbarLeft")->Value(), 2, 3000);
        QVERIFY2(loudest >= 50 && loudest <= 80, qPrintable(QString::number(loudest)));  // an eighth of full scale
        QCOMPARE(text("lblSongLength"), QStringLiteral("00m %1s").arg(qRound(elapsed), 2, 10, QChar('0')));

        release("imgStopRecording");
        QVERIFY(!form->mbRecordMode && !form->mbRecording && !form->mobjRecord->Recording());
        const QString take = recordings() + "/recording1.wav";
        QCOMPARE(form->mobjTone->mstrCurrentFile, take);
        QCOMPARE(text("lblSoundFile"), QString("recording1.wav"));
        QVERIFY(form->AudioEditor21->isVisibleTo(form));
        // The take in the editor holds the tone: its length and its pitch.
        const std::vector<int16_t> samples = DecodeMono(take, 44100);
        QCOMPARE(qint64(form->AudioEditor21->TotalSamples()), qint64(samples.size()));
        auto loud = [](int16_t s) { return std::abs(int(s)) > 1000; };
        const auto first = std::find_if(samples.begin(), samples.end(), loud) - samples.begin();
        const auto last = samples.rend() - std::find_if(samples.rbegin(), samples.rend(), loud);
        const double seconds = double(last - first) / 44100;
        QVERIFY2(std::abs(seconds - 3.0) <= 0.1, qPrintable(QString::number(seconds)));
        const double pitch = MedianPitch(samples, 44100, first / 44100.0 + 0.2, last / 44100.0 - 0.2);
        QVERIFY2(std::abs(pitch - 500) <= 10, qPrintable(QString::number(pitch)));

        // A second take is the second file; the first stays.
        elapsed = 0;
        startTake();
        QTRY_VERIFY(elapsed >= 0.3);
        release("cmdStop");
        QCOMPARE(form->mobjTone->mstrCurrentFile, recordings() + "/recording2.wav");
        QVERIFY(QFile::exists(take));
    }

    // Agreeing to record over a trimmed sound is asked once, at Rec: the armed window holds no trim.
    void recordOverATrimAsksOnce()
    {
        const auto window = openMainWindow();
        QVERIFY(form->LoadSoundFile(MakeTone(scratch("song.wav"), 4.0, 500)));
        form->AudioEditor21->SetSelectionStart(44100);
        form->AudioEditor21->SetSelectionEnd(2 * 44100);
        release("cmdTrim");
        QVERIFY(form->mobjTone->mbTrimmed);
        answerer->answer("frmRecordDuringAudio", "imgOK");
        startTake();
        QVERIFY2(answerer->finishedCleanly(), qPrintable(answerer->problems()));
        QVERIFY(form->mobjRecord->Recording() && !form->mobjTone->mbTrimmed);
        QTRY_VERIFY_WITH_TIMEOUT(elapsed >= 0.3, 10000);
        release("cmdStop");
    }

    // Open, CD and My Music leave record mode: a take ends first, and the
    // window is empty, with no sound of before to play or trim.
    void leavingRecordMode_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("opens");  // the window the button opens, answered at once
        QTest::addColumn<QString>("control");
        QTest::addColumn<bool>("take");
        QTest::addRow("Open cancelled, armed") << "cmdOpen" << "CommonDialog1" << "Escape" << false;
        QTest::addRow("Open during a take") << "cmdOpen" << "CommonDialog1" << "Escape" << true;
        QTest::addRow("CD during a take") << "cmdRip" << "frmInsertCD" << "imgOK" << true;
        QTest::addRow("My Music during a take") << "cmdMyMusic" << "frmMyMusic2" << "imgCancel" << true;
    }
    void leavingRecordMode()
    {
        QFETCH(QString, button);
        QFETCH(bool, take);
        const auto window = openMainWindow();
        SetCDImage(scratch("nothing.cue"));  // no disc
        QVERIFY(WriteFile(gstrMyMusicPath, "<?xml version=\"1.0\"?><Quillotone/>"));  // an empty library
        const std::unique_ptr<void, void (*)(void*)> noImage(this, [](void*) { SetCDImage({}); });
        QVERIFY(form->LoadSoundFile(MakeTone(scratch("song.wav"), 3.0, 500)));
        release("cmdRecord");
        if (take) {
            answerer->answer("frmStartRecording", "imgOK");
            release("cmdRecord");
            QTRY_VERIFY_WITH_TIMEOUT(elapsed >= 0.3, 10000);
        }
        QFETCH(QString, opens);
        QFETCH(QString, control);
        answerer->answer(opens, control);
        emit form->Button(qPrintable(button))->Released();
        QVERIFY2(answerer->finishedCleanly(), qPrintable(answerer->problems()));
        QVERIFY(!form->mobjRecord->Recording() && !form->mbRecording && !form->mbRecordMode);
        QVERIFY(!form->mobjTone->HasSound() && form->mobjTone->mstrCurrentFile.isEmpty());
        QCOMPARE(text("lblSoundFile"), QString("Select a sound file or rip a CD..."));
        QVERIFY(form->AudioEditor21->isVisibleTo(form));
    }

    // A take that cannot be kept leaves record mode with a message or the
    // load failure, and never a cut-off file as the tone. The cases that
    // unplug the devices come last.
    void badTakes_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QStringList>("messages");  // window, or "MsgBox:" and its text, in order
        QTest::addColumn<bool>("loaded");
        QTest::addRow("zero samples") << "none" << QStringList{"frmInvalidFileFormat"} << false;
        QTest::addRow("scratch folder not writable") << "folder" << QStringList{"MsgBox:File not found"} << false;
        QTest::addRow("disk fills") << "disk" << QStringList{"MsgBox:Disk full"} << false;
        QTest::addRow("device vanishes") << "vanish" << QStringList{} << true;
        QTest::addRow("no input device") << "nodevice" << QStringList{"frmInvalidFileFormat"} << false;
    }
    void badTakes()
    {
        QFETCH(QString, fault);
        QFETCH(QStringList, messages);
        QFETCH(bool, loaded);
        const auto window = openMainWindow();
        if (fault == "folder") {
            QVERIFY(QDir(recordings()).removeRecursively());
            QVERIFY(QFile(recordings()).open(QIODevice::WriteOnly));  // a file where the folder should be
        }
        if (fault == "nodevice") {
            pulse->UnplugDevices();
            QTRY_VERIFY(QMediaDevices::audioInputs().isEmpty());
        }
        rlimit before{};
        getrlimit(RLIMIT_FSIZE, &before);
        // Put back however this case ends, or the next cases would find the disk full too.
        const std::unique_ptr<rlimit, void (*)(rlimit*)> restore(&before, [](rlimit* r) { setrlimit(RLIMIT_FSIZE, r); });
        if (fault == "disk") {
            std::signal(SIGXFSZ, SIG_IGN);
            rlimit small = before;
            small.rlim_cur = 64 * 1024;
            QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        }
        startTake();
        auto* recorder = form->mobjRecord->findChild<NCTAudioRecord2*>();
        if (fault == "disk" || fault == "vanish")  // past the first full block
            QTRY_VERIFY2_WITH_TIMEOUT(elapsed >= 1.5, qPrintable(QString("status %1 at %2 s").arg(recorder->Status()).arg(elapsed)), 20000);
        if (fault == "vanish")
            QVERIFY(pulse->UnplugDevices());
        setrlimit(RLIMIT_FSIZE, &before);
        static const QHash<QString, QString> buttons{
            {"MsgBox", "OK"}, {"frmInvalidFileFormat", "imgOK"}};
        for (const QString& message : messages)
            answerer->answer(message.section(':', 0, 0), buttons.value(message.section(':', 0, 0)));
        release("imgStopRecording");

        QVERIFY2(answerer->finishedCleanly(), qPrintable(answerer->problems()));
        for (int i = 0; i < messages.size(); ++i) {
            if (messages[i].startsWith("MsgBox"))
                QCOMPARE(answerer->seen.at(i + 1).text, messages[i].section(':', 1));  // after frmStartRecording
        }
        QVERIFY(!form->mbRecordMode && !form->mbRecording && !form->mobjTone->mbBusy);
        QVERIFY(form->Button("cmdOpen")->isEnabled());
        if (loaded) {
            QCOMPARE(form->mobjTone->mstrCurrentFile, recordings() + "/recording1.wav");
            QVERIFY(form->AudioEditor21->TotalSamples() >= 44100);
        } else {
            QVERIFY(form->mobjTone->mstrCurrentFile.isEmpty());
            QCOMPARE(text("lblSoundFile"), QString("Select a sound file or rip a CD..."));
        }
        if (fault == "disk")
            QVERIFY(QDir(recordings()).isEmpty());
    }
};

QTEST_MAIN(tst_Record)
#include "tst_record.moc"
