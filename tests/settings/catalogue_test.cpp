#include "settings/catalogue.h"

#include "settings/all_fields.h"
#include "shell/shell_state.h"
#include "tests/settings/record_fixture.h"

namespace {

constexpr DWORD NoStatus = 99;

struct CatalogueTest : RecordTest {
    std::array<WCHAR, TextWords> Buffer{};
    DWORD Status = NoStatus;

    DWORD Get(DWORD pageBase, DWORD item) {
        Buffer = {};
        return AccessSettingItem(MakePageCode(pageBase, 0), item, &Status, Buffer);
    }
    void Set(DWORD pageBase, DWORD item, std::u16string_view value) {
        Buffer = {};
        std::ranges::copy(value, Buffer.begin());
        AccessSettingItem(MakePageCode(pageBase, 1), item, nullptr, Buffer);
    }
};

TEST_F(CatalogueTest, EachItemReadsAndWritesItsWord) {
    const struct {
        WORD Flags;
        DWORD Page, Item;
        std::size_t Word;
    } cases[] = {
        {Device1D, 10, 2100, 140},
        {DeviceLaser, 20, 0x1506, 70},
        // The page, not the reader, decides about a symbology's layout.
        {DeviceImager, 20, 0x1506, 70},
        {Device1D, 50, 13961, SymbologyWords + 113},
        {DeviceLaser, 50, 13961, SymbologyWords + 112},
        {DeviceLaser, 50, 13960, SymbologyWords + 111},
        // The laser's words count even behind another reader's bit.
        {Device1D | DeviceLaser, 50, 13960, SymbologyWords + 111},
        {DeviceRfid, 50, 14205, SymbologyWords + 147},
        {DeviceRfid, 50, 11004, SymbologyWords + 83},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.Flags << " " << c.Page << " " << c.Item);
        FillRecord(0);
        DeviceFlags = c.Flags;
        Set(c.Page, c.Item, u"\x1234more");
        for (std::size_t word = 0; word < RecordWords; ++word)
            EXPECT_EQ(RecordWord(word), word == c.Word ? 0x1234 : 0);
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
        {50, 10005, u"\xFFFF", 4, 4},
        {50, 10009, u"ABCDEFGHIJ", 20, 1},
        {50, 10009, u"", 0, 1},
        {10, 1307, u"\x7F", 4, 4},
        // These two are numbers of one word.
        {20, 0x1050, u"\x0A", 2, 1},
        {50, 13960, u"", 0, 1},
    };
    DeviceFlags = DeviceLaser;
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.Page << " " << c.Item);
        Set(c.Page, c.Item, c.Stored);
        EXPECT_EQ(Get(c.Page, c.Item), c.Result);
        EXPECT_EQ(Status, c.Status);
        EXPECT_EQ(std::u16string(Buffer.data()), c.Stored);
    }
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
    FillRecord('q');
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.Code << " " << c.Item);
        Buffer = {u'x'};
        Status = NoStatus;
        AccessSettingItem(c.Code, c.Item, &Status, Buffer);
        EXPECT_EQ(Status, c.Status);
        EXPECT_EQ(std::u16string(Buffer.data()), u"x");
    }
    for (std::size_t word = 0; word < RecordWords; ++word)
        EXPECT_EQ(RecordWord(word), 'q');
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
