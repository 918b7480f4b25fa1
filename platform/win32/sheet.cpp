// Property sheets by keys: Space and Enter tap the picture of the tree's current item, and the tabs come
// between the page and the buttons.
#include <atomic>

#include "platform/win32/wrapped.h"

namespace {

constexpr int TabsId = 0x3020;
constexpr DWORD Nowhere = 0x80008000;

std::atomic<DWORD> KeyTap = Nowhere;  // where a tap by key counts, until it is asked for

bool IsTree(HWND window) {
    WCHAR name[32] = {};
    return GetClassNameW(window, name, 32) > 0 && lstrcmpiW(name, WC_TREEVIEWW) == 0;
}

// Where the item's picture is, in the tree, or its text when it has none.
POINT PictureOf(HWND tree, HTREEITEM item) {
    RECT text{};
    TreeView_EnsureVisible(tree, item);
    TreeView_GetItemRect(tree, item, &text, TRUE);
    int width = 0, height = 0;
    const HIMAGELIST pictures = TreeView_GetImageList(tree, TVSIL_STATE);
    if (pictures != nullptr) {
        ImageList_GetIconSize(pictures, &width, &height);
    }
    TVHITTESTINFO hit{};
    hit.pt = {text.left - width / 2 - 1, (text.top + text.bottom) / 2};
    TreeView_HitTest(tree, &hit);
    return (hit.flags & TVHT_ONITEMSTATEICON) != 0 ? hit.pt : POINT{text.left + 1, hit.pt.y};
}

bool TapsByKey(const MSG& message) {
    const bool key = message.wParam == VK_SPACE || message.wParam == VK_RETURN;
    if (message.message != WM_KEYDOWN || !key || !IsTree(message.hwnd)) {
        return false;
    }
    const HTREEITEM item = TreeView_GetSelection(message.hwnd);
    const bool held = (message.lParam & (1 << 30)) != 0;
    if (item != nullptr && !held) {
        POINT place = PictureOf(message.hwnd, item);
        ClientToScreen(message.hwnd, &place);
        KeyTap = static_cast<DWORD>(MAKELONG(place.x, place.y));
        NMHDR tap{message.hwnd, static_cast<UINT_PTR>(GetDlgCtrlID(message.hwnd)),
                  static_cast<UINT>(NM_CLICK)};
        SendMessageW(GetParent(message.hwnd), WM_NOTIFY, tap.idFrom, reinterpret_cast<LPARAM>(&tap));
    }
    return true;
}

HWND PageOf(HWND sheet) {
    return PropSheet_GetCurrentPageHwnd(sheet);
}

}  // namespace

bool layer::SheetTakes(HWND sheet, MSG* message) {
    if (TapsByKey(*message)) {
        return true;
    }
    const HWND before = PageOf(sheet);
    const bool taken = PropSheet_IsDialogMessage(sheet, message) != 0;
    const HWND page = IsWindow(sheet) ? PageOf(sheet) : before;
    // The focus stays with no control of a page that goes.
    if (page != before && (GetFocus() == nullptr || GetFocus() == sheet || !IsWindowVisible(GetFocus()))) {
        const HWND first = GetNextDlgTabItem(page, nullptr, FALSE);
        SendMessageW(sheet, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(first), TRUE);
    }
    return taken;
}

DWORD WINAPI TerminalGetMessagePos() {
    const DWORD tapped = KeyTap.exchange(Nowhere);
    return tapped != Nowhere ? tapped : GetMessagePos();
}

INT_PTR WINAPI TerminalPropertySheetW(LPCPROPSHEETHEADERW header) {
    const INT_PTR result = PropertySheetW(header);
    const HWND sheet = reinterpret_cast<HWND>(result);
    if (IsWindow(sheet)) {
        SetWindowPos(GetDlgItem(sheet, TabsId), PageOf(sheet), 0, 0, 0, 0,
                     SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    }
    return result;
}
