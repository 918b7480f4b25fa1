// The tree view, used by its messages and by hand.
#include <QApplication>
#include <QScrollBar>
#include <QTest>

#include "tests/platform/tree_fixture.h"

namespace {

TEST_F(TreeTest, StateImageNIsTheListsImageN) {
    EXPECT_EQ(ImageList_GetImageCount(images_), 8);
    const auto picture = [&](UINT image) {
        HTREEITEM item = Insert(TVI_ROOT, TVI_LAST, u"", image);
        layer::PumpMessages();
        const QRect row = RowOf(item);
        const QImage seen = View()->viewport()->grab(QRect(row.left(), row.top(), 23, 26)).toImage();
        Delete(item);
        return seen;
    };
    const QImage none = picture(0);
    EXPECT_EQ(picture(8), none);  // more than there are
    std::vector<QImage> seen{none};
    for (UINT image = 1; image <= 7; ++image) {
        seen.push_back(picture(image));
        // The corner is transparent in every image, green in the bitmap.
        EXPECT_EQ(seen.back().pixel(4, 5), none.pixel(4, 5)) << image;
        for (UINT before = 0; before < image; ++before) {
            EXPECT_NE(seen[before], seen[image]) << before << " and " << image;
        }
    }
    // Without the list there is nothing to see.
    SendMessageW(tree_, TVM_SETIMAGELIST, TVSIL_STATE, 0);
    EXPECT_EQ(picture(3), none);
}

// ---- taps

TEST_F(TreeTest, KnowsWhatOfAnItemIsHit) {
    HTREEITEM a = Insert(TVI_ROOT, TVI_LAST, u"first");
    HTREEITEM a1 = Insert(a, TVI_LAST, u"child");
    HTREEITEM plain = Insert(TVI_ROOT, TVI_LAST, u"without an image", 0);
    Click(ButtonOf(a));
    ASSERT_TRUE(IsOpen(a));
    const struct {
        QPoint Place;
        HTREEITEM Item;
        UINT Flag;
    } hits[] = {{ImageOf(a), a, TVHT_ONITEMSTATEICON},
                {LabelOf(a), a, TVHT_ONITEMLABEL},
                {ButtonOf(a), a, OnButton},
                {QPoint(230, RowOf(a).center().y()), a, 0x20},
                {ImageOf(a1), a1, TVHT_ONITEMSTATEICON},
                {LabelOf(a1), a1, TVHT_ONITEMLABEL},
                {ButtonOf(a1), a1, 0x08},
                {ImageOf(plain), plain, 0x08},
                {LabelOf(plain), plain, TVHT_ONITEMLABEL},
                {QPoint(30, 250), nullptr, 0x01},
                {QPoint(-1, 10), nullptr, 0x01},
                {QPoint(30, 5000), nullptr, 0x01}};
    for (const auto& hit : hits) {
        const TVHITTESTINFO found = HitTest(hit.Place);
        EXPECT_EQ(found.hItem, hit.Item) << hit.Place.x() << "," << hit.Place.y();
        EXPECT_EQ(found.flags, hit.Flag) << hit.Place.x() << "," << hit.Place.y();
    }
}

TEST_F(TreeTest, TapsAreToldWithTheirPlace) {
    HTREEITEM a = Insert(TVI_ROOT, TVI_LAST, u"first");
    Insert(a, TVI_LAST, u"child");
    HTREEITEM b = Insert(TVI_ROOT, TVI_LAST, u"second");
    Click(ImageOf(b));
    Click(LabelOf(b));
    Click(QPoint(30, 250));
    ASSERT_EQ(told_.size(), 3u);
    EXPECT_EQ(told_[0].Item, b);
    EXPECT_EQ(told_[0].Flags, UINT{TVHT_ONITEMSTATEICON});
    EXPECT_EQ(told_[1].Item, b);
    EXPECT_EQ(told_[1].Flags, UINT{TVHT_ONITEMLABEL});
    EXPECT_EQ(told_[2].Item, nullptr);
    // A label selects whatever is answered, a button only unfolds.
    EXPECT_EQ(Get(TVGN_CARET), b);
    Click(ButtonOf(a));
    EXPECT_TRUE(IsOpen(a));
    Click(ButtonOf(a));
    EXPECT_FALSE(IsOpen(a));
    EXPECT_EQ(told_.size(), 3u);
    EXPECT_EQ(Get(TVGN_CARET), b);
    QTest::mouseClick(View()->viewport(), Qt::RightButton, {}, LabelOf(a));
    EXPECT_EQ(told_.size(), 3u);
}

TEST_F(TreeTest, TwoQuickTapsUnfoldByTheLabelAndSwitchTwiceByTheImage) {
    HTREEITEM a = Insert(TVI_ROOT, TVI_LAST, u"first");
    Insert(a, TVI_LAST, u"child");
    HTREEITEM b = Insert(TVI_ROOT, TVI_LAST, u"second");
    DoubleClick(LabelOf(a));
    EXPECT_TRUE(IsOpen(a));
    EXPECT_EQ(Clicks(), 1u);
    DoubleClick(ImageOf(a));
    EXPECT_TRUE(IsOpen(a));
    EXPECT_EQ(Clicks(), 3u);
    DoubleClick(LabelOf(b));
    EXPECT_EQ(Clicks(), 5u);
}

TEST_F(TreeTest, AFingerThatMovesScrollsAndTapsNothing) {
    for (int i = 0; i < 40; ++i) {
        Insert(TVI_ROOT, TVI_LAST, u"an item whose text is much too long for the width of a terminal");
    }
    layer::PumpMessages();
    QWidget* viewport = View()->viewport();
    QTest::mousePress(viewport, Qt::LeftButton, {}, QPoint(150, 200));
    for (int y = 200; y >= 100; y -= 10) {
        QMouseEvent move(QEvent::MouseMove, QPointF(120, y), viewport->mapToGlobal(QPointF(120, y)),
                         Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(viewport, &move);
    }
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, QPoint(120, 100));
    EXPECT_EQ(View()->verticalScrollBar()->value(), 100);
    EXPECT_EQ(View()->horizontalScrollBar()->value(), 30);
    EXPECT_EQ(told_.size(), 0u);
    // What is hit has moved along.
    EXPECT_EQ(HitTest(QPoint(100, 4 * 26 + 13 - 100)).hItem,
              Get(TVGN_NEXT, Get(TVGN_NEXT, Get(TVGN_NEXT, Get(TVGN_NEXT, Get(TVGN_ROOT))))));
}

// ---- keys

TEST_F(TreeTest, SpaceAndEnterTapTheImageWhereverItIs) {
    for (int i = 0; i < 60; ++i) {
        Insert(TVI_ROOT, TVI_LAST, u"an item whose text is much too long for the width of a terminal");
    }
    HTREEITEM last = Insert(TVI_ROOT, TVI_LAST, u"last");
    HTREEITEM plain = Insert(TVI_ROOT, TVI_LAST, u"no image", 0);
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        for (HTREEITEM item : {last, plain}) {
            Select(item);
            View()->verticalScrollBar()->setValue(0);
            View()->horizontalScrollBar()->setValue(View()->horizontalScrollBar()->maximum());
            told_.clear();
            Key(key);
            ASSERT_EQ(told_.size(), 2u);
            EXPECT_EQ(told_[0].Code, TVN_KEYDOWN);
            EXPECT_EQ(told_[1].Code, NM_CLICK);
            EXPECT_EQ(told_[1].Item, item);
            EXPECT_EQ(told_[1].Flags, item == last ? UINT{TVHT_ONITEMSTATEICON} : UINT{TVHT_ONITEMLABEL});
        }
    }
    // A key that is held taps once, and one with Control not at all.
    told_.clear();
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Space, {}, QStringLiteral(" "), true);
    QApplication::sendEvent(View(), &repeated);
    Key(Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(Clicks(), 0u);
}

