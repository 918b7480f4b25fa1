#include "platform/base.h"

#include <algorithm>
#include <cstdarg>
#include <string>

int lstrlenW(LPCWSTR text) {
    return text != nullptr ? static_cast<int>(std::u16string_view(text).size()) : 0;
}

LPWSTR lstrcpyW(LPWSTR to, LPCWSTR from) {
    std::copy_n(from, lstrlenW(from) + 1, to);
    return to;
}

LPWSTR lstrcpynW(LPWSTR to, LPCWSTR from, int size) {
    if (size < 1) {
        return nullptr;
    }
    *std::copy_n(from, std::min(lstrlenW(from), size - 1), to) = 0;
    return to;
}

LPWSTR lstrcatW(LPWSTR to, LPCWSTR from) {
    lstrcpyW(to + lstrlenW(to), from);
    return to;
}

int lstrcmpW(LPCWSTR left, LPCWSTR right) {
    return std::u16string_view(left).compare(right);
}

int wsprintfW(LPWSTR to, LPCWSTR format, ...) {
    constexpr int mostText = 1024;  // with the ending zero
    std::u16string text;
    const auto put = [&text](const std::string& digits) { text.append(digits.begin(), digits.end()); };
    va_list arguments;
    va_start(arguments, format);
    for (; *format != 0; ++format) {
        if (*format != u'%') {
            text += *format;
            continue;
        }
        switch (*++format) {
            case u'd':
                put(std::to_string(va_arg(arguments, int)));
                break;
            case u'u':
                put(std::to_string(va_arg(arguments, DWORD)));
                break;
            case u's':
                text += va_arg(arguments, LPCWSTR);
                break;
            case 0:
                --format;  // a lone percent sign at the end gives nothing
                break;
            default:
                text += *format;
                break;
        }
    }
    va_end(arguments);
    lstrcpynW(to, text.c_str(), mostText);
    return lstrlenW(to);
}
