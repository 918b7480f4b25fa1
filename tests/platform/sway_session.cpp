#include "tests/platform/sway_session.h"

#include <pwd.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "tests/support/temporary_terminal.h"

namespace {

constexpr std::chrono::milliseconds Pause{20}, Quiet{200};

template <class Condition>
void Await(const char* what, const Condition& condition) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > until)
            throw std::runtime_error(what);
        std::this_thread::sleep_for(Pause);
    }
}

// The name of the socket that clients connect to; empty before it is there.
std::string SocketIn(const std::string& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().filename().string().starts_with("wayland-") && entry.is_socket())
            return entry.path();
    }
    return "";
}

}  // namespace

SwaySession::SwaySession(const std::string& configuration) {
    folder_ = (std::filesystem::temp_directory_path() / "vantrel-sway-XXXXXX").string();
    if (mkdtemp(folder_.data()) == nullptr)
        throw std::runtime_error("no folder for the session");
    WriteWholeFile(folder_ + "/config",
                   "for_window [app_id=foot] exec touch $XDG_RUNTIME_DIR/front\n" + configuration + "\n");
    if (const passwd* nobody = geteuid() == 0 ? getpwnam("nobody") : nullptr)
        std::filesystem::permissions(folder_ + "/config", std::filesystem::perms(0644)),
            static_cast<void>(chown(folder_.c_str(), nobody->pw_uid, nobody->pw_gid));
    sway_ = Run("exec sway --config $XDG_RUNTIME_DIR/config 2>$XDG_RUNTIME_DIR/sway.log");
    Await("sway does not start", [&] { return !SocketIn(folder_).empty(); });
    setenv("WAYLAND_DISPLAY", SocketIn(folder_).c_str(), 1);
}

SwaySession::~SwaySession() {
    terminal_.reset();
    sway_.reset();
    unsetenv("WAYLAND_DISPLAY");
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::unique_ptr<ChildProcess> SwaySession::Run(const std::string& command) {
    std::vector<std::string> words = {"setpriv", "--pdeathsig", "KILL"};
    if (geteuid() == 0)
        words.insert(words.end(), {"--reuid", "nobody", "--regid", "nogroup", "--clear-groups"});
    words.insert(words.end(), {"--", "sh", "-c", command});
    return std::make_unique<ChildProcess>(
        words,
        std::vector<std::string>{"XDG_RUNTIME_DIR=" + folder_, "HOME=" + folder_, "WLR_BACKENDS=headless",
                                 "WLR_RENDERER=pixman", "WLR_LIBINPUT_NO_DEVICES=1", "LC_ALL=C.UTF-8"});
}

void SwaySession::OpenTerminal() {
    terminal_ =
        Run("exec foot --config=/dev/null sh -c 'stty raw -echo; exec tee $XDG_RUNTIME_DIR/typed' "
            "2>$XDG_RUNTIME_DIR/foot.log");
    Await("foot does not come to the front", [&] {
        return std::filesystem::exists(folder_ + "/front") && std::filesystem::exists(folder_ + "/typed");
    });
}

std::string SwaySession::Typed(std::size_t count, int milliseconds) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (ReadWholeFile(folder_ + "/typed").size() < count && std::chrono::steady_clock::now() < until)
        std::this_thread::sleep_for(Pause);
    std::this_thread::sleep_for(Quiet);
    return ReadWholeFile(folder_ + "/typed");
}
