#pragma once
// Outline dragging of a window by its body: a dotted outline follows the
// mouse and the window jumps to its new place on release. X and Y are the
// mouse position in the window, in twips. There is at most one drag at a time.
class QWidget;

void DragStart(QWidget* window, double X, double Y);
void DragMove(QWidget* window, double X, double Y);
void DragEnd(QWidget* window, double X, double Y);
// Removes the outline and leaves the window where it is.
void DragCancel(QWidget* window);

// The outline of the drag under way, in screen pixels; null when none.
class QRect;
QRect DragOutline();
