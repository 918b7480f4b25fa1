#include "tools/publish/publish_options.h"

#define TOML_EXCEPTIONS 0
#include <toml++/toml.h>
#include <unistd.h>

#include <map>

#include "platform/linux/kernel/terminal.h"

namespace {

std::string MachineName() {
    char name[256] = "";
    gethostname(name, sizeof name - 1);
    return name[0] != 0 ? name : "terminal";
}

}  // namespace

std::string ReadPublishOptions(const std::string& file, PublishOptions& options) {
    const toml::parse_result result = toml::parse_file(file);
    if (!result) {
        return file + ":" + std::to_string(result.error().source().begin.line) + ": " +
               std::string(result.error().description());
    }
    const std::map<std::string_view, std::string*> texts = {{"terminal", &options.Terminal},
                                                            {"topic", &options.Topic},
                                                            {"host", &options.Host},
                                                            {"user", &options.User},
                                                            {"password-file", &options.PasswordFile},
                                                            {"ca-file", &options.AuthorityFile},
                                                            {"certificate-file", &options.CertificateFile},
                                                            {"key-file", &options.KeyFile},
                                                            {"store", &options.Store}};
    for (const auto& [key, node] : result.table()) {
        const auto number = node.value_exact<std::int64_t>();
        const auto text = texts.find(key.str());
        bool good = false;
        if (text != texts.end()) {
            good = node.is_string();
            *text->second = node.value_or(std::string());
        } else if (key.str() == "port") {
            good = number && *number > 0 && *number < 65536;
            options.Port = static_cast<int>(number.value_or(0));
        } else if (key.str() == "keep-alive") {
            good = number && *number >= 5 && *number < 65536;
            options.KeepAlive = static_cast<int>(number.value_or(0));
        } else if (key.str() == "store-bytes") {
            good = number && *number >= 65536;
            options.MostBytes = number.value_or(0);
        }
        if (!good) {
            return file + ":" + std::to_string(key.source().begin.line) + ": " + std::string(key.str()) +
                   " is unknown or has a wrong value";
        }
    }
    if (options.Port == 0) {
        options.Port = options.AuthorityFile.empty() ? 1883 : 8883;
    }
    if (options.Terminal.empty()) {
        options.Terminal = MachineName();
    }
    if (options.Topic.empty()) {
        options.Topic = "vantrel/" + options.Terminal;
    }
    if (options.Store.empty()) {
        options.Store = layer::TerminalFolder() + "/publish.sqlite";
    }
    return {};
}
