#include "platform/AudioEditor2.h"
#include "support/SongMaker.h"
#include "support/TestGround.h"

#include <QTest>

Q_DECLARE_METATYPE(QList<SongSection>)

// The best part of songs made with a known form, found from what the
// editor gathered while it opened them as MP3.
class tst_BestPart : public QObject {
    Q_OBJECT
    TestGround ground;

private slots:
    void findsTheChorus_data()
    {
        QTest::addColumn<QList<SongSection>>("form");
        QTest::addColumn<double>("seconds");
        QTest::addColumn<double>("expected");  // where the part should start
        QTest::addRow("chorus first at 40 s, 15 s tone") << PopSongForm(40) << 15.0 << 40.0;
        QTest::addRow("chorus first at 70 s, 20 s tone") << PopSongForm(70) << 20.0 << 70.0;
        QTest::addRow("tone longer than the chorus") << PopSongForm(30) << 50.0 << 30.0;
        QTest::addRow("nothing repeats: the loudest part")
            << QList<SongSection>{{SongSection::Free, 60, 0.2}, {SongSection::Free, 15, 0.7}, {SongSection::Free, 45, 0.2}}
            << 15.0 << 60.0;
        QTest::addRow("two choruses among free playing: the first")
            << QList<SongSection>{{SongSection::Free, 30, 0.2}, {SongSection::Chorus, 16, 0.7},
                                  {SongSection::Free, 30, 0.2}, {SongSection::Chorus, 16, 0.7}}
            << 16.0 << 30.0;
    }
    void findsTheChorus()
    {
        QFETCH(QList<SongSection>, form);
        QFETCH(double, seconds);
        QFETCH(double, expected);
        const QString song = MakeSong(ground.tempFolder() + "/song.mp3", form);
        QVERIFY(!song.isEmpty());
        AudioEditor2 editor;
        editor.OpenFile(song);
        const int rate = editor.SampleRate();
        const SongFeatures::Part part = editor.Features().BestPart(seconds);
        QVERIFY2(std::abs(part.start / double(rate) - expected) <= 2.0, qPrintable(QString::number(part.start / double(rate))));
        QCOMPARE(part.end - part.start, std::llround(seconds * rate));
    }

    void shortSongIsTakenWhole()
    {
        const QString song = MakeSong(ground.tempFolder() + "/short.mp3", {{SongSection::Chorus, 8, 0.5}});
        AudioEditor2 editor;
        editor.OpenFile(song);
        const SongFeatures::Part part = editor.Features().BestPart(30);
        QCOMPARE(part.start, 0);
        QCOMPARE(part.end, editor.TotalSamples());
        editor.Clear();
        QCOMPARE(editor.Features().BestPart(30).end, 0);
    }
};

QTEST_MAIN(tst_BestPart)
#include "tst_bestpart.moc"
