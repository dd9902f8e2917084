#include "platform/NCTAmpBar2.h"

#include <QLinearGradient>
#include <QPainter>
#include <algorithm>

NCTAmpBar2::NCTAmpBar2(QWidget* parent)
    : QWidget(parent)
{
}

void NCTAmpBar2::SetValue(int value)
{
    const int held = std::clamp(value, 0, 100);
    if (held != mValue) {
        mValue = held;
        update();
    }
}

void NCTAmpBar2::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF all = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0x2A, 0x22, 0x48));
    p.drawRoundedRect(all, 4, 4);
    QLinearGradient level(all.topLeft(), all.topRight());
    level.setColorAt(0, QColor(0x3C, 0xD0, 0x70));
    level.setColorAt(0.7, QColor(0xF2, 0xD0, 0x3C));
    level.setColorAt(1, QColor(0xF0, 0x4C, 0x3C));
    p.setBrush(level);
    p.drawRoundedRect(QRectF(all.left(), all.top(), all.width() * mValue / 100.0, all.height()), 4, 4);
}
