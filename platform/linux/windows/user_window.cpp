#include "platform/linux/windows/window_object.h"

#include <QCloseEvent>
#include <algorithm>

#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/other_programs.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

// By name. Main thread.
std::vector<std::pair<std::u16string, WNDPROC>>& Classes() {
    static auto* classes = new std::vector<std::pair<std::u16string, WNDPROC>>;
    return *classes;
}

// Null for an unknown class.
WNDPROC FindClass(std::u16string_view name) {
    const auto found = std::find_if(Classes().begin(), Classes().end(),
                                    [&](const auto& known) { return SameClass(known.first, name); });
    return found != Classes().end() ? found->second : nullptr;
}

class UserWidget : public QWidget {
  public:
    // A bare rectangle that keeps out of lists of tasks: the platform's window without a caption.
    explicit UserWidget(UserWindow& window)
        : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint), window_(window) {}

  protected:
    void closeEvent(QCloseEvent* event) override {
        event->ignore();
        RequestClose(window_);
    }
    void mousePressEvent(QMouseEvent* event) override {
        window_.Activate();
        QWidget::mousePressEvent(event);
    }

  private:
    UserWindow& window_;
};

}  // namespace

UserWindow::UserWindow(const WindowInit& init, WNDPROC procedure)
    : WindowObject(init), procedure_(procedure) {
    auto* widget = new UserWidget(*this);
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
    takesFocus_ = takesFocus_ && visible;
    Widget()->setAttribute(Qt::WA_ShowWithoutActivating, !takesFocus_);
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
        if (layer::FindClass(windowClass->lpszClassName) != nullptr) {
            return 0;
        }
        layer::Classes().emplace_back(windowClass->lpszClassName, windowClass->lpfnWndProc);
        return static_cast<ATOM>(0xC000 + layer::Classes().size());
    });
}

HWND CreateWindowExW(DWORD, LPCWSTR className, LPCWSTR title, DWORD style, int x, int y, int width,
                     int height, HWND parent, HMENU, HINSTANCE, LPVOID) {
    return layer::OnMain([&]() -> HWND {
        // A program with a main function of its own begins here.
        layer::StartWindows();
        const WNDPROC procedure = layer::FindClass(className);
        const layer::WindowPtr owner = layer::FindWindowObject(parent);
        if (procedure == nullptr || (parent != nullptr && owner == nullptr)) {
            return nullptr;
        }
        const QRect area = layer::WorkArea();
        layer::WindowInit init;
        init.Parent = owner.get();
        init.ClassName = className;
        init.Text = title;
        init.Style = style;
        init.Place = QRect(x == CW_USEDEFAULT ? area.x() : x, y == CW_USEDEFAULT ? area.y() : y,
                           width == CW_USEDEFAULT ? area.width() : width,
                           height == CW_USEDEFAULT ? area.height() : height);
        // A window that other programs cannot reach is none.
        if (!layer::StartListening()) {
            return nullptr;
        }
        const layer::WindowPtr window = std::make_shared<layer::UserWindow>(init, procedure);
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
