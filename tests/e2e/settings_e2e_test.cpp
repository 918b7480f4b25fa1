// The settings by hand: icon, menu, sheet, editor and tabs of the real program through X events, and what
// comes of it on the reader's wire, in the file and in the next scan.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include "tests/support/child_process.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

const fs::path Programs = VANTREL_PROGRAMS;

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

bool Until(const std::function<bool()>& done, std::chrono::milliseconds patience = 15s) {
    for (const auto end = std::chrono::steady_clock::now() + patience;;) {
        if (done()) {
            return true;
        }
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(50ms);
    }
}

class SettingsByHand : public testing::TestWithParam<bool> {
  protected:
    SettingsByHand() {
        char folder[] = "/tmp/vantrel-settings-XXXXXX";
        folder_ = mkdtemp(folder);
        screen_ = std::make_unique<ChildProcess>(std::vector<std::string>{
            "Xvfb", "-displayfd", "1", "-screen", "0", "240x320x24", "-nolisten", "tcp"});
        const auto number = screen_->ReadLine();
        environment_ = {"DISPLAY=:" + number.value_or("?"), "VANTREL_TERMINAL=" + folder_.string(),
                        "QT_QPA_PLATFORM=xcb"};
    }
    ~SettingsByHand() override {
        if (HasFailure()) {
            Run({"import", "-window", "root", "/tmp/vantrel-settings-failure.png"});
        }
        program_.reset();
        readers_.reset();
        children_.clear();
        screen_.reset();
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    // Runs a program to its end; its first line of output.
    std::string Run(const std::vector<std::string>& command) {
        ChildProcess child(command, environment_);
        const std::string line = child.ReadLine().value_or("");
        child.Wait();
        return line;
    }
    void Start(const std::vector<std::string>& command) {
        children_.push_back(std::make_unique<ChildProcess>(command, environment_));
    }
    void Key(const std::vector<std::string>& keys) {
        std::vector<std::string> command = {"xdotool", "key", "--delay", "30"};
        command.insert(command.end(), keys.begin(), keys.end());
        Run(command);
    }
    void Click(int x, int y) {
        Run({"xdotool", "mousemove", std::to_string(x), std::to_string(y), "sleep", "0.1", "click", "1"});
    }
    // The first window on screen whose name fits; empty when there is none.
    std::string FindWindow(const std::string& name) {
        return Run({"xdotool", "search", "--onlyvisible", "--name", name});
    }
    void ClickWindow(const std::string& window) {
        Run({"xdotool", "mousemove", "--window", window, "10", "10", "sleep", "0.1", "click", "1"});
    }

    // The simulator's lines up to the one that begins so; false when it does not come.
    bool Heard(const std::string& beginning, int milliseconds = 15000) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        while (std::chrono::steady_clock::now() < end) {
            const auto line = readers_->ReadLine(500);
            if (line && line->starts_with(beginning)) {
                return true;
            }
        }
        return false;
    }

    void PressTrigger() { Run({Programs / "vantrel-trigger", "press", "400"}); }
    // Scans until the program is ready to; what xterm has got then.
    std::string Scan(const std::string& label) {
        readers_->WriteLine("clear");
        readers_->WriteLine("label 03 " + label);
        const std::string before = ReadFile(typed_);
        Until([&] {
            PressTrigger();
            return ReadFile(typed_).find(label, before.size()) != std::string::npos;
        });
        return ReadFile(typed_).substr(before.size());
    }

    void StartTerminal(bool withTray) {
        typed_ = folder_ / "typed";
        if (withTray) {
            Start({"trayer", "--edge", "top", "--align", "right", "--height", "26", "--widthtype", "pixel",
                   "--width", "60"});
            ASSERT_TRUE(Until([&] { return !Run({"xdotool", "search", "--class", "trayer"}).empty(); }));
        }
        readers_ = std::make_unique<ChildProcess>(
            std::vector<std::string>{Programs / "vantrel-readers", "--terminal", folder_.string(),
                                     "--barcode", "laser"},
            environment_);
        ASSERT_TRUE(Heard("ready"));
        Start({"xterm", "-geometry", "30x8+0+60", "-e", "sh", "-c", "cat > " + typed_.string()});
        ASSERT_TRUE(Until([&] { return fs::exists(typed_); }));
        FocusTerminal();
        program_ =
            std::make_unique<ChildProcess>(std::vector<std::string>{Programs / "vantrel"}, environment_);
    }
    void FocusTerminal() {
        const std::string window = Run({"xdotool", "search", "--onlyvisible", "--class", "xterm"});
        Run({"xdotool", "windowfocus", "--sync", window});
    }
    void TapIcon(bool withTray) {
        if (withTray) {
            // The area stands at the top right.
            Click(240 - 60 + 13, 13);
        } else {
            ClickWindow(FindWindow("^Vantrel v1.29$"));
        }
    }

    fs::path folder_, typed_;
    std::vector<std::string> environment_;
    std::unique_ptr<ChildProcess> screen_, readers_, program_;
    std::vector<std::unique_ptr<ChildProcess>> children_;
};

}  // namespace
