// The whole program on a stage: the real main window and its windows without a screen, threads and all, on
// scripted ports and a manual clock. README.md tells the commands it adds.
#include <unistd.h>

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>

#include "app/init_thread.h"
#include "app/main_window.h"
#include "link/barcode_receiver.h"
#include "link/reading.h"
#include "link/serial_ports.h"
#include "platform/linux/keyboard/keyboard_backend.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/screen.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/linux/windows/window_object.h"
#include "platform/sound.h"
#include "resources/resource.h"
#include "scan/barcode_data.h"
#include "scan/rfid_data.h"
#include "settings/catalogue.h"
#include "settings/record.h"
#include "settings/settings_file.h"
#include "shell/shell_state.h"
#include "tests/support/temporary_terminal.h"
#include "tests/wire/wire_stage.h"
#include "ui/tree_view.h"

// There is no sound device.
BOOL PlaySoundW(LPCWSTR, HMODULE, DWORD) {
    return TRUE;
}

namespace {

// A program that has started, found its readers as configured, and switched them on.
void BeRunning() {
    if (HasBarcodeReader()) {
        ShellState.BarcodePort = OpenReaderPort(BarcodePortSelector);
        SetPortTimeouts(ShellState.BarcodePort, 30);
        if (!StartBarcodeReceiver(DeviceFlags))
            throw std::runtime_error("no barcode receiver");
    }
    BuildPageLists();
    TakeSnapshots();
    ShellState.SettingsApplied = 1;
    ShellState.ReaderReady = 1;
    ShellState.InitDone = 1;
    ApplyActiveDevice();
    if (ShellState.BarcodeEnabled) {
        ResumeBarcodeReceiver();
    }
    ShowWindow(ShellState.MainWindow, SW_HIDE);
}

DWORD Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return static_cast<DWORD>(SendMessageW(ShellState.MainWindow, message, wParam, lParam));
}

std::string Unquote(const std::string& word) {
    return word.size() >= 2 && word.front() == '"' ? word.substr(1, word.size() - 2) : word;
}

// Where the keyboard writes to; it is chosen once in a program.
class KeyFile {
  public:
    ~KeyFile() { std::filesystem::remove(Path); }
    const std::string Path =
        std::filesystem::temp_directory_path() / ("vantrel-keys-" + std::to_string(getpid()));
};

const KeyFile Keys;

std::string PlainText(QString text) {
    return text.remove('&').toStdString();
}

class AppStage : public WireStage {
  public:
    explicit AppStage(Conversation::Complaint complain);
    ~AppStage() override;

    void CheckEnd(int line) override;

  private:
    void Prepare(const Words& words) override;
    DWORD CallByName(const Words& words) override;
    void Expect(const Words& words, int line) override;
    std::uint64_t NextTimer() override;
    void RunMainWindow() override;

    DWORD OpenMenu(const std::string& item);
    // Looks for boxes and menus, which run loops of their own, and answers them.
    void AnswerWindows();
    void ExpectText(int line, const std::string& what, const std::string& expected, const std::string& got);
    // What the keyboard has typed since the last look.
    std::string Typed();

    TemporaryTerminal terminal_;
    QTimer watch_;
    std::deque<std::string> boxes_;  // texts of those that came
    Words atBox_;                    // called while the next one is up
    Words atTime_;                   // called at this time of the clock
    std::uint64_t time_ = layer::Forever;
    std::map<std::string, std::string> items_;  // of the menu that was opened last
    std::string pick_;                          // what to take of it
    std::size_t typed_ = 0;
};

