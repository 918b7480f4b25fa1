#include "platform/text.h"

#include <algorithm>

int lstrlenW(LPCWSTR text) {
    int length = 0;
    while (text != nullptr && text[length] != 0) {
        ++length;
    }
    return length;
}

LPWSTR lstrcpyW(LPWSTR to, LPCWSTR from) {
    if (to == nullptr || from == nullptr) {
        return nullptr;
    }
    std::copy_n(from, lstrlenW(from) + 1, to);
    return to;
}

LPWSTR lstrcpynW(LPWSTR to, LPCWSTR from, int size) {
    if (to == nullptr || from == nullptr || size < 1) {
        return nullptr;
    }
    int length = 0;
    while (length < size - 1 && from[length] != 0) {
        to[length] = from[length];
        ++length;
    }
    to[length] = 0;
    return to;
}

LPWSTR lstrcatW(LPWSTR to, LPCWSTR from) {
    if (to == nullptr || from == nullptr) {
        return nullptr;
    }
    lstrcpyW(to + lstrlenW(to), from);
    return to;
}

int lstrcmpW(LPCWSTR left, LPCWSTR right) {
    if (left == nullptr || right == nullptr) {
        return (left != nullptr) - (right != nullptr);
    }
    while (*left != 0 && *left == *right) {
        ++left;
        ++right;
    }
    return (*left > *right) - (*left < *right);
}
