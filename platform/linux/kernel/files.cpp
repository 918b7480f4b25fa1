#include "platform/files.h"

#include <sys/stat.h>

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
    constexpr std::u16string_view upper = u"COM";
    constexpr std::u16string_view lower = u"com";
    for (std::size_t i = 0; i < upper.size(); ++i) {
        if (name[i] != upper[i] && name[i] != lower[i]) {
            return {};
        }
    }
    if (name[3] < u'1' || name[3] > u'9' || name[4] != u':' || name[5] != 0) {
        return {};
    }
    return std::string("COM") + static_cast<char>(name[3]) + ":";
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

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped) {
    layer::ParkAtEnd();
    DWORD done = 0;
    const auto stream = layer::FindObjectAs<layer::Stream>(file);
    const bool usable = stream != nullptr && (buffer != nullptr || size == 0) && overlapped == nullptr;
    const BOOL result = usable ? stream->Read(buffer, size, done) : FALSE;
    if (read != nullptr) {
        *read = done;
    }
    return result;
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written, LPOVERLAPPED overlapped) {
    layer::ParkAtEnd();
    DWORD done = 0;
    const auto stream = layer::FindObjectAs<layer::Stream>(file);
    const bool usable = stream != nullptr && (buffer != nullptr || size == 0) && overlapped == nullptr;
    const BOOL result = usable ? stream->Write(buffer, size, done) : FALSE;
    if (written != nullptr) {
        *written = done;
    }
    return result;
}

DWORD GetFileSize(HANDLE file, LPDWORD sizeHigh) {
    layer::ParkAtEnd();
    if (sizeHigh != nullptr) {
        *sizeHigh = 0;
    }
    const auto stream = layer::FindObjectAs<layer::Stream>(file);
    return stream != nullptr ? stream->Size() : INVALID_FILE_SIZE;
}

DWORD SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method) {
    layer::ParkAtEnd();
    const auto stream = layer::FindObjectAs<layer::Stream>(file);
    if (stream == nullptr || distance < 0 || distanceHigh != nullptr || method != FILE_BEGIN) {
        return INVALID_SET_FILE_POINTER;
    }
    const DWORD position = static_cast<DWORD>(distance);
    return stream->MoveTo(position) ? position : INVALID_SET_FILE_POINTER;
}
