#include "tools/settings/text_form.h"

#define TOML_EXCEPTIONS 0
#include <toml++/toml.h>

#include <array>
#include <charconv>
#include <set>

#include "settings/settings_change.h"
#include "tools/settings/items.h"

namespace {

constexpr std::int64_t Format = 1;

std::string TomlText(std::string_view text) {
    std::string quoted = "\"";
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            quoted += '\\';
            quoted += character;
        } else if (byte < 0x20 || byte == 0x7F) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04X", byte);
            quoted += escape;
        } else {
            quoted += character;
        }
    }
    return quoted + "\"";
}

std::string TomlTexts(const std::vector<std::string>& texts, const char* between) {
    std::string list;
    for (const std::string& text : texts) {
        list += (list.empty() ? "" : between) + TomlText(text);
    }
    return list;
}

std::string TomlValue(const Item& item, const ItemValue& value) {
    if (!value.Plain) {
        std::string words;
        for (const WORD word : value.Words) {
            words += (words.empty() ? "" : ", ") + std::to_string(word);
        }
        return value.Words.size() == 1 ? "{ word = " + words + " }" : "{ words = [" + words + "] }";
    }
    switch (item.Field->Encoding) {
        case SettingEncoding::Toggle:
            return value.Words.front() == '1' ? "true" : "false";
        case SettingEncoding::List:
            return TomlText(value.Chosen.front());
        case SettingEncoding::BitSet:
            return "[" + TomlTexts(value.Chosen, ", ") + "]";
        case SettingEncoding::Number:
            return value.Text;
        case SettingEncoding::Text:
        case SettingEncoding::Character:
            break;
    }
    return TomlText(value.Text);
}

std::string Comment(const Item& item) {
    std::string comment = "# " + ItemLabel(item);
    switch (item.Field->Encoding) {
        case SettingEncoding::Toggle:
            return comment;
        case SettingEncoding::List:
            return comment + ": " + TomlTexts(ItemChoices(item), " | ");
        case SettingEncoding::BitSet:
            return comment + ": any of " + TomlTexts(ItemChoices(item), ", ");
        default:
            return comment + ": " + RangeText(item);
    }
}

using Covered = std::array<bool, RecordWords>;

void Cover(const Item& item, Covered& covered) {
    const bool symbology = item.Field->Block == SettingBlock::Symbology;
    const std::size_t first =
        PlaceOf(*item.Field, PageReader(item.Page)).Word + (symbology ? 0 : SymbologyWords);
    const std::size_t count = item.Field->Encoding == SettingEncoding::Text ? TextWords : 1;
    std::fill_n(covered.begin() + static_cast<std::ptrdiff_t>(first), count, true);
}

std::string WordName(std::size_t number) {
    return number < SymbologyWords ? "Symbology" + std::to_string(number)
                                   : "General" + std::to_string(number - SymbologyWords);
}

// RecordWords for a name that is none.
std::size_t WordByName(std::string_view name) {
    for (const auto& [prefix, base, count] :
         {std::tuple(std::string_view("Symbology"), std::size_t{0}, SymbologyWords),
          std::tuple(std::string_view("General"), SymbologyWords, GeneralWords)}) {
        if (!name.starts_with(prefix)) {
            continue;
        }
        std::size_t number = count;
        const std::string_view digits = name.substr(prefix.size());
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (error == std::errc{} && end == digits.data() + digits.size() && number < count) {
            return base + number;
        }
    }
    return RecordWords;
}

class Reader {
  public:
    Reader(std::string_view text, std::vector<TextFault>& faults) : faults_(faults) {
        toml::parse_result result = toml::parse(text);
        if (!result) {
            Fault(result.error().source(), std::string(result.error().description()));
            return;
        }
        table_ = std::move(result).table();
        const auto format = table_["format"].value<std::int64_t>();
        if (format != Format) {
            faults_.push_back({LineOf("format"), format ? "this form is newer than the program"
                                                        : "no settings in text form: `format` is missing"});
        }
    }

