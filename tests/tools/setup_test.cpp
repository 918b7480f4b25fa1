// vantrel-setup finds the readers by itself, whichever device they are on, and what it links the program can
// use.
#include <filesystem>

#include "tests/e2e/end_to_end.h"

namespace {

namespace fs = std::filesystem;

class Setup : public EndToEnd {
  protected:
    // Fits readers and takes their links away; the devices, the RFID reader's first.
    std::vector<std::string> Devices(const std::string& barcode, const std::string& rfid,
                                     const std::vector<std::string>& options = {}) {
        FitReaders(barcode, rfid, options);
        for (const char* name : {"COM2", "COM1"}) {
            devices_.push_back(fs::read_symlink(Terminal.Path(name)));
            fs::remove(Terminal.Path(name));
        }
        return devices_;
    }
    int Run(std::vector<std::string> words) {
        output_.clear();
        words.insert(words.end(), devices_.begin(), devices_.end());
        return RunProgram("vantrel-setup", words, &output_);
    }
    std::string Link(const char* name) const {
        std::error_code none;
        return fs::read_symlink(Terminal.Path(name), none);
    }
    bool Said(const std::string& text) const { return output_.find(text) != std::string::npos; }

    std::vector<std::string> devices_;
    std::string output_;
};

TEST_F(Setup, BothReadersAreFoundAndLinked) {
    Devices("imager", "100", {"--barcode-rate", "9600", "--rfid-rate", "38400"});
    EXPECT_EQ(Run({}), 1);  // nobody agrees
    EXPECT_EQ(Link("COM1"), "");
    EXPECT_EQ(Run({"--yes"}), 0) << output_;
    EXPECT_TRUE(Said("a 2D imager, at 9600 bits")) << output_;
    EXPECT_TRUE(Said("an RFID reader, model 100, at 38400 bits")) << output_;
    EXPECT_EQ(Link("COM1"), devices_[1]);
    EXPECT_EQ(Link("COM2"), devices_[0]);
}

TEST_F(Setup, TerminalWithoutAnRfidReaderWorks) {
    Devices("laser", "none");
    WriteSettings(DeviceLaser);
    EXPECT_EQ(Run({"--yes"}), 0) << output_;
    EXPECT_EQ(Link("COM1"), devices_[1]);
    EXPECT_EQ(Link("COM2"), "/dev/null");
    StartReady();
    EXPECT_EQ(Scan("1 AB12", 5), "AB12\n");
    EXPECT_EQ(Run({"--list"}), 0);
    EXPECT_TRUE(Said("in use by vantrel (process " + std::to_string(Running->Id()) + ")")) << output_;
    EXPECT_TRUE(Said("end it first")) << output_;
    EXPECT_TRUE(Running->End());
    // A device that does not answer takes no link away.
    fs::remove(Terminal.Path("COM1"));
    fs::create_symlink("/dev/serial/by-id/unplugged", Terminal.Path("COM1"));
    devices_ = {"/dev/zero"};
    EXPECT_EQ(Run({"--yes"}), 1);
    EXPECT_EQ(Link("COM1"), "/dev/serial/by-id/unplugged");
}

}  // namespace
