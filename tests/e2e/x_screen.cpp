#include "tests/e2e/x_screen.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/extensions/Xfixes.h>
#include <X11/keysym.h>
#include <poll.h>

#include <cstdlib>
#include <stdexcept>

namespace {

constexpr int QuietTime = 150;  // milliseconds in which nothing more is expected

bool EventWithin(Display* display, int milliseconds) {
    if (XPending(display) > 0) {
        return true;
    }
    pollfd file{ConnectionNumber(display), POLLIN, 0};
    return poll(&file, 1, milliseconds) > 0 && XPending(display) > 0;
}

// A window may go while it is looked at.
int IgnoreError(Display*, XErrorEvent*) {
    return 0;
}

}  // namespace

XScreen::XScreen() {
    XSetErrorHandler(IgnoreError);
    display_ = XOpenDisplay(nullptr);
    if (display_ == nullptr) {
        throw std::runtime_error("no display");
    }
    client_ = XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 380, 200, 100, 0, 0,
                                  WhitePixel(display_, 0));
    XStoreName(display_, client_, "typed into");
    XSelectInput(display_, client_, KeyPressMask | StructureNotifyMask);
    XMapWindow(display_, client_);
    XEvent event;
    do {
        XNextEvent(display_, &event);
    } while (event.type != MapNotify);
    BringToFront();
}

XScreen::~XScreen() {
    XCloseDisplay(display_);
}

void XScreen::BringToFront() {
    Focus(client_);
}

void XScreen::Focus(unsigned long window) {
    XSetInputFocus(display_, window, RevertToParent, CurrentTime);
    XSync(display_, False);
}

bool XScreen::HasFocus(unsigned long window) {
    Window focused = None;
    int revert = 0;
    XGetInputFocus(display_, &focused, &revert);
    return focused == window;
}

std::string XScreen::Typed(std::size_t count, int milliseconds) {
    const Moment until = In(milliseconds);
    std::string text;
    for (;;) {
        if (!EventWithin(display_, text.size() >= count ? QuietTime : LeftUntil(until))) {
            return text;
        }
        XEvent event;
        XNextEvent(display_, &event);
        if (event.type == MappingNotify) {
            XRefreshKeyboardMapping(&event.xmapping);
        }
        char letters[8] = {};
        KeySym symbol = NoSymbol;
        if (event.type == KeyPress &&
            XLookupString(&event.xkey, letters, sizeof letters, &symbol, nullptr) > 0) {
            text += letters[0] == '\r' ? '\n' : letters[0];
        }
    }
}

std::vector<ScreenWindow> XScreen::Windows() {
    std::vector<ScreenWindow> found;
    Window root = 0, parent = 0;
    Window* children = nullptr;
    unsigned count = 0;
    XQueryTree(display_, DefaultRootWindow(display_), &root, &parent, &children, &count);
    for (unsigned i = 0; i < count; ++i) {
        XWindowAttributes attributes{};
        if (!XGetWindowAttributes(display_, children[i], &attributes) || attributes.map_state != IsViewable) {
            continue;
        }
        ScreenWindow window{children[i], attributes.x, attributes.y, attributes.width, attributes.height, ""};
        char* name = nullptr;
        if (XFetchName(display_, children[i], &name) && name != nullptr) {
            window.Title = name;
            XFree(name);
        }
        found.push_back(window);
    }
    if (children != nullptr) {
        XFree(children);
    }
    return found;
}

std::vector<Accessible> XScreen::Hear(const std::string& title) {
    std::vector<Accessible> windows = voices_.Windows();
    std::erase_if(windows, [&](const Accessible& window) { return !title.empty() && window.Name != title; });
    return windows;
}

std::vector<std::string> XScreen::TextsOf(const ScreenWindow& window) {
    std::vector<std::string> texts;
    for (const Accessible& heard : Hear(window.Title)) {
        heard.Visit([&](const Accessible& part) {
            if (part.Role == "label") {
                texts.push_back(part.Name);
            }
        });
    }
    return texts;
}

Picture TestScreen::Capture(int x, int y, int width, int height) {
    Picture picture{width, height, {}};
    Display* const display = XOpenDisplay(nullptr);
    XImage* image = display == nullptr
                        ? nullptr
                        : XGetImage(display, DefaultRootWindow(display), x, y, static_cast<unsigned>(width),
                                    static_cast<unsigned>(height), AllPlanes, ZPixmap);
    for (int row = 0; image != nullptr && row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            picture.Pixels.push_back(static_cast<unsigned>(XGetPixel(image, column, row)) & 0xFFFFFF);
        }
    }
    if (image != nullptr) {
        XDestroyImage(image);
    }
    if (display != nullptr) {
        XCloseDisplay(display);
    }
    return image != nullptr ? picture : Picture{};
}

Picture XScreen::Pointer() {
    XFixesCursorImage* image = XFixesGetCursorImage(display_);
    if (image == nullptr) {
        return {};
    }
    Picture picture{image->width, image->height, {}};
    picture.Pixels.assign(image->pixels, image->pixels + picture.Width * picture.Height);
    XFree(image);
    return picture;
}

void XScreen::Press(unsigned long symbol, bool control) {
    const KeyCode code = XKeysymToKeycode(display_, symbol);
    const KeyCode held = XKeysymToKeycode(display_, XK_Control_L);
    if (control) {
        XTestFakeKeyEvent(display_, held, True, CurrentTime);
    }
    XTestFakeKeyEvent(display_, code, True, CurrentTime);
    XTestFakeKeyEvent(display_, code, False, CurrentTime);
    if (control) {
        XTestFakeKeyEvent(display_, held, False, CurrentTime);
    }
    XSync(display_, False);
}

void XScreen::Click(int x, int y) {
    XTestFakeMotionEvent(display_, -1, x, y, CurrentTime);
    XTestFakeButtonEvent(display_, 1, True, CurrentTime);
    XTestFakeButtonEvent(display_, 1, False, CurrentTime);
    XSync(display_, False);
}

bool XScreen::KeysAreUp() {
    char keys[32] = {};
    XQueryKeymap(display_, keys);
    XkbStateRec state{};
    XkbGetState(display_, XkbUseCoreKbd, &state);
    bool up = state.mods == 0;
    for (const char bits : keys) {
        up = up && bits == 0;
    }
    return up;
}
