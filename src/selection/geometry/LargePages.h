#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdlib>
#include <new>

namespace vrk::selection {

/// An allocator whose large pieces lie in large pages, where the system has them to give. A walk over a fine mesh touches
/// memory all over it, and looking up where a page lies then costs as much as reading it.
template <typename T>
struct LargePages {
    using value_type = T;
    static constexpr std::size_t pageSize = std::size_t{2} << 20;

    LargePages() = default;
    template <typename U>
    LargePages(const LargePages<U>&)
    {
    }

    T* allocate(std::size_t count)
    {
        const std::size_t bytes = count * sizeof(T);
        if (bytes < pageSize)
            return static_cast<T*>(::operator new(bytes, std::align_val_t(alignof(T))));
        void* piece = nullptr;
        if (posix_memalign(&piece, pageSize, bytes) != 0)
            throw std::bad_alloc();
        madvise(piece, bytes, MADV_HUGEPAGE); // a wish: it may fail
        return static_cast<T*>(piece);
    }
    void deallocate(T* piece, std::size_t count)
    {
        if (count * sizeof(T) < pageSize)
            ::operator delete(piece, std::align_val_t(alignof(T)));
        else
            std::free(piece);
    }
    bool operator==(const LargePages&) const { return true; }
};

} // namespace vrk::selection
