#include "scenefiles/xml/Parser.h"

#include <libxml/SAX2.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "scenefiles/xml/XmlDocument.h"

namespace xml {

namespace {

using Limits = XmlDocument::Limits;

// What the heap adds to an element and its block, about.
constexpr size_t kHeapOverhead = 32;

const char* Text(const xmlChar* text) {
    return reinterpret_cast<const char*>(text);
}

bool IsBlank(const xmlChar* text, int length) {
    return std::all_of(text, text + length,
                       [](xmlChar c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
}

int CountNames(xmlElementContent* content) {
    int count = 0;
    std::vector<xmlElementContent*> open{content};
    while (!open.empty()) {
        xmlElementContent* const part = open.back();
        open.pop_back();
        if (part != nullptr) {
            count += part->type == XML_ELEMENT_CONTENT_ELEMENT ? 1 : 0;
            open.push_back(part->c1);
            open.push_back(part->c2);
        }
    }
    return count;
}

/// Takes the messages for which libxml2 knows no parser, those about encodings, for a while. They
/// would go to the standard error stream, or to a handler that the host has set for itself.
class ThreadErrors {
  public:
    ThreadErrors(xmlStructuredErrorFunc handler, void* context)
        : m_handler(xmlStructuredError), m_context(xmlStructuredErrorContext) {
        xmlSetStructuredErrorFunc(context, handler);
    }
    ~ThreadErrors() { xmlSetStructuredErrorFunc(m_context, m_handler); }
    ThreadErrors(const ThreadErrors&) = delete;
    ThreadErrors& operator=(const ThreadErrors&) = delete;

  private:
    xmlStructuredErrorFunc m_handler;
    void* m_context;
};

}  // namespace

Parser::Parser(const std::string& path, XmlDocType& docType, XmlProcessingInstruction& declaration)
    : m_path(path),
      m_docType(docType),
      m_declaration(declaration),
      m_parser(nullptr, &xmlFreeParserCtxt) {}

Parser::~Parser() {
    if (m_parser) {
        // In this order: what the validator knows of open elements points into the DTD.
        m_validator.reset();
        xmlFreeDoc(m_parser->myDoc);
        m_parser->myDoc = nullptr;
    }
}

int Parser::Run() {
    static std::once_flag initialised;
    std::call_once(initialised, xmlInitParser);
    m_parser.reset(xmlNewParserCtxt());
    if (!m_parser) {
        m_error = "Failed to instantiate an XML DOM.";
        return 1;
    }
    const std::string reason = m_file.Open(m_path);
    if (!reason.empty()) {
        Refuse(reason, 0);
        return 2;
    }
    m_parser->_private = this;
    InstallHandlers();
    m_validator = std::make_unique<Validator>(m_parser.get());
    return Parse();
}

int Parser::Parse() {
    const ThreadErrors errors(&OnThreadError, this);
    xmlParserCtxt& parser = *m_parser;
    xmlCtxtUseOptions(&parser,
                      XML_PARSE_DTDLOAD | XML_PARSE_DTDATTR | XML_PARSE_DTDVALID | XML_PARSE_NONET);
    xmlParserInputBuffer* const buffer =
        xmlParserInputBufferCreateIO(&OnRead, nullptr, this, XML_CHAR_ENCODING_NONE);
    inputPush(&parser, NewInput(buffer));
    xmlParseDocument(&parser);
    if (parser.input != nullptr && parser.input->cur < parser.input->end) {
        // libxml2 takes it for the end of the file.
        Refuse("A NUL stands behind the root element.");
    }
    RefuseIf(m_validator->Finish());
    if (parser.wellFormed == 0 || !m_root) {
        Refuse("The document is not well-formed.");
    }
    if (m_outOfMemory) {
        throw std::bad_alloc();
    }
    return m_refused ? 2 : 0;
}

/// Owns the buffer from the call on.
xmlParserInput* Parser::NewInput(xmlParserInputBuffer* buffer) {
    xmlParserInput* const input =
        buffer != nullptr ? xmlNewIOInputStream(m_parser.get(), buffer, XML_CHAR_ENCODING_NONE)
                          : nullptr;
    if (input == nullptr) {
        xmlFreeParserInputBuffer(buffer);
        throw std::bad_alloc();
    }
    return input;
}

void Parser::InstallHandlers() {
    xmlSAXHandler& handlers = *m_parser->sax;
    handlers.serror = &OnError;
    handlers.startDocument = &OnStartDocument;
    handlers.internalSubset = &OnInternalSubset;
    handlers.externalSubset = &OnExternalSubset;
    handlers.resolveEntity = &OnResolveEntity;
    handlers.getEntity = &OnGetEntity;
    handlers.getParameterEntity = &OnGetParameterEntity;
    handlers.entityDecl = &OnEntityDeclaration;
    handlers.unparsedEntityDecl = &OnUnparsedEntity;
    handlers.elementDecl = &OnElementDeclaration;
    handlers.attributeDecl = &OnAttributeDeclaration;
    handlers.startElementNs = &OnStart;
    handlers.endElementNs = &OnEnd;
    handlers.characters = &OnCharacters;
    handlers.ignorableWhitespace = &OnCharacters;
    handlers.cdataBlock = &OnCData;
    handlers.comment = &OnComment;
    handlers.reference = nullptr;
    handlers.processingInstruction = nullptr;
}

void Parser::Refuse(const std::string& reason, int line) {
    if (!m_refused) {
        m_refused = true;
        m_error =
            "Failed to load " + m_path + ": " + reason + " Line number: " + std::to_string(line);
    }
    // No more events, and the next read ends the input. Stopping libxml2 at once would free input
    // that the code which called us may still be working on.
    m_parser->disableSAX = 1;
    m_parser->wellFormed = 0;
}

void Parser::Refuse(const std::string& reason) {
    const xmlParserInput* const input = m_parser->input;
    const std::string where = m_readingDtd ? GetDtdName() + ": " : "";
    Refuse(where + reason, input != nullptr ? input->line : 0);
}

void Parser::RefuseIf(const std::string& reason) {
    if (!reason.empty()) {
        Refuse(reason);
    }
}

/// Calls the action with the parser. No exception may pass through libxml2.
template <typename Action>
void Parser::Guarded(void* context, Action action) {
    Parser& self = *static_cast<Parser*>(static_cast<xmlParserCtxt*>(context)->_private);
    try {
        action(self);
    } catch (const std::bad_alloc&) {
        self.m_outOfMemory = true;
        self.m_refused = true;
        self.m_parser->disableSAX = 1;
        self.m_parser->wellFormed = 0;
    }
}

// ---- Input and errors ----

int Parser::OnRead(void* parser, char* buffer, int size) {
    Parser& self = *static_cast<Parser*>(parser);
    int got = -1;
    Guarded(self.m_parser.get(), [&](Parser&) {
        self.RefuseIf(self.CheckLimits());
        if (self.m_refused) {
            return;
        }
        got = static_cast<int>(self.m_file.Read(buffer, static_cast<size_t>(size)));
        if (got < 0) {
            self.Refuse("The file cannot be read.");
            return;
        }
        if (self.m_bytesRead == 0 && got >= 2 && std::memcmp(buffer, "\x1f\x8b", 2) == 0) {
            self.Refuse("The file is compressed.", 0);
            got = -1;
            return;
        }
        self.m_bytesRead += static_cast<size_t>(got);
    });
    return got;
}

/// libxml2 compares each attribute and namespace of a tag with each other one before it reports
/// them, and does the like with declarations: what grows too long is stopped while it grows.
std::string Parser::CheckLimits() const {
    const xmlParserCtxt& parser = *m_parser;
    if (parser.inSubset == 1 && m_bytesRead - m_subsetStart > Limits::kDtdBytes) {
        return "The document type declaration is too long.";
    }
    // The array of attributes has five entries for each, and doubles as it grows.
    if (parser.maxatts > 5 * 4 * Limits::kAttributesOfElement) {
        return "An element has too many attributes.";
    }
    if (parser.nsNr > 2 * Limits::kNamespaces) {
        return "There are too many namespaces.";
    }
    return "";
}

void Parser::OnError(void* context, ErrorPtr error) {
    Guarded(context, [error](Parser& self) {
        if (self.m_refused || error->level < XML_ERR_ERROR || error->domain == XML_FROM_NAMESPACE) {
            return;
        }
        std::string reason = error->message != nullptr ? error->message : "Unknown error.";
        reason.erase(reason.find_last_not_of(" \r\n") + 1);
        self.Refuse(reason);
    });
}

void Parser::OnThreadError(void* parser, ErrorPtr error) {
    OnError(static_cast<Parser*>(parser)->m_parser.get(), error);
}

// ---- Prolog and DTD ----

void Parser::OnStartDocument(void* context) {
    xmlSAX2StartDocument(context);
    Guarded(context, [](Parser& self) {
        xmlParserCtxt& parser = *self.m_parser;
        // For attribute values alone: a tree of libxml2's would hold their entities as nodes. Those
        // in content do not get past OnGetEntity.
        parser.replaceEntities = 1;
        if (parser.version != nullptr) {
            self.m_declaration.SetAttribute("version", Text(parser.version));
        }
        const xmlChar* const encoding = parser.encoding != nullptr || parser.input == nullptr
                                            ? parser.encoding
                                            : parser.input->encoding;
        if (encoding != nullptr) {
            self.m_declaration.SetAttribute("encoding", Text(encoding));
        }
        if (parser.standalone == 0 || parser.standalone == 1) {
            self.m_declaration.SetAttribute("standalone", parser.standalone == 1 ? "yes" : "no");
        }
    });
}

void Parser::OnInternalSubset(void* context, const xmlChar* name, const xmlChar* publicId,
                              const xmlChar* systemId) {
    xmlSAX2InternalSubset(context, name, publicId, systemId);
    Guarded(context, [=](Parser& self) {
        self.m_subsetStart = self.m_bytesRead;
        self.m_docType.SetRootName(Text(name));
        if (systemId != nullptr) {
            self.m_validating = true;
            self.m_docType.SetAttribute("SYSTEM", Text(systemId));
        }
    });
}

void Parser::OnExternalSubset(void* context, const xmlChar* name, const xmlChar* publicId,
                              const xmlChar* systemId) {
    xmlSAX2ExternalSubset(context, name, publicId, systemId);  // asks OnResolveEntity
    Guarded(context, [](Parser& self) { self.m_readingDtd = false; });
}

xmlParserInputPtr Parser::OnResolveEntity(void* context, const xmlChar* /*publicId*/,
                                          const xmlChar* /*systemId*/) {
    xmlParserInput* input = nullptr;
    Guarded(context, [&input](Parser& self) { input = self.OpenDtd(); });
    return input;
}

xmlParserInput* Parser::OpenDtd() {
    InputFile file;
    const std::string reason = file.OpenBeside(m_path, GetDtdName());
    std::vector<char> text(Limits::kDtdBytes + 1);
    size_t size = 0;
    long got = reason.empty() ? 1 : -1;
    while (got > 0 && size < text.size()) {
        got = file.Read(text.data() + size, text.size() - size);
        size += got > 0 ? static_cast<size_t>(got) : 0;
    }
    if (got < 0 || size == text.size()) {
        Refuse("DTD \"" + GetDtdName() + "\": " +
               (!reason.empty() ? reason
                : got < 0       ? "The file cannot be read."
                                : "The file is too long."));
        return nullptr;
    }
    xmlParserInput* const input = NewInput(
        xmlParserInputBufferCreateMem(text.data(), static_cast<int>(size), XML_CHAR_ENCODING_NONE));
    m_readingDtd = true;
    return input;
}

std::string Parser::GetDtdName() const {
    return m_docType.GetAttribute("SYSTEM")->value;
}

/// libxml2 goes on expanding after a failure, for as long as it finds entities.
bool Parser::MayExpand(void* context) {
    const Parser& self = *static_cast<Parser*>(static_cast<xmlParserCtxt*>(context)->_private);
    return !self.m_refused;
}

xmlEntityPtr Parser::OnGetParameterEntity(void* context, const xmlChar* name) {
    Guarded(context, [](Parser& self) {
        if (++self.m_parameterReferences > Limits::kParameterReferences) {
            self.Refuse("The DTD refers to too many entities.");
        }
    });
    return MayExpand(context) ? xmlSAX2GetParameterEntity(context, name) : nullptr;
}

xmlEntityPtr Parser::OnGetEntity(void* context, const xmlChar* name) {
    const xmlParserCtxt& parser = *static_cast<xmlParserCtxt*>(context);
    if (parser.inSubset == 0 && parser.instate != XML_PARSER_ATTRIBUTE_VALUE) {
        Guarded(context, [name](Parser& self) {
            self.Refuse("Entity '" + std::string(Text(name)) +
                        "' stands in content; only attribute values may refer to entities.");
        });
    }
    return MayExpand(context) ? xmlSAX2GetEntity(context, name) : nullptr;
}

void Parser::OnEntityDeclaration(void* context, const xmlChar* name, int type,
                                 const xmlChar* publicId, const xmlChar* systemId,
                                 xmlChar* content) {
    if (type == XML_INTERNAL_GENERAL_ENTITY || type == XML_INTERNAL_PARAMETER_ENTITY) {
        xmlSAX2EntityDecl(context, name, type, publicId, systemId, content);
        return;
    }
    // Refused at its declaration, it can be neither referred to nor opened.
    Guarded(context, [name](Parser& self) {
        self.Refuse("Entity '" + std::string(Text(name)) + "' is external.");
    });
}

void Parser::OnUnparsedEntity(void* context, const xmlChar* name, const xmlChar* publicId,
                              const xmlChar* systemId, const xmlChar* /*notation*/) {
    OnEntityDeclaration(context, name, XML_EXTERNAL_GENERAL_UNPARSED_ENTITY, publicId, systemId,
                        nullptr);
}

void Parser::OnElementDeclaration(void* context, const xmlChar* name, int type,
                                  xmlElementContentPtr content) {
    Guarded(context, [=](Parser& self) {
        self.m_validating = true;
        if (CountNames(content) > Limits::kContentNames) {
            self.Refuse("The content model of element '" + std::string(Text(name)) +
                        "' is too long.");
        } else {
            xmlSAX2ElementDecl(context, name, type, content);
        }
    });
}

void Parser::OnAttributeDeclaration(void* context, const xmlChar* element, const xmlChar* name,
                                    int type, int def, const xmlChar* defaultValue,
                                    xmlEnumerationPtr tree) {
    bool taken = false;
    Guarded(context, [&](Parser& self) {
        self.m_validating = true;
        if (++self.m_declaredAttributes[Text(element)] > Limits::kAttributesDeclaredForElement) {
            self.Refuse("Element '" + std::string(Text(element)) +
                        "' has too many attributes declared.");
        } else {
            taken = true;
            xmlSAX2AttributeDecl(context, element, name, type, def, defaultValue, tree);
        }
    });
    if (!taken) {
        xmlFreeEnumeration(tree);
    }
}

// ---- Content ----

void Parser::OnStart(void* context, const xmlChar* name, const xmlChar* prefix,
                     const xmlChar* /*uri*/, int namespaceCount, const xmlChar** namespaces,
                     int attributeCount, int /*defaultedCount*/, const xmlChar** attributes) {
    Guarded(context, [=](Parser& self) {
        self.EndText();
        if (self.m_open.size() >= Limits::kDepth) {
            self.Refuse("Elements stand more than " + std::to_string(Limits::kDepth) +
                        " deep inside each other.");
            return;
        }
        if (namespaceCount + attributeCount > Limits::kAttributesOfElement) {
            self.Refuse("An element has too many attributes.");
            return;
        }
        self.m_joinedNames.clear();
        self.CollectAttributes(namespaces, namespaceCount, attributes, attributeCount);
        XmlElement* const element = self.Attach(
            std::make_unique<XmlElement>(self.JoinName(prefix, name), self.m_attributes));
        self.m_open.push_back(element);
        if (self.m_validating) {
            self.RefuseIf(self.m_validator->Start(name, prefix, *element));
        }
    });
}

void Parser::CollectAttributes(const xmlChar** namespaces, int namespaceCount,
                               const xmlChar** attributes, int attributeCount) {
    static const xmlChar* const kNamespace = reinterpret_cast<const xmlChar*>("xmlns");
    m_attributes.clear();
    for (int i = 0; i < namespaceCount; ++i, namespaces += 2) {
        const xmlChar* const prefix = namespaces[0];
        m_attributes.push_back(
            {prefix != nullptr ? JoinName(kNamespace, prefix) : JoinName(nullptr, kNamespace),
             namespaces[1] != nullptr ? Text(namespaces[1]) : ""});
    }
    // Five entries for each: name, prefix, namespace, first and behind the last byte of the value.
    for (int i = 0; i < attributeCount; ++i, attributes += 5) {
        const char* const value = Text(attributes[3]);
        m_attributes.push_back({JoinName(attributes[1], attributes[0]),
                                {value, static_cast<size_t>(Text(attributes[4]) - value)}});
    }
}

std::string_view Parser::JoinName(const xmlChar* prefix, const xmlChar* name) {
    if (prefix == nullptr) {
        return Text(name);
    }
    m_joinedNames.push_back(std::string(Text(prefix)) + ":" + Text(name));
    return m_joinedNames.back();
}

void Parser::OnEnd(void* context, const xmlChar* /*name*/, const xmlChar* /*prefix*/,
                   const xmlChar* /*uri*/) {
    Guarded(context, [](Parser& self) {
        self.EndText();
        self.m_open.pop_back();
        if (self.m_validating) {
            self.RefuseIf(self.m_validator->End());
        }
    });
}

XmlElement* Parser::Attach(std::unique_ptr<XmlElement> element) {
    m_treeBytes += sizeof(XmlElement) + kHeapOverhead + element->GetName().size();
    for (const XmlAttribute& attribute : element->GetAttributes()) {
        m_treeBytes +=
            sizeof(attribute) + std::strlen(attribute.name) + std::strlen(attribute.value) + 2;
    }
    if (m_treeBytes > Limits::kTreeBytes && m_treeBytes / Limits::kGrowth > m_bytesRead) {
        Refuse("The document takes too much memory for its size.");
    }
    XmlElement* const attached = element.get();
    if (m_open.empty()) {
        m_root = std::move(element);
    } else {
        m_open.back()->AddChild(std::move(element));
    }
    return attached;
}

void Parser::OnCharacters(void* context, const xmlChar* text, int length) {
    Guarded(context, [=](Parser& self) {
        if (self.m_open.empty()) {
            return;
        }
        if (self.m_validating) {
            self.RefuseIf(self.m_validator->Characters(text, length));
        }
        // One run of text can come in several pieces.
        if (!self.m_inText && !IsBlank(text, length)) {
            self.m_inText = true;
            self.Attach(std::make_unique<XmlElement>("#text"));
        }
    });
}

void Parser::EndText() {
    m_inText = false;
}

void Parser::OnCData(void* context, const xmlChar* text, int length) {
    Guarded(context, [=](Parser& self) {
        if (self.m_validating) {
            self.RefuseIf(self.m_validator->Characters(text, length));
        }
        self.EndText();
        self.Attach(std::make_unique<XmlElement>("#cdata-section"));
    });
}

void Parser::OnComment(void* context, const xmlChar* /*text*/) {
    Guarded(context, [](Parser& self) {
        if (!self.m_open.empty()) {
            self.EndText();
            self.Attach(std::make_unique<XmlElement>("#comment"));
        }
    });
}

}  // namespace xml
