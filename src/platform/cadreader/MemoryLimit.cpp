#include "platform/cadreader/MemoryLimit.h"

#include "platform/station/import/CadProtocol.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

void cadreader::limitMemory(std::uint64_t) {}

#else

#include <dlfcn.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <limits>

// The allocator of the C library, which the functions below stand in front of.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace cadreader {
namespace {

std::size_t most = std::numeric_limits<std::size_t>::max();

/// Takes no memory: there is none.
void* checked(void* block, std::size_t size)
{
    if (block != nullptr || size == 0 || size > most)
        return block;
    constexpr char text[] = "memory\n";
    const ssize_t ignored = write(vrk::station::child::messages, text, sizeof text - 1);
    _exit(ignored < 0 ? 1 : 0);
}

std::size_t product(std::size_t count, std::size_t size)
{
    std::size_t all = 0;
    return __builtin_mul_overflow(count, size, &all) ? std::numeric_limits<std::size_t>::max() : all;
}

} // namespace

void limitMemory(std::uint64_t bytes)
{
    most = bytes;
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_DATA, &limit);  // counts what is private and can be written, threads' stacks too
    setrlimit(RLIMIT_FSIZE, &limit); // the answer lies in memory as well
}

} // namespace cadreader

// Every library of this process calls these.
extern "C" {
__attribute__((visibility("default"))) void* malloc(std::size_t size)
{
    return cadreader::checked(__libc_malloc(size), size);
}
__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size)
{
    return cadreader::checked(__libc_calloc(count, size), cadreader::product(count, size));
}
__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size)
{
    return cadreader::checked(__libc_realloc(block, size), size);
}
__attribute__((visibility("default"))) void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return cadreader::checked(__libc_memalign(alignment, size), size);
}

// Those of TBB, by which Open CASCADE takes its memory here.
__attribute__((visibility("default"))) void* scalable_malloc(std::size_t size)
{
    static const auto next = reinterpret_cast<void* (*)(std::size_t)>(dlsym(RTLD_NEXT, "scalable_malloc"));
    return cadreader::checked(next(size), size);
}
__attribute__((visibility("default"))) void* scalable_calloc(std::size_t count, std::size_t size)
{
    static const auto next = reinterpret_cast<void* (*)(std::size_t, std::size_t)>(dlsym(RTLD_NEXT, "scalable_calloc"));
    return cadreader::checked(next(count, size), cadreader::product(count, size));
}
__attribute__((visibility("default"))) void* scalable_realloc(void* block, std::size_t size)
{
    static const auto next = reinterpret_cast<void* (*)(void*, std::size_t)>(dlsym(RTLD_NEXT, "scalable_realloc"));
    return cadreader::checked(next(block, size), size);
}
}

#endif
