#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modEncryption.h"
#include "core/seams.h"
#include "delivery/SendTone.h"
#include "editing/frmMain.h"
#include "platform/AudioEditor2.h"
#include "service/CHTTPCall.h"
#include "service/CLoginManager.h"
#include "skin/CPictureButton.h"
#include "skin/ControlTag.h"
#include "support/DialogAnswerer.h"
#include "support/Files.h"
#include "support/MainWindowFixture.h"
#include "support/QuietOffscreen.h"
#include "support/ServiceFixture.h"
#include "support/SoundFiles.h"
#include "support/TestGround.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QMimeData>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>
#include <memory>

// Sends from the main window to our web service over TLS, as the user does.
class tst_SendTone : public QObject {
    Q_OBJECT
    std::unique_ptr<ServiceFixture> service;
    std::unique_ptr<TestGround> ground;
    std::unique_ptr<MainWindowFixture<frmMain>> window;
    QString song;  // 30 seconds, in a folder "Rock"
    frmMain* form = nullptr;

    QString status() { return form->findChild<QLabel*>("lblSoundFile")->text(); }
    QStringList cache() { return QDir(ground->programFolder() + "/servercache").entryList(QDir::Files); }
    QStringList toneLinks()
    {
        QStringList links;
        const QRegularExpression link("^0412345678: Your Quillo Tone is ready: (https://\\S+)$");
        for (const QString& message : service->outbox()) {
            const auto m = link.match(message);
            if (m.hasMatch())
                links << m.captured(1);
        }
        return links;
    }
    void logIn()
    {
        QString query = QStringLiteral("MobileNumber=%1&Password=%2&Origin=0")
                            .arg(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword);
        const QString reply = CHTTPCall().GetPage(ptLogin, query, true, kServiceTimeOut);
        CLoginManager login;
        login.ReadLoginReply(reply);
        QVERIFY2(login.LoggedIn(), qPrintable(reply));
        gstrMobileNumber = ServiceFixture::kDemoMobile;
        gstrPassword = Encrypt(ServiceFixture::kDemoPassword, gstrMachineKey);
    }
    void loadAndMark(double from, double to)
    {
        form->LoadSoundFile(song);
        form->AudioEditor21->SetSelectionStart(int32_t(from * 44100));
        form->AudioEditor21->SetSelectionEnd(int32_t(to * 44100));
        QCoreApplication::processEvents();
    }
    void send() { emit form->Button("cmdSend")->Released(); }

private slots:
    void initTestCase()
    {
        QuietOffscreenPlugin();
        service = std::make_unique<ServiceFixture>();
        QVERIFY(service->running());
    }
    void init()
    {
        ground = std::make_unique<TestGround>();
        service->aimSeams();
        // A tone is named by the second it is sent, and the service takes a
        // second upload of one name for the retry of the first: these sends
        // follow each other faster than a person's, so each gets its own second.
        seams().now = [] {
            static int sent = 0;
            return QDateTime::currentDateTime().addSecs(++sent);
        };
        window = std::make_unique<MainWindowFixture<frmMain>>(MainForm, DropMainForm);
        gstrMachineKey = Hash("525400123456");
        QDir(ground->root()).mkpath("Rock");
        song = MakeTone(ground->root() + "/Rock/Anthem.mp3", 30.0);
        QVERIFY(!song.isEmpty());
        logIn();
        form = &window->Load();
    }
    void cleanup()
    {
        window.reset();
        form = nullptr;
        ground.reset();
    }

