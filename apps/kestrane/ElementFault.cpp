#include "ElementFault.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <string_view>

#include "Output.h"
#include "scenefiles/Numbers.h"

namespace {

/// The largest angle that the library takes.
constexpr float kFullTurn = 6.2831855f;

template <class Names>
bool Holds(const Names& names, std::string_view name) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

bool IsNumeric(std::string_view attribute) {
    static constexpr std::string_view kNames[] = {
        "x",   "y",     "z",    "w",     "width", "height", "depth", "radius", "time",
        "red", "green", "blue", "alpha", "xTile", "yTile",  "ID",    "sID",    "viewID"};
    return Holds(kNames, attribute);
}

bool IsSize(std::string_view attribute) {
    static constexpr std::string_view kNames[] = {"width", "height", "depth", "radius"};
    return Holds(kNames, attribute);
}

/// The library takes what begins as a number, and 0 for what does not.
bool IsNumber(const char* text) {
    char* end = nullptr;
    std::strtod(text, &end);
    const std::string_view rest = end;
    return end != text && rest.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

/// Of several children of a name the library reads the first.
bool IsRead(const XmlElement& element, const XmlElement* parent) {
    return parent && parent->FirstChild(element.GetName()) == &element;
}

const char* RangeFault(const XmlElement& element, const XmlElement* parent,
                       std::string_view attribute, float value) {
    if (!std::isfinite(value))
        return " is out of range: it is not finite";
    if (IsSize(attribute) && value < 0)
        return " is out of range: a size is at least 0";
    if (!IsRead(element, parent))
        return nullptr;
    if (element.GetName() == "or" && !(value >= 0 && value <= kFullTurn))
        return " is out of range: an angle is from 0 to 2 pi";
    // Key states may mirror.
    if (element.GetName() == "scale" && parent->GetName() != "keyState" && value < 0)
        return " is out of range: a scale is at least 0";
    return nullptr;
}

}  // namespace

std::string ElementFault(const XmlElement& element, const XmlElement* parent) {
    for (const XmlAttribute& attribute : element.GetAttributes()) {
        if (!IsNumeric(attribute.name))
            continue;
        const char* const fault =
            IsNumber(attribute.value)
                ? RangeFault(element, parent, attribute.name, ParseFloat(attribute.value))
                : " is not a number";
        if (fault)
            return std::string(attribute.name) + "=" + Quoted(attribute.value) + fault;
    }
    return "";
}
