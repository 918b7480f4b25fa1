#include "platform/linux/windows/dialogs.h"

#include <QApplication>
#include <QFontDatabase>
#include <QLineEdit>
#include <cmath>

#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/program_resources.h"
#include "platform/linux/windows/window_object.h"

namespace layer {

namespace {

// Pixels for the units of templates: a quarter of the font's average character wide, an eighth of its height
// high.
class DialogUnits {
  public:
    explicit DialogUnits(const QFont& font) {
        const QFontMetrics metrics(font);
        const QString letters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
        width_ = static_cast<int>(std::lround(metrics.horizontalAdvance(letters) / 52.0));
        height_ = metrics.height();
    }
    int X(int units) const { return (units * width_ + 2) / 4; }
    int Y(int units) const { return (units * height_ + 4) / 8; }

  private:
    int width_, height_;
};

// The template's font, or one that exists in its place; made smaller when the dialog would not fit into the
// width.
QFont DialogFont(const resource::Dialog& dialog, int mostWidth) {
    constexpr qreal smallest = 5, step = 0.5;  // points
    QFont font = QApplication::font();
    const QString family = QString::fromStdU16String(dialog.FontName);
    if (QFontDatabase::hasFamily(family)) {
        font.setFamily(family);
    }
    if (dialog.FontPoints > 0) {
        font.setPointSizeF(dialog.FontPoints);
    }
    while (DialogUnits(font).X(dialog.Width) > mostWidth && font.pointSizeF() > smallest) {
        font.setPointSizeF(font.pointSizeF() - step);
    }
    return font;
}

// Nothing where the dialog belongs in the middle.
std::optional<QPoint> CornerOf(const resource::Dialog& dialog, const DialogUnits& units,
                               const WindowObject* owner) {
    if ((dialog.Style & DialogCentred) != 0 || owner == nullptr || !owner->Visible()) {
        return std::nullopt;
    }
    return owner->Client()->mapToGlobal(QPoint(units.X(dialog.X), units.Y(dialog.Y)));
}

// Makes the dialog and sends it WM_INITDIALOG; null when it cannot be made, or destroyed itself.
std::shared_ptr<DialogWindow> MakeDialog(WORD number, WindowObject* parent, DialogWindow::Kind kind,
                                         DLGPROC procedure, LPARAM parameter) {
    const auto dialog = resource::FindDialog(ProgramResources(), number);
    if (!dialog) {
        return nullptr;
    }
    const bool page = kind == DialogWindow::Kind::Page;
    constexpr int frame = 2;
    const QFont font = DialogFont(*dialog, WorkArea().width() - frame);
    const DialogUnits units(font);
    const WindowInit init{
        .Parent = parent,
        .Child = page,
        .ClassName = u"Dialog",
        .Text = dialog->Title,
        .Style = dialog->Style,
        .Place = QRect(page ? units.X(dialog->X) : 0, page ? units.Y(dialog->Y) : 0, units.X(dialog->Width),
                       units.Y(dialog->Height)),
    };
    auto window = std::make_shared<DialogWindow>(init, kind, procedure);
    window->Widget()->setFont(font);
    window->SetText(dialog->Title);
    if (!page) {
        window->PlaceFrame(init.Place.size(), CornerOf(*dialog, units, parent));
    }
    Adopt(window);
    if (!window->MakeControls(*dialog, font)) {
        Destroy(*window);
        return nullptr;
    }
    const HWND first = window->Children().empty() ? nullptr : window->Children().front()->Handle();
    window->Message(WM_INITDIALOG, reinterpret_cast<WPARAM>(first), parameter);
    if (window->Gone()) {
        return nullptr;
    }
    window->FocusFirstControl();
    return window;
}

// Dialogs are owned by top-level windows, whichever child asks.
std::shared_ptr<DialogWindow> MakeOwnedDialog(LPCWSTR name, HWND owner, DialogWindow::Kind kind,
                                              DLGPROC procedure, LPARAM parameter) {
    const WindowPtr asker = FindWindowObject(owner);
    WindowObject* top = asker.get();
    while (top != nullptr && top->IsChild()) {
        top = top->Parent();
    }
    return MakeDialog(ResourceNumber(name), top, kind, procedure, parameter);
}

}  // namespace

DialogWindow::DialogWindow(const WindowInit& init, Kind kind, DLGPROC procedure)
    : WindowObject(init), kind_(kind), procedure_(procedure) {
    if (kind == Kind::Page) {
        auto* widget = new QWidget(init.Parent->Client());
        widget->setGeometry(init.Place);
        SetWidget(widget);
    } else {
        QWidget* owner = init.Parent != nullptr && init.Parent->Visible() ? init.Parent->Widget() : nullptr;
        frame_ = new DialogWidget(owner, *this, init.Style, kind == Kind::Modal);
        SetWidget(frame_, frame_->Client());
    }
    ReportSizes();
}

LRESULT DialogWindow::Message(UINT message, WPARAM wParam, LPARAM lParam) {
    const WindowPtr keep = shared_from_this();
    const INT_PTR result = procedure_ != nullptr ? procedure_(Handle(), message, wParam, lParam) : 0;
    if (result != 0 || Gone()) {
        return result;
    }
    if (message == WM_CLOSE) {
        // A dialog that does not look after its own end is cancelled.
        PostMessageW(Handle(), WM_COMMAND, IDCANCEL, 0);
        return 0;
    }
    return Default(message, wParam, lParam);
}

void DialogWindow::SetText(std::u16string text) {
    if (frame_ != nullptr) {
        frame_->SetCaption(QString::fromStdU16String(text));
    }
    WindowObject::SetText(std::move(text));
}

void DialogWindow::SetVisible(bool visible) {
    const bool shown = visible && !Visible();
    WindowObject::SetVisible(visible);
    if (shown && !IsChild()) {
        Activate();
    }
}

void DialogWindow::End(INT_PTR result) {
    if (kind_ == Kind::Modal && !ended_) {
        ended_ = true;
        result_ = result;
        WakeMainThread();
    }
    HideAndGiveFocusBack(*this);
}

void DialogWindow::PlaceFrame(const QSize& client, std::optional<QPoint> corner) {
    const QRect area = WorkArea();
    QRect place(QPoint(0, 0), frame_->OuterSize(client));
    if (corner) {
        place.moveTopLeft(*corner);
    } else {
        place.moveCenter(area.center());
    }
    place.moveLeft(std::max(area.left(), std::min(place.left(), area.right() + 1 - place.width())));
    place.moveTop(std::max(area.top(), std::min(place.top(), area.bottom() + 1 - place.height())));
    frame_->setFixedSize(place.size());
    frame_->setGeometry(place);
}

bool DialogWindow::MakeControls(const resource::Dialog& dialog, const QFont& font) {
    const DialogUnits units(font);
    for (const resource::Control& control : dialog.Controls) {
        WindowInit init;
        init.Parent = this;
        init.Child = true;
        init.ClassName = control.ClassName;
        init.Text = control.Text;
        init.Id = control.Id;
        init.Style = control.Style;
        init.Place =
            QRect(units.X(control.X), units.Y(control.Y), units.X(control.Width), units.Y(control.Height));
        init.Resource = control.TextResource;
        if (MakeControl(init) == nullptr) {
            return false;
        }
    }
    return true;
}

void DialogWindow::FocusFirstControl() {
    if (Widget()->focusWidget() != nullptr) {
        return;
    }
    for (const WindowPtr& child : Children()) {
        if ((child->Style() & (StyleTabStop | WS_VISIBLE | StyleDisabled)) == (StyleTabStop | WS_VISIBLE)) {
            child->Activate();
            if (auto* edit = qobject_cast<QLineEdit*>(child->Widget())) {
                edit->selectAll();
            }
            return;
        }
    }
}

WindowPtr MakePageDialog(WORD dialogTemplate, WindowObject& parent, DLGPROC procedure, LPARAM parameter) {
    return MakeDialog(dialogTemplate, &parent, DialogWindow::Kind::Page, procedure, parameter);
}

}  // namespace layer

