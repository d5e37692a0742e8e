#include "nodes/reader/TextRules.h"

#include <algorithm>
#include <array>
#include <unordered_set>
#include <utility>

#include "nodes/reader/Characters.h"

namespace nodes {
namespace {

// What is longer than a word may be is cut.
constexpr std::size_t kDefWordLimit = 255;
constexpr std::size_t kRouteWordLimit = 2047;

constexpr std::string_view kSpace = " \t\n\r\f\v";

/// The next word of TEXT, which loses it.
std::string_view takeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(kSpace), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(kSpace));
    text.remove_prefix(word.size());
    return word;
}

}  // namespace

void TextRules::reset() {
    m_expansions.clear();
    m_recursive.clear();
}

void TextRules::define() {
    const char* const start = m_input.at();
    m_input.takeThrough('{');
    // With the brace, which is a part of a type that it is glued to.
    std::string_view text(start, static_cast<std::size_t>(m_input.at() - start));
    std::string name(takeWord(text).substr(0, kDefWordLimit));
    std::string type(takeWord(text).substr(0, kDefWordLimit));
    m_client.setPendingDefName(std::move(name));
    type += " {";
    m_input.pushBack(type);
}

void TextRules::use() {
    const char* at = m_input.at();
    while (*at == ' ' || *at == '\t') {
        ++at;
    }
    if (*at == '\n') {
        m_input.moveTo(at + 1);
        m_input.countLine();
        return;
    }
    const char* const start = at;
    while (isWordCharacter(*at)) {
        ++at;
    }
    m_input.moveTo(at);
    // As long as a DEF may make it.
    m_client.addReference(std::string_view(start, at).substr(0, kDefWordLimit));
}

void TextRules::route() {
    std::string line(m_input.takeThrough('\n'));
    if (m_input.at()[-1] == '\n') {
        m_input.countLine();
    }
    std::replace(line.begin(), line.end(), '.', ' ');
    std::string_view rest = line;
    std::array<std::string, 5> words;
    for (std::string& word : words) {
        word = takeWord(rest).substr(0, kRouteWordLimit);
    }
    if (words[2] == "TO") {
        m_client.addRoute(words[0], words[1], words[3], words[4]);
    }
}

void TextRules::proto() {
    std::string head;
    collect('[', '\0', &head);
    std::string_view rest = head;
    std::string name(takeWord(rest));
    std::string interfaceText;
    collect(']', '[', &interfaceText);
    collect('{', '\0', nullptr);
    // The first node of the body alone.
    std::string body;
    collect('{', '\0', &body);
    body += '{';
    collect('}', '{', &body);
    body += '}';
    collect('}', '\0', nullptr);
    m_recursive.clear();
    m_client.addProto(std::make_unique<ProtoDefinition>(std::move(name), std::move(body),
                                                        std::move(interfaceText)));
}

void TextRules::instance(ProtoDefinition& proto) {
    closeExpansions();
    collect('{', '\0', nullptr);
    std::string values;
    collect('}', '{', &values);
    if (proto.isExpanding() && isRecursive(proto)) {
        return;
    }
    if (m_expansions.size() >= kExpansionDepth) {
        m_input.fail(InputText::kPushBackOverflow);
        return;
    }
    if (!m_input.charge(proto.body().size())) {
        return;
    }
    proto.setInstanceValues(values);
    std::string text;
    proto.expand(text);
    proto.clearInstanceValues();
    if (!m_input.charge(text.size())) {
        return;
    }
    m_expansions.push_back({&proto, m_input.remaining()});
    proto.beginExpansion();
    m_input.pushBack(text);
}

void TextRules::closeExpansions() {
    while (!m_expansions.empty() && m_input.remaining() <= m_expansions.back().behind) {
        m_expansions.back().proto->endExpansion();
        m_expansions.pop_back();
    }
}

/// Whether the text of PROTO itself brings instances of it. One among the values that an instance
/// gives does not: those end.
bool TextRules::isRecursive(const ProtoDefinition& proto) {
    const auto known = m_recursive.find(&proto);
    if (known != m_recursive.end()) {
        return known->second;
    }
    return m_recursive[&proto] = reachesItself(proto);
}

bool TextRules::reachesItself(const ProtoDefinition& proto) {
    std::unordered_set<const ProtoDefinition*> seen;
    std::vector<const ProtoDefinition*> waiting = {&proto};
    while (!waiting.empty()) {
        const ProtoDefinition& from = *waiting.back();
        waiting.pop_back();
        if (!m_input.charge(from.size())) {
            return true;
        }
        for (const std::string_view name : from.possibleInstances()) {
            const ProtoDefinition* used = m_client.findProto(name);
            if (used == &proto) {
                return true;
            }
            if (used && seen.insert(used).second) {
                waiting.push_back(used);
            }
        }
    }
    return false;
}

/// Takes the characters up to the STOP that no NESTED one opens, or to the end of the input, and
/// appends those before it to OUT. Comments are left out but for their line end; what stands in a
/// string has no meaning.
void TextRules::collect(char stop, char nested, std::string* out) {
    int depth = 1;
    while (!m_input.atEnd()) {
        const char character = *m_input.at();
        if (character == '"') {
            collectString(out);
            continue;
        }
        m_input.moveTo(m_input.at() + 1);
        if (character == '#') {
            m_input.takeThrough('\n');
            if (m_input.at()[-1] != '\n') {
                return;
            }
        }
        const bool isLineEnd = character == '\n' || character == '#';
        if (isLineEnd) {
            m_input.countLine();
        }
        depth += static_cast<int>(character == nested) - static_cast<int>(character == stop);
        if (depth == 0) {
            return;
        }
        if (out) {
            *out += isLineEnd ? '\n' : character;
        }
    }
}

void TextRules::collectString(std::string* out) {
    const char* const start = m_input.at();
    const char* const quote = m_input.closingQuote(start + 1);
    const char* const behind = (quote ? quote : start) + 1;
    const std::string_view text(start, static_cast<std::size_t>(behind - start));
    m_input.countLines(text);
    m_input.moveTo(behind);
    if (out) {
        *out += text;
    }
}

}  // namespace nodes
