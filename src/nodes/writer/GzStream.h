#pragma once

#include <cstddef>

#include "nodes/writer/TextStream.h"

namespace nodes {

class GzFile;

/// Writes to an open GzFile of the caller, which stays open. The text may be as long as MOST
/// characters; what is beyond is dropped.
class GzStream final : public TextStream {
  public:
    static constexpr std::size_t kMostCharacters = 100'000'000;

    explicit GzStream(GzFile& file, std::size_t most = kMostCharacters)
        : m_file(file), m_room(most) {}

    /// Whether text was dropped because it was too long.
    bool cut() const { return m_cut; }
    /// Whether the file did not take what it was given.
    bool failed() const { return m_failed; }
    bool full() const override { return m_cut || m_failed; }

  protected:
    void take(const char* text, std::size_t length) override;

  private:
    GzFile& m_file;
    std::size_t m_room;
    bool m_cut = false;
    bool m_failed = false;
};

}  // namespace nodes
