#include "AllocationProbe.h"

#include <malloc.h>

#include <cstdlib>
#include <new>

namespace {

std::size_t liveBytes = 0;
long allocationsToGo = 0;
bool allFail = false;
bool failing = false;

std::size_t SizeOf(void* block) {
    return block ? malloc_usable_size(block) + sizeof(std::size_t) : 0;
}

void* Allocate(std::size_t size) {
    if (allocationsToGo > 0 && --allocationsToGo == 0)
        failing = true;
    if (failing) {
        failing = allFail;
        throw std::bad_alloc();
    }
    void* const block = std::malloc(size > 0 ? size : 1);
    if (!block)
        throw std::bad_alloc();
    liveBytes += SizeOf(block);
    return block;
}

void Release(void* block) noexcept {
    liveBytes -= SizeOf(block);
    std::free(block);
}

}  // namespace

namespace allocation {

std::size_t LiveBytes() {
    return liveBytes;
}

void FailAt(long n) {
    allocationsToGo = n;
    allFail = false;
}

void FailFrom(long n) {
    allocationsToGo = n;
    allFail = true;
}

bool CallOff() {
    const bool pending = allocationsToGo > 0;
    allocationsToGo = 0;
    failing = false;
    return pending;
}

Immune::Immune() : m_toGo(allocationsToGo) {
    allocationsToGo = 0;
}

Immune::~Immune() {
    allocationsToGo = m_toGo;
}

}  // namespace allocation

void* operator new(std::size_t size) {
    return Allocate(size);
}

void* operator new[](std::size_t size) {
    return Allocate(size);
}

// Those too, or what is given back would not come from where it is given to.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return Allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* operator new[](std::size_t size, const std::nothrow_t& nothrow) noexcept {
    return operator new(size, nothrow);
}

void operator delete(void* block) noexcept {
    Release(block);
}

void operator delete[](void* block) noexcept {
    Release(block);
}

void operator delete(void* block, std::size_t) noexcept {
    Release(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    Release(block);
}
