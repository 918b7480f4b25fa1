#include "platform/linux/windows/program_socket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "platform/linux/kernel/terminal.h"

namespace layer {

namespace {

constexpr int Backlog = 64;

// Addresses of sockets are short and paths of folders may be long; through a descriptor of the folder every
// address is.
class FolderAddress {
  public:
    explicit FolderAddress(const std::string& name)
        : folder_(open(WindowsFolder().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
        address_.sun_family = AF_UNIX;
        const int length = std::snprintf(address_.sun_path, sizeof address_.sun_path, "/proc/self/fd/%d/%s",
                                         folder_.Number(), name.c_str());
        usable_ = folder_ && length > 0 && static_cast<std::size_t>(length) < sizeof address_.sun_path;
    }
    bool Usable() const { return usable_; }
    const sockaddr* Get() const { return reinterpret_cast<const sockaddr*>(&address_); }
    static constexpr socklen_t Size = sizeof(sockaddr_un);

  private:
    Descriptor folder_;
    sockaddr_un address_{};
    bool usable_ = false;
};

Descriptor NewSocket() {
    return Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

}  // namespace

std::string WindowsFolder() {
    return TerminalFolder() + "/windows";
}

int ListenAs(const std::string& name) {
    // A socket that is bound and does not listen yet looks like one of a dead program: names with a dot in
    // front are nobody's.
    const std::string folder = WindowsFolder(), path = folder + "/" + name, hidden = folder + "/." + name;
    const FolderAddress address("." + name);
    Descriptor listening = NewSocket();
    RemoveLeftovers(folder, ".");
    unlink(hidden.c_str());
    if (!address.Usable() || !listening ||
        bind(listening.Number(), address.Get(), FolderAddress::Size) != 0 ||
        listen(listening.Number(), Backlog) != 0 || rename(hidden.c_str(), path.c_str()) != 0) {
        unlink(hidden.c_str());
        return -1;
    }
    return listening.Release();
}

void RemoveSocket(const std::string& name) {
    unlink((WindowsFolder() + "/" + name).c_str());
}

std::vector<std::string> ListPrograms() {
    const std::string folder = WindowsFolder();
    std::vector<std::string> names = NamesIn(folder);
    std::erase_if(names, [&](const std::string& name) {
        std::error_code error;
        return name.front() == '.' || !std::filesystem::is_socket(folder + "/" + name, error);
    });
    return names;
}

Descriptor ConnectTo(const std::string& name) {
    const FolderAddress address(name);
    Descriptor connection = NewSocket();
    if (address.Usable() && connection &&
        connect(connection.Number(), address.Get(), FolderAddress::Size) == 0) {
        return connection;
    }
    if (errno == ECONNREFUSED) {
        RemoveSocket(name);
    }
    return Descriptor();
}

bool LineConnection::Flush() {
    while (!Out.empty()) {
        const ssize_t sent = send(Socket.Number(), Out.data(), Out.size(), MSG_NOSIGNAL);
        if (sent < 0) {
            return errno == EAGAIN || errno == EINTR;
        }
        Out.erase(0, static_cast<std::size_t>(sent));
    }
    return true;
}

bool LineConnection::Ended() const {
    char byte;
    return In.empty() && recv(Socket.Number(), &byte, sizeof byte, MSG_PEEK) == 0;
}

LineConnection::Got LineConnection::TakeLine(std::string& line) {
    for (;;) {
        const std::size_t end = In.find('\n');
        if (end != std::string::npos) {
            line = In.substr(0, end);
            In.erase(0, end + 1);
            return Got::Line;
        }
        if (In.size() > LongestLine) {
            return Got::Closed;
        }
        char bytes[4096];
        const ssize_t count = recv(Socket.Number(), bytes, sizeof bytes, 0);
        if (count > 0) {
            In.append(bytes, static_cast<std::size_t>(count));
        } else if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
            return Got::Nothing;
        } else {
            return Got::Closed;
        }
    }
}

}  // namespace layer
