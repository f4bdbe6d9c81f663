#include "support/Allocations.h"

#include <malloc.h>

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t allocationCount = 0;
thread_local std::ptrdiff_t liveBytes = 0;

void* counted(void* block)
{
    if (!block)
        throw std::bad_alloc();
    ++allocationCount;
    liveBytes += static_cast<std::ptrdiff_t>(malloc_usable_size(block));
    return block;
}

void release(void* block)
{
    liveBytes -= static_cast<std::ptrdiff_t>(malloc_usable_size(block));
    std::free(block);
}

} // namespace

void* operator new(std::size_t size)
{
    return counted(std::malloc(size ? size : 1));
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    const auto step = static_cast<std::size_t>(alignment);
    return counted(std::aligned_alloc(step, (size + step - 1) / step * step));
}
void operator delete(void* block) noexcept
{
    release(block);
}
void operator delete(void* block, std::size_t) noexcept
{
    release(block);
}
void operator delete(void* block, std::align_val_t) noexcept
{
    release(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept
{
    release(block);
}

namespace vrk::test {

Cost allocatedSoFar()
{
    return {allocationCount, liveBytes};
}

} // namespace vrk::test
