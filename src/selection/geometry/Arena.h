#pragma once

#include "platform/common/Export.h"

#include <cstddef>
#include <memory_resource>

namespace vrk::selection {

/// The memory of a hierarchy's nodes: handed out in a row from blocks of 4096 bytes, given back all at once.
///
/// Owner: the BVH. Nothing that lies here has its destructor called.
/// Thread: one at a time.
///
/// In front of each piece stand its size and at least 8 bytes in all. Alignments up to that of malloc are served.
class VRK_EXPORT Arena final : public std::pmr::memory_resource {
public:
    Arena();
    ~Arena() override;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    /// Takes the blocks of `o`, which keeps none and serves no more: what lies in them stays where it is.
    void absorb(Arena& o) noexcept;

private:
    struct Block {
        std::byte* buffer = nullptr; // null until the first piece is asked for
        std::size_t used = 0;        // bytes from the start of the buffer
        Block* next = nullptr;
    };

    /// @throws std::bad_alloc if there is no memory, or none of this alignment.
    void* do_allocate(std::size_t bytes, std::size_t alignment) override;
    void do_deallocate(void*, std::size_t, std::size_t) override {}
    /// Never, not even with itself: pieces are not given back one by one, so there is nothing to share.
    bool do_is_equal(const std::pmr::memory_resource&) const noexcept override { return false; }

    static Block* MakeBlock(std::size_t size);
    static std::byte* MakeBuffer(std::size_t size);

    Block* head;
    Block* current;
};

} // namespace vrk::selection

namespace vrk::visual {
using selection::Arena;
}
