// vantrel-setup finds the readers by itself, whichever device they are on, and what it links the program can
// use.
#include <sys/stat.h>
#include <unistd.h>

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
    // The barcode reader now hangs where the RFID reader was.
    fs::remove(Terminal.Path("COM2"));
    fs::create_symlink(devices_[1], Terminal.Path("COM2"));
    EXPECT_EQ(Run({"--yes"}), 0) << output_;
    EXPECT_EQ(Link("COM2"), "/dev/null") << output_;
    // A device that does not answer takes no link away.
    fs::remove(Terminal.Path("COM1"));
    fs::create_symlink("/dev/serial/by-id/unplugged", Terminal.Path("COM1"));
    devices_ = {"/dev/zero"};
    EXPECT_EQ(Run({"--yes"}), 1);
    EXPECT_EQ(Link("COM1"), "/dev/serial/by-id/unplugged");
}

// What is in the way is named with its remedy: real processes of those names, and the device manager's notes
// on a folder of the test's own.
TEST_F(Setup, WhatIsInTheWayIsNamedWithItsRemedy) {
    Devices("laser", "none");
    const std::string device = devices_[1];
    std::vector<std::unique_ptr<ChildProcess>> running;
    for (const char* name : {"agetty", "ModemManager", "brltty"}) {
        fs::copy_file("/bin/sleep", Terminal.Path(name));
    }
    const auto list = [&](const std::string& before) {
        output_.clear();
        return RunProgram("sh", {"-c", before + " " VANTREL_PROGRAMS "/vantrel-setup --list " + device},
                          &output_);
    };
    ASSERT_EQ(list("exec"), 0);
    EXPECT_FALSE(Said("sudo")) << output_;
    const std::string ask = "2>&1 TMPDIR=/none exec " VANTREL_PROGRAMS "/vantrel-setup --yes " + device;
    EXPECT_EQ(RunProgram("sh", {"-c", ask}, &output_), 1);
    EXPECT_TRUE(Said("a process for it: ") && Said("cannot be opened")) << output_;

    running.push_back(
        StartProgram("sh", {"-c", "setsid --ctty " + Terminal.Path("agetty") + " 20 <" + device}));
    const std::string name = fs::path(device).filename();
    EXPECT_TRUE(Within(5000, [&] {
        return list("exec") == 0 &&
               Said("a log-in runs on it: sudo systemctl disable --now serial-getty@" + name);
    })) << output_;

    // Its group may open it, its owner not, not even root without his privilege.
    ASSERT_EQ(chmod(device.c_str(), 0060), 0);
    list(geteuid() == 0 ? "exec setpriv --bounding-set=-dac_override,-dac_read_search" : "exec");
    EXPECT_TRUE(Said("you may not open it; its group is ")) << output_;
    EXPECT_TRUE(Said(": sudo adduser ")) << output_;
    chmod(device.c_str(), 0600);

    running.push_back(StartProgram(Terminal.Path("ModemManager"), {"20"}));
    running.push_back(StartProgram(Terminal.Path("brltty"), {"20"}));
    const auto adapter = [&](const std::string& more) {
        const std::string notes = "E:ID_BUS=usb\nE:ID_VENDOR_ID=0403\nE:ID_MODEL_ID=6001\n" + more;
        return list("unshare --mount " + std::string(geteuid() == 0 ? "" : "--map-root-user ") +
                    "sh -c 'mount -t tmpfs tmpfs /run && mkdir -p /run/udev/data && printf \"" + notes +
                    "\" >/run/udev/data/c$(stat -c %Hr:%Lr " + device + ") && exec \"$@\"' -");
    };
    if (adapter("E:BRLTTY_BRAILLE_DRIVER=hm\n") != 0) {
        GTEST_SKIP() << "no mounts of its own here";
    }
    const std::string rule = "write ENV{ID_VENDOR_ID}==\"0403\", ENV{ID_MODEL_ID}==\"6001\", ";
    EXPECT_TRUE(Said("ModemManager talks to new ports: " + rule + "ENV{ID_MM_PORT_IGNORE}=\"1\"")) << output_;
    EXPECT_TRUE(Said("brltty takes it for a Braille display: " + rule)) << output_;
    // As the package's rule for udev leaves it.
    EXPECT_EQ(adapter("E:ID_MM_PORT_IGNORE=1\nE:BRLTTY_BRAILLE_DRIVER=\n"), 0);
    EXPECT_FALSE(Said("ModemManager") || Said("brltty")) << output_;
}

}  // namespace
