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

// The number that the text begins with, blanks aside; false without one or when it does not fit.
bool ReadNumber(const std::u16string& text, bool isSigned, UINT& number) {
    auto at = std::find_if(text.begin(), text.end(), [](char16_t c) { return c != u' ' && c != u'\t'; });
    const bool negative = isSigned && at != text.end() && *at == u'-';
    at += negative ? 1 : 0;
    const auto first = at;
    std::uint64_t value = 0;
    const std::uint64_t most = !isSigned ? 0xFFFFFFFFu : negative ? 0x80000000u : 0x7FFFFFFFu;
    for (; at != text.end() && *at >= u'0' && *at <= u'9'; ++at) {
        value = value * 10 + static_cast<unsigned>(*at - u'0');
        if (value > most) {
            return false;
        }
    }
    number = static_cast<UINT>(negative ? 0 - value : value);
    return at != first;
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

BOOL SetDlgItemInt(HWND dialog, int id, UINT value, BOOL isSigned) {
    const std::string digits =
        isSigned != FALSE ? std::to_string(static_cast<int>(value)) : std::to_string(value);
    return SetDlgItemTextW(dialog, id, std::u16string(digits.begin(), digits.end()).c_str());
}

UINT GetDlgItemInt(HWND dialog, int id, BOOL* translated, BOOL isSigned) {
    return layer::OnMain([=]() -> UINT {
        const layer::WindowObject* item = layer::Item(dialog, id);
        UINT number = 0;
        const bool good = item != nullptr && layer::ReadNumber(item->Text(), isSigned != FALSE, number);
        if (translated != nullptr) {
            *translated = good ? TRUE : FALSE;
        }
        return good ? number : 0;
    });
}

LRESULT SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam) {
    return SendMessageW(GetDlgItem(dialog, id), message, wParam, lParam);
}
