// Where the parts of the property sheet lie.
#include <gtest/gtest.h>

#include "platform/linux/controls/sheet_layout.h"

namespace {

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
