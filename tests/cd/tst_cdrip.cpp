#include "cd/CDManager.h"
#include "cd/frmRipCD.h"
#include "cd/frmRipping.h"
#include "cd/modCDChecking.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/MainWindow.h"
#include "platform/CDSource.h"
#include "platform/NCTAudioCDGrabber2.h"
#include "platform/NCTAudioPlayer2.h"
#include "skin/CClickLabel.h"
#include "skin/CPictureButton.h"
#include "support/CddbServer.h"
#include "support/DiscImage.h"
#include "support/SoundFiles.h"
#include "support/SoundTestCase.h"

#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTimer>
#include <QTreeWidget>

// A disc image of three tracks, named by a CDDB server on loopback.
class tst_CDRip : public SoundTestCase {
    Q_OBJECT
    std::unique_ptr<DiscImage> disc;
    std::unique_ptr<CddbServer> cddb;
    QWidget mainWindow;

    void serve(CddbServer::Mode mode)
    {
        cddb = std::make_unique<CddbServer>(mode);
        cddb->know(disc->discId(), disc->offsets(), disc->discSeconds(), "The Testers", "Known Tones", {"Low", "Middle", "Long"});
        freeDBServer() = {"127.0.0.1", cddb->port()};
    }
    CDManager& manager() { return *TheCDManager(); }

    // Rips a track through its window as the CD window does; the Tag.
    QString rip(int16_t index, const std::function<void(frmRipping&)>& during = {})
    {
        answerer->answer("frmRipping", [](QWidget*) {});  // it closes itself
        frmRipping window;
        window.Load();
        window.RipTrackIndex = index;
        window.tmrStartRip->start();
        QTimer watch;
        if (during) {
            connect(&watch, &QTimer::timeout, &window, [&] { during(window); });
            watch.start(20);
        }
        window.Show(true);
        return window.Tag;
    }

private slots:
    void init()
    {
        ground = std::make_unique<TestGround>();
        answerer = std::make_unique<DialogAnswerer>();
        disc = std::make_unique<DiscImage>(ground->root(), QList<double>{6.0, 3.0, 65.0});
        SetCDImage(disc->cue());
        SetMainWindow([this] { return &mainWindow; });
        serve(CddbServer::Knows);
    }
    void cleanup()
    {
        delete gobjCDManager;
        gobjCDManager = nullptr;
        freeDBServer() = FreeDBServer();
        discTocReader() = DiscTocReader(ReadDiscToc);
        SetCDImage({});
        SetMainWindow({});
        QVERIFY2(answerer->unexpected.isEmpty(), qPrintable(answerer->unexpected.join(", ")));
        answerer.reset();
        ground.reset();
    }

    // The session is rounded, not truncated, a tie to the even one.
    void splitIdentifier_data()
    {
        QTest::addColumn<int>("id");
        QTest::addColumn<int>("session");
        QTest::addColumn<int>("track");
        QTest::addRow("50 stays in session 0") << 50 << 0 << 50;
        QTest::addRow("51 tips into session 1") << 51 << 1 << -49;
        QTest::addRow("second of the second session") << 101 << 1 << 1;
        QTest::addRow("150 rounds up to 2") << 150 << 2 << -50;
        QTest::addRow("250 rounds down to 2") << 250 << 2 << 50;
    }
    void splitIdentifier()
    {
        QFETCH(int, id);
        const CDTrackPlace place = SplitSessionInd(int16_t(id));
        QTEST(int(place.session), "session");
        QTEST(int(place.track), "track");
    }

