// vantrel-settings: the settings as text.
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>

#include "settings/defaults.h"
#include "tools/settings/items.h"
#include "tools/settings/terminal_settings.h"
#include "tools/settings/text_form.h"

namespace {

constexpr const char* Usage =
    "usage: vantrel-settings show [--json] [--reader 1d|laser|imager|none [--rfid]]\n"
    "       vantrel-settings get ITEM...\n"
    "       vantrel-settings set ITEM=VALUE...\n"
    "       vantrel-settings export [FILE]\n"
    "       vantrel-settings import FILE\n"
    "       vantrel-settings diff FILE [FILE]\n"
    "       vantrel-settings check FILE...\n"
    "       vantrel-settings reset [reader] [rfid] [general]\n"
    "  show    all items of the terminal, or of a factory-new one with that reader\n"
    "  set     changes items; a running vantrel takes the change at once\n"
    "  export  writes the settings as commented TOML; import takes them from there\n"
    "  diff    tells in what two files, or a file and the terminal, differ; exit code 1 when they do\n"
    "  reset   puts the groups, or all of them, to the factory defaults\n"
    "  FILE may be - for standard input or output.\n";

constexpr std::size_t LargestFile = 1 << 20;

using Arguments = std::vector<std::string>;

int Fail(const std::string& message) {
    std::fprintf(stderr, "vantrel-settings: %s\n", message.c_str());
    return 1;
}

int FailWith(const std::string& file, std::vector<TextFault> faults) {
    std::ranges::stable_sort(faults, {}, &TextFault::Line);
    for (const TextFault& fault : faults) {
        const std::string line = fault.Line != 0 ? ":" + std::to_string(fault.Line) : "";
        std::fprintf(stderr, "%s%s: %s\n", file.c_str(), line.c_str(), fault.Message.c_str());
    }
    return 1;
}

bool ReadFile(const std::string& name, std::string& text) {
    std::ifstream file;
    if (name != "-") {
        file.open(name, std::ios::binary);
    }
    std::istream& from = name == "-" ? std::cin : file;
    char block[4096];
    while (from.read(block, sizeof block) || from.gcount() > 0) {
        text.append(block, static_cast<std::size_t>(from.gcount()));
        if (text.size() > LargestFile) {
            return false;
        }
    }
    return from.eof() && !from.bad();
}

void MakeNew(ReaderType reader, bool rfid) {
    for (Relaxed<WORD>& word : GeneralSettings) {
        word = 0;
    }
    DeviceFlags = static_cast<WORD>(ReaderFlag(reader) | (rfid ? DeviceRfid : 0));
    ResetSettings(ResetAllGroups);
}

// The record that a file gives a factory-new terminal of its readers; what it names.
bool TakeFile(const std::string& file, std::vector<TextFault>& faults, std::vector<std::string>& names) {
    std::string text;
    if (!ReadFile(file, text)) {
        faults.push_back({0, "cannot be read"});
        return false;
    }
    if (const auto readers = ReadReaders(text, faults)) {
        MakeNew(readers->Barcode, readers->Rfid);
        ReadRecord(text, faults, &names);
    }
    return faults.empty();
}

QJsonObject ItemJson(const Item& item) {
    const ItemValue value = ReadItem(item);
    const auto text = [](const std::string& from) { return QString::fromStdString(from); };
    constexpr const char* kinds[] = {"toggle", "list", "set", "number", "text", "character"};
    QJsonObject json{{"name", item.Field->Name},
                     {"heading", text(ItemHeading(item))},
                     {"label", text(ItemLabel(item))},
                     {"kind", kinds[static_cast<int>(item.Field->Encoding)]},
                     {"shown", item.OnPage},
                     {"fitted", item.Present},
                     {"text", text(ValueText(item, value))}};
    QJsonArray choices, chosen, words;
    for (const std::string& choice : ItemChoices(item)) {
        choices.append(text(choice));
    }
    for (const std::string& choice : value.Chosen) {
        chosen.append(text(choice));
    }
    for (const WORD word : value.Words) {
        words.append(word);
    }
    json["words"] = words;
    if (!choices.isEmpty()) {
        json["choices"] = choices;
    }
    if (const std::string range = RangeText(item); !range.empty()) {
        json["minimum"] = ItemRange(item).Minimum;
        json["maximum"] = ItemRange(item).Maximum;
        json["limits"] = text(range);
    }
    if (!value.Plain) {
        return json;
    }
    switch (item.Field->Encoding) {
        case SettingEncoding::Toggle:
            json["value"] = value.Words.front() == '1';
            break;
        case SettingEncoding::List:
            json["value"] = chosen.first();
            break;
        case SettingEncoding::BitSet:
            json["value"] = chosen;
            break;
        case SettingEncoding::Number:
            json["value"] = value.Words.front();
            break;
        default:
            json["value"] = text(value.Text);
    }
    return json;
}

void ShowJson(const std::vector<Item>& items) {
    QJsonArray array;
    for (const Item& item : items) {
        array.append(ItemJson(item));
    }
    const QJsonObject json{{"reader", QString::fromStdString(ReaderName(FittedReader()))},
                           {"rfid", HasRfidReader()},
                           {"items", array}};
    std::fputs(QJsonDocument(json).toJson().constData(), stdout);
}

void ShowTable(const std::vector<Item>& items) {
    std::vector<std::array<std::string, 4>> rows;
    std::array<int, 3> widths{};
    for (const Item& item : items) {
        std::string choices;
        for (const std::string& choice : ItemChoices(item)) {
            choices += (choices.empty() ? "" : " | ") + choice;
        }
        rows.push_back({item.Field->Name, ItemLabel(item) + (item.OnPage ? "" : " *"),
                        ValueText(item, ReadItem(item)), choices.empty() ? RangeText(item) : choices});
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], static_cast<int>(rows.back()[i].size()));
        }
    }
    std::printf("%s%s\n", ReaderName(FittedReader()).c_str(), HasRfidReader() ? ", RFID" : "");
    std::string heading;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (heading != ItemHeading(items[i])) {
            heading = ItemHeading(items[i]);
            std::printf("\n%s\n", heading.c_str());
        }
        std::printf("  %-*s  %-*s  %-*s  %s\n", widths[0], rows[i][0].c_str(), widths[1], rows[i][1].c_str(),
                    widths[2], rows[i][2].c_str(), rows[i][3].c_str());
    }
    std::puts("\n* not on a page of the settings window of this terminal");
}