    void direct_eachFormat_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("codec");
        QTest::addColumn<int>("rate");
        QTest::addColumn<QString>("type");
        QTest::addColumn<double>("frame");  // seconds of one frame of the codec
        QTest::addRow("AMR narrowband") << "AMR Narrowband" << "amr_nb" << 8000 << "audio/amr" << 0.02;
        QTest::addRow("AMR wideband") << "AMR Wideband" << "amr_wb" << 16000 << "audio/amr-wb" << 0.02;
        QTest::addRow("MP3") << "MP3" << "mp3" << 16000 << "audio/mpeg" << 0.072;
        QTest::addRow("WAV") << "WAV" << "pcm_s16le" << 16000 << "audio/wav" << 0.001;
    }
    void direct_eachFormat()
    {
        QFETCH(QString, format);
        QFETCH(QString, codec);
        QFETCH(QString, type);
        QFETCH(double, frame);
        gstrPreferredFormat = format;
        gintFreeQuills = 3;
        SaveAppSetting("MaxToneSize", "Unlimited", kSettings);  // 20 s of wave is 640 KB
        const int linksBefore = toneLinks().size();
        loadAndMark(5.0, 25.0);

        DialogAnswerer answers;
        answers.answer("frmAboutToUseFreeQuill", "imgOK").answer("frmSent", "imgOK");
        send();
        QVERIFY2(answers.unexpected.isEmpty(), qPrintable(answers.unexpected.join("; ")));
        QVERIFY(answers.allAnswered());

        QCOMPARE(status(), QString("Ready."));
        QCOMPARE(gintFreeQuills, int16_t(2));
        QCOMPARE(form->findChild<QLabel*>("lblFreeQuillCount")->text(), QString("2"));
        QVERIFY(cache().isEmpty());  // delivered, so the tone file is gone
        QVERIFY(ControlTag(form->findChild<QObject*>("lblLastURL")).startsWith("1,"));
        QVERIFY(form->Button("cmdSend")->isEnabled());

        // The phone's text message links to the tone, served with the record's type.
        const QStringList links = toneLinks();
        QCOMPARE(links.size(), linksBefore + 1);
        const ServiceFixture::Reply download = service->get(QUrl(links.first()).path());
        QCOMPARE(download.status, 200);
        QCOMPARE(download.contentType, type.toLatin1());
        const QString tone = ground->root() + "/phone.bin";
        QVERIFY(WriteFile(tone, download.body));
        const ProbedSound heard = Probe(tone);
        QCOMPARE(heard.codec, codec);
        QTEST(heard.sampleRate, "rate");
        QCOMPARE(heard.channels, 1);
        QVERIFY2(qAbs(heard.seconds - 20.0) <= frame + 0.03, qPrintable(QString::number(heard.seconds)));
    }

    void twoSendsInOneRun()
    {
        // From the second send on, the upload window is there before the main window is disabled.
        gstrPreferredFormat = "AMR Narrowband";
        gintFreeQuills = 3;
        QList<bool> enabledWhileUp;
        QTimer probe;
        connect(&probe, &QTimer::timeout, this, [&] {
            auto* uploading = form->findChild<QWidget*>("frmUploadingTone");
            if (uploading && uploading->isVisible())
                enabledWhileUp << uploading->isEnabled();
        });
        probe.start(5);
        for (int i = 0; i < 2; ++i) {
            loadAndMark(5.0, 10.0);
            DialogAnswerer answers;
            answers.answer("frmAboutToUseFreeQuill", "imgOK").answer("frmSent", "imgOK");
            send();
            QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        }
        QCOMPARE(gintFreeQuills, int16_t(1));
        QVERIFY(!enabledWhileUp.isEmpty());
        QVERIFY2(!enabledWhileUp.contains(false), "the upload window came up disabled");
    }

    // A FLAC and an Opus file dropped on the window go the whole road an MP3 goes.
    void droppedSongIsSent_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("rate");
        QTest::addRow("FLAC") << "Ballad.flac" << 44100;
        QTest::addRow("Opus") << "Ballad.opus" << 48000;
    }
    void droppedSongIsSent()
    {
        QFETCH(QString, name);
        QFETCH(int, rate);
        gstrPreferredFormat = "AMR Narrowband";
        gintFreeQuills = 3;
        const QString path = MakeTone(ground->root() + "/Rock/" + name, 12.0, 440, rate);
        QVERIFY(!path.isEmpty());
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(form, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(QPointF(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(form, &drop);
        QCOMPARE(form->mobjTone->mstrCurrentFile, path);
        QCOMPARE(status(), name);
        form->AudioEditor21->SetSelectionStart(2 * rate);
        form->AudioEditor21->SetSelectionEnd(8 * rate);
        QCoreApplication::processEvents();

        const int linksBefore = toneLinks().size();
        DialogAnswerer answers;
        answers.answer("frmAboutToUseFreeQuill", "imgOK").answer("frmSent", "imgOK");
        send();
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        QCOMPARE(toneLinks().size(), linksBefore + 1);
        const ServiceFixture::Reply download = service->get(QUrl(toneLinks().first()).path());
        const QString tone = ground->root() + "/phone.amr";
        QVERIFY(WriteFile(tone, download.body));
        const ProbedSound heard = Probe(tone);
        QCOMPARE(heard.codec, QString("amr_nb"));
        QVERIFY2(qAbs(heard.seconds - 6.0) <= 0.05, qPrintable(QString::number(heard.seconds)));
    }

    // Marks the user sets land on zero crossings, so the tone on the phone
    // starts and ends in silence; marks at the crest of the wave would click.
    void sentToneStartsAndEndsAtZero_data()
    {
        QTest::addColumn<bool>("snapped");
        QTest::addRow("snapped") << true;
        QTest::addRow("as set") << false;
    }
    void sentToneStartsAndEndsAtZero()
    {
        QFETCH(bool, snapped);
        gstrPreferredFormat = "WAV";
        gintFreeQuills = 3;
        SaveAppSetting("MaxToneSize", "Unlimited", kSettings);
        // 200 Hz at 44.1 kHz: whole periods at 2 s and 6 s, and the crest 55 samples on.
        form->LoadSoundFile(MakeTone(ground->root() + "/Rock/Hum.wav", 10.0, 200, 44100, 1));
        form->AudioEditor21->SetSnapToZero(snapped);
        form->AudioEditor21->MarkPart(88255, 264655);
        QCoreApplication::processEvents();
        DialogAnswerer answers;
        answers.answer("frmAboutToUseFreeQuill", "imgOK").answer("frmSent", "imgOK");
        send();
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        const ServiceFixture::Reply download = service->get(QUrl(toneLinks().first()).path());
        const QString tone = ground->root() + "/phone.wav";
        QVERIFY(WriteFile(tone, download.body));
        const std::vector<int16_t> samples = DecodeMono(tone, 16000);
        QVERIFY(samples.size() > 16000 * 3);
        const int peak = PeakBetween(samples, 16000, 1.0, 2.0);
        const int edge = std::max(std::abs(samples.front()), std::abs(samples.back()));
        QVERIFY2(snapped ? edge < peak / 6 : edge > peak / 3,
                 qPrintable(QString("edge %1, peak %2").arg(edge).arg(peak)));
    }

    void charge_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("sent");
        QTest::addRow("agrees") << "imgOK" << true;
        QTest::addRow("backs out") << "imgCancel" << false;
    }
    void charge()
    {
        QFETCH(QString, answer);
        QFETCH(bool, sent);
        gstrPreferredFormat = "AMR Narrowband";
        gstrChargeText = "This tone costs 50c";
        gintFreeQuills = 0;
        const int linksBefore = toneLinks().size();
        loadAndMark(2.0, 8.0);
        DialogAnswerer answers;
        answers.answer("frmCharged", answer);
        if (sent)
            answers.answer("frmSent", "imgOK");
        send();
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        QVERIFY(answers.seen.first().text.contains("This tone costs 50c"));
        QCOMPARE(gintFreeQuills, int16_t(0));
        QCOMPARE(toneLinks().size(), linksBefore + (sent ? 1 : 0));
        // Backing out puts the words back and keeps the tone in the cache.
        QCOMPARE(status(), sent ? QString("Ready.") : QString("Anthem.mp3"));
        QCOMPARE(cache().size(), sent ? 0 : 1);
    }

    void refusedUploadIsTriedSixTimesThenReported()
    {
        gstrPreferredFormat = "AMR Narrowband";
        gintFreeQuills = 2;
        gstrPassword = Encrypt("not the password", gstrMachineKey);
        const int linksBefore = toneLinks().size();
        loadAndMark(2.0, 6.0);
        DialogAnswerer answers;
        answers.answer("frmAboutToUseFreeQuill", "imgOK").answer("frmGenericOKDialog", "Enter");
        send();
        QVERIFY(answers.allAnswered());
        QCOMPARE(answers.seen.last().text, QString("Error talking to Quillo Tone. Please try again in a few moments."));
        QVERIFY(ControlTag(form->findChild<QObject*>("lblLastURL")).isEmpty());
        QCOMPARE(gintFreeQuills, int16_t(2));
        QCOMPARE(cache().size(), 1);  // the tone stays for another try
        QCOMPARE(toneLinks().size(), linksBefore);
    }

    // Sends that stop before anything goes out: a window says why and Send works again.
    void sendStops_data()
    {
        QTest::addColumn<QString>("situation");
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("text");  // empty: not checked
        QTest::addRow("nothing loaded") << "empty" << "frmNoToneSelected" << "imgOK" << "";
        QTest::addRow("nothing marked") << "unmarked" << "frmToneNotTrimmed" << "imgOK" << "";
        // The path of the last good song stays behind a file that failed to open, but none of its sound.
        QTest::addRow("a file that failed to open") << "noSound" << "frmNoToneSelected" << "imgOK" << "";
        QTest::addRow("song deleted since") << "deleted" << "frmGenericOKDialog" << "Enter"
                                            << "Open a music file or select one from 'My Music'";
        QTest::addRow("QCELP is not made") << "QCELP" << "MsgBox" << "OK" << "Send: File not found 0";
        QTest::addRow("over the size limit") << "big" << "frmToneTooBig" << "imgOK" << "";
    }
    void sendStops()
    {
        QFETCH(QString, situation);
        QFETCH(QString, window);
        QFETCH(QString, control);
        QFETCH(QString, text);
        const bool formatRow = situation == "QCELP" || situation == "AAC";
        gintFreeQuills = 2;
        DialogAnswerer answers;
        if (situation == "unmarked") {
            form->LoadSoundFile(song);
        } else if (situation == "big") {
            SaveAppSetting("MaxToneSize", "50 KB", kSettings);
            gstrPreferredFormat = "WAV";  // 16000 Hz mono 16-bit: 32000 bytes a second
            loadAndMark(1.0, 4.0);
        } else if (situation != "empty") {
            if (formatRow)
                gstrPreferredFormat = situation;
            loadAndMark(2.0, 6.0);
            if (situation == "deleted")
                QFile::remove(song);
            if (situation == "noSound") {
                answers.answer("frmInvalidFileFormat", "imgOK");
                QVERIFY(WriteFile(ground->root() + "/letter.mp3", QByteArray("Dear John, no song.\n").repeated(50)));
                form->LoadSoundFile(ground->root() + "/letter.mp3");
            }
        }
        answers.answer(window, control);
        send();
        QVERIFY(answers.allAnswered());
        QVERIFY2(answers.unexpected.isEmpty(), qPrintable(answers.unexpected.join(", ")));
        if (!text.isEmpty())
            QCOMPARE(answers.seen.first().text, text);
        QVERIFY(form->Button("cmdSend")->isEnabled());
        QCOMPARE(gintFreeQuills, int16_t(2));
        if (situation == "deleted")  // nothing of the song is left to cut
            QVERIFY(!form->mobjTone->HasSound() && status() == "Select a sound file or rip a CD...");
        if (situation == "big") {
            QCOMPARE(status(), QString("Ready."));
            QCOMPARE(cache().size(), 1);
        } else if (!formatRow) {
            QVERIFY(!QFile::exists(ground->tempFolder() + "/preview.mp3"));
        }
    }

    void tunnelRoad()
    {
        gbUseTunnel = true;
        SaveAppSetting("UseTunnel", "1", kSettings);
        SaveAppSetting("QuillAssistURL", "https://assist.example/quill", kSettings);
        gstrPreferredFormat = "AMR Wideband";
        gintFreeQuills = 1;
        const int linksBefore = toneLinks().size();
        loadAndMark(2.0, 6.0);
        DialogAnswerer answers;
        answers.answer("frmAboutToUseFreeQuill", "imgOK").answer("frmSent", "imgOK");
        send();
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        // Recorded for the helper, which is opened; the program itself uploads nothing.
        const QString current = GetAppSetting("CurrentTone", kToneData);
        QVERIFY(!current.isEmpty());
        const QString record = GetAppSetting(current, kToneData);
        QVERIFY(record.contains("ContentType=\"audio/amr-wb\""));
        QVERIFY(QRegularExpression("Filename=\"\\d{14}\\.amr\"").match(record).hasMatch());
        QCOMPARE(ground->openedUrls, QStringList{"https://assist.example/quill"});
        QVERIFY(cache().isEmpty());
        QCOMPARE(toneLinks().size(), linksBefore);
        QCOMPARE(gintFreeQuills, int16_t(0));

        // The next send meets the pending tone: keeping it gives up the send.
        DialogAnswerer& keep = answers;  // one answerer at a time: a second would close the first one's windows
        keep.answer("frmTonePending", "imgOK");
        send();
        QVERIFY2(keep.finishedCleanly(), qPrintable(keep.problems()));
        QCOMPARE(GetAppSetting("CurrentTone", kToneData), current);

        // Deleting it marks it for the helper and lets the new tone follow.
        DialogAnswerer& replace = answers;
        replace.answer("frmTonePending", "imgDelete")
            .answer("frmConfirmDeleteTone", "imgYes")
            .answer("frmCharged", "imgOK")
            .answer("frmSent", "imgOK");
        send();
        QVERIFY2(replace.finishedCleanly(), qPrintable(replace.problems()));
        QCOMPARE(GetAppSetting("Delete", kToneData), QString("1"));
        QVERIFY(GetAppSetting("CurrentTone", kToneData) != current);
    }

    void songReport_data()
    {
        QTest::addColumn<bool>("tagged");
        QTest::addColumn<QString>("blobStart");
        QTest::addRow("tagged") << true << "Love+%26+Rain|The+Band|";
        QTest::addRow("no title: the folder runs into the artist") << false << "Rock|";
    }
    void songReport()
    {
        QFETCH(bool, tagged);
        QFETCH(QString, blobStart);
        gstrCustomerID = "17";
        QString file = song;
        if (tagged) {
            file = ground->root() + "/Rock/tagged.mp3";
            QVERIFY(RunTool("ffmpeg", {"-loglevel", "error", "-y", "-i", song, "-c", "copy", "-metadata",
                                       "title=Love & Rain", "-metadata", "artist=The Band", "-metadata", "date=1999",
                                       file}));
        }
        const QString report = BuildSongReport(file);
        QVERIFY2(report.startsWith("CID=17&SongBlob=" + blobStart), qPrintable(report));
        const QString blob = report.mid(QString("CID=17&SongBlob=").size());
        QCOMPARE(blob.count('|'), tagged ? 13 : 12);
        if (tagged)
            QVERIFY2(blob.contains("|1999|"), qPrintable(blob));
    }
};

QTEST_MAIN(tst_SendTone)
#include "tst_sendtone.moc"
