// One named descriptor per field of the settings record: where it lies in each reader's layout, how its word
// is to be read, its factory default, its item on the settings sheet with label, choices and limits, and the
// reader's own parameter number. The descriptors are in decoder1d_fields.h, engine_fields.h and
// general_fields.h; defaults, item catalogue, editors and downloads all walk them.
#pragma once

#include <array>
#include <span>

#include "settings/record.h"

enum class SettingBlock : BYTE { Symbology, General };

enum class SettingEncoding : BYTE {
    Toggle,     // the character '0' or '1'
    List,       // the character '0' plus the index of the choice
    BitSet,     // the character '0' plus a bit per choice
    Number,     // the plain number
    Text,       // up to 10 characters and a zero in 11 words
    Character,  // one character, 0 for none
};

// The groups that are reset to factory defaults together; the values are the bits of a reset mask.
enum class ResetGroup : WORD { General = 0x100, Rfid = 0x200, BarcodeReader = 0x400 };

enum class NumberUnit : BYTE { None, Seconds, TenthsOfSecond };

inline constexpr WORD NoWord = 0xFFFF;       // the reader's layout lacks the field
inline constexpr WORD NoParameter = 0xFFFF;  // the field is not a parameter of the packet readers
inline constexpr std::size_t TextWords = 11;

// Of a number, its smallest and largest value; of a text or a character, its shortest and longest length.
struct SettingLimits {
    WORD Minimum = 0;
    WORD Maximum = 0;
    NumberUnit Unit = NumberUnit::None;
};

// A field in one reader's layout.
struct SettingPlace {
    WORD Word = NoWord;  // index into the block; a text takes 11 words from here
    bool HasDefault = false;
    WORD Default = 0;
    SettingLimits Limits;
};

// A parameter of the packet readers. With ReplacedBy other than 0 the reader numbers a value differently:
// Replaced is sent as ReplacedBy.
struct ReaderParameter {
    WORD Number = NoParameter;
    bool Extended = false;  // sent after the byte 0xF0
    BYTE Replaced = 0;
    BYTE ReplacedBy = 0;
};

// A version of the settings file, so that an older one is less.
constexpr DWORD FileVersion(WORD major, WORD minor) {
    return DWORD{major} << 16 | minor;
}
inline constexpr WORD FileMajor = 1;  // what is written
inline constexpr WORD FileMinor = 1;

struct Setting {
    const char* Name = "";  // as it is declared; unique in each reader's layout
    SettingBlock Block = SettingBlock::General;
    SettingEncoding Encoding = SettingEncoding::Toggle;
    ResetGroup Group = ResetGroup::General;
    WORD ItemId = 0;    // unique within its page
    WORD Label = 0;     // string
    WORD TextBase = 0;  // list, bit set: string of choice 0; toggle: string of its text minus the character
    WORD ChoiceCount = 0;  // list, bit set
    // A length value of a symbology: the list that says how it is used, and its label while that list stands
    // on its last choice, the range from a minimum to a maximum.
    const Setting* LengthMode = nullptr;
    WORD RangeLabel = 0;
    bool ShortNumber = false;  // read as one word, where other numbers are read as a double word
    ReaderParameter Parameter;
    DWORD Since = 0;  // the FileVersion that first had the field; an older file leaves it at its default
    std::array<SettingPlace, ReaderTypes> Places;  // by ReaderType
};

using SettingList = std::span<const Setting* const>;

constexpr const SettingPlace& PlaceOf(const Setting& setting, ReaderType type) {
    return setting.Places[static_cast<std::size_t>(type)];
}
constexpr bool IsIn(const Setting& setting, ReaderType type) {
    return PlaceOf(setting, type).Word != NoWord;
}

// The character that a length mode list holds while its group's two lengths are a minimum and a maximum.
constexpr WORD RangeMode(const Setting& lengthMode) {
    return static_cast<WORD>('0' + lengthMode.ChoiceCount - 1);
}

// The byte that a packet reader is sent for a word of the field.
constexpr BYTE ParameterValue(const Setting& setting, WORD word) {
    const bool plain = setting.Encoding == SettingEncoding::Number;
    const BYTE value = static_cast<BYTE>(plain ? word : word - '0');
    if (setting.Parameter.ReplacedBy == 0) {
        return value;
    }
    if (value == setting.Parameter.Replaced) {
        return setting.Parameter.ReplacedBy;
    }
    // A switch that the reader numbers differently is off unless it is on.
    return setting.Encoding == SettingEncoding::Toggle ? BYTE{0} : value;
}

// The field's word (of a text: its first) in a reader's layout; none where the layout lacks the field.
Relaxed<WORD>* WordOf(const Setting& setting, ReaderType type);

// The fitted reader's layout. A field that it lacks reads as 0 and is not written.
WORD Value(const Setting& setting);
WORD ValueBefore(const Setting& setting);
void SetValue(const Setting& setting, WORD value);
bool Changed(const Setting& setting);  // Value differs from ValueBefore, or nothing is known of before

// The fitted reader's layout: the word is '1'.
bool IsOn(const Setting& setting);
// The fitted reader's layout: the word minus '0', modulo 65536.
WORD DigitOf(const Setting& setting);

// Copies a text field with its ending zero, cut to what `to` holds. An empty `to` gets nothing.
void GetText(const Setting& setting, std::span<WCHAR> to);
// Ends the texts of a record that came from outside inside their words.
void EndTexts();
// Stores a text up to its zero, at most 10 characters, and ends it; the words behind it are left alone.
void SetText(const Setting& setting, std::span<const WCHAR> text);
