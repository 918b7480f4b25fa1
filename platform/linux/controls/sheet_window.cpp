#include "platform/linux/controls/sheet_window.h"

#include <QGuiApplication>
#include <QScreen>
#include <QShortcut>
#include <algorithm>

#include "platform/linux/controls/sheet_layout.h"
#include "platform/linux/windows/dialogs.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/program_resources.h"
#include "platform/linux/windows/window_object.h"

namespace layer {

namespace {

constexpr int TabControlId = 0x3020;

constexpr int TerminalWidth = 480;         // a screen up to this is a terminal's
constexpr QSize DesktopSize = {360, 480};  // of the sheet on a larger one

constexpr int ButtonEdges = 14;  // beside its text, both sides

// What comes with WM_NOTIFY from a sheet.
struct SheetNotification {
    NMHDR Header;
    LPARAM Parameter;
};

bool OnTerminal() {
    return WorkArea().width() <= TerminalWidth;
}

QString Shown(const WindowPtr& button) {
    return QString::fromStdU16String(button->Text());
}

}  // namespace

SheetWindow::SheetWindow(const WindowInit& init, const PROPSHEETHEADERW& header)
    : WindowObject(init), fills_((header.dwFlags & PSH_MAXIMIZE) != 0 && OnTerminal()) {
    QWidget* owner = init.Parent != nullptr && init.Parent->Visible() ? init.Parent->Widget() : nullptr;
    // A terminal has no room for a caption that nobody needs.
    const DWORD caption = fills_ && !HasWindowManager() ? 0 : StyleCaption;
    frame_ = new DialogWidget(owner, *this, StyleSystemMenu | caption, false);
    frame_->SetCaption(QString::fromStdU16String(init.Text));
    SetWidget(frame_, frame_->Client());
    ReportSizes();
    for (UINT i = 0; i < header.nPages; ++i) {
        pages_.push_back({header.ppsp[i], nullptr});
    }
    if (fills_) {
        QObject::connect(QGuiApplication::primaryScreen(), &QScreen::availableGeometryChanged, frame_,
                         [this] { Place(); });
    }
}

void SheetWindow::MakeControls() {
    WindowInit init;
    init.Parent = this;
    init.Child = true;
    init.Style = WS_VISIBLE | StyleChild | StyleTabStop;
    init.ClassName = u"SysTabControl32";
    init.Id = TabControlId;
    tabs_ = std::make_shared<TabControl>(init);
    Adopt(tabs_);
    init.ClassName = u"Button";
    init.Id = IDOK;
    init.Text = u"OK";
    init.Style |= ButtonDefault;
    ok_ = MakeControl(init);
    init.Id = IDCANCEL;
    init.Text = u"Cancel";
    init.Style &= ~ButtonDefault;
    cancel_ = MakeControl(init);
    for (const Page& page : pages_) {
        tabs_->Bar()->addTab(QString::fromUtf16(page.Record.pszTitle));
    }
    tabs_->StyleChanged = [this] { Layout(); };
    QObject::connect(tabs_->Bar(), &QTabBar::currentChanged, frame_,
                     [this](int index) { OnTabChosen(index); });
    const auto turn = [this](const QKeySequence& keys, int step) {
        auto* shortcut = new QShortcut(keys, frame_);
        QObject::connect(shortcut, &QShortcut::activated, frame_, [this, step] {
            const int count = static_cast<int>(pages_.size());
            tabs_->Bar()->setCurrentIndex((shown_ + step + count) % count);
        });
    };
    turn(QKeySequence(Qt::CTRL | Qt::Key_Tab), 1);
    turn(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Backtab), -1);
}

bool SheetWindow::ShowPage(int index) {
    Page& page = pages_[static_cast<std::size_t>(index)];
    if (page.Window == nullptr) {
        const WindowPtr made = MakePageDialog(ResourceNumber(page.Record.pszTemplate), *this,
                                              page.Record.pfnDlgProc, reinterpret_cast<LPARAM>(&page.Record));
        if (made == nullptr || Gone()) {
            return false;
        }
        page.Window = made;
    }
    if (shown_ >= 0 && shown_ != index) {
        pages_[static_cast<std::size_t>(shown_)].Window->SetVisible(false);
    }
    shown_ = index;
    Layout();
    page.Window->SetVisible(true);
    const QSignalBlocker quiet(tabs_->Bar());
    tabs_->Bar()->setCurrentIndex(index);
    return true;
}

void SheetWindow::OnTabChosen(int index) {
    if (Gone() || index < 0 || index == shown_) {
        return;
    }
    const WindowPtr keep = shared_from_this();
    const bool byTabKeys = tabs_->Bar()->hasFocus();
    if (!ShowPage(index)) {
        if (!Gone() && shown_ >= 0) {
            const QSignalBlocker quiet(tabs_->Bar());
            tabs_->Bar()->setCurrentIndex(shown_);
        }
        return;
    }
    // Arrow keys go on from tab to tab; a finger wants the page.
    if (!byTabKeys) {
        QWidget* page = pages_[static_cast<std::size_t>(index)].Window->Widget();
        (page->focusWidget() != nullptr ? page->focusWidget() : page)->setFocus();
    }
}

