// The file dialog: what it lists, how it takes what is typed, and its ways out.
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <filesystem>

#include "platform/linux/windows/message_loop.h"
#include "platform/shell.h"
#include "tests/platform/window_fixture.h"

namespace {

class FileDialogTest : public ControlsTest {
  protected:
    FileDialogTest() {
        for (const char* file :
             {"DiskOnChip/DECODER.SHX", "DiskOnChip/b.shx", "DiskOnChip/notes.txt", "DiskOnChip/plain",
              "DiskOnChip/.hidden", "DiskOnChip/with:colon.shx", "DiskOnChip/sub/deep.SHX", "secret.SHX"}) {
            std::filesystem::create_directories(std::filesystem::path(terminal_.Path(file)).parent_path());
            WriteWholeFile(terminal_.Path(file), "x");
        }
        std::filesystem::create_symlink("/dev/null", terminal_.Path("COM1"));
        std::filesystem::create_symlink("/dev/null", terminal_.Path("DiskOnChip/device.shx"));
    }

    // Opens the dialog, and lets the user act once it waits. Empty: cancelled.
    std::string Ask(std::function<void()> user) {
        std::fill(std::begin(path_), std::end(path_), u'\0');
        wanted_.lStructSize = sizeof wanted_;
        wanted_.hwndOwner = window_;
        wanted_.lpstrFilter = u"SHX Files (*.SHX)\0*.SHX\0All Files (*.*)\0*.*\0";
        wanted_.nFilterIndex = 1;
        wanted_.lpstrFile = path_;
        wanted_.nMaxFile = room_;
        wanted_.lpstrInitialDir = start_;
        wanted_.lpstrDefExt = u"SHX";
        wanted_.Flags = OFN_PATHMUSTEXIST | OFN_HIDEREADONLY;
        Then(std::move(user));
        return GetOpenFileNameW(&wanted_) ? QString::fromUtf16(path_).toStdString() : "";
    }
    // Types a name and presses Enter; cancels when the dialog stays.
    std::string Typing(const char* name) {
        return Ask([=, this] {
            Name()->setText(name);
            QTest::keyClick(Name(), Qt::Key_Return);
            Cancel();
        });
    }
    // The one that is open.
    static QWidget* Window() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->isVisible() && qobject_cast<QDialog*>(widget) != nullptr) {
                return widget;
            }
        }
        return nullptr;
    }
    static QLineEdit* Name() {
        for (auto* edit : Window()->findChildren<QLineEdit*>()) {
            if (!edit->isReadOnly()) {
                return edit;
            }
        }
        return nullptr;
    }
    static QListWidget* List() { return Window()->findChild<QListWidget*>(); }
    static std::string Listed() {
        std::string names;
        for (int i = 0; i < List()->count(); ++i) {
            names += List()->item(i)->text().toStdString() + " ";
        }
        return names;
    }
    static void Press(const char* text) {
        for (auto* button : Window()->findChildren<QPushButton*>()) {
            if (button->text().remove(u'&') == text) {
                QTest::mouseClick(button, Qt::LeftButton);
                return;
            }
        }
        FAIL() << "no button " << text;
    }
    static void GoUp() {
        for (auto* button : Window()->findChildren<QToolButton*>()) {
            if (button->toolTip() == "Up one folder") {
                QTest::mouseClick(button, Qt::LeftButton);
            }
        }
    }
    static void Cancel() {
        if (Window() != nullptr) {
            Press("Cancel");
        }
    }
    static void Choose(const char* name) {
        QListWidgetItem* item = List()->findItems(name, Qt::MatchExactly).value(0);
        ASSERT_NE(item, nullptr) << name;
        QTest::mouseClick(List()->viewport(), Qt::LeftButton, {}, List()->visualItemRect(item).center());
    }

    OPENFILENAMEW wanted_ = {};
    WCHAR path_[260] = {};
    DWORD room_ = 260;
    LPCWSTR start_ = u"\\DiskOnChip\\";
};

TEST_F(FileDialogTest, AFileIsChosenByHand) {
    EXPECT_EQ(Ask([] {
                  EXPECT_EQ(Listed(), "sub b.shx DECODER.SHX ");
                  Choose("sub");
                  Press("OK");
                  EXPECT_EQ(Listed(), "deep.SHX ");
                  GoUp();
                  Window()->findChild<QComboBox*>()->setCurrentIndex(1);
                  EXPECT_EQ(Listed(), "sub b.shx DECODER.SHX notes.txt plain ");
                  Choose("notes.txt");
                  Press("OK");
              }),
              "\\DiskOnChip\\notes.txt");
    EXPECT_EQ(Ask([] {
                  List()->setFocus();
                  QTest::keyClick(List(), Qt::Key_End);
                  QTest::keyClick(List(), Qt::Key_Return);
              }),
              "\\DiskOnChip\\DECODER.SHX");
}

TEST_F(FileDialogTest, OfTheRootTheFoldersAreListed) {
    start_ = u"\\Nowhere";
    std::filesystem::create_directories(terminal_.Path("windows"));
    Ask([] {
        EXPECT_EQ(Listed(), "DiskOnChip Windows ");
        Cancel();
    });
}

TEST_F(FileDialogTest, NothingTypedLeadsOutOfTheTerminal) {
    const struct {
        const char* Typed;
        const char* Chosen;
    } names[] = {{"decoder", "\\DiskOnChip\\decoder.SHX"},
                 {" b.shx ", "\\DiskOnChip\\b.shx"},
                 {"plain", "\\DiskOnChip\\plain"},
                 {"new", "\\DiskOnChip\\new.SHX"},
                 {"sub/deep.SHX", "\\DiskOnChip\\sub\\deep.SHX"},
                 {"\\DiskOnChip\\sub\\..\\b.shx", "\\DiskOnChip\\b.shx"},
                 {"../../../secret.SHX", "\\secret.SHX"},
                 {"../../../../etc/passwd", ""},
                 {"/etc/passwd", ""},
                 {"with:colon.shx", ""},
                 {"device.shx", ""},
                 {"nowhere\\x.shx", ""},
                 {"newfolder\\", ""},
                 {"b.shx\\", ""},
                 {"*.shx", ""},
                 {"", ""}};
    for (const auto& name : names) {
        EXPECT_EQ(Typing(name.Typed), name.Chosen) << name.Typed;
    }
    const std::string longName(250, 'x');
    EXPECT_EQ(Typing(longName.c_str()), "");
    room_ = 10;
    EXPECT_EQ(Typing("b.shx"), "");
}

TEST_F(FileDialogTest, EveryWayOutEndsIt) {
    const std::function<void()> ways[] = {
        [] { QTest::keyClick(List(), Qt::Key_Escape); },
        [] { Window()->close(); },
        [] { Cancel(); },
        [this] { DestroyWindow(window_); },
    };
    for (const auto& way : ways) {
        EXPECT_EQ(Ask([&] {
                      Choose("b.shx");
                      way();
                  }),
                  "");
    }
    EXPECT_EQ(Ask([] { PostQuitMessage(3); }), "");
    EXPECT_TRUE(layer::QuitPending());
}

}  // namespace
