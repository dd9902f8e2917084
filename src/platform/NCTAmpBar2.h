#pragma once
// A level bar: shows a settable level from 0 to 100, green to red.
#include <QWidget>

class NCTAmpBar2 : public QWidget {
    Q_OBJECT
public:
    explicit NCTAmpBar2(QWidget* parent = nullptr);

    int Value() const { return mValue; }
    void SetValue(int value);  // held within 0..100

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int mValue = 0;
};
