#include "core/globals.h"
#include "core/modCommon.h"
#include "editing/EditorActions.h"
#include "editing/frmMain.h"
#include "editing/frmZoomEdit.h"
#include "platform/AudioEditor2.h"
#include "support/MainWindowFixture.h"
#include "support/QuietOffscreen.h"
#include "support/SongMaker.h"
#include "support/SoundFiles.h"
#include "support/SoundTestCase.h"
#include "support/TakeRecorder.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <memory>

// The editor's keys and context menu through the real windows, played on a
// private sound server.
class tst_EditorActions : public SoundTestCase {
    Q_OBJECT

    // Each case makes the main window on its ground, and drops it first.
    struct Window : MainWindowFixture<frmMain> {
        Window() : MainWindowFixture<frmMain>(MainForm, DropMainForm)
        {
            static const bool quiet = (QuietOffscreenPlugin(), true);
            Q_UNUSED(quiet);
        }
    };

    static void trigger(AudioEditor2* editor, const QString& text)
    {
        for (QAction* action : editor->findChild<QMenu*>("mnuEditor")->actions()) {
            if (action->text() == text)
                return action->trigger();
        }
        QFAIL(qPrintable("no entry " + text));
    }
    // The main window's editor, or a zoom window's once it has opened the file.
    AudioEditor2* editorOf(frmMain& form, const QString& which, const QString& song, std::unique_ptr<frmZoomEdit>& zoom)
    {
        form.LoadSoundFile(song);
        if (which == "main")
            return form.AudioEditor21;
        zoom = std::make_unique<frmZoomEdit>();
        zoom->Load();
        zoom->SetFile(song);
        if (!QTest::qWaitFor([&] { return zoom->mbReady; }, 10000))
            return nullptr;
        return zoom->AudioEditor21;
    }

private slots:
    void longestToneSeconds_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("limit");
        QTest::addColumn<double>("seconds");
        QTest::addRow("AMR, no setting: 150000 bytes") << "AMR Narrowband" << "" << 93.75;
        QTest::addRow("AMR wideband, 100 KB") << "AMR Wideband" << "100 KB" << 102400 / 2550.0;
        QTest::addRow("MP3, 150 KB") << "MP3" << "150 KB" << 51.2;
        QTest::addRow("WAV, 500 KB") << "WAV" << "500 KB" << 16.0;
        QTest::addRow("QCELP counts as the estimate") << "QCELP" << "50 KB" << 32.0;
        QTest::addRow("an unknown word is AMR") << "Mp3" << "200 KB" << 128.0;
        QTest::addRow("unlimited") << "WAV" << "Unlimited" << 30.0;
    }
    void longestToneSeconds()
    {
        QFETCH(QString, format);
        QFETCH(QString, limit);
        QFETCH(double, seconds);
        QCOMPARE(LongestToneSeconds(format, limit), seconds);
    }

    // Space plays the marked part and stops it; the best part is marked at
    // the format's length, where the chorus first comes.
    void keysAndBestPart_data()
    {
        QTest::addColumn<QString>("which");
        QTest::addRow("main window") << "main";
        QTest::addRow("zoom window") << "zoom";
    }
    void keysAndBestPart()
    {
        QFETCH(QString, which);
        gstrPreferredFormat = "WAV";
        SaveAppSetting("MaxToneSize", "500 KB", kSettings);  // 16 s of wave
        const QString song = MakeSong(scratch("Pop Song.mp3"), PopSongForm(40));
        QVERIFY(!song.isEmpty());
        Window window;
        std::unique_ptr<frmZoomEdit> zoom;
        AudioEditor2* editor = editorOf(window.Load(), which, song, zoom);
        QVERIFY(editor);
        const int rate = editor->SampleRate();
        QWidget* labels = which == "main" ? static_cast<QWidget*>(&MainForm()) : zoom.get();

        trigger(editor, "Find the best part");
        QVERIFY2(std::abs(editor->SelectionStart() - 40 * rate) <= 2 * rate, qPrintable(QString::number(editor->SelectionStart())));
        QVERIFY(std::abs(editor->SelectionEnd() - editor->SelectionStart() - 16 * rate) <= rate / 100);
        QTRY_COMPARE(labels->findChild<QLabel*>("lblToneLength")->text(), QString("0m 16s"));

        QTest::keyClick(editor, Qt::Key_Space);
        QVERIFY(editor->IsPlaying());
        QTRY_VERIFY_WITH_TIMEOUT(editor->PlayPosition() > editor->SelectionStart(), 15000);
        QTest::keyClick(editor, Qt::Key_Space);
        QVERIFY(!editor->IsPlaying());
        QTest::keyClick(editor, Qt::Key_Right, Qt::ShiftModifier);  // the cursor is nearer the start
        QVERIFY(std::abs(editor->SelectionEnd() - editor->SelectionStart() - 15 * rate) <= rate / 100);
        if (zoom)
            zoom->Unload();
    }

    // The marked part converted to the phone's format, with the
    // conversion's shaping, and played: narrowband AMR leaves a 6 kHz
    // whistle out and keeps the 500 Hz tone.
    void hearAsPhone_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<bool>("marked");
        QTest::addColumn<QString>("message");  // the window shown instead of sound
        QTest::addRow("AMR narrowband is heard narrow") << "AMR Narrowband" << true << "";
        QTest::addRow("QCELP is not made here") << "QCELP" << true << "frmGenericOKDialog";
        QTest::addRow("nothing marked") << "AMR Narrowband" << false << "frmToneNotTrimmed";
    }
    void hearAsPhone()
    {
        QFETCH(QString, format);
        QFETCH(bool, marked);
        QFETCH(QString, message);
        gstrPreferredFormat = format;
        const QString low = MakeTone(scratch("low.wav"), 8.0, 500), high = MakeTone(scratch("high.wav"), 8.0, 6000);
        const QString both = scratch("both.wav");
        QVERIFY(RunTool("ffmpeg", {"-v", "error", "-y", "-i", low, "-i", high, "-filter_complex", "amix=inputs=2", both}));
        Window window;
        frmMain& form = window.Load();
        form.LoadSoundFile(both);
        if (marked)
            form.AudioEditor21->MarkPart(44100, 6 * 44100);
        if (!message.isEmpty()) {
            answerer->answer(message, "Enter");
            trigger(form.AudioEditor21, "Hear it as the phone will");
            QVERIFY2(answerer->finishedCleanly(), qPrintable(answerer->problems()));
            if (format == "QCELP")
                QVERIFY(answerer->seen.first().text.contains("cannot be made here"));
            return;
        }
        TakeRecorder take(scratch("heard.wav"));
        QSignalSpy recorded(&take.recorder, &NCTAudioRecord2::Timer);
        trigger(form.AudioEditor21, "Hear it as the phone will");
        QCOMPARE(Probe(GetTempFolder() + "phonecheck.amr").codec, QString("amr_nb"));
        QTRY_VERIFY_WITH_TIMEOUT(!recorded.isEmpty() && recorded.last().at(0).toLongLong() >= 44100 * 7, 20000);
        take.Stop();
        const std::vector<int16_t> heard = DecodeMono(scratch("heard.wav"), 44100);
        bool narrow = false;
        for (double t = 0; t + 1.0 <= heard.size() / 44100.0 && !narrow; t += 0.25)
            narrow = PeakBetween(heard, 44100, t, t + 1.0) > 1000 && std::abs(CrossingsPerSecond(heard, 44100, t, t + 1.0) - 1000) < 60;
        QVERIFY(narrow);
    }
};

QTEST_MAIN(tst_EditorActions)
#include "tst_editoractions.moc"