TEST_F(TreeTest, AnItemThatIsUnfoldedToIsSeenWhole) {
    for (int i = 0; i < 8; ++i) {
        Insert(TVI_ROOT, TVI_LAST, u"short");
    }
    HTREEITEM folded = Insert(TVI_ROOT, TVI_LAST, u"folded");
    HTREEITEM child = Insert(folded, TVI_LAST, u"child");
    // With it a scroll bar comes, which takes room at the bottom.
    Insert(folded, TVI_LAST, u"an item whose text is much too long for the width of a terminal");
    layer::PumpMessages();
    Select(child);
    layer::PumpMessages();
    EXPECT_TRUE(View()->horizontalScrollBar()->isVisible());
    EXPECT_LE(RowOf(child).bottom(), View()->viewport()->height());
}

TEST_F(TreeTest, UnfoldingBringsTheChildrenIntoView) {
    for (int i = 0; i < 8; ++i) {
        Insert(TVI_ROOT, TVI_LAST, u"short");
    }
    HTREEITEM folded = Insert(TVI_ROOT, TVI_LAST, u"folded");
    Insert(folded, TVI_LAST, u"child");
    HTREEITEM last = Insert(folded, TVI_LAST, u"last");
    layer::PumpMessages();
    Click(ButtonOf(folded));
    EXPECT_LE(RowOf(last).bottom(), View()->viewport()->height());
    EXPECT_GE(RowOf(folded).top(), 0);
    // More than there is room for: the item itself stays.
    for (int i = 0; i < 20; ++i) {
        Insert(folded, TVI_LAST, u"child");
    }
    Click(ButtonOf(folded));
    Click(ButtonOf(folded));
    EXPECT_GE(RowOf(folded).top(), 0);
    EXPECT_LT(RowOf(folded).top(), 26);
}

TEST_F(TreeTest, TheValueAtTheEndOfALongRowIsThere) {
    Insert(TVI_ROOT, TVI_LAST, u"Timeout When Decode Same Barcode :    0.6  sec.", 6);
    layer::PumpMessages();
    EXPECT_EQ(View()->horizontalScrollBar()->maximum(), 0);
}

}  // namespace
