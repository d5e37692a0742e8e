#pragma once

#include <libxml/parser.h>
#include <libxml/valid.h>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "scenefiles/xml/XmlElement.h"

namespace xml {

/// Validates a document against its DTD while it is parsed, with no tree. libxml2 checks the
/// content models; the attributes are checked here, since its streaming validation leaves them out.
///
/// Every operation gives an empty text, or why the document is invalid; where libxml2 finds the
/// fault, it reports to the parser's error handler first.
class Validator {
  public:
    /// The parser must outlive this.
    explicit Validator(xmlParserCtxt* parser);
    ~Validator();
    Validator(const Validator&) = delete;
    Validator& operator=(const Validator&) = delete;

    /// `name` and `prefix` come from the parser's dictionary; a null prefix means none. `element`
    /// has its full name and its attributes.
    std::string Start(const xmlChar* name, const xmlChar* prefix, const XmlElement& element);
    std::string Characters(const xmlChar* text, int length);
    std::string End();
    /// What can be told only at the end of the document.
    std::string Finish() const;

  private:
    struct AttributeRule {
        std::string name;
        xmlAttribute* declaration;
    };
    struct ElementRule {
        bool declared = false;
        std::vector<AttributeRule> attributes;
    };

    const ElementRule& FindRule(const xmlChar* name, const xmlChar* prefix);
    void AddAttributes(ElementRule& rule, xmlElement* declaration) const;
    std::string CheckAttributes(const ElementRule& rule, const XmlElement& element);
    std::string CheckValue(const xmlAttribute& declaration, const XmlAttribute& attribute);
    bool CheckReference(const xmlAttribute& declaration, const std::string& value);

    xmlParserCtxt* m_parser;
    // What libxml2 needs of the elements that are open; it holds pointers into this, so that it
    // never grows.
    std::vector<xmlNode> m_open;
    std::vector<xmlNs> m_openPrefixes;
    size_t m_depth = 0;
    std::map<std::pair<const xmlChar*, const xmlChar*>, ElementRule> m_rules;
    std::set<std::string> m_ids;
    std::set<std::string> m_idReferences;
};

}  // namespace xml
