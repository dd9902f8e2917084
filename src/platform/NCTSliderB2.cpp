#include "platform/NCTSliderB2.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

namespace {
constexpr int kKnobWidth = 8;
}

NCTSliderB2::NCTSliderB2(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("NCTSliderB21"));
    setMinimumSize(40, 12);
}

void NCTSliderB2::SetValue(int value)
{
    value = std::clamp(value, kMinimum, kMaximum);
    if (value == mValue)
        return;
    mValue = value;
    update();
    emit OnVolumeSliderMoved(mValue);
}

int NCTSliderB2::valueAt(int x) const
{
    const int track = std::max(1, width() - kKnobWidth);
    return kMinimum + static_cast<int>(static_cast<int64_t>(x - kKnobWidth / 2) * (kMaximum - kMinimum) / track);
}

void NCTSliderB2::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    const int mid = height() / 2;
    p.fillRect(QRect(kKnobWidth / 2, mid - 1, width() - kKnobWidth, 3), QColor(78, 181, 206));
    const int x = static_cast<int>(static_cast<int64_t>(mValue - kMinimum) * (width() - kKnobWidth) /
                                   (kMaximum - kMinimum));
    p.fillRect(QRect(x, 0, kKnobWidth, height()), Qt::white);
    p.setPen(Qt::black);
    p.drawRect(QRect(x, 0, kKnobWidth - 1, height() - 1));
}

void NCTSliderB2::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        SetValue(valueAt(event->position().toPoint().x()));
}

void NCTSliderB2::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton)
        SetValue(valueAt(event->position().toPoint().x()));
}
