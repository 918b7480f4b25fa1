#include "tests/app/app_stage.h"
#include "tests/wire/wire_runner.h"

int main(int argc, char** argv) {
    return RunWireFiles(argc, argv, WIRE_FILES,
                        [](Conversation::Complaint complain) -> std::unique_ptr<WireStage> {
                            return std::make_unique<AppStage>(std::move(complain));
                        });
}
