#include <QMessageBox>
#include <QPointer>
#include <condition_variable>
#include <mutex>

#include "platform/linux/kernel/main_thread.h"
#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/message_box.h"
#include "platform/linux/windows/window_object.h"

namespace layer {

namespace {

// Boxes that other threads wait for; open until dismissed or quit.
std::vector<QPointer<QMessageBox>>& OpenBoxes() {
    static auto* boxes = new std::vector<QPointer<QMessageBox>>;
    return *boxes;
}

QMessageBox* OpenBox(HWND owner, const QString& text, const QString& caption) {
    const WindowPtr window = FindWindowObject(owner);
    // An owner that is not to be seen places nothing.
    QWidget* parent = window != nullptr && window->Visible() ? window->Widget()->window() : nullptr;
    auto* box = new QMessageBox(QMessageBox::NoIcon, caption, text, QMessageBox::Ok, parent);
    box->setAttribute(Qt::WA_DeleteOnClose, false);
    box->setTextFormat(Qt::PlainText);
    box->setWindowModality(parent != nullptr ? Qt::WindowModal : Qt::NonModal);
    if (!HasWindowManager()) {
        // Nothing frames it: the caption has to be seen all the same.
        box->setText(caption);
        box->setInformativeText(text);
        box->setWindowFlag(Qt::WindowStaysOnTopHint);
    }
    box->show();
    const QRect area = WorkArea();
    box->move(area.center() - box->rect().center());
    box->raise();
    box->activateWindow();
    return box;
}

int AskHere(HWND owner, const QString& text, const QString& caption) {
    const QPointer<QMessageBox> box = OpenBox(owner, text, caption);
    // Its owner may go, and take it along.
    const bool dismissed = RunModalLoop([&] { return box == nullptr || !box->isVisible(); });
    if (box != nullptr) {
        box->hide();
        box->deleteLater();
    }
    return dismissed ? IDOK : 0;
}

struct Waiting {
    std::mutex Mutex;
    std::condition_variable Changed;
    int Result = -1;

    void Finish(int result) {
        std::scoped_lock lock(Mutex);
        if (Result < 0) {
            Result = result;
        }
        Changed.notify_all();
    }
};

// A box of another thread runs in no loop of its own, so that boxes of several threads end in any order.
int AskThere(HWND owner, const QString& text, const QString& caption) {
    SuspendPoint();
    auto waiting = std::make_shared<Waiting>();
    RunOnMainThread([&] {
        if (QuitPending()) {
            waiting->Finish(0);
            return;
        }
        QMessageBox* box = OpenBox(owner, text, caption);
        std::erase(OpenBoxes(), nullptr);
        OpenBoxes().emplace_back(box);
        QObject::connect(box, &QMessageBox::finished, box, [box, waiting](int result) {
            waiting->Finish(result == 0 && QuitPending() ? 0 : IDOK);
            box->deleteLater();
        });
        QObject::connect(box, &QObject::destroyed, [waiting] { waiting->Finish(0); });
    });
    int result;
    {
        std::unique_lock lock(waiting->Mutex);
        waiting->Changed.wait(lock, [&] { return waiting->Result >= 0; });
        result = waiting->Result;
    }
    SuspendPoint();
    return result;
}

}  // namespace

void CloseMessageBoxes() {
    const auto boxes = OpenBoxes();
    for (const QPointer<QMessageBox>& box : boxes) {
        if (box != nullptr) {
            box->done(0);
        }
    }
}

}  // namespace layer

int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT) {
    const QString shown = QString::fromUtf16(text != nullptr ? text : u"");
    const QString title = QString::fromUtf16(caption != nullptr ? caption : u"");
    return layer::OnMainThread() ? layer::AskHere(owner, shown, title) : layer::AskThere(owner, shown, title);
}
