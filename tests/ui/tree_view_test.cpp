// The tree view under a user's hands: what of an item is hit, taps, keys, and what of it is in sight.
#include <QApplication>
#include <QScrollBar>
#include <QTest>
#include <QTreeView>
#include <map>

#include "platform/linux/windows/message_loop.h"
#include "settings/all_fields.h"
#include "tests/ui/sheet_driver.h"

namespace {

constexpr UINT OnButton = 0x10;

class TreeTest : public SheetTest {
  protected:
    void Show(WORD devices, const char* page) {
        Open(devices);
        tree_ = ShowPage(page);
        View()->resize(240, 260);
        layer::PumpMessages();
    }
    QTreeView* View() { return ViewOf(tree_); }
    HTREEITEM Selected() {
        return reinterpret_cast<HTREEITEM>(SendMessageW(tree_, TVM_GETNEXTITEM, TVGN_CARET, 0));
    }
    // The row's rectangle in the viewport, without what is in front of the item.
    QRect RowOf(HTREEITEM item) { return View()->visualRect(IndexOf(tree_, item)); }
    QPoint ButtonOf(HTREEITEM item) { return PlaceOf(tree_, item, Spot::Button); }
    QPoint ImageOf(HTREEITEM item) { return PlaceOf(tree_, item, Spot::Image); }
    QPoint LabelOf(HTREEITEM item) { return PlaceOf(tree_, item, Spot::Label); }
    bool IsOpen(HTREEITEM item) { return View()->isExpanded(IndexOf(tree_, item)); }
    // An item whose text is much too long for the width of a terminal.
    void InsertLong(HTREEITEM parent) {
        const std::u16string text(200, u'x');
        InsertItem(tree_, parent, TVI_LAST, text.c_str(), {}, false);
        layer::PumpMessages();
    }
    void Scroll(int x, int y) {
        View()->horizontalScrollBar()->setValue(x);
        View()->verticalScrollBar()->setValue(y);
    }

    void Click(const QPoint& place, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseClick(View()->viewport(), button, {}, place);
        layer::PumpMessages();
    }
    // The second press of two quick ones.
    void PressAgain(const QPoint& place) {
        QTest::mouseDClick(View()->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseRelease(View()->viewport(), Qt::LeftButton, {}, place);
        layer::PumpMessages();
    }

    HWND tree_ = nullptr;
};

TEST_F(TreeTest, EachStateHasItsPicture) {
    Show(DeviceImager, "General");
    std::map<std::string, QImage> pictures;
    for (HTREEITEM item : {FindItem(tree_, 10004), FindItem(tree_, 10013), FindChoice(tree_, 10002, 0),
                           FindChoice(tree_, 10002, 2), FindItem(tree_, 10009), FindItem(tree_, 10005),
                           FindItem(tree_, 10001)}) {
        View()->scrollTo(IndexOf(tree_, item));
        const QRect row = RowOf(item);
        const QImage seen = View()->viewport()->grab(QRect(row.left(), row.top(), 23, 26)).toImage();
        // The corner is transparent, green in the bitmap.
        EXPECT_EQ(seen.pixel(4, 5), View()->palette().color(QPalette::Base).rgb());
        for (const auto& [other, picture] : pictures) {
            EXPECT_NE(picture, seen) << other << " and " << LineOf(tree_, item);
        }
        pictures.emplace(LineOf(tree_, item), seen);
    }
}

TEST_F(TreeTest, KnowsWhatOfAnItemIsHit) {
    Show(DeviceLaser, "1D");
    HTREEITEM list = FindItem(tree_, 0x1000), child = FindItem(tree_, 0x1001);
    Click(ButtonOf(list));
    ASSERT_TRUE(IsOpen(list));
    const struct {
        QPoint Place;
        HTREEITEM Item;
        UINT Flag;
    } hits[] = {{ImageOf(list), list, TVHT_ONITEMSTATEICON},
                {LabelOf(list), list, TVHT_ONITEMLABEL},
                {ButtonOf(list), list, OnButton},
                {QPoint(View()->viewport()->width() - 2, RowOf(list).center().y()), list, 0x20},
                {ImageOf(child), child, TVHT_ONITEMSTATEICON},
                {LabelOf(child), child, TVHT_ONITEMLABEL},
                {ButtonOf(child), child, 0x08},
                {QPoint(-1, 10), nullptr, 0x01},
                {QPoint(30, 5000), nullptr, 0x01}};
    for (const auto& hit : hits) {
        TVHITTESTINFO found{};
        found.pt = {hit.Place.x(), hit.Place.y()};
        SendMessageW(tree_, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&found));
        EXPECT_EQ(found.hItem, hit.Item) << hit.Place.x() << "," << hit.Place.y();
        EXPECT_EQ(found.flags, hit.Flag) << hit.Place.x() << "," << hit.Place.y();
    }
}

TEST_F(TreeTest, ALabelSelectsAButtonUnfoldsAndAnImageSwitches) {
    Show(DeviceLaser, "1D");
    HTREEITEM list = FindItem(tree_, 0x1000), child = FindItem(tree_, 0x1001);
    Click(LabelOf(FindItem(tree_, 0x1100)));
    HTREEITEM selected = FindItem(tree_, 0x1100);
    EXPECT_EQ(Selected(), selected);
    Click(ButtonOf(list));
    EXPECT_TRUE(IsOpen(list));
    Click(LabelOf(list), Qt::RightButton);
    EXPECT_EQ(Selected(), selected);
    // The second of two quick taps is one as well, but for its label, which unfolds.
    Click(ImageOf(child));
    EXPECT_EQ(Value(engine::EnableUpcA), '0');
    PressAgain(ImageOf(child));
    EXPECT_EQ(Value(engine::EnableUpcA), '1');
    PressAgain(ImageOf(list));
    EXPECT_TRUE(IsOpen(list));
    Click(ButtonOf(list));
    EXPECT_FALSE(IsOpen(list));
    Click(LabelOf(list));
    PressAgain(LabelOf(list));
    EXPECT_TRUE(IsOpen(list));
}

TEST_F(TreeTest, AFingerThatMovesScrollsAndTapsNothing) {
    Show(DeviceImager, "2D");
    HTREEITEM choice = FindChoice(tree_, 0x1DBC, 0);
    InsertLong(TVI_ROOT);
    View()->scrollTo(IndexOf(tree_, choice));
    layer::PumpMessages();
    Scroll(0, View()->verticalScrollBar()->maximum() - 100);
    const std::string before = Dump(tree_);
    QWidget* viewport = View()->viewport();
    const QPoint start = ImageOf(choice);
    QTest::mousePress(viewport, Qt::LeftButton, {}, start);
    for (int moved = 0; moved <= 100; moved += 10) {
        const QPointF place(start.x() - 30, start.y() - moved);
        QMouseEvent move(QEvent::MouseMove, place, viewport->mapToGlobal(place), Qt::NoButton, Qt::LeftButton,
                         {});
        QApplication::sendEvent(viewport, &move);
    }
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, start - QPoint(30, 100));
    EXPECT_EQ(View()->verticalScrollBar()->value(), View()->verticalScrollBar()->maximum());
    EXPECT_EQ(View()->horizontalScrollBar()->value(), 30);
    EXPECT_EQ(Dump(tree_), before);
}

