#include "settings/catalogue.h"

#include "app/shell_state.h"
#include "resources/resource.h"
#include "settings/all_fields.h"
#include "tests/settings/record_fixture.h"

namespace {

constexpr DWORD NoStatus = 99;

struct CatalogueTest : RecordTest {
    // A buffer of x, so that what a get leaves alone is seen.
    WCHAR Buffer[TextWords];
    DWORD Status = NoStatus;

    void SetUp() override {
        RecordTest::SetUp();
        ClearBuffer();
    }
    void ClearBuffer() {
        for (WCHAR& character : Buffer)
            character = 0;
        Status = NoStatus;
    }
    DWORD Get(DWORD pageBase, DWORD item) {
        ClearBuffer();
        return AccessSettingItem(MakePageCode(pageBase, 0), item, &Status, Buffer);
    }
    void Set(DWORD pageBase, DWORD item, std::u16string_view value) {
        ClearBuffer();
        for (std::size_t i = 0; i < value.size(); ++i)
            Buffer[i] = value[i];
        AccessSettingItem(MakePageCode(pageBase, 1), item, nullptr, Buffer);
    }
};

TEST_F(CatalogueTest, PageCodes) {
    EXPECT_EQ(MakePageCode(10, 1), 11u);
    EXPECT_EQ(MakePageCode(20, 0), 22u);
    EXPECT_EQ(MakePageCode(30, -1), 31u);
    EXPECT_EQ(MakePageCode(50, 0), 52u);
    EXPECT_EQ(MakePageCode(40, 1), 51u);
    EXPECT_EQ(SplitItemId(10, 2824).Group, 2800u);
    EXPECT_EQ(SplitItemId(10, 2824).Index, 24u);
    EXPECT_EQ(SplitItemId(20, 0x12FF).Group, 0x1200u);
    EXPECT_EQ(SplitItemId(50, 10001).Index, 0x11u);
}

TEST_F(CatalogueTest, EachItemReadsAndWritesItsWord) {
    const struct {
        WORD Flags;
        DWORD Page, Item;
        bool Symbology;
        std::size_t Word;
    } cases[] = {
        {Device1D, 10, 2100, true, 140},
        {DeviceLaser, 20, 0x1506, true, 70},
        {DeviceImager, 30, 0x1506, true, 95},
        // The page, not the reader, decides about a symbology's layout.
        {DeviceImager, 20, 0x1506, true, 70},
        {DeviceLaser, 20, 0x1050, true, 7},
        {Device1D, 50, 13961, false, 113},
        {DeviceLaser, 50, 13961, false, 112},
        {DeviceImager, 50, 13961, false, 113},
        {DeviceLaser, 50, 13960, false, 111},
        {DeviceImager, 50, 13960, false, 112},
        {DeviceRfid, 50, 13960, false, 112},
        // The laser's words count even behind another reader's bit.
        {Device1D | DeviceLaser, 50, 13960, false, 111},
        {Device1D | DeviceLaser, 50, 13961, false, 112},
        {DeviceImager, 50, 12001, false, 110},
        {DeviceRfid, 50, 14205, false, 147},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.Flags << " " << c.Page << " " << c.Item);
        ClearRecord();
        DeviceFlags = c.Flags;
        Set(c.Page, c.Item, u"\x1234");
        int written = 0;
        for (const Relaxed<WORD>& word : SymbologySettings)
            written += word != 0;
        for (const Relaxed<WORD>& word : GeneralSettings)
            written += word != 0;
        EXPECT_EQ(written, 1);
        EXPECT_EQ(c.Symbology ? SymbologySettings[c.Word] : GeneralSettings[c.Word], 0x1234);
        Get(c.Page, c.Item);
        EXPECT_EQ(Buffer[0], 0x1234);
    }
}

