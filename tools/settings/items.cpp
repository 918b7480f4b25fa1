#include "tools/settings/items.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <map>

#include "platform/base.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/window.h"
#include "resources/resource.h"
#include "settings/general_fields.h"
#include "settings/pages.h"

namespace {

bool SameText(std::string_view a, std::string_view b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

void AddGeneral(std::vector<Item>& items, SettingList list, bool onPage, bool present) {
    for (const Setting* setting : list) {
        items.push_back({setting, PageGeneral, 0, onPage && present, present});
    }
}

Relaxed<WORD>* WordsOf(const Item& item) {
    return WordOf(*item.Field, PageReader(item.Page));
}

std::size_t WordCount(const Item& item) {
    return item.Field->Encoding == SettingEncoding::Text ? TextWords : 1;
}

bool IsText(const Item& item) {
    return item.Field->Encoding == SettingEncoding::Text ||
           item.Field->Encoding == SettingEncoding::Character;
}

void Store(const Item& item, const std::vector<WORD>& words) {
    Relaxed<WORD>* to = WordsOf(item);
    for (std::size_t i = 0; i < WordCount(item); ++i) {
        to[i] = i < words.size() ? words[i] : WORD{0};
    }
}

// The words of a text field, when they are no more than a text.
std::optional<std::string> PlainText(const std::vector<WORD>& words) {
    const auto end = std::find(words.begin(), words.end(), WORD{0});
    if (words.size() > 1 &&
        (end == words.end() || std::any_of(end, words.end(), [](WORD w) { return w != 0; }))) {
        return std::nullopt;
    }
    const std::u16string text(words.begin(), end);
    const std::string utf8 = layer::ToUtf8(text);
    return layer::FromUtf8(utf8) == text ? std::optional(utf8) : std::nullopt;
}

std::string Quoted(const std::vector<std::string>& words, const char* last) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        text += (i == 0 ? "\"" : i + 1 == words.size() ? last : "\", \"") + words[i];
    }
    return text.empty() ? text : text + "\"";
}

}  // namespace

std::vector<Item> TerminalItems() {
    const ReaderType type = FittedReader();
    const bool barcode = type != ReaderType::None;
    std::vector<Item> items;
    for (const SettingGroup& group : GroupsOn(type)) {
        for (const SettingList list : {group.Switch, group.Items}) {
            for (const Setting* setting : list) {
                items.push_back({setting, LayoutOf(type)->Page, group.Label, true, true});
            }
        }
    }
    AddGeneral(items, OutputItems().first(OutputItemsWithoutBarcode), true, true);
    AddGeneral(items, OutputItems().subspan(OutputItemsWithoutBarcode), barcode, true);
    AddGeneral(items, ReaderItems(type), true, true);
    AddGeneral(items, RfidItems(), true, HasRfidReader() || !barcode);
    AddGeneral(items, ClosingItems(), true, true);
    if (type == ReaderType::Imager2D) {
        AddGeneral(items, HiddenItems(), false, true);
    }
    return items;
}

const Item* FindItem(const std::vector<Item>& items, std::string_view name) {
    const auto found =
        std::ranges::find_if(items, [name](const Item& item) { return name == item.Field->Name; });
    return found == items.end() ? nullptr : &*found;
}

std::string ResourceText(UINT id) {
    static std::map<UINT, std::string> found;
    const auto [entry, isNew] = found.try_emplace(id);
    if (isNew) {
        WCHAR text[200];
        LoadStringW(nullptr, id, text, std::size(text));
        entry->second = layer::ToUtf8(text);
    }
    return entry->second;
}

std::string ReaderName(ReaderType type) {
    return type == ReaderType::None ? "none"
                                    : ResourceText(IDS_CHOICE_READER_TYPE + static_cast<UINT>(type) - 1);
}

std::optional<ReaderType> ReaderByName(std::string_view name) {
    for (std::size_t i = 0; i < ReaderTypes; ++i) {
        const auto type = static_cast<ReaderType>(i);
        if (name == ReaderIdentities[i].Name || SameText(name, ReaderName(type))) {
            return type;
        }
    }
    return std::nullopt;
}

