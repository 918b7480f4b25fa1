#include "tests/e2e/error_box.h"

#include <X11/keysym.h>

#include <algorithm>
#include <cstdio>

#include "tests/e2e/waiting.h"

bool ErrorBoxSays(TestScreen& screen, const std::string& text) {
    const auto box = screen.WaitForWindow(ErrorBoxTitle, 40000);
    std::vector<std::string> texts;
    const bool says = box && Within(10000, [&] {
                          texts = screen.TextsOf(*box);
                          return std::ranges::find(texts, text) != texts.end();
                      });
    for (std::size_t i = 0; !says && i < texts.size(); ++i) {
        std::fprintf(stderr, "the box says: %s\n", texts[i].c_str());
    }
    return says;
}

void DismissErrorBox(TestScreen& screen) {
    if (const auto box = screen.WaitForWindow(ErrorBoxTitle)) {
        if (OnWine()) {
            screen.Focus(box->Id);
        }
        screen.WaitForFocus(ErrorBoxTitle);
        screen.Press(XK_Return);
    }
}
