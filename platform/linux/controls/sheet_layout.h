// Where the parts of a property sheet lie.
#pragma once

#include <QRect>

namespace layer {

struct SheetSizes {
    QSize Client;
    QSize Tabs;    // wanted
    QSize Button;  // that shows the text of either
    bool TabsAtBottom;
};
struct SheetPlaces {
    QRect Page, Tabs, Ok, Cancel;
};

// Tabs at the bottom share their row with the buttons where both have room in it.
SheetPlaces LayOutSheet(const SheetSizes& sizes);

}  // namespace layer
