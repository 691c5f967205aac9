#include "mkvmux/option_kinds.h"

namespace mkvmux {

namespace {

// Empty when it names a file.
std::string RefusalOfOption(const std::string& value) {
    return value.starts_with('-') ? "'" + value + "' looks like an option; './" + value + "' names a file"
                                  : std::string();
}

} // namespace

CLI::Validator NoOption() {
    return CLI::Validator([](const std::string& value) { return RefusalOfOption(value); }, "");
}

CLI::Validator NoOptionButDash() {
    return CLI::Validator(
        [](const std::string& value) { return value == "-" ? std::string() : RefusalOfOption(value); }, "");
}

CLI::Validator NoOptionOf(const CLI::App& app) {
    const auto check = [&app](const std::string& value) {
        const bool isOption = value.starts_with('-') && app.get_option_no_throw(value) != nullptr;
        return isOption ? "'" + value + "' is an option" : std::string();
    };
    return CLI::Validator(check, "");
}

CLI::Option* AddRepeatable(CLI::App& app, const char* name, std::vector<std::string>& values, const char* help,
                           const char* type) {
    return app.add_option(name, values, help)->type_name(type)->allow_extra_args(false);
}

} // namespace mkvmux
