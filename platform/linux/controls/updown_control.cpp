#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QToolButton>
#include <algorithm>

#include "platform/controls.h"
#include "platform/linux/windows/window_object.h"

namespace layer {

namespace {

constexpr int SmallestButton = 16, LargestButton = 32;  // pixels
constexpr int RoomForDigits = 4;                        // that the buddy keeps

// A less and a more button, side by side at the end of the edit control whose number they change.
class UpDownControl : public WindowObject {
  public:
    explicit UpDownControl(const WindowInit& init);

    LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam) override;
    void SetPlace(const QRect& place) override;

  private:
    // Turns the arrow keys of the buddy into steps.
    class KeyWatcher : public QObject {
      public:
        KeyWatcher(UpDownControl& control, QWidget* buddy) : QObject(control.Widget()), control_(control) {
            buddy->installEventFilter(this);
        }
        bool eventFilter(QObject* object, QEvent* event) override;

      private:
        UpDownControl& control_;
    };

    QToolButton* AddButton(QLayout* row, Qt::ArrowType arrow, int direction);
    void Step(int direction);
    void ReadBuddy();

    std::weak_ptr<WindowObject> buddy_;
    std::int64_t low_ = 0, high_ = 100, position_ = 0;
};

UpDownControl::UpDownControl(const WindowInit& init) : WindowObject(init) {
    auto* widget = new QWidget(init.Parent->Client());
    auto* row = new QHBoxLayout(widget);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    AddButton(row, Qt::DownArrow, -1);
    AddButton(row, Qt::UpArrow, 1);
    SetWidget(widget);
    // The control made before this one.
    const auto& neighbours = init.Parent->Children();
    if (!neighbours.empty()) {
        buddy_ = neighbours.back();
        new KeyWatcher(*this, neighbours.back()->Widget());
    }
}

QToolButton* UpDownControl::AddButton(QLayout* row, Qt::ArrowType arrow, int direction) {
    auto* button = new QToolButton;
    button->setArrowType(arrow);
    button->setAutoRepeat(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    row->addWidget(button);
    QObject::connect(button, &QToolButton::clicked, button, [this, direction] { Step(direction); });
    return button;
}

LRESULT UpDownControl::Message(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == UDM_SETRANGE32) {
        low_ = static_cast<int>(wParam);
        high_ = std::max<std::int64_t>(low_, static_cast<int>(lParam));
        return 0;
    }
    return WindowObject::Message(message, wParam, lParam);
}

// It takes the end of its buddy's place instead of the one it was given.
void UpDownControl::SetPlace(const QRect& place) {
    const WindowPtr buddy = buddy_.lock();
    if (buddy == nullptr) {
        WindowObject::SetPlace(place);
        return;
    }
    const QRect whole = buddy->Widget()->geometry();
    const int digits = buddy->Widget()->fontMetrics().horizontalAdvance(QString(RoomForDigits, u'0'));
    const int side = std::clamp((whole.width() - digits - whole.height() / 2) / 2, SmallestButton,
                                std::clamp(whole.height(), SmallestButton, LargestButton));
    const int width = std::min(2 * side, whole.width());
    buddy->SetPlace(whole.adjusted(0, 0, -width, 0));
    WindowObject::SetPlace(QRect(whole.right() + 1 - width, whole.top(), width, whole.height()));
}

bool UpDownControl::KeyWatcher::eventFilter(QObject*, QEvent* event) {
    if (event->type() != QEvent::KeyPress) {
        return false;
    }
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key != Qt::Key_Up && key != Qt::Key_Down) {
        return false;
    }
    control_.Step(key == Qt::Key_Up ? 1 : -1);
    return true;
}

// What is no number leaves the position where it was.
void UpDownControl::ReadBuddy() {
    const WindowPtr buddy = buddy_.lock();
    bool good = false;
    const int number = buddy != nullptr ? QString::fromStdU16String(buddy->Text()).toInt(&good) : 0;
    position_ = good ? number : position_;
}

void UpDownControl::Step(int direction) {
    const WindowPtr keep = shared_from_this();
    if (Gone()) {
        return;
    }
    ReadBuddy();
    position_ = std::clamp(std::clamp(position_, low_, high_) + direction, low_, high_);
    const WindowPtr buddy = buddy_.lock();
    if (buddy == nullptr || buddy->Gone()) {
        return;
    }
    buddy->Activate();
    buddy->SetText(QString::number(position_).toStdU16String());
}

}  // namespace

WindowPtr MakeUpDownControl(const WindowInit& init) {
    return std::make_shared<UpDownControl>(init);
}

}  // namespace layer
