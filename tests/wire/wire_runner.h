// The program that runs every conversation of a folder's *.wire files: a test case each.
#pragma once

#include <memory>

#include "tests/wire/wire_stage.h"

// The stage for a case, which whoever is compiled with the runner gives.
std::unique_ptr<WireStage> MakeStage(Conversation::Complaint complain);
