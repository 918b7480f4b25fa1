// The main job: a trigger press turns a label into key strokes in the program in front, a record in the
// queue, an event and broadcasts.
#include "settings/record.h"
#include "tests/e2e/end_to_end.h"
#include "tests/e2e/wine_screen.h"

namespace {

struct Label {
    const char* Presented;  // type and data, as the simulated reader takes them
    const char* CodeType;   // in the record
    const char* Data;
};

struct Reader : Named {
    std::vector<Label> Labels;
};

class MainJob : public EndToEnd, public testing::WithParamInterface<Reader> {};

TEST_P(MainJob, LabelsArriveOnEveryChannel) {
    FitReaders(GetParam().Name);
    // Nothing is known about the readers yet: they are found, configured, and given their settings.
    WriteSettings(0, {{&general::DataOutput, '7'}});
    const auto event = StartProgram("vantrel-watch", {"--event"});
    const auto messages = StartProgram("vantrel-watch", {"--messages"});
    StartReady();
    for (const Label& label : GetParam().Labels) {
        const std::string data = label.Data;
        EXPECT_EQ(Scan(label.Presented, data.size() + 1), data + "\n");
        const std::string record = "\"source\":7,\"codeType\":\"" + std::string(label.CodeType) +
                                   "\",\"length\":" + std::to_string(data.size()) +
                                   ",\"uid\":\"\",\"text\":\"" + data + "\",";
        const auto fromEvent = event->ReadLine();
        ASSERT_TRUE(fromEvent);
        EXPECT_NE(fromEvent->find("{\"channel\":\"event\"," + record), std::string::npos) << *fromEvent;
        const auto copy = messages->ReadLine();
        ASSERT_TRUE(copy);
        EXPECT_NE(copy->find("{\"channel\":\"copydata\"," + record), std::string::npos) << *copy;
        EXPECT_EQ(messages->ReadLine(), "{\"channel\":\"decode\",\"source\":7}");
    }
    if (OnWine()) {
        EXPECT_EQ(WineSession::Current().Ask("sender"), std::vector<std::string>{"sender main"});
    }
    // By the program for the key itself: under Wine it was the hands that pulled the trigger above.
    ASSERT_TRUE(WaitUntilReady());
    Wire->Command(std::string("label ") + GetParam().Labels.back().Presented);
    ASSERT_EQ(RunProgram("vantrel-trigger", {"down"}), 0) << "-1: it has not ended in 20 s";
    EXPECT_EQ(Desktop.Typed(3), "A1\n");
    EXPECT_EQ(RunProgram("vantrel-trigger", {"up"}), 0) << "-1: it has not ended in 20 s";
    EXPECT_TRUE(Running->End());
}

// A plain terminal program that was there before.
TEST_F(EndToEnd, EveryCharacterIsTypedIntoATerminalProgram) {
    const std::string file = Terminal.Path("typed");
    const auto xterm = StartProgram(
        "xterm", {"-title", "xterm", "-fa", "DejaVu Sans Mono", "-e", "sh", "-c", "exec cat > \"$0\"", file});
    const auto window = Desktop.WaitForWindow("xterm");
    ASSERT_TRUE(window);
    FitKnownReaders("laser");
    Start();
    Desktop.Focus(window->Id);
    ASSERT_TRUE(WaitUntilReady());
    std::string printable = "!";
    for (char letter = ' '; letter <= '~'; ++letter) {
        printable += letter;
    }
    const std::string second = "back\\slash and \"quotes\"";
    for (const std::string& data : {printable, second}) {
        Wire->Forget();
        Wire->Command("label 3 " + data);
        EXPECT_TRUE(PressTrigger());
        EXPECT_TRUE(Wire->Saw("event decode-acked"));
        Trigger({"up"});
    }
    const std::string expected = printable + "\n" + second + "\n";
    Within(5000, [&] { return ReadWholeFile(file).size() >= expected.size(); });
    EXPECT_EQ(ReadWholeFile(file), expected);
    EXPECT_TRUE(Desktop.KeysAreUp());
    EXPECT_TRUE(Running->End());
}

INSTANTIATE_TEST_SUITE_P(
    Readers, MainJob,
    testing::Values(Reader{"imager",
                           {{"11 4006381333931", "P", "4006381333931"},
                            {"3 ~!@#$%^&*()_+{}|:<>? `-=[];',./", "I", "~!@#$%^&*()_+{}|:<>? `-=[];',./"},
                            {"1 A1", "A", "A1"}}},
                    Reader{"laser",
                           {{"11 4006381333931", "P", "4006381333931"},
                            {"3 repeat:36:Ab9", "I", "Ab9Ab9Ab9Ab9Ab9Ab9Ab9Ab9Ab9Ab9Ab9Ab9"},
                            {"1 A1", "A", "A1"}}},
                    Reader{"1d",
                           {{"P 4006381333931", "P", "4006381333931"},
                            {"T repeat:36:xY-7", "T", "xY-7xY-7xY-7xY-7xY-7xY-7xY-7xY-7xY-7"},
                            {"A A1", "A", "A1"}}}),
    NameOf);

}  // namespace