INT_PTR DialogBoxParamW(HINSTANCE, LPCWSTR dialogTemplate, HWND owner, DLGPROC procedure, LPARAM parameter) {
    return layer::OnMain([=]() -> INT_PTR {
        const auto dialog = layer::MakeOwnedDialog(dialogTemplate, owner, layer::DialogWindow::Kind::Modal,
                                                   procedure, parameter);
        if (dialog == nullptr) {
            return -1;
        }
        if (!dialog->Ended()) {
            dialog->SetVisible(true);
        }
        layer::RunModalLoop([&] { return dialog->Ended() || dialog->Gone(); });
        layer::Destroy(*dialog);
        return dialog->Result();
    });
}

HWND CreateDialogParamW(HINSTANCE, LPCWSTR dialogTemplate, HWND owner, DLGPROC procedure, LPARAM parameter) {
    return layer::OnMain([=]() -> HWND {
        const auto dialog = layer::MakeOwnedDialog(dialogTemplate, owner, layer::DialogWindow::Kind::Modeless,
                                                   procedure, parameter);
        if (dialog != nullptr && (dialog->Style() & WS_VISIBLE) != 0) {
            dialog->SetVisible(true);
        }
        return dialog != nullptr ? dialog->Handle() : nullptr;
    });
}

BOOL EndDialog(HWND dialog, INT_PTR result) {
    return layer::OnMain([=] {
        const auto window = std::dynamic_pointer_cast<layer::DialogWindow>(layer::FindWindowObject(dialog));
        if (window == nullptr) {
            return FALSE;
        }
        window->End(result);
        return TRUE;
    });
}
