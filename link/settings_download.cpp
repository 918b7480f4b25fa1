#include "link/settings_download.h"

#include <algorithm>

#include "link/command_exchange.h"
#include "link/hex_convert.h"
#include "link/serial_ports.h"
#include "settings/record.h"
#include "shell/shell_state.h"

namespace {

constexpr std::array<BYTE, 4> Save{'S', 'A', 'V', 'E'};
constexpr int SaveTries = 2;

template <class Block>
bool SameWords(const Block& left, const Block& right) {
    return std::equal(left.begin(), left.end(), right.begin(),
                      [](const Relaxed<WORD>& a, const Relaxed<WORD>& b) { return WORD{a} == WORD{b}; });
}

bool NothingChanged() {
    return SameWords(SymbologySettings, SymbologySettingsBefore) &&
           SameWords(GeneralSettings, GeneralSettingsBefore);
}

}  // namespace

int Save1DSettings() {
    if (NothingChanged()) {
        return 1;
    }
    ParameterBlock block{};
    Build1DParameterBlock(block);
    std::array<BYTE, Save.size() + 2 * std::tuple_size_v<ParameterBlock>> command;
    BYTE* digits = std::copy(Save.begin(), Save.end(), command.data());
    HexConvert(HexEncode, block.data(), digits, static_cast<DWORD>(block.size()));

    const HANDLE port = ShellState.BarcodePort;
    SetPortTimeouts(port, MAXDWORD);
    for (int i = 0; i < SaveTries; ++i) {
        ReaderReply reply;
        if (RequestReply(port, command, reply) && ReplyContains(reply, "OK\r")) {
            return 1;
        }
    }
    return 0;
}
