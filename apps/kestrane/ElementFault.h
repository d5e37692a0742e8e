#pragma once

#include <string>

#include "scenefiles/xml/XmlElement.h"

/// What the library would not read as it is written, or would leave out, from one element of a
/// scene: `width="abc" is not a number`. Empty if there is nothing.
std::string ElementFault(const XmlElement& element, const XmlElement* parent);
