// Any bytes as a settings file, and from its device flags on as a change that another program asks for: the
// record says what the file says but for what has to be put right, a file that is written is taken back as it
// was, and whatever the values are, no reader of the record (items, texts, downloads) leaves its buffers.
#include <algorithm>
#include <bitset>

#include "link/parameter_download.h"
#include "settings/all_fields.h"
#include "settings/catalogue.h"
#include "settings/settings_change.h"
#include "settings/settings_file.h"
#include "tests/fuzz/require.h"

namespace {

constexpr std::size_t FlagsAt = 40, WordsAt = 240;

WORD FileWord(const SettingsImage& image, std::size_t at) {
    return static_cast<WORD>(image[at] | image[at + 1] << 8);
}

void RequireEndedTexts() {
    for (const Setting* text : {&general::PrefixCode, &general::SuffixCode}) {
        std::array<WCHAR, TextWords> copy{};
        GetText(*text, copy);
        Require(std::ranges::find(copy, 0) != copy.end());
    }
}

// What the program makes of the record: downloads, the items of a page.
void ReadRecord(DWORD page) {
    ParameterBlock block{};
    Build1DParameterBlock(block);
    for (const auto rows : {ParameterRows::Laser, ParameterRows::ImagerFirst, ParameterRows::ImagerSecond}) {
        ParameterPacket packet{};
        BuildParameterPacket(rows, packet);
        Require(packet.Length >= EmptyParameterPacket && packet.Length <= packet.Bytes.size());
        Require(packet.Bytes[0] == packet.Length);
    }
    BuildPageLists();
    Require(GeneralItemCount <= MaxGeneralItems);
    for (const WORD id : PageList(page)) {
        DWORD status = 0;
        std::array<WCHAR, TextWords> value{};
        AccessSettingItem(MakePageCode(page, 0), id, &status, value);
        ItemLabelId(page, id);
        for (const WORD item : GroupItems(page, id)) {
            ItemLabelId(page, item);
            FindLengthItems(page, item);
        }
    }
}

// The words of a file of this version are taken as they are, save these.
bool PutRight(std::size_t word) {
    const auto at = [](const Setting& setting) {
        return SymbologyWords + PlaceOf(setting, FittedReader()).Word;
    };
    return word == at(general::PrefixCode) + TextWords - 1 ||
           word == at(general::SuffixCode) + TextWords - 1 || word == at(general::RfidReadDuration);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    SettingsImage image{};
    const std::size_t used = std::min<std::size_t>(size, image.size());
    std::copy_n(bytes, used, image.begin());
    TakeSettingsImage(image);
    Require(DeviceFlags == FileWord(image, FlagsAt));
    Require(Value(general::RfidReadDuration) != 0);
    RequireEndedTexts();
    const bool current = FileWord(image, 0) >= FileMajor && FileWord(image, 2) >= FileMinor;
    for (std::size_t word = 0; current && word < RecordWords; ++word) {
        Require(RecordWord(word) == FileWord(image, WordsAt + 2 * word) || PutRight(word));
    }

    SettingsImage written, again;
    BuildSettingsImage(written);
    Require(FileWord(written, 0) == FileMajor && FileWord(written, 2) == FileMinor && written[4] == 5);
    Require(
        std::all_of(written.begin() + FlagsAt + 2, written.begin() + WordsAt, [](BYTE b) { return b == 0; }));
    TakeSettingsImage(written);
    BuildSettingsImage(again);
    Require(again == written);

    const std::span<const BYTE> change = std::span(bytes, size).subspan(std::min(size, FlagsAt));
    if (IsChange(change)) {
        TakeChange(change);
        BuildSettingsImage(again);
        RequireEndedTexts();
        std::bitset<RecordWords> named;
        for (std::size_t at = 2; at < change.size(); at += 4) {
            named.set(static_cast<std::size_t>(change[at] | change[at + 1] << 8));
        }
        for (std::size_t word = 0; word < RecordWords; ++word) {
            const std::size_t at = WordsAt + 2 * word;
            Require(named[word] || FileWord(again, at) == FileWord(written, at));
        }
    }
    constexpr DWORD pages[] = {Page1D, PageLaser, PageImager, PageGeneral};
    ReadRecord(pages[image[7] % 4]);
    return 0;
}
