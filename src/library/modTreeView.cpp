#include "library/modTreeView.h"

#include <QTreeWidget>

void SetTreeViewBackColour(QTreeWidget* tree, const QColor& colour)
{
    QPalette palette = tree->palette();
    palette.setColor(QPalette::Base, colour);
    palette.setColor(QPalette::AlternateBase, colour);
    tree->setPalette(palette);
    // The branch lines are drawn on the same base, so they repaint with it.
    tree->viewport()->update();
}
