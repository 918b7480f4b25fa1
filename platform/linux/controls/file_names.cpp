#include "platform/linux/controls/file_names.h"

#include <QDir>
#include <algorithm>

#include "platform/linux/kernel/terminal.h"

namespace layer {

namespace {

QFileInfo InfoOf(const std::u16string& path) {
    const std::string host = HostPath(path.empty() ? u"\\" : path.c_str());
    return host.empty() ? QFileInfo() : QFileInfo(QString::fromStdString(host));
}

}  // namespace

std::vector<FileFilter> ReadFilters(LPCWSTR pairs) {
    std::vector<FileFilter> filters;
    while (*pairs != 0) {
        FileFilter filter;
        filter.Label = pairs;
        pairs += filter.Label.size() + 1;
        filter.Patterns = pairs;
        pairs += filter.Patterns.size() + 1;
        filters.push_back(std::move(filter));
    }
    return filters;
}

PathKind KindOfPath(const std::u16string& path) {
    const QFileInfo info = InfoOf(path);
    return info.filePath().isEmpty() ? PathKind::Unusable
           : !info.exists()          ? PathKind::Missing
           : info.isDir()            ? PathKind::Folder
           : info.isFile()           ? PathKind::File
                                     : PathKind::Other;
}

std::vector<FolderEntry> ListFolder(const std::u16string& folder, std::u16string_view patterns) {
    std::vector<FolderEntry> entries;
    QStringList filters = QString::fromUtf16(patterns.data(), static_cast<qsizetype>(patterns.size()))
                              .split(u';', Qt::SkipEmptyParts);
    filters.replaceInStrings(QStringLiteral("*.*"), QStringLiteral("*"));
    const QDir directory(InfoOf(folder).filePath());
    const auto kinds = QDir::AllDirs | QDir::NoDotAndDotDot | (folder.empty() ? QDir::Dirs : QDir::Files);
    for (const QFileInfo& info :
         directory.entryInfoList(filters, kinds, QDir::DirsFirst | QDir::IgnoreCase | QDir::Name)) {
        const std::u16string name = info.fileName().toStdU16String();
        const PathKind kind = KindOfPath(folder + u'\\' + name);
        // At the root: the folder of the programs' sockets.
        if ((kind == PathKind::Folder && !(folder.empty() && name == u"windows")) || kind == PathKind::File) {
            entries.push_back({name, kind == PathKind::Folder});
        }
    }
    return entries;
}

std::u16string ResolveTyped(const std::u16string& folder, const std::u16string& typed) {
    const QString text = QString::fromStdU16String(typed).trimmed().replace(u'/', u'\\');
    std::u16string path = text.startsWith(u'\\') ? u"" : folder;
    for (const QString& part : text.split(u'\\', Qt::SkipEmptyParts)) {
        if (part == u"..") {
            path = ParentFolder(path);
        } else if (part != u".") {
            path += u'\\' + part.toStdU16String();
        }
    }
    return path;
}

std::u16string ParentFolder(const std::u16string& path) {
    const std::size_t last = path.rfind(u'\\');
    return last == path.npos ? std::u16string() : path.substr(0, last);
}

}  // namespace layer
