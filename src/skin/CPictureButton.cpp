#include "skin/CPictureButton.h"

#include <QEvent>
#include <QMouseEvent>

namespace {
QLabel* makeTwin(const QString& name, QWidget* window, const QRect& rect, const QPixmap& picture)
{
    auto* twin = new QLabel(window);
    twin->setObjectName(name);
    twin->setGeometry(rect);
    twin->setPixmap(picture);
    twin->hide();
    return twin;
}
}  // namespace

CPictureButton::CPictureButton(const QString& name, QWidget* window, const QRect& rect, const QPixmap& over,
                               const QPixmap& clicked)
    : QLabel(window),
      mOver(makeTwin(name + QStringLiteral("Over"), window, rect, over)),
      mClicked(makeTwin(name + QStringLiteral("Clicked"), window, rect, clicked))
{
    setObjectName(name);
    setGeometry(rect);
    setAttribute(Qt::WA_TranslucentBackground);
    setMouseTracking(true);
}

void CPictureButton::ShowRest()
{
    if (!pixmap().isNull())
        setPixmap(QPixmap());
}

void CPictureButton::ShowOver()
{
    setPixmap(mOver->pixmap());
}

void CPictureButton::ShowClicked()
{
    setPixmap(mClicked->pixmap());
}

void CPictureButton::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        ShowClicked();
    emit MouseDown(event->button());
}

void CPictureButton::mouseMoveEvent(QMouseEvent* event)
{
    emit MouseMove();
    // While held, the pressed picture stays, wherever the mouse goes.
    if (event->buttons() & Qt::LeftButton)
        return;
    ResetButtonPictures(window());
    ShowOver();
}

void CPictureButton::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    if (rect().contains(event->position().toPoint()))
        ShowOver();
    else
        ShowRest();
    emit Released();
}

void CPictureButton::changeEvent(QEvent* event)
{
    // A disabled button shows its rest look, which is painted in the face.
    if (event->type() == QEvent::EnabledChange && !isEnabled())
        ShowRest();
    QLabel::changeEvent(event);
}

void ResetButtonPictures(QWidget* window)
{
    if (!window)
        return;
    for (CPictureButton* button : window->findChildren<CPictureButton*>())
        button->ShowRest();
}
