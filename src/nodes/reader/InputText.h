#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "nodes/NodeTree.h"

namespace nodes {

/// The text of a file with a place in it, up to which it is consumed. Text that is pushed back
/// overwrites what is consumed already, so that whoever scans sees one piece of memory that ends
/// with a zero, and a word, string or comment may go on from pushed-back text into the file.
///
/// A failure empties the input and is told on the standard error stream.
class InputText {
  public:
    /// The growth that expansions may bring to a file, beyond which they are taken for an endless
    /// one: real files repeat a PROTO of some hundred characters in lines of some ten.
    static constexpr std::size_t kPushBackBase = std::size_t{16} << 20;
    static constexpr std::size_t kPushBackFactor = 64;
    static constexpr const char* kPushBackOverflow = "flex scanner push-back overflow";

    InputText() { attach({}, nullptr, nullptr); }
    InputText(const InputText&) = delete;
    InputText& operator=(const InputText&) = delete;

    /// Starts anew with TEXT, in which each CR LF becomes one line end. PROGRESSFN hears of lines.
    void attach(std::string text, ProgressFn progressFn, void* userData);
    /// Gives the memory back; what is told of the place stays.
    void close();

    const char* at() const { return m_at; }
    /// Behind the last character, where a zero stands.
    const char* end() const { return m_end; }
    /// PLACE must lie between at() and end().
    void moveTo(const char* place) { m_at = place; }
    bool atEnd() const { return m_at == m_end; }
    std::size_t remaining() const { return static_cast<std::size_t>(m_end - m_at); }

    /// The characters up to the next STOP, or to the end; both are consumed.
    std::string_view takeThrough(char stop);
    /// The double quote that closes a string whose text starts at FROM; null if there is none.
    const char* closingQuote(const char* from);

    std::int32_t line() const { return m_line; }
    /// A line end has been consumed.
    void countLine() {
        ++m_line;
        if (m_progressFn) {
            m_progressFn(m_line, m_userData);
        }
    }
    /// As countLine(), for many, of which nobody is told.
    void countLines(std::string_view text);
    /// The line that starts at PLACE is the one that lineText() gives.
    void startLine(const char* place) {
        m_lineHead.clear();
        m_lineRest = static_cast<std::size_t>(m_end - place);
        m_lineIsOpen = true;
    }
    std::string lineText() const;

    /// Puts TEXT in front of what is not consumed yet.
    void pushBack(std::string_view text);
    /// Counts SIZE characters of work against the limit of what may be pushed back; false, and a
    /// failure, beyond it.
    bool charge(std::size_t size);

    void fail(const char* message);
    /// Null as long as nothing failed.
    const char* failure() const { return m_failure; }

  private:
    bool makeRoom(std::size_t size);
    void keepLineHead();

    std::string m_text;
    const char* m_at = nullptr;
    const char* m_end = nullptr;
    std::size_t m_budget = 0;
    // So many characters at the end hold no double quote.
    std::size_t m_withoutQuote = 0;
    ProgressFn m_progressFn = nullptr;
    void* m_userData = nullptr;
    const char* m_failure = nullptr;
    std::int32_t m_line = 1;
    // The line is its head, which pushed-back text has overwritten, and the rest of it so many
    // characters before the end. Without a rest it is not open any more.
    std::string m_lineHead;
    std::size_t m_lineRest = 0;
    bool m_lineIsOpen = false;
};

}  // namespace nodes
