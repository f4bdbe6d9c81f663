#include "selection/geometry/Arena.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace vrk::selection {
namespace {

constexpr std::size_t blockSize = 4096;
constexpr std::size_t headerSize = sizeof(std::uint64_t); // the size of a piece, just in front of it
constexpr std::size_t blockSlack = 16;                    // what the first piece of a block may lose in front of it

std::size_t offsetAfter(std::size_t used, std::size_t alignment)
{
    return (used + headerSize - 1 + alignment) & -alignment;
}

} // namespace

// The memory of the first block comes with its first piece: an object that nobody asks about keeps an empty hierarchy, and
// there are hundreds of thousands of them.
Arena::Arena() : head(new Block()), current(head) {}

Arena::~Arena()
{
    while (head != nullptr) {
        Block* next = head->next;
        std::free(head->buffer);
        delete head;
        head = next;
    }
}

void Arena::absorb(Arena& o) noexcept
{
    current->next = o.head;
    current = o.current;
    o.head = nullptr;
    o.current = nullptr;
}

void* Arena::do_allocate(std::size_t bytes, std::size_t alignment)
{
    // An offset is aligned only as far as the buffer is.
    if (alignment > alignof(std::max_align_t) || bytes > std::numeric_limits<std::size_t>::max() - blockSlack)
        throw std::bad_alloc();

    // Against the usual size also in a larger block, whose own size is not kept: nodes are small, so there is none.
    std::size_t offset = offsetAfter(current->used, alignment);
    if (offset > blockSize || bytes > blockSize - offset) {
        Block* block = MakeBlock(std::max(bytes + blockSlack, blockSize));
        current->next = block;
        current = block;
        offset = offsetAfter(0, alignment);
    }
    if (current->buffer == nullptr)
        current->buffer = MakeBuffer(blockSize);
    std::byte* piece = current->buffer + offset;
    const std::uint64_t size = bytes;
    std::memcpy(piece - headerSize, &size, headerSize);
    current->used = offset + bytes;
    return piece;
}

Arena::Block* Arena::MakeBlock(std::size_t size)
{
    auto block = std::make_unique<Block>();
    block->buffer = MakeBuffer(size);
    return block.release();
}

std::byte* Arena::MakeBuffer(std::size_t size)
{
    auto* buffer = static_cast<std::byte*>(std::malloc(size));
    if (buffer == nullptr)
        throw std::bad_alloc();
    return buffer;
}

} // namespace vrk::selection