AppStage::AppStage(Conversation::Complaint complain) : WireStage(std::move(complain)) {
    setenv("VANTREL_KEYBOARD", ("trace:" + Keys.Path).c_str(), 1);
    layer::StartWindows();
    layer::SeeWithoutAScreen();
    layer::PrepareKeyboard();
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = MainWndProc;
    windowClass.lpszClassName = WindowClassName;
    RegisterClassW(&windowClass);
    std::destroy_at(&ShellState);
    std::construct_at(&ShellState);
    ReceiveHandlers = {HandleBarcodeData, HandleRfidData};
    ShellState.VibratorSemaphore = CreateSemaphoreW(nullptr, 0, 1, nullptr);
    ShellState.MainWindow = CreateWindowExW(0, WindowClassName, WindowTitle, WS_VISIBLE, 0, 0, 240, 294,
                                            nullptr, nullptr, nullptr, nullptr);
    ShellState.StateImages = LoadStateImages(nullptr);
    QObject::connect(&watch_, &QTimer::timeout, [this] { AnswerWindows(); });
    watch_.start(1);
    Typed();  // by the case before
}

AppStage::~AppStage() {
    // Whoever waits for the readers ends, too; the program would end under it.
    ShellState.ReaderReady = 1;
    if (IsWindow(ShellState.MainWindow)) {
        Send(WM_CLOSE);
    }
    Settle();
    layer::ForgetQuit();
}

void AppStage::AnswerWindows() {
    if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
        items_.clear();
        QAction* picked = nullptr;
        for (QAction* action : menu->actions()) {
            const std::string text = PlainText(action->text());
            items_[text] = !action->isEnabled() ? "grey" : action->isChecked() ? "checked" : "unchecked";
            picked = text == pick_ ? action : picked;
        }
        if (picked) {
            menu->setActiveAction(picked);
            QTest::keyClick(menu, Qt::Key_Return);
        }
        menu->close();
        return;
    }
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (!window->isVisible() || window->windowTitle() != "Error Msg") {
            continue;
        }
        std::string text;
        for (const QLabel* label : window->findChildren<QLabel*>()) {
            if (label->text() != window->windowTitle()) {
                text += label->text().toStdString();
            }
        }
        boxes_.push_back(text);
        if (const Words call = std::exchange(atBox_, {}); !call.empty()) {
            CallByName(call);
        }
        QTest::mouseClick(window->findChild<QPushButton*>(), Qt::LeftButton);
        return;
    }
}

std::uint64_t AppStage::NextTimer() {
    return std::min(time_, layer::WindowTimers().NextDue());
}

void AppStage::RunMainWindow() {
    layer::PumpMessages();
    // The watch may not have come round yet.
    AnswerWindows();
    layer::PumpMessages();
    if (clock_.Now() >= time_) {
        time_ = layer::Forever;
        CallByName(atTime_);
    }
}

void AppStage::Prepare(const Words& words) {
    const std::string& what = words[0];
    if (what == "running") {
        BeRunning();
        RunMainWindow();
    } else if (what == "save") {
        if (SaveSettings() != 1)
            throw std::runtime_error("the settings cannot be saved");
    } else if (what == "blocked") {
        std::filesystem::create_directory(terminal_.Path("DiskOnChip/Vantrel.ini"));
    } else if (what == "front") {
        ShowWindow(ShellState.MainWindow, SW_SHOWNORMAL);
        SetForegroundWindow(ShellState.MainWindow);
        RunMainWindow();
    } else if (what == "at" && At(words, 1) == "box") {
        atBox_.assign(words.begin() + 1, words.end());
    } else if (what == "at") {
        atTime_.assign(words.begin() + 1, words.end());
        time_ = clock_.Now() + ToNumber(words[1]);
    } else if (what == "go") {
        CallByName(words);
        Let(0);
    } else {
        WireStage::Prepare(words);
    }
}

DWORD AppStage::OpenMenu(const std::string& item) {
    pick_ = item;
    items_.clear();
    Send(WM_TRAYNOTIFY, IDI_TRAY, WM_LBUTTONDOWN);
    RunMainWindow();
    return items_.empty() ? 0 : 1;
}

