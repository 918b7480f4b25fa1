#include "platform/files.h"

#include <sys/stat.h>

#include <QRegularExpression>
#include <cerrno>
#include <string>

#include "platform/linux/kernel/disk_file.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/kernel/thread.h"
#include "platform/linux/serial/serial_port.h"

namespace layer {

namespace {

// "COM1:" to "COM9:", in any letter case; empty for everything else.
std::string PortName(LPCWSTR name) {
    const QString upper = QString::fromUtf16(name).toUpper();
    static const QRegularExpression port(QStringLiteral("\\ACOM[1-9]:\\z"));
    return port.match(upper).hasMatch() ? upper.toStdString() : std::string();
}

std::shared_ptr<Object> OpenByName(LPCWSTR name, const DiskAccess& access) {
    const std::string port = PortName(name);
    if (!port.empty()) {
        return access.Disposition == OPEN_EXISTING ? OpenSerialPort(port) : nullptr;
    }
    const std::string path = HostPath(name);
    return path.empty() ? nullptr : OpenDiskFile(path, access);
}

}  // namespace

}  // namespace layer

HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD shareMode, LPSECURITY_ATTRIBUTES, DWORD disposition,
                   DWORD, HANDLE) {
    layer::ParkAtEnd();
    if (name == nullptr) {
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE handle = layer::NewHandle(layer::OpenByName(name, {access, shareMode, disposition}));
    return handle != nullptr ? handle : INVALID_HANDLE_VALUE;
}

DWORD GetFileAttributesW(LPCWSTR name) {
    layer::ParkAtEnd();
    const std::string path = name != nullptr ? layer::HostPath(name) : std::string();
    struct stat status {};
    if (path.empty() || (stat(path.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR))) {
        return INVALID_FILE_ATTRIBUTES;
    }
    return FILE_ATTRIBUTE_NORMAL;
}

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED) {
    layer::ParkAtEnd();
    *read = 0;
    const auto stream = layer::FindObjectAs<layer::Stream>(file);
    return stream != nullptr ? stream->Read(buffer, size, *read) : FALSE;
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written, LPOVERLAPPED) {
    layer::ParkAtEnd();
    *written = 0;
    const auto stream = layer::FindObjectAs<layer::Stream>(file);
    return stream != nullptr ? stream->Write(buffer, size, *written) : FALSE;
}

DWORD GetFileSize(HANDLE file, LPDWORD) {
    layer::ParkAtEnd();
    const auto stream = layer::FindObjectAs<layer::Stream>(file);
    return stream != nullptr ? stream->Size() : INVALID_FILE_SIZE;
}

DWORD SetFilePointer(HANDLE file, LONG distance, LONG*, DWORD) {
    layer::ParkAtEnd();
    const auto stream = layer::FindObjectAs<layer::Stream>(file);
    const DWORD position = static_cast<DWORD>(distance);
    return stream != nullptr && stream->MoveTo(position) ? position : INVALID_SET_FILE_POINTER;
}
