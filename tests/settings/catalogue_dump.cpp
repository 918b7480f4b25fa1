#include "tests/settings/catalogue_dump.h"

#include <cstdio>

#include "platform/linux/kernel/terminal.h"
#include "platform/linux/resources/embedded.h"
#include "platform/linux/resources/resource_file.h"
#include "settings/catalogue.h"
#include "settings/pages.h"

namespace {

std::string Text(unsigned number) {
    const auto text = resource::FindString(CompiledResources(), static_cast<std::uint16_t>(number));
    return !text.empty() ? layer::ToUtf8(text) : "?" + std::to_string(number);
}

std::string Number(DWORD pageBase, DWORD itemId) {
    char text[16];
    std::snprintf(text, sizeof text, pageBase == PageLaser || pageBase == PageImager ? "0x%04X" : "%u",
                  static_cast<unsigned>(itemId));
    return text;
}

std::string Limits(DWORD pageBase, DWORD itemId) {
    const Setting* setting = FindSetting(pageBase, itemId);
    const SettingLimits& limits = PlaceOf(*setting, PageReader(pageBase)).Limits;
    const char* units[] = {"", " s", " s/10"};
    return " (" + std::to_string(limits.Minimum) + " to " + std::to_string(limits.Maximum) +
           units[static_cast<int>(limits.Unit)] + ")";
}

std::string Choices(DWORD pageBase, DWORD itemId, WORD value) {
    const bool bits = FindSetting(pageBase, itemId)->Encoding == SettingEncoding::BitSet;
    std::string text;
    for (WORD i = 0; i < ItemChoiceCount(pageBase, itemId); ++i) {
        const bool chosen = bits ? (value - '0') >> i & 1 : value == '0' + i;
        text +=
            std::string(i ? " | " : "") + (chosen ? "*" : "") + Text(ItemChoiceBase(pageBase, itemId) + i);
    }
    return "[" + text + "]";
}

std::string Line(DWORD pageBase, DWORD itemId) {
    std::string line = Number(pageBase, itemId) + " " + Text(ItemLabelId(pageBase, itemId));
    if (!FindSetting(pageBase, itemId))
        return line;  // a heading
    const bool byIndex = pageBase == Page1D;
    const ItemPosition position = SplitItemId(pageBase, itemId);
    const DWORD item = byIndex ? position.Index : itemId;
    WCHAR value[TextWords] = {};
    DWORD status = 0;
    const DWORD size = AccessSettingItem(MakePageCode(pageBase, 0), itemId, &status, value);
    const WORD word = static_cast<WORD>(value[0]);
    switch (ItemKind(byIndex ? position.Group : 0, item)) {
        case KindList:
            return line + ": " + Choices(pageBase, itemId, word);
        case KindToggle:
            return line + ": " + Text(ToggleTextId(pageBase, item, word));
        case KindNumber:
            return line + ": " + std::to_string(word) + Limits(pageBase, itemId);
        case KindText: {
            std::string text;
            for (DWORD i = 0; i < size / 2; ++i)
                text += static_cast<char>(value[i]);
            return line + ": \"" + text + "\"" + Limits(pageBase, itemId);
        }
        default:
            return line + ": of no kind";
    }
}

std::string DumpPage(DWORD pageBase) {
    std::string text = "page " + std::to_string(pageBase) + "\n";
    for (const WORD root : PageList(pageBase)) {
        text += "  " + Line(pageBase, root) + "\n";
        for (const WORD child : GroupItems(pageBase, root)) {
            const DWORD itemId = pageBase == Page1D ? DWORD{root} + child : DWORD{child};
            text += "    " + Line(pageBase, itemId) + "\n";
        }
    }
    return text;
}

}  // namespace

std::string DumpPages() {
    std::string text;
    if (FittedReader() != ReaderType::None) {
        const DWORD bases[] = {0, Page1D, PageLaser, PageImager};
        text += DumpPage(bases[static_cast<int>(FittedReader())]);
    }
    return text + DumpPage(PageGeneral);
}

std::string DumpHiddenItems() {
    std::string text;
    for (const Setting* setting : HiddenItems())
        text += "  " + Line(PageGeneral, setting->ItemId) + "\n";
    return text;
}
