#include "platform/linux/controls/tree_widget.h"

#include <QApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyleFactory>
#include <QStyledItemDelegate>
#include <QToolTip>

namespace layer {

namespace {

constexpr UINT HitNowhere = 0x0001, HitIndent = 0x0008, HitButton = 0x0010, HitRight = 0x0020;

constexpr int SmallestRow = 26;  // pixels; what a finger finds
constexpr int Indent = 20;
constexpr int Gap = 4;  // around images and labels
// Of its width that a label gets at least where it would reach over the edge, in percent.
constexpr int NarrowestLabel = 55;

// The platform's number of a function key. Nobody asks for another one: those share a number that is no
// key's.
WORD VirtualKey(const QKeyEvent& event) {
    const int key = event.key();
    return key >= Qt::Key_F1 && key <= Qt::Key_F24 ? static_cast<WORD>(0x70 + (key - Qt::Key_F1)) : 0xFF;
}

}  // namespace

class TreeDelegate : public QStyledItemDelegate {
  public:
    explicit TreeDelegate(TreeWidget& tree) : QStyledItemDelegate(&tree), tree_(tree) {}

    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const override {
        int left = Indent;
        for (QModelIndex above = index.parent(); above.isValid(); above = above.parent()) {
            left += Indent;
        }
        const QRect row(left - tree_.horizontalOffset(), 0, 1, SmallestRow);
        const QRect label = tree_.LabelRect(row, index.data().toString());
        const int content = std::max(tree_.fontMetrics().height(), tree_.imageSize_.height());
        return QSize(label.right() + 1 - row.left(), std::max(SmallestRow, content + 2 * Gap));
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const auto* item = static_cast<TreeItem*>(tree_.itemFromIndex(index));
        const UINT image = item->StateImage();
        if (image > 0 && image < tree_.images_.size()) {
            tree_.style()->drawItemPixmap(painter, tree_.ImageRect(option.rect), Qt::AlignCenter,
                                          tree_.images_[image]);
        }
        QStyleOptionViewItem label = option;
        label.rect = tree_.LabelRect(option.rect, item->text(0)).adjusted(0, 1, 0, -1);
        const int whole = tree_.LabelWidth(item->text(0));
        if (label.rect.width() < whole) {
            // The value stands at the end: the letters get narrower so that it can be read.
            label.font.setStretch(100 * (label.rect.width() - 2 * Gap) / whole);
        }
        QStyledItemDelegate::paint(painter, label, index);
    }

  private:
    TreeWidget& tree_;
};

TreeWidget::TreeWidget(QWidget* parent) : QTreeWidget(parent) {
    // Lines, and a box with a plus or a minus in front of what unfolds.
    static QStyle* const lines = QStyleFactory::create(QStringLiteral("Windows"));
    setStyle(lines);
    setFrameShape(NoFrame);
    setColumnCount(1);
    setHeaderHidden(true);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::Fixed);
    setIndentation(Indent);
    setUniformRowHeights(true);
    setItemDelegate(new TreeDelegate(*this));
    setEditTriggers(NoEditTriggers);
    setSelectionMode(SingleSelection);
    setExpandsOnDoubleClick(false);
    // What is unfolded is shown, as far as it has room under its item.
    QObject::connect(this, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem* item) {
        if (item->childCount() > 0) {
            scrollToItem(item->child(item->childCount() - 1));
            scrollToItem(item);
        }
    });
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
}

void TreeWidget::SetImages(std::vector<QPixmap> images, const QSize& size) {
    images_ = std::move(images);
    imageSize_ = size;
    ShowChange();
}

void TreeWidget::ShowChange() {
    scheduleDelayedItemsLayout();
    viewport()->update();
}

QRect TreeWidget::ImageRect(const QRect& item) const {
    if (imageSize_.isEmpty()) {
        return {};
    }
    return QRect(item.left(), item.top(), imageSize_.width() + 2 * Gap, item.height());
}

QRect TreeWidget::LabelRect(const QRect& item, const QString& text) const {
    const QRect image = ImageRect(item);
    const int left = image.isEmpty() ? item.left() : image.right() + 1;
    const int whole = LabelWidth(text);
    const int room = viewport()->width() - horizontalOffset() - left;
    const int width = std::min(whole, std::max(room, whole * NarrowestLabel / 100));
    return QRect(left, item.top(), width, item.height());
}

int TreeWidget::LabelWidth(const QString& text) const {
    return fontMetrics().horizontalAdvance(text) + 2 * Gap;
}

TreeHit TreeWidget::HitTest(const QPoint& position) const {
    if (!viewport()->rect().contains(position)) {
        return {nullptr, HitNowhere};
    }
    auto* item = static_cast<TreeItem*>(itemAt(header()->sectionViewportPosition(0), position.y()));
    if (item == nullptr) {
        return {nullptr, HitNowhere};
    }
    const QRect rect = visualItemRect(item);
    const int x = position.x();
    if (x < rect.left()) {
        const bool button = x >= rect.left() - indentation() && item->HasButton();
        return {item, button ? HitButton : HitIndent};
    }
    // An item without an image has its place all the same.
    if (const QRect image = ImageRect(rect); x <= image.right() && !image.isEmpty()) {
        return {item, item->StateImage() > 0 ? UINT{TVHT_ONITEMSTATEICON} : HitIndent};
    }
    return {item, x <= LabelRect(rect, item->text(0)).right() ? UINT{TVHT_ONITEMLABEL} : HitRight};
}

