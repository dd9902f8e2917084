#pragma once
// The volume slider: a value held within its range, dragged with the mouse or
// set in code. OnVolumeSliderMoved carries every new value, however it came.
#include <QColor>
#include <QWidget>
#include <cstdint>

class NCTSliderB2 : public QWidget {
    Q_OBJECT
public:
    static constexpr int32_t kMin = 0;
    static constexpr int32_t kMax = 64000;  // 32000, the middle, leaves the volume as it is

    explicit NCTSliderB2(QWidget* parent = nullptr);

    int32_t Value() const { return mValue; }
    // Values outside the range are held at its ends.
    void SetValue(int32_t value);
    void SetColours(const QColor& track, const QColor& fill, const QColor& knob);

signals:
    void OnVolumeSliderMoved(int32_t value);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    bool vertical() const { return height() > width(); }
    int32_t valueAt(const QPointF& at) const;

    int32_t mValue = 32000;
    QColor mTrack{0xE4, 0xDD, 0xF8};
    QColor mFill{0x7A, 0x5C, 0xE0};
    QColor mKnob{0xFF, 0x8E, 0x6A};
};
