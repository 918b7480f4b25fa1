#include "tests/wire/wire_runner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

namespace {

class WireTest : public testing::Test {
  public:
    WireTest(const WireCase& wireCase, StageMaker makeStage) : case_(wireCase), makeStage_(makeStage) {}

    void TestBody() override {
        const auto stage = makeStage_(
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
    const StageMaker makeStage_;
};

void Register(const std::filesystem::path& file, StageMaker makeStage) {
    std::string suite = file.stem().string();
    std::replace(suite.begin(), suite.end(), '-', '_');
    for (const WireCase& wireCase : ReadWireFile(file.string())) {
        testing::RegisterTest(suite.c_str(), wireCase.Name.c_str(), nullptr, nullptr, wireCase.File.c_str(),
                              wireCase.Line,
                              [=]() -> testing::Test* { return new WireTest(wireCase, makeStage); });
    }
}

}  // namespace

int RunWireFiles(int argc, char** argv, const char* folder, StageMaker makeStage) {
    testing::InitGoogleTest(&argc, argv);
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".wire")
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    try {
        for (const auto& file : files)
            Register(file, makeStage);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 1;
    }
    return RUN_ALL_TESTS();
}
