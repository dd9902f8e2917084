#include "platform/SampleShaper.h"
#include "support/TestGround.h"

#include <QTest>
#include <vector>

class tst_SampleShaper : public QObject {
    Q_OBJECT

    // Pushes a constant sound through in uneven pieces, then flushes.
    static std::vector<int16_t> run(SampleShaper& shaper, int frames, int channels, int16_t value)
    {
        std::vector<int16_t> in(static_cast<size_t>(frames) * channels, value), out;
        for (int at = 0; at < frames;) {
            const int take = std::min(7, frames - at);
            const std::vector<int16_t> ready = shaper.Push(in.data() + static_cast<size_t>(at) * channels, take);
            out.insert(out.end(), ready.begin(), ready.end());
            at += take;
        }
        const std::vector<int16_t> tail = shaper.Flush();
        out.insert(out.end(), tail.begin(), tail.end());
        return out;
    }

private slots:
    void boost_decibelsAndClipping_data()
    {
        QTest::addColumn<double>("decibels");
        QTest::addColumn<int>("in");
        QTest::addColumn<int>("out");
        QTest::addRow("0 dB leaves the level") << 0.0 << 1000 << 1000;
        QTest::addRow("6 dB doubles") << 6.0206 << 1000 << 2000;
        QTest::addRow("-6 dB halves") << -6.0206 << -1000 << -500;
        QTest::addRow("20 dB clips high") << 20.0 << 20000 << 32767;
        QTest::addRow("20 dB clips low") << 20.0 << -20000 << -32768;
        QTest::addRow("full scale stays") << 3.0 << 32767 << 32767;
    }
    void boost_decibelsAndClipping()
    {
        QFETCH(double, decibels);
        QFETCH(int, in);
        SampleShaper shaper(100, 2, 0, 0, decibels);
        const std::vector<int16_t> got = run(shaper, 20, 2, static_cast<int16_t>(in));
        QCOMPARE(got.size(), size_t(40));
        for (int16_t s : got)
            QTEST(int(s), "out");
    }

    void fades_shape_data()
    {
        QTest::addColumn<double>("fadeIn");
        QTest::addColumn<double>("fadeOut");
        QTest::addColumn<int>("frames");
        QTest::addColumn<QList<int>>("probes");  // frame, expected value, ...
        QTest::addRow("in") << 1.0 << 0.0 << 300 << QList<int>{0, 0, 50, 500, 99, 990, 100, 1000, 299, 1000};
        QTest::addRow("out") << 0.0 << 1.0 << 300 << QList<int>{0, 1000, 199, 1000, 200, 990, 249, 500, 299, 0};
        QTest::addRow("both") << 1.0 << 1.0 << 300 << QList<int>{0, 0, 150, 1000, 299, 0};
        QTest::addRow("shorter than the fade-out") << 0.0 << 1.0 << 51 << QList<int>{0, 500, 25, 250, 50, 0};
    }
    void fades_shape()
    {
        QFETCH(double, fadeIn);
        QFETCH(double, fadeOut);
        QFETCH(int, frames);
        QFETCH(QList<int>, probes);
        SampleShaper shaper(100, 1, fadeIn, fadeOut, 0.0);
        const std::vector<int16_t> got = run(shaper, frames, 1, 1000);
        QCOMPARE(int(got.size()), frames);  // nothing lost, nothing added
        for (int i = 0; i < probes.size(); i += 2)
            QVERIFY2(qAbs(got[probes[i]] - probes[i + 1]) <= 1,
                     qPrintable(QString("frame %1: %2").arg(probes[i]).arg(got[probes[i]])));
    }
};

QTEST_MAIN(tst_SampleShaper)
#include "tst_sampleshaper.moc"
