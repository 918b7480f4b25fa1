// A tree view in a window, with hands that tap and type.
#pragma once

#include <QApplication>
#include <QTest>
#include <QTreeView>
#include <algorithm>

#include "platform/linux/windows/message_loop.h"
#include "resources/resource.h"
#include "tests/platform/controls_fixture.h"

inline constexpr DWORD SettingsTree = 0x27;  // buttons, lines, also at the root, selection always shown
inline constexpr UINT OnButton = 0x10;

struct Told {
    UINT Code;
    WORD Key;
    HTREEITEM Item;  // that GetMessagePos points at
    UINT Flags;      // and on what of it
};

class TreeTest : public ControlsTest {
  protected:
    TreeTest() {
        tree_ = Make(u"SYSTREEVIEW32", SettingsTree, QRect(0, 0, 240, 260), 701);
        images_ = ImageList_Create(15, 15, ILC_MASK, 8, 0);
        ImageList_SetImageCount(images_, 1);
        HBITMAP bitmap = LoadBitmapW(nullptr, MAKEINTRESOURCEW(IDB_STATE_IMAGES));
        ImageList_AddMasked(images_, bitmap, RGB(0, 255, 0));
        DeleteObject(bitmap);
        SendMessageW(tree_, TVM_SETIMAGELIST, TVSIL_STATE, reinterpret_cast<LPARAM>(images_));
        OnControl = [this](UINT message, WPARAM, LPARAM lParam) {
            if (message == WM_NOTIFY) {
                Note(*reinterpret_cast<const NMHDR*>(lParam));
            }
        };
    }
    ~TreeTest() override { ImageList_Destroy(images_); }

    HTREEITEM Insert(HTREEITEM parent, HTREEITEM after, const char16_t* text, UINT image = 1) {
        TVINSERTSTRUCTW insert{};
        insert.hParent = parent;
        insert.hInsertAfter = after;
        insert.item.mask = TVIF_TEXT | TVIF_STATE;
        insert.item.pszText = const_cast<LPWSTR>(text);
        insert.item.state = INDEXTOSTATEIMAGEMASK(image);
        insert.item.stateMask = TVIS_STATEIMAGEMASK;
        return reinterpret_cast<HTREEITEM>(
            SendMessageW(tree_, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
    }
    HTREEITEM Get(WPARAM relation, HTREEITEM item = nullptr) {
        return reinterpret_cast<HTREEITEM>(
            SendMessageW(tree_, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
    }
    bool Delete(HTREEITEM item) {
        return SendMessageW(tree_, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(item)) != 0;
    }
    bool Select(HTREEITEM item) {
        return SendMessageW(tree_, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item)) != 0;
    }
    QTreeView* View() { return qobject_cast<QTreeView*>(WidgetOf(tree_)); }
    // The row's rectangle in the viewport, without what is in front of the item.
    QRect RowOf(HTREEITEM item) {
        std::vector<int> path;
        for (HTREEITEM at = item; at; at = Get(TVGN_PARENT, at)) {
            int row = 0;
            for (HTREEITEM before = Get(TVGN_PREVIOUS, at); before; before = Get(TVGN_PREVIOUS, before)) {
                ++row;
            }
            path.insert(path.begin(), row);
        }
        QModelIndex index;
        for (const int row : path) {
            index = View()->model()->index(row, 0, index);
        }
        return View()->visualRect(index);
    }
    QPoint ButtonOf(HTREEITEM item) { return QPoint(RowOf(item).left() - 11, RowOf(item).center().y()); }
    QPoint ImageOf(HTREEITEM item) { return QPoint(RowOf(item).left() + 11, RowOf(item).center().y()); }
    QPoint LabelOf(HTREEITEM item) { return QPoint(RowOf(item).left() + 30, RowOf(item).center().y()); }
    bool IsOpen(HTREEITEM item) {
        TVITEMW read{};
        read.mask = TVIF_STATE;
        read.hItem = item;
        read.stateMask = 0xFFFF;
        SendMessageW(tree_, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&read));
        return (read.state & 0x20) != 0;
    }
    TVHITTESTINFO HitTest(const QPoint& place) {
        TVHITTESTINFO hit{};
        hit.pt = {place.x(), place.y()};
        const auto result = SendMessageW(tree_, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
        EXPECT_EQ(reinterpret_cast<HTREEITEM>(result), hit.hItem);
        return hit;
    }

    void Click(const QPoint& place) {
        QTest::mouseClick(View()->viewport(), Qt::LeftButton, {}, place);
        layer::PumpMessages();
    }
    void DoubleClick(const QPoint& place) {
        Click(place);
        // The second press alone.
        QTest::mouseDClick(View()->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseRelease(View()->viewport(), Qt::LeftButton, {}, place);
        layer::PumpMessages();
    }
    void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(View(), key, modifiers);
        layer::PumpMessages();
    }
    std::size_t Clicks() {
        return static_cast<std::size_t>(std::count_if(
            told_.begin(), told_.end(), [](const Told& told) { return told.Code == NM_CLICK; }));
    }

    HWND tree_ = nullptr;
    HIMAGELIST images_ = nullptr;
    std::vector<Told> told_;

  private:
    void Note(const NMHDR& header) {
        EXPECT_EQ(header.hwndFrom, tree_);
        EXPECT_EQ(header.idFrom, 701u);
        Told told{header.code, 0, nullptr, 0};
        if (header.code == TVN_KEYDOWN) {
            told.Key = reinterpret_cast<const NMTVKEYDOWN&>(header).wVKey;
        } else {
            const DWORD position = GetMessagePos();
            POINT point{static_cast<short>(LOWORD(position)), static_cast<short>(HIWORD(position))};
            ScreenToClient(tree_, &point);
            const TVHITTESTINFO hit = HitTest(QPoint(point.x, point.y));
            told.Item = hit.hItem;
            told.Flags = hit.flags;
        }
        told_.push_back(told);
    }
};
