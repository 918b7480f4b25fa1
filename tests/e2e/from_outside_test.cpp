// Settings that another program changes, and what the program tells of itself.
#include <thread>

#include "settings/record.h"
#include "tests/e2e/end_to_end.h"

namespace {

class FromOutside : public EndToEnd {
  protected:
    void SetUp() override { FitKnownReaders("laser"); }
    static int Settings(const std::vector<std::string>& words, std::string* output = nullptr) {
        return RunProgram("vantrel-settings", words, output);
    }
    static std::string Get(const std::string& item) {
        std::string output;
        EXPECT_EQ(Settings({"get", item}, &output), 0);
        return output;
    }
    static std::string Status() {
        std::string output;
        RunProgram("vantrel-watch", {"--status"}, &output);
        return output;
    }
    static bool StatusSays(const std::string& text) {
        return Within(20000, [&] { return Status().find(text) != std::string::npos; });
    }
};

TEST_F(FromOutside, ARunningProgramTakesAChangeAtOnce) {
    EXPECT_EQ(Status(), "");
    StartReady();
    EXPECT_TRUE(StatusSays("\"ready\":true"));
    EXPECT_NE(Status().find("\"barcode\":{\"type\":\"laser\",\"rate\":38400,\"on\":true,\"reading\":false}"),
              std::string::npos)
        << Status();
    EXPECT_NE(Status().find("\"keys\":\"xtest\""), std::string::npos);
    Wire->Forget();
    EXPECT_EQ(Settings({"set", "EnableEan128=no", "PrefixCode=<"}), 0);
    EXPECT_TRUE(Wire->Saw("rx com1 07 C6 04 08 FF 0E 00"));
    EXPECT_EQ(Wire->Count(" C6 04 08 FF"), 1) << "nothing but what has changed";
    EXPECT_EQ(Get("EnableEan128") + Get("PrefixCode"), "NO\n<\n");
    EXPECT_TRUE(StatusSays("\"ready\":true"));
    EXPECT_EQ(Scan("1 AB", 4), "<AB\n");
    EXPECT_TRUE(StatusSays("\"delivered\":1")) << Status();
    EXPECT_NE(Status().find("\"scans\":1,"), std::string::npos);

    // While somebody reads it waits: a read is not cut off.
    ASSERT_TRUE(PressTrigger());
    std::thread release([this] {
        Pause(1000);
        Trigger({"up"});
    });
    EXPECT_EQ(Settings({"set", "PrefixCode="}), 0);
    release.join();
    EXPECT_TRUE(Wire->Saw("decoding com1 off", 0)) << "the change came before the release";
    EXPECT_TRUE(StatusSays("\"ready\":true"));

    // A release that comes while the scan is being typed leaves nothing behind that would be waited for.
    Wire->Forget();
    Wire->Command("label 3 repeat:36:Ab9");
    ASSERT_TRUE(PressTrigger());
    EXPECT_TRUE(Wire->Saw("event decode-acked"));
    Trigger({"up"});
    EXPECT_EQ(Settings({"set", "SuffixCode=>"}), 0);
    EXPECT_TRUE(StatusSays("\"ready\":true"));

    StartAgain();
    EXPECT_TRUE(StatusSays("\"settingsOpen\":true"));
    const std::string file = ReadWholeFile(SettingsPath());
    EXPECT_EQ(Settings({"set", "EnableEan128=yes"}), 1);
    EXPECT_EQ(ReadWholeFile(SettingsPath()), file);
    Running->Signal(SIGTERM);
    EXPECT_EQ(Running->Ended(), 0);

    // Without a program the file alone changes.
    EXPECT_EQ(Settings({"set", "EnableEan128=yes", "CheckReaderStatus=yes"}), 0);
    EXPECT_EQ(Get("EnableEan128") + Get("CheckReaderStatus"), "YES\nYES\n");
}

TEST_F(FromOutside, AnImportIsTakenWholeOrNotAtAll) {
    const std::string toml = Terminal.Path("settings.toml");
    const std::string before = ReadWholeFile(SettingsPath());
    EXPECT_EQ(Settings({"export", toml}), 0);
    EXPECT_EQ(Settings({"set", "AutoEnter=No", "BarcodeDecodeTimeout=42"}), 0);
    EXPECT_NE(ReadWholeFile(SettingsPath()), before);
    std::string output;
    EXPECT_EQ(Settings({"diff", toml}, &output), 1);
    EXPECT_EQ(output,
              "- AutoEnter = Scan + ENTER-Character\n- BarcodeDecodeTimeout = 3.0 s\n"
              "+ AutoEnter = No\n+ BarcodeDecodeTimeout = 4.2 s\n");
    const std::string changed = ReadWholeFile(SettingsPath());
    WriteWholeFile(Terminal.Path("bad.toml"), ReadWholeFile(toml) + "\n[word]\nGeneral33 = 1\n");
    EXPECT_EQ(Settings({"import", Terminal.Path("bad.toml")}), 1);
    EXPECT_EQ(Settings({"check", Terminal.Path("bad.toml")}), 1);
    EXPECT_EQ(Settings({"set", "AutoEnterCharacter=Tab", "AutoEnter=Perhaps"}), 1);
    EXPECT_EQ(ReadWholeFile(SettingsPath()), changed);
    EXPECT_EQ(Settings({"check", toml}), 0);
    EXPECT_EQ(Settings({"import", toml}), 0);
    EXPECT_EQ(ReadWholeFile(SettingsPath()), before);
    EXPECT_EQ(Settings({"reset", "general"}), 0);
    EXPECT_EQ(Get("CheckReaderStatus"), "YES\n");
    // A file that cannot be replaced stays.
    const std::string whole = ReadWholeFile(SettingsPath());
    EXPECT_EQ(RunProgram("sh", {"-c", "ulimit -f 0; trap '' XFSZ; exec \"$0\" set AutoEnter=No",
                                std::string(VANTREL_PROGRAMS) + "/vantrel-settings"}),
              1);
    EXPECT_EQ(ReadWholeFile(SettingsPath()), whole);
}

}  // namespace
