#include "tests/ui/sheet_driver.h"

#include <QApplication>
#include <QLineEdit>
#include <QMetaEnum>
#include <QTabBar>
#include <QTest>
#include <QTimer>
#include <map>

#include "firmware/upgrade.h"
#include "link/read_control.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/screen.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/linux/windows/window_object.h"
#include "resources/resource.h"
#include "settings/defaults.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"
#include "ui/settings_sheet.h"
#include "ui/tree_view.h"

Outside World;

// What the key sequence leads to is told elsewhere.
void UpgradeFirmware(HWND owner) {
    EXPECT_EQ(owner, static_cast<HWND>(ShellState.SettingsSheet));
    ++World.Upgrades;
}

namespace {

LRESULT CALLBACK TestMainProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_TIMER:
            KillTimer(window, LOWORD(wParam));
            EXPECT_EQ(HandleTimer(LOWORD(wParam)), Success);
            return 0;
        case WM_CLOSE:
        case WM_APPLYSETTINGS:
        case WM_OPENSETTINGS:
            World.MainMessages.push_back(message);
            if (World.OnMain) {
                World.OnMain(message);
            }
            return 0;
        default:
            return DefWindowProcW(window, message, wParam, lParam);
    }
}

HTREEITEM FindUnder(HWND tree, HTREEITEM first, DWORD parameter) {
    for (HTREEITEM item = first; item; item = NextAfter(tree, item)) {
        TreeItem read;
        if (ReadTreeItem(tree, item, read) && read.Parameter == parameter) {
            return item;
        }
        if (HTREEITEM found = FindUnder(tree, FirstChildOf(tree, item), parameter)) {
            return found;
        }
    }
    return nullptr;
}

void DumpUnder(HWND tree, HTREEITEM first, int depth, std::string& out) {
    for (HTREEITEM item = first; item; item = NextAfter(tree, item)) {
        const std::string line = LineOf(tree, item);
        out += line.starts_with('(') ? " | " : "\n" + std::string(static_cast<std::size_t>(4 * depth), ' ');
        out += line;
        DumpUnder(tree, FirstChildOf(tree, item), depth + 1, out);
    }
}

}  // namespace

SheetTest::SheetTest() {
    layer::StartWindows();
    layer::SeeWithoutAScreen();
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = TestMainProc;
    windowClass.lpszClassName = WindowClassName;
    RegisterClassW(&windowClass);
    World = {};
    HWND window = CreateWindowExW(0, WindowClassName, WindowTitle, 0, 0, 0, 240, 294, nullptr, nullptr,
                                  nullptr, nullptr);
    ShellState.MainWindow = window;
    ShellState.StateImages = LoadStateImages(nullptr);
    ShellState.SettingsApplied = 1;
    ShellState.UpgradeKeyArmed = 0;
    ShellState.InitDone = 1;
    PreviewSound = [](int sound) { World.Sounds.push_back(sound); };
}

SheetTest::~SheetTest() {
    DestroySheet();
    DestroyWindow(ShellState.MainWindow);
    layer::PumpMessages();
    ImageList_Destroy(ShellState.StateImages);
    EXPECT_EQ(static_cast<HWND>(ShellState.EditorDialog), nullptr);
}

void SheetTest::Fit(WORD deviceFlags) {
    for (Relaxed<WORD>& word : GeneralSettings) {
        word = 0;
    }
    DeviceFlags = deviceFlags;
    ResetSettings(ResetAllGroups);
    BuildPageLists();
}

void SheetTest::Open() {
    DestroySheet();
    layer::PumpMessages();
    ASSERT_TRUE(ShowSettingsSheet(ShellState.MainWindow));
    layer::PumpMessages();
}

void DestroySheet() {
    if (HWND sheet = ShellState.SettingsSheet.Exchange(nullptr)) {
        DestroyWindow(sheet);
    }
}

HWND SheetTest::ShowPage(const char* title) {
    const layer::WindowPtr sheet = layer::FindWindowObject(ShellState.SettingsSheet);
    auto* tabs = sheet->Widget()->findChild<QTabBar*>();
    for (int i = 0; i < tabs->count(); ++i) {
        if (tabs->tabText(i) == title) {
            QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(i).center());
        }
    }
    layer::PumpMessages();
    static const std::map<std::string, int> trees = {
        {"1D", IDC_TREE_1D}, {"2D", IDC_TREE_2D}, {"General", IDC_TREE_GENERAL}};
    for (const layer::WindowPtr& page : sheet->Children()) {
        if (HWND tree = GetDlgItem(page->Handle(), trees.at(title))) {
            return tree;
        }
    }
    return nullptr;
}

HTREEITEM FindItem(HWND tree, DWORD itemId) {
    return FindUnder(tree, FirstChildOf(tree, TVI_ROOT), itemId);
}

HTREEITEM FindChoice(HWND tree, DWORD listId, DWORD parameter) {
    return FindByParameter(tree, FirstChildOf(tree, FindItem(tree, listId)), parameter);
}