    void tracksAndNames_data()
    {
        QTest::addColumn<int>("mode");  // -1: nothing listens
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("artist");
        QTest::addColumn<QString>("firstName");
        QTest::addRow("known") << int(CddbServer::Knows) << "Known Tones" << "The Testers" << "Low";
        QTest::addRow("unknown") << int(CddbServer::KnowsNothing) << "" << "" << "";
        QTest::addRow("junk") << int(CddbServer::Junk) << "" << "" << "";
        QTest::addRow("down") << -1 << "" << "" << "";
        QTest::addRow("silent") << int(CddbServer::Silent) << "" << "" << "";
    }
    void tracksAndNames()
    {
        QFETCH(int, mode);
        if (mode < 0)
            freeDBServer() = {"127.0.0.1", DeadPort()};
        else
            serve(CddbServer::Mode(mode));
        QElapsedTimer clock;
        clock.start();
        manager().LoadTracks();
        // One deadline of 10 s ends the whole lookup; a server that never
        // answers used to hold the list for its 30 s time-out.
        QVERIFY2(clock.elapsed() < 25000, qPrintable(QString::number(clock.elapsed())));
        QTEST(manager().CDTitle(), "title");
        QTEST(manager().CDArtist(), "artist");
        // Every track is listed with its length, names or not.
        const CDTrackCollection& tracks = manager().Tracks();
        QCOMPARE(tracks.Count(), 3);
        QCOMPARE(tracks.Item("T0")->duration, QString(" 0:06"));
        QCOMPARE(tracks.Item("T1")->duration, QString(" 0:03"));
        QCOMPARE(tracks.Item("T2")->duration, QString(" 1:05"));
        QTEST(tracks.Item("T0")->TrackName, "firstName");
        QCOMPARE(tracks.Item("T2")->SessionInd, int16_t(2));
        if (mode >= 0 && mode != CddbServer::Silent) {
            // The query names the disc by its id and the client as it calls itself.
            QVERIFY2(cddb->commands.value(0).startsWith("cddb query " + disc->discId() + " 3 150 "),
                     qPrintable(cddb->commands.join("; ")));
            QVERIFY2(QRegularExpression("^[0-9A-F]{32} localhost NCTAudioCDGrabber 2\\.6$")
                         .match(cddb->hellos.value(0)).hasMatch(), qPrintable(cddb->hellos.value(0)));
        }
    }

    // A server that takes the call and never answers: the lookup's time-out ends it.
    void silentServerTimesOut()
    {
        serve(CddbServer::Silent);
        NCTAudioCDGrabber2 grabber;
        grabber.Open();
        QSignalSpy status(&grabber, &NCTAudioCDGrabber2::FreeDBQueryStatus);
        FreeDBQuerySettings settings;
        settings.TimeoutMs = 1000;
        settings.UserName = "u";
        settings.ClientName = "c";
        settings.ClientVersion = "1";
        grabber.QueryFreeDB(settings);
        QTRY_VERIFY_WITH_TIMEOUT(!status.isEmpty() && status.last().first().toInt() == -2, 10000);
        QCOMPARE(grabber.TrackCount(), int16_t(3));
    }

    void noAudioDisc_data()
    {
        QTest::addColumn<QString>("image");
        QTest::addColumn<bool>("inDrive");
        QTest::addRow("no disc") << "missing.cue" << false;
        QTest::addRow("data disc") << "data" << false;
        QTest::addRow("no drive at all") << "" << false;
    }
    void noAudioDisc()
    {
        QFETCH(QString, image);
        SetCDImage(image == "data" ? DiscImage::MakeDataDisc(ground->root())
                   : image.isEmpty() ? QString() : ground->root() + "/" + image);
        if (image.isEmpty() && !CDSourcePath().isEmpty())
            QSKIP("this machine has a CD drive");
        QTEST(CDInDrive(), "inDrive");
        manager().LoadTracks();  // no message, no wait beyond the lookup
        QCOMPARE(manager().Tracks().Count(), 0);
        QVERIFY(manager().CDTitle().isEmpty());
    }

