#include "platform/linux/controls/tree_item.h"

#include <QTreeWidget>
#include <algorithm>

namespace layer {

namespace {

// Kept by the view, not by the item.
constexpr UINT StateSelected = 0x0002;
constexpr UINT StateExpanded = 0x0020;

}  // namespace

HTREEITEM TreeItemTable::Enter(TreeItem* item) {
    static std::uintptr_t last = 0x40000;
    last += 0x10;
    const auto handle = reinterpret_cast<HTREEITEM>(last);
    items_[handle] = item;
    return handle;
}

void TreeItemTable::Leave(HTREEITEM handle) {
    items_.erase(handle);
}

TreeItem* TreeItemTable::Find(HTREEITEM handle) const {
    const auto found = items_.find(handle);
    return found != items_.end() ? found->second : nullptr;
}

TreeItem::TreeItem(std::shared_ptr<TreeItemTable> table)
    : table_(std::move(table)), handle_(table_->Enter(this)) {}

TreeItem::~TreeItem() {
    table_->Leave(handle_);
}

TreeItem* TreeItem::Sibling(int distance) const {
    const QTreeWidgetItem* above = parent() != nullptr ? parent() : treeWidget()->invisibleRootItem();
    auto* self = const_cast<TreeItem*>(this);
    return static_cast<TreeItem*>(above->child(above->indexOfChild(self) + distance));
}

void TreeItem::Set(const TVITEMW& record) {
    if ((record.mask & TVIF_TEXT) != 0) {
        setText(0, record.pszText != nullptr ? QString::fromUtf16(record.pszText) : QString());
    }
    if ((record.mask & TVIF_PARAM) != 0) {
        parameter_ = record.lParam;
    }
    if ((record.mask & TVIF_STATE) != 0) {
        state_ = (state_ & ~record.stateMask) | (record.state & record.stateMask);
    }
    if ((record.mask & TVIF_CHILDREN) != 0) {
        setChildIndicatorPolicy(record.cChildren != 0 ? ShowIndicator : DontShowIndicatorWhenChildless);
    }
}

void TreeItem::Get(TVITEMW& record) const {
    if ((record.mask & TVIF_TEXT) != 0 && record.pszText != nullptr && record.cchTextMax > 0) {
        const std::u16string whole = text(0).toStdU16String();
        const std::size_t length = std::min(whole.size(), static_cast<std::size_t>(record.cchTextMax) - 1);
        std::copy_n(whole.begin(), length, record.pszText);
        record.pszText[length] = 0;
    }
    if ((record.mask & TVIF_PARAM) != 0) {
        record.lParam = parameter_;
    }
    if ((record.mask & TVIF_STATE) != 0) {
        const UINT shown = (isSelected() ? StateSelected : 0) | (isExpanded() ? StateExpanded : 0);
        record.state = ((state_ & ~(StateSelected | StateExpanded)) | shown) & record.stateMask;
    }
    if ((record.mask & TVIF_CHILDREN) != 0) {
        record.cChildren = HasButton() ? 1 : 0;
    }
}

}  // namespace layer
