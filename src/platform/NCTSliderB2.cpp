#include "platform/NCTSliderB2.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>

NCTSliderB2::NCTSliderB2(QWidget* parent)
    : QWidget(parent)
{
    setCursor(Qt::PointingHandCursor);
}

void NCTSliderB2::SetValue(int32_t value)
{
    const int32_t held = std::clamp(value, kMin, kMax);
    if (held == mValue)
        return;
    mValue = held;
    update();
    emit OnVolumeSliderMoved(mValue);
}

void NCTSliderB2::SetColours(const QColor& track, const QColor& fill, const QColor& knob)
{
    mTrack = track;
    mFill = fill;
    mKnob = knob;
    update();
}

int32_t NCTSliderB2::valueAt(const QPointF& at) const
{
    const double span = vertical() ? height() : width();
    double share = vertical() ? 1.0 - at.y() / span : at.x() / span;
    share = std::clamp(share, 0.0, 1.0);
    return static_cast<int32_t>(kMin + share * (kMax - kMin));
}

void NCTSliderB2::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const double share = double(mValue - kMin) / (kMax - kMin);
    const double thick = 6;
    const double knob = std::min(width(), height()) * 0.9;
    QRectF track;
    QRectF filled;
    QPointF centre;
    if (vertical()) {
        const double x = (width() - thick) / 2;
        const double usable = height() - knob;
        track = QRectF(x, knob / 2, thick, usable);
        const double y = knob / 2 + usable * (1 - share);
        filled = QRectF(x, y, thick, knob / 2 + usable - y);
        centre = QPointF(width() / 2.0, y);
    } else {
        const double y = (height() - thick) / 2;
        const double usable = width() - knob;
        track = QRectF(knob / 2, y, usable, thick);
        filled = QRectF(knob / 2, y, usable * share, thick);
        centre = QPointF(knob / 2 + usable * share, height() / 2.0);
    }
    p.setPen(Qt::NoPen);
    p.setBrush(mTrack);
    p.drawRoundedRect(track, thick / 2, thick / 2);
    p.setBrush(mFill);
    p.drawRoundedRect(filled, thick / 2, thick / 2);
    p.setBrush(mKnob);
    p.setPen(QPen(Qt::white, 1.5));
    p.drawEllipse(centre, knob / 2 - 1, knob / 2 - 1);
}

void NCTSliderB2::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        SetValue(valueAt(event->position()));
}

void NCTSliderB2::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton)
        SetValue(valueAt(event->position()));
}

void NCTSliderB2::wheelEvent(QWheelEvent* event)
{
    SetValue(mValue + (event->angleDelta().y() > 0 ? 3000 : -3000));
}
