#include "core/globals.h"
#include "core/modCommon.h"
#include "core/seams.h"
#include "editing/frmMain.h"
#include "editing/frmZoomEdit.h"
#include "platform/AudioEditor2.h"
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

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QListView>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
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
    void measuresFit()
    {
        for (const char* measure : {"lblSoundFile", "lblSongLength", "lblToneLength", "lblToneSize", "lblCurrentPosition"}) {
            const QLabel* l = form->findChild<QLabel*>(measure);
            QVERIFY2(!l->wordWrap() && l->fontMetrics().horizontalAdvance(l->text()) <= l->width(), measure);
        }
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

    void loadThenMeasureTrimAndReset()
    {
        QStringList progress;
        connect(editor(), &AudioEditor2::OnEditorProgress, this, [&] { progress << text("lblSoundFile"); });
        form->LoadSoundFile(song);
        QVERIFY(!progress.isEmpty());
        QVERIFY2(progress.first().startsWith("Loading. Please wait (") && progress.first().endsWith("% complete)"),
                 qPrintable(progress.first()));
        QCOMPARE(text("lblSoundFile"), QString("Some Song.mp3"));
        QCOMPARE(tag("lblSoundFile"), song);
        QCOMPARE(form->mobjTone->mstrCurrentFile, song);
        QCOMPARE(text("lblSongLength"), QString("0m 10s"));
        QCOMPARE(text("lblToneLength"), QString("0m 10s"));
        QVERIFY(!form->mobjTone->mbTrimmed);

        select(2.0, 5.0);
        QCOMPARE(text("lblToneLength"), QString("0m 3s"));
        QCOMPARE(text("lblToneSize"), QString("~5Kb"));  // 3 s x 1600 / 1024 = 4.69

        release("cmdTrim");
        QVERIFY(form->mobjTone->mbTrimmed);
        QCOMPARE(form->mobjTone->msngTrimOffset, 2.0f);
        QCOMPARE(editor()->ViewStart(), int32_t(2 * 44100));
        QCOMPARE(editor()->ViewEnd(), int32_t(5 * 44100));
        // The cursor stood at 0, before the trimmed part: it moves to its start.
        QCOMPARE(text("lblCurrentPosition"), QString("00m 00s"));
        editor()->SetPlayPosition(int32_t(4.0 * 44100));
        QCOMPARE(text("lblCurrentPosition"), QString("00m 02s"));  // 4 s less the 2 s offset

        release("cmdReset");
        QVERIFY(!form->mobjTone->mbTrimmed);
        QCOMPARE(form->mobjTone->msngTrimOffset, 0.0f);
        QCOMPARE(editor()->ViewStart(), 0);
        QCOMPARE(editor()->ViewEnd(), editor()->TotalSamples());
        QVERIFY(editor()->SelectionStart() == 0 && editor()->SelectionEnd() == 0);
        QCoreApplication::processEvents();
        QCOMPARE(text("lblToneLength"), QString("0m 0s"));
        QCOMPARE(text("lblToneSize"), QString("0Kb"));
        QCOMPARE(text("lblCurrentPosition"), QString("00m 00s"));
    }

    void anotherFileAfterATrimStartsAfresh()
    {
        form->LoadSoundFile(song);
        select(3.0, 5.0);
        release("cmdTrim");
        const QString other = MakeTone(ground->root() + "/Other.wav", 4.0);
        form->LoadSoundFile(other);
        QCoreApplication::processEvents();
        QCOMPARE(text("lblCurrentPosition"), QString("00m 00s"));
        QCOMPARE(text("lblToneSize"), QString("0 Kb"));
        QCOMPARE(text("lblToneLength"), QString("0m 4s"));
        editor()->SetPlayPosition(int32_t(2.0 * 44100));
        QCOMPARE(text("lblCurrentPosition"), QString("00m 02s"));
    }

    void longNameAndMeasuresStayOnTheirLine()
    {
        const QString name = QString("A Very Long Live Recording Of The Whole Concert At The Town Hall").repeated(2);
        form->LoadSoundFile(MakeTone(ground->root() + "/" + name + ".mp3", 30.0));
        const QLabel* status = form->findChild<QLabel*>("lblSoundFile");
        QVERIFY(status->text().contains(QChar(0x2026)) && status->text().endsWith(".mp3"));
        QVERIFY(status->geometry().right() < form->findChild<QWidget*>("lblFreeQuills")->geometry().left());
        QCOMPARE(status->toolTip(), name);
        select(1.0, 29.0);
        release("cmdTrim");
        editor()->SetPlayPosition(int32_t(28.0 * 44100));
        measuresFit();
    }

    // Trim wants two marks apart; a part from the very start is one, and
    // trimming it again is harmless.
    void trimNeedsTwoMarks_data()
    {
        QTest::addColumn<bool>("loaded");
        QTest::addColumn<double>("from");
        QTest::addColumn<double>("to");
        QTest::addColumn<bool>("trimmed");
        QTest::addRow("nothing loaded") << false << 0.0 << 0.0 << false;
        QTest::addRow("no selection") << true << 0.0 << 0.0 << false;
        QTest::addRow("equal marks") << true << 4.0 << 4.0 << false;
        QTest::addRow("from zero, twice") << true << 0.0 << 0.4 << true;
    }
    void trimNeedsTwoMarks()
    {
        QFETCH(bool, loaded);
        QFETCH(bool, trimmed);
        if (loaded)
            form->LoadSoundFile(song);
        QFETCH(double, from);
        QFETCH(double, to);
        select(from, to);
        DialogAnswerer answers;
        if (!trimmed)
            answers.answer("frmToneNotTrimmed", "imgOK");
        release("cmdTrim");
        if (trimmed)
            release("cmdTrim");
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        QCOMPARE(form->mobjTone->mbTrimmed, trimmed);
    }

    // Open starts in the music folder, or at home without one, with no file
    // name offered; it lists music files in any case, and all files on request.
    void openDialog_data()
    {
        QTest::addColumn<bool>("musicFolder");
        QTest::addRow("music folder") << true;
        QTest::addRow("no music folder") << false;
    }
    void openDialog()
    {
        QFETCH(bool, musicFolder);
        const QByteArray home = qgetenv("HOME"), configHome = qgetenv("XDG_CONFIG_HOME");
        const bool hadConfigHome = qEnvironmentVariableIsSet("XDG_CONFIG_HOME");
        const QString fakeHome = ground->root() + "/home";
        QDir().mkpath(fakeHome + (musicFolder ? "/Music" : ""));
        qputenv("HOME", fakeHome.toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", (fakeHome + "/.config").toLocal8Bit());
        const QString mixed = ground->root() + "/mixed";
        for (const char* file : {"a.mp3", "B.WAV", "c.Wma", "d.flac", "e.Opus", "notes.txt", "README"})
            QVERIFY(WriteFile(mixed + "/" + file, "x"));
        QString folder, name = "unread";
        QStringList filters, music, all, audio;
        const auto shown = [](QFileDialog* dialog) {
            auto* view = dialog->findChild<QListView*>("listView");
            QStringList names;
            for (int row = 0; row < view->model()->rowCount(view->rootIndex()); ++row)
                names << view->model()->index(row, 0, view->rootIndex()).data().toString();
            names.sort(Qt::CaseInsensitive);
            return names;
        };
        QTimer::singleShot(0, this, [&] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            folder = dialog->directory().absolutePath();
            name = dialog->findChild<QLineEdit*>("fileNameEdit")->text();
            filters = dialog->nameFilters();
            // The listing fills in after the folder is read, and the start
            // folder may finish reading later still: wait for the files.
            dialog->setDirectory(mixed);
            QTest::qWaitFor([&] { return !shown(dialog).isEmpty(); }, 5000);
            music = shown(dialog);
            // The list shows a new filter once it has sorted itself again.
            QSignalSpy sorted(dialog->findChild<QFileSystemModel*>(), &QFileSystemModel::layoutChanged);
            QTest::keyClick(dialog->findChild<QComboBox*>("fileTypeCombo"), Qt::Key_Down);
            QVERIFY(sorted.wait(5000));
            all = shown(dialog);
            QTest::keyClick(dialog->findChild<QComboBox*>("fileTypeCombo"), Qt::Key_Down);
            QVERIFY(sorted.wait(5000));
            audio = shown(dialog);
            dialog->reject();
        });
        release("cmdOpen");
        qputenv("HOME", home);
        if (hadConfigHome)
            qputenv("XDG_CONFIG_HOME", configHome);
        else
            qunsetenv("XDG_CONFIG_HOME");
        QCOMPARE(folder, musicFolder ? fakeHome + "/Music" : fakeHome);
        QCOMPARE(name, QString());
        QVERIFY(form->mobjTone->mstrCurrentFile.isEmpty());
        QCOMPARE(filters.mid(0, 2), QStringList({"Music files (*.mp3, *.wav, *.wma)", "All files (*.*)"}));
        QCOMPARE(filters.size(), 3);
        QVERIFY(filters[2].startsWith("All audio (*."));
        for (const char* kind : {"*.flac", "*.ogg", "*.opus", "*.aac", "*.m4a", "*.mp3", "*.wav", "*.wma"})
            QVERIFY2(filters[2].contains(kind), kind);
        QCOMPARE(music, QStringList({"a.mp3", "B.WAV", "c.Wma"}));
        QCOMPARE(all, QStringList({"a.mp3", "B.WAV", "c.Wma", "d.flac", "e.Opus", "notes.txt", "README"}));
        QCOMPARE(audio, QStringList({"a.mp3", "B.WAV", "c.Wma", "d.flac", "e.Opus"}));
    }

    void badFiles_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("message");
        QTest::addRow("not a sound") << "letter.mp3" << QByteArray("Dear John, this is no song at all.\n").repeated(50)
                                     << "frmInvalidFileFormat";
        QTest::addRow("zero length") << "empty.wav" << QByteArray() << "frmGenericOKDialog";
        QTest::addRow("vanished") << "gone.mp3" << QByteArray("-") << "frmInvalidFileFormat";
    }
    void badFiles()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, message);
        form->LoadSoundFile(song);
        select(1.0, 2.0);
        release("cmdTrim");
        QString path = writeFile(name, bytes);
        if (name == "gone.mp3")
            QFile::remove(path);
        DialogAnswerer answers;
        answers.answer(message, "Enter").answer(message, "Enter");
        form->LoadSoundFile(path);
        QCOMPARE(text("lblSoundFile"), QString("Select a sound file or rip a CD..."));
        QCOMPARE(tag("lblToneLength"), QString("err"));
        QCOMPARE(form->mobjTone->mstrCurrentFile, song);  // the old file stays behind the words
        QCOMPARE(editor()->TotalSamples(), 0);   // but none of its sound, to play or send
        QVERIFY(!form->mobjTone->mbTrimmed);
        QCOMPARE(text("lblSongLength"), QString("00m 00s"));
        measuresFit();  // the prompt too stands whole on its line
        QVERIFY(form->Button("cmdOpen")->isEnabled() && !form->mobjTone->mbBusy);
        form->LoadSoundFile(path);  // "err" is still there for the next failure
        QCOMPARE(tag("lblToneLength"), QString("err"));
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        // An empty file is said to be one, not to be of some other format.
        QCOMPARE(answers.seen.first().text.contains("empty or damaged"), name == "empty.wav");
        form->LoadSoundFile(song);
        QCOMPARE(tag("lblToneLength"), QString("0m 10s"));
        QCOMPARE(text("lblSoundFile"), QString("Some Song.mp3"));
    }

    void playAndStop()
    {
        form->LoadSoundFile(song);
        select(1.0, 3.0);
        release("cmdPlay");
        QVERIFY(form->mobjTone->mbPlaying);
        QTRY_VERIFY(editor()->IsPlaying());
        release("cmdStop");
        QVERIFY(!form->mobjTone->mbPlaying);
        QVERIFY(!editor()->IsPlaying());
        form->mbRecordMode = true;
        release("cmdPlay");
        QVERIFY(!form->mobjTone->mbPlaying);
    }

    // The zoom window hands back its marks exactly, over the full view; the
    // main window's trim flag stays. Cancel changes nothing.
    void zoomHandBack_data()
    {
        QTest::addColumn<bool>("mainTrimmed");
        QTest::addColumn<double>("from");
        QTest::addColumn<double>("to");
        QTest::addColumn<bool>("trimInZoom");
        QTest::addColumn<bool>("click");  // one click in the wave after the marks: the play cursor moves
        QTest::addColumn<QString>("press");
        QTest::addColumn<QStringList>("shown");  // length and size captions after
        QTest::addRow("marks, OK") << false << 2.0 << 7.0 << false << false << "cmdOK" << QStringList{"0m 5s", "~8Kb"};
        QTest::addRow("trimmed in the zoom, OK") << false << 1.0 << 4.0 << true << false << "cmdOK" << QStringList{"0m 3s", "~5Kb"};
        QTest::addRow("trimmed in the zoom, a click, OK") << false << 1.0 << 4.0 << true << true << "cmdOK" << QStringList{"0m 3s", "~5Kb"};
        QTest::addRow("main trimmed, OK") << true << 6.0 << 8.5 << false << false << "cmdOK" << QStringList{"0m 2s", "~4Kb"};
        QTest::addRow("Cancel") << false << 2.0 << 7.0 << false << false << "cmdCancel" << QStringList{"0m 1s", "~2Kb"};
    }
    void zoomHandBack()
    {
        QFETCH(bool, mainTrimmed);
        QFETCH(double, from);
        QFETCH(double, to);
        QFETCH(bool, trimInZoom);
        QFETCH(bool, click);
        QFETCH(QString, press);
        QFETCH(QStringList, shown);
        form->LoadSoundFile(song);
        select(3.0, 4.0);
        if (mainTrimmed)
            release("cmdTrim");
        form->NCTSliderB21->SetValue(20000);
        DialogAnswerer answers;
        int zoomVolume = 0;
        answers.answer("frmZoomEdit", [&](QWidget* w) {
            auto* zoom = static_cast<frmZoomEdit*>(w);
            QTRY_VERIFY(zoom->mbReady);
            zoomVolume = zoom->AudioEditor21->Volume();
            QCOMPARE(zoom->AudioEditor21->TotalSamples(), editor()->TotalSamples());
            zoom->AudioEditor21->SetSelectionStart(int32_t(from * 44100));
            zoom->AudioEditor21->SetSelectionEnd(int32_t(to * 44100));
            QCoreApplication::processEvents();
            if (trimInZoom)
                emit zoom->Button("cmdTrim")->Released();
            if (click)
                QTest::mouseClick(zoom->AudioEditor21, Qt::LeftButton, {}, zoom->AudioEditor21->rect().center());
            emit zoom->Button(press)->Released();
            zoom->Hide();  // a refusal fails the case rather than leaving the window up
        });
        emit form->findChild<CClickLabel*>("imgZoom")->Click();
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        QCOMPARE(zoomVolume, 20000);
        QCoreApplication::processEvents();
        const bool ok = press == "cmdOK";
        QCOMPARE(editor()->SelectionStart(), int32_t((ok ? from : 3.0) * 44100));
        QCOMPARE(editor()->SelectionEnd(), int32_t((ok ? to : 4.0) * 44100));
        QCOMPARE(text("lblToneLength"), shown[0]);
        QCOMPARE(text("lblToneSize"), shown[1]);
        QCOMPARE(form->mobjTone->mbTrimmed, mainTrimmed);
        const bool fullView = ok || !mainTrimmed;
        QCOMPARE(editor()->ViewStart(), fullView ? 0 : int32_t(3 * 44100));
        QVERIFY(form->Button("cmdOpen")->isEnabled());
    }

    // Zoom needs a sound that opens: with none, or after a failed load, it
    // says so; a file gone since it was opened is said to be unreadable and
    // the zoom window closes. The main window keeps what it had.
    void zoomRefuses_data()
    {
        QTest::addColumn<QString>("situation");
        QTest::addColumn<QStringList>("windows");
        QTest::addRow("nothing loaded") << "empty" << QStringList{"frmNoToneSelected"};
        QTest::addRow("after a failed load") << "failed" << QStringList{"frmNoToneSelected"};
        QTest::addRow("file gone since") << "gone" << QStringList{"frmZoomEdit", "frmInvalidFileFormat"};
    }
    void zoomRefuses()
    {
        QFETCH(QString, situation);
        QFETCH(QStringList, windows);
        DialogAnswerer answers;
        if (situation != "empty") {
            form->LoadSoundFile(song);
            select(2.0, 3.0);
        }
        if (situation == "failed") {
            answers.answer("frmInvalidFileFormat", "imgOK");
            form->LoadSoundFile(writeFile("letter.mp3", QByteArray("Dear John, no song.\n").repeated(50)));
        }
        if (situation == "gone")
            QVERIFY(QFile::remove(song));
        for (const QString& window : windows) {
            if (window == "frmZoomEdit") {
                answers.answer(window, [this](QWidget* zoom) {
                    // It closes itself once its load has told of the failure.
                    QTRY_VERIFY_WITH_TIMEOUT(!zoom->isVisible(), 20000);
                    static_cast<frmZoomEdit*>(zoom)->Hide();
                });
            } else {
                answers.answer(window, "imgOK");
            }
        }
        emit form->findChild<CClickLabel*>("imgZoom")->Click();
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        QCOMPARE(editor()->SelectionEnd(), situation == "gone" ? int32_t(3 * 44100) : 0);
        QVERIFY(form->Button("cmdOpen")->isEnabled());
    }

    // What the settings window shows and stores: the size limit (whose rule
    // is in toneSizeLimit) and the fade box, stored at its click (the fade
    // itself is heard in tst_convertaudio).
    void configurationWindow_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("choose");  // empty: close as it opened
        QTest::addColumn<QString>("shown");
        QTest::addColumn<int>("fadeClicks");
        QTest::addColumn<QString>("fadeIn");
        QTest::addRow("absent: closing stores 50 KB") << "" << "" << "50 KB" << 0 << "";
        QTest::addRow("unknown: shown as 50 KB") << "75 KB" << "" << "50 KB" << 0 << "";
        QTest::addRow("Unlimited stays") << "Unlimited" << "" << "Unlimited" << 0 << "";
        QTest::addRow("200 KB chosen, fade on") << "" << "200 KB" << "50 KB" << 1 << "True";
        QTest::addRow("fade on, then off again") << "" << "" << "50 KB" << 2 << "False";
    }
    void configurationWindow()
    {
        QFETCH(QString, stored);
        QFETCH(QString, choose);
        QFETCH(QString, shown);
        QFETCH(int, fadeClicks);
        if (!stored.isEmpty())
            SaveAppSetting("MaxToneSize", stored, kSettings);
        DialogAnswerer answers;
        QStringList sizes;
        answers.answer("frmConfiguration", [&](QWidget* w) {
            auto* list = w->findChild<QComboBox*>("cmbMaxToneSize");
            for (int i = 0; i < list->count(); ++i)
                sizes << list->itemText(i);
            QCOMPARE(list->currentText(), shown);
            if (!choose.isEmpty())
                list->setCurrentText(choose);
            auto* box = w->findChild<QCheckBox*>("cbFadeIn");
            QVERIFY(!box->isChecked());
            for (int i = 0; i < fadeClicks; ++i)
                QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(6, box->height() / 2));
            QTEST(GetAppSetting("FadeIn", kSettings), "fadeIn");
            emit static_cast<CSkinWindow*>(w)->Button("Command2")->Released();
        });
        emit form->findChild<CClickLabel*>("lblSettings")->DblClick();
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        QCOMPARE(sizes, (QStringList{"50 KB", "100 KB", "150 KB", "200 KB", "500 KB", "Unlimited"}));
        QCOMPARE(GetAppSetting("MaxToneSize", kSettings), choose.isEmpty() ? shown : choose);
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
        QCOMPARE(form->mobjTone->mintVolumeDirection, int16_t(0));
        QCOMPARE(form->NCTSliderB21->Value(), 35000);  // released before the next tick
        QCOMPARE(editor()->Volume(), 35000);           // slider and volume are one to one
        QTest::mousePress(down, Qt::LeftButton);
        QVERIFY(moved.wait(1000));
        QTest::mouseRelease(down, Qt::LeftButton);
        QCOMPARE(form->NCTSliderB21->Value(), 32000);
    }

    // My Music hands a song to the editor through its Tag.
    void myMusic_data()
    {
        QTest::addColumn<QString>("control");  // how the browser is left
        QTest::addColumn<bool>("loaded");
        QTest::addColumn<QString>("status");
        QTest::addRow("a song is grabbed") << "imgGrab" << true << "Some Song.mp3";
        QTest::addRow("cancelled") << "imgCancel" << false << "Select a sound file or rip a CD...";
    }
    void myMusic()
    {
        QFETCH(QString, control);
        QFETCH(bool, loaded);
        const QString folder = ground->root() + "/Album";
        const QString chosen = folder + "/Some Song.mp3";
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(QFile::copy(song, chosen));
        QVERIFY(WriteFile(gstrMyMusicPath, "<?xml version=\"1.0\"?><Quillotone><Folder Path=\"" + folder.toUtf8() +
                                               "\"/></Quillotone>"));
        DialogAnswerer answers;
        answers.answer("frmMyMusic2", [control](QWidget* window) {
            auto* folders = window->findChild<QTreeWidget*>("tvwFolders");
            QTest::mouseClick(folders->viewport(), Qt::LeftButton, {},
                              folders->visualItemRect(folders->topLevelItem(0)->child(0)).center());
            auto* songs = window->findChild<QTreeWidget*>("lvwTracks");
            songs->setCurrentItem(songs->topLevelItem(0));
            QTest::mouseClick(window->findChild<QWidget*>(control), Qt::LeftButton);
        });
        release("cmdMyMusic");
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        QCOMPARE(form->mobjTone->mstrCurrentFile, loaded ? chosen : QString());
        QTEST(text("lblSoundFile"), "status");
        QCOMPARE(text("lblSongLength"), QString(loaded ? "0m 10s" : "00m 00s"));
        QVERIFY(form->isEnabled() && form->Button("cmdOpen")->isEnabled() && !form->mobjTone->mbBusy);
    }

    void signOutActsOnReleaseWhereverTheMouseWent()
    {
        QSignalSpy wanted(form, &frmMain::SignOutWanted);
        QWidget* signOut = form->findChild<QWidget*>("cmdSignOut");
        QTest::mousePress(signOut, Qt::LeftButton);
        QCOMPARE(wanted.size(), 0);
        QTest::mouseRelease(signOut, Qt::LeftButton, {}, QPoint(-40, 60));
        QCOMPARE(wanted.size(), 1);
    }
};

QTEST_MAIN(tst_frmMain)
#include "tst_frmmain.moc"
