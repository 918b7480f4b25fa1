// The setting items that the settings sheet shows and edits: numbers, labels, kinds, choices, values and
// order. Items are named by the base of their page and their number. Strings are numbers of the string
// table. Main thread, except where noted.
#pragma once

#include <span>

#include "settings/field.h"

inline constexpr DWORD Page1D = 10;      // symbologies of the 1D reader
inline constexpr DWORD PageLaser = 20;   // symbologies of the long-range laser
inline constexpr DWORD PageImager = 30;  // symbologies of the 2D imager
inline constexpr DWORD PageGeneral = 50;

inline constexpr int KindList = 0;
inline constexpr int KindToggle = 1;
inline constexpr int KindNumber = 3;
inline constexpr int KindText = 4;

inline constexpr DWORD MaxGeneralItems = 25;

// What the pages show; filled by BuildPageLists.
extern WORD GeneralItems[MaxGeneralItems];
extern Relaxed<DWORD> GeneralItemCount;
extern Relaxed<DWORD> SymbologyGroupCount;  // pages 10 and 20
extern Relaxed<DWORD> ImagerGroupCount;     // page 30

// Plays a read sound (1 to 9; 0 stops the one that plays), so that who chooses one hears it. Set at start-up.
extern void (*PreviewSound)(int);

// Page base plus 1 to set, plus 2 to get; for a base other than 10, 20 and 30 that of page 50.
DWORD MakePageCode(DWORD pageBase, int forSet);

// On page 10 hundreds and rest, elsewhere high and low byte.
struct ItemPosition {
    DWORD Group, Index;
};
ItemPosition SplitItemId(DWORD pageBase, DWORD itemId);

// Gets or sets an item's value. The value of a text is the text, of a number a double word (of some one
// word), of everything else one word; a get writes no more than that, so callers clear the buffer first.
// A set stores without a check; a new beep is played. A get sets the status to 4 for a double word and to 1
// otherwise; a set leaves it. Result: 0 without a status, 4 when the status is not 1, otherwise twice the
// number of characters before the first zero. An unknown item, a heading or a code of no page changes neither
// record nor buffer.
DWORD AccessSettingItem(DWORD pageCode, DWORD itemId, DWORD* status, std::span<WCHAR, TextWords> value);

// String of the item's label, 0 for an unknown item. The two lengths of a symbology are called by its length
// mode.
WORD ItemLabelId(DWORD pageBase, DWORD itemId);

// The item's kind; on page 10 asked with the index. The group makes no difference.
int ItemKind(DWORD groupId, DWORD itemOrIndex);

// String of a list's choice 0 and the number of choices; 0 for other items.
WORD ItemChoiceBase(DWORD pageBase, DWORD itemId);
WORD ItemChoiceCount(DWORD pageBase, DWORD itemId);

// String for a toggle's value; on page 10 asked with the index. No string has the number where the value is
// neither '0' nor '1'.
WORD ToggleTextId(DWORD pageBase, DWORD itemOrIndex, WORD value);

// A group's items in display order: indexes on page 10, item numbers on 20 and 30. Empty for a group without
// options, an unknown group and page 50.
std::span<const WORD> GroupItems(DWORD pageBase, DWORD groupId);

// Fills GeneralItems and the counts from DeviceFlags. Start-up thread, before the sheet can open.
void BuildPageLists();

// What the page shows at its root: groups, or the items of the general page. Empty for an unknown page.
std::span<const WORD> PageList(DWORD pageBase);

// Switches the readers on and off as ActiveDevice says. Apply thread.
void ApplyActiveDevice();

// The field behind an item; nullptr for an unknown one and for headings.
const Setting* FindSetting(DWORD pageBase, DWORD itemId);

// The layout in which a page reads and writes its items.
ReaderType PageReader(DWORD pageBase);

// The two length values of an item's group in display order, and the list that governs them; all nullptr
// where the group has none.
struct LengthItems {
    const Setting* Mode = nullptr;
    const Setting* First = nullptr;
    const Setting* Second = nullptr;
};
LengthItems FindLengthItems(DWORD pageBase, DWORD itemId);