std::string LineOf(HWND tree, HTREEITEM item) {
    static const char* const images[] = {"?", "[ ]", "[x]", "( )", "(*)", "T", "#", "+"};
    WCHAR text[128] = {};
    TVITEMW read = {};
    read.mask = TVIF_HANDLE | TVIF_TEXT;
    read.hItem = item;
    read.pszText = text;
    read.cchTextMax = 128;
    TreeItem known;
    if (!ReadTreeItem(tree, item, known) ||
        !SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&read))) {
        return "unreadable";
    }
    const bool packetReaders = known.Parameter >= 0x1000 && known.Parameter <= 0x1DFF;
    const QString number = packetReaders
                               ? QString("0x%1").arg(QString::number(known.Parameter, 16).toUpper(), 4, u'0')
                               : QString::number(known.Parameter);
    return std::string(images[static_cast<std::size_t>(known.Image) % 8]) + " " + number.toStdString() + " " +
           layer::ToUtf8(text);
}

std::vector<std::string> ChildrenOf(HWND tree, HTREEITEM item) {
    std::vector<std::string> lines;
    for (HTREEITEM child = FirstChildOf(tree, item); child; child = NextAfter(tree, child)) {
        lines.push_back(LineOf(tree, child));
    }
    return lines;
}

std::string Dump(HWND tree) {
    std::string out;
    DumpUnder(tree, FirstChildOf(tree, TVI_ROOT), 1, out);
    return out.substr(1) + "\n";
}

QWidget* WidgetOf(HWND window) {
    return layer::FindWindowObject(window)->Widget();
}

QTreeView* ViewOf(HWND tree) {
    return qobject_cast<QTreeView*>(WidgetOf(tree));
}

// The tree and its model have the same order.
QModelIndex IndexOf(HWND tree, HTREEITEM item) {
    int row = 0;
    for (HTREEITEM before = PreviousBefore(tree, item); before; before = PreviousBefore(tree, before)) {
        ++row;
    }
    HTREEITEM parent = ParentOf(tree, item);
    const QModelIndex parentIndex = parent ? IndexOf(tree, parent) : QModelIndex();
    return ViewOf(tree)->model()->index(row, 0, parentIndex);
}

QPoint PlaceOf(HWND tree, HTREEITEM item, Spot spot) {
    const QRect row = ViewOf(tree)->visualRect(IndexOf(tree, item));
    return {row.left() + (spot == Spot::Button ? -11 : spot == Spot::Image ? 11 : 30), row.center().y()};
}

void Tap(HWND tree, HTREEITEM item, Spot spot) {
    ASSERT_NE(item, nullptr);
    QTreeView* view = ViewOf(tree);
    view->scrollTo(IndexOf(tree, item));
    layer::PumpMessages();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, PlaceOf(tree, item, spot));
    layer::PumpMessages();
}

void WithEditor(const std::function<void()>& start, const std::function<void(HWND)>& work) {
    bool opened = false;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        // It is there before it is shown and has the focus.
        HWND editor = ShellState.EditorDialog;
        QWidget* focus = QApplication::focusWidget();
        if (!opened && editor && focus && focus->window() == WidgetOf(editor)->window()) {
            opened = true;
            work(editor);
        }
    });
    watch.start(1);
    start();
    EXPECT_TRUE(opened);
}

void TapAndEdit(HWND tree, HTREEITEM item, const std::function<void(HWND)>& work) {
    WithEditor([&] { Tap(tree, item, Spot::Label); }, work);
}

void Type(const std::string& keys) {
    for (std::size_t i = 0; i < keys.size(); ++i) {
        QWidget* focus = QApplication::focusWidget();
        ASSERT_NE(focus, nullptr);
        if (keys[i] != '[') {
            QTest::keyClick(focus, keys[i]);
            continue;
        }
        const std::size_t end = keys.find(']', i);
        const std::string name = keys.substr(i + 1, end - i - 1);
        const int value = QMetaEnum::fromType<Qt::Key>().keyToValue(("Key_" + name).c_str());
        if (name == "All") {
            QTest::keyClick(focus, Qt::Key_A, Qt::ControlModifier);
        } else if (name == "Paste") {
            QTest::keyClick(focus, Qt::Key_V, Qt::ControlModifier);
        } else {
            QTest::keyClick(focus, static_cast<Qt::Key>(value));
        }
        i = end;
    }
}

void PressButton(HWND dialog, int id) {
    HWND button = GetDlgItem(dialog, id);
    ASSERT_NE(button, nullptr);
    QTest::mouseClick(WidgetOf(button), Qt::LeftButton);
}

std::string TextOf(HWND dialog, int control) {
    WCHAR text[128] = {};
    GetDlgItemTextW(dialog, control, text, 128);
    return layer::ToUtf8(text);
}

std::string CaptionOf(HWND window) {
    return layer::ToUtf8(layer::FindWindowObject(window)->Text().c_str());
}
