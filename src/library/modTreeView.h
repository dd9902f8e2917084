#pragma once
// Gives a tree control its background colour, lines included.
class QColor;
class QTreeWidget;

void SetTreeViewBackColour(QTreeWidget* tree, const QColor& colour);
