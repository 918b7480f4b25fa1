#include "platform/linux/controls/tree_paint.h"

#include <QTreeWidget>

namespace layer {

namespace {

constexpr DWORD StyleButtons = 0x0001, StyleLines = 0x0002;

constexpr int ButtonSide = 11;  // pixels, odd
constexpr int SignReach = 3;    // of the plus and the minus in it, from its middle
constexpr int Gap = 4;

void PaintButton(QPainter& painter, const QPalette& palette, const QPoint& middle, bool expanded) {
    const QRect box(middle.x() - ButtonSide / 2, middle.y() - ButtonSide / 2, ButtonSide - 1, ButtonSide - 1);
    painter.setPen(palette.color(QPalette::Dark));
    painter.setBrush(palette.color(QPalette::Base));
    painter.drawRect(box);
    painter.setPen(palette.color(QPalette::Text));
    painter.drawLine(middle.x() - SignReach, middle.y(), middle.x() + SignReach, middle.y());
    if (!expanded) {
        painter.drawLine(middle.x(), middle.y() - SignReach, middle.x(), middle.y() + SignReach);
    }
}

}  // namespace

void PaintTreeRow(QPainter& painter, const QWidget& tree, const TreeRow& row) {
    painter.save();
    const QPalette palette = tree.palette();
    const QPalette::ColorGroup group = tree.isActiveWindow() ? QPalette::Active : QPalette::Inactive;
    QColor text = palette.color(group, QPalette::Text);
    const QRect mark = row.Label.adjusted(0, 1, 0, -1);
    if (row.Selected) {
        painter.fillRect(mark, palette.color(group, QPalette::Highlight));
        text = palette.color(group, QPalette::HighlightedText);
    }
    if (!row.Image.isNull()) {
        QRect place(QPoint(0, 0), row.Image.size());
        place.moveCenter(row.ImagePlace.center());
        painter.drawPixmap(place, row.Image);
    }
    painter.setPen(text);
    painter.drawText(row.Label.adjusted(Gap, 0, -Gap, 0),
                     Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, row.Text);
    if (row.Focused) {
        painter.setPen(QPen(text, 1, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(mark.adjusted(0, 0, -1, -1));
    }
    painter.restore();
}

void PaintTreeBranches(QPainter& painter, const QTreeWidget& tree, const QRect& rect, const TreeItem& item,
                       DWORD style) {
    const int indent = tree.indentation();
    QRect cell(rect.right() + 1 - indent, rect.top(), indent, rect.height());
    if (rect.width() < indent) {
        return;
    }
    painter.save();
    // The style has marked the selected row as far as here.
    painter.fillRect(rect, tree.palette().color(QPalette::Base));
    const QPoint middle = cell.center();
    if ((style & StyleLines) != 0) {
        painter.setPen(QPen(tree.palette().color(QPalette::Mid), 1, Qt::DotLine));
        painter.drawLine(middle.x(), middle.y(), cell.right(), middle.y());
        if (item.parent() != nullptr || item.Sibling(-1) != nullptr) {
            painter.drawLine(middle.x(), cell.top(), middle.x(), middle.y());
        }
        if (item.Sibling(1) != nullptr) {
            painter.drawLine(middle.x(), middle.y(), middle.x(), cell.bottom());
        }
        for (auto* above = static_cast<TreeItem*>(item.parent()); above != nullptr;
             above = static_cast<TreeItem*>(above->parent())) {
            cell.translate(-indent, 0);
            if (cell.left() >= rect.left() && above->Sibling(1) != nullptr) {
                painter.drawLine(cell.center().x(), cell.top(), cell.center().x(), cell.bottom());
            }
        }
    }
    if ((style & StyleButtons) != 0 && item.HasButton()) {
        PaintButton(painter, tree.palette(), middle, item.isExpanded());
    }
    painter.restore();
}

}  // namespace layer
