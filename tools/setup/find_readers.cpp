#include "tools/setup/find_readers.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "link/detection.h"
#include "link/readers/barcode_reader.h"
#include "link/serial_ports.h"
#include "platform/kernel.h"
#include "platform/linux/kernel/terminal.h"
#include "settings/record.h"

namespace {

namespace fs = std::filesystem;

FoundReader Ask() {
    FoundReader found;
    const HANDLE port = OpenReaderPort(BarcodePortSelector);
    if (port == nullptr) {
        return found;
    }
    found.Opened = true;
    Sleep(RfidProbeDelay);
    SetPortLine(port, 0);
    if (ProbeReaderRates(port, DeviceRfid) != 0) {
        found.Device = DeviceRfid;
        found.RfidModel = RfidReaderModel;
    } else {
        Sleep(BarcodeProbeDelay);
        found.Device = ProbeBarcodeReader(port);
    }
    found.Rate = PortRate(port);
    CloseHandle(port);
    return found;
}

// A process of its own for each device: the program knows one barcode port, "COM1:" of its terminal.
class Question {
  public:
    explicit Question(const std::string& device) {
        if (const std::error_code failed = Put(device)) {
            std::fprintf(stderr, "vantrel-setup: %s: a process for it: %s\n", device.c_str(),
                         failed.message().c_str());
        }
    }
    ~Question() {
        close(answer_);
        if (process_ > 0) {
            waitpid(process_, nullptr, 0);
        }
        std::error_code ignored;
        if (!folder_.empty()) {
            fs::remove_all(folder_, ignored);
        }
    }
    Question(Question&& other) noexcept
        : folder_(std::exchange(other.folder_, "")),
          process_(std::exchange(other.process_, -1)),
          answer_(std::exchange(other.answer_, -1)) {}
    Question& operator=(Question&&) = delete;

    FoundReader Answer() {
        FoundReader found;
        return read(answer_, &found, sizeof found) == sizeof found ? found : FoundReader{};
    }

  private:
    std::error_code Put(const std::string& device) {
        const auto lastError = [] { return std::error_code(errno, std::generic_category()); };
        std::error_code failed;
        const fs::path target = fs::absolute(device, failed);
        std::string folder = failed ? "" : fs::temp_directory_path(failed) / "vantrel-setup-XXXXXX";
        if (failed) {
            return failed;
        }
        if (mkdtemp(folder.data()) == nullptr) {
            return lastError();
        }
        folder_ = folder;
        fs::create_symlink(target, folder + "/COM1", failed);
        int ends[2];
        if (failed || pipe(ends) != 0) {
            return failed ? failed : lastError();
        }
        process_ = fork();
        if (process_ == 0) {
            layer::UseTerminalFolder(folder);
            const FoundReader found = Ask();
            _exit(write(ends[1], &found, sizeof found) == sizeof found ? 0 : 1);
        }
        failed = process_ < 0 ? lastError() : std::error_code();
        close(ends[1]);
        answer_ = ends[0];
        return failed;
    }

    std::string folder_;
    pid_t process_ = -1;
    int answer_ = -1;
};

}  // namespace

std::vector<FoundReader> AskDevices(const std::vector<std::string>& paths) {
    std::vector<Question> questions;
    for (const std::string& path : paths) {
        questions.emplace_back(path);
    }
    std::vector<FoundReader> found;
    for (Question& question : questions) {
        found.push_back(question.Answer());
    }
    return found;
}

std::string Describe(const FoundReader& reader) {
    if (reader.Device == 0) {
        return reader.Opened ? "no reader answers" : "cannot be opened";
    }
    const BarcodeReader* barcode = FindBarcodeReader(reader.Device);
    const std::string name = barcode ? "a " + layer::ToUtf8(barcode->Name)
                                     : "an RFID reader, model " + std::to_string(reader.RfidModel);
    return name + ", at " + std::to_string(reader.Rate) + " bits per second";
}
