#include "skin/CClickLabel.h"

#include <QMouseEvent>

CClickLabel::CClickLabel(const QString& name, QWidget* parent, Kind kind)
    : QLabel(parent)
{
    setObjectName(name);
    setAttribute(Qt::WA_TranslucentBackground);
    setAutoFillBackground(false);
    if (kind == Link)
        setCursor(Qt::PointingHandCursor);
}

void CClickLabel::mousePressEvent(QMouseEvent* event)
{
    emit MouseDown(event->button());
}

void CClickLabel::mouseReleaseEvent(QMouseEvent* event)
{
    emit MouseUp(event->button());
    // A click is a release over the label that was pressed.
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        emit Click();
}

void CClickLabel::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        emit DblClick();
}
