// The trigger key and the watcher as the programs of their own that they are.
#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <thread>

#include "app/shell_state.h"
#include "platform/linux/windows/message_loop.h"
#include "scan/delivery.h"
#include "settings/all_fields.h"
#include "settings/record.h"
#include "tests/scan/delivery_terminal.h"
#include "tests/support/child_process.h"
#include "tools/record_json.h"

namespace {

std::string Program(const std::string& name) {
    const std::string own = OwnProgram();
    return own.substr(0, own.rfind('/') + 1) + name;
}

ScanData Scan(char letter, const std::string& data) {
    ScanData scan{};
    scan.codeType = static_cast<BYTE>(letter);
    scan.length = static_cast<DWORD>(data.size());
    std::memcpy(scan.data, data.data(), data.size());
    return scan;
}

// Waits for something that a program does, serving the windows meanwhile.
template <class Done>
bool ServeUntil(Done done) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!done()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        layer::PumpMessages();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

TEST(Watcher, TakesRecordsByTheEvent) {
    DeliveryTerminal terminal(DeviceImager);
    SetValue(general::DataOutput, '4');
    ChildProcess watcher({Program("vantrel-watch"), "--count", "3", "--timeout", "10"});
    const std::string scans[] = {"AB12", std::string(4095, 'z'), "\"\\\x01\xE9\r"};
    for (const std::string& data : scans) {
        DeliverScan(ReaderFamily::Packet, Scan('A', data));
        const auto line = watcher.ReadLine();
        ASSERT_TRUE(line.has_value());
        EXPECT_EQ(*line, RecordJson("event",
                                    {reinterpret_cast<const BYTE*>(BarcodeRecord('A', data).data()), 4232}));
    }
    EXPECT_EQ(watcher.Wait(), 0);
    EXPECT_EQ(terminal.TakeRecord(), "");
}

TEST(Watcher, TakesTheBroadcastsAndDyingDoesNotStopDelivery) {
    DeliveryTerminal terminal(DeviceImager | DeviceRfid);
    SetValue(general::DataOutput, '2');
    ChildProcess watcher({Program("vantrel-watch"), "--messages"});
    // The watcher says nothing when it is ready, so it is sent scans until the first arrives.
    std::optional<std::string> line;
    for (int tries = 0; tries < 100 && !line; ++tries) {
        terminal.OnReceiveThread([] { DeliverScan(ReaderFamily::Packet, Scan('A', "AB12")); });
        line = watcher.ReadLine(100);
    }
    EXPECT_EQ(line, R"({"channel":"copydata","source":7,"codeType":"A","length":4,"uid":"","text":"AB12",)"
                    R"("hex":"41423132"})");
    EXPECT_EQ(watcher.ReadLine(), R"({"channel":"decode","source":7})");
    watcher.Signal(SIGKILL);
    watcher.Wait();
    terminal.Messages.clear();
    terminal.OnReceiveThread([] { DeliverScan(ReaderFamily::Packet, Scan('A', "next")); });
    EXPECT_EQ(terminal.Messages, std::vector<std::string>({"copydata", "decode 7"}));
}

TEST(Watcher, GivesUpInTime) {
    DeliveryTerminal terminal(DeviceImager);
    for (const char* way : {"--event", "--messages"}) {
        ChildProcess watcher({Program("vantrel-watch"), way, "--timeout", "1"});
        EXPECT_EQ(watcher.Wait(), 1) << way;
    }
}

TEST(Trigger, KeysReachTheMainWindow) {
    DeliveryTerminal terminal(DeviceImager);
    const struct {
        std::vector<std::string> Arguments;
        std::vector<std::string> Messages;
    } cases[] = {
        {{"down"}, {"WM_USER1DOWN"}},
        {{"up", "--key", "2"}, {"WM_USER2UP"}},
        {{"--key", "2", "press", "5"}, {"WM_USER2DOWN", "WM_USER2UP"}},
    };
    for (const auto& [arguments, messages] : cases) {
        terminal.Messages.clear();
        std::vector<std::string> command = {Program("vantrel-trigger")};
        command.insert(command.end(), arguments.begin(), arguments.end());
        ChildProcess trigger(command);
        EXPECT_TRUE(ServeUntil([&] { return terminal.Messages.size() >= messages.size(); }));
        EXPECT_EQ(terminal.Messages, messages);
        std::optional<int> code;
        ServeUntil([&] { return (code = trigger.Wait(0)).has_value(); });
        EXPECT_EQ(code, 0);
    }
}

TEST(Trigger, SaysWhatIsWrong) {
    TemporaryTerminal terminal;
    const struct {
        std::vector<std::string> Arguments;
        int Code;
    } cases[] = {{{"down"}, 1},
                 {{"press", "5"}, 1},
                 {{}, 2},
                 {{"press"}, 2},
                 {{"press", "5x"}, 2},
                 {{"press", "-5"}, 2},
                 {{"down", "up"}, 2},
                 {{"down", "--key"}, 2},
                 {{"down", "--key", "3"}, 2},
                 {{"--key", "0", "up"}, 2},
                 {{"sideways"}, 2}};
    for (const auto& [arguments, code] : cases) {
        std::vector<std::string> command = {Program("vantrel-trigger")};
        command.insert(command.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(ChildProcess(command).Wait(), code) << testing::PrintToString(arguments);
    }
}

TEST(RecordJson, RecordsThatLieAreSaid) {
    std::vector<BYTE> record(4232);
    record[8] = 0x03;
    record[9] = 0x10;  // 4,099: the field's size
    EXPECT_NE(RecordJson("event", record).find("\"length\":4099,"), std::string::npos);
    record[8] = 0x04;
    EXPECT_EQ(RecordJson("event", record), R"({"channel":"event","error":"a length of 4100"})");
    record[11] = 0xFF;
    EXPECT_NE(RecordJson("event", record).find("error"), std::string::npos);
    record.pop_back();
    EXPECT_EQ(RecordJson("event", record), R"({"channel":"event","error":"a record of 4231 bytes"})");

    record.assign(4232, 'u');
    std::memset(record.data() + 8, 0, 4);
    EXPECT_NE(RecordJson("event", record).find("\"uid\":\"" + std::string(121, 'u') + "\","),
              std::string::npos);

    record.assign(4232, 0);
    record[1] = '"';
    record[8] = 4;
    std::memcpy(record.data() + 133, "\\\xE9\0\r", 4);
    EXPECT_EQ(
        RecordJson("x", record),
        R"({"channel":"x","source":0,"codeType":"\"","length":4,"uid":"","text":"\\\u00e9\u0000\u000d",)"
        R"("hex":"5CE9000D"})");
}

}  // namespace
