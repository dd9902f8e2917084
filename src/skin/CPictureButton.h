#pragma once
// A picture button, imgX or cmdX. At rest it shows nothing: its normal look is
// part of the window's face. Its hover and pressed pictures live in two hidden
// twins, imgXOver and imgXClicked, made beside it on the same window.
//
// Rollover: moving over the button lights it and puts every other button of
// the window back to rest; a press shows the pressed picture; the release
// runs the action wherever the mouse has gone, since it goes to the button
// that was pressed. Released() is the action.
#include <QLabel>
#include <QPixmap>

class CPictureButton : public QLabel {
    Q_OBJECT
public:
    CPictureButton(const QString& name, QWidget* window, const QRect& rect, const QPixmap& over,
                   const QPixmap& clicked);

    QLabel* OverTwin() const { return mOver; }
    QLabel* ClickedTwin() const { return mClicked; }

    void ShowRest();
    void ShowOver();
    void ShowClicked();

signals:
    void MouseDown(Qt::MouseButton button);
    void MouseMove();
    void Released();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    QLabel* mOver;
    QLabel* mClicked;
};

// Puts every picture button of the window back to rest. The window's body,
// and anything standing for it, calls this on a mouse move.
void ResetButtonPictures(QWidget* window);
