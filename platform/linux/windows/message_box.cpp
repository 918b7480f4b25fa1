#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <optional>

#include "platform/linux/windows/dialogs.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/window_object.h"

namespace layer {

namespace {

constexpr int Margin = 10;              // pixels
constexpr int WidestText = 320;         // before it goes on in another line
constexpr QSize ButtonSize = {72, 30};  // what a finger finds

// What a box answers, for whoever waits.
struct Answer {
    std::mutex Mutex;
    std::condition_variable Changed;
    std::optional<int> Result;
};

// A dialog with a text and an OK button. Boxes of other threads run in no loop of their own, so that boxes of
// several threads end in any order.
class BoxWindow : public DialogWindow {
  public:
    explicit BoxWindow(const WindowInit& init) : DialogWindow(init, Kind::Modal, nullptr) {}

    // With IDOK when the user has dismissed it, with 0 when it goes without. The first counts.
    void Finish(int result) {
        {
            std::scoped_lock lock(answer_->Mutex);
            answer_->Result = answer_->Result.value_or(result);
            answer_->Changed.notify_all();
        }
        End(result);
        // The click that ends it is still being handled.
        PostToMainThread([self = shared_from_this()] { Destroy(*self); });
    }
    LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_CLOSE || message == WM_COMMAND) {
            Finish(IDOK);
            return 0;
        }
        return Default(message, wParam, lParam);
    }
    std::shared_ptr<Answer> Answered() const { return answer_; }

  protected:
    void OnGone() override { Finish(0); }

  private:
    const std::shared_ptr<Answer> answer_ = std::make_shared<Answer>();
};

void MakePart(BoxWindow& box, std::u16string_view className, int id, DWORD style, std::u16string_view text,
              const QRect& place) {
    WindowInit init;
    init.Parent = &box;
    init.Child = true;
    init.ClassName = className;
    init.Text = text;
    init.Id = id;
    init.Style = style | WS_VISIBLE | StyleChild;
    init.Place = place;
    MakeControl(init);
}

std::shared_ptr<Answer> OpenBox(HWND owner, const std::u16string& text, const std::u16string& caption) {
    const WindowPtr ownerWindow = FindWindowObject(owner);
    WindowInit init;
    init.Parent = ownerWindow.get();
    init.ClassName = u"Dialog";
    init.Style = StyleCaption | StyleSystemMenu;
    const auto box = std::make_shared<BoxWindow>(init);
    box->SetText(caption);
    Adopt(box);
    const QFontMetrics metrics = box->Widget()->fontMetrics();
    const int room = std::min(WidestText, WorkArea().width() - 2 * Margin - 2);
    const QSize needed =
        metrics.boundingRect(QRect(0, 0, room, 0), Qt::TextWordWrap, QString::fromStdU16String(text)).size();
    const int captionWidth =
        metrics.horizontalAdvance(QString::fromStdU16String(caption)) + ButtonSize.width();
    const int width = std::clamp(std::max(needed.width() + 1, captionWidth), ButtonSize.width(), room);
    const QRect textPlace(Margin, Margin, width, needed.height());
    QRect button(QPoint(0, textPlace.bottom() + Margin), ButtonSize);
    button.moveLeft(Margin + (width - button.width()) / 2);
    MakePart(*box, u"Static", -1, StaticCentred | StaticNoPrefix, text, textPlace);
    MakePart(*box, u"Button", IDOK, ButtonDefault | StyleTabStop, u"OK", button);
    box->PlaceFrame(QSize(width + 2 * Margin, button.bottom() + Margin));
    box->FocusFirstControl();
    box->SetVisible(true);
    return box->Answered();
}

}  // namespace

void CloseMessageBoxes() {
    for (const WindowPtr& window : TopLevelWindows()) {
        if (auto* box = dynamic_cast<BoxWindow*>(window.get())) {
            box->Finish(0);
        }
    }
}

}  // namespace layer

int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT) {
    const auto answer = layer::OnMain([&]() -> std::shared_ptr<layer::Answer> {
        return layer::QuitPending() ? nullptr : layer::OpenBox(owner, text, caption);
    });
    if (answer == nullptr) {
        return 0;
    }
    if (layer::OnMainThread()) {
        layer::RunModalLoop([&] { return answer->Result.has_value(); });
    } else {
        std::unique_lock lock(answer->Mutex);
        answer->Changed.wait(lock, [&] { return answer->Result.has_value(); });
    }
    layer::ParkAtEnd();
    return answer->Result.value_or(0);
}
