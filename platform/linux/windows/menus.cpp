#include "platform/linux/windows/menus.h"

#include <QGuiApplication>
#include <QMenu>
#include <QPointer>
#include <QScreen>
#include <map>

#include "platform/linux/windows/on_main.h"
#include "platform/linux/windows/program_resources.h"
#include "platform/linux/windows/window_object.h"

namespace layer {

namespace {

// A menu as loaded; popups are menus with handles of their own that go with the whole. Main thread.
struct Menu {
    std::shared_ptr<std::vector<resource::MenuItem>> Root;  // keeps Items alive
    std::vector<resource::MenuItem>* Items = nullptr;
};

struct MenuTable {
    std::map<std::uintptr_t, Menu> Menus;
    std::uintptr_t Last = 0x40000;
    QPointer<QMenu> Open;  // being tracked, made from OpenRoot
    const std::vector<resource::MenuItem>* OpenRoot = nullptr;
};

MenuTable& Table() {
    static auto* table = new MenuTable;
    return *table;
}

Menu* Find(HMENU menu) {
    const auto found = Table().Menus.find(reinterpret_cast<std::uintptr_t>(menu));
    return found != Table().Menus.end() ? &found->second : nullptr;
}

HMENU Enter(const Menu& menu) {
    MenuTable& table = Table();
    for (const auto& [number, known] : table.Menus) {
        if (known.Items == menu.Items) {
            return reinterpret_cast<HMENU>(number);
        }
    }
    table.Menus[++table.Last] = menu;
    return reinterpret_cast<HMENU>(table.Last);
}

resource::MenuItem* FindItem(std::vector<resource::MenuItem>& items, UINT id) {
    for (resource::MenuItem& item : items) {
        if (item.Popup) {
            if (resource::MenuItem* inner = FindItem(item.Items, id)) {
                return inner;
            }
        } else if (!item.Separator && item.Id == id) {
            return &item;
        }
    }
    return nullptr;
}

// Changes the flags under the mask; the flags before, or all ones without such an item.
DWORD ChangeFlags(HMENU menu, UINT id, std::uint16_t mask, UINT flags) {
    return OnMain([=]() -> DWORD {
        Menu* found = Find(menu);
        resource::MenuItem* item = found != nullptr ? FindItem(*found->Items, id) : nullptr;
        if (item == nullptr) {
            return 0xFFFFFFFFu;
        }
        const DWORD before = item->Flags & mask;
        item->Flags = static_cast<std::uint16_t>((item->Flags & ~mask) | (flags & mask));
        return before;
    });
}

// `chosen` gets the id of the item that the user takes.
void FillMenu(QMenu& menu, const std::vector<resource::MenuItem>& items, UINT& chosen) {
    for (const resource::MenuItem& item : items) {
        if (item.Separator) {
            menu.addSeparator();
            continue;
        }
        const QString text = QString::fromStdU16String(item.Text);
        QAction* action;
        if (item.Popup) {
            QMenu* inner = menu.addMenu(text);
            FillMenu(*inner, item.Items, chosen);
            action = inner->menuAction();
        } else {
            action = menu.addAction(text);
            QObject::connect(action, &QAction::triggered, [&chosen, id = item.Id] { chosen = id; });
            action->setCheckable((item.Flags & resource::MenuChecked) != 0);
            action->setChecked((item.Flags & resource::MenuChecked) != 0);
        }
        action->setEnabled((item.Flags & (resource::MenuGrayed | resource::MenuDisabled)) == 0);
    }
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

BOOL Track(const Menu& menu, UINT flags, int x, int y, HWND window) {
    ClosePopup();
    UINT chosen = 0;
    {
        QMenu popup;
        FillMenu(popup, *menu.Items, chosen);
        Table().Open = &popup;
        Table().OpenRoot = menu.Root.get();
        popup.popup(PlaceMenu(popup.sizeHint(), flags, x, y));
        // It hides itself before it tells what was chosen; both happen in one event.
        RunModalLoop([&] { return !popup.isVisible(); });
        popup.hide();
    }
    if (chosen != 0) {
        PostMessageW(window, WM_COMMAND, chosen, 0);
    }
    return TRUE;
}

}  // namespace

void ClosePopup() {
    if (Table().Open != nullptr) {
        Table().Open->close();
    }
}

}  // namespace layer

HMENU LoadMenuW(HINSTANCE, LPCWSTR name) {
    return layer::OnMain([=]() -> HMENU {
        auto items = resource::FindMenu(layer::ProgramResources(), layer::ResourceNumber(name));
        if (!items) {
            return nullptr;
        }
        auto root = std::make_shared<std::vector<resource::MenuItem>>(std::move(*items));
        return layer::Enter({root, root.get()});
    });
}

HMENU GetSubMenu(HMENU menu, int position) {
    return layer::OnMain([=]() -> HMENU {
        const layer::Menu* found = layer::Find(menu);
        if (found == nullptr || position < 0 || static_cast<std::size_t>(position) >= found->Items->size() ||
            !(*found->Items)[static_cast<std::size_t>(position)].Popup) {
            return nullptr;
        }
        return layer::Enter({found->Root, &(*found->Items)[static_cast<std::size_t>(position)].Items});
    });
}

BOOL DestroyMenu(HMENU menu) {
    return layer::OnMain([=] {
        const layer::Menu* found = layer::Find(menu);
        if (found == nullptr) {
            return FALSE;
        }
        // A popup takes the menu it was loaded with along: nobody else holds that.
        const std::shared_ptr<std::vector<resource::MenuItem>> root = found->Root;
        if (layer::Table().OpenRoot == root.get()) {
            layer::ClosePopup();
        }
        std::erase_if(layer::Table().Menus, [&](const auto& entry) { return entry.second.Root == root; });
        return TRUE;
    });
}

DWORD CheckMenuItem(HMENU menu, UINT id, UINT flags) {
    return layer::ChangeFlags(menu, id, resource::MenuChecked, flags);
}

BOOL EnableMenuItem(HMENU menu, UINT id, UINT flags) {
    constexpr std::uint16_t mask = resource::MenuGrayed | resource::MenuDisabled;
    return static_cast<BOOL>(layer::ChangeFlags(menu, id, mask, flags));
}

BOOL TrackPopupMenuEx(HMENU menu, UINT flags, int x, int y, HWND window, TPMPARAMS*) {
    return layer::OnMain([=] {
        const layer::Menu* found = layer::Find(menu);
        if (found == nullptr || IsWindow(window) == FALSE) {
            return FALSE;
        }
        return layer::Track(layer::Menu(*found), flags, x, y, window);
    });
}
