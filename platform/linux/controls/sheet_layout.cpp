#include "platform/linux/controls/sheet_layout.h"

#include <algorithm>

namespace layer {

namespace {

constexpr int Gap = 2;                      // pixels between the parts
constexpr QSize SmallestButton = {54, 30};  // what a finger finds
constexpr int LargestButton = 90;           // wide

}  // namespace

SheetPlaces LayOutSheet(const SheetSizes& sizes) {
    const QSize client = sizes.Client.expandedTo(QSize(1, 1));
    const int narrow = std::max(sizes.Button.width(), SmallestButton.width());
    const int beside = client.width() - sizes.Tabs.width() - 3 * Gap;  // that tabs leave to the buttons
    const bool shared = sizes.TabsAtBottom && 2 * narrow <= beside;
    const int room = shared ? beside : client.width() - 3 * Gap;
    const QSize button(std::clamp(room / 2, 1, LargestButton),
                       std::max(sizes.Button.height(), SmallestButton.height()));
    const int buttonRow = button.height() + 2 * Gap;

    SheetPlaces places;
    const int buttonTop = client.height() - Gap - button.height();
    places.Cancel = QRect(QPoint(client.width() - Gap - button.width(), buttonTop), button);
    places.Ok = places.Cancel.translated(-Gap - button.width(), 0);
    const QSize tabs(std::min(sizes.Tabs.width(), client.width()), sizes.Tabs.height());
    if (!sizes.TabsAtBottom) {
        places.Tabs = QRect(QPoint(0, 0), tabs);
        places.Page = QRect(0, tabs.height(), client.width(), client.height() - tabs.height() - buttonRow);
        return places;
    }
    const int below = shared ? std::max(tabs.height(), buttonRow) : tabs.height() + buttonRow;
    places.Page = QRect(0, 0, client.width(), client.height() - below);
    places.Tabs = QRect(QPoint(0, places.Page.height()), tabs);
    return places;
}

}  // namespace layer
