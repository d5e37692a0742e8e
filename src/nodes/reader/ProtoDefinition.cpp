#include "nodes/reader/ProtoDefinition.h"

#include <algorithm>
#include <array>
#include <utility>

#include "nodes/fields/Lists.h"
#include "nodes/fields/ScalarFields.h"
#include "nodes/fields/VectorFields.h"
#include "nodes/reader/Characters.h"
#include "nodes/reader/Words.h"

namespace nodes {
namespace {

// What is longer than a word of a body may be is cut.
constexpr std::size_t kBodyWordLimit = 511;

/// How much deeper what follows WORDS' word stands.
int depthChange(const Words& words) {
    if (!words.isBracket()) {
        return 0;
    }
    return words.is("{") || words.is("[") ? 1 : -1;
}

bool isEventWord(const Words& words) {
    return words.is("eventIn") || words.is("eventOut");
}

bool isKindWord(const Words& words) {
    return words.is("field") || words.is("exposedField") || isEventWord(words);
}

}  // namespace

// ---- Declarations and values ----

/// Reads the declared fields of an interface, or the values of an instance.
class ProtoDefinition::Declarations {
  public:
    /// Without DECLARATIONS the text declares, otherwise it gives values to what that one declares.
    Declarations(std::string_view text, const FieldList* declarations)
        : m_words(text, false), m_interface(declarations) {}

    void readInto(FieldList& fields) {
        while (m_words.next()) {
            std::int32_t type = kNoField;
            std::string name;
            bool isEvent = false;
            if (const Field* field = declared(m_words)) {
                type = field->type();
                name = m_words.word();
            } else if (m_interface) {
                continue;
            } else if (isKindWord(m_words)) {
                isEvent = isEventWord(m_words);
                type = fieldTypeFromName(nextWord().c_str());
                name = nextWord();
            }
            std::unique_ptr<Field> value = type == kNoField ? nullptr : readValue(type, isEvent);
            if (value) {
                value->setName(name.c_str());
                fields.add(std::move(value));
            }
        }
    }

  private:
    std::string nextWord() {
        m_words.next();
        return std::string(m_words.word());
    }

    /// The field of the interface that has WORDS' word for its name; null if none has.
    const Field* declared(const Words& words) const {
        return m_interface && !words.startsInString() ? m_interface->find(words.word()) : nullptr;
    }

    /// Whether the next word begins another declaration or value.
    bool isAtNextField() const {
        Words ahead = m_words;
        if (!ahead.next()) {
            return true;
        }
        return isKindWord(ahead) || declared(ahead);
    }

    std::unique_ptr<Field> readValue(std::int32_t type, bool isEvent) {
        if (isEvent && isSingleValueType(type) && isAtNextField()) {
            return nullptr;
        }
        switch (type) {
            case kSFBool:
                return std::make_unique<SFBool>(nextWord() == "TRUE");
            case kSFFloat:
                return readNumber<SFFloat>();
            case kSFTime:
                return readNumber<SFTime>();
            case kSFInt32:
                return readNumber<SFInt32>();
            case kSFVec2f:
                return readVector<SFVec2f>();
            case kSFVec3f:
                return readVector<SFVec3f>();
            case kSFColor:
                return readVector<SFColor>();
            case kSFRotation:
                return readVector<SFRotation>();
            case kSFString:
                return readString();
            case kSFNode:
                skipNode();
                return std::make_unique<SFNode>();
            default:
                return isSingleValueType(type) ? nullptr : readList(type);
        }
    }

    template <class Type>
    std::unique_ptr<Field> readNumber() {
        auto field = std::make_unique<Type>();
        field->fromText(nextWord().c_str());
        return field;
    }

    template <class Type>
    std::unique_ptr<Field> readVector() {
        typename Type::Value value{};
        for (float& component : value) {
            SFFloat number;
            number.fromText(nextWord().c_str());
            component = number.value();
        }
        return std::make_unique<Type>(value);
    }

    /// One word; of a string of several, the first.
    std::unique_ptr<Field> readString() {
        std::string text = nextWord();
        if (m_words.endsInString()) {
            text += '"';
            while (m_words.endsInString() && m_words.next()) {
            }
        }
        return std::make_unique<SFString>(std::move(text));
    }

    void skipNode() {
        m_words.next();
        if (m_words.is("USE")) {
            m_words.next();
            return;
        }
        if (m_words.is("DEF")) {
            m_words.next();
            m_words.next();
        }
        Words ahead = m_words;
        if (ahead.next() && ahead.is("{")) {
            readBlock();
        }
    }

