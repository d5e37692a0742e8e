#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

/// The labels of groups and objects, each with an id; which of the two the id is of, it does not
/// tell. Labels are never empty.
class CLabels {
  public:
    /// Null if the label is not known.
    const int* Find(std::string_view label) const noexcept;
    bool Contains(std::string_view label) const noexcept { return Find(label) != nullptr; }
    /// Enters the label unless it is there already; returns whether it was new.
    bool Add(const std::string& label, int id);
    /// Gives a label that is there another id; nothing if it is not there.
    void Reassign(std::string_view label, int id) noexcept;
    void Remove(std::string_view label) noexcept;
    void Clear() noexcept;
    std::size_t Size() const noexcept { return m_ids.size(); }

    /// The label itself if it is free, else the first free one of label_1, label_2, ... Enters
    /// nothing.
    std::string MakeUnique(const std::string& label);

  private:
    std::map<std::string, int, std::less<>> m_ids;
    /// By base label, an n such that base_1 to base_(n-1) are all in use: thousands of groups with
    /// the same label must not each try all numbers again.
    std::map<std::string, std::uint64_t, std::less<>> m_firstCandidate;
};
