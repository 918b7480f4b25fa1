// The platform's calls on the controls of a dialog.
#include <algorithm>

#include "platform/linux/windows/on_main.h"
#include "platform/linux/windows/window_object.h"

namespace layer {

namespace {

WindowObject* Item(HWND dialog, int id) {
    const WindowPtr window = FindWindowObject(dialog);
    return window != nullptr ? window->FindChild(id) : nullptr;
}

}  // namespace

}  // namespace layer

HWND GetDlgItem(HWND dialog, int id) {
    return layer::OnMain([=] {
        const layer::WindowObject* item = layer::Item(dialog, id);
        return item != nullptr ? item->Handle() : nullptr;
    });
}

BOOL SetDlgItemTextW(HWND dialog, int id, LPCWSTR text) {
    return SetWindowTextW(GetDlgItem(dialog, id), text);
}

UINT GetDlgItemTextW(HWND dialog, int id, LPWSTR text, int size) {
    return layer::OnMain([=]() -> UINT {
        if (size <= 0) {
            return 0;
        }
        const layer::WindowObject* item = layer::Item(dialog, id);
        const std::u16string whole = item != nullptr ? item->Text() : std::u16string();
        const std::size_t length = std::min(whole.size(), static_cast<std::size_t>(size) - 1);
        std::copy_n(whole.begin(), length, text);
        text[length] = 0;
        return static_cast<UINT>(length);
    });
}

BOOL SetDlgItemInt(HWND dialog, int id, UINT value, BOOL) {
    return SetDlgItemTextW(dialog, id, QString::number(value).toStdU16String().c_str());
}

UINT GetDlgItemInt(HWND dialog, int id, BOOL* translated, BOOL) {
    return layer::OnMain([=]() -> UINT {
        const layer::WindowObject* item = layer::Item(dialog, id);
        bool good = false;
        const UINT number = item != nullptr ? QString::fromStdU16String(item->Text()).toUInt(&good) : 0;
        if (translated != nullptr) {
            *translated = good;
        }
        return number;
    });
}

LRESULT SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam) {
    return SendMessageW(GetDlgItem(dialog, id), message, wParam, lParam);
}
