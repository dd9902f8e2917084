#include "core/CError.h"
#include "platform/FrameThread.h"

#include <QTest>

// The hand-over between a maker of frames and a sink on its own thread:
// every frame arrives once and in order, and a sink that fails stops the
// maker with the sink's own error, at whichever call comes next.
class tst_FrameThread : public QObject {
    Q_OBJECT

private slots:
    void handOver_data()
    {
        QTest::addColumn<int>("buffers");
        QTest::addColumn<int>("failAt");  // the buffer the sink refuses; -1: none
        QTest::addRow("many more buffers than wait") << 200 << -1;
        QTest::addRow("none at all") << 0 << -1;
        QTest::addRow("the first fails") << 200 << 0;
        QTest::addRow("a later one fails") << 200 << 57;
        QTest::addRow("the last fails, seen by Drain") << 3 << 2;
    }
    void handOver()
    {
        QFETCH(int, buffers);
        QFETCH(int, failAt);
        std::vector<int16_t> seen;
        int taken = 0;
        FrameThread pipe(2, [&](const int16_t* frames, int count) {
            if (taken++ == failAt)
                throw CError(ErrNo::PathFileAccess, QStringLiteral("Disk full"), QStringLiteral("test"));
            seen.insert(seen.end(), frames, frames + 2 * count);
        });
        std::vector<int16_t> sent;
        QString error;
        try {
            for (int b = 0; b < buffers; ++b) {
                std::vector<int16_t> frames = pipe.Spare();
                QVERIFY(frames.empty());
                for (int i = 0; i < 2 * (1 + b % 7); ++i)
                    frames.push_back(static_cast<int16_t>(sent.size()));
                sent.insert(sent.end(), frames.begin(), frames.end());
                pipe.Write(std::move(frames));
            }
            pipe.Drain();
        } catch (const CError& e) {
            error = e.Description();
        }
        if (failAt < 0) {
            QCOMPARE(error, QString());
            QVERIFY(seen == sent);
        } else {
            QCOMPARE(error, QStringLiteral("Disk full"));
            QCOMPARE(taken, failAt + 1);  // nothing reaches the sink after its failure
            QVERIFY(std::equal(seen.begin(), seen.end(), sent.begin()));
        }
    }
};

QTEST_GUILESS_MAIN(tst_FrameThread)
#include "tst_framethread.moc"
