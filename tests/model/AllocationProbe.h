#pragma once

#include <cstddef>

/// Watches and fails the program's operator new.
namespace allocation {

/// Bytes now held through operator new, the allocator's own word per block included.
std::size_t LiveBytes();

/// From here the n-th allocation (1, 2, ...) throws std::bad_alloc, and only that one.
void FailAt(long n);
/// As FailAt, and all that follow fail too, until CallOff().
void FailFrom(long n);
/// Whether the failure that FailAt asked for is still to come; calls it off.
bool CallOff();

/// Within its scope nothing fails or is counted towards the failure.
class Immune {
  public:
    Immune();
    ~Immune();
    Immune(const Immune&) = delete;
    Immune& operator=(const Immune&) = delete;

  private:
    long m_toGo;
};

}  // namespace allocation