WORD ReaderFlag(ReaderType type) {
    return ReaderIdentities[static_cast<std::size_t>(type)].Bit;
}

std::string ItemLabel(const Item& item) {
    return ResourceText(ItemLabelId(item.Page, item.Field->ItemId));
}

std::string ItemHeading(const Item& item) {
    if (item.Group != 0) {
        return ResourceText(item.Group);
    }
    return item.Field->Group == ResetGroup::Rfid ? "RFID" : "General";
}

std::vector<std::string> ItemChoices(const Item& item) {
    const Setting& field = *item.Field;
    std::vector<std::string> choices;
    if (field.Encoding == SettingEncoding::Toggle) {
        for (const char digit : {'0', '1'}) {
            choices.push_back(ResourceText(field.TextBase + static_cast<UINT>(digit)));
        }
        return choices;
    }
    const WORD base = ItemChoiceBase(item.Page, field.ItemId);
    for (WORD i = 0; i < ItemChoiceCount(item.Page, field.ItemId); ++i) {
        choices.push_back(ResourceText(base + UINT{i}));
    }
    // The barcode reader among the active devices is called by its type.
    if (&field == &general::ActiveDevice && HasBarcodeReader()) {
        choices.front() = ReaderName(FittedReader());
    }
    return choices;
}

const SettingLimits& ItemRange(const Item& item) {
    return PlaceOf(*item.Field, PageReader(item.Page)).Limits;
}

std::string RangeText(const Item& item) {
    const SettingLimits& limits = ItemRange(item);
    if (IsText(item)) {
        return "up to " + std::to_string(limits.Maximum) +
               (limits.Maximum == 1 ? " character" : " characters");
    }
    if (item.Field->Encoding != SettingEncoding::Number) {
        return {};
    }
    constexpr const char* units[] = {"", ", seconds", ", tenths of a second"};
    return std::to_string(limits.Minimum) + " to " + std::to_string(limits.Maximum) +
           units[static_cast<int>(limits.Unit)];
}

ItemValue ReadItem(const Item& item) {
    ItemValue value;
    const Relaxed<WORD>* words = WordsOf(item);
    value.Words.assign(words, words + WordCount(item));
    const WORD word = value.Words.front();
    const std::vector<std::string> choices = ItemChoices(item);
    switch (item.Field->Encoding) {
        case SettingEncoding::Toggle:
        case SettingEncoding::List:
            value.Plain = word >= '0' && word < '0' + choices.size();
            if (value.Plain) {
                value.Chosen.push_back(choices[word - std::size_t{'0'}]);
            }
            break;
        case SettingEncoding::BitSet:
            value.Plain = word >= '0' && word < '0' + (1 << choices.size());
            for (std::size_t i = 0; value.Plain && i < choices.size(); ++i) {
                if ((word - '0') >> i & 1) {
                    value.Chosen.push_back(choices[i]);
                }
            }
            break;
        case SettingEncoding::Number:
            value.Plain = word >= ItemRange(item).Minimum && word <= ItemRange(item).Maximum;
            value.Text = std::to_string(word);
            break;
        case SettingEncoding::Text:
        case SettingEncoding::Character:
            if (const auto text = PlainText(value.Words)) {
                value.Plain = true;
                value.Text = *text;
            }
            break;
    }
    return value;
}

std::string ValueText(const Item& item, const ItemValue& value) {
    const Setting& field = *item.Field;
    const WORD word = value.Words.front();
    if (field.Encoding == SettingEncoding::Number) {
        switch (ItemRange(item).Unit) {
            case NumberUnit::Seconds:
                return std::to_string(word) + " s";
            case NumberUnit::TenthsOfSecond:
                return std::to_string(word / 10) + "." + std::to_string(word % 10) + " s";
            case NumberUnit::None:
                return std::to_string(word);
        }
    }
    if (!value.Plain) {
        return "(word " + std::to_string(word) + (WordCount(item) > 1 ? " ...)" : ")");
    }
    if (IsText(item)) {
        return "\"" + value.Text + "\"";
    }
    std::string text;
    for (const std::string& choice : value.Chosen) {
        text += (text.empty() ? "" : ", ") + choice;
    }
    return text;
}

