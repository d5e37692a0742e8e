#include "platform/solid/SortKeys.h"

#include <algorithm>
#include <array>
#include <utility>

namespace solid {

namespace {

/// Below so many, comparing takes less time than counting.
constexpr std::size_t kFew = 24;
constexpr unsigned kDigitBits = 7;
constexpr std::size_t kDigits = std::size_t{1} << kDigitBits;

/// Puts the keys in the order of `part`, digit by digit. (H. Seward, "Information Sorting in the
/// Application of Electronic Digital Computers to Business Operations", 1954.) Comparisons of keys
/// in no order are foretold wrongly every other time; here nothing is compared.
template <std::uint64_t SortKey::*part>
void SortByDigits(std::vector<SortKey>& keys, std::vector<SortKey>& spare) {
    std::uint64_t least = keys[0].*part;
    std::uint64_t most = least;
    std::uint64_t last = least;
    bool sorted = true;
    for (const SortKey& key : keys) {
        least = std::min(least, key.*part);
        most = std::max(most, key.*part);
        sorted = sorted && last <= key.*part;
        last = key.*part;
    }
    if (sorted) {
        return;
    }
    for (unsigned shift = 0; shift < 64 && (most - least) >> shift != 0; shift += kDigitBits) {
        const auto digit = [least, shift](const SortKey& key) {
            return ((key.*part - least) >> shift) & (kDigits - 1);
        };
        std::array<std::size_t, kDigits> places{};
        for (const SortKey& key : keys) {
            ++places[digit(key)];
        }
        std::size_t before = 0;
        for (std::size_t& place : places) {
            before += std::exchange(place, before);
        }
        for (const SortKey& key : keys) {
            spare[places[digit(key)]++] = key;
        }
        keys.swap(spare);
    }
}

void Insert(std::vector<SortKey>& keys) {
    for (std::size_t i = 1; i < keys.size(); ++i) {
        const SortKey key = keys[i];
        std::size_t at = i;
        for (; at > 0 && std::pair(key.first, key.second) <
                             std::pair(keys[at - 1].first, keys[at - 1].second);
             --at) {
            keys[at] = keys[at - 1];
        }
        keys[at] = key;
    }
}

}  // namespace

void SortByKey(std::vector<SortKey>& keys, std::vector<SortKey>& spare) {
    if (keys.size() < kFew) {
        Insert(keys);
        return;
    }
    spare.resize(keys.size());
    SortByDigits<&SortKey::second>(keys, spare);
    SortByDigits<&SortKey::first>(keys, spare);
}

}  // namespace solid
