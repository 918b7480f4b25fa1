// The program that runs every conversation of a folder's *.wire files: a test case each.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <stdexcept>

#include "tests/wire/wire_stage.h"

namespace {

class WireTest : public testing::Test {
  public:
    explicit WireTest(const WireCase& wireCase) : case_(wireCase) {}

    void TestBody() override {
        const auto stage = MakeStage(
            [this](int line, const std::string& what) { ADD_FAILURE_AT(case_.File.c_str(), line) << what; });
        for (const WireCommand& command : case_.Commands) {
            try {
                stage->Run(command);
            } catch (const std::exception& problem) {
                ADD_FAILURE_AT(case_.File.c_str(), command.Line) << problem.what();
            }
            if (HasFailure())
                return;
        }
        stage->CheckEnd(case_.Line);
    }

  private:
    const WireCase case_;
};

void Register(const std::filesystem::path& file) {
    std::string suite = file.stem().string();
    std::replace(suite.begin(), suite.end(), '-', '_');
    for (const WireCase& wireCase : ReadWireFile(file.string())) {
        testing::RegisterTest(suite.c_str(), wireCase.Name.c_str(), nullptr, nullptr, wireCase.File.c_str(),
                              wireCase.Line, [=]() -> testing::Test* { return new WireTest(wireCase); });
    }
}

const bool Registered = [] {
    using std::filesystem::directory_iterator;
    for (const std::set<std::filesystem::path> files{directory_iterator(WIRE_FILES), {}};
         const auto& file : files) {
        if (file.extension() == ".wire")
            Register(file);
    }
    return true;
}();

}  // namespace
