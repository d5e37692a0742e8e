#pragma once

#include <cstdint>
#include <string>

namespace nodes {

/// Why a read failed. line is 0 and the texts are empty where nothing is known.
struct ReadError {
    std::int32_t line = 0;
    std::string message;
    std::string token;
    std::string lineText;
};

}  // namespace nodes
