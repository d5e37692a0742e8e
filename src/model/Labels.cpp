#include "model/Labels.h"

#include <charconv>
#include <optional>

namespace {

struct NumberedLabel {
    std::string_view base;
    std::uint64_t number;
};

/// Takes a label apart if it is of the form that MakeUnique gives.
std::optional<NumberedLabel> Split(std::string_view label) {
    const std::size_t underscore = label.rfind('_');
    if (underscore == std::string_view::npos || underscore == 0)
        return std::nullopt;
    const std::string_view digits = label.substr(underscore + 1);
    if (digits.empty() || digits.front() == '0')
        return std::nullopt;
    std::uint64_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return NumberedLabel{label.substr(0, underscore), number};
}

}  // namespace

const int* CLabels::Find(std::string_view label) const noexcept {
    const auto it = m_ids.find(label);
    return it == m_ids.end() ? nullptr : &it->second;
}

bool CLabels::Add(const std::string& label, int id) {
    return m_ids.try_emplace(label, id).second;
}

void CLabels::Reassign(std::string_view label, int id) noexcept {
    const auto it = m_ids.find(label);
    if (it != m_ids.end())
        it->second = id;
}

void CLabels::Remove(std::string_view label) noexcept {
    const auto it = m_ids.find(label);
    if (it == m_ids.end())
        return;
    if (const auto numbered = Split(label)) {
        const auto candidate = m_firstCandidate.find(numbered->base);
        if (candidate != m_firstCandidate.end() && numbered->number < candidate->second) {
            candidate->second = numbered->number;
            if (numbered->number == 1)
                m_firstCandidate.erase(candidate);
        }
    }
    // Last: `label` may be a view of the key itself.
    m_ids.erase(it);
}

void CLabels::Clear() noexcept {
    m_ids.clear();
    m_firstCandidate.clear();
}

std::string CLabels::MakeUnique(const std::string& label) {
    if (!Contains(label))
        return label;
    const auto known = m_firstCandidate.find(label);
    std::uint64_t n = known == m_firstCandidate.end() ? 1 : known->second;
    const std::string stem = label + '_';
    std::string candidate = stem + std::to_string(n);
    while (Contains(candidate))
        candidate = stem + std::to_string(++n);
    if (known != m_firstCandidate.end())
        known->second = n;
    else if (n > 1)
        m_firstCandidate.try_emplace(label, n);
    return candidate;
}
