#pragma once
// A label that takes the mouse: the transparent hot spots over painted marks
// (lblClose, lblMinimize, lblSettings...) and link labels with the hand
// pointer. Its events carry the names the windows' handlers use.
#include <QLabel>

class CClickLabel : public QLabel {
    Q_OBJECT
public:
    enum Kind { HotSpot, Link };
    explicit CClickLabel(const QString& name, QWidget* parent, Kind kind = HotSpot);

signals:
    void MouseDown(Qt::MouseButton button);
    void MouseUp(Qt::MouseButton button);
    void Click();
    void DblClick();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
};
