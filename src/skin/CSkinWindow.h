#pragma once
// The base of every skinned window: a borderless picture whose pure-blue
// areas become holes once the window is colour-keyed, with the life a window
// of the program has:
//   Load()       builds the window once and runs its load handler once
//   Show(modal)  modal: runs until the window is hidden; else shows and returns
//   Hide()       hides; hiding a modal window ends its Show
//   Unload()     drops every control; the next Load() builds afresh
//   Tag          the window's answer, readable after Hide()
// A window is a QDialog, so that any window can be shown modally. Its
// objectName is the window's name; each control's is the control's name.
#include "core/seams.h"
#include "skin/SkinDescription.h"

#include <QDialog>
#include <QPixmap>
#include <QString>

class CPictureButton;
class QLabel;

class CSkinWindow : public QDialog {
    Q_OBJECT
public:
    explicit CSkinWindow(const QString& name, Qt::WindowFlags flags = Qt::Dialog);

    void Load();
    void Show(bool modal = false);
    void Hide();
    void Unload();
    bool IsLoaded() const { return mLoaded; }

    QString Tag;

    // Only frmMain and frmSearching4Music can be dragged by their body.
    void SetDraggable(bool draggable) { mDraggable = draggable; }

    CPictureButton* Button(const QString& name) const;
    QLabel* Label(const QString& name) const;

protected:
    // Runs once per Load; everything the window holds is built here.
    virtual void Form_Load() {}
    // Enter and Esc arrive as Qt::Key_Return and Qt::Key_Escape.
    virtual void Form_KeyDown(int key);
    // A press and release on the body, not on a control.
    virtual void Form_Click() {}
    // The window's busy flag, where it has one, stops the drag.
    virtual bool DragAllowed() const { return mDraggable; }

    // Runs one event of the window; where a test lets the program's end
    // return, the window goes, so that a modal Show returns too.
    template <class Handler>
    void Run(Handler&& handler)
    {
        try {
            handler();
        } catch (const ProgramEnded&) {
            Hide();
        }
    }

    // Paints the face and makes the controls of a description.
    void Build(const SkinWindowDesc& desc);
    void SetFace(const QImage& face);

    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    QPixmap mFace;
    bool mLoaded = false;
    bool mDraggable = false;
    bool mDragging = false;
    bool mBodyPressed = false;
};
