#include "platform/NCTAmpBar2.h"

#include <QPainter>
#include <algorithm>

namespace {
constexpr int kRedFrom = 70;
}

NCTAmpBar2::NCTAmpBar2(QWidget* parent) : QWidget(parent) { setMinimumSize(40, 6); }

void NCTAmpBar2::SetValue(int value)
{
    value = std::clamp(value, 0, kMaximum);
    if (value == mValue)
        return;
    mValue = value;
    update();
}

void NCTAmpBar2::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.fillRect(rect(), Qt::black);
    const int green = width() * std::min(mValue, kRedFrom) / kMaximum;
    const int all = width() * mValue / kMaximum;
    p.fillRect(QRect(0, 0, green, height()), Qt::green);
    p.fillRect(QRect(green, 0, all - green, height()), Qt::red);
}
