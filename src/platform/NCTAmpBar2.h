#pragma once
// A level bar: a value from 0 to 100 drawn as a bar from the left, green up
// to 70, then red.
#include <QWidget>

class NCTAmpBar2 : public QWidget {
    Q_OBJECT
public:
    static constexpr int kMaximum = 100;

    explicit NCTAmpBar2(QWidget* parent = nullptr);
    int Value() const { return mValue; }
    void SetValue(int value);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int mValue = 0;
};
