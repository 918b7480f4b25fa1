// vantrel-publish against a real broker: nothing that it has taken is lost, and what it has missed is told.
#include <gtest/gtest.h>
#include <mosquitto.h>
#include <sys/resource.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "tests/e2e/end_to_end.h"
#include "tests/publish/test_broker.h"

namespace {

constexpr const char* Scans = "vantrel/t7/scans";
constexpr const char* Status = "vantrel/t7/status";

QJsonObject Json(const std::string& text) {
    return QJsonDocument::fromJson(QByteArray::fromStdString(text)).object();
}

void Configure(const TemporaryTerminal& terminal, int port, const std::string& more = "") {
    WriteWholeFile(terminal.Path("publish.toml"), "terminal = \"t7\"\nhost = \"127.0.0.1\"\nport = " +
                                                      std::to_string(port) + "\nkeep-alive = 5\n" + more);
}

std::unique_ptr<ChildProcess> StartPublishing(const TemporaryTerminal& terminal) {
    return StartProgram("vantrel-publish", {"--config", terminal.Path("publish.toml")});
}

class Publish : public testing::Test {
  protected:
    void StartPublisher() { Publisher = StartPublishing(Terminal); }
    // Programs of the terminal that take messages.
    int Sockets() const {
        int count = 0;
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(Terminal.Path("windows"), none)) {
            count += entry.is_socket() && entry.path().filename().string().front() != '.';
        }
        return count;
    }
    std::string Waiting() const {
        std::string output;
        RunProgram("vantrel-publish", {"--config", Terminal.Path("publish.toml"), "--show"}, &output);
        return output;
    }

    TemporaryTerminal Terminal;
    std::unique_ptr<ChildProcess> Publisher;
};

// What was published accounts for every scan by the counter of the simulated terminal: it was taken, or is
// told as missed.
struct Account {
    std::int64_t Scans = 0, Missed = 0;
};

// At least once, numbered without a hole, in order, a number never with another content.
Account AccountOf(TestSubscriber& subscriber) {
    Account account;
    std::map<qint64, std::string> known;
    QString last;
    for (const std::string& message : subscriber.Messages(Scans)) {
        const QJsonObject json = Json(message);
        const qint64 sequence = json["sequence"].toInteger();
        const auto [entry, isNew] = known.try_emplace(sequence, message);
        EXPECT_EQ(entry->second, message) << "a number with two contents";
        if (!isNew) {
            continue;
        }
        EXPECT_EQ(sequence, static_cast<qint64>(known.size())) << "out of order, or one is missing";
        const std::int64_t missed = json["missed"].toInteger();
        account.Missed += missed;
        account.Scans += json.contains("missed") ? missed : 1;
        if (json.contains("data")) {
            EXPECT_LT(last, json["data"].toString());
            last = json["data"].toString();
        }
    }
    return account;
}

TEST_F(Publish, EverythingTakenArrivesWhateverHappens) {
    const char* wanted = std::getenv("VANTREL_PUBLISH_SCANS");
    const int scans = wanted != nullptr ? std::atoi(wanted) : 600;
    TestBroker broker(Terminal.Folder());
    TestSubscriber subscriber(broker.Port());
    broker.Signal(SIGUSR1);  // it writes its sessions to the disk
    Configure(Terminal, broker.Port());
    const auto terminal = StartProgram("vantrel-simulated-terminal");
    StartPublisher();
    ASSERT_TRUE(Within(10000, [&] { return subscriber.Count(Status) != 0; }));
    terminal->WriteLine("scan 1 " + std::to_string(scans) + " 10");

    std::optional<std::string> done;
    const auto pass = [&](int milliseconds) { done = done ? done : terminal->ReadLine(milliseconds); };
    const auto limitFiles = [&](rlim_t bytes) {
        rlimit limit{};
        prlimit(Publisher->Id(), RLIMIT_FSIZE, nullptr, &limit);
        limit.rlim_cur = bytes;
        EXPECT_EQ(prlimit(Publisher->Id(), RLIMIT_FSIZE, &limit, nullptr), 0);
    };
    int rounds = 0;
    do {
        ++rounds;
        pass(700);
        broker.Kill();
        pass(500);
        broker.Start();
        EXPECT_TRUE(Within(10000, [&] { return subscriber.Connected(); }));
        pass(700);
        broker.Signal(SIGSTOP);
        pass(1000);
        broker.Signal(SIGCONT);
        pass(700);
        limitFiles(0);
        pass(700);
        limitFiles(RLIM_INFINITY);
        pass(1000);
        Publisher->Signal(SIGKILL);
        Publisher->Wait(5000);
        pass(500);
        StartPublisher();
    } while (!done && rounds < 1000);
    EXPECT_TRUE(Within(60000, [&] { return AccountOf(subscriber).Scans >= scans; }));
    const Account account = AccountOf(subscriber);
    EXPECT_EQ(account.Scans, scans);
    EXPECT_GT(account.Missed, 0) << "the publisher was away, and the disk was full";
    EXPECT_LT(account.Missed, scans);
    EXPECT_TRUE(Within(5000, [&] { return Waiting().empty(); }));
    std::printf("%d scans, %d rounds: %zu messages, %lld scans told as missed\n", scans, rounds,
                subscriber.Count(Scans), static_cast<long long>(account.Missed));
}

