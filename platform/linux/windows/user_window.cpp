#include "platform/linux/windows/user_window.h"

#include <QCloseEvent>
#include <map>

#include "platform/linux/windows/listener.h"
#include "platform/linux/windows/on_main.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

struct WindowClass {
    WNDPROC Procedure;
    ATOM Atom;
};

// Keyed by the name in lower case. Main thread.
std::map<std::u16string, WindowClass>& Classes() {
    static auto* classes = new std::map<std::u16string, WindowClass>;
    return *classes;
}

const WindowClass* FindClass(std::u16string_view name) {
    for (const auto& [known, windowClass] : Classes()) {
        if (SameClass(known, name)) {
            return &windowClass;
        }
    }
    return nullptr;
}

class UserWidget : public QWidget {
  public:
    UserWidget(QWidget* parent, Qt::WindowFlags flags) : QWidget(parent, flags) {}
    UserWindow* Window = nullptr;

  protected:
    void closeEvent(QCloseEvent* event) override {
        event->ignore();
        RequestClose(*Window);
    }
    void mousePressEvent(QMouseEvent* event) override {
        Window->Activate();
        QWidget::mousePressEvent(event);
    }
};

}  // namespace

UserWindow::UserWindow(const WindowInit& init, WNDPROC procedure)
    : WindowObject(init), procedure_(procedure) {
    QWidget* parent = init.Child && init.Parent != nullptr ? init.Parent->Client() : nullptr;
    // A bare rectangle that keeps out of lists of tasks: the platform's window without a caption.
    const Qt::WindowFlags flags =
        init.Child ? Qt::WindowFlags{} : Qt::WindowFlags(Qt::Tool | Qt::FramelessWindowHint);
    auto* widget = new UserWidget(parent, flags);
    widget->Window = this;
    widget->setAutoFillBackground(true);
    widget->setPalette(QPalette(Qt::white));
    widget->setMinimumSize(1, 1);
    widget->setGeometry(init.Place);
    widget->setWindowTitle(QString::fromStdU16String(init.Text));
    SetWidget(widget);
    ReportSizes();
}

LRESULT UserWindow::Message(UINT message, WPARAM wParam, LPARAM lParam) {
    const WindowPtr keep = shared_from_this();
    return procedure_(Handle(), message, wParam, lParam);
}

void UserWindow::SetVisible(bool visible) {
    if (!IsChild()) {
        if (!visible) {
            takesFocus_ = false;
        }
        Widget()->setAttribute(Qt::WA_ShowWithoutActivating, !takesFocus_);
    }
    WindowObject::SetVisible(visible);
    if (visible && takesFocus_) {
        WindowObject::Activate();
    }
}

void UserWindow::Activate() {
    takesFocus_ = true;
    WindowObject::Activate();
}

void RequestClose(WindowObject& window) {
    if (!window.Gone()) {
        PostMessageW(window.Handle(), WM_CLOSE, 0, 0);
    }
}

}  // namespace layer

ATOM RegisterClassW(const WNDCLASSW* windowClass) {
    return layer::OnMain([&]() -> ATOM {
        if (windowClass->lpfnWndProc == nullptr || windowClass->lpszClassName == nullptr ||
            layer::FindClass(windowClass->lpszClassName) != nullptr) {
            return 0;
        }
        const auto atom = static_cast<ATOM>(0xC000 + layer::Classes().size());
        layer::Classes()[windowClass->lpszClassName] = {windowClass->lpfnWndProc, atom};
        return atom;
    });
}

HWND CreateWindowExW(DWORD, LPCWSTR className, LPCWSTR title, DWORD style, int x, int y, int width,
                     int height, HWND parent, HMENU, HINSTANCE, LPVOID) {
    return layer::OnMain([&]() -> HWND {
        // A program with a main function of its own begins here.
        layer::StartWindows();
        const layer::WindowClass* windowClass = className != nullptr ? layer::FindClass(className) : nullptr;
        const layer::WindowPtr owner = layer::FindWindowObject(parent);
        if (windowClass == nullptr || (parent != nullptr && owner == nullptr)) {
            return nullptr;
        }
        const QRect area = layer::WorkArea();
        layer::WindowInit init;
        init.Parent = owner.get();
        init.ClassName = className;
        init.Text = title != nullptr ? title : u"";
        init.Style = style;
        init.Place = QRect(x == CW_USEDEFAULT ? area.x() : x, y == CW_USEDEFAULT ? area.y() : y,
                           width == CW_USEDEFAULT ? area.width() : width,
                           height == CW_USEDEFAULT ? area.height() : height);
        // A window that other programs cannot reach is none.
        if (!layer::StartListening()) {
            return nullptr;
        }
        const layer::WindowPtr window = std::make_shared<layer::UserWindow>(init, windowClass->Procedure);
        layer::Adopt(window);
        if (window->Message(WM_CREATE, 0, 0) == -1) {
            layer::Destroy(*window);
        }
        if (!window->Gone() && (style & WS_VISIBLE) != 0) {
            window->SetVisible(true);
        }
        return window->Gone() ? nullptr : window->Handle();
    });
}
