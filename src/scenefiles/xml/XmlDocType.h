#pragma once

#include <string>

#include "scenefiles/xml/XmlElement.h"

/// The document type declaration: the name of the root element, and the identifier of the DTD as
/// the attribute "SYSTEM".
class XmlDocType : public XmlElement {
  public:
    XmlDocType() : XmlElement("DOCTYPE") { SetAttribute("SYSTEM", ""); }

    const std::string& GetRootName() const { return m_rootName; }
    void SetRootName(const std::string& name) { m_rootName = name; }

  private:
    std::string m_rootName;
};
