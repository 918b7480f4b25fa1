#include "settings/field.h"

#include <atomic>
#include <regex>
#include <set>
#include <thread>

#include "settings/all_fields.h"
#include "settings/defaults.h"
#include "settings/pages.h"
#include "tests/settings/record_fixture.h"
#include "tests/support/temporary_terminal.h"

namespace {

using FieldTest = RecordTest;

TEST_F(FieldTest, AFieldThatTheReaderLacksReadsZeroAndStaysUnwritten) {
    DeviceFlags = DeviceLaser;
    FillRecord(7);
    SetValue(engine::EnableCode11, '1');
    SetValue(decoder1d::Ean128Enabled, '1');
    EXPECT_EQ(Value(engine::EnableCode11), 0);
    EXPECT_FALSE(IsOn(decoder1d::Ean128Enabled));
    for (std::size_t word = 0; word < RecordWords; ++word)
        EXPECT_EQ(RecordWord(word), 7);
}

TEST_F(FieldTest, TextsFillTheirElevenWordsAndNoMore) {
    const WCHAR text[] = TEXT("ABCDEFGHIJKL");
    FillRecord('x');
    SetText(general::PrefixCode, text);
    EXPECT_EQ(GeneralSettings[7], 'x');
    EXPECT_EQ(GeneralSettings[17], 'J');
    EXPECT_EQ(GeneralSettings[18], 0);
    EXPECT_EQ(GeneralSettings[19], 'x');

    WCHAR whole[TextWords];
    GetText(general::PrefixCode, whole);
    EXPECT_EQ(std::u16string(whole), u"ABCDEFGHIJ");
    // Another thread may be writing: a text without an end is cut at ten characters.
    GeneralSettings[18] = 'x';
    GetText(general::PrefixCode, whole);
    EXPECT_EQ(std::u16string(whole), u"ABCDEFGHIJ");
}

TEST_F(FieldTest, ATextReadWhileItIsWrittenIsEndedAndOfBothTexts) {
    std::atomic<bool> done = false;
    std::thread writer([&done] {
        const std::u16string texts[] = {u"a", u"bbbbbbbbbb"};
        for (std::size_t i = 0; i < 20000; ++i)
            SetText(general::SuffixCode, texts[i % 2]);
        done = true;
    });
    while (!done) {
        std::u16string text(TextWords, u'!');
        GetText(general::SuffixCode, text);
        EXPECT_EQ(text[text.find_first_not_of(u"ab")], u'\0');
    }
    writer.join();
}

// No compiler finds a field that is declared and then forgotten.
TEST(Fields, EachOneThatIsDeclaredIsAnItem) {
    std::set<std::string> items;
    const auto take = [&](const Setting& setting) { items.insert(setting.Name); };
    ForEachGeneralField(take);
    ForEachSymbologyField(take);
    for (const char* header : {"decoder1d", "engine", "general"}) {
        const std::string text =
            ReadWholeFile(std::string(VANTREL_SOURCE_DIR "/settings/") + header + "_fields.h");
        const std::regex declaration("\nSETTING\\((\\w+)");
        int count = 0;
        for (std::sregex_iterator at(text.begin(), text.end(), declaration), end; at != end; ++at, ++count)
            EXPECT_TRUE(items.contains((*at)[1])) << (*at)[1] << " stands in no list of pages.cpp";
        EXPECT_GE(count, 50) << header;
    }
}

TEST_F(FieldTest, OneThatIsNewerThanTheFileGetsItsDefault) {
    constexpr Setting newer = describe::NewIn(1, 2, engine::EnableUpcA);
    const struct { WORD Major, Minor, Value; } files[] = {{1, 1, '1'}, {0, 9, '1'}, {1, 2, '0'}, {2, 0, '0'}};
    DeviceFlags = DeviceImager;
    for (const auto& file : files) {
        SetValue(newer, '0');
        ResetNewer(newer, FileVersion(file.Major, file.Minor));
        EXPECT_EQ(Value(newer), file.Value) << file.Major << "." << file.Minor;
    }
    ResetNewer(decoder1d::Code39Enabled, 0);
    EXPECT_EQ(Value(newer), '0') << "a field that every file has";
}

}  // namespace
