#include "platform/linux/controls/tree_widget.h"
#include "platform/linux/windows/images.h"
#include "platform/linux/windows/window_object.h"

namespace layer {

namespace {

class TreeControl : public WindowObject {
  public:
    explicit TreeControl(const WindowInit& init)
        : WindowObject(init), tree_(new TreeWidget(init.Parent->Client())) {
        tree_->Tapped = [this](const QPoint& position) { OnTap(position); };
        tree_->KeyPressed = [this](WORD key) { return OnKey(key); };
        SetWidget(tree_, tree_->viewport());
    }

    void Activate() override { tree_->setFocus(); }

    LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    TreeItem* Find(HTREEITEM handle) const {
        TreeItem* item = TreeItems().Find(handle);
        return item != nullptr && item->treeWidget() == tree_ ? item : nullptr;
    }
    TreeItem* Find(LPARAM handle) const { return Find(reinterpret_cast<HTREEITEM>(handle)); }
    TreeItem* First() const { return static_cast<TreeItem*>(tree_->topLevelItem(0)); }

    HTREEITEM Insert(const TVINSERTSTRUCTW& insert);
    bool Delete(LPARAM handle);
    TreeItem* Related(WPARAM relation, LPARAM handle) const;
    bool Select(LPARAM handle);
    LRESULT HitTest(TVHITTESTINFO& info) const;
    LRESULT SetImageList(HIMAGELIST list);

    void OnTap(const QPoint& position);
    bool OnKey(WORD key);

    TreeWidget* tree_;
    HIMAGELIST images_ = nullptr;
};

LRESULT AsResult(HTREEITEM handle) {
    return reinterpret_cast<LRESULT>(handle);
}

LRESULT TreeControl::Message(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case TVM_INSERTITEMW:
            return lParam != 0 ? AsResult(Insert(*reinterpret_cast<const TVINSERTSTRUCTW*>(lParam))) : 0;
        case TVM_DELETEITEM:
            return Delete(lParam) ? TRUE : FALSE;
        case TVM_GETNEXTITEM: {
            const TreeItem* item = Related(wParam, lParam);
            return item != nullptr ? AsResult(item->Handle()) : 0;
        }
        case TVM_SELECTITEM:
            return wParam == TVGN_CARET && Select(lParam) ? TRUE : FALSE;
        case TVM_HITTEST:
            return lParam != 0 ? HitTest(*reinterpret_cast<TVHITTESTINFO*>(lParam)) : 0;
        case TVM_GETITEMW: {
            auto* record = reinterpret_cast<TVITEMW*>(lParam);
            const TreeItem* item = record != nullptr ? Find(record->hItem) : nullptr;
            if (item != nullptr) {
                item->Get(*record);
            }
            return item != nullptr ? TRUE : FALSE;
        }
        case TVM_SETITEMW: {
            const auto* record = reinterpret_cast<const TVITEMW*>(lParam);
            TreeItem* item = record != nullptr ? Find(record->hItem) : nullptr;
            if (item != nullptr) {
                item->Set(*record);
                tree_->ShowChange();
            }
            return item != nullptr ? TRUE : FALSE;
        }
        case TVM_SETIMAGELIST:
            return wParam == TVSIL_STATE ? SetImageList(reinterpret_cast<HIMAGELIST>(lParam)) : 0;
        default:
            return WindowObject::Message(message, wParam, lParam);
    }
}

// Behind the sibling that is named, or behind them all.
HTREEITEM TreeControl::Insert(const TVINSERTSTRUCTW& insert) {
    const bool atRoot = insert.hParent == nullptr || insert.hParent == TVI_ROOT;
    QTreeWidgetItem* parent = atRoot ? tree_->invisibleRootItem() : Find(insert.hParent);
    if (parent == nullptr) {
        return nullptr;
    }
    int place = parent->childCount();
    if (insert.hInsertAfter != nullptr && insert.hInsertAfter != TVI_LAST) {
        place = parent->indexOfChild(Find(insert.hInsertAfter)) + 1;
        if (place == 0) {
            return nullptr;
        }
    }
    auto* item = new TreeItem;
    item->Set(insert.item);
    parent->insertChild(place, item);
    return item->Handle();
}

bool TreeControl::Delete(LPARAM handle) {
    if (handle == 0 || reinterpret_cast<HTREEITEM>(handle) == TVI_ROOT) {
        tree_->clear();
        return true;
    }
    TreeItem* item = Find(handle);
    delete item;
    return item != nullptr;
}

TreeItem* TreeControl::Related(WPARAM relation, LPARAM handle) const {
    if (relation == TVGN_ROOT) {
        return First();
    }
    if (relation == TVGN_CARET) {
        return static_cast<TreeItem*>(tree_->currentItem());
    }
    if (relation == TVGN_CHILD && (handle == 0 || reinterpret_cast<HTREEITEM>(handle) == TVI_ROOT)) {
        return First();
    }
    const TreeItem* item = Find(handle);
    if (item == nullptr) {
        return nullptr;
    }
    switch (relation) {
        case TVGN_NEXT:
            return item->Sibling(1);
        case TVGN_PREVIOUS:
            return item->Sibling(-1);
        case TVGN_PARENT:
            return static_cast<TreeItem*>(item->parent());
        case TVGN_CHILD:
            return static_cast<TreeItem*>(item->child(0));
        default:
            return nullptr;
    }
}

bool TreeControl::Select(LPARAM handle) {
    TreeItem* item = Find(handle);
    if (item == nullptr && handle != 0) {
        return false;
    }
    tree_->setCurrentItem(item);
    if (item != nullptr) {
        tree_->scrollToItem(item);
    }
    return true;
}

LRESULT TreeControl::HitTest(TVHITTESTINFO& info) const {
    const TreeHit hit = tree_->HitTest(QPoint(info.pt.x, info.pt.y));
    info.flags = hit.Flags;
    info.hItem = hit.Item != nullptr ? hit.Item->Handle() : nullptr;
    return AsResult(info.hItem);
}

LRESULT TreeControl::SetImageList(HIMAGELIST list) {
    HIMAGELIST before = images_;
    const auto data = FindImageList(list);
    images_ = data != nullptr ? list : nullptr;
    tree_->SetImages(data != nullptr ? data->Images : std::vector<QPixmap>(),
                     data != nullptr ? data->Size : QSize());
    return reinterpret_cast<LRESULT>(before);
}

// Whatever the owner answers, a tap on a label selects: a dialog's answer says only that it has looked at the
// notification. The owner may have deleted the item, or the tree.
void TreeControl::OnTap(const QPoint& position) {
    const WindowPtr keep = shared_from_this();
    const TreeHit hit = tree_->HitTest(tree_->viewport()->mapFromGlobal(position));
    HTREEITEM handle = hit.Item != nullptr ? hit.Item->Handle() : nullptr;
    SetMessagePosition(position);
    NMHDR header{};
    Notify(header, NM_CLICK);
    if (!Gone() && (hit.Flags & TVHT_ONITEMLABEL) != 0) {
        if (TreeItem* item = Find(handle)) {
            tree_->setCurrentItem(item);
        }
    }
}

bool TreeControl::OnKey(WORD key) {
    const WindowPtr keep = shared_from_this();
    NMTVKEYDOWN record{};
    record.wVKey = key;
    Notify(record.hdr, TVN_KEYDOWN);
    return !Gone();
}

}  // namespace

WindowPtr MakeTreeControl(const WindowInit& init) {
    return std::make_shared<TreeControl>(init);
}

}  // namespace layer
