#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct gzFile_s;

namespace nodes {

/// A file that is packed by gzip as it is written and unpacked as it is read. A file that is not
/// packed is read as it is.
class GzFile {
  public:
    enum Mode : std::int32_t { kClosed = 0, kWrite = 1, kRead = 2 };
    /// What a read takes at most: a few bytes on disk may stand for any amount of text.
    static constexpr std::size_t kMostText = std::size_t{1} << 31;
    /// Text beyond so many characters, which is more than saveVrml() writes, must have been packed
    /// into one in so many at most, as what programs write is by far.
    static constexpr std::size_t kFreeText = std::size_t{1} << 27;
    static constexpr std::size_t kMostGrowth = 200;

    GzFile() = default;
    GzFile(const GzFile&) = delete;
    GzFile& operator=(const GzFile&) = delete;
    /// Closes the file.
    virtual ~GzFile();

    /// False if a file is open already, and if this one cannot be opened.
    bool open(const char* path, std::int32_t mode);
    /// Changes what the operations below allow; an open file stays open for what it was opened for.
    virtual bool setMode(std::int32_t mode);
    /// True if all that was written has reached the file. False if none was open.
    virtual bool close();
    virtual bool isOpen() const;

    /// True if all bytes were taken.
    virtual bool write(const void* buffer, std::size_t length);
    virtual bool writeText(std::string_view text);
    /// The number of bytes read, 0 at the end, negative on a failure.
    virtual int read(void* buffer, unsigned length);
    /// The rest of the file. False, and nothing, if there is nothing, if the packed data is damaged
    /// or ends early, and if it is more than these allow.
    virtual bool readAll(std::unique_ptr<char[]>& buffer, std::size_t& size);
    bool readText(std::string& text);
    /// Sets level and strategy of an open file that is written.
    virtual bool applyParams();

    std::int32_t mode() const { return m_mode; }
    /// Bytes on disk of a file that is read.
    std::size_t fileLength() const { return m_fileLength; }
    /// As zlib numbers them; -1 is its own choice of the level.
    int level = -1;
    int strategy = 0;

  private:
    std::int32_t m_mode = kClosed;
    gzFile_s* m_file = nullptr;
    std::size_t m_fileLength = 0;
};

}  // namespace nodes