int Show(const Arguments& arguments) {
    bool json = false, rfid = false;
    std::optional<ReaderType> reader;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == "--json") {
            json = true;
        } else if (arguments[i] == "--rfid") {
            rfid = true;
        } else if (arguments[i] == "--reader" && i + 1 < arguments.size()) {
            reader = ReaderByName(arguments[++i]);
            if (!reader) {
                return Fail("there is no reader \"" + arguments[i] + "\"");
            }
        } else {
            return Fail("show does not know \"" + arguments[i] + "\"");
        }
    }
    if (reader) {
        MakeNew(*reader, rfid);
    } else if (const std::string wrong = LoadTerminal(); !wrong.empty()) {
        return Fail(wrong);
    }
    json ? ShowJson(TerminalItems()) : ShowTable(TerminalItems());
    return 0;
}

int Get(const Arguments& names) {
    if (const std::string wrong = LoadTerminal(); !wrong.empty()) {
        return Fail(wrong);
    }
    const std::vector<Item> items = TerminalItems();
    for (const std::string& name : names) {
        const Item* item = FindItem(items, name);
        if (item == nullptr) {
            return Fail("a \"" + ReaderName(FittedReader()) + "\" has no item " + name);
        }
        const ItemValue value = ReadItem(*item);
        const bool choice = !ItemChoices(*item).empty();
        std::puts((choice || !value.Plain ? ValueText(*item, value) : value.Text).c_str());
    }
    return names.empty() ? Fail("get which item?") : 0;
}

int Change(const std::function<bool()>& change) {
    const std::string wrong = ChangeTerminal(change);
    return wrong.empty() ? 0 : Fail(wrong);
}

int Set(const Arguments& assignments) {
    if (assignments.empty()) {
        return Fail("set which item?");
    }
    return Change([&] {
        bool good = true;
        const std::vector<Item> items = TerminalItems();
        for (const std::string& assignment : assignments) {
            const std::size_t equals = std::min(assignment.find('='), assignment.size());
            const std::string name = assignment.substr(0, equals);
            const Item* item = FindItem(items, name);
            std::string wrong;
            if (equals == assignment.size()) {
                wrong = assignment + ": write ITEM=VALUE";
            } else if (item == nullptr) {
                wrong = "a \"" + ReaderName(FittedReader()) + "\" has no item " + name;
            } else if (wrong = SetFromArgument(*item, assignment.substr(equals + 1)); !wrong.empty()) {
                wrong = name + " " + wrong;
            }
            good = good && wrong.empty();
            if (!wrong.empty()) {
                Fail(wrong);
            }
        }
        return good;
    });
}