DWORD AppStage::CallByName(const Words& words) {
    const auto key = [&](LPCWSTR first, LPCWSTR second) {
        return Send(RegisterWindowMessageW(words.size() > 2 && words[2] == "2" ? second : first),
                    words.size() > 3 ? ToNumber(words[3]) : 0);
    };
    const auto ok = [this] {
        SendMessageW(ShellState.SettingsSheet, WM_COMMAND, IDOK, 0);
        RunMainWindow();
        return DWORD{1};
    };
    const std::map<std::string, std::function<DWORD()>> calls{
        {"start", [] { return CloseHandle(CreateThread(nullptr, 0, InitThread, nullptr, 0, nullptr)); }},
        {"press", [&] { return key(TEXT("WM_USER1DOWN"), TEXT("WM_USER2DOWN")); }},
        {"release", [&] { return key(TEXT("WM_USER1UP"), TEXT("WM_USER2UP")); }},
        {"menu", [&] { return OpenMenu(words.size() > 2 ? Unquote(words[2]) : ""); }},
        {"settings",
         [&] {
             const DWORD shown = Send(WM_OPENSETTINGS);
             if (words.size() > 3) {
                 Prepare({"set", words[2], words[3]});
                 ok();
             }
             return shown;
         }},
        {"ok", ok},
        {"error", [&] { return Send(WM_SHOWERROR, ToNumber(At(words, 2))); }},
        {"exit", [] { return Send(WM_CLOSE); }}};
    const auto call = calls.find(At(words, 1));
    return call != calls.end() ? call->second() : WireStage::CallByName(words);
}

std::string AppStage::Typed() {
    std::istringstream lines(ReadWholeFile(Keys.Path));
    std::string text, tick, key, way;
    while (lines >> tick >> key >> way) {
        const int code = std::stoi(key, nullptr, 16);
        if (way == "down" && code != 0x10) {
            text += code == 0x0D ? '\r' : static_cast<char>(code);
        }
    }
    return text.substr(std::exchange(typed_, text.size()));
}

void AppStage::ExpectText(int line, const std::string& what, const std::string& expected,
                          const std::string& got) {
    if (expected != got) {
        complain_(line, what + " should be \"" + expected + "\" but is \"" + got + "\"");
    }
}

void AppStage::Expect(const Words& words, int line) {
    const std::string& what = At(words, 1);
    const std::map<std::string, std::string> states{
        {"sheet", ShellState.SettingsSheet ? "open" : "closed"},
        {"program", layer::QuitPending() ? "ended" : "running"},
        {"window", IsWindowVisible(ShellState.MainWindow) ? "shown" : "hidden"},
        {"vibrator", ReadWholeFile(terminal_.Path("VIBRATOR")).starts_with("1") ? "on" : "off"}};
    if (what == "box") {
        ExpectText(line, "the box", Unquote(At(words, 2)), boxes_.empty() ? "" : boxes_.front());
        if (!boxes_.empty()) {
            boxes_.pop_front();
        }
    } else if (what == "items") {
        ExpectText(line, "BC Reader", Unquote(At(words, 2)), items_["BC Reader"]);
        ExpectText(line, "RFID Reader", Unquote(At(words, 3)), items_["RFID Reader"]);
    } else if (what == "typed") {
        const std::vector<BYTE> typed = ReadWireBytes(words, 2);
        ExpectText(line, "what is typed", {typed.begin(), typed.end()}, Typed());
    } else if (const auto state = states.find(what); state != states.end()) {
        ExpectText(line, what, At(words, 2), state->second);
    } else {
        WireStage::Expect(words, line);
    }
}

void AppStage::CheckEnd(int line) {
    ExpectText(line, "an unexpected box", "", boxes_.empty() ? "" : boxes_.front());
    WireStage::CheckEnd(line);
}

}  // namespace

std::unique_ptr<WireStage> MakeStage(Conversation::Complaint complain) {
    return std::make_unique<AppStage>(std::move(complain));
}
