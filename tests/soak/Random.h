#pragma once

#include <cstdint>
#include <random>

/// Random numbers that are the same with every standard library, which its distributions are not.
class Random {
  public:
    explicit Random(std::uint64_t seed) : m_engine(seed) {}

    /// 0 to count - 1.
    int Below(int count) {
        return static_cast<int>(m_engine() % static_cast<std::uint64_t>(count));
    }

    bool Chance(int percent) { return Below(100) < percent; }

    float Between(float low, float high) {
        const auto unit = static_cast<float>(m_engine() >> 40) * 0x1p-24f;
        return low + (high - low) * unit;
    }

  private:
    std::mt19937_64 m_engine;
};