    TextReaders Readers() {
        TextReaders readers;
        const auto name = table_["reader"].value<std::string>();
        const auto type = name ? ReaderByName(*name) : std::nullopt;
        if (type) {
            readers.Barcode = *type;
        } else {
            faults_.push_back(
                {LineOf("reader"), name ? "there is no reader \"" + *name + "\"" : "`reader` is missing"});
        }
        readers.Rfid = table_["rfid"].value_or(false);
        if (table_["rfid"] && !table_["rfid"].is_boolean()) {
            faults_.push_back({LineOf("rfid"), "rfid is true or false"});
        }
        return readers;
    }

    void TakeRecord(std::vector<std::string>* names) {
        const ReaderType type = Readers().Barcode;
        if (faults_.empty() && type != FittedReader()) {
            faults_.push_back({LineOf("reader"), "these settings are for the reader \"" + ReaderName(type) +
                                                     "\", this terminal has \"" + ReaderName(FittedReader()) +
                                                     "\""});
        }
        if (!faults_.empty()) {
            return;
        }
        for (const auto& [key, node] : table_) {
            static const std::set<std::string_view> known = {"format", "reader", "rfid",
                                                             "whole",  "items",  "words"};
            if (!known.contains(key.str())) {
                Fault(key.source(),
                      "there is no `" + std::string(key.str()) + "`; items stand under [items]");
            }
        }
        if (table_["whole"] && !table_["whole"].is_boolean()) {
            faults_.push_back({LineOf("whole"), "whole is true or false"});
        }
        const bool whole = table_["whole"].value_or(false);
        if (whole) {
            for (std::size_t word = 0; word < RecordWords; ++word) {
                RecordWord(word) = 0;
            }
        }
        const std::vector<Item> items = TerminalItems();
        TakeItems(items, names);
        TakeWords(items);
        for (const Item& item : items) {
            if (whole && item.Present && !table_["items"][item.Field->Name]) {
                faults_.push_back({LineOf("whole"), std::string(item.Field->Name) +
                                                        " is missing; without the line `whole` items that "
                                                        "are not named stay as they are"});
            }
        }
    }

  private:
    void Fault(const toml::source_region& where, std::string message) {
        faults_.push_back({static_cast<unsigned>(where.begin.line), std::move(message)});
    }

    unsigned LineOf(std::string_view key) {
        const toml::node* node = table_.get(key);
        return node != nullptr ? static_cast<unsigned>(node->source().begin.line) : 0;
    }

    const toml::table* Section(const char* name) {
        const toml::node* node = table_.get(name);
        if (node != nullptr && !node->is_table()) {
            Fault(node->source(), std::string(name) + " is a table");
        }
        return node != nullptr ? node->as_table() : nullptr;
    }

    void TakeItems(const std::vector<Item>& items, std::vector<std::string>* names) {
        const toml::table* section = Section("items");
        if (section == nullptr) {
            return;
        }
        for (const auto& [key, node] : *section) {
            const Item* item = FindItem(items, key.str());
            const std::string name(key.str());
            const std::string wrong = item == nullptr
                                          ? "a \"" + ReaderName(FittedReader()) + "\" has no item " + name
                                          : TakeValue(*item, node);
            if (!wrong.empty()) {
                Fault(key.source(), item == nullptr ? wrong : name + " " + wrong);
            } else if (names != nullptr) {
                names->push_back(name);
            }
        }
    }

