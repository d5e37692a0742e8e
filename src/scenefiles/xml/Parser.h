#pragma once

#include <libxml/parser.h>

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "scenefiles/xml/InputFile.h"
#include "scenefiles/xml/Validator.h"
#include "scenefiles/xml/XmlDocType.h"
#include "scenefiles/xml/XmlElement.h"
#include "scenefiles/xml/XmlProcessingInstruction.h"

namespace xml {

/// Reads one file into a tree, in one pass over libxml2's stream of parse events: the only part of
/// a document that libxml2 ever holds is its DTD. Events rather than its text reader, because only
/// these let one parser, not the whole process, decide what external entities may be opened.
///
/// The host may use libxml2 too: nothing here changes state of the process, and the error handler
/// of the thread, which messages about encodings take, is put back.
class Parser {
  public:
    Parser(const std::string& path, XmlDocType& docType, XmlProcessingInstruction& declaration);
    ~Parser();
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    /// As XmlDocument::Load.
    int Run();
    /// After a result of 0.
    std::unique_ptr<XmlElement> TakeRoot() { return std::move(m_root); }
    /// The whole text, with path and line.
    const std::string& GetError() const { return m_error; }

  private:
#if LIBXML_VERSION >= 21200
    using ErrorPtr = const xmlError*;
#else
    using ErrorPtr = xmlErrorPtr;
#endif

    static int OnRead(void* parser, char* buffer, int size);
    static void OnError(void* context, ErrorPtr error);
    static void OnThreadError(void* parser, ErrorPtr error);
    static void OnStartDocument(void* context);
    static void OnInternalSubset(void* context, const xmlChar* name, const xmlChar* publicId,
                                 const xmlChar* systemId);
    static void OnExternalSubset(void* context, const xmlChar* name, const xmlChar* publicId,
                                 const xmlChar* systemId);
    static xmlParserInputPtr OnResolveEntity(void* context, const xmlChar* publicId,
                                             const xmlChar* systemId);
    static bool MayExpand(void* context);
    static xmlEntityPtr OnGetParameterEntity(void* context, const xmlChar* name);
    static xmlEntityPtr OnGetEntity(void* context, const xmlChar* name);
    static void OnEntityDeclaration(void* context, const xmlChar* name, int type,
                                    const xmlChar* publicId, const xmlChar* systemId,
                                    xmlChar* content);
    static void OnUnparsedEntity(void* context, const xmlChar* name, const xmlChar* publicId,
                                 const xmlChar* systemId, const xmlChar* notation);
    static void OnElementDeclaration(void* context, const xmlChar* name, int type,
                                     xmlElementContentPtr content);
    static void OnAttributeDeclaration(void* context, const xmlChar* element, const xmlChar* name,
                                       int type, int def, const xmlChar* defaultValue,
                                       xmlEnumerationPtr tree);
    static void OnStart(void* context, const xmlChar* name, const xmlChar* prefix,
                        const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                        int attributeCount, int defaultedCount, const xmlChar** attributes);
    static void OnEnd(void* context, const xmlChar* name, const xmlChar* prefix,
                      const xmlChar* uri);
    static void OnCharacters(void* context, const xmlChar* text, int length);
    static void OnCData(void* context, const xmlChar* text, int length);
    static void OnComment(void* context, const xmlChar* text);

    template <typename Action>
    static void Guarded(void* context, Action action);

    void InstallHandlers();
    int Parse();
    std::string CheckLimits() const;
    xmlParserInput* NewInput(xmlParserInputBuffer* buffer);
    xmlParserInput* OpenDtd();
    std::string GetDtdName() const;
    void CollectAttributes(const xmlChar** namespaces, int namespaceCount,
                           const xmlChar** attributes, int attributeCount);
    std::string_view JoinName(const xmlChar* prefix, const xmlChar* name);
    XmlElement* Attach(std::unique_ptr<XmlElement> element);
    void EndText();

    /// Keeps the first reason and has the parser stop.
    void Refuse(const std::string& reason);
    /// The same if the reason is not empty.
    void RefuseIf(const std::string& reason);
    void Refuse(const std::string& reason, int line);

    const std::string m_path;
    XmlDocType& m_docType;
    XmlProcessingInstruction& m_declaration;

    std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> m_parser;
    std::unique_ptr<Validator> m_validator;
    InputFile m_file;
    size_t m_bytesRead = 0;
    size_t m_subsetStart = 0;
    bool m_readingDtd = false;
    // There is something to validate against.
    bool m_validating = false;
    std::map<std::string, int> m_declaredAttributes;
    int m_parameterReferences = 0;

    std::unique_ptr<XmlElement> m_root;
    std::vector<XmlElement*> m_open;
    std::vector<XmlElement::NameValue> m_attributes;
    // Full names that libxml2 gave in two pieces; a deque, since m_attributes points to them.
    std::deque<std::string> m_joinedNames;
    bool m_inText = false;
    size_t m_treeBytes = 0;

    bool m_refused = false;
    bool m_outOfMemory = false;
    std::string m_error;
};

}  // namespace xml
