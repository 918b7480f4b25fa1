#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QToolButton>
#include <algorithm>
#include <charconv>

#include "platform/controls.h"
#include "platform/linux/controls/controls.h"

namespace layer {

namespace {

constexpr DWORD SetsBuddy = 0x0002, AlignedRight = 0x0004, TakesNeighbour = 0x0010, TakesArrowKeys = 0x0020;

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
    if ((init.Style & TakesNeighbour) != 0 && !neighbours.empty()) {
        buddy_ = neighbours.back();
        if ((init.Style & TakesArrowKeys) != 0) {
            new KeyWatcher(*this, neighbours.back()->Widget());
        }
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
        high_ = static_cast<int>(lParam);
        return 0;
    }
    return WindowObject::Message(message, wParam, lParam);
}

// An aligned one takes the end of its buddy's place instead of the one it was given.
void UpDownControl::SetPlace(const QRect& place) {
    const WindowPtr buddy = buddy_.lock();
    if (buddy == nullptr || (Style() & AlignedRight) == 0) {
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

void UpDownControl::ReadBuddy() {
    const WindowPtr buddy = buddy_.lock();
    if (buddy == nullptr || (Style() & SetsBuddy) == 0) {
        return;
    }
    const std::string text = QString::fromStdU16String(buddy->Text()).trimmed().toStdString();
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    // What is no number leaves the position where it was.
    if (error == std::errc() && end == text.data() + text.size()) {
        position_ = number;
    }
}

void UpDownControl::Step(int direction) {
    const WindowPtr keep = shared_from_this();
    if (Gone()) {
        return;
    }
    ReadBuddy();
    // A range that is given the wrong way round counts down.
    const int step = low_ <= high_ ? direction : -direction;
    const auto [least, most] = std::minmax(low_, high_);
    position_ = std::clamp(std::clamp(position_, least, most) + step, least, most);
    const WindowPtr buddy = buddy_.lock();
    if (buddy == nullptr || buddy->Gone() || (Style() & SetsBuddy) == 0) {
        return;
    }
    buddy->Activate();
    const std::string digits = std::to_string(position_);
    buddy->SetText(std::u16string(digits.begin(), digits.end()));
}

}  // namespace

WindowPtr MakeUpDownControl(const WindowInit& init) {
    return std::make_shared<UpDownControl>(init);
}

}  // namespace layer
