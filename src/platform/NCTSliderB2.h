#pragma once
// The volume slider: a value from 0 to 64000 (32000 in the middle) that the
// user drags or code sets. Every change of the value, by hand or by code,
// raises OnVolumeSliderMoved with the new value; the slider holds the value
// within its range.
#include <QWidget>

class NCTSliderB2 : public QWidget {
    Q_OBJECT
public:
    static constexpr int kMinimum = 0;
    static constexpr int kMaximum = 64000;

    explicit NCTSliderB2(QWidget* parent = nullptr);
    int Value() const { return mValue; }
    void SetValue(int value);

signals:
    void OnVolumeSliderMoved(int value);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    int valueAt(int x) const;
    int mValue = 32000;
};