TEST_F(TreeTest, SpaceAndEnterTapTheImageWhereverItIs) {
    Show(DeviceImager, "General");
    HTREEITEM item = FindItem(tree_, 10013);
    InsertLong(TVI_ROOT);
    View()->expandAll();
    layer::PumpMessages();
    SelectItem(tree_, item);
    View()->setFocus();
    WORD value = Value(general::CheckReaderStatus);
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        Scroll(View()->horizontalScrollBar()->maximum(), 0);
        QTest::keyClick(View(), key);
        layer::PumpMessages();
        EXPECT_EQ(Value(general::CheckReaderStatus), value ^= 1) << key;
    }
    // A key that is held taps once, and one with Control not at all.
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Space, {}, QStringLiteral(" "), true);
    QApplication::sendEvent(View(), &repeated);
    QTest::keyClick(View(), Qt::Key_Space, Qt::ControlModifier);
    layer::PumpMessages();
    EXPECT_EQ(Value(general::CheckReaderStatus), value);
}

TEST_F(TreeTest, WhatIsUnfoldedIsSeen) {
    Show(DeviceImager, "2D");
    const int height = View()->viewport()->height();
    HTREEITEM list = FindItem(tree_, 0x1D00), last = FindItem(tree_, 0x1DE9);
    Scroll(0, View()->verticalScrollBar()->maximum());
    Click(ButtonOf(list));
    EXPECT_LE(RowOf(last).bottom(), height);
    EXPECT_GE(RowOf(list).top(), 0);
    // With the choice that is selected a scroll bar comes, which takes room at the bottom.
    HTREEITEM choice = FindChoice(tree_, 0x1DE9, 0);
    InsertLong(FindItem(tree_, 0x1DE9));
    SelectItem(tree_, choice);
    layer::PumpMessages();
    EXPECT_TRUE(View()->horizontalScrollBar()->isVisible());
    EXPECT_LE(RowOf(choice).bottom(), View()->viewport()->height());
    // More than there is room for: the item itself stays.
    HTREEITEM first = FindItem(tree_, 0x1000);
    Scroll(0, 0);
    Click(ButtonOf(first));
    EXPECT_GE(RowOf(first).top(), 0);
    EXPECT_LT(RowOf(first).top(), 26);
}

TEST_F(TreeTest, TheValuesAtTheEndOfLongRowsAreThere) {
    for (const WORD device : {Device1D, DeviceLaser, DeviceImager}) {
        Show(device | DeviceRfid, "General");
        EXPECT_EQ(View()->horizontalScrollBar()->maximum(), 0) << device;
    }
}

}  // namespace
