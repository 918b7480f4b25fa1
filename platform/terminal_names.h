// What a terminal folder and the paths in it are called, on every host.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/base.h"

namespace layer {

// Tells a terminal folder from others: the 64-bit FNV-1a hash of its path's bytes.
inline std::uint64_t IdentityOf(const void* path, std::size_t bytes) {
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (std::size_t i = 0; i < bytes; ++i) {
        hash = (hash ^ static_cast<const BYTE*>(path)[i]) * 0x100000001B3u;
    }
    return hash;
}

// Whether a name can be a file's: no device, wildcard or control character, and no end that Windows drops.
inline bool IsFileName(std::basic_string_view<WCHAR> name) {
    constexpr WCHAR odd[] = {':', '*', '?', '"', '<', '>', '|', 0x7F, 0};
    if (name.empty() || name.back() == '.' || name.back() == ' ') {
        return false;
    }
    for (const WCHAR character : name) {
        const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
        if (character < ' ' || surrogate || std::basic_string_view<WCHAR>(odd).find(character) != name.npos) {
            return false;
        }
    }
    return true;
}

// Takes a path of the platform (`\DiskOnChip\X`, with the first separator or without) apart; false when it is
// none or would leave the terminal folder. Null is none.
inline bool SplitPath(LPCWSTR path, std::vector<std::basic_string_view<WCHAR>>& names) {
    constexpr WCHAR separators[] = {'\\', '/', 0};
    std::basic_string_view<WCHAR> rest;
    if (path != nullptr) {
        rest = path;
    }
    if (rest.empty() || rest.size() >= MAX_PATH) {
        return false;
    }
    rest.remove_prefix(rest.front() == '\\' || rest.front() == '/' ? 1 : 0);
    while (!rest.empty()) {
        names.push_back(rest.substr(0, rest.find_first_of(separators)));
        rest.remove_prefix(names.back().size() < rest.size() ? names.back().size() + 1 : rest.size());
        if (!IsFileName(names.back())) {
            return false;
        }
    }
    return true;
}

}  // namespace layer
