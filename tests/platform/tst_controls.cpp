#include "platform/NCTAmpBar2.h"
#include "platform/NCTSliderB2.h"
#include "support/TestGround.h"

#include <QImage>
#include <QSignalSpy>
#include <QTest>

class tst_Controls : public QObject {
    Q_OBJECT
private slots:
    void slider_valueIsHeldInRange_data()
    {
        QTest::addColumn<int>("set");
        QTest::addColumn<int>("value");
        QTest::addColumn<int>("events");
        QTest::addRow("above the top") << 70000 << 64000 << 1;
        QTest::addRow("below zero") << -3000 << 0 << 1;
    }
    void slider_valueIsHeldInRange()
    {
        QFETCH(int, set);
        QFETCH(int, value);
        QFETCH(int, events);
        NCTSliderB2 slider;
        QSignalSpy moved(&slider, &NCTSliderB2::OnVolumeSliderMoved);
        slider.SetValue(set);
        QCOMPARE(slider.Value(), value);
        QCOMPARE(moved.size(), events);
        if (events)
            QCOMPARE(moved.first().at(0).toInt(), value);
    }

    void slider_followsTheMouse()
    {
        NCTSliderB2 slider;
        slider.resize(108, 12);
        QSignalSpy moved(&slider, &NCTSliderB2::OnVolumeSliderMoved);
        QTest::mousePress(&slider, Qt::LeftButton, {}, QPoint(4, 6));
        QCOMPARE(slider.Value(), 0);
        QTest::mouseMove(&slider, QPoint(104, 6));
        QCOMPARE(slider.Value(), 64000);
        QTest::mouseRelease(&slider, Qt::LeftButton, {}, QPoint(104, 6));
        QCOMPARE(moved.size(), 2);
    }

    void ampBar_drawsItsValue_data()
    {
        QTest::addColumn<int>("value");
        QTest::addColumn<int>("green");
        QTest::addColumn<int>("red");
        QTest::addRow("empty") << 0 << 0 << 0;
        QTest::addRow("half") << 50 << 50 << 0;
        QTest::addRow("loud") << 100 << 70 << 30;
        QTest::addRow("beyond the top") << 150 << 70 << 30;
    }
    void ampBar_drawsItsValue()
    {
        QFETCH(int, value);
        QFETCH(int, green);
        QFETCH(int, red);
        NCTAmpBar2 bar;
        bar.resize(100, 6);
        bar.SetValue(value);
        QCOMPARE(bar.Value(), std::min(value, 100));
        const QImage shot = bar.grab().toImage();
        int g = 0, r = 0;
        for (int x = 0; x < 100; ++x) {
            g += shot.pixelColor(x, 3) == QColor(Qt::green);
            r += shot.pixelColor(x, 3) == QColor(Qt::red);
        }
        QCOMPARE(g, green);
        QCOMPARE(r, red);
    }
};

QTEST_MAIN(tst_Controls)
#include "tst_controls.moc"
