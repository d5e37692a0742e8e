#include "scenefiles/xml/Validator.h"

#include <algorithm>
#include <sstream>

#include "scenefiles/xml/XmlDocument.h"

namespace xml {

namespace {

constexpr const char* kInvalid = "The document is not valid.";

const char* Text(const xmlChar* text) {
    return reinterpret_cast<const char*>(text);
}
const xmlChar* Text(const char* text) {
    return reinterpret_cast<const xmlChar*>(text);
}

std::string Quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

}  // namespace

Validator::Validator(xmlParserCtxt* parser)
    : m_parser(parser),
      m_open(XmlDocument::Limits::kDepth + 1),
      m_openPrefixes(XmlDocument::Limits::kDepth + 1) {}

Validator::~Validator() {
    xmlValidCtxt& context = m_parser->vctxt;
    while (context.vstateNr > 0) {
        xmlValidatePopElement(&context, nullptr, nullptr, nullptr);
    }
    xmlFree(context.vstateTab);
    context.vstateTab = nullptr;
    context.vstateMax = 0;
}

std::string Validator::Start(const xmlChar* name, const xmlChar* prefix,
                             const XmlElement& element) {
    const std::string_view fullName = element.GetName();
    xmlDoc* const document = m_parser->myDoc;
    if (m_depth == 0) {
        if (fullName != Text(document->intSubset->name)) {
            return "The root element is " + Quoted(fullName) +
                   ", the document type declaration names " +
                   Quoted(Text(document->intSubset->name)) + ".";
        }
        if (xmlValidateDtdFinal(&m_parser->vctxt, document) != 1) {
            return kInvalid;
        }
    }
    const ElementRule& rule = FindRule(name, prefix);
    if (!rule.declared) {
        return "No declaration for element " + std::string(fullName) + ".";
    }
    xmlNs& nodePrefix = m_openPrefixes[m_depth];
    nodePrefix.prefix = prefix;
    xmlNode& node = m_open[m_depth];
    node.type = XML_ELEMENT_NODE;
    node.name = name;
    node.doc = document;
    node.ns = prefix != nullptr ? &nodePrefix : nullptr;
    ++m_depth;
    // An element's name ends with a NUL.
    if (xmlValidatePushElement(&m_parser->vctxt, document, &node, Text(fullName.data())) != 1) {
        return kInvalid;
    }
    return CheckAttributes(rule, element);
}

std::string Validator::Characters(const xmlChar* text, int length) {
    return xmlValidatePushCData(&m_parser->vctxt, text, length) == 1 ? "" : kInvalid;
}

std::string Validator::End() {
    --m_depth;
    xmlNode& node = m_open[m_depth];
    return xmlValidatePopElement(&m_parser->vctxt, m_parser->myDoc, &node, node.name) == 1
               ? ""
               : kInvalid;
}

std::string Validator::Finish() const {
    for (const std::string& reference : m_idReferences) {
        if (m_ids.count(reference) == 0) {
            return "No element has the ID " + Quoted(reference) + ", to which an attribute refers.";
        }
    }
    return "";
}

const Validator::ElementRule& Validator::FindRule(const xmlChar* name, const xmlChar* prefix) {
    const auto [place, isNew] = m_rules.try_emplace({name, prefix});
    ElementRule& rule = place->second;
    if (isNew) {
        // The declarations inside the document come first: they override those of the DTD file.
        for (xmlDtd* dtd : {m_parser->myDoc->intSubset, m_parser->myDoc->extSubset}) {
            xmlElement* const declaration =
                dtd != nullptr ? xmlGetDtdQElementDesc(dtd, name, prefix) : nullptr;
            if (declaration != nullptr) {
                rule.declared = rule.declared || declaration->etype != XML_ELEMENT_TYPE_UNDEFINED;
                AddAttributes(rule, declaration);
            }
        }
    }
    return rule;
}

void Validator::AddAttributes(ElementRule& rule, xmlElement* declaration) const {
    for (xmlAttribute* attribute = declaration->attributes; attribute != nullptr;
         attribute = attribute->nexth) {
        std::string name = attribute->prefix != nullptr
                               ? std::string(Text(attribute->prefix)) + ":" + Text(attribute->name)
                               : Text(attribute->name);
        const bool known =
            std::any_of(rule.attributes.begin(), rule.attributes.end(),
                        [&name](const AttributeRule& other) { return other.name == name; });
        if (!known) {
            rule.attributes.push_back({std::move(name), attribute});
        }
    }
}

std::string Validator::CheckAttributes(const ElementRule& rule, const XmlElement& element) {
    const std::span<const XmlAttribute> attributes = element.GetAttributes();
    for (const XmlAttribute& attribute : attributes) {
        const auto known = std::find_if(
            rule.attributes.begin(), rule.attributes.end(),
            [&attribute](const AttributeRule& other) { return other.name == attribute.name; });
        if (known == rule.attributes.end()) {
            return "No declaration for attribute " + std::string(attribute.name) + " of element " +
                   std::string(element.GetName()) + ".";
        }
        std::string reason = CheckValue(*known->declaration, attribute);
        if (!reason.empty()) {
            return reason;
        }
    }
    for (const AttributeRule& required : rule.attributes) {
        if (required.declaration->def == XML_ATTRIBUTE_REQUIRED &&
            std::none_of(attributes.begin(), attributes.end(),
                         [&required](const XmlAttribute& attribute) {
                             return required.name == attribute.name;
                         })) {
            return "Element " + std::string(element.GetName()) + " lacks attribute " +
                   required.name + ".";
        }
    }
    return "";
}

std::string Validator::CheckValue(const xmlAttribute& declaration, const XmlAttribute& attribute) {
    bool good = declaration.def != XML_ATTRIBUTE_FIXED ||
                xmlStrEqual(Text(attribute.value), declaration.defaultValue) != 0;
    if (declaration.atype != XML_ATTRIBUTE_CDATA) {
        good = good && xmlValidateAttributeValue(declaration.atype, Text(attribute.value)) == 1 &&
               CheckReference(declaration, attribute.value);
    }
    return good ? ""
                : "The value " + Quoted(attribute.value) + " is not allowed for attribute " +
                      attribute.name + ".";
}

bool Validator::CheckReference(const xmlAttribute& declaration, const std::string& value) {
    if (declaration.atype == XML_ATTRIBUTE_ID) {
        return m_ids.insert(value).second;
    }
    if (declaration.atype == XML_ATTRIBUTE_ENUMERATION ||
        declaration.atype == XML_ATTRIBUTE_NOTATION) {
        const xmlEnumeration* choice = declaration.tree;
        while (choice != nullptr && value != Text(choice->name)) {
            choice = choice->next;
        }
        return choice != nullptr;
    }
    std::istringstream words(value);
    for (std::string word; words >> word;) {
        if (declaration.atype == XML_ATTRIBUTE_IDREF || declaration.atype == XML_ATTRIBUTE_IDREFS) {
            m_idReferences.insert(word);
        } else if (declaration.atype == XML_ATTRIBUTE_ENTITY ||
                   declaration.atype == XML_ATTRIBUTE_ENTITIES) {
            // Such attributes name unparsed entities, and these are external: none is ever
            // declared.
            return false;
        }
    }
    return true;
}

}  // namespace xml