TEST_F(CatalogueTest, ResultsOfAGet) {
    const struct {
        DWORD Page, Item;
        std::u16string Stored;
        DWORD Result, Status;
    } cases[] = {
        {50, 10001, u"3", 2, 1},
        {50, 10005, u"\x02", 4, 4},
        {50, 10005, u"", 4, 4},
        {50, 10009, u"AB", 4, 1},
        {50, 10009, u"", 0, 1},
        {50, 10010, u"0123456789", 20, 1},
        {50, 11004, u",", 2, 1},
        {50, 11004, u"", 0, 1},
        {10, 1307, u"\x7F", 4, 4},
        {20, 0x1213, u"\x37", 4, 4},
        // These four are numbers of one word.
        {20, 0x1050, u"\x0A", 2, 1},
        {50, 13001, u"\x05", 2, 1},
        {50, 13960, u"", 0, 1},
        {50, 13961, u"\x05", 2, 1},
    };
    DeviceFlags = DeviceLaser;
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.Page << " " << c.Item);
        Set(c.Page, c.Item, c.Stored);
        EXPECT_EQ(Get(c.Page, c.Item), c.Result);
        EXPECT_EQ(Status, c.Status);
        EXPECT_EQ(std::u16string(Buffer), c.Stored);
        EXPECT_EQ(AccessSettingItem(MakePageCode(c.Page, 0), c.Item, nullptr, Buffer), 0u);
    }
}

TEST_F(CatalogueTest, AGetWritesNoMoreThanTheValue) {
    for (WCHAR& character : Buffer)
        character = u'x';
    GeneralSettings[4] = 30;
    AccessSettingItem(52, 10005, &Status, Buffer);
    EXPECT_EQ(std::u16string(Buffer, 4), std::u16string(u"\x1E\0xx", 4));
    for (WCHAR& character : Buffer)
        character = u'x';
    GeneralSettings[0] = '3';
    EXPECT_EQ(AccessSettingItem(52, 10001, &Status, Buffer), 2 * TextWords) << "a buffer without a zero";
    EXPECT_EQ(std::u16string(Buffer, 2), u"3x");
}

TEST_F(CatalogueTest, OnlyWhatFitsIsStored) {
    Set(50, 11004, u"AB");
    EXPECT_EQ(GeneralSettings[83], 'A');
    EXPECT_EQ(GeneralSettings[84], 0);
    Set(50, 10010, u"ABCDEFGHIJK");
    EXPECT_EQ(GeneralSettings[28], 'J');
    EXPECT_EQ(GeneralSettings[29], 0);
    EXPECT_EQ(GeneralSettings[30], 0);
    Set(50, 10010, u"Z");
    Get(50, 10010);
    EXPECT_EQ(std::u16string(Buffer), u"Z");
    Set(50, 10005, u"\xFFFF");
    EXPECT_EQ(GeneralSettings[4], 0xFFFF);
}

TEST_F(CatalogueTest, UnknownItemsTouchNothing) {
    const struct {
        DWORD Code, Item, Status;
    } cases[] = {
        {52, 10014, 1},        {52, 0, 1},
        {52, 0x12711, 1},      {22, 0x1000, 1},
        {22, 0x1F01, 1},       {22, 0x140A, 1},
        {32, 0x11001, 1},      {12, 1005, 1},
        {12, 2900, 1},         {12, 900, 1},
        {42, 10001, NoStatus}, {2, 10001, NoStatus},
        {50, 10001, NoStatus}, {53, 10001, NoStatus},
        {51, 10014, NoStatus}, {41, 10001, NoStatus},
    };
    DeviceFlags = DeviceLaser;
    for (Relaxed<WORD>& word : SymbologySettings)
        word = 'q';
    for (Relaxed<WORD>& word : GeneralSettings)
        word = 'q';
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.Code << " " << c.Item);
        ClearBuffer();
        Buffer[0] = u'x';
        AccessSettingItem(c.Code, c.Item, &Status, Buffer);
        EXPECT_EQ(Status, c.Status);
        EXPECT_EQ(std::u16string(Buffer), u"x");
    }
    for (const Relaxed<WORD>& word : SymbologySettings)
        EXPECT_EQ(word, 'q');
    for (const Relaxed<WORD>& word : GeneralSettings)
        EXPECT_EQ(word, 'q');
}

int Heard;
int SoundAtThatTime;

TEST_F(CatalogueTest, AChosenBeepIsHeardAfterItIsStored) {
    PreviewSound = [](int sound) {
        Heard = sound;
        SoundAtThatTime = GeneralSettings[1];
    };
    Heard = -1;
    Set(50, 10002, u"3");
    EXPECT_EQ(Heard, 3);
    EXPECT_EQ(SoundAtThatTime, '3');
    Set(50, 10003, u"0");
    EXPECT_EQ(Heard, 0);
    Heard = -1;
    Set(50, 10004, u"1");
    Get(50, 10002);
    EXPECT_EQ(Heard, -1);
    PreviewSound = nullptr;
    Set(50, 10002, u"5");
    EXPECT_EQ(GeneralSettings[1], '5');
}

