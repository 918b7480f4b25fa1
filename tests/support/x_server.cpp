#include "tests/support/x_server.h"

#include <cstdlib>
#include <stdexcept>
#include <vector>

XServer::XServer(const std::string& display) {
    // Its remarks about other servers of the machine are of no interest.
    const std::string command =
        "exec Xvfb " + display + " -displayfd 1 -screen 0 640x480x24 -nolisten tcp -noreset 2>/dev/null";
    process_ = std::make_unique<ChildProcess>(std::vector<std::string>{"/bin/sh", "-c", command});
    const auto number = process_->ReadLine(20000);
    if (!number) {
        throw std::runtime_error("Xvfb does not start");
    }
    name_ = ":" + *number;
    setenv("DISPLAY", name_.c_str(), 1);
}

XServer::~XServer() {
    unsetenv("DISPLAY");
}
