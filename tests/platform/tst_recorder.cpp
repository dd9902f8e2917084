#include "platform/NCTAudioPlayer2.h"
#include "platform/NCTAudioRecord2.h"
#include "platform/SoundLevel.h"
#include "support/SoundFiles.h"
#include "support/SoundTestCase.h"
#include "support/TakeRecorder.h"

#include <QSignalSpy>
#include <QTest>

class tst_Recorder : public SoundTestCase {
    Q_OBJECT
    // The case that unplugs the devices comes last.
private slots:
    void levels_data()
    {
        QTest::addColumn<int>("peak");
        QTest::addColumn<int>("level");
        QTest::addRow("silence") << 0 << 0;
        QTest::addRow("full scale") << 32767 << 80;
        QTest::addRow("-20 dBFS") << 3277 << 60;
        QTest::addRow("below -80 dBFS") << 1 << 0;
    }
    void levels()
    {
        QFETCH(int, peak);
        QTEST(LevelOfPeak(peak), "level");
    }

    void arrayPlay_smallBlocksFedOnRequestPlayThrough()
    {
        // CD playback feeds blocks of 26 sectors (about 0.35 s) on each
        // request; the player must not run dry between them.
        NCTAudioPlayer2 player;
        player.SetFormat(44100, 2);
        const QByteArray block(26 * 2352, '\x20');
        int fed = 0;
        auto feed = [&] {
            if (fed < 12) {
                ++fed;
                player.LoadArray(block);
            }
        };
        connect(&player, &NCTAudioPlayer2::RequestOnLoadArray, this, feed);
        connect(&player, &NCTAudioPlayer2::EndArrayPlay, this, feed);
        QSignalSpy ended(&player, &NCTAudioPlayer2::EndPlay);
        QSignalSpy timer(&player, &NCTAudioPlayer2::Timer);
        player.StartArrayPlay();
        feed();
        QVERIFY(ended.wait(15000));
        QCOMPARE(fed, 12);
        QCOMPARE(player.Status(), 0);
        // All twelve blocks went out, about 4.2 s of sound; the last tick may
        // come a little before the end.
        QVERIFY(!timer.isEmpty());
        QVERIFY2(timer.last().at(0).toLongLong() >= 12 * 26 * 588 * 8 / 10,
                 qPrintable(QString::number(timer.last().at(0).toLongLong())));
        player.Stop();
    }

    void deviceVanishing_endsPlayAndTakeCleanly()
    {
        TakeRecorder take(scratch("cut.wav"));
        NCTAudioPlayer2 player;
        player.SetFormat(44100, 2);
        player.StartArrayPlay();
        player.LoadArray(QByteArray(player.BytesForMilliseconds(20000), '\x10'));
        QSignalSpy ended(&player, &NCTAudioPlayer2::EndPlay);
        QSignalSpy blocks(&take.recorder, &NCTAudioRecord2::EndArrayRecord);
        QVERIFY(blocks.wait(5000));
        QVERIFY(pulse->UnplugDevices());
        QVERIFY(ended.wait(10000));
        QVERIFY(player.Status() < 0);
        QTRY_VERIFY_WITH_TIMEOUT(take.recorder.Status() < 0, 10000);
        take.Stop();
        // What was recorded before is a good wave file of its own length.
        const ProbedSound probed = Probe(scratch("cut.wav"));
        QCOMPARE(probed.codec, QString("pcm_s16le"));
        QVERIFY(probed.seconds >= 1.0);
        player.Stop();
    }
};

QTEST_MAIN(tst_Recorder)
#include "tst_recorder.moc"
