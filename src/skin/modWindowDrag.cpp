#include "skin/modWindowDrag.h"

#include "core/twips.h"

#include <QPainter>
#include <QPointer>
#include <QRect>
#include <QRegion>
#include <QWidget>
#include <cmath>

namespace {
// The dotted outline: a frameless window that is only its border and lets
// the mouse through.
class COutline : public QWidget {
public:
    COutline()
        : QWidget(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                               Qt::WindowTransparentForInput)
    {
        setObjectName(QStringLiteral("DragOutline"));
        setAttribute(Qt::WA_ShowWithoutActivating);
    }

    void Place(const QRect& r)
    {
        setGeometry(r);
        const QRegion all(rect());
        setMask(all.subtracted(QRegion(rect().adjusted(kPen, kPen, -kPen, -kPen))));
        show();
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter p(this);
        p.fillRect(rect(), Qt::white);
        p.setPen(QPen(Qt::black, kPen, Qt::DotLine));
        p.drawRect(rect().adjusted(0, 0, -1, -1));
    }

private:
    static constexpr int kPen = 2;
};

struct DragState {
    double startX = 0;
    double startY = 0;
    QRect windowRect;  // screen pixels at the start
    QRect last;        // the outline drawn last
    QPointer<QWidget> window;
    COutline* outline = nullptr;
};

DragState& drag()
{
    static DragState state;
    return state;
}

QRect shifted(const QWidget* window, double X, double Y)
{
    const DragState& d = drag();
    const auto* screen = window->screen();
    const int dx = static_cast<int>(std::lround((X - d.startX) / TwipsPerPixelX(screen)));
    const int dy = static_cast<int>(std::lround((Y - d.startY) / TwipsPerPixelY(screen)));
    return d.windowRect.translated(dx, dy);
}
}  // namespace

void DragStart(QWidget* window, double X, double Y)
{
    DragState& d = drag();
    d.startX = X;
    d.startY = Y;
    d.window = window;
    d.windowRect = window->frameGeometry();
    d.last = d.windowRect;
    if (!d.outline)
        d.outline = new COutline;
    d.outline->Place(d.last);
}

void DragMove(QWidget* window, double X, double Y)
{
    DragState& d = drag();
    if (d.window != window || !d.outline)
        return;
    d.last = shifted(window, X, Y);
    d.outline->Place(d.last);
}

void DragEnd(QWidget* window, double X, double Y)
{
    if (drag().window != window)
        return;
    const QPoint to = shifted(window, X, Y).topLeft();
    DragCancel(window);
    window->move(to);
}

void DragCancel(QWidget* window)
{
    DragState& d = drag();
    if (d.window != window)
        return;
    // The outline window is dropped, not kept hidden, so nothing of it outlives the drag.
    delete d.outline;
    d.outline = nullptr;
    d.window = nullptr;
    d.last = QRect();
}

QRect DragOutline()
{
    return drag().outline ? drag().last : QRect();
}
