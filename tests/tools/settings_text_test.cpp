#include <random>

#include "settings/defaults.h"
#include "settings/general_fields.h"
#include "settings/settings_change.h"
#include "settings/settings_file.h"
#include "tests/settings/record_fixture.h"
#include "tests/support/temporary_terminal.h"
#include "tools/settings/items.h"
#include "tools/settings/text_form.h"

namespace {

constexpr WORD Terminals[] = {0,           Device1D,     Device1D | DeviceRfid,    DeviceRfid,
                              DeviceLaser, DeviceImager, DeviceLaser | DeviceRfid, DeviceImager | DeviceRfid};

class SettingsText : public RecordTest {
  protected:
    std::string File() const { return ReadWholeFile(terminal_.Path("DiskOnChip/Vantrel.ini")); }
    // The record as a load leaves it, in the file too.
    std::string Settle() const {
        EndTexts();
        if (Value(general::RfidReadDuration) == 0)
            SetValue(general::RfidReadDuration, 3);
        EXPECT_TRUE(SaveSettings() && LoadSettings());
        return File();
    }
    static void MakeNew(WORD devices) {
        Clear();
        DeviceFlags = devices;
        ResetSettings(ResetAllGroups);
    }
    static std::string Faults(const std::string& text) {
        std::vector<TextFault> faults;
        ReadRecord(text, faults);
        std::string all;
        for (const TextFault& fault : faults)
            all += std::to_string(fault.Line) + ": " + fault.Message + "\n";
        return all;
    }