// Rows reach to the right edge; wider ones are scrolled to.
void TreeWidget::updateGeometries() {
    const int width = std::max(sizeHintForColumn(0), viewport()->width());
    if (header()->sectionSize(0) != width) {
        header()->resizeSection(0, width);
    }
    QTreeWidget::updateGeometries();
}

// Unfolding what hides the item may bring in a scroll bar that takes its place.
void TreeWidget::scrollTo(const QModelIndex& index, ScrollHint hint) {
    QTreeWidget::scrollTo(index, hint);
    executeDelayedItemsLayout();
    updateGeometries();
    QTreeWidget::scrollTo(index, hint);
}

bool TreeWidget::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const TreeHit hit = HitTest(help->pos());
        QString tip;
        if (hit.Item != nullptr) {
            const QRect label = LabelRect(visualItemRect(hit.Item), hit.Item->text(0));
            tip = viewport()->rect().contains(label) ? QString() : hit.Item->text(0).toHtmlEscaped();
        }
        QToolTip::showText(help->globalPos(), tip, viewport());
        return true;
    }
    return QTreeWidget::viewportEvent(event);
}

void TreeWidget::focusInEvent(QFocusEvent* event) {
    if (currentItem() == nullptr && topLevelItemCount() > 0) {
        setCurrentItem(topLevelItem(0));
    }
    QTreeWidget::focusInEvent(event);
}

void TreeWidget::mousePressEvent(QMouseEvent* event) {
    pressed_ = event->button() == Qt::LeftButton;
    dragging_ = false;
    pressedAt_ = event->position().toPoint();
    scrolledAt_ = QPoint(horizontalScrollBar()->value(), verticalScrollBar()->value());
    event->accept();
}

void TreeWidget::mouseMoveEvent(QMouseEvent* event) {
    if (!pressed_ || (event->buttons() & Qt::LeftButton) == 0) {
        return;
    }
    const QPoint moved = event->position().toPoint() - pressedAt_;
    dragging_ = dragging_ || moved.manhattanLength() >= QApplication::startDragDistance();
    if (dragging_) {
        horizontalScrollBar()->setValue(scrolledAt_.x() - moved.x());
        verticalScrollBar()->setValue(scrolledAt_.y() - moved.y());
    }
}

void TreeWidget::mouseReleaseEvent(QMouseEvent* event) {
    const bool tapped = pressed_ && !dragging_ && event->button() == Qt::LeftButton;
    pressed_ = false;
    if (!tapped) {
        return;
    }
    // Where the finger came down is what was meant.
    const TreeHit hit = HitTest(pressedAt_);
    if ((hit.Flags & HitButton) != 0) {
        hit.Item->setExpanded(!hit.Item->isExpanded());
    } else if (Tapped) {
        Tapped(viewport()->mapToGlobal(pressedAt_));
    }
}

void TreeWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    const TreeHit hit = HitTest(event->position().toPoint());
    const bool onLabel = (hit.Flags & (TVHT_ONITEMLABEL | HitRight)) != 0;
    if (event->button() == Qt::LeftButton && onLabel && hit.Item->HasButton()) {
        pressed_ = false;
        hit.Item->setExpanded(!hit.Item->isExpanded());
        return;
    }
    // Two quick taps on an image are two taps.
    mousePressEvent(event);
}

void TreeWidget::keyPressEvent(QKeyEvent* event) {
    if (KeyPressed && !KeyPressed(VirtualKey(*event))) {
        event->accept();
        return;
    }
    const bool taps =
        event->key() == Qt::Key_Space || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    auto* item = static_cast<TreeItem*>(currentItem());
    const Qt::KeyboardModifiers held = event->modifiers() & ~Qt::KeypadModifier;
    if (!taps || item == nullptr || held != Qt::NoModifier) {
        QTreeWidget::keyPressEvent(event);
        return;
    }
    event->accept();
    // A key that is held must not switch to and fro.
    if (!event->isAutoRepeat()) {
        TapImage(*item);
    }
}

QPoint TreeWidget::TapPlace(const TreeItem& item) const {
    const QRect rect = visualItemRect(&item);
    const QRect image = ImageRect(rect);
    return item.StateImage() > 0 && !image.isEmpty()
               ? image.center()
               : LabelRect(rect, item.text(0)).topLeft() + QPoint(Gap, rect.height() / 2);
}

void TreeWidget::TapImage(const TreeItem& item) {
    scrollToItem(&item);
    // Sideways too: what is tapped must be there to be hit.
    const int x = TapPlace(item).x();
    const int hidden = x - std::clamp(x, Gap, std::max(Gap, viewport()->width() - Gap));
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() + hidden);
    if (Tapped) {
        Tapped(viewport()->mapToGlobal(TapPlace(item)));
    }
}

}  // namespace layer
