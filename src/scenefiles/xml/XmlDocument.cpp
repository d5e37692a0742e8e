#include "scenefiles/xml/XmlDocument.h"

#include "scenefiles/xml/Parser.h"

XmlDocument::XmlDocument()
    : m_docType(std::make_unique<XmlDocType>()),
      m_declaration(std::make_unique<XmlProcessingInstruction>("xml")),
      m_stylesheet(std::make_unique<XmlProcessingInstruction>("xml-stylesheet")) {
    m_declaration->SetAttribute("version", "1.0");
    m_stylesheet->SetAttribute("type", "text/xsl");
    m_stylesheet->SetAttribute("href", "");
}

XmlDocument::~XmlDocument() = default;

int XmlDocument::Load(const std::string& path) {
    m_root.reset();
    xml::Parser parser(path, *m_docType, *m_declaration);
    const int result = parser.Run();
    if (result == 0) {
        m_root = parser.TakeRoot();
    } else {
        m_errorText = parser.GetError();
    }
    return result;
}

std::string XmlDocument::GetDocTypeSystemId() const {
    return m_docType->GetAttribute("SYSTEM")->value;
}

void XmlDocument::SetDocType(const std::string& rootName, const std::string& systemId) {
    m_docType->SetRootName(rootName);
    m_docType->SetAttribute("SYSTEM", systemId);
}

XmlElement* XmlDocument::CreateRoot(const std::string& name) {
    m_root = std::make_unique<XmlElement>(name);
    return m_root.get();
}