    TemporaryTerminal terminal_;
    std::mt19937 random_{20240515};
};

TEST_F(SettingsText, AnExportImportedOverAnythingGivesTheSameFile) {
    const char16_t texts[] = u"A\"\\é\u20AC\t\xD834\xDD1E\x7F#=";
    for (int number = 0; number < 1000; number += 3) {
        MakeNew(Terminals[static_cast<std::size_t>(number) % std::size(Terminals)]);
        // The first of each kind is factory-new; then ever more words are anything at all.
        for (std::size_t word = 0; word < RecordWords; ++word) {
            const auto dice = static_cast<int>(random_() % 1000);
            if (dice < number)
                RecordWord(word) = static_cast<WORD>(dice % 2 ? '0' + dice % 7 : static_cast<int>(random_()));
        }
        if (number % 2 != 0) {
            WCHAR text[TextWords] = {};
            for (unsigned i = 0; i < random_() % 11; ++i)
                text[i] = texts[random_() % (std::size(texts) - 1)];
            SetText(general::SuffixCode, text);
        }
        const std::string before = Settle();
        const std::string text = WriteRecord();
        for (std::size_t word = 0; word < RecordWords; ++word)
            RecordWord(word) = static_cast<WORD>(random_());
        ASSERT_EQ(Faults(text), "") << text;
        ASSERT_TRUE(SaveSettings());
        ASSERT_EQ(File(), before) << number << "\n" << text;
        ASSERT_TRUE(LoadSettings());
        ASSERT_EQ(WriteRecord(), text);
    }
}

TEST_F(SettingsText, WhatIsWrongIsToldByLine) {
    const std::string head = "format = 1\nreader = \"2D Reader\"\n[items]\n";
    const struct {
        std::string Text, Fault;
    } cases[] = {
        {"", "0: no settings in text form: `format` is missing\n"},
        {"format = 2\n", "1: this form is newer than the program\n"},
        {"format = 1\nrfid = 3\n", "0: `reader` is missing\n2: rfid is true or false\n"},
        {"format = 1\nreader = \"imager\"\nwhole = \"yes\"\n", "3: whole is true or false\n"},
        {"format = 1\nreader = \"3D\"\n", "2: there is no reader \"3D\"\n"},
        {"format = 1\n\nreader = \"1d\"\n",
         "3: these settings are for the reader \"1D Reader\", this terminal has \"2D Reader\"\n"},
        {"format = 1\nreader = \"imager\"\nAutoEnter = \"No\"\n",
         "3: there is no `AutoEnter`; items stand under [items]\n"},
        {head + "ScanMode = \"Laser\"\n", "4: a \"2D Reader\" has no item ScanMode\n"},
        {head + "AutoEnter = \"Yes\"\n",
         "4: AutoEnter has no choice \"Yes\"; it takes \"No\", \"Scan + "
         "ENTER-Character\" or \"ENTER-Character + Scan\"\n"},
        {head + "AutoEnter = true\n", "4: AutoEnter is neither true nor false\n"},
        {head + "DataOutput = [1]\n", "4: DataOutput takes texts\n"},
        {head + "AutoEnter = [\"No\"]\n", "4: AutoEnter takes one value\n"},
        {head + "EnableUpcA = 1\n", "4: EnableUpcA takes no number\n"},
        {head + "RfidReadDuration = 6\n", "4: RfidReadDuration takes 1 to 5, seconds, not 6\n"},
        {head + "PrefixCode = \"12345678901\"\n", "4: PrefixCode takes up to 10 characters\n"},
        {head + "PrefixCode = \"\\u0000\"\n", "4: PrefixCode takes no zero character\n"},
        {head + "AutoEnter = { word = 65536 }\n", "4: AutoEnter has words from 0 to 65535\n"},
        {head + "AutoEnter = { words = [1, 2] }\n", "4: AutoEnter has 1 words\n"},
        {head + "AutoEnter = { word = 1, more = 2 }\n", "4: AutoEnter has a value of an unknown form\n"},
        {head + "AutoEnter = 1.5\n", "4: AutoEnter has a value of an unknown form\n"},
        {head + "[words]\nGeneral170 = 1\nGeneral0 = 1\nGeneral33 = -1\nSymbology = 1\n",
         "6: General0 belongs to an item\n5: there is no word General170\n7: General33 takes 0 to 65535\n8: "
         "there is no word Symbology\n"},
    };
    MakeNew(DeviceImager);
    for (const auto& c : cases)
        EXPECT_EQ(Faults(c.Text), c.Fault) << c.Text;
    const std::vector<Item> items = TerminalItems();
    EXPECT_EQ(SetFromArgument(*FindItem(items, "PrefixCode"), "\xA3"), "takes text in UTF-8");
    EXPECT_NE(Faults(head + "AutoEnter = \"No\"\nAutoEnter = \"No\"\n").find("5: "), std::string::npos);
    EXPECT_NE(Faults(head + "AutoEnter = \n").find("4: "), std::string::npos);
    EXPECT_NE(Faults("format = 1\nreader = \"imager\"\nwhole = true\n").find("3: EnableUpcA is missing"),
              std::string::npos);
}

TEST_F(SettingsText, APartChangesWhatItNamesAlone) {
    MakeNew(DeviceImager);
    GeneralSettings[33] = 7;
    EXPECT_EQ(Faults("format = 1\nreader = \"imager\"\n[items]\nAutoEnter = \"no\"\nEnableUpcA = \"NO\"\n"
                     "DataOutput = [\"windows event\", \"Keyboard Emulation\"]\nReadRfidData = true\n"),
              "");
    EXPECT_EQ(Value(general::AutoEnter), '0');
    EXPECT_EQ(SymbologySettings[0], '0');
    EXPECT_EQ(Value(general::DataOutput), '5');
    EXPECT_EQ(Value(general::ReadRfidData), '1');
    EXPECT_EQ(GeneralSettings[33], 7);
    EXPECT_EQ(SymbologySettings[1], '1');
}

TEST_F(SettingsText, TheExampleOfTheManualIsTaken) {
    const std::string manual = ReadWholeFile(VANTREL_SOURCE_DIR "/docs/fleet.md");
    const std::size_t start = manual.find("```toml\n") + 8;
    ASSERT_GT(start, 8u);
    MakeNew(DeviceImager);
    EXPECT_EQ(Faults(manual.substr(start, manual.find("```", start) - start)), "");
    EXPECT_EQ(Value(general::GoodReadBeep), '4');
}

// What another program asks for comes as bytes.
TEST_F(SettingsText, AChangeOfAnotherShapeIsNone) {
    MakeNew(DeviceImager);
    const struct {
        std::vector<BYTE> Bytes;
        bool Good;
    } cases[] = {
        {{}, false},
        {{4}, false},
        {{4, 0}, true},
        {{1, 0}, false},
        {{4, 0, 1}, false},
        {{4, 0, 1, 0, 49}, false},
        {{4, 0, 1, 0}, false},
        {{4, 0, 1, 0, 49, 0}, true},
        {{4, 0, 0xAE, 1, 49, 0}, false},
        {{4, 0, 0xAD, 1, 49, 0}, true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(IsChange(c.Bytes), c.Good) << c.Bytes.size();
    const BYTE change[] = {4, 0, 0x16, 1, 'x', 0, 0xAD, 1, 0x34, 0x12};
    TakeChange(change);
    EXPECT_EQ(GeneralSettings[169], 0x1234);
    EXPECT_EQ(GeneralSettings[18], 0) << "the prefix is ended inside its words";
}

}  // namespace
