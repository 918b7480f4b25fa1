// The editors: captions, hints, limits, corrections while typing, and the ways out.
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QTest>
#include <QToolButton>
#include <cstring>

#include "app/settings_window.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/windows/message_loop.h"
#include "resources/resource.h"
#include "settings/all_fields.h"
#include "shell/shell_state.h"
#include "tests/ui/sheet_driver.h"
#include "ui/editors.h"
#include "ui/item_display.h"
#include "ui/item_value.h"

namespace {

// ---- what each editor says

struct EditorRow {
    WORD Devices;
    DWORD PageBase, Item;
    const char* Caption;
    const char* Hint;
    int Characters;
};

// Each kind of hint and number of characters; the decode timeout is another for each reader.
constexpr EditorRow Rows[] = {
    {Device1D, PageGeneral, 10005, "Vibrate Duration", "1 ~ 30 seconds", 2},
    {Device1D, PageGeneral, 10009, "Prefix Code", "0 ~ 10 character(s)", 10},
    {Device1D, PageGeneral, 11004, "Delimiter", "0 ~ 1 character(s)", 1},
    {Device1D, PageGeneral, 11006, "Maximum Length", "Range: 0 ~ 127", 3},
    {Device1D, PageGeneral, 11007, "RFID Read Duration", "1 ~ 5 seconds", 1},
    {Device1D, PageGeneral, 12002, "Barcode Decode Timeout", "1 ~ 255 seconds", 3},
    {DeviceLaser, PageGeneral, 12002, "Barcode Decode Timeout", "Range: 1 ~ 99 (0.1sec)", 2},
    {DeviceImager, PageGeneral, 13960, "Barcode Decode Timeout", "Range: 5 ~ 99 (0.1sec)", 2},
    {DeviceImager, PageGeneral, 14129, "JPEG Quality Value", "Range: 5 ~ 100", 3},
    {DeviceLaser, PageLaser, 0x1050, "Supplementary Redundancy", "Range: 1 ~ 255", 3},
    {DeviceImager, PageImager, 0x1050, "Supplementary Redundancy", "Range: 1 ~ 255", 3},
};

int MaxLengthOf(HWND dialog, int control) {
    return qobject_cast<QLineEdit*>(WidgetOf(GetDlgItem(dialog, control)))->maxLength();
}

void RunEditor(int dialog, DLGPROC procedure, DWORD pageBase, DWORD item,
               const std::function<void(HWND)>& look) {
    WithEditor(
        [&] {
            DialogBoxParamW(nullptr, MAKEINTRESOURCEW(dialog), ShellState.MainWindow, procedure,
                            MAKELPARAM(item, pageBase));
        },
        [&](HWND editor) {
            look(editor);
            SendMessageW(editor, WM_COMMAND, IDCANCEL, 0);
        });
}

void RunNumberEditor(DWORD pageBase, DWORD item, const std::function<void(HWND)>& look) {
    RunEditor(IDD_NUMBER_EDITOR, NumberEditorProc, pageBase, item, look);
}

TEST_F(SheetTest, EditorsSayWhatTheyEdit) {
    for (const EditorRow& row : Rows) {
        SCOPED_TRACE(testing::Message() << row.PageBase << " " << row.Item);
        Fit(row.Devices);
        const auto look = [&](HWND editor) {
            EXPECT_EQ(CaptionOf(editor), row.Caption);
            EXPECT_EQ(TextOf(editor, IDC_TEXT), row.Hint);
            EXPECT_EQ(MaxLengthOf(editor, IDC_EDIT), row.Characters);
        };
        if (GetItemDisplay(row.PageBase, row.Item).Image == ItemImage::Text) {
            RunEditor(IDD_TEXT_EDITOR, TextEditorProc, row.PageBase, row.Item, look);
        } else {
            EXPECT_EQ(ChooseNumberEditor(row.PageBase, row.Item), IDD_NUMBER_EDITOR);
            RunNumberEditor(row.PageBase, row.Item, look);
        }
    }
}

// ---- lengths, which are edited alone or in pairs

struct LengthRow {
    DWORD PageBase, First, Second;
    const char* Caption;
};

// The first and the last of each page.
constexpr LengthRow Lengths[] = {
    {Page1D, 1307, 1308, "Industrial 25"},   {Page1D, 1707, 1708, "MSI"},
    {PageLaser, 0x1213, 0x1212, "Code 39"},  {PageLaser, 0x181F, 0x181E, "MSI"},
    {PageImager, 0x1213, 0x1212, "Code 39"}, {PageImager, 0x141D, 0x141C, "Code 11"},
};

TEST_F(SheetTest, LengthsAreEditedByTheirMode) {
    constexpr int single = IDD_NUMBER_EDITOR, pair = IDD_PAIR_EDITOR;
    for (const LengthRow& row : Lengths) {
        const bool decoder = row.PageBase == Page1D;
        Fit(decoder ? Device1D : row.PageBase == PageLaser ? DeviceLaser : DeviceImager);
        const int firstEditor[] = {decoder ? pair : NoEditor, decoder ? pair : single, pair, pair};
        const int secondEditor[] = {firstEditor[0], decoder ? pair : NoEditor, pair, pair};
        for (int mode = 0; mode < (decoder ? 2 : 4); ++mode) {
            SCOPED_TRACE(testing::Message() << row.PageBase << " " << row.Caption << " mode " << mode);
            SetValue(*FindLengthItems(row.PageBase, row.First).Mode, static_cast<WORD>('0' + mode));
            EXPECT_EQ(ChooseNumberEditor(row.PageBase, row.First), firstEditor[mode]);
            EXPECT_EQ(ChooseNumberEditor(row.PageBase, row.Second), secondEditor[mode]);
            if (firstEditor[mode] == single) {
                RunNumberEditor(row.PageBase, row.First, [&](HWND editor) {
                    EXPECT_EQ(CaptionOf(editor), "Value 1");
                    EXPECT_EQ(TextOf(editor, IDC_TEXT), "Range: 1 ~ 255");
                });
            }
            const bool range = mode == (decoder ? 1 : 3);
            for (const DWORD item : {row.First, row.Second}) {
                if (firstEditor[mode] != pair) {
                    continue;
                }
                RunEditor(IDD_PAIR_EDITOR, PairEditorProc, row.PageBase, item, [&](HWND editor) {
                    EXPECT_EQ(CaptionOf(editor), row.Caption);
                    EXPECT_EQ(TextOf(editor, IDC_TEXT), range ? "Max Len" : "Value 1");
                    EXPECT_EQ(TextOf(editor, IDC_TEXT_2), range ? "Min Len" : "Value 2");
                    EXPECT_EQ(MaxLengthOf(editor, IDC_EDIT), 3);
                    EXPECT_EQ(MaxLengthOf(editor, IDC_EDIT_2), 3);
                });
            }
        }
    }
}

// ---- typing numbers

struct Typing {
    const char* What;
    WORD Devices;
    DWORD PageBase, Item;
    WORD Start;
    const char* Keys;
    std::vector<const char*> Contents;  // of the edit after each key
};

const Typing NumberTypings[] = {
    {"below the minimum", DeviceImager, PageGeneral, 14247, 100, "[End][Backspace]", {"100", "79"}},
    {"emptied", DeviceImager, PageGeneral, 14247, 100, "[All][Delete]", {"100", "79"}},
    {"above the maximum", DeviceImager, PageGeneral, 14247, 79, "[Home]1", {"79", "127"}},
    {"leading zero", Device1D, PageGeneral, 11005, 0, "[End]5", {"0", "5"}},
    {"zeros in front", Device1D, PageGeneral, 11005, 7, "[Home]01", {"7", "7", "17"}},
    {"in the middle", Device1D, PageGeneral, 11005, 12, "[End][Left]0[Backspace]", {"12", "12", "102", "12"}},
    {"grows by a digit", DeviceImager, PageGeneral, 14147, 5, "[All]10", {"5", "1", "10"}},
    {"grows to the maximum", Device1D, PageGeneral, 11005, 1, "[End]29", {"1", "12", "127"}},
    {"letters", Device1D, PageGeneral, 11005, 1, "[End]a-5", {"1", "1", "1", "15"}},
    {"one digit", Device1D, PageGeneral, 11007, 3, "[All]9", {"3", "5"}},
    {"opened beyond the limit", DeviceImager, PageGeneral, 14147, 48, "[End]", {"10"}},
    {"opened below the limit", DeviceImager, PageGeneral, 13960, 0, "[End]", {"5"}},
    {"packet reader's redundancy", DeviceLaser, PageLaser, 0x1050, 10, "[All]0", {"10", "1"}},
    {"arrow keys stop at the limit", Device1D, PageGeneral, 11007, 4, "[Up][Up][Down]", {"5", "5", "4"}},
};

TEST_F(SheetTest, ANumberIsPutRightAtEveryKey) {
    for (const Typing& typing : NumberTypings) {
        SCOPED_TRACE(typing.What);
        Fit(typing.Devices);
        SetValue(*FindSetting(typing.PageBase, typing.Item), typing.Start);
        RunNumberEditor(typing.PageBase, typing.Item, [&](HWND editor) {
            WidgetOf(GetDlgItem(editor, IDC_EDIT))->setFocus();
            // After each key, of which those in brackets are one.
            const char* key = typing.Keys;
            for (const std::string content : typing.Contents) {
                const char* end = *key == '[' ? std::strchr(key, ']') : key;
                Type({key, end + 1});
                EXPECT_EQ(TextOf(editor, IDC_EDIT), content) << key;
                key = end + 1;
            }
            EXPECT_EQ(*key, 0);
        });
    }
}

TEST_F(SheetTest, ButtonsStepANumberWithinItsLimits) {
    Fit(Device1D);
    SetValue(general::RfidReadDuration, 4);
    RunNumberEditor(PageGeneral, 11007, [](HWND editor) {
        const QWidget* edit = WidgetOf(GetDlgItem(editor, IDC_EDIT));
        const std::pair<Qt::ArrowType, const char*> taps[] = {
            {Qt::UpArrow, "5"}, {Qt::UpArrow, "5"}, {Qt::DownArrow, "4"}};
        for (const auto& [arrow, after] : taps) {
            WidgetOf(GetDlgItem(editor, IDOK))->setFocus();
            for (auto* button : WidgetOf(editor)->findChildren<QToolButton*>()) {
                if (button->arrowType() == arrow) {
                    QTest::mouseClick(button, Qt::LeftButton);
                    EXPECT_FALSE(edit->geometry().intersects(button->parentWidget()->geometry()));
                    EXPECT_GE(button->width(), 20);
                }
            }
            EXPECT_EQ(TextOf(editor, IDC_EDIT), after);
            EXPECT_TRUE(edit->hasFocus());
            EXPECT_GE(edit->width(), 4 * edit->fontMetrics().horizontalAdvance(u'0'));
        }
    });
}

TEST_F(SheetTest, PastedNumbersStayWithinTheLimits) {
    Fit(Device1D);
    RunNumberEditor(PageGeneral, 11005, [&](HWND editor) {
        for (const char* pasted :
             {"99999999999999999999", "-3", "0x10", "12 monkeys", "\xD9\xA3\xD9\xA4", ""}) {
            QApplication::clipboard()->setText(QString::fromUtf8(pasted));
            Type("[All][Paste]");
            bool isNumber = false;
            const int number = QString::fromStdString(TextOf(editor, IDC_EDIT)).toInt(&isNumber);
            EXPECT_TRUE(isNumber) << pasted;
            EXPECT_GE(number, 0) << pasted;
            EXPECT_LE(number, 127) << pasted;
        }
    });
}

// ---- results

TEST_F(SheetTest, AnAcceptedNumberIsStoredAndShown) {
    Open(DeviceLaser);
    HWND tree = ShowPage("General");
    HTREEITEM item = FindItem(tree, 12002);
    TapAndEdit(tree, item, [](HWND) { Type("[All]25[Return]"); });
    EXPECT_EQ(Value(general::BarcodeDecodeTimeout), 25);
    EXPECT_EQ(LineOf(tree, item), "# 12002 Barcode Decode Timeout :    2.5  sec.");
    TapAndEdit(tree, item, [](HWND editor) {
        Type("[All]99");
        PressButton(editor, IDOK);
    });
    EXPECT_EQ(Value(general::BarcodeDecodeTimeout), 99);
}

const struct {
    const char* What;
    void (*Leave)(HWND);
} WaysOut[] = {
    {"cancel button", [](HWND editor) { PressButton(editor, IDCANCEL); }},
    {"Escape", [](HWND) { Type("[Escape]"); }},
    {"close", [](HWND editor) { WidgetOf(editor)->window()->close(); }},
};

TEST_F(SheetTest, ALeftEditorChangesNothing) {
    Open(Device1D);
    SetText(general::PrefixCode, std::span(TEXT("old")));
    HWND tree = ShowPage("General");
    const std::string before = Dump(tree);
    for (const auto& way : WaysOut) {
        SCOPED_TRACE(way.What);
        for (const DWORD item : {10009u, 10005u}) {
            TapAndEdit(tree, FindItem(tree, item), [&](HWND editor) {
                Type("[All]7");
                way.Leave(editor);
            });
            EXPECT_EQ(QApplication::focusWidget(), ViewOf(tree)) << "the keys go nowhere";
        }
        HWND symbologies = ShowPage("1D");
        TapAndEdit(symbologies, FindItem(symbologies, 1307), [&](HWND editor) {
            Type("[All]9");
            way.Leave(editor);
        });
        tree = ShowPage("General");
    }
    WCHAR prefix[TextWords];
    GetText(general::PrefixCode, prefix);
    EXPECT_EQ(layer::ToUtf8(prefix), "old");
    EXPECT_EQ(Value(general::VibrateDuration), 2);
    EXPECT_EQ(Value(decoder1d::Industrial25Length2), 127);
    EXPECT_TRUE(World.MainMessages.empty());
    EXPECT_EQ(Dump(tree), before);
}

TEST_F(SheetTest, APairIsStoredTheLargerFirst) {
    Open(DeviceLaser);
    HWND tree = ShowPage("1D");
    Tap(tree, FindChoice(tree, 0x12FF, 3), Spot::Image);
    const struct {
        const char *First, *Second;
        WORD Larger, Smaller;
    } pairs[] = {{"4", "20", 20, 4}, {"30", "6", 30, 6}};
    for (const auto& pair : pairs) {
        // Both lengths open the same editor.
        for (const DWORD tapped : {0x1213u, 0x1212u}) {
            SetValue(engine::Code39Length1, 55);
            SetValue(engine::Code39Length2, 2);
            TapAndEdit(tree, FindItem(tree, tapped), [&](HWND editor) {
                EXPECT_EQ(TextOf(editor, IDC_EDIT), "55");
                EXPECT_EQ(TextOf(editor, IDC_EDIT_2), "2");
                WidgetOf(GetDlgItem(editor, IDC_EDIT))->setFocus();
                Type(std::string("[All]") + pair.First);
                WidgetOf(GetDlgItem(editor, IDC_EDIT_2))->setFocus();
                Type(std::string("[All]") + pair.Second + "[Return]");
            });
            EXPECT_EQ(Value(engine::Code39Length1), pair.Larger);
            EXPECT_EQ(Value(engine::Code39Length2), pair.Smaller);
            EXPECT_EQ(LineOf(tree, FindItem(tree, 0x1213)),
                      "# 0x1213 Maximum Length :  " + std::to_string(pair.Larger));
            EXPECT_EQ(LineOf(tree, FindItem(tree, 0x1212)),
                      "# 0x1212 Minimum Length :  " + std::to_string(pair.Smaller));
        }
    }
}

// ---- texts

TEST_F(SheetTest, ATextIsStoredUpToItsLimit) {
    Open(Device1D | DeviceRfid);
    HWND tree = ShowPage("General");
    const struct {
        DWORD Item;
        const char* Keys;
        const char16_t* Pasted;
        const char16_t* Stored;
    } texts[] = {
        {10009, "[All]0123456789abc", u"", u"0123456789"},
        {10009, "[All]a b", u"", u"a b"},
        {10009, "[All][Delete]", u"", u""},
        {10010, "[All]x", u"", u"x"},
        {11004, "[All];", u"", u";"},
        {11004, "[End]?", u"", u";"},
        {10010, "[All][Paste]", u"äöü€ß", u"äöü€ß"},
        {10010, "[All][Paste]", u"0123456789ABCDEF", u"0123456789"},
        // A character of two words that only half fits is left out.
        {10010, "[All][Paste]", u"012345678\U0001F600", u"012345678"},
        {11004, "[All][Paste]", u"\U0001F600", u""},
    };
    for (const auto& text : texts) {
        QApplication::clipboard()->setText(QString::fromUtf16(text.Pasted));
        TapAndEdit(tree, FindItem(tree, text.Item), [&](HWND) { Type(std::string(text.Keys) + "[Return]"); });
        const ItemBuffer stored = ReadItem(PageGeneral, text.Item).Text;
        EXPECT_EQ(std::u16string(stored.data()), text.Stored);
    }
    EXPECT_EQ(LineOf(tree, FindItem(tree, 10009)), "T 10009 Prefix Code :  <NULL>");
    EXPECT_EQ(LineOf(tree, FindItem(tree, 10010)), "T 10010 Suffix Code :  012345678");
}

}  // namespace
