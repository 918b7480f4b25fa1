// The platform's call that makes a property sheet.
#include "platform/linux/controls/sheet_window.h"
#include "platform/linux/windows/on_main.h"
#include "platform/linux/windows/program_resources.h"
#include "platform/linux/windows/styles.h"

namespace layer {

namespace {

constexpr UINT MostPages = 100;

bool MakesSense(const PROPSHEETHEADERW* header) {
    constexpr DWORD needed = PSH_PROPSHEETPAGE | PSH_MODELESS;
    return header != nullptr && header->dwSize == sizeof *header && (header->dwFlags & needed) == needed &&
           header->nPages > 0 && header->nPages <= MostPages && header->ppsp != nullptr;
}

INT_PTR MakeSheet(const PROPSHEETHEADERW& header) {
    const bool asked = (header.dwFlags & PSH_USECALLBACK) != 0 && header.pfnCallback != nullptr;
    if (asked) {
        // There is one version of the controls here, whichever is wanted.
        header.pfnCallback(nullptr, PSCB_GETVERSION, 0);
    }
    const WindowPtr owner = FindWindowObject(header.hwndParent);
    WindowInit init;
    init.Parent = owner.get();
    init.ClassName = u"Dialog";
    init.Style = StyleCaption | StyleSystemMenu;
    if (header.pszCaption != nullptr && ResourceNumber(header.pszCaption) == 0) {
        init.Text = header.pszCaption;
    }
    const auto sheet = std::make_shared<SheetWindow>(init, header);
    Adopt(sheet);
    sheet->Place();
    bool made = sheet->MakeControls();
    if (made && asked) {
        header.pfnCallback(sheet->Handle(), PSCB_INITIALIZED, 0);
    }
    const UINT start = header.nStartPage < header.nPages ? header.nStartPage : 0;
    made = made && !sheet->Gone() && sheet->ShowPage(static_cast<int>(start));
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
