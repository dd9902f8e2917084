#include "platform/StallWatch.h"

#include <QTest>

// A device's progress at each tick, written as runs: "0x25" is 0 for 25
// ticks, "+5" five ticks that each move on, "-3" three ticks with nothing due.
class tst_StallWatch : public QObject {
    Q_OBJECT

private slots:
    void stalled_data()
    {
        QTest::addColumn<int>("tickMs");
        QTest::addColumn<qint64>("start");
        QTest::addColumn<QString>("ticks");
        QTest::addColumn<int>("firstStall");  // 1-based tick; 0: never
        QTest::addRow("an output that never starts") << 100 << qint64(-1) << "0x60" << 51;
        QTest::addRow("an input silent from its start") << 100 << qint64(0) << "0x60" << 50;
        QTest::addRow("an input whose first data comes late") << 100 << qint64(0) << "0x45 +60" << 0;
        QTest::addRow("moving on never stalls") << 100 << qint64(-1) << "+60" << 0;
        QTest::addRow("a move starts the count over") << 100 << qint64(-1) << "0x20 +1 5x19" << 0;
        QTest::addRow("after a move two seconds more") << 100 << qint64(-1) << "0x20 +1 5x21" << 42;
        QTest::addRow("nothing due is no stall") << 100 << qint64(-1) << "-40" << 0;
        QTest::addRow("being due again counts from nothing") << 100 << qint64(0) << "-40 0x50" << 90;
        QTest::addRow("short ticks take more of them") << 40 << qint64(-1) << "+2 0x60" << 53;
    }
    void stalled()
    {
        QFETCH(int, tickMs);
        QFETCH(qint64, start);
        QFETCH(QString, ticks);
        StallWatch watch(tickMs);
        watch.Reset(start);
        int tick = 0, firstStall = 0;
        qint64 progress = start;
        for (const QString& run : ticks.split(QLatin1Char(' '))) {
            const bool idle = run.startsWith(QLatin1Char('-'));
            const bool moving = run.startsWith(QLatin1Char('+'));
            const int x = run.indexOf(QLatin1Char('x'));
            const int count = idle || moving ? run.mid(1).toInt() : run.mid(x + 1).toInt();
            for (int i = 0; i < count; ++i) {
                progress = moving ? progress + 1 : idle ? progress : run.left(x).toLongLong();
                ++tick;
                if (watch.Stalled(progress, !idle) && !firstStall)
                    firstStall = tick;
            }
        }
        QTEST(firstStall, "firstStall");
    }
};

QTEST_GUILESS_MAIN(tst_StallWatch)
#include "tst_stallwatch.moc"
