#include "HelpFormatter.h"

HelpFormatter::HelpFormatter() {
    column_width(26);
    label("Positionals", "Arguments");
    label("SUBCOMMAND", "COMMAND");
}

std::string HelpFormatter::make_option_name(const CLI::Option* option, bool isPositional) const {
    const std::string name = CLI::Formatter::make_option_name(option, isPositional);
    // A flag that may have a value is named with its default in braces.
    const std::size_t brace = name.find('{');
    return brace == std::string::npos ? name : name.substr(0, brace) + option->get_option_text();
}

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
    const std::string& text = option->get_option_text();
    return text.empty() || text[0] == '[' ? "" : " " + text;
}
