#include "platform/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QRegularExpression>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <string>

#include "platform/linux/kernel/log.h"
#include "platform/linux/kernel/posix.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/kernel/thread.h"
#include "platform/linux/serial/serial_port.h"

namespace layer {

namespace {

// How a file is opened, in the platform's values. Locks are advisory locks of the host: they keep out the
// programs of the terminal.
struct DiskAccess {
    DWORD Access;       // GENERIC_READ, GENERIC_WRITE
    DWORD ShareMode;    // 0: nobody else has it open meanwhile
    DWORD Disposition;  // OPEN_EXISTING or CREATE_ALWAYS
};

// How long a file that another program has locked is waited for.
constexpr std::chrono::seconds LongestLock{2};

bool IsRegular(int file, struct stat& status) {
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

// Opens and locks a regular file. A file that has been replaced between the two steps is opened anew;
// `missing` says whether there is none.
Descriptor OpenLocked(const std::string& path, int flags, bool alone, bool* missing = nullptr) {
    for (int tries = 0; tries < 10; ++tries) {
        // Without waiting, so that a pipe under the name stops nobody.
        Descriptor file(open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600));
        struct stat opened {};
        if (!file) {
            if (missing != nullptr) {
                *missing = errno == ENOENT;
            }
            return Descriptor();
        }
        if (!IsRegular(file.Number(), opened) ||
            !LockFile(file.Number(), alone ? LOCK_EX : LOCK_SH, LongestLock)) {
            return Descriptor();
        }
        struct stat named {};
        if (stat(path.c_str(), &named) == 0 && named.st_dev == opened.st_dev &&
            named.st_ino == opened.st_ino) {
            return file;
        }
    }
    return Descriptor();
}

// The file that a chain of links ends at, existing or not; the path itself when it is no link.
std::string LinkEnd(std::filesystem::path path) {
    std::error_code ignored;
    for (int links = 0; links < 8 && std::filesystem::is_symlink(path, ignored); ++links) {
        path = path.parent_path() / std::filesystem::read_symlink(path, ignored);
    }
    return path;
}

class DiskFile : public Stream {
  public:
    // `replaces` is the path whose place the file takes when it is closed, or empty; `old` is what is there.
    DiskFile(Descriptor file, DWORD access, std::string written = {}, std::string replaces = {},
             Descriptor old = Descriptor())
        : file_(std::move(file)),
          access_(access),
          written_(std::move(written)),
          replaces_(std::move(replaces)),
          old_(std::move(old)) {}
    ~DiskFile() override { Close(); }

    BOOL Read(void* buffer, DWORD size, DWORD& read) override {
        std::scoped_lock lock(mutex_);
        if (!file_ || (access_ & GENERIC_READ) == 0) {
            return FALSE;
        }
        return Move(size, read, [&](std::size_t done) {
            return ::read(file_.Number(), static_cast<char*>(buffer) + done, size - done);
        });
    }

    BOOL Write(const void* buffer, DWORD size, DWORD& written) override {
        std::scoped_lock lock(mutex_);
        if (!file_ || (access_ & GENERIC_WRITE) == 0) {
            return FALSE;
        }
        const BOOL whole = Move(size, written, [&](std::size_t done) {
            return ::write(file_.Number(), static_cast<const char*>(buffer) + done, size - done);
        });
        if (whole && written == size) {
            return TRUE;
        }
        error_ = errno;
        return FALSE;
    }

    DWORD Size() override {
        std::scoped_lock lock(mutex_);
        struct stat status {};
        if (!file_ || fstat(file_.Number(), &status) != 0 || status.st_size >= INVALID_FILE_SIZE) {
            return INVALID_FILE_SIZE;
        }
        return static_cast<DWORD>(status.st_size);
    }

    bool MoveTo(DWORD position) override {
        std::scoped_lock lock(mutex_);
        return file_ && lseek(file_.Number(), position, SEEK_SET) == static_cast<off_t>(position);
    }

    bool Close() override {
        std::scoped_lock lock(mutex_);
        const bool done = !file_ || replaces_.empty() || Replace();
        file_.Close();
        old_.Close();
        return done;
    }

  private:
    template <class Step>
    static BOOL Move(DWORD size, DWORD& moved, Step step) {
        std::size_t done = 0;
        while (done < size) {
            const ssize_t count = step(done);
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                moved = static_cast<DWORD>(done);
                return count == 0;
            }
            done += static_cast<std::size_t>(count);
        }
        moved = size;
        return TRUE;
    }

    bool Replace() {
        // The content has to be on the disk before the name points at it.
        if (error_ == 0 &&
            (fsync(file_.Number()) != 0 || std::rename(written_.c_str(), replaces_.c_str()) != 0)) {
            error_ = errno;
        }
        if (error_ != 0) {
            unlink(written_.c_str());
            Say(LogPriority::Error, "%s is not saved: %s", replaces_.c_str(), std::strerror(error_));
            return false;
        }
        const std::string folder = replaces_.substr(0, replaces_.rfind('/') + 1);
        const Descriptor directory(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!directory || fsync(directory.Number()) != 0) {
            Say(LogPriority::Warning, "%s is saved, but a power failure may bring the old one back: %s",
                replaces_.c_str(), std::strerror(errno));
        }
        return true;
    }

    std::mutex mutex_;
    Descriptor file_;
    const DWORD access_;
    const std::string written_;
    const std::string replaces_;
    Descriptor old_;
    int error_ = 0;  // of the first write that failed
};

// Gives the file the owner, group and mode of the old one. Only root can give a file away: what another user
// saves is his.
bool TakeAfter(int file, int old) {
    struct stat status {};
    if (fstat(old, &status) != 0) {
        return false;
    }
    if (fchown(file, status.st_uid, status.st_gid) != 0 &&
        fchown(file, static_cast<uid_t>(-1), status.st_gid) != 0) {
        return fchmod(file, status.st_mode & 0707) == 0;  // what its group may do is not for his
    }
    return fchmod(file, status.st_mode & 0777) == 0;
}

std::shared_ptr<Stream> CreateAlways(const std::string& path, DWORD access) {
    // A link keeps pointing where it does; what it points at is replaced.
    const std::string target = LinkEnd(path);
    bool missing = false;
    Descriptor old = OpenLocked(target, O_RDWR, true, &missing);
    if (!old && !missing) {
        return nullptr;
    }
    const std::string written = target + ".new";
    Descriptor file = OpenLocked(written, O_RDWR | O_CREAT | O_NOFOLLOW, true);
    if (!file || ftruncate(file.Number(), 0) != 0) {
        return nullptr;
    }
    if (old && !TakeAfter(file.Number(), old.Number())) {
        unlink(written.c_str());
        return nullptr;
    }
    return std::make_shared<DiskFile>(std::move(file), access, written, target, std::move(old));
}

// Opens a regular file; null when it cannot be opened so.
// A file of CREATE_ALWAYS is written beside the old one and takes its place when the handle is closed: power
// that fails in between, a full disk or a killed program leave the old content whole.
std::shared_ptr<Stream> OpenDiskFile(const std::string& path, const DiskAccess& access) {
    const bool writes = (access.Access & GENERIC_WRITE) != 0;
    if (access.Disposition == CREATE_ALWAYS) {
        return writes ? CreateAlways(path, access.Access) : nullptr;
    }
    if (access.Disposition != OPEN_EXISTING) {
        return nullptr;
    }
    Descriptor file = OpenLocked(path, writes ? O_RDWR : O_RDONLY, access.ShareMode == 0);
    return file ? std::make_shared<DiskFile>(std::move(file), access.Access) : nullptr;
}

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
