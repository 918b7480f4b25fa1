#include "platform/linux/resources/embedded.h"

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

// All sounds, in the order of their numbers 1 to 9.
#define EACH_SOUND(use)                                                                                  \
    use(Default) use(Hwandsw) use(MenuPop) use(MsgBox) use(Notify) use(VoicBeep) use(Alarm2) use(Alarm3) \
        use(LowBatt)
#define EMBED_SOUND(name) EMBED(Vantrel##name, VANTREL_SOUNDS_FOLDER "/" #name ".wav");
#define SOUND_ENTRY(name) {#name ".wav", {Vantrel##name##Begin, Vantrel##name##End}},
EACH_SOUND(EMBED_SOUND)

std::span<const std::byte> CompiledResources() {
    return {VantrelResBegin, VantrelResEnd};
}

std::span<const EmbeddedSound> EmbeddedSounds() {
    static const EmbeddedSound sounds[] = {EACH_SOUND(SOUND_ENTRY)};
    return sounds;
}
