#include "settings/catalogue.h"

#include "resources/resource.h"
#include "settings/all_fields.h"
#include "shell/shell_state.h"
#include "tests/settings/record_fixture.h"

namespace {

constexpr DWORD NoStatus = 99;

struct CatalogueTest : RecordTest {
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

TEST_F(CatalogueTest, EachItemReadsAndWritesItsWord) {
    const struct {
        WORD Flags;
        DWORD Page, Item;
        bool Symbology;
        std::size_t Word;
    } cases[] = {
        {Device1D, 10, 2100, true, 140},
        {DeviceLaser, 20, 0x1506, true, 70},
        // The page, not the reader, decides about a symbology's layout.
        {DeviceImager, 20, 0x1506, true, 70},
        {Device1D, 50, 13961, false, 113},
        {DeviceLaser, 50, 13961, false, 112},
        {DeviceLaser, 50, 13960, false, 111},
        // The laser's words count even behind another reader's bit.
        {Device1D | DeviceLaser, 50, 13960, false, 111},
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
        {50, 10009, u"AB", 4, 1},
        {50, 10009, u"", 0, 1},
        {50, 11004, u",", 2, 1},
        {10, 1307, u"\x7F", 4, 4},
        // These four are numbers of one word.
        {20, 0x1050, u"\x0A", 2, 1},
        {50, 13001, u"\x05", 2, 1},
        {50, 13960, u"", 0, 1},
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
        {52, 10014, 1},        {52, 0, 1},           {52, 0x12711, 1},      {22, 0x1F01, 1},
        {22, 0x140A, 1},       {32, 0x11001, 1},     {12, 2900, 1},         {12, 900, 1},
        {42, 10001, NoStatus}, {2, 10001, NoStatus}, {53, 10001, NoStatus}, {51, 10014, NoStatus},
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

TEST_F(CatalogueTest, LooksOfItemsThatAreNotThere) {
    const struct {
        DWORD Page, Item;
    } unknown[] = {{10, 900},     {10, 2900},  {20, 0xF00},  {20, 0x1E00}, {30, 0x1005},
                   {30, 0x11000}, {50, 10014}, {50, 0x1001}, {40, 10001}};
    for (const auto& u : unknown) {
        EXPECT_EQ(ItemLabelId(u.Page, u.Item), 0) << u.Page << " " << u.Item;
        EXPECT_EQ(ItemChoiceBase(u.Page, u.Item), 0) << u.Page << " " << u.Item;
        EXPECT_EQ(ItemChoiceCount(u.Page, u.Item), 0) << u.Page << " " << u.Item;
    }
    for (const DWORD group : {2600, 2900})
        EXPECT_TRUE(GroupItems(10, group).empty()) << group;
    EXPECT_TRUE(GroupItems(50, 10001).empty());
    // Without a page of its own, and with the bits of every reader.
    DeviceFlags = 0;
    BuildPageLists();
    EXPECT_TRUE(PageList(10).empty() && PageList(20).empty() && PageList(30).empty() && PageList(40).empty());
    DeviceFlags = DeviceBarcodeMask;
    BuildPageLists();
    EXPECT_EQ(PageList(10).size(), 19u);
    EXPECT_EQ(PageList(20).size(), 9u);
    EXPECT_TRUE(PageList(30).empty());
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
