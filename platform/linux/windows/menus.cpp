// Menus; the menu bar and the input panel of a handheld's shell, of which there is neither here.
#include <QGuiApplication>
#include <QMenu>
#include <QPointer>
#include <QScreen>

#include "platform/linux/kernel/handle_table.h"
#include "platform/linux/windows/dialogs.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/program_resources.h"
#include "platform/linux/windows/window_object.h"
#include "platform/shell.h"

namespace layer {

namespace {

// Popups are menus with handles of their own that go with the whole. Main thread.
HandleTable<HMENU, QPointer<QMenu>>& Table() {
    static auto* table = new HandleTable<HMENU, QPointer<QMenu>>(0x40000);
    return *table;
}

QPointer<QMenu> Open;  // being tracked

void Fill(QMenu& menu, const std::vector<resource::MenuItem>& items) {
    for (const resource::MenuItem& item : items) {
        const QString text = QString::fromStdU16String(item.Text);
        if (item.Popup) {
            Fill(*menu.addMenu(text), item.Items);
        } else if (item.Id == 0 && text.isEmpty()) {
            menu.addSeparator();
        } else {
            // Its first letter chooses it, as in every Windows program, underlined or not.
            menu.addAction(text.contains('&') ? text : '&' + text)->setData(item.Id);
        }
    }
}

QAction* FindItem(const QMenu* menu, UINT id) {
    QAction* found = nullptr;
    for (QAction* action : menu != nullptr ? menu->actions() : QList<QAction*>()) {
        if (action->menu() != nullptr) {
            found = FindItem(action->menu(), id);
        } else if (!action->isSeparator() && action->data().toUInt() == id) {
            found = action;
        }
        if (found != nullptr) {
            break;
        }
    }
    return found;
}

QPoint PlaceMenu(const QSize& size, UINT flags, int x, int y) {
    QPoint corner(x, y);
    if ((flags & TPM_RIGHTALIGN) != 0) {
        corner.rx() -= size.width();
    }
    if ((flags & TPM_BOTTOMALIGN) != 0) {
        corner.ry() -= size.height();
    }
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QRect area = screen != nullptr ? screen->availableGeometry() : WorkArea();
    corner.setX(std::max(area.left(), std::min(corner.x(), area.right() + 1 - size.width())));
    corner.setY(std::max(area.top(), std::min(corner.y(), area.bottom() + 1 - size.height())));
    return corner;
}

BOOL Track(QMenu& menu, UINT flags, int x, int y, HWND window) {
    ClosePopup();
    UINT chosen = 0;
    const QPointer<QMenu> popup = &menu;
    const auto listening = QObject::connect(
        popup, &QMenu::triggered, [&chosen](const QAction* action) { chosen = action->data().toUInt(); });
    Open = popup;
    popup->popup(PlaceMenu(popup->sizeHint(), flags, x, y));
    // It hides itself before it tells what was chosen; both happen in one event.
    RunModalLoop([&] { return popup == nullptr || !popup->isVisible(); });
    QObject::disconnect(listening);
    if (popup != nullptr) {
        popup->hide();
    }
    if (chosen != 0) {
        PostMessageW(window, WM_COMMAND, chosen, 0);
    }
    return TRUE;
}

}  // namespace

void ClosePopup() {
    if (Open != nullptr) {
        Open->close();
    }
}

}  // namespace layer

HMENU LoadMenuW(HINSTANCE, LPCWSTR name) {
    return layer::OnMain([=]() -> HMENU {
        const auto items = resource::FindMenu(layer::ProgramResources(), layer::ResourceNumber(name));
        if (items.empty()) {
            return nullptr;
        }
        auto* menu = new QMenu;
        layer::Fill(*menu, items);
        return layer::Table().Add(menu);
    });
}

HMENU GetSubMenu(HMENU menu, int position) {
    return layer::OnMain([=]() -> HMENU {
        const QPointer<QMenu> found = layer::Table().Find(menu);
        const QAction* item = found != nullptr ? found->actions().value(position) : nullptr;
        return item != nullptr && item->menu() != nullptr ? layer::Table().Add(item->menu()) : nullptr;
    });
}

BOOL DestroyMenu(HMENU menu) {
    return layer::OnMain([=] {
        const QPointer<QMenu> found = layer::Table().Find(menu);
        if (found == nullptr) {
            return FALSE;
        }
        // A popup takes the menu it was loaded with along: nobody else holds that.
        QWidget* whole = found;
        while (whole->parentWidget() != nullptr) {
            whole = whole->parentWidget();
        }
        layer::ClosePopup();
        whole->deleteLater();  // and with it what the handles stand for
        return TRUE;
    });
}

DWORD CheckMenuItem(HMENU menu, UINT id, UINT flags) {
    return layer::OnMain([=]() -> DWORD {
        QAction* item = layer::FindItem(layer::Table().Find(menu), id);
        if (item == nullptr) {
            return 0xFFFFFFFFu;
        }
        const bool before = item->isChecked();
        item->setCheckable((flags & MF_CHECKED) != 0);
        item->setChecked((flags & MF_CHECKED) != 0);
        return before ? MF_CHECKED : MF_UNCHECKED;
    });
}

BOOL EnableMenuItem(HMENU menu, UINT id, UINT flags) {
    return layer::OnMain([=]() -> BOOL {
        QAction* item = layer::FindItem(layer::Table().Find(menu), id);
        if (item != nullptr) {
            item->setEnabled((flags & MF_GRAYED) == 0);
        }
        return item != nullptr ? TRUE : -1;
    });
}

BOOL TrackPopupMenuEx(HMENU menu, UINT flags, int x, int y, HWND window, TPMPARAMS*) {
    return layer::OnMain([=] {
        const QPointer<QMenu> found = layer::Table().Find(menu);
        return found != nullptr && IsWindow(window) ? layer::Track(*found, flags, x, y, window) : FALSE;
    });
}

// The bar is a window of no height at the bottom of its parent's area, so that whoever takes its height off
// the screen's loses nothing.
BOOL SHCreateMenuBar(SHMENUBARINFO* info) {
    return layer::OnMain([=] {
        const layer::WindowPtr parent = layer::FindWindowObject(info->hwndParent);
        if (info->cbSize != sizeof(SHMENUBARINFO) || parent == nullptr) {
            return FALSE;
        }
        layer::WindowInit init;
        init.Parent = parent.get();
        init.Child = true;
        init.ClassName = u"menu_worker";
        init.Place = QRect(0, parent->Client()->height(), parent->Client()->width(), 0);
        info->hwndMB = layer::Adopt(
            std::make_shared<layer::DialogWindow>(init, layer::DialogWindow::Kind::Page, nullptr));
        return TRUE;
    });
}

BOOL SipGetInfo(SIPINFO* info) {
    return layer::OnMain([=] {
        if (info->cbSize != sizeof(SIPINFO)) {
            return FALSE;
        }
        const QRect area = layer::WorkArea();
        info->fdwFlags = 0;
        info->rcVisibleDesktop = {area.x(), area.y(), area.x() + area.width(), area.y() + area.height()};
        info->rcSipRect = {};
        return TRUE;
    });
}
