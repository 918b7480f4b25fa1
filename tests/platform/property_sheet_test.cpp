// The property sheet: its pages, its ways out, and what may happen inside its notifications.
#include <QApplication>
#include <QPushButton>
#include <QTabBar>
#include <QTest>

#include "platform/linux/controls/sheet_layout.h"
#include "platform/linux/windows/message_loop.h"
#include "resources/resource.h"
#include "tests/platform/controls_fixture.h"

namespace {

// What pages and callback have been told, a word each.
std::vector<std::string> Log;
std::function<void(const std::string&)> React;

void Note(const std::string& word) {
    Log.push_back(word);
    if (React) {
        React(word);
    }
}

template <int Page>
INT_PTR CALLBACK PageProcedure(HWND page, UINT message, WPARAM, LPARAM lParam) {
    const std::string name(1, static_cast<char>('A' + Page));
    switch (message) {
        case WM_INITDIALOG:
            EXPECT_EQ(reinterpret_cast<const PROPSHEETPAGEW*>(lParam)->lParam, 70 + Page);
            Note(name + ".init");
            return 1;
        case WM_SIZE:
            Note(name + ".size");
            return 1;
        case WM_DESTROY:
            Note(name + ".destroy");
            return 0;
        case WM_NOTIFY: {
            const auto* header = reinterpret_cast<const NMHDR*>(lParam);
            if (header->hwndFrom != layer::FindWindowObject(page)->Parent()->Handle()) {
                return 0;  // the page's tree
            }
            Note(name + (header->code == PSN_APPLY         ? ".apply"
                         : header->code == PSN_QUERYCANCEL ? ".cancel"
                                                           : ".other"));
            return 1;
        }
        default:
            return 0;
    }
}

HWND Initialized = nullptr;
int CALLBACK Callback(HWND sheet, UINT message, LPARAM) {
    if (message == PSCB_GETVERSION) {
        Log.push_back("version");
        return 0x20C;
    }
    if (message == PSCB_INITIALIZED) {
        Log.push_back("initialized");
        Initialized = sheet;
        HWND tabs = GetDlgItem(sheet, 0x3020);
        SetWindowLongW(tabs, GWL_STYLE, GetWindowLongW(tabs, GWL_STYLE) | 2);
    }
    return 1;
}

class SheetWindowTest : public ControlsTest {
  protected:
    SheetWindowTest() {
        Log.clear();
        React = nullptr;
        const DLGPROC procedures[] = {PageProcedure<0>, PageProcedure<1>, PageProcedure<2>};
        const char16_t* const titles[] = {u"1D", u"2D", u"General"};
        const int dialogs[] = {IDD_PAGE_1D, IDD_PAGE_2D, IDD_PAGE_GENERAL};
        for (int i = 0; i < 3; ++i) {
            pages_[i].dwSize = sizeof pages_[i];
            pages_[i].dwFlags = PSP_USETITLE;
            pages_[i].pszTemplate = MAKEINTRESOURCEW(dialogs[i]);
            pages_[i].pszTitle = titles[i];
            pages_[i].pfnDlgProc = procedures[i];
            pages_[i].lParam = 70 + i;
        }
        header_.dwSize = sizeof header_;
        header_.dwFlags = PSH_PROPSHEETPAGE | PSH_USECALLBACK | PSH_MODELESS | PSH_MAXIMIZE;
        header_.pszCaption = u"Settings";
        header_.hwndParent = window_;
        header_.nPages = 3;
        header_.nStartPage = 2;
        header_.ppsp = pages_;
        header_.pfnCallback = Callback;
    }
    ~SheetWindowTest() override { React = nullptr; }

    void Open() {
        sheet_ = reinterpret_cast<HWND>(PropertySheetW(&header_));
        ASSERT_TRUE(IsWindow(sheet_));
        // The records are the caller's, and go.
        for (PROPSHEETPAGEW& page : pages_) {
            page.lParam = -1;
        }
        layer::PumpMessages();
    }
    QTabBar* Tabs() { return qobject_cast<QTabBar*>(WidgetOf(GetDlgItem(sheet_, 0x3020))); }
    void TapTab(int index) {
        QTest::mouseClick(Tabs(), Qt::LeftButton, {}, Tabs()->tabRect(index).center());
        layer::PumpMessages();
    }
    void Press(int id) {
        QTest::mouseClick(WidgetOf(GetDlgItem(sheet_, id)), Qt::LeftButton);
        layer::PumpMessages();
    }
    // The log since the last call without the words about sizes.
    static std::string Taken() {
        std::string words;
        for (const std::string& word : Log) {
            words += word.ends_with(".size") ? "" : word + " ";
        }
        Log.clear();
        return words;
    }

