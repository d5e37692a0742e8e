#pragma once

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

/// Key states in ascending time, and the choice of the two keys between which a time lies. `Key`
/// has a member `float time`.
template <class Key>
class CKeyTrack {
  public:
    bool IsCyclic() const noexcept { return m_cyclic; }
    void SetCyclic(bool cyclic) noexcept { m_cyclic = cyclic; }
    /// Last key's time less the first key's; 0 before the first key.
    float Duration() const noexcept { return m_duration; }
    const std::vector<Key>& Keys() const noexcept { return m_keys; }
    /// 0 if there are no keys.
    float LastTime() const noexcept { return m_keys.empty() ? 0.0f : m_keys.back().time; }

    /// Releases all keys. The cyclic flag stays.
    void Clear() noexcept {
        m_keys.clear();
        m_duration = 0;
    }

    /// The last index in [low, high) whose key's time is at or below `time`; `low` if there is
    /// none.
    int FindInterval(float time, int low, int high) const noexcept {
        while (high - low >= 2) {
            const int mid = (low + high) / 2;
            if (time < m_keys[static_cast<std::size_t>(mid)].time)
                high = mid;
            else
                low = mid;
        }
        return low;
    }

  protected:
    struct Interval {
        const Key* a;
        const Key* b;
        float s;  ///< 0 at a, 1 at b
    };

    ~CKeyTrack() = default;

    /// Strong guarantee on a lack of memory.
    void Append(Key key) {
        m_keys.push_back(std::move(key));
        m_duration = m_keys.back().time - m_keys.front().time;
    }

    /// Needs at least one key. Any time is allowed: a time that is not a number gives two
    /// neighbouring keys and an s that is not a number.
    Interval Select(float time) const noexcept {
        const Key& first = m_keys.front();
        const Key& last = m_keys.back();
        if (m_cyclic)
            time = WrapTime(time);
        if (m_keys.size() == 1)
            return {&first, &first, 0.0f};
        if (time <= first.time)
            return {&first, &first, 0.0f};
        if (time >= last.time)
            return {&last, &last, 1.0f};
        const int count = static_cast<int>(m_keys.size());
        // Times that are not numbers compare with nothing, so the search may end on the last key.
        const auto i = static_cast<std::size_t>(std::min(FindInterval(time, 0, count), count - 2));
        const Key& a = m_keys[i];
        const Key& b = m_keys[i + 1];
        return {&a, &b, (time - a.time) / (b.time - a.time)};
    }

  private:
    float WrapTime(float time) const noexcept {
        const float first = m_keys.front().time;
        if (m_duration > 0) {
            float phase = std::fmod(time - first, m_duration);
            if (phase < 0)
                phase += m_duration;
            return phase + first;
        }
        if (m_duration == 0)
            return LastTime() + 1.0f;
        return time;
    }

    float m_duration = 0;
    bool m_cyclic = false;
    std::vector<Key> m_keys;
};
