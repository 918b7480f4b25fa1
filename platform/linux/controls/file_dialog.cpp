// The dialog in which a file of the terminal is chosen.
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <algorithm>

#include "platform/linux/controls/file_names.h"
#include "platform/linux/windows/dialog_widget.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/shell.h"

namespace layer {

namespace {

constexpr int FingerHeight = 28;    // pixels
constexpr int TerminalWidth = 480;  // a screen up to this is filled
constexpr QSize DesktopSize = {400, 380};

QString Shown(const std::u16string& text) {
    return QString::fromStdU16String(text);
}

class FileDialog : public WindowObject {
  public:
    FileDialog(const WindowInit& init, const OPENFILENAMEW& wanted);

    LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam) override;
    bool Done() const { return Gone() || done_; }
    const std::u16string& Chosen() const { return chosen_; }  // empty: cancelled

  private:
    void Build();
    void Place();
    void OpenFolder(const std::u16string& folder);
    void List();
    void Accept();
    void Say(const char* message);
    std::u16string WithExtension(const std::u16string& path) const;

    DialogWidget* frame_;
    QToolButton* up_ = nullptr;
    QLineEdit *path_ = nullptr, *name_ = nullptr;
    QListWidget* list_ = nullptr;
    QComboBox* filter_ = nullptr;
    QLabel* message_ = nullptr;

