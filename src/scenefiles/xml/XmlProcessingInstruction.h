#pragma once

#include "scenefiles/xml/XmlElement.h"

/// A processing instruction whose data is a list of attributes; the element's name is its target.
class XmlProcessingInstruction : public XmlElement {
  public:
    using XmlElement::XmlElement;
};
