#include "platform/linux/controls/sheet_layout.h"

#include <algorithm>

namespace layer {

namespace {

constexpr int Gap = 4;                      // pixels between the parts
constexpr QSize SmallestButton = {54, 30};  // what a finger finds

}  // namespace

SheetPlaces LayOutSheet(const SheetSizes& sizes) {
    const QSize client = sizes.Client.expandedTo(QSize(1, 1));
    // Two buttons always fit beside each other.
    const int widest = std::max(1, (client.width() - 3 * Gap) / 2);
    const QSize button(std::min(std::clamp(sizes.Button.width(), SmallestButton.width(), 90), widest),
                       std::max(sizes.Button.height(), SmallestButton.height()));
    const int buttons = 2 * button.width() + 3 * Gap;
    const int buttonRow = button.height() + 2 * Gap;
    const bool shared = sizes.TabsAtBottom && sizes.Tabs.width() + Gap + buttons <= client.width();

    SheetPlaces places;
    const int buttonTop = client.height() - Gap - button.height();
    places.Cancel = QRect(QPoint(client.width() - Gap - button.width(), buttonTop), button);
    places.Ok = places.Cancel.translated(-Gap - button.width(), 0);
    const QSize tabs(std::min(sizes.Tabs.width(), client.width() - (shared ? buttons : 0)),
                     sizes.Tabs.height());
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
