#pragma once

#include <CLI/CLI.hpp>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "PairQuery.h"

/// A question about one group and a point or a line segment.
class ProbeQuery {
  public:
    QueryOptions options;
    std::string name;
    /// A name on the command line and the text given for each coordinate, three for each point.
    std::vector<std::pair<const char*, std::string>> coordinates;

    explicit ProbeQuery(const std::vector<const char*>& coordinateNames);

    void AddTo(CLI::App& command);
    /// Asks and reports; returns the exit status.
    int Run(const std::string& command);
};
