#include "platform/linux/resources/embedded.h"

#include <array>

// The assembler takes the files in; an aligned start lets readers see 16-bit and 32-bit fields where they
// are.
#define EMBED(symbol, path)                     \
    asm(".pushsection .rodata\n"                \
        ".balign 16\n"                          \
        ".local " #symbol                       \
        "Begin\n"                               \
        ".local " #symbol "End\n" #symbol       \
        "Begin:\n"                              \
        ".incbin \"" path "\"\n" #symbol        \
        "End:\n"                                \
        ".popsection\n");                       \
    extern "C" const std::byte symbol##Begin[]; \
    extern "C" const std::byte symbol##End[]

EMBED(VantrelRes, VANTREL_COMPILED_RESOURCES);
EMBED(VantrelDefault, VANTREL_SOUNDS_FOLDER "/Default.wav");
EMBED(VantrelHwandsw, VANTREL_SOUNDS_FOLDER "/Hwandsw.wav");
EMBED(VantrelMenuPop, VANTREL_SOUNDS_FOLDER "/MenuPop.wav");
EMBED(VantrelMsgBox, VANTREL_SOUNDS_FOLDER "/MsgBox.wav");
EMBED(VantrelNotify, VANTREL_SOUNDS_FOLDER "/Notify.wav");
EMBED(VantrelVoicBeep, VANTREL_SOUNDS_FOLDER "/VoicBeep.wav");
EMBED(VantrelAlarm2, VANTREL_SOUNDS_FOLDER "/Alarm2.wav");
EMBED(VantrelAlarm3, VANTREL_SOUNDS_FOLDER "/Alarm3.wav");
EMBED(VantrelLowBatt, VANTREL_SOUNDS_FOLDER "/LowBatt.wav");

std::span<const std::byte> CompiledResources() {
    return {VantrelResBegin, VantrelResEnd};
}

std::span<const EmbeddedSound> EmbeddedSounds() {
    static const std::array<EmbeddedSound, 9> sounds = {{
        {"Default.wav", {VantrelDefaultBegin, VantrelDefaultEnd}},
        {"Hwandsw.wav", {VantrelHwandswBegin, VantrelHwandswEnd}},
        {"MenuPop.wav", {VantrelMenuPopBegin, VantrelMenuPopEnd}},
        {"MsgBox.wav", {VantrelMsgBoxBegin, VantrelMsgBoxEnd}},
        {"Notify.wav", {VantrelNotifyBegin, VantrelNotifyEnd}},
        {"VoicBeep.wav", {VantrelVoicBeepBegin, VantrelVoicBeepEnd}},
        {"Alarm2.wav", {VantrelAlarm2Begin, VantrelAlarm2End}},
        {"Alarm3.wav", {VantrelAlarm3Begin, VantrelAlarm3End}},
        {"LowBatt.wav", {VantrelLowBattBegin, VantrelLowBattEnd}},
    }};
    return sounds;
}
