#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "kestrane.h"

/// Turns the bytes of a fuzzed input into arguments for calls: mostly plausible ones, so that calls
/// get somewhere, and some that no sane host would pass. An input that has run out gives zeros.
class CCallArguments {
  public:
    CCallArguments(const std::uint8_t* data, std::size_t size) : m_next(data), m_end(data + size) {}

    bool HasMore() const { return m_next != m_end; }

    int Byte() { return HasMore() ? *m_next++ : 0; }

    bool Bool() { return (Byte() & 1) != 0; }

    /// One time in `times`.
    bool Rarely(int times = 16) { return Byte() % times == times - 1; }

    /// An id, an index or a count, small more often than not.
    int Int() {
        using Limits = std::numeric_limits<int>;
        static const int kExtremes[] = {
            -1, -2, 100, 65535, 65536, Limits::max(), Limits::max() - 1, Limits::min()};
        const int choice = Byte();
        if (choice < 200) {
            return choice % 20;
        }
        return choice < 250 ? kExtremes[choice % 8] : Raw<int>();
    }

    float Float() {
        using Limits = std::numeric_limits<float>;
        static const float kExtremes[] = {Limits::quiet_NaN(),
                                          Limits::infinity(),
                                          -Limits::infinity(),
                                          Limits::max(),
                                          Limits::lowest(),
                                          Limits::min(),
                                          Limits::denorm_min(),
                                          -0.0f,
                                          1e-6f,
                                          1e6f,
                                          1e18f,
                                          6.2831855f};
        const int choice = Byte();
        if (choice < 110) {
            return static_cast<float>(choice % 8) - 1.0f;
        }
        if (choice < 220) {
            return static_cast<float>(choice - 110) * 0.0625f;
        }
        return choice < 244 ? kExtremes[choice % 12] : Raw<float>();
    }

    std::vector<float> Floats(std::size_t count) {
        std::vector<float> floats(count);
        for (float& value : floats) {
            value = Float();
        }
        return floats;
    }

    /// Null, empty, one of a few that meet again and again, or a long one.
    const char* Label() {
        const int choice = Byte();
        if (choice < 96) {
            return nullptr;
        }
        if (choice < 104) {
            m_label.clear();
        } else if (choice < 108) {
            m_label.assign(2000, static_cast<char>(choice));
        } else if (choice < 118) {
            m_label = "Root group";
        } else {
            m_label.assign(1, static_cast<char>('a' + choice % 6));
            m_label += Bool() ? "_1" : "";
        }
        return m_label.c_str();
    }

    /// Calls a function whose arguments' types tell what to pass: pointers to floats are vectors or
    /// quaternions, pointers that can be written through are places for one answer. Each pointer is
    /// null at times. What is passed is valid until the next call.
    template <typename... Types>
    int Call(int (*function)(Types...)) {
        m_vectorsUsed = 0;
        m_placesUsed = 0;
        // Braces keep the order of the arguments the same with every compiler.
        return std::apply(function, std::tuple<Types...>{Make<Types>()...});
    }

    template <typename T>
    T Raw() {
        T value = {};
        std::array<unsigned char, sizeof(T)> bytes = {};
        for (unsigned char& byte : bytes) {
            byte = static_cast<unsigned char>(Byte());
        }
        std::memcpy(&value, bytes.data(), sizeof value);
        return value;
    }

  private:
    template <typename T>
    T Make() {
        if constexpr (std::is_same_v<T, bool>) {
            return Bool();
        } else if constexpr (std::is_same_v<T, int>) {
            return Int();
        } else if constexpr (std::is_same_v<T, float>) {
            return Float();
        } else if constexpr (std::is_same_v<T, const char*>) {
            return Label();
        } else if constexpr (std::is_same_v<T, const float*>) {
            std::array<float, 4>& vector = m_vectors[m_vectorsUsed++];
            for (float& value : vector) {
                value = Float();
            }
            return Rarely(3) ? nullptr : vector.data();
        } else if constexpr (std::is_same_v<T, KstGroupInfo*>) {
            return Rarely() ? nullptr : &m_info;
        } else {
            static_assert(std::is_same_v<T, int*> || std::is_same_v<T, float*>);
            std::array<unsigned char, 4>& place = m_places[m_placesUsed++];
            return Rarely() ? nullptr : reinterpret_cast<T>(place.data());
        }
    }

    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
    std::string m_label;
    std::array<std::array<float, 4>, 3> m_vectors = {};
    std::size_t m_vectorsUsed = 0;
    alignas(4) std::array<std::array<unsigned char, 4>, 9> m_places = {};
    std::size_t m_placesUsed = 0;
    KstGroupInfo m_info = {};
};