    /// The words up to the next field, or of one block in brackets or braces, a blank behind each.
    std::string readBlock() {
        std::string text;
        int depth = 0;
        while ((depth > 0 || !isAtNextField()) && m_words.next()) {
            text += m_words.word();
            text += ' ';
            const int change = depthChange(m_words);
            depth += change;
            if (change < 0 && depth <= 0) {
                break;
            }
        }
        return text;
    }

    std::unique_ptr<Field> readList(std::int32_t type) {
        if (type == kMFBool || type == kMFDouble || type == kMFVec2d || type == kMFVec3d ||
            type == kMFImage || type == kMFChar) {
            return nullptr;
        }
        std::string text = readBlock();
        auto field = std::make_unique<MFString>();
        field->add(text.empty() ? std::string("[]") : std::move(text));
        return field;
    }

    Words m_words;
    const FieldList* m_interface;
};

void ProtoDefinition::FieldList::add(std::unique_ptr<Field> field) {
    m_byName.emplace(field->name(), field.get());
    m_fields.push_back(std::move(field));
}

const Field* ProtoDefinition::FieldList::find(std::string_view name) const {
    const auto found = m_byName.find(name);
    return found == m_byName.end() ? nullptr : found->second;
}

void ProtoDefinition::FieldList::clear() {
    m_byName.clear();
    m_fields.clear();
}

ProtoDefinition::ProtoDefinition(std::string name, std::string body, std::string interfaceText)
    : m_name(std::move(name)), m_body(std::move(body)), m_interfaceText(std::move(interfaceText)) {
    Declarations(m_interfaceText, nullptr).readInto(m_interfaceFields);
}

std::vector<std::string_view> ProtoDefinition::possibleInstances() const {
    std::vector<std::string_view> words;
    for (const std::string_view text :
         {std::string_view(m_body), std::string_view(m_interfaceText)}) {
        bool isName = false;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t start = at;
            while (at < text.size() && isWordCharacter(text[at])) {
                ++at;
            }
            const std::string_view word = text.substr(start, at - start);
            if (word.empty()) {
                ++at;
                continue;
            }
            if (!isName) {
                words.push_back(word);
            }
            isName = word == "DEF" || word == "USE" || word == "IS";
        }
    }
    return words;
}

void ProtoDefinition::setInstanceValues(std::string_view text) {
    Declarations(text, &m_interfaceFields).readInto(m_instanceValues);
}

// ---- Expansion ----

/// Copies a body word by word, with values in place of each IS.
class ProtoDefinition::Expansion {
  public:
    Expansion(const ProtoDefinition& proto, std::string& out)
        : m_proto(proto), m_words(proto.m_body, true), m_out(out) {}

    void run() {
        while (m_words.next()) {
            if (m_words.is("IS")) {
                replace();
            } else {
                copy();
            }
        }
    }

  private:
    /// A word of the output that a value may follow.
    struct Copied {
        std::string_view word;
        std::size_t start = 0;
    };

    void copy() {
        const std::string_view word = m_words.word();
        if (m_words.isBracket()) {
            m_last = {};
        } else if (word != "\n") {
            std::rotate(m_last.begin(), m_last.begin() + 1, m_last.end());
            m_last.back() = {word, m_out.size()};
        }
        const std::string_view cut = word.substr(0, kBodyWordLimit);
        m_out += cut;
        // A string that loses its end would take the rest of the file with it.
        if (std::count(word.begin() + static_cast<std::ptrdiff_t>(cut.size()), word.end(), '"') %
            2) {
            m_out += '"';
        }
        m_out += ' ';
    }

    void replace() {
        do {
            m_words.next();
        } while (m_words.is("\n"));
        const Field* value = m_proto.m_instanceValues.find(m_words.word());
        if (!value) {
            value = m_proto.m_interfaceFields.find(m_words.word());
        }
        const std::string_view kind = m_last[0].word;
        if (kind == "eventIn" || kind == "eventOut") {
            // A Script's declaration, which stands without a value.
        } else if (value) {
            appendValue(*value);
        } else if (!m_last[2].word.empty()) {
            m_out.resize(kind == "field" ? m_last[0].start : m_last[2].start);
        }
        m_last = {};
    }

    void appendValue(const Field& value) {
        std::string text;
        // A node that is not there has no name to stand for it.
        m_out += value.classType() == kSFNode ? "NULL" : value.toText(text);
        m_out += '\n';
    }

    const ProtoDefinition& m_proto;
    Words m_words;
    std::string& m_out;
    // The words behind the last bracket or value, the latest at the end.
    std::array<Copied, 3> m_last{};
};

void ProtoDefinition::expand(std::string& out) const {
    Expansion(*this, out).run();
}

}  // namespace nodes
