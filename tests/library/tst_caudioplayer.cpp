#include "library/CAudioPlayer.h"
#include "support/Files.h"
#include "support/SoundFiles.h"
#include "support/SoundTestCase.h"
#include "support/TakeRecorder.h"

#include <QFile>
#include <QSignalSpy>
#include <QTest>
#include <cmath>

class tst_CAudioPlayer : public SoundTestCase {
    Q_OBJECT
private slots:
    void playback_isHeardOnTheSoundServer_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("channels");
        QTest::addRow("mp3 stereo 44.1 kHz") << "t.mp3" << 44100 << 2;
        QTest::addRow("wma mono 22 kHz") << "t.wma" << 22050 << 1;
    }
    void playback_isHeardOnTheSoundServer()
    {
        QFETCH(QString, name);
        QFETCH(int, rate);
        QFETCH(int, channels);
        // Longer than one block of four seconds, so the player is fed again.
        const QString tone = MakeTone(scratch(name), 5.0, 1000, rate, channels);
        TakeRecorder take(scratch("heard.wav"));
        QCOMPARE(take.recorder.Status(), 0);
        CAudioPlayer player;
        QSignalSpy timer(&player, &CAudioPlayer::Timer);
        player.LoadFile(tone);
        player.StartPlaying();
        QVERIFY(player.IsPlaying());
        QSignalSpy recorded(&take.recorder, &NCTAudioRecord2::Timer);
        QTRY_VERIFY_WITH_TIMEOUT(!timer.isEmpty() && timer.last().at(0).toDouble() >= 5.0, 15000);
        // The player counts what it handed over; the server plays it a little later.
        QTRY_VERIFY_WITH_TIMEOUT(recorded.last().at(0).toLongLong() >= 44100 * 6, 15000);
        for (const auto& args : timer)
            QCOMPARE(args.at(0).toDouble(), std::round(args.at(0).toDouble()));  // whole seconds
        take.Stop();
        // The class does not notice the end of the file.
        QVERIFY(player.IsPlaying());
        player.StopPlaying();
        QVERIFY(!player.IsPlaying());

        const std::vector<int16_t> heard = DecodeMono(scratch("heard.wav"), 44100);
        QVERIFY(heard.size() > 44100 * 5);
        // Somewhere in what was recorded stands a second of the 1 kHz tone.
        bool found = false;
        for (double t = 0; t + 1.0 <= heard.size() / 44100.0 && !found; t += 0.25) {
            const double crossings = CrossingsPerSecond(heard, 44100, t, t + 1.0);
            found = PeakBetween(heard, 44100, t, t + 1.0) > 2000 && std::abs(crossings - 2000) < 40;
        }
        QVERIFY(found);
    }

    void startPlaying_whileStreamingStartsAgain()
    {
        CAudioPlayer player;
        player.LoadFile(MakeTone(scratch("a.wav"), 6.0));
        QSignalSpy timer(&player, &CAudioPlayer::Timer);
        player.StartPlaying();
        QTRY_VERIFY_WITH_TIMEOUT(!timer.isEmpty() && timer.last().at(0).toDouble() >= 2.0, 10000);
        timer.clear();
        player.StartPlaying();
        QVERIFY(timer.wait(5000));
        QCOMPARE(timer.first().at(0).toDouble(), 0.0);
        player.StopPlaying();
    }

    // A song that cannot be opened for listening says so, and nothing plays.
    void unopenable_saysSo_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("exists");
        QTest::addRow("no such file") << QByteArray() << false;
        QTest::addRow("zero length") << QByteArray() << true;
    }
    void unopenable_saysSo()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, exists);
        const QString path = scratch("x.mp3");
        if (exists)
            QVERIFY(WriteFile(path, content));
        CAudioPlayer player;
        player.StopPlaying();  // nothing playing: harmless
        player.LoadFile(path);
        answerer->answer("frmInvalidFileFormat", "imgOK");
        player.StartPlaying();
        QVERIFY(!player.IsPlaying());
        QVERIFY2(answerer->finishedCleanly(), qPrintable(answerer->problems()));
    }
};

QTEST_MAIN(tst_CAudioPlayer)
#include "tst_caudioplayer.moc"
