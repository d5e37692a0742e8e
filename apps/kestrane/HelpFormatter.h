#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// Help pages without the words that mean something to a parser only.
class HelpFormatter : public CLI::Formatter {
  public:
    HelpFormatter();

    std::string make_option_name(const CLI::Option* option, bool isPositional) const override;
    std::string make_option_opts(const CLI::Option* option) const override;
};
