// The program that runs every conversation of a folder's *.wire files: a test case each.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
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

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(WIRE_FILES)) {
        if (entry.path().extension() == ".wire")
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    try {
        for (const auto& file : files)
            Register(file);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 1;
    }
    return RUN_ALL_TESTS();
}
