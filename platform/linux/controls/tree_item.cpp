#include "platform/linux/controls/tree_widget.h"

#include <QTreeWidget>
#include <algorithm>

namespace layer {

namespace {

// Kept by the view, not by the item.
constexpr UINT StateSelected = 0x0002;
constexpr UINT StateExpanded = 0x0020;

}  // namespace

HandleTable<HTREEITEM, TreeItem*>& TreeItems() {
    static auto* table = new HandleTable<HTREEITEM, TreeItem*>(0x40000);
    return *table;
}

TreeItem::TreeItem() : handle_(TreeItems().Add(this)) {}

TreeItem::~TreeItem() {
    TreeItems().Remove(handle_);
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
}

}  // namespace layer