int Export(const Arguments& arguments) {
    if (const std::string wrong = LoadTerminal(); !wrong.empty()) {
        return Fail(wrong);
    }
    const std::string name = arguments.empty() ? "-" : arguments[0];
    const std::string text = WriteRecord();
    if (name == "-") {
        return std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? Fail("cannot write") : 0;
    }
    std::ofstream file(name, std::ios::binary);
    file << text;
    file.close();
    return file ? 0 : Fail(name + " cannot be written");
}

int Import(const std::string& name) {
    std::string text;
    if (!ReadFile(name, text)) {
        return Fail(name + " cannot be read");
    }
    std::vector<TextFault> faults;
    return Change([&] {
        ReadRecord(text, faults);
        if (!faults.empty()) {
            FailWith(name, faults);
        }
        return faults.empty();
    });
}

using Values = std::map<std::string, std::string>;

// What the record says of the items with these names, or of all.
Values TakeValues(const std::vector<std::string>* names) {
    Values values = {{"reader", ReaderName(FittedReader())}};
    for (const Item& item : TerminalItems()) {
        const std::string name = item.Field->Name;
        if (names == nullptr || std::ranges::find(*names, name) != names->end()) {
            values[name] = ValueText(item, ReadItem(item));
        }
    }
    return values;
}

int Diff(const Arguments& files) {
    std::vector<Values> sides;
    for (const std::string& file : files) {
        std::vector<TextFault> faults;
        std::vector<std::string> names;
        if (!TakeFile(file, faults, names)) {
            return FailWith(file, faults) + 1;
        }
        sides.push_back(TakeValues(&names));
    }
    if (sides.size() == 1) {
        if (const std::string wrong = LoadTerminal(); !wrong.empty()) {
            return Fail(wrong) + 1;
        }
        sides.push_back(TakeValues(nullptr));
        // A file that names a few items says nothing about the others.
        std::erase_if(sides[1], [&](const auto& value) { return !sides[0].contains(value.first); });
    }
    bool differ = false;
    const auto print = [&](const Values& values, const Values& others, char sign) {
        for (const auto& [name, value] : values) {
            const auto other = others.find(name);
            if (other == others.end() || other->second != value) {
                std::printf("%c %s = %s\n", sign, name.c_str(), value.c_str());
                differ = true;
            }
        }
    };
    print(sides[0], sides[1], '-');
    print(sides[1], sides[0], '+');
    return differ ? 1 : 0;
}

int Check(const Arguments& files) {
    int result = 0;
    for (const std::string& file : files) {
        std::vector<TextFault> faults;
        std::vector<std::string> names;
        if (!TakeFile(file, faults, names)) {
            result = FailWith(file, faults);
        }
    }
    return files.empty() ? Fail("check which file?") : result;
}

int Reset(const Arguments& groups) {
    const std::map<std::string, ResetGroup> known = {
        {"reader", ResetGroup::BarcodeReader}, {"rfid", ResetGroup::Rfid}, {"general", ResetGroup::General}};
    DWORD mask = groups.empty() ? ResetAllGroups : 0;
    for (const std::string& group : groups) {
        if (!known.contains(group)) {
            return Fail("there is no group \"" + group + "\"");
        }
        mask |= static_cast<DWORD>(known.at(group));
    }
    return Change([mask] {
        ResetSettings(mask);
        return true;
    });
}

}  // namespace

int main(int count, char** words) {
    const std::string command = count > 1 ? words[1] : "";
    const Arguments arguments(words + std::min(count, 2), words + count);
    if (command == "show") {
        return Show(arguments);
    }
    if (command == "get") {
        return Get(arguments);
    }
    if (command == "set") {
        return Set(arguments);
    }
    if (command == "export" && arguments.size() <= 1) {
        return Export(arguments);
    }
    if (command == "import" && arguments.size() == 1) {
        return Import(arguments[0]);
    }
    if (command == "diff" && (arguments.size() == 1 || arguments.size() == 2)) {
        return Diff(arguments);
    }
    if (command == "check") {
        return Check(arguments);
    }
    if (command == "reset") {
        return Reset(arguments);
    }
    std::fputs(Usage, command == "--help" ? stdout : stderr);
    return command == "--help" ? 0 : 2;
}
