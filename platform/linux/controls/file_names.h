// What a file dialog shows and how it understands what is typed. Paths are the platform's; a folder has no
// separator at its end, and the root is empty. Any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/base.h"

namespace layer {

struct FileFilter {
    std::u16string Label;
    std::u16string Patterns;  // "*.A;*.B"
};
// Pairs of zero-ended texts, ended by an empty one.
std::vector<FileFilter> ReadFilters(LPCWSTR pairs);
struct FolderEntry {
    std::u16string Name;
    bool Folder;
};
// Folders first, each kind by name; files whose names fit a pattern ("*.A;*.B", in any letter case). What the
// platform could not name and what is neither file nor folder is left out, and of the root what Linux alone
// has use for.
std::vector<FolderEntry> ListFolder(const std::u16string& folder, std::u16string_view patterns);

// The path that a typed text means in the folder; "." and ".." are understood, nothing leads out of the root.
std::u16string ResolveTyped(const std::u16string& folder, const std::u16string& typed);
std::u16string ParentFolder(const std::u16string& path);

enum class PathKind { Unusable, Missing, Folder, File, Other };
PathKind KindOfPath(const std::u16string& path);

}  // namespace layer
