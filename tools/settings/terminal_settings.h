// The terminal's own settings: read from their file, changed there, or by the program that runs.
#pragma once

#include <functional>
#include <string>

// Loads the file into the record. Empty, or what is wrong.
std::string LoadTerminal();

// Loads the file, lets `change` alter the record, and brings what differs into the terminal: a running
// program takes it over at once, else the file is replaced while none can start. `change` returns false to
// leave everything as it is. Empty on success, else what is wrong; nothing has changed then.
std::string ChangeTerminal(const std::function<bool()>& change);
