#pragma once

#include <string>

#include "Output.h"

/// What groups and objects are called in the program's output. Ids must be known.

/// `group 3 "door"`, or `group 3` without a label.
std::string GroupName(int id);
/// `object 14 "door_edge" of group 3 "door"`.
std::string ObjectName(int id);

/// Empty without a label.
const std::string& GroupLabel(int id);
const std::string& ObjectLabel(int id);

/// "box", "polygonGroup" and so on: as in scene files.
std::string TypeName(int type);

/// {"id", "label"}; the label is null where there is none.
Json GroupJson(int id);
/// {"id", "label", "type", "group": as GroupJson}.
Json ObjectJson(int id);
/// The label, or null if it is empty.
Json LabelJson(const std::string& label);