    // How the table of contents becomes rows: an Enhanced CD (audio, then a
    // data session) and a disc that starts with its data track.
    void discLayouts_data()
    {
        QTest::addColumn<bool>("enhanced");
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<QStringList>("lengths");
        // The audio session's last track ends at its lead-out, 11,400
        // sectors before the data session starts: 5,000 sectors, 1:06.
        QTest::addRow("enhanced CD") << true << QStringList{"T0", "T1"} << QStringList{" 0:06", " 1:06"};
        // Rows count as the disc does: its first audio track is number 2.
        QTest::addRow("data first") << false << QStringList{"T1", "T2"} << QStringList{" 0:06", " 0:03"};
    }
    void discLayouts()
    {
        QFETCH(bool, enhanced);
        QFETCH(QStringList, keys);
        QFETCH(QStringList, lengths);
        if (enhanced) {
            discTocReader() = [](CdIo_t*) {
                constexpr int32_t data = 450 + 5000 + kSessionGap;
                return DiscToc{{{1, 0, true}, {2, 450, true}, {3, data, false}}, data + 3000, data};
            };
        } else {
            disc = std::make_unique<DiscImage>(ground->root(), QList<double>{6.0, 3.0}, 300);
            SetCDImage(disc->cue());
        }
        QVERIFY(CDInDrive());
        manager().LoadTracks();
        discTocReader() = DiscTocReader(ReadDiscToc);
        const CDTrackCollection& tracks = manager().Tracks();
        QCOMPARE(tracks.Count(), keys.size());
        for (int i = 0; i < keys.size(); ++i)
            QCOMPARE(tracks.Item(keys[i])->duration, lengths[i]);
        // The first audio row rips the first audio track.
        const std::vector<int16_t> heard = DecodeMono(rip(tracks.Item(keys[0])->SessionInd), 44100);
        QVERIFY(BestCorrelation(disc->mono(0), heard, 600) > 0.95);
    }

    // The MP3 holds the track it was asked for: its length, and its sound.
    void ripMatchesTrack()
    {
        const QString path = rip(0);
        QVERIFY2(QFileInfo(path).isFile(), qPrintable(path));
        QVERIFY(path.startsWith(ground->tempFolder()));
        QVERIFY(QRegularExpression("/[0-9A-F]{32}\\.mp3$").match(path).hasMatch());
        const ProbedSound probed = Probe(path);
        QCOMPARE(probed.codec, QString("mp3"));
        QCOMPARE(probed.sampleRate, 44100);
        QCOMPARE(probed.channels, 2);
        QVERIFY(QFileInfo(path).size() * 8 / probed.seconds >= 190000);
        const std::vector<int16_t> heard = DecodeMono(path, 44100);
        const std::vector<int16_t> track = disc->mono(0);
        QVERIFY2(std::abs(int64_t(heard.size()) - int64_t(track.size())) <= 1152,
                 qPrintable(QString("%1 against %2").arg(heard.size()).arg(track.size())));
        QVERIFY(BestCorrelation(track, heard, 600) > 0.95);
        QVERIFY(BestCorrelation(disc->mono(1), heard, 600) < 0.5);  // not its neighbour
        QVERIFY(manager().LastRippedTrackFilename().isEmpty());
    }

