#include "tests/support/temporary_terminal.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/linux/kernel/shared_names.h"
#include "platform/linux/kernel/terminal.h"

TemporaryTerminal::TemporaryTerminal() {
    std::string pattern = std::filesystem::temp_directory_path() / "vantrel-test-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        std::perror("mkdtemp");
        std::abort();
    }
    setenv("VANTREL_TERMINAL", pattern.c_str(), 1);
    layer::UseTerminalFolder(pattern);
    folder_ = layer::TerminalFolder();
}

TemporaryTerminal::~TemporaryTerminal() {
    // A program that the test killed has left its shared objects to the next one that comes.
    layer::UseTerminalFolder(folder_);
    layer::JoinSharedNames();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string ReadWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteWholeFile(const std::string& path, std::string_view content) {
    std::ofstream file(path, std::ios::binary);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
}