TEST_F(CatalogueTest, LengthLabelsFollowTheirMode) {
    const struct {
        WORD Flags;
        DWORD Page, Mode, Length1, Length2;
        char16_t Range;
        WORD Range1, Range2;
    } cases[] = {
        {Device1D, 10, 1306, 1308, 1307, u'1', IDS_MINIMUM_LENGTH, IDS_MAXIMUM_LENGTH},
        {Device1D, 10, 1706, 1708, 1707, u'1', IDS_MINIMUM_LENGTH, IDS_MAXIMUM_LENGTH},
        {DeviceLaser, 20, 0x12FF, 0x1213, 0x1212, u'3', IDS_MAXIMUM_LENGTH, IDS_MINIMUM_LENGTH},
        {DeviceImager, 30, 0x14FF, 0x141D, 0x141C, u'3', IDS_MAXIMUM_LENGTH, IDS_MINIMUM_LENGTH},
        {DeviceImager, 30, 0x18FF, 0x181F, 0x181E, u'3', IDS_MAXIMUM_LENGTH, IDS_MINIMUM_LENGTH},
    };
    for (const auto& c : cases) {
        DeviceFlags = c.Flags;
        for (const char16_t mode : {u'\0', u'0', u'1', u'2', u'3', u'4'}) {
            SCOPED_TRACE(testing::Message() << c.Mode << " " << unsigned{mode});
            Set(c.Page, c.Mode, std::u16string(1, mode));
            const bool range = mode == c.Range;
            EXPECT_EQ(ItemLabelId(c.Page, c.Length1), range ? c.Range1 : IDS_VALUE_1);
            EXPECT_EQ(ItemLabelId(c.Page, c.Length2), range ? c.Range2 : IDS_VALUE_2);
        }
        const LengthItems items = FindLengthItems(c.Page, c.Mode);
        EXPECT_EQ(items.Mode->ItemId, c.Mode);
        EXPECT_EQ(items.First->ItemId, c.Page == 10 ? c.Length2 : c.Length1);
        EXPECT_EQ(items.Second->ItemId, c.Page == 10 ? c.Length1 : c.Length2);
    }
    EXPECT_EQ(FindLengthItems(10, 1605).First, nullptr);
    EXPECT_EQ(FindLengthItems(20, 0x1101).Mode, nullptr);
    EXPECT_EQ(FindLengthItems(50, 10001).Mode, nullptr);
}

TEST_F(CatalogueTest, LooksOfItemsThatAreNotThere) {
    // Page 10 goes by index; one beyond the last shows the symbology's name.
    EXPECT_EQ(ItemLabelId(10, 1625), IDS_1D_CODABAR);
    EXPECT_EQ(ItemLabelId(10, 1019), IDS_1D_CONVERT_TO_UK_PLESSEY);
    DeviceFlags = Device1D;
    Set(10, 1306, u"1");
    EXPECT_EQ(ItemLabelId(10, 1007), IDS_VALUE_2) << "not by another symbology's mode";
    EXPECT_EQ(ItemChoiceBase(10, 1005), IDS_CHOICE_INDUSTRIAL_START_STOP);
    EXPECT_EQ(ItemChoiceBase(10, 1605), IDS_CHOICE_CODABAR_START_STOP);
    const struct {
        DWORD Page, Item;
    } unknown[] = {{10, 900},     {10, 2900},  {20, 0xF00},  {20, 0x1E00}, {30, 0x1005},
                   {30, 0x11000}, {50, 10014}, {50, 0x1001}, {40, 10001}};
    for (const auto& u : unknown) {
        EXPECT_EQ(ItemLabelId(u.Page, u.Item), 0) << u.Page << " " << u.Item;
        EXPECT_EQ(ItemChoiceBase(u.Page, u.Item), 0) << u.Page << " " << u.Item;
        EXPECT_EQ(ItemChoiceCount(u.Page, u.Item), 0) << u.Page << " " << u.Item;
    }
    EXPECT_EQ(ItemLabelId(20, 0x1400), IDS_GROUP_CODE_11);
    EXPECT_EQ(ItemChoiceCount(30, 0x1000), 0);
    EXPECT_EQ(ItemChoiceBase(50, 10004), 0) << "a toggle has no choices";
}