    void cancelRip_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("atOnce");  // before the rip has begun
        QTest::addColumn<bool>("kept");
        QTest::addColumn<int>("files");
        QTest::addRow("yes, stop") << "imgOK" << false << false << 1;
        QTest::addRow("no, go on") << "imgCancel" << false << true << 1;
        QTest::addRow("yes, before the rip starts") << "imgOK" << true << false << 0;
    }
    void cancelRip()
    {
        QFETCH(QString, answer);
        QFETCH(bool, atOnce);
        QFETCH(bool, kept);
        bool asked = false;
        const QString path = rip(2, [&](frmRipping& window) {
            if (!asked && answerer->allAnswered())
                answerer->answer("frmCancelRip", answer);
            if (!asked && (atOnce || window.Label("lblPercentage")->text() != "0%")) {
                asked = true;
                emit window.Button("imgCancel")->Released();
            }
        });
        QVERIFY(answerer->allAnswered());
        QCOMPARE(!path.isEmpty(), kept);
        const QStringList rips = QDir(ground->tempFolder()).entryList({"*.mp3"});
        QTEST(int(rips.size()), "files");
        if (rips.isEmpty())
            return;
        // A stopped rip leaves what it had read in place; a finished one is whole.
        const double seconds = Probe(ground->tempFolder() + "/" + rips.first()).seconds;
        QVERIFY2(kept ? seconds > 64.9 : seconds < 60, qPrintable(QString::number(seconds)));
    }

    // A track that cannot be read to its end ends the rip with a word, and
    // the half-read file goes.
    void unreadableTrack_data()
    {
        QTest::addColumn<int>("track");
        QTest::addColumn<bool>("midway");
        // The sheet says where the next track starts; the BIN ends before.
        QTest::addRow("image shorter than its sheet") << 1 << false;
        QTest::addRow("disc taken out during the rip") << 2 << true;
    }
    void unreadableTrack()
    {
        QFETCH(int, track);
        QFETCH(bool, midway);
        QFile bin(ground->root() + "/disc.bin");
        // 100 sectors into the track.
        qint64 cut = 100;
        for (int t = 0; t < track; ++t)
            cut += disc->sectors(t);
        cut *= 2352;
        if (!midway)
            QVERIFY(bin.resize(cut));
        bool told = false;
        const QString path = rip(int16_t(track), [&](frmRipping& window) {
            if (!told && answerer->allAnswered()) {
                told = true;
                answerer->answer("frmGenericOKDialog", "Enter");
            }
            if (midway && bin.size() > cut && window.Label("lblPercentage")->text() != "0%")
                QVERIFY(bin.resize(cut));
        });
        QVERIFY(path.isEmpty());
        QVERIFY(answerer->allAnswered());
        QCOMPARE(answerer->seen.last().window, QString("frmGenericOKDialog"));
        QVERIFY2(answerer->seen.last().text.contains(kTrackUnreadable), qPrintable(answerer->seen.last().text));
        QCOMPARE(QDir(ground->tempFolder()).entryList({"*.mp3"}), QStringList());
    }

    void playback()
    {
        manager().LoadTracks();
        QSignalSpy times(&manager(), &CDManager::CDTrackTimer);
        QSignalSpy ended(manager().findChild<NCTAudioPlayer2*>(), &NCTAudioPlayer2::EndPlay);
        manager().PlaySelectedTrack(1);
        QVERIFY(manager().Playing());
        manager().PlaySelectedTrack(0);  // ignored while one plays
        QTRY_VERIFY_WITH_TIMEOUT(!times.isEmpty() && times.last().first().toString() == "00m 03s", 10000);
        // Run to its end, the track still counts as playing until stopped.
        QVERIFY(ended.wait(5000));
        QVERIFY(manager().Playing());
        manager().PlaySelectedTrack(1);  // and does not start again
        QVERIFY(ended.size() == 1 && manager().Playing());
        manager().StopPlaying();
        QVERIFY(!manager().Playing());
    }

    void cdWindow()
    {
        frmRipCD window;
        answerer->answer("frmRipCD", [&](QWidget*) {
            auto* list = window.findChild<QTreeWidget*>("lvwTracks");
            QCOMPARE(list->topLevelItemCount(), 3);
            QCOMPARE(list->topLevelItem(1)->text(0), QString("2: Middle"));
            QCOMPARE(list->topLevelItem(2)->text(1), QString(" 1:05"));
            QCOMPARE(window.findChild<QLineEdit*>("txtCDTitle")->text(), QString("Known Tones, The Testers"));
            emit window.Button("cmdRipIt")->Released();  // nothing selected: the window stays
            QVERIFY(window.isVisible());
            list->setCurrentItem(list->topLevelItem(0));
            window.findChild<CClickLabel*>("lblDown")->MouseDown(Qt::LeftButton);
            QTRY_COMPARE(window.SelectedTrackText(), QString("3: Long"));  // held: every 150 ms to the last row
            window.findChild<CClickLabel*>("lblDown")->MouseUp(Qt::LeftButton);
            emit window.Button("cmdPlay")->Released();
            emit window.Button("cmdCancel")->Released();
        });
        window.Load();
        window.Show(true);
        QVERIFY(answerer->allAnswered());
        QVERIFY(window.Tag.isEmpty());
        QVERIFY(!manager().Playing());
    }
};

QTEST_MAIN(tst_CDRip)
#include "tst_cdrip.moc"
