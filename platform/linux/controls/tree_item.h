// Items of a tree view, and the handles that stand for them. Main thread.
#pragma once

#include <QTreeWidgetItem>
#include <memory>
#include <string>
#include <unordered_map>

#include "platform/controls.h"

namespace layer {

class TreeItem;

// Handles are never given twice, so that one of an item that has gone is known for what it is.
class TreeItemTable {
  public:
    HTREEITEM Enter(TreeItem* item);
    void Leave(HTREEITEM handle);
    TreeItem* Find(HTREEITEM handle) const;  // null for none

  private:
    std::unordered_map<HTREEITEM, TreeItem*> items_;
};

class TreeItem : public QTreeWidgetItem {
  public:
    explicit TreeItem(std::shared_ptr<TreeItemTable> table);
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
    std::shared_ptr<TreeItemTable> table_;
    HTREEITEM handle_;
    UINT state_ = 0;
    LPARAM parameter_ = 0;
};

}  // namespace layer
