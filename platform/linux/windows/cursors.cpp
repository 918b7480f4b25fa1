// The program's pointer, an arrow or the sign for waiting. Any thread; nobody waits for it to change.
#include <QApplication>
#include <atomic>

#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/program_resources.h"

namespace layer {

namespace {

constexpr std::uintptr_t ArrowNumber = 0x30001, WaitNumber = 0x30002;

std::atomic<std::uintptr_t> Current{ArrowNumber};

void ShowCursor() {
    QApplication::restoreOverrideCursor();
    // Whoever shows it waiting may be about to keep the main thread: no later event is needed.
    if (Current == WaitNumber) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
    }
}

}  // namespace

}  // namespace layer

HCURSOR LoadCursorW(HINSTANCE, LPCWSTR name) {
    layer::ParkAtEnd();
    const bool wait = layer::ResourceNumber(name) == layer::ResourceNumber(IDC_WAIT);
    return wait ? reinterpret_cast<HCURSOR>(layer::WaitNumber) : nullptr;
}

HCURSOR GetCursor() {
    layer::ParkAtEnd();
    return reinterpret_cast<HCURSOR>(layer::Current.load());
}

HCURSOR SetCursor(HCURSOR cursor) {
    layer::ParkAtEnd();
    const auto before = layer::Current.exchange(reinterpret_cast<std::uintptr_t>(cursor));
    if (layer::OnMainThread()) {
        layer::ShowCursor();
    } else {
        layer::PostToMainThread(layer::ShowCursor);
    }
    return reinterpret_cast<HCURSOR>(before);
}
