#include "tests/e2e/screen.h"

#include <X11/keysym.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "tests/e2e/waiting.h"
#include "tests/e2e/wine_screen.h"
#include "tests/e2e/x_screen.h"

bool OnWine() {
    const char* where = std::getenv("VANTREL_E2E");
    return where != nullptr && std::string_view(where) == "wine";
}

std::unique_ptr<TestScreen> MakeScreen() {
    if (OnWine()) {
        return std::make_unique<WineScreen>();
    }
    return std::make_unique<XScreen>();
}

std::optional<ScreenWindow> TestScreen::Find(const std::string& title) {
    const auto windows = Windows();
    const auto found = std::ranges::find(windows, title, &ScreenWindow::Title);
    return found != windows.end() ? std::optional(*found) : std::nullopt;
}

std::optional<ScreenWindow> TestScreen::WaitForWindow(const std::string& title, int milliseconds) {
    std::optional<ScreenWindow> found;
    Within(milliseconds, [&] { return (found = Find(title)).has_value(); });
    return found;
}

bool TestScreen::WaitUntilGone(const std::string& title, int milliseconds) {
    return Within(milliseconds, [&] { return !Find(title); });
}

bool TestScreen::WaitForFocus(const std::string& title, int milliseconds) {
    return Within(milliseconds, [&] {
        return std::ranges::any_of(Windows(), [&](const ScreenWindow& window) {
            return window.Title == title && HasFocus(window.Id);
        });
    });
}

void TestScreen::Save(const std::string& path) {
    const Picture picture = Capture(0, 0, 640, 480);
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        return;
    }
    std::fprintf(file, "P6\n%d %d\n255\n", picture.Width, picture.Height);
    for (const unsigned pixel : picture.Pixels) {
        for (const int shift : {16, 8, 0}) {
            std::fputc(static_cast<int>(pixel >> shift & 0xFF), file);
        }
    }
    std::fclose(file);
}

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
