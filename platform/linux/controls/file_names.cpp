#include "platform/linux/controls/file_names.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>

#include "platform/linux/kernel/terminal.h"

namespace layer {

namespace {

bool IsSeparator(char16_t character) {
    return character == u'\\' || character == u'/';
}

char16_t Lower(char16_t character) {
    return character >= u'A' && character <= u'Z' ? static_cast<char16_t>(character + 32) : character;
}

// A star is tried with the fewest characters first, and only the last star is ever tried anew.
bool Matches(std::u16string_view name, std::u16string_view pattern) {
    std::size_t n = 0, p = 0, starAt = pattern.npos, starName = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == u'*') {
            starAt = p++;
            starName = n;
        } else if (p < pattern.size() && (pattern[p] == u'?' || Lower(pattern[p]) == Lower(name[n]))) {
            ++p;
            ++n;
        } else if (starAt != pattern.npos) {
            p = starAt + 1;
            n = ++starName;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == u'*') {
        ++p;
    }
    return p == pattern.size();
}

std::u16string_view Trimmed(std::u16string_view text) {
    while (!text.empty() && text.front() == u' ') {
        text.remove_prefix(1);
    }
    while (!text.empty() && text.back() == u' ') {
        text.remove_suffix(1);
    }
    return text;
}

std::string HostOf(const std::u16string& path) {
    return HostPath(path.empty() ? u"\\" : path.c_str());
}

}  // namespace

std::vector<FileFilter> ReadFilters(LPCWSTR pairs) {
    std::vector<FileFilter> filters;
    while (pairs != nullptr && *pairs != 0) {
        FileFilter filter;
        filter.Label = pairs;
        pairs += filter.Label.size() + 1;
        filter.Patterns = pairs;
        pairs += filter.Patterns.size() + 1;
        filters.push_back(std::move(filter));
    }
    return filters;
}

bool MatchesPatterns(std::u16string_view name, std::u16string_view patterns) {
    while (!patterns.empty()) {
        const std::size_t end = std::min(patterns.find(u';'), patterns.size());
        const std::u16string_view pattern = Trimmed(patterns.substr(0, end));
        if (pattern == u"*.*" || Matches(name, pattern)) {
            return true;
        }
        patterns.remove_prefix(std::min(end + 1, patterns.size()));
    }
    return false;
}

PathKind KindOfPath(const std::u16string& path) {
    const std::string host = HostOf(path);
    if (host.empty()) {
        return PathKind::Unusable;
    }
    struct stat status {};
    if (stat(host.c_str(), &status) != 0) {
        return PathKind::Missing;
    }
    return S_ISDIR(status.st_mode)   ? PathKind::Folder
           : S_ISREG(status.st_mode) ? PathKind::File
                                     : PathKind::Other;
}

std::vector<FolderEntry> ListFolder(const std::u16string& folder, std::u16string_view patterns) {
    std::vector<FolderEntry> entries;
    const std::string host = HostOf(folder);
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(host.empty() ? nullptr : opendir(host.c_str()),
                                                        closedir);
    while (const dirent* entry = directory != nullptr ? readdir(directory.get()) : nullptr) {
        const std::string name = entry->d_name;
        // At the root: the folder of the programs' sockets.
        if (name.front() == '.' || (folder.empty() && name == "windows")) {
            continue;
        }
        const std::u16string shown = FromUtf8(name);
        const PathKind kind = ToUtf8(shown) == name ? KindOfPath(folder + u'\\' + shown) : PathKind::Unusable;
        if (kind == PathKind::Folder ||
            (kind == PathKind::File && !folder.empty() && MatchesPatterns(shown, patterns))) {
            entries.push_back({shown, kind == PathKind::Folder});
        }
    }
    std::sort(entries.begin(), entries.end(), [](const FolderEntry& left, const FolderEntry& right) {
        if (left.Folder != right.Folder) {
            return left.Folder;
        }
        const auto less = [](char16_t a, char16_t b) { return Lower(a) < Lower(b); };
        const bool before = std::lexicographical_compare(left.Name.begin(), left.Name.end(),
                                                         right.Name.begin(), right.Name.end(), less);
        const bool after = std::lexicographical_compare(right.Name.begin(), right.Name.end(),
                                                        left.Name.begin(), left.Name.end(), less);
        return before != after ? before : left.Name < right.Name;
    });
    return entries;
}

std::u16string ResolveTyped(const std::u16string& folder, std::u16string_view typed) {
    typed = Trimmed(typed);
    std::u16string path = !typed.empty() && IsSeparator(typed.front()) ? u"" : folder;
    while (!typed.empty()) {
        const auto end =
            static_cast<std::size_t>(std::find_if(typed.begin(), typed.end(), IsSeparator) - typed.begin());
        const std::u16string_view part = typed.substr(0, end);
        typed.remove_prefix(std::min(end + 1, typed.size()));
        if (part == u"..") {
            path = ParentFolder(path);
        } else if (!part.empty() && part != u".") {
            path += u'\\';
            path += part;
        }
    }
    return path;
}

std::u16string ParentFolder(const std::u16string& path) {
    const std::size_t last = path.rfind(u'\\');
    return last == path.npos ? std::u16string() : path.substr(0, last);
}

}  // namespace layer
