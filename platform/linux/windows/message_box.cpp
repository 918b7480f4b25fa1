#include "platform/linux/windows/message_box.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "platform/linux/kernel/main_thread.h"
#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/dialogs.h"
#include "platform/linux/windows/styles.h"

namespace layer {

namespace {

constexpr int Margin = 10;              // pixels
constexpr int WidestText = 320;         // before it goes on in another line
constexpr QSize ButtonSize = {72, 30};  // what a finger finds

// A dialog with a text and an OK button.
class BoxWindow : public DialogWindow {
  public:
    explicit BoxWindow(const WindowInit& init) : DialogWindow(init, Kind::Modal, nullptr) {}

    // Called once: with IDOK when the user has dismissed it, with 0 when it goes without.
    std::function<void(int)> Finished;

    void Finish(int result) {
        End(result);
        if (const auto finished = std::exchange(Finished, nullptr)) {
            finished(result);
        }
    }
    LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_CLOSE || message == WM_COMMAND) {
            Finish(IDOK);
            return 0;
        }
        return Default(message, wParam, lParam);
    }

  protected:
    void OnGone() override { Finish(0); }
};

// Boxes that other threads wait for; open until dismissed or quit.
std::vector<std::weak_ptr<BoxWindow>>& OpenBoxes() {
    static auto* boxes = new std::vector<std::weak_ptr<BoxWindow>>;
    return *boxes;
}

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

std::shared_ptr<BoxWindow> OpenBox(HWND owner, const std::u16string& text, const std::u16string& caption) {
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
    return box;
}

int AskHere(HWND owner, const std::u16string& text, const std::u16string& caption) {
    int result = 0;
    bool finished = false;
    const auto box = OpenBox(owner, text, caption);
    box->Finished = [&](int how) {
        result = how;
        finished = true;
    };
    box->SetVisible(true);
    RunModalLoop([&] { return finished; });
    box->Finished = nullptr;
    Destroy(*box);
    return result;
}

struct Waiting {
    std::mutex Mutex;
    std::condition_variable Changed;
    int Result = -1;

    void Finish(int result) {
        std::scoped_lock lock(Mutex);
        Result = result;
        Changed.notify_all();
    }
};

// A box of another thread runs in no loop of its own, so that boxes of several threads end in any order.
int AskThere(HWND owner, const std::u16string& text, const std::u16string& caption) {
    ParkAtEnd();
    auto waiting = std::make_shared<Waiting>();
    RunOnMainThread([&] {
        if (QuitPending()) {
            waiting->Finish(0);
            return;
        }
        const auto box = OpenBox(owner, text, caption);
        std::erase_if(OpenBoxes(), [](const auto& known) { return known.expired(); });
        OpenBoxes().push_back(box);
        box->Finished = [waiting, handle = box->Handle()](int result) {
            waiting->Finish(result);
            if (const WindowPtr finished = FindWindowObject(handle)) {
                Destroy(*finished);
            }
        };
        box->SetVisible(true);
    });
    std::unique_lock lock(waiting->Mutex);
    waiting->Changed.wait(lock, [&] { return waiting->Result >= 0; });
    const int result = waiting->Result;
    lock.unlock();
    ParkAtEnd();
    return result;
}

}  // namespace

void CloseMessageBoxes() {
    const auto boxes = OpenBoxes();
    for (const auto& known : boxes) {
        if (const auto box = known.lock()) {
            box->Finish(0);
        }
    }
}

}  // namespace layer

int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT) {
    const std::u16string shown = text != nullptr ? text : u"";
    const std::u16string title = caption != nullptr ? caption : u"";
    return layer::OnMainThread() ? layer::AskHere(owner, shown, title) : layer::AskThere(owner, shown, title);
}