void SheetWindow::Place() {
    const QRect area = WorkArea();
    if (fills_) {
        frame_->setGeometry(area);
        if (HasWindowManager()) {
            frame_->setWindowState(frame_->windowState() | Qt::WindowMaximized);
        }
        return;
    }
    // Where its owner is, which it hides, as far as it fits there.
    QRect place(area.topLeft(), frame_->OuterSize(DesktopSize).boundedTo(area.size()));
    if (const WindowObject* owner = Parent(); owner != nullptr && owner->Visible()) {
        place.moveTopLeft(owner->Widget()->mapToGlobal(QPoint(0, 0)));
    } else {
        place.moveCenter(area.center());
    }
    place.moveLeft(std::clamp(place.left(), area.left(), area.right() + 1 - place.width()));
    place.moveTop(std::clamp(place.top(), area.top(), area.bottom() + 1 - place.height()));
    frame_->setGeometry(place);
}

void SheetWindow::Layout() {
    if (Gone() || cancel_ == nullptr) {
        return;
    }
    const QFontMetrics metrics = ok_->Widget()->fontMetrics();
    const int text =
        std::max(metrics.horizontalAdvance(Shown(ok_)), metrics.horizontalAdvance(Shown(cancel_)));
    const SheetSizes sizes = {Client()->size(), tabs_->Bar()->sizeHint(),
                              QSize(text + ButtonEdges, ok_->Widget()->sizeHint().height()),
                              tabs_->AtBottom()};
    const SheetPlaces places = LayOutSheet(sizes);
    tabs_->SetPlace(places.Tabs);
    ok_->SetPlace(places.Ok);
    cancel_->SetPlace(places.Cancel);
    if (shown_ >= 0) {
        pages_[static_cast<std::size_t>(shown_)].Window->SetPlace(places.Page);
    }
}

LRESULT SheetWindow::Message(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND:
            if (LOWORD(wParam) == IDOK) {
                Apply();
            } else if (LOWORD(wParam) == IDCANCEL) {
                Cancel();
            }
            return 0;
        case WM_CLOSE:
            Cancel();
            return 0;
        case WM_SIZE:
            Layout();
            return 0;
        case PSM_ISDIALOGMESSAGE:
            // Its keys reach it through Qt.
            return FALSE;
        default:
            return WindowObject::Message(message, wParam, lParam);
    }
}

void SheetWindow::SetVisible(bool visible) {
    const bool shown = visible && !Visible();
    WindowObject::SetVisible(visible);
    if (shown) {
        Activate();
    }
}

// What a page's procedure answers says only whether it has handled the notification; no page objects.
void SheetWindow::Notify(WindowObject& page, UINT code) {
    SheetNotification notification{{Handle(), 0, code}, 0};
    page.Message(WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
}

void SheetWindow::Apply() {
    const WindowPtr keep = shared_from_this();
    for (const Page& page : pages_) {
        if (page.Window != nullptr && !Gone()) {
            Notify(*page.Window, PSN_APPLY);
        }
    }
}

void SheetWindow::Cancel() {
    if (shown_ < 0) {
        return;
    }
    const WindowPtr keep = shared_from_this();
    Notify(*pages_[static_cast<std::size_t>(shown_)].Window, PSN_QUERYCANCEL);
}

namespace {

bool MakesSense(const PROPSHEETHEADERW* header) {
    constexpr DWORD needed = PSH_PROPSHEETPAGE | PSH_MODELESS | PSH_USECALLBACK;
    return header->dwSize == sizeof *header && (header->dwFlags & needed) == needed &&
           header->nStartPage < header->nPages;
}

INT_PTR MakeSheet(const PROPSHEETHEADERW& header) {
    // There is one version of the controls here, whichever is wanted.
    header.pfnCallback(nullptr, PSCB_GETVERSION, 0);
    const WindowPtr owner = FindWindowObject(header.hwndParent);
    WindowInit init;
    init.Parent = owner.get();
    init.ClassName = u"Dialog";
    init.Style = StyleCaption | StyleSystemMenu;
    init.Text = header.pszCaption;
    const auto sheet = std::make_shared<SheetWindow>(init, header);
    Adopt(sheet);
    sheet->Place();
    sheet->MakeControls();
    header.pfnCallback(sheet->Handle(), PSCB_INITIALIZED, 0);
    const bool made = !sheet->Gone() && sheet->ShowPage(static_cast<int>(header.nStartPage));
    if (!made) {
        Destroy(*sheet);
        return -1;
    }
    sheet->SetVisible(true);
    return reinterpret_cast<INT_PTR>(sheet->Handle());
}

}  // namespace

}  // namespace layer

INT_PTR PropertySheetW(const PROPSHEETHEADERW* header) {
    return layer::OnMain(
        [=]() -> INT_PTR { return layer::MakesSense(header) ? layer::MakeSheet(*header) : -1; });
}
