#include "core/globals.h"
#include "core/modCommon.h"
#include "core/seams.h"
#include "core/twips.h"
#include "editing/CAudioPlayer.h"
#include "editing/frmMain.h"
#include "platform/AudioEditor2.h"
#include "platform/NCTAmpBar2.h"
#include "platform/NCTSliderB2.h"
#include "skin/CClickLabel.h"
#include "skin/CPictureButton.h"
#include "skin/ControlTag.h"
#include "support/DialogAnswerer.h"
#include "support/Files.h"
#include "support/MainWindowFixture.h"
#include "support/PulseServer.h"
#include "support/QuietOffscreen.h"
#include "support/SoundFiles.h"
#include "support/TestGround.h"

#include <QClipboard>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <memory>

class tst_frmMain : public QObject {
    Q_OBJECT
    std::unique_ptr<PulseServer> pulse;
    std::unique_ptr<TestGround> ground;
    std::unique_ptr<MainWindowFixture<frmMain>> window;
    QString song;  // ten seconds at 44100 Hz
    frmMain* form = nullptr;

    QString text(const char* name) { return form->findChild<QLabel*>(name)->text(); }
    QString tag(const char* name) { return ControlTag(form->findChild<QObject*>(name)); }
    void release(const char* name) { emit form->Button(name)->Released(); }
    AudioEditor2* editor() { return form->AudioEditor21; }
    void select(double from, double to)
    {
        editor()->SetSelectionStart(int32_t(from * 44100));
        editor()->SetSelectionEnd(int32_t(to * 44100));
        QCoreApplication::processEvents();  // the editor tells of marks set in code through the event loop
    }
    QString writeFile(const QString& name, const QByteArray& bytes)
    {
        const QString path = ground->tempFolder() + "/" + name;
        WriteFile(path, bytes);
        return path;
    }

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
        song = MakeTone(ground->root() + "/Some Song.mp3", 10.0);
        QVERIFY(!song.isEmpty());
        form = &window->Load();
    }
    void cleanup()
    {
        window.reset();
        form = nullptr;
        ground.reset();
    }

    void emptyAtLoad()
    {
        QCOMPARE(text("lblSoundFile"), QString("Select a sound file or rip a CD..."));
        // The prompt stands whole on one line.
        const QLabel* status = form->findChild<QLabel*>("lblSoundFile");
        QVERIFY(!status->wordWrap());
        QVERIFY(status->fontMetrics().horizontalAdvance(status->text()) <= status->width());
        QCOMPARE(text("lblSongLength"), QString("00m 00s"));
        QCOMPARE(text("lblToneLength"), QString("0s"));
        QCOMPARE(text("lblToneSize"), QString("0 Kb"));
        QCOMPARE(form->NCTSliderB21->Value(), 32000);
        QVERIFY(form->mstrCurrentFile.isEmpty());
        QVERIFY(!form->findChild<QWidget*>("imgLoading")->isVisible());
        // The login sizes and shows this panel; without it the controls stay bare behind the login.
        QVERIFY(form->findChild<QWidget*>("picLoginBackground"));
        QVERIFY(!form->findChild<QWidget*>("picLoginBackground")->isVisible());
        QVERIFY(QDir(ground->programFolder() + "/servercache").exists());
    }

    void loadThenMeasureTrimAndReset()
    {
        QStringList progress;
        connect(editor(), &AudioEditor2::OnEditorProgress, this, [&] { progress << text("lblSoundFile"); });
        form->LoadSoundFile(song);
        QVERIFY(!progress.isEmpty());
        QVERIFY2(progress.first().startsWith("Loading. Please wait (") && progress.first().endsWith("% complete)"),
                 qPrintable(progress.first()));
        QCOMPARE(text("lblSoundFile"), QString("Some Song.mp3"));
        QCOMPARE(form->findChild<QLabel*>("lblSoundFile")->toolTip(), QString("Some Song"));
        QCOMPARE(tag("lblSoundFile"), song);
        QCOMPARE(form->mstrCurrentFile, song);
        QCOMPARE(text("lblSongLength"), QString("0m 10s"));
        QCOMPARE(text("lblToneLength"), QString("0m 10s"));
        QVERIFY(!form->mbBusy && !form->mbTrimmed);
        QVERIFY(form->Button("cmdSend")->isEnabled());

        select(2.0, 5.0);
        QCOMPARE(text("lblToneLength"), QString("0m 3s"));
        QCOMPARE(text("lblToneSize"), QString("~5Kb"));  // 3 s x 1600 / 1024 = 4.69

        release("cmdTrim");
        QVERIFY(form->mbTrimmed);
        QCOMPARE(form->msngTrimOffset, 2.0f);
        QCOMPARE(editor()->ViewStart(), int32_t(2 * 44100));
        QCOMPARE(editor()->ViewEnd(), int32_t(5 * 44100));
        // The cursor stood at 0, before the trimmed part: it moves to its start.
        QCOMPARE(text("lblCurrentPosition"), QString("00m 00s"));
        editor()->SetPlayPosition(int32_t(4.0 * 44100));
        QCOMPARE(text("lblCurrentPosition"), QString("00m 02s"));  // 4 s less the 2 s offset

        release("cmdReset");
        QVERIFY(!form->mbTrimmed);
        QCOMPARE(form->msngTrimOffset, 0.0f);
        QCOMPARE(editor()->ViewStart(), 0);
        QCOMPARE(editor()->ViewEnd(), editor()->TotalSamples());
        QCOMPARE(editor()->SelectionStart(), 0);
        QCOMPARE(editor()->SelectionEnd(), 0);
        QCoreApplication::processEvents();
        QCOMPARE(text("lblToneLength"), QString("0m 0s"));
        QCOMPARE(text("lblToneSize"), QString("0Kb"));
        QCOMPARE(text("lblCurrentPosition"), QString("00m 00s"));
        QCOMPARE(text("lblSongLength"), QString("0m 10s"));
    }

    void trimRefusesEqualMarks_data()
    {
        QTest::addColumn<bool>("loaded");
        QTest::addColumn<double>("from");
        QTest::addColumn<double>("to");
        QTest::addRow("nothing loaded") << false << 0.0 << 0.0;
        QTest::addRow("no selection") << true << 0.0 << 0.0;
        QTest::addRow("equal marks") << true << 4.0 << 4.0;
    }
    void trimRefusesEqualMarks()
    {
        QFETCH(bool, loaded);
        QFETCH(double, from);
        QFETCH(double, to);
        if (loaded)
            form->LoadSoundFile(song);
        select(from, to);
        DialogAnswerer answers;
        answers.answer("frmToneNotTrimmed", "imgOK");
        release("cmdTrim");
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        QVERIFY(!form->mbTrimmed);
    }

    void trimAcceptsFromZeroAndRepeats()
    {
        form->LoadSoundFile(song);
        select(0.0, 0.4);
        QCOMPARE(text("lblToneLength"), QString("0m 0s"));
        QCOMPARE(text("lblToneSize"), QString("~1Kb"));
        DialogAnswerer answers;
        release("cmdTrim");
        release("cmdTrim");
        QVERIFY(answers.unexpected.isEmpty());
        QVERIFY(form->mbTrimmed);
    }

    void openStartsInTheMusicFolderOrHome_data()
    {
        QTest::addColumn<bool>("musicFolder");
        QTest::addRow("music folder") << true;
        QTest::addRow("no music folder") << false;
    }
    void openStartsInTheMusicFolderOrHome()
    {
        QFETCH(bool, musicFolder);
        const QByteArray home = qgetenv("HOME"), configHome = qgetenv("XDG_CONFIG_HOME");
        const bool hadConfigHome = qEnvironmentVariableIsSet("XDG_CONFIG_HOME");
        const QString fakeHome = ground->root() + "/home";
        QDir().mkpath(fakeHome + (musicFolder ? "/Music" : ""));
        qputenv("HOME", fakeHome.toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", (fakeHome + "/.config").toLocal8Bit());
        QString folder, name = "unread";
        QTimer::singleShot(0, this, [&] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            folder = dialog->directory().absolutePath();
            name = dialog->findChild<QLineEdit*>("fileNameEdit")->text();
            dialog->reject();
        });
        release("cmdOpen");
        qputenv("HOME", home);
        if (hadConfigHome)
            qputenv("XDG_CONFIG_HOME", configHome);
        else
            qunsetenv("XDG_CONFIG_HOME");
        QCOMPARE(folder, musicFolder ? fakeHome + "/Music" : fakeHome);
        QCOMPARE(name, QString());  // no folder name offered as the file to open
        QVERIFY(form->mstrCurrentFile.isEmpty());
    }

    void resetWithNothingLoadedDoesNothing()
    {
        QLabel* length = form->findChild<QLabel*>("lblToneLength");
        release("cmdReset");
        QCOMPARE(length->text(), QString("0s"));
    }

    void badFiles_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addRow("not a sound") << "letter.mp3" << QByteArray("Dear John, this is no song at all.\n").repeated(50);
        QTest::addRow("zero length") << "empty.wav" << QByteArray();
        QTest::addRow("vanished") << "gone.mp3" << QByteArray("-");
    }
    void badFiles()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        form->LoadSoundFile(song);
        QString path = writeFile(name, bytes);
        if (name == "gone.mp3")
            QFile::remove(path);
        DialogAnswerer answers;
        answers.answer("frmInvalidFileFormat", "imgOK").answer("frmInvalidFileFormat", "imgOK");
        form->LoadSoundFile(path);
        QCOMPARE(text("lblSoundFile"), QString("Select a sound file or rip a CD..."));
        QCOMPARE(tag("lblToneLength"), QString("err"));
        QCOMPARE(form->mstrCurrentFile, song);  // the old file stays behind the words
        QVERIFY(form->Button("cmdOpen")->isEnabled() && !form->mbBusy);
        form->LoadSoundFile(path);  // "err" is still there for the next failure
        QCOMPARE(tag("lblToneLength"), QString("err"));
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        form->LoadSoundFile(song);
        QCOMPARE(tag("lblToneLength"), QString("0m 10s"));
        QCOMPARE(text("lblSoundFile"), QString("Some Song.mp3"));
    }

    void playAndStop()
    {
        form->LoadSoundFile(song);
        select(1.0, 3.0);
        release("cmdPlay");
        QVERIFY(form->mbPlaying);
        QTRY_VERIFY(editor()->IsPlaying());
        release("cmdStop");
        QVERIFY(!form->mbPlaying);
        QVERIFY(!editor()->IsPlaying());
        form->mbRecordMode = true;
        release("cmdPlay");
        QVERIFY(!form->mbPlaying);
    }

    void recordPlayerTimeShowsInBothLabels()
    {
        QVERIFY(form->mobjRecordAudioPlayer);
        emit form->mobjRecordAudioPlayer->Timer(75.0);
        QCOMPARE(text("lblCurrentPosition"), QString("01m 15s"));
        QCOMPARE(text("lblSongLength"), QString("01m 15s"));
    }

    void statusToolTip_data()
    {
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("tip");
        QTest::addRow("a.mp3") << "a.mp3" << "a";
        QTest::addRow("a.mpeg stays whole") << "a.mpeg" << "a.mpeg";
        QTest::addRow("short") << "a.b" << "a.b";
        QTest::addRow("only an extension") << ".wav" << "";
        QTest::addRow("words") << "Ready." << "Ready.";
    }
    void statusToolTip()
    {
        QFETCH(QString, status);
        form->SetStatusText(status);
        QCOMPARE(text("lblSoundFile"), status);
        QTEST(form->findChild<QLabel*>("lblSoundFile")->toolTip(), "tip");
    }

    void volumeHotSpots()
    {
        auto* up = form->findChild<CClickLabel*>("lblVolumeUp");
        auto* down = form->findChild<CClickLabel*>("lblVolumeDown");
        QSignalSpy moved(form->NCTSliderB21, &NCTSliderB2::OnVolumeSliderMoved);
        QTest::mousePress(up, Qt::LeftButton);
        QVERIFY(moved.wait(1000));
        QCOMPARE(moved.first().first().toInt(), 35000);
        QTest::mouseRelease(up, Qt::LeftButton);
        QCOMPARE(form->mintVolumeDirection, int16_t(0));
        QCOMPARE(form->NCTSliderB21->Value(), 35000);  // released before the next tick
        QCOMPARE(editor()->Volume(), 35000);           // slider and volume are one to one
        QTest::mousePress(down, Qt::LeftButton);
        QVERIFY(moved.wait(1000));
        QTest::mouseRelease(down, Qt::LeftButton);
        QCOMPARE(form->NCTSliderB21->Value(), 32000);
        form->NCTSliderB21->SetValue(1000000);
        QCOMPARE(form->NCTSliderB21->Value(), NCTSliderB2::kMaximum);
    }

    void windowModes()
    {
        form->mbRecordMode = true;
        form->ApplyWindowMode();
        auto* left = form->findChild<NCTAmpBar2*>("ampbarLeft");
        auto* right = form->findChild<NCTAmpBar2*>("ampbarRight");
        QVERIFY(left->isVisibleTo(form) && right->isVisibleTo(form));
        QCOMPARE(left->x(), TwipsToPixelsX(285));
        QCOMPARE(left->y(), TwipsToPixelsY(2100));
        QCOMPARE(right->y(), TwipsToPixelsY(2450));
        QVERIFY(!editor()->isVisibleTo(form));
        QVERIFY(!form->findChild<QWidget*>("lblSoundFile")->isVisibleTo(form));
        QCOMPARE(text("lblSongLength"), QString("00m 00s"));
        form->mbRecordMode = false;
        form->ApplyWindowMode();
        QVERIFY(!left->isVisibleTo(form));
        QVERIFY(editor()->isVisibleTo(form) && form->findChild<QWidget*>("imgZoom")->isVisibleTo(form));
    }

    void toneSizeLimit_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<int>("bytes");
        QTest::addColumn<QString>("answer");  // empty: no dialog expected
        QTest::addColumn<bool>("goOn");
        QTest::addRow("over 150 KB, give up") << "150 KB" << 200000 << "imgOK" << false;
        QTest::addRow("over 150 KB, send anyway") << "150 KB" << 200000 << "imgCancel" << true;
        QTest::addRow("at the default") << "" << 150000 << "" << true;
        QTest::addRow("over the default") << "abc" << 150001 << "imgOK" << false;
        QTest::addRow("150 KB is more than the default") << "150 KB" << 153600 << "" << true;
        QTest::addRow("unlimited") << "Unlimited" << 3000000 << "" << true;
    }
    void toneSizeLimit()
    {
        QFETCH(QString, setting);
        QFETCH(int, bytes);
        QFETCH(QString, answer);
        QFETCH(bool, goOn);
        SaveAppSetting("MaxToneSize", setting, kSettings);
        const QString tone = writeFile("20261123101010.amr", QByteArray(bytes, 'x'));
        DialogAnswerer answers;
        QString sizeShown;
        if (!answer.isEmpty()) {
            answers.answer("frmToneTooBig", answer);
            QTimer::singleShot(0, this, [&] {
                if (auto* w = QApplication::activeModalWidget())
                    sizeShown = ControlTag(w->findChild<QObject*>("lblTooBig"));
            });
        }
        bool result = !goOn;
        form->CheckToneSize(tone, result);
        QCOMPARE(result, goOn);
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        if (!answer.isEmpty())
            QCOMPARE(sizeShown, QString::number(bytes));
    }

    void lastUrlAid_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("opened");
        QTest::addRow("yes") << "Yes" << true;
        QTest::addRow("no") << "No" << false;
    }
    void lastUrlAid()
    {
        QFETCH(QString, answer);
        QFETCH(bool, opened);
        auto* last = form->findChild<CClickLabel*>("lblLastURL");
        SetControlTag(last, "1,OK,https://127.0.0.1:8443/t/7.amr");
        DialogAnswerer answers;
        answers.answer("MsgBox", answer);
        emit last->DblClick();
        QCOMPARE(answers.seen.first().text, QString("Execute 1,OK,https://127.0.0.1:8443/t/7.amr?"));
        QCOMPARE(QApplication::clipboard()->text(), ControlTag(last));
        QCOMPARE(ground->openedUrls.size(), opened ? 1 : 0);
    }

    void noDragWhileBusy()
    {
        form->show();
        const QPoint before = form->pos();
        form->mbBusy = true;
        QTest::mousePress(form, Qt::LeftButton, {}, QPoint(200, 90));
        QTest::mouseMove(form, QPoint(260, 150));
        QTest::mouseRelease(form, Qt::LeftButton, {}, QPoint(260, 150));
        QCOMPARE(form->pos(), before);
    }
};

QTEST_MAIN(tst_frmMain)
#include "tst_frmmain.moc"
