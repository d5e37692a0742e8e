#include "nodes/reader/InputText.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

namespace nodes {
namespace {

const char* find(const char* from, const char* end, char character) {
    return static_cast<const char*>(
        std::memchr(from, character, static_cast<std::size_t>(end - from)));
}

/// Drops each carriage return that stands before a line feed.
void joinLineEnds(std::string& text) {
    std::size_t from = text.find("\r\n");
    if (from == std::string::npos) {
        return;
    }
    char* to = text.data() + from;
    const char* at = to + 1;
    const char* const end = text.data() + text.size();
    while (at != end) {
        const char* stop = at;
        do {
            stop = find(stop + 1, end, '\r');
        } while (stop && stop[1] != '\n');
        stop = stop ? stop : end;
        std::memmove(to, at, static_cast<std::size_t>(stop - at));
        to += stop - at;
        at = stop == end ? end : stop + 1;
    }
    text.resize(static_cast<std::size_t>(to - text.data()));
}

}  // namespace

void InputText::attach(std::string text, ProgressFn progressFn, void* userData) {
    m_text = std::move(text);
    m_budget = kPushBackBase + kPushBackFactor * m_text.size();
    joinLineEnds(m_text);
    m_at = m_text.data();
    m_end = m_at + m_text.size();
    m_withoutQuote = 0;
    m_progressFn = progressFn;
    m_userData = userData;
    m_failure = nullptr;
    m_line = 1;
    m_lineHead.clear();
    m_lineIsOpen = false;
}

void InputText::close() {
    m_text = std::string();
    m_at = m_text.data();
    m_end = m_at;
    m_lineIsOpen = false;
}

std::string_view InputText::takeThrough(char stop) {
    const char* const from = m_at;
    const char* const found = find(from, m_end, stop);
    m_at = found ? found + 1 : m_end;
    return {from, static_cast<std::size_t>((found ? found : m_end) - from)};
}

const char* InputText::closingQuote(const char* from) {
    const char* const end = m_end - m_withoutQuote;
    const char* const found = from < end ? find(from, end, '"') : nullptr;
    if (!found) {
        m_withoutQuote = std::max(m_withoutQuote, static_cast<std::size_t>(m_end - from));
    }
    return found;
}

void InputText::countLines(std::string_view text) {
    m_line += static_cast<std::int32_t>(std::count(text.begin(), text.end(), '\n'));
}

std::string InputText::lineText() const {
    std::string line = m_lineHead;
    if (m_lineIsOpen) {
        const char* const rest = m_end - m_lineRest;
        const char* const stop = find(rest, m_end, '\n');
        line.append(rest, stop ? stop : m_end);
    }
    return line;
}

void InputText::keepLineHead() {
    const char* const rest = m_end - m_lineRest;
    if (!m_lineIsOpen || rest >= m_at) {
        return;
    }
    const char* const stop = find(rest, m_at, '\n');
    m_lineHead.append(rest, stop ? stop : m_at);
    m_lineIsOpen = stop == nullptr;
    m_lineRest = remaining();
}

bool InputText::charge(std::size_t size) {
    if (size > m_budget) {
        fail(kPushBackOverflow);
        return false;
    }
    m_budget -= size;
    return true;
}

void InputText::pushBack(std::string_view text) {
    keepLineHead();
    if (!makeRoom(text.size())) {
        return;
    }
    m_at -= text.size();
    std::memcpy(m_text.data() + (m_at - m_text.data()), text.data(), text.size());
}

bool InputText::makeRoom(std::size_t size) {
    const auto room = static_cast<std::size_t>(m_at - m_text.data());
    if (size <= room) {
        return true;
    }
    // Half of what is moved, so that moving takes time in proportion to what is pushed back.
    const std::size_t left = remaining();
    const std::size_t gap = size + left / 2;
    try {
        std::string moved;
        moved.reserve(gap + left);
        moved.assign(gap, ' ');
        moved.append(m_at, left);
        m_text = std::move(moved);
    } catch (const std::bad_alloc&) {
        fail("fatal error - scanner input buffer overflow");
        return false;
    } catch (const std::length_error&) {
        fail("fatal error - scanner input buffer overflow");
        return false;
    }
    m_at = m_text.data() + gap;
    m_end = m_at + left;
    return true;
}

void InputText::fail(const char* message) {
    std::fprintf(stderr, "%s\n", message);
    m_failure = message;
    m_at = m_end;
}

}  // namespace nodes
