// The warning before an upgrade: what it says of the decoder's version, and what counts as going on.
#include <gtest/gtest.h>

#include <QAbstractScrollArea>
#include <QScrollBar>

#include "firmware/upgrade_dialogs.h"
#include "link/serial_ports.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/linux/windows/window_object.h"
#include "resources/resource.h"
#include "settings/record.h"
#include "shell/shell_state.h"
#include "tests/e2e/readers.h"
#include "tests/support/temporary_terminal.h"

namespace {

struct {
    UINT Message;   // is posted once the warning is there
    WPARAM Button;  // with this
    std::string Text;
    bool Scrolls;
} Caution;

// The warning's own procedure, and somebody who reads and answers.
INT_PTR CALLBACK ReadAndAnswer(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == Caution.Message && LOWORD(wParam) == Caution.Button) {
        auto* text = qobject_cast<QAbstractScrollArea*>(
            layer::FindWindowObject(GetDlgItem(dialog, IDC_EDIT))->Widget());
        Caution.Scrolls = !text || text->verticalScrollBar()->maximum() > 0;
    }
    const INT_PTR result = CautionDlgProc(dialog, message, wParam, lParam);
    if (message == WM_INITDIALOG) {
        EXPECT_NE(result, 0);
        WCHAR text[1024] = {};
        GetDlgItemTextW(dialog, IDC_EDIT, text, 1024);
        Caution.Text = layer::ToUtf8(text);
        EXPECT_EQ(CautionDlgProc(dialog, WM_COMMAND, IDC_EDIT, 0), 1) << "no button's command";
        PostMessageW(dialog, Caution.Message, Caution.Button, 0);
    }
    return result;
}

INT_PTR ShowCaution(UINT message, WPARAM button) {
    Caution = {message, button, "", true};
    return DialogBoxParamW(nullptr, MAKEINTRESOURCEW(IDD_CAUTION), nullptr, ReadAndAnswer, 0);
}

std::string VersionLine() {
    const std::string mark = "click [Next].\r\n\r\nCurrent Firmware : ";
    const std::size_t at = Caution.Text.find(mark);
    return at == std::string::npos ? "nothing in " + Caution.Text : Caution.Text.substr(at + mark.size());
}

class FirmwareCaution : public testing::Test {
  protected:
    FirmwareCaution() {
        layer::StartWindows();
        Wire = std::make_unique<Readers>(std::vector<std::string>{"--barcode", "1d", "--quiet"});
        DeviceFlags = Device1D;
        ShellState.BarcodePort = OpenReaderPort(BarcodePortSelector);
        SetPortLine(ShellState.BarcodePort, 115200);
        SetPortTimeouts(ShellState.BarcodePort, MAXDWORD);
    }
    ~FirmwareCaution() override { CloseReaderPort(ShellState.BarcodePort); }

    TemporaryTerminal Terminal;
    std::unique_ptr<Readers> Wire;
};

TEST_F(FirmwareCaution, NamesTheVersion) {
    const std::pair<const char*, std::string> versions[] = {
        {"Ver 1.23", "Ver 1.23"},
        {"hex:56 65 72 20 E9", "Ver \xC3\xA9"},
        {"repeat:200:Ver ", "Ver Ver Ver Ver Ver Ver Ver Ver "},
        {"1.23", ""},
        {"hex:56 65 72", "Ver"},
    };
    for (const auto& [told, shown] : versions) {
        Wire->Command(std::string("version ") + told);
        EXPECT_EQ(ShowCaution(WM_COMMAND, IDOK), IDOK);
        EXPECT_EQ(VersionLine(), shown) << told;
        EXPECT_TRUE(!Caution.Scrolls || shown.size() > 20) << "a part of it is out of sight";
    }
    // ESC in the last place, without a CR behind it.
    Wire->Command("fault com1 reply 56 65 72 20 39 1B");
    ShowCaution(WM_COMMAND, IDOK);
    EXPECT_EQ(VersionLine(), "");
}

TEST_F(FirmwareCaution, AsksASilentDecoderFiveTimes) {
    Wire->Command("version Ver 7");
    Wire->Command("fault com1 no-reply x4");
    Wire->Forget();
    ShowCaution(WM_COMMAND, IDCANCEL);
    EXPECT_EQ(VersionLine(), "Ver 7");
    Wire->Command("state");
    EXPECT_EQ(Wire->Count("event command com1 VER"), 5);
    Wire->Command("fault com1 no-reply x6");
    Wire->Forget();
    ShowCaution(WM_COMMAND, IDCANCEL);
    EXPECT_EQ(VersionLine(), "");
    Wire->Command("state");
    EXPECT_EQ(Wire->Count("event command com1 VER"), 5);
}

}  // namespace
