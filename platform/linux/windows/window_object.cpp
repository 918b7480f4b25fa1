#include "platform/linux/windows/window_object.h"

#include <QEvent>
#include <QVariant>

#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

constexpr const char* HandleProperty = "windowHandle";

// Tells the window of its new client size.
class SizeWatcher : public QObject {
  public:
    SizeWatcher(QWidget* widget, WindowObject& window) : QObject(widget), window_(window) {
        widget->installEventFilter(this);
    }
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Resize && !window_.Gone() && window_.Handle() != nullptr) {
            const QSize size = static_cast<QWidget*>(object)->size();
            window_.Message(WM_SIZE, 0, MAKELPARAM(size.width(), size.height()));
        }
        return false;
    }

  private:
    WindowObject& window_;
};

}  // namespace

WindowObject::WindowObject(const WindowInit& init)
    : className_(init.ClassName), text_(init.Text), id_(init.Id), style_(init.Style), child_(init.Child) {
    if (init.Parent != nullptr) {
        parent_ = init.Parent->weak_from_this();
    }
}

WindowObject::~WindowObject() = default;

WindowObject* WindowObject::Parent() const {
    const WindowPtr parent = parent_.lock();
    return parent != nullptr && !parent->Gone() ? parent.get() : nullptr;
}

WindowObject* WindowObject::FindChild(int id) const {
    for (const WindowPtr& child : children_) {
        if (child->Id() == id) {
            return child.get();
        }
    }
    return nullptr;
}

LRESULT WindowObject::Message(UINT message, WPARAM wParam, LPARAM lParam) {
    return Default(message, wParam, lParam);
}

LRESULT WindowObject::Default(UINT message, WPARAM, LPARAM) {
    if (message == WM_CLOSE) {
        Destroy(*this);
    }
    return 0;
}

void WindowObject::SetText(std::u16string text) {
    text_ = std::move(text);
    if (!child_) {
        widget_->setWindowTitle(QString::fromStdU16String(text_));
    }
    RenameWindow(handle_, text_);
}

void WindowObject::SetPlace(const QRect& place) {
    widget_->setGeometry(place);
}

void WindowObject::SetVisible(bool visible) {
    widget_->setVisible(visible);
}

bool WindowObject::Visible() const {
    return !gone_ && widget_->isVisible();
}

void WindowObject::Activate() {
    if (child_) {
        widget_->setFocus();
    } else if (widget_->isVisible()) {
        widget_->raise();
        widget_->activateWindow();
    }
}

LRESULT WindowObject::Tell(UINT message, WPARAM wParam, LPARAM lParam) {
    const WindowPtr parent = parent_.lock(), keep = shared_from_this();
    const bool heard = !gone_ && handle_ != nullptr && parent != nullptr && !parent->Gone();
    return heard ? parent->Message(message, wParam, lParam) : 0;
}

void WindowObject::Command(WORD code) {
    Tell(WM_COMMAND, static_cast<DWORD>(MAKELONG(id_, code)), reinterpret_cast<LPARAM>(handle_));
}

LRESULT WindowObject::Notify(NMHDR& header, UINT code) {
    header = {handle_, static_cast<UINT_PTR>(id_), code};
    return Tell(WM_NOTIFY, header.idFrom, reinterpret_cast<LPARAM>(&header));
}

void WindowObject::SetWidget(QWidget* widget, QWidget* client) {
    widget_ = widget;
    client_ = client != nullptr ? client : widget;
}

void WindowObject::ReportSizes() {
    new SizeWatcher(client_, *this);
}

HWND Adopt(const WindowPtr& window) {
    window->handle_ = EnterWindow(window);
    window->widget_->setProperty(HandleProperty,
                                 QVariant::fromValue(reinterpret_cast<quintptr>(window->handle_)));
    if (WindowObject* parent = window->Parent(); window->IsChild() && parent != nullptr) {
        parent->children_.push_back(window);
    }
    return window->handle_;
}

void Destroy(WindowObject& window) {
    if (window.gone_ || window.going_) {
        return;
    }
    const WindowPtr keep = window.shared_from_this();
    window.going_ = true;
    window.Message(WM_DESTROY, 0, 0);
    for (const WindowPtr& other : TopLevelWindows()) {
        if (other.get() != &window && other->Parent() == &window) {
            Destroy(*other);
        }
    }
    while (!window.children_.empty()) {
        const WindowPtr child = window.children_.back();
        Destroy(*child);
        // One that is going already takes itself away when its own call goes on.
        std::erase(window.children_, child);
    }
    WindowObject* owner = window.Parent();
    window.gone_ = true;
    LeaveWindow(window.handle_);
    KillTimersOf(window.handle_);
    if (owner != nullptr && window.child_) {
        std::erase(owner->children_, keep);
    }
    window.OnGone();
    // Callbacks of the widget may refer to the object until the widget has gone.
    QObject::connect(window.widget_, &QObject::destroyed, [keep] {});
    HideAndGiveFocusBack(window);
    window.widget_->deleteLater();
}

void HideAndGiveFocusBack(WindowObject& window) {
    const bool wasActive = !window.IsChild() && window.Widget()->isActiveWindow();
    window.Widget()->hide();
    const WindowObject* owner = window.Parent();
    if (wasActive && owner != nullptr) {
        if (const WindowPtr top = WindowOf(owner->Widget()->window()); top != nullptr && top->TakesFocus()) {
            top->Activate();
        }
    }
}

WindowPtr WindowOf(const QWidget* widget) {
    for (; widget != nullptr; widget = widget->parentWidget()) {
        const QVariant handle = widget->property(HandleProperty);
        if (handle.isValid()) {
            return FindWindowObject(reinterpret_cast<HWND>(handle.value<quintptr>()));
        }
    }
    return nullptr;
}

LRESULT Send(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const WindowPtr object = FindWindowObject(window);
    return object != nullptr ? object->Message(message, wParam, lParam) : 0;
}

}  // namespace layer
