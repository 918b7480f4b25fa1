// Runs every conversation of a folder's *.wire files: a test case each.
#pragma once

#include <memory>

#include "tests/wire/wire_stage.h"

using StageMaker = std::unique_ptr<WireStage> (*)(Conversation::Complaint complain);

// What main returns; each case gets a stage of its own.
int RunWireFiles(int argc, char** argv, const char* folder, StageMaker makeStage);
