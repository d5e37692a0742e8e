#pragma once

#include <string>

/// The name of a labelled thing in exported files: the label, or `kind` and the id, with every
/// character up to "." in ASCII and every one beyond ASCII replaced by "_".
inline void MakeExportName(const std::string& label, const char* kind, int id, std::string& out) {
    std::string name = label;
    if (name.empty())
        name.append(kind).append(std::to_string(id));
    for (char& c : name) {
        if (static_cast<signed char>(c) <= '.')
            c = '_';
    }
    out = std::move(name);
}
