// Items of a tree view, and the handles that stand for them. Main thread.
#pragma once

#include <QTreeWidgetItem>

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

}  // namespace layer