std::string SetChosen(const Item& item, const std::vector<std::string>& chosen) {
    const std::vector<std::string> choices = ItemChoices(item);
    if (choices.empty()) {
        return "takes no choice";
    }
    const bool bits = item.Field->Encoding == SettingEncoding::BitSet;
    if (!bits && chosen.size() != 1) {
        return "takes one choice";
    }
    WORD value = 0;
    for (const std::string& wanted : chosen) {
        // Some choices differ in letter case alone.
        auto found = std::ranges::find(choices, wanted);
        if (found == choices.end()) {
            found =
                std::ranges::find_if(choices, [&](const auto& choice) { return SameText(choice, wanted); });
        }
        if (found == choices.end()) {
            return "has no choice \"" + wanted + "\"; it takes " + Quoted(choices, "\" or \"");
        }
        const auto index = static_cast<unsigned>(found - choices.begin());
        value = static_cast<WORD>(bits ? value | 1u << index : index);
    }
    Store(item, {static_cast<WORD>('0' + value)});
    return {};
}

std::string SetNumber(const Item& item, long long number) {
    const SettingLimits& limits = ItemRange(item);
    if (item.Field->Encoding != SettingEncoding::Number) {
        return "takes no number";
    }
    if (number < limits.Minimum || number > limits.Maximum) {
        return "takes " + RangeText(item) + ", not " + std::to_string(number);
    }
    Store(item, {static_cast<WORD>(number)});
    return {};
}

std::string SetItemText(const Item& item, std::string_view text) {
    if (!IsText(item)) {
        return "takes no text";
    }
    const std::u16string words = layer::FromUtf8(text);
    if (words.size() > ItemRange(item).Maximum) {
        return "takes " + RangeText(item);
    }
    if (words.find(u'\0') != std::u16string::npos) {
        return "takes no zero character";
    }
    if (layer::ToUtf8(words) != text) {
        return "takes text in UTF-8";
    }
    Store(item, {words.begin(), words.end()});
    return {};
}

std::string SetWords(const Item& item, const std::vector<long long>& words) {
    if (words.size() != WordCount(item)) {
        return "has " + std::to_string(WordCount(item)) + " words";
    }
    if (std::ranges::any_of(words, [](long long word) { return word < 0 || word > 0xFFFF; })) {
        return "has words from 0 to 65535";
    }
    std::vector<WORD> stored;
    for (const long long word : words) {
        stored.push_back(static_cast<WORD>(word));
    }
    Store(item, stored);
    return {};
}

std::string SetFromArgument(const Item& item, std::string_view value) {
    if (IsText(item)) {
        return SetItemText(item, value);
    }
    if (item.Field->Encoding == SettingEncoding::Number) {
        long long number = 0;
        const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
        if (error != std::errc{} || end != value.data() + value.size()) {
            return "takes " + RangeText(item);
        }
        return SetNumber(item, number);
    }
    if (item.Field->Encoding == SettingEncoding::Toggle) {
        for (const char* on : {"yes", "on", "true", "1"}) {
            if (SameText(value, on)) {
                return SetChosen(item, {ItemChoices(item)[1]});
            }
        }
        for (const char* off : {"no", "off", "false", "0"}) {
            if (SameText(value, off)) {
                return SetChosen(item, {ItemChoices(item)[0]});
            }
        }
    }
    std::vector<std::string> chosen;
    if (item.Field->Encoding != SettingEncoding::BitSet) {
        chosen.emplace_back(value);
    } else {
        while (!value.empty()) {
            const std::size_t comma = std::min(value.find(','), value.size());
            chosen.emplace_back(value.substr(0, comma));
            value.remove_prefix(std::min(comma + 1, value.size()));
        }
    }
    return SetChosen(item, chosen);
}
