// The main job in a Wayland session: the program finds out by itself where windows and keys go.
#include "tests/e2e/end_to_end.h"
#include "tests/platform/sway_session.h"

namespace {

TEST_F(EndToEnd, LabelsAreTypedIntoAWaylandTerminal) {
    SwaySession session(ReadWholeFile(VANTREL_SWAY_CONF));  // as the user guide says
    session.OpenTerminal();
    FitReaders("imager");
    WriteSettings(DeviceImager);
    StartReady({"DISPLAY=", "QT_QPA_PLATFORM=", "VANTREL_KEYBOARD="});
    std::string expected;
    for (const char* label : {"FIRST", "Second-2", "4006381333931"}) {
        Scan(std::string("1 ") + label, 0);
        expected += std::string(label) + "\r";
        EXPECT_EQ(session.Typed(expected.size()), expected);
    }
    EXPECT_TRUE(Running->End());
}

}  // namespace
