#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTimer>
#include <memory>

#include "platform/linux/windows/images.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/screen.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/linux/windows/window_object.h"
#include "platform/shell.h"

namespace layer {

namespace {

// X11 tells of a notification area that comes (a client message) or goes (a window destroyed). Both are
// looked into after Qt has.
class TrayWatcher : public QAbstractNativeEventFilter {
  public:
    explicit TrayWatcher(std::function<void()> changed) : changed_(std::move(changed)) {
        delay_.setSingleShot(true);
        QObject::connect(&delay_, &QTimer::timeout, &delay_, changed_);
    }
    bool nativeEventFilter(const QByteArray& type, void* message, qintptr*) override {
        if (type == "xcb_generic_event_t" && message != nullptr) {
            const int kind = *static_cast<const std::uint8_t*>(message) & 0x7F;
            constexpr int destroyNotify = 17, clientMessage = 33;
            if (kind == destroyNotify || kind == clientMessage) {
                delay_.start(0);
            }
        }
        return false;
    }

  private:
    std::function<void()> changed_;
    QTimer delay_;
};

// A window at the bottom right corner, above all others, that never takes the focus. A strip of its height
// stays free for it.
class StandInIcon : public QWidget {
  public:
    StandInIcon(const QIcon& icon, const QString& tip, std::function<void()> tapped)
        : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                               Qt::WindowDoesNotAcceptFocus),
          icon_(icon),
          tapped_(std::move(tapped)) {
        constexpr int side = 26;
        setAttribute(Qt::WA_ShowWithoutActivating);
        setToolTip(tip);
        setWindowTitle(QStringLiteral("Notification icon"));
        const QRect area = WorkArea();
        ReserveStrip(side);
        setGeometry(area.right() + 1 - side, area.bottom() + 1 - side, side, side);
        show();
    }
    ~StandInIcon() override { ReserveStrip(0); }

  protected:
    void mousePressEvent(QMouseEvent*) override { tapped_(); }
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), palette().window());
        icon_.paint(&painter, rect().adjusted(2, 2, -2, -2));
    }

  private:
    QIcon icon_;
    std::function<void()> tapped_;
};

class NotificationIcon {
  public:
    explicit NotificationIcon(const NOTIFYICONDATAW& data) : data_(data), watcher_([this] { Choose(); }) {
        if ((data.uFlags & NIF_ICON) != 0) {
            icon_ = IconOf(data.hIcon);
        }
        if ((data.uFlags & NIF_TIP) != 0) {
            const auto end = std::find(std::begin(data.szTip), std::end(data.szTip), u'\0');
            tip_ = QString::fromUtf16(data.szTip, end - std::begin(data.szTip));
        }
        QGuiApplication::setWindowIcon(icon_);
        // Only a display server has an area. It takes the icon by itself whenever there is one.
        if (FocusIsReal()) {
            tray_ = std::make_unique<QSystemTrayIcon>(icon_);
            tray_->setToolTip(tip_);
            QObject::connect(tray_.get(), &QSystemTrayIcon::activated, tray_.get(),
                             [this](auto) { Tapped(); });
            tray_->show();
        }
        Choose();
        qApp->installNativeEventFilter(&watcher_);
    }
    ~NotificationIcon() { qApp->removeNativeEventFilter(&watcher_); }
    NotificationIcon(const NotificationIcon&) = delete;
    NotificationIcon& operator=(const NotificationIcon&) = delete;

    bool Is(HWND window, UINT id) const { return data_.hWnd == window && data_.uID == id; }
    // Empty where the notification area does not tell.
    QRect Place() const { return standIn_ != nullptr ? standIn_->geometry() : tray_->geometry(); }

  private:
    void Tapped() {
        if ((data_.uFlags & NIF_MESSAGE) != 0) {
            PostMessageW(data_.hWnd, data_.uCallbackMessage, data_.uID, WM_LBUTTONDOWN);
        }
    }
    void Choose() {
        if (tray_ != nullptr && QSystemTrayIcon::isSystemTrayAvailable()) {
            standIn_.reset();
        } else if (standIn_ == nullptr && !QGuiApplication::platformName().startsWith("wayland")) {
            // On Wayland no window can decline the focus, and scans would be typed into the icon.
            standIn_ = std::make_unique<StandInIcon>(icon_, tip_, [this] { Tapped(); });
        }
    }

    NOTIFYICONDATAW data_;
    QIcon icon_;
    QString tip_;
    std::unique_ptr<QSystemTrayIcon> tray_;
    std::unique_ptr<StandInIcon> standIn_;
    TrayWatcher watcher_;
};

std::vector<std::unique_ptr<NotificationIcon>>& NotificationIcons() {
    static auto* icons = new std::vector<std::unique_ptr<NotificationIcon>>;
    return *icons;
}

BOOL AddIcon(const NOTIFYICONDATAW& data) {
    for (const auto& icon : NotificationIcons()) {
        if (icon->Is(data.hWnd, data.uID)) {
            return FALSE;
        }
    }
    NotificationIcons().push_back(std::make_unique<NotificationIcon>(data));
    return TRUE;
}

BOOL DeleteIcon(const NOTIFYICONDATAW& data) {
    return std::erase_if(NotificationIcons(),
                         [&](const auto& icon) { return icon->Is(data.hWnd, data.uID); }) != 0
               ? TRUE
               : FALSE;
}

}  // namespace

void RemoveNotificationIcons() {
    NotificationIcons().clear();
}

}  // namespace layer

BOOL Shell_NotifyIconW(DWORD action, NOTIFYICONDATAW* data) {
    return layer::OnMain([=] {
        if (data->cbSize != sizeof(NOTIFYICONDATAW)) {
            return FALSE;
        }
        switch (action) {
            case NIM_ADD:
                return IsWindow(data->hWnd) != FALSE ? layer::AddIcon(*data) : FALSE;
            case NIM_DELETE:
                return layer::DeleteIcon(*data);
            default:
                return FALSE;
        }
    });
}

HRESULT Shell_NotifyIconGetRect(const NOTIFYICONIDENTIFIER* identifier, RECT* place) {
    return layer::OnMain([=]() -> HRESULT {
        for (const auto& icon : layer::NotificationIcons()) {
            const QRect found = icon->Place();
            if (icon->Is(identifier->hWnd, identifier->uID) && !found.isEmpty()) {
                *place = {found.left(), found.top(), found.right() + 1, found.bottom() + 1};
                return S_OK;
            }
        }
        return E_FAIL;
    });
}
