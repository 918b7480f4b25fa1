// Paints the parts of a tree view. Main thread.
#pragma once

#include <QPainter>

#include "platform/linux/controls/tree_item.h"

namespace layer {

struct TreeRow {
    QRect ImagePlace;
    QPixmap Image;  // centred in its place
    QRect Label;
    QString Text;
    bool Selected = false, Focused = false;
};
void PaintTreeRow(QPainter& painter, const QWidget& tree, const TreeRow& row);

// Lines and the button in front of an item, as the tree's style wants them; rect ends where the item begins.
void PaintTreeBranches(QPainter& painter, const QTreeWidget& tree, const QRect& rect, const TreeItem& item,
                       DWORD style);

}  // namespace layer