    static std::string TakeValue(const Item& item, const toml::node& node) {
        if (const auto* text = node.as_string()) {
            const bool text_item = ItemChoices(item).empty();
            return text_item ? SetItemText(item, text->get()) : SetChosen(item, {text->get()});
        }
        if (const auto* number = node.as_integer()) {
            return SetNumber(item, number->get());
        }
        if (const auto* on = node.as_boolean()) {
            if (item.Field->Encoding != SettingEncoding::Toggle) {
                return "is neither true nor false";
            }
            return SetChosen(item, {ItemChoices(item)[on->get() ? 1 : 0]});
        }
        if (const auto* chosen = node.as_array()) {
            std::vector<std::string> texts;
            for (const toml::node& one : *chosen) {
                if (!one.is_string()) {
                    return "takes texts";
                }
                texts.push_back(one.as_string()->get());
            }
            return item.Field->Encoding == SettingEncoding::BitSet ? SetChosen(item, texts)
                                                                   : "takes one value";
        }
        std::vector<long long> words;
        if (const auto* raw = node.as_table(); raw != nullptr && raw->size() == 1) {
            const toml::node* list = raw->get("words");
            if (const toml::node* word = raw->get("word"); word != nullptr && word->is_integer()) {
                words.push_back(word->as_integer()->get());
            }
            for (std::size_t i = 0; list != nullptr && list->is_array() && i < list->as_array()->size();
                 ++i) {
                words.push_back((*list->as_array())[i].value_or(std::int64_t{-1}));
            }
        }
        return words.empty() ? "has a value of an unknown form" : SetWords(item, words);
    }

    void TakeWords(const std::vector<Item>& items) {
        const toml::table* section = Section("words");
        if (section == nullptr) {
            return;
        }
        Covered covered{};
        for (const Item& item : items) {
            Cover(item, covered);
        }
        for (const auto& [key, node] : *section) {
            const std::size_t number = WordByName(key.str());
            const std::int64_t value = node.is_integer() ? node.as_integer()->get() : -1;
            if (number == RecordWords) {
                Fault(key.source(), "there is no word " + std::string(key.str()));
            } else if (covered[number]) {
                Fault(key.source(), std::string(key.str()) + " belongs to an item");
            } else if (value < 0 || value > 0xFFFF) {
                Fault(key.source(), std::string(key.str()) + " takes 0 to 65535");
            } else {
                RecordWord(number) = static_cast<WORD>(value);
            }
        }
    }

    std::vector<TextFault>& faults_;
    toml::table table_;
};

}  // namespace

std::string WriteRecord() {
    std::string text =
        "# Settings of a Vantrel terminal\nformat = " + std::to_string(Format) +
        "\nreader = " + TomlText(ReaderName(FittedReader())) +
        "\nrfid = " + (HasRfidReader() ? "true" : "false") +
        "\n# Every item is named below. Without the next line a file changes only what it names.\n"
        "whole = true\n\n[items]\n";
    Covered covered{};
    std::string heading;
    for (const Item& item : TerminalItems()) {
        const ItemValue value = ReadItem(item);
        Cover(item, covered);
        if (!item.Present && value.Words == std::vector<WORD>(value.Words.size(), 0)) {
            continue;
        }
        if (heading != ItemHeading(item)) {
            heading = ItemHeading(item);
            text += "\n## " + heading + "\n";
        }
        text += Comment(item) + "\n" + item.Field->Name + " = " + TomlValue(item, value) + "\n";
    }
    std::string words;
    for (std::size_t number = 0; number < RecordWords; ++number) {
        if (!covered[number] && RecordWord(number) != 0) {
            words += WordName(number) + " = " + std::to_string(WORD{RecordWord(number)}) + "\n";
        }
    }
    return words.empty() ? text : text + "\n# Words of the file without an item here\n[words]\n" + words;
}

std::optional<TextReaders> ReadReaders(std::string_view text, std::vector<TextFault>& faults) {
    Reader reader(text, faults);
    if (!faults.empty()) {
        return std::nullopt;
    }
    const TextReaders readers = reader.Readers();
    return faults.empty() ? std::optional(readers) : std::nullopt;
}

void ReadRecord(std::string_view text, std::vector<TextFault>& faults, std::vector<std::string>* names) {
    Reader reader(text, faults);
    if (faults.empty()) {
        reader.TakeRecord(names);
    }
}