    std::vector<FileFilter> filters_;
    std::u16string extension_;
    std::u16string folder_, chosen_;
    bool done_ = false;
};

FileDialog::FileDialog(const WindowInit& init, const OPENFILENAMEW& wanted)
    : WindowObject(init), filters_(ReadFilters(wanted.lpstrFilter)), extension_(wanted.lpstrDefExt) {
    QWidget* owner =
        init.Parent != nullptr && init.Parent->Visible() ? init.Parent->Widget()->window() : nullptr;
    frame_ = new DialogWidget(owner, *this, init.Style, true);
    frame_->SetCaption(Shown(init.Text));
    SetWidget(frame_, frame_->Client());
    Build();
    filter_->setCurrentIndex(static_cast<int>(wanted.nFilterIndex) - 1);
    name_->setText(QString::fromUtf16(wanted.lpstrFile));
    const std::u16string start = ResolveTyped(u"", wanted.lpstrInitialDir);
    OpenFolder(KindOfPath(start) == PathKind::Folder ? start : u"");
    Place();
}

void FileDialog::Build() {
    auto* grid = new QGridLayout(Client());
    grid->setContentsMargins(4, 4, 4, 4);
    grid->setSpacing(4);
    up_ = new QToolButton;
    up_->setIcon(frame_->style()->standardIcon(QStyle::SP_FileDialogToParent));
    up_->setMinimumSize(FingerHeight, FingerHeight);
    up_->setToolTip(QStringLiteral("Up one folder"));
    path_ = new QLineEdit;
    path_->setReadOnly(true);
    path_->setFocusPolicy(Qt::NoFocus);
    list_ = new QListWidget;
    list_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    name_ = new QLineEdit;
    name_->setPlaceholderText(QStringLiteral("File name"));
    name_->setMaxLength(MAX_PATH - 1);
    filter_ = new QComboBox;
    filter_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    for (const FileFilter& filter : filters_) {
        filter_->addItem(Shown(filter.Label));
    }
    message_ = new QLabel;
    message_->setWordWrap(true);
    message_->hide();
    auto* ok = new QPushButton(QStringLiteral("OK"));
    auto* cancel = new QPushButton(QStringLiteral("Cancel"));
    for (QWidget* touched : std::initializer_list<QWidget*>{name_, filter_, ok, cancel}) {
        touched->setMinimumHeight(FingerHeight);
    }
    grid->addWidget(up_, 0, 0);
    grid->addWidget(path_, 0, 1, 1, 3);
    grid->addWidget(list_, 1, 0, 1, 4);
    grid->addWidget(name_, 2, 0, 1, 4);
    grid->addWidget(filter_, 3, 0, 1, 4);
    grid->addWidget(message_, 4, 0, 1, 4);
    grid->addWidget(ok, 5, 2);
    grid->addWidget(cancel, 5, 3);
    ok->setDefault(true);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(1, 1);

    QObject::connect(up_, &QToolButton::clicked, frame_, [this] { OpenFolder(ParentFolder(folder_)); });
    QObject::connect(list_, &QListWidget::itemSelectionChanged, frame_, [this] {
        if (!list_->selectedItems().isEmpty()) {
            name_->setText(list_->selectedItems().front()->text());
        }
    });
    QObject::connect(list_, &QListWidget::itemDoubleClicked, frame_, [this] { Accept(); });
    QObject::connect(filter_, &QComboBox::currentIndexChanged, frame_, [this] { List(); });
    QObject::connect(name_, &QLineEdit::textEdited, frame_, [this] { Say(nullptr); });
    QObject::connect(ok, &QPushButton::clicked, frame_, [this] { Accept(); });
    QObject::connect(cancel, &QPushButton::clicked, frame_, [this] { frame_->reject(); });
    list_->setFocus();
}

void FileDialog::Place() {
    const QRect area = WorkArea();
    QRect place = area;
    if (area.width() > TerminalWidth) {
        place.setSize(frame_->OuterSize(DesktopSize).boundedTo(area.size()));
        place.moveCenter(area.center());
    }
    frame_->setGeometry(place);
}

void FileDialog::OpenFolder(const std::u16string& folder) {
    folder_ = folder;
    path_->setText(Shown(folder + (folder.empty() ? u"\\" : u"")));
    path_->setToolTip(path_->text());
    up_->setEnabled(!folder.empty());
    Say(nullptr);
    List();
}

void FileDialog::List() {
    list_->clear();
    const FileFilter& filter = filters_[static_cast<std::size_t>(filter_->currentIndex())];
    for (const FolderEntry& entry : ListFolder(folder_, filter.Patterns)) {
        auto* item = new QListWidgetItem(Shown(entry.Name), list_);
        item->setIcon(frame_->style()->standardIcon(entry.Folder ? QStyle::SP_DirIcon : QStyle::SP_FileIcon));
        item->setToolTip(item->text().toHtmlEscaped());
        item->setSizeHint(QSize(1, FingerHeight));
    }
}

void FileDialog::Say(const char* message) {
    message_->setText(QString::fromLatin1(message));
    message_->setVisible(message != nullptr);
}

// A name without an extension means the one with the default extension, unless it exists as it is.
std::u16string FileDialog::WithExtension(const std::u16string& path) const {
    const bool hasOne = path.find(u'.', path.rfind(u'\\')) != path.npos;
    return hasOne || extension_.empty() || KindOfPath(path) == PathKind::File ? path
                                                                              : path + u'.' + extension_;
}

void FileDialog::Accept() {
    const std::u16string typed = name_->text().trimmed().toStdU16String();
    if (typed.empty() || Done()) {
        return;
    }
    const std::u16string meant = ResolveTyped(folder_, typed);
    if (KindOfPath(meant) == PathKind::Folder) {
        name_->clear();
        OpenFolder(meant);
        return;
    }
    const std::u16string path = WithExtension(meant);
    const bool namesFolder = typed.back() == u'\\' || typed.back() == u'/';
    switch (namesFolder ? PathKind::Missing : KindOfPath(path)) {
        case PathKind::Unusable:
            Say("This name cannot be used.");
            return;
        case PathKind::Folder:
        case PathKind::Other:
            Say("This is no file.");
            return;
        case PathKind::Missing:
            if (namesFolder || KindOfPath(ParentFolder(path)) != PathKind::Folder) {
                Say("There is no such folder.");
                return;
            }
            break;
        case PathKind::File:
            break;
    }
    chosen_ = path;
    done_ = true;
    frame_->hide();
}

LRESULT FileDialog::Message(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CLOSE || (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL)) {
        done_ = true;
        return 0;
    }
    return WindowObject::Message(message, wParam, lParam);
}

BOOL AskForFile(OPENFILENAMEW& dialog) {
    const WindowPtr asker = FindWindowObject(dialog.hwndOwner);
    WindowInit init;
    init.Parent = asker.get();
    init.ClassName = u"Dialog";
    init.Text = u"Open";
    init.Style = StyleCaption | StyleSystemMenu;
    const auto window = std::make_shared<FileDialog>(init, dialog);
    Adopt(window);
    window->SetVisible(true);
    window->Activate();
    RunModalLoop([&] { return window->Done(); });
    const std::u16string chosen = window->Chosen();
    Destroy(*window);
    if (chosen.empty() || chosen.size() >= dialog.nMaxFile) {
        return FALSE;
    }
    *std::copy(chosen.begin(), chosen.end(), dialog.lpstrFile) = 0;
    return TRUE;
}

}  // namespace

}  // namespace layer

BOOL GetOpenFileNameW(OPENFILENAMEW* dialog) {
    return layer::OnMain(
        [=] { return dialog->lStructSize == sizeof *dialog ? layer::AskForFile(*dialog) : FALSE; });
}
