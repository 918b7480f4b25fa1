// What framing costs: checksums, sealing, and finding the packets of a read.
#include <benchmark/benchmark.h>

#include <vector>

#include "link/framing.h"
#include "link/packet_message.h"

namespace {

// A DECODE_DATA packet of the greatest length, sealed.
std::vector<BYTE> DecodePacket(bool continued) {
    std::vector<BYTE> packet(255, 'x');
    packet[0] = 255;
    packet[1] = DECODE_DATA;
    packet[2] = 0;
    packet[3] = continued ? SsiContinued : 0;
    SsiFrame frame;
    const std::size_t size = SealSsiPacket(packet, frame);
    return {frame.begin(), frame.begin() + size};
}

void SsiChecksumOfPacket(benchmark::State& state) {
    const std::vector<BYTE> packet(static_cast<std::size_t>(state.range(0)), 0xA5);
    for (auto _ : state)
        benchmark::DoNotOptimize(SsiChecksum(packet));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(SsiChecksumOfPacket)->Arg(4)->Arg(64)->Arg(255);

void SealPacket(benchmark::State& state) {
    SsiFrame frame;
    for (auto _ : state) {
        benchmark::DoNotOptimize(SealSsiPacket(SsiStartDecode, frame));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(SealPacket);

void EscapeCommand(benchmark::State& state) {
    const std::vector<BYTE> command(64, 'A');
    EscFrame frame;
    for (auto _ : state) {
        benchmark::DoNotOptimize(BuildEscapeFrame(command, frame));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(EscapeCommand);

// A decode of the given number of packets: found, verified and joined.
void JoinDecode(benchmark::State& state) {
    std::vector<BYTE> read;
    for (auto i = state.range(0); i > 0; --i) {
        const std::vector<BYTE> packet = DecodePacket(i > 1);
        read.insert(read.end(), packet.begin(), packet.end());
    }
    PacketMessage message;
    for (auto _ : state) {
        for (std::span<const BYTE> rest(read); !rest.empty();) {
            const SsiPiece piece = NextSsiPacket(rest);
            AddPacket(message, piece.Bytes, 0);
            rest = rest.subspan(piece.Size);
        }
        benchmark::DoNotOptimize(message.Length);
        ClearMessage(message);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(read.size()));
}
BENCHMARK(JoinDecode)->Arg(1)->Arg(4)->Arg(16);

}  // namespace

BENCHMARK_MAIN();