TEST_F(Publish, TheStatusIsRetainedAndTheLastWillSaysOffline) {
    TestBroker broker(Terminal.Folder());
    TestSubscriber subscriber(broker.Port());
    Configure(Terminal, broker.Port());
    const auto statuses = [&] { return subscriber.Messages(Status); };
    StartPublisher();
    EXPECT_TRUE(Within(10000, [&] { return statuses() == std::vector<std::string>{"online"}; }));
    Publisher->Signal(SIGKILL);
    EXPECT_TRUE(Within(10000, [&] { return statuses().size() == 2; }));
    StartPublisher();
    EXPECT_TRUE(Within(10000, [&] { return statuses().size() == 3; }));
    EXPECT_EQ(StartPublishing(Terminal)->Wait(5000), 1) << "one publisher a store";
    Publisher->Signal(SIGTERM);
    EXPECT_EQ(Publisher->Wait(5000), 0);
    EXPECT_TRUE(Within(10000, [&] { return statuses().size() == 4; }));
    EXPECT_EQ(statuses(), (std::vector<std::string>{"online", "offline", "online", "offline"}));
}

TEST_F(Publish, WhatDoesNotFitIsToldAndTheOldestStay) {
    Configure(Terminal, FreePort(), "store-bytes = 65536\n");
    const auto terminal = StartProgram("vantrel-simulated-terminal");
    StartPublisher();
    ASSERT_TRUE(Within(10000, [&] { return Sockets() == 2; }));
    terminal->WriteLine("scan 1 1000");
    ASSERT_TRUE(terminal->ReadLine(60000));
    const std::string full = Waiting();
    EXPECT_NE(full.find("L000001"), std::string::npos);
    EXPECT_EQ(full.find("L001000"), std::string::npos);
    TestBroker broker(Terminal.Folder());
    TestSubscriber subscriber(broker.Port());
    Publisher->Signal(SIGTERM);
    EXPECT_EQ(Publisher->Wait(5000), 0);
    Configure(Terminal, broker.Port(), "store-bytes = 65536\n");
    StartPublisher();
    EXPECT_TRUE(Within(30000, [&] { return AccountOf(subscriber).Scans >= 1000; }));
    EXPECT_EQ(AccountOf(subscriber).Scans, 1000);
}

TEST_F(Publish, CertificatesAndPasswords) {
    const std::string folder = Terminal.Folder();
    const std::string make =
        "cd " + folder +
        " && openssl req -x509 -newkey rsa:2048 -nodes -keyout server.key -out server.crt -days 2 "
        "-subj /CN=127.0.0.1 -addext subjectAltName=IP:127.0.0.1 2>/dev/null"
        " && mosquitto_passwd -c -b passwords t7 secret && chmod 644 passwords server.key";
    ASSERT_EQ(RunProgram("/bin/sh", {"-c", make}), 0);
    TestBroker broker(folder, "allow_anonymous false\npassword_file " + folder + "/passwords\ncafile " +
                                  folder + "/server.crt\ncertfile " + folder + "/server.crt\nkeyfile " +
                                  folder + "/server.key\n");
    TestSubscriber subscriber(broker.Port(), [&](mosquitto* client) {
        mosquitto_tls_set(client, (folder + "/server.crt").c_str(), nullptr, nullptr, nullptr, nullptr);
        mosquitto_username_pw_set(client, "t7", "secret");
    });
    const std::string login =
        "ca-file = \"" + folder + "/server.crt\"\nuser = \"t7\"\npassword-file = \"" + folder + "/pw\"\n";
    Configure(Terminal, broker.Port(), login);
    WriteWholeFile(folder + "/pw", "wrong\n");
    StartPublisher();
    EXPECT_FALSE(Within(1500, [&] { return subscriber.Count(Status) != 0; }));
    // The password is read for each connection.
    WriteWholeFile(folder + "/pw", "secret\n");
    EXPECT_TRUE(Within(15000, [&] { return subscriber.Count(Status) != 0; }));
}

class PublishedScan : public EndToEnd {};

TEST_F(PublishedScan, OfTheRealProgramArrivesWithWhatIsKnownOfIt) {
    TestBroker broker(Terminal.Folder());
    TestSubscriber subscriber(broker.Port());
    Configure(Terminal, broker.Port());
    FitReaders("laser");
    WriteSettings(DeviceLaser, {{&general::CheckReaderStatus, '0'}, {&general::DataOutput, '3'}});
    const auto publisher = StartPublishing(Terminal);
    StartReady();
    // No UTF-8, and begun like it at the end.
    EXPECT_EQ(Scan("3 hex:43 41 46 C9", 4), "CAF\n");
    ASSERT_TRUE(Within(10000, [&] { return subscriber.Count(Scans) == 1; }));
    QJsonObject json = Json(subscriber.Messages(Scans)[0]);
    EXPECT_TRUE(json["time"].toString().startsWith("20"));
    json.remove("time");
    EXPECT_EQ(
        QJsonDocument(json).toJson(QJsonDocument::Compact).toStdString(),
        "{\"base64\":\"Q0FGyQ==\",\"length\":4,\"sequence\":1,\"source\":\"barcode\",\"terminal\":\"t7\","
        "\"type\":\"I\"}");
    // Without messages nothing comes, and that is told.
    EXPECT_EQ(RunProgram("vantrel-settings", {"set", "DataOutput=Keyboard Emulation"}), 0);
    ASSERT_TRUE(WaitUntilReady());
    EXPECT_EQ(Scan("1 AB", 3), "AB\n");
    EXPECT_TRUE(Within(30000, [&] { return subscriber.Count(Scans) == 2; }));
    EXPECT_EQ(Json(subscriber.Messages(Scans).back())["missed"].toInteger(), 1);
    EXPECT_TRUE(Running->End());
}

}  // namespace