TEST_F(CatalogueTest, ToggleTexts) {
    const struct {
        DWORD Page, Item;
        WORD Value, Text;
    } cases[] = {
        {10, 0, '0', IDS_DISABLED}, {10, 0, '1', IDS_ENABLED},  {10, 24, '1', IDS_ON},
        {20, 0x1001, '0', IDS_NO},  {30, 0x1C0F, '1', IDS_YES}, {50, 10013, '1', IDS_YES},
        {50, 12004, '0', IDS_NO},   {50, 14246, '1', IDS_ON},   {50, 10004, 0, IDS_BASE_NO_YES},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ToggleTextId(c.Page, c.Item, c.Value), c.Text) << c.Page << " " << c.Item;
}

TEST_F(CatalogueTest, ActiveDeviceOffersWhatIsFitted) {
    const struct {
        WORD Flags, Base, Count;
    } cases[] = {
        {Device1D, 24001, 1},   {Device1D | DeviceRfid, 24001, 2},
        {DeviceRfid, 24002, 1}, {DeviceImager, 24001, 1},
        {0, 24001, 1},
    };
    for (const auto& c : cases) {
        DeviceFlags = c.Flags;
        EXPECT_EQ(ItemChoiceBase(50, 10001), c.Base) << c.Flags;
        EXPECT_EQ(ItemChoiceCount(50, 10001), c.Count) << c.Flags;
        EXPECT_EQ(ItemChoiceCount(50, 10006), 3) << c.Flags;
    }
}

TEST_F(CatalogueTest, PageLists) {
    const struct {
        WORD Flags;
        std::size_t General, Page10, Page20, Page30;
    } cases[] = {
        {1, 17, 19, 9, 0},  {33, 24, 19, 9, 0}, {2, 16, 9, 9, 0}, {34, 23, 9, 9, 0}, {4, 18, 0, 0, 14},
        {36, 25, 0, 0, 14}, {32, 18, 0, 0, 0},  {0, 18, 0, 0, 0}, {7, 17, 19, 9, 0},
    };
    for (const auto& c : cases) {
        ClearRecord();
        DeviceFlags = c.Flags;
        BuildPageLists();
        EXPECT_EQ(PageList(50).size(), c.General) << c.Flags;
        EXPECT_EQ(PageList(50).back(), 10013) << c.Flags;
        EXPECT_EQ(PageList(10).size(), c.Page10) << c.Flags;
        EXPECT_EQ(PageList(20).size(), c.Page20) << c.Flags;
        EXPECT_EQ(PageList(30).size(), c.Page30) << c.Flags;
        EXPECT_TRUE(PageList(40).empty());
    }
    EXPECT_TRUE(GroupItems(50, 10001).empty());
    EXPECT_TRUE(GroupItems(10, 2600).empty());
    EXPECT_TRUE(GroupItems(10, 2900).empty());
    EXPECT_TRUE(GroupItems(30, 0x1E00).empty());
    EXPECT_EQ(GroupItems(20, 0x1400).size(), 6u);
}

TEST_F(CatalogueTest, ActiveDeviceSwitchesTheReaders) {
    const struct {
        WORD Flags, Active;
        DWORD Barcode, Rfid;
    } cases[] = {
        {33, '1', 1, 0}, {33, '2', 0, 1}, {33, '3', 1, 1}, {33, '0', 1, 1}, {33, 0, 1, 1},
        {1, '2', 0, 1},  {32, '1', 0, 1}, {32, '2', 0, 1}, {32, '0', 1, 1}, {4, '1', 1, 0},
    };
    for (const auto& c : cases) {
        DeviceFlags = c.Flags;
        SetValue(general::ActiveDevice, c.Active);
        ApplyActiveDevice();
        EXPECT_EQ(ShellState.BarcodeEnabled, c.Barcode) << c.Flags << " " << c.Active;
        EXPECT_EQ(ShellState.RfidEnabled, c.Rfid) << c.Flags << " " << c.Active;
    }
}

}  // namespace
