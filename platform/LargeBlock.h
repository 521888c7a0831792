#pragma once

#include <cstddef>

// Memory for one large array, such as the records of a full display (some
// 40 MB). Every 4 KiB page of fresh memory costs a fault on its first
// touch, which in a virtual machine took as long as decoding the records;
// where the system offers them, a large block is backed by 2 MiB pages.
namespace LargeBlock {
void* Allocate(std::size_t vlBytes);
void Free(void* vcBlock, std::size_t vlBytes);

// For a std::vector of such an array.
template <typename T>
struct Allocator {
    using value_type = T;
    Allocator() = default;
    template <typename U>
    Allocator(const Allocator<U>&) noexcept
    {
    }
    T* allocate(std::size_t vlCount) { return static_cast<T*>(Allocate(vlCount * sizeof(T))); }
    void deallocate(T* vcBlock, std::size_t vlCount) noexcept { Free(vcBlock, vlCount * sizeof(T)); }
    template <typename U>
    bool operator==(const Allocator<U>&) const noexcept
    {
        return true;
    }
    template <typename U>
    bool operator!=(const Allocator<U>&) const noexcept
    {
        return false;
    }
};
}
