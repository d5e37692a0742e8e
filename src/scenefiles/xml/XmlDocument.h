#pragma once

#include <memory>
#include <string>

#include "scenefiles/xml/XmlDocType.h"
#include "scenefiles/xml/XmlElement.h"
#include "scenefiles/xml/XmlProcessingInstruction.h"

/// A document in memory, read from a file or built by hand. All text is UTF-8, whatever the file's
/// encoding. A document is used once, by one thread; several documents may be at work at a time.
class XmlDocument {
  public:
    XmlDocument();
    ~XmlDocument();
    XmlDocument(const XmlDocument&) = delete;
    XmlDocument& operator=(const XmlDocument&) = delete;

    /// What a file must keep to, beside well-formedness and its DTD. A scene is far from all of
    /// them; they keep time and memory in proportion to the size of the file.
    struct Limits {
        /// Elements inside each other.
        static constexpr int kDepth = 256;
        static constexpr int kAttributesOfElement = 256;
        static constexpr int kNamespaces = 64;
        /// Each of the DTD file and the declarations inside the document, in bytes.
        static constexpr int kDtdBytes = 64 * 1024;
        static constexpr int kAttributesDeclaredForElement = 64;
        /// References to parameter entities, in both parts of the DTD together.
        static constexpr int kParameterReferences = 2000;
        /// Names in one content model.
        static constexpr int kContentNames = 256;
        /// Memory for each byte of the file, where entities and defaults make much of little; a
        /// tree of up to kTreeBytes is let pass.
        static constexpr int kGrowth = 64;
        static constexpr long kTreeBytes = 64L * 1024 * 1024;
    };

    /// Reads a file. With a document type declaration it is validated, and the DTD's defaults stand
    /// among the attributes, behind those of the file; without one it need only be well-formed.
    ///
    /// The one other file that is ever opened is the DTD, and only if its system identifier is a
    /// plain file name, of a regular file in the document's own folder. Other external entities are
    /// refused where they are declared, and a compressed file is no XML. Entities are expanded in
    /// attribute values; a reference to one in content is refused. Text that is blank, and
    /// processing instructions, do not become children.
    ///
    /// 0 on success; 1 if there is no parser; 2 if the file cannot be read, is not well-formed, not
    /// valid or beyond a limit. GetError() then tells why, and there is no root.
    int Load(const std::string& path);
    /// "Failed to load PATH: REASON Line number: LINE". The line is that of the DTD where the
    /// reason starts with the DTD's name, and 0 where nothing was read.
    std::string GetError() const { return m_errorText; }

    /// Empty if there is no document type declaration or it names no DTD file.
    std::string GetDocTypeSystemId() const;
    void SetDocType(const std::string& rootName, const std::string& systemId);

    /// A new root in place of any old one.
    XmlElement* CreateRoot(const std::string& name);
    /// The document element, or null. It belongs to the document.
    XmlElement* Root() const { return m_root.get(); }

  private:
    std::string m_errorText;
    std::unique_ptr<XmlElement> m_root;
    std::unique_ptr<XmlDocType> m_docType;
    std::unique_ptr<XmlProcessingInstruction> m_declaration;
    std::unique_ptr<XmlProcessingInstruction> m_stylesheet;
};