    PROPSHEETPAGEW pages_[3] = {};
    PROPSHEETHEADERW header_ = {};
    HWND sheet_ = nullptr;
};

TEST_F(SheetWindowTest, PagesAreMadeWhenTheyAreFirstShown) {
    Open();
    EXPECT_EQ(Initialized, sheet_);
    const auto init = std::find(Log.begin(), Log.end(), "C.init");
    EXPECT_NE(std::find(init, Log.end(), "C.size"), Log.end());
    EXPECT_EQ(Taken(), "version initialized C.init ");
    EXPECT_EQ(Tabs()->shape(), QTabBar::RoundedSouth);
    TapTab(0);
    EXPECT_EQ(Taken(), "A.init ");
    TapTab(2);
    TapTab(0);
    EXPECT_EQ(Taken(), "");
    // The page in front has the keys.
    EXPECT_TRUE(WidgetOf(sheet_)->focusWidget()->inherits("QTreeView"));
    QTest::keyClick(WidgetOf(sheet_)->focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(Taken(), "B.init ");
    QTest::keyClick(WidgetOf(sheet_)->focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(Tabs()->currentIndex(), 2);
    DestroyWindow(sheet_);
    EXPECT_EQ(Log.size(), 3u);
}

TEST_F(SheetWindowTest, PagesBehindTheOneThatTookItAwayAreNotTold) {
    Open();
    TapTab(0);
    Taken();
    React = [&](const std::string& word) {
        if (word == "A.apply") {
            DestroyWindow(sheet_);
        }
    };
    Press(IDOK);
    const std::string told = Taken();
    EXPECT_EQ(told.find("C.apply"), told.npos);
    EXPECT_EQ(told.find("A.apply"), 0u);
}

TEST_F(SheetWindowTest, AnswersOnceWhileAPageIsStillAtIt) {
    Open();
    Taken();
    React = [&](const std::string& word) {
        if (word == "C.apply") {
            // A box is up, the sheet behind it can be reached.
            Then([&] {
                Press(IDOK);
                Press(IDCANCEL);
                PostQuitMessage(0);
            });
            EXPECT_FALSE(layer::RunModalLoop([] { return false; }));
        }
    };
    Press(IDOK);
    EXPECT_EQ(Taken(), "C.apply ");
    React = nullptr;
    layer::ForgetQuit();
    Press(IDCANCEL);
    EXPECT_EQ(Taken(), "C.cancel ");
}

TEST(SheetLayout, EverythingHasRoomOfItsOwnOnAnyScreen) {
    const auto check = [](const QSize& screen, int tabs, bool bottom) {
        const layer::SheetPlaces places =
            layer::LayOutSheet({screen, QSize(tabs, 28), QSize(56, 26), bottom});
        const QRect parts[] = {places.Page, places.Tabs, places.Ok, places.Cancel};
        for (const QRect& part : parts) {
            EXPECT_TRUE(part.isValid() && QRect(QPoint(0, 0), screen).contains(part));
            for (const QRect* other = &part + 1; other < std::end(parts); ++other) {
                EXPECT_FALSE(part.intersects(*other));
            }
        }
        EXPECT_EQ(bottom ? places.Page.bottom() + 1 : places.Tabs.bottom() + 1,
                  bottom ? places.Tabs.top() : places.Page.top());
    };
    for (const int width : {160, 200, 238, 240, 320, 480, 800}) {
        for (const int height : {160, 266, 320, 600}) {
            for (const int tabs : {40, 116, 170, 400}) {
                SCOPED_TRACE(testing::Message() << width << "x" << height << " tabs " << tabs);
                check(QSize(width, height), tabs, false);
                check(QSize(width, height), tabs, true);
            }
        }
    }
}

}  // namespace
