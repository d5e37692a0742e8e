#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace nodes {

/// Where the text forms go: a buffer in front of a file, a compressed file or a string. Numbers are
/// written with six significant digits, as "%g" writes them in the C locale, whatever the host's
/// locale is. A stream is flushed by finish(); what is not flushed is lost.
class TextStream {
  public:
    TextStream() = default;
    TextStream(const TextStream&) = delete;
    TextStream& operator=(const TextStream&) = delete;
    virtual ~TextStream() = default;

    void put(char character) {
        makeRoom(1);
        m_buffer[m_used++] = character;
    }
    void put(std::string_view text);
    void put(float value);
    void put(double value);
    void put(std::int32_t value);
    /// COUNT tab characters.
    void putTabs(std::size_t count);
    /// Hands on what is still in the buffer.
    void finish();
    /// Whether what is put from now on is lost, so that a writer may as well stop.
    virtual bool full() const { return false; }

  protected:
    /// Takes LENGTH characters; what it cannot take it drops, and remembers that in its own way.
    virtual void take(const char* text, std::size_t length) = 0;

  private:
    void makeRoom(std::size_t length) {
        if (kBufferSize - m_used < length) {
            finish();
        }
    }

    static constexpr std::size_t kBufferSize = 64 * 1024;
    char m_buffer[kBufferSize];
    std::size_t m_used = 0;
};

/// Writes to a string of the caller.
class StringStream final : public TextStream {
  public:
    explicit StringStream(std::string& out) : m_out(out) {}

  protected:
    void take(const char* text, std::size_t length) override { m_out.append(text, length); }

  private:
    std::string& m_out;
};

/// Writes to an open file of the caller, which stays open.
class FileStream final : public TextStream {
  public:
    explicit FileStream(std::FILE* file) : m_file(file) {}
    bool failed() const { return m_failed; }
    bool full() const override { return m_failed; }

  protected:
    void take(const char* text, std::size_t length) override;

  private:
    std::FILE* m_file;
    bool m_failed = false;
};

}  // namespace nodes
