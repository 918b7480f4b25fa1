// The items of a tree view with the handles that stand for them, how it looks, and what finger, mouse and
// keyboard do in it. Main thread.
#pragma once

#include <QTreeWidget>
#include <QTreeWidgetItem>
#include <functional>
#include <vector>

#include "platform/controls.h"
#include "platform/linux/kernel/handle_table.h"

namespace layer {

class TreeItem;

// The items of all trees.
HandleTable<HTREEITEM, TreeItem*>& TreeItems();

class TreeItem : public QTreeWidgetItem {
  public:
    TreeItem();
    ~TreeItem() override;
    TreeItem(const TreeItem&) = delete;
    TreeItem& operator=(const TreeItem&) = delete;

    HTREEITEM Handle() const { return handle_; }
    bool HasButton() const { return childCount() > 0 || childIndicatorPolicy() == ShowIndicator; }
    TreeItem* Sibling(int distance) const;  // null for none

    // Takes over what the record's mask names, and gives it.
    void Set(const TVITEMW& record);
    void Get(TVITEMW& record) const;
    UINT StateImage() const { return (state_ & TVIS_STATEIMAGEMASK) >> 12; }

  private:
    HTREEITEM handle_;
    UINT state_ = 0;
    LPARAM parameter_ = 0;
};

struct TreeHit {
    TreeItem* Item = nullptr;
    UINT Flags = 0;  // TVHT_
};

// An item shows its button, its state image and its label, in this order. A tap on the button, or a double
// tap on the label, folds and unfolds; every other tap is told. A finger that moves scrolls. Arrow keys, plus
// and minus move about, Space and Enter tap the image of the current item.
class TreeWidget : public QTreeWidget {
  public:
    explicit TreeWidget(QWidget* parent);

    // Called on a tap at a position on the screen; the widget may be gone from the screen afterwards.
    std::function<void(const QPoint&)> Tapped;
    // Called for every key that is pressed, before it has its effect; false: the tree has gone.
    std::function<bool(WORD)> KeyPressed;

    void SetImages(std::vector<QPixmap> images, const QSize& size);
    // Position in the viewport.
    TreeHit HitTest(const QPoint& position) const;
    // Shows a changed text or image.
    void ShowChange();
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;

  protected:
    void updateGeometries() override;
    bool viewportEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    friend class TreeDelegate;
    QRect ImageRect(const QRect& item) const;  // empty without images
    QRect LabelRect(const QRect& item, const QString& text) const;
    int LabelWidth(const QString& text) const;  // wanted
    QPoint TapPlace(const TreeItem& item) const;
    void TapImage(const TreeItem& item);

    std::vector<QPixmap> images_;
    QSize imageSize_;
    bool pressed_ = false, dragging_ = false;
    QPoint pressedAt_, scrolledAt_;
};

}  // namespace layer
