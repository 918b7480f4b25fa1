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

#include "firmware/upgrade.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/windows/message_loop.h"
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
        std::array<WCHAR, FirmwarePathSize> folder{}, name{};
        Then(std::move(user));
        return SelectFirmwareFile(window_, folder, name) == 0
                   ? ""
                   : layer::ToUtf8(folder.data()) + "\\" + layer::ToUtf8(name.data());
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
    static QLineEdit* Name() { return Window()->findChildren<QLineEdit*>().last(); }
    static QListWidget* List() { return Window()->findChild<QListWidget*>(); }
    static std::string Listed() {
        std::string names;
        for (int i = 0; i < List()->count(); ++i) {
            names += List()->item(i)->text().toStdString() + " ";
        }
        return names;
    }
    // By its text, or what is said of it.
    static void Press(const char* name) {
        for (auto* button : Window()->findChildren<QAbstractButton*>()) {
            if (button->text().remove(u'&') == name || button->toolTip() == name) {
                QTest::mouseClick(button, Qt::LeftButton);
                return;
            }
        }
        FAIL() << "no button " << name;
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
};

TEST_F(FileDialogTest, AFileIsChosenByHand) {
    EXPECT_EQ(Ask([] {
                  EXPECT_EQ(Listed(), "sub b.shx DECODER.SHX ");
                  Choose("sub");
                  Press("OK");
                  EXPECT_EQ(Listed(), "deep.SHX ");
                  Press("Up one folder");
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
    std::filesystem::remove_all(terminal_.Path("DiskOnChip"));
    std::filesystem::create_directories(terminal_.Path("Another"));
    Ask([] {
        EXPECT_EQ(Listed(), "Another Windows ");
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
