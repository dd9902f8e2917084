#include "editing/ToneMeasures.h"

#include <QTest>

class tst_ToneMeasures : public QObject {
    Q_OBJECT
private slots:
    void selection_data()
    {
        QTest::addColumn<int>("milliseconds");
        QTest::addColumn<QString>("length");
        QTest::addColumn<QString>("size");
        QTest::addRow("0.4 s") << 400 << "0m 0s" << "~1Kb";
        QTest::addRow("tie 8 s -> 12") << 8000 << "0m 8s" << "~12Kb";
        QTest::addRow("tie 24 s -> 38") << 24000 << "0m 24s" << "~38Kb";
        QTest::addRow("tie 2.5 s -> 2") << 2500 << "0m 2s" << "~4Kb";
        QTest::addRow("tie 3.5 s -> 4") << 3500 << "0m 4s" << "~5Kb";
        QTest::addRow("59.5 s rounds up a minute") << 59500 << "1m 0s" << "~93Kb";
        QTest::addRow("long song") << 3723000 << "62m 3s" << "~5817Kb";
        QTest::addRow("end before start") << -5000 << "0m -5s" << "~-8Kb";
    }
    void selection()
    {
        QFETCH(int, milliseconds);
        const float seconds = MillisecondsToSeconds(milliseconds);
        QTEST(LengthCaption(seconds), "length");
        QTEST(ToneSizeCaption(seconds), "size");
    }

    void position_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<float>("offset");
        QTest::addColumn<QString>("caption");
        QTest::addRow("two digits") << 75 << 0.0f << "01m 15s";
        QTest::addRow("ten minutes") << 600 << 0.0f << "10m 00s";
        QTest::addRow("hundred minutes") << 6000 << 0.0f << "100m 00s";
    }
    void position()
    {
        QFETCH(int, seconds);
        QFETCH(float, offset);
        QTEST(PositionCaption(seconds, offset), "caption");
    }
};

QTEST_MAIN(tst_ToneMeasures)
#include "tst_tonemeasures.moc"
