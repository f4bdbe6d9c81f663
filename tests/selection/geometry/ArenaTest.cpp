#include "selection/geometry/Arena.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <random>
#include <vector>

namespace vrk::selection {
namespace {

char* take(Arena& arena, std::size_t bytes, std::size_t alignment = 8)
{
    return static_cast<char*>(arena.allocate(bytes, alignment));
}

std::uint64_t sizeInFrontOf(const char* piece)
{
    std::uint64_t size;
    std::memcpy(&size, piece - 8, sizeof size);
    return size;
}

TEST(Arena, PiecesFollowEachOtherWithTheirSizeInFront)
{
    Arena arena;

    char* first = take(arena, 10);
    char* second = take(arena, 96);
    char* third = take(arena, 1, 1);
    char* fourth = take(arena, 4, 4);

    EXPECT_EQ(sizeInFrontOf(first), 10u);
    EXPECT_EQ(sizeInFrontOf(second), 96u);
    EXPECT_EQ(sizeInFrontOf(third), 1u);
    EXPECT_EQ(second - first, 24);  // 8 + 10 + 8, up to a multiple of 8, is 32
    EXPECT_EQ(third - second, 104); // no alignment: just the 8 bytes in front
    EXPECT_EQ(fourth - third, 12);
}

TEST(Arena, EveryPieceIsAlignedAndItsOwn)
{
    Arena arena;
    std::mt19937 random(1);
    struct Piece {
        unsigned char* at;
        std::size_t size;
        unsigned char mark;
    };
    std::vector<Piece> pieces;

    for (int i = 0; i < 3000; ++i) {
        const std::size_t size = random() % 200, alignment = std::size_t(1) << random() % 5;
        auto* at = static_cast<unsigned char*>(arena.allocate(size, alignment));
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(at) % alignment, 0u);
        std::memset(at, i & 255, size);
        pieces.push_back({at, size, static_cast<unsigned char>(i & 255)});
    }

    for (const Piece& piece : pieces) {
        ASSERT_EQ(sizeInFrontOf(reinterpret_cast<const char*>(piece.at)), piece.size);
        for (std::size_t i = 0; i < piece.size; ++i)
            ASSERT_EQ(piece.at[i], piece.mark);
    }
}

TEST(Arena, BlockIsFilledToItsLastByte)
{
    Arena arena;
    char* first = take(arena, 8); // bytes 8 to 15

    char* second = take(arena, 4096 - 24);

    EXPECT_EQ(second - first, 16);
    std::memset(second, 1, 4096 - 24);
}

TEST(Arena, PieceThatWouldPassTheEndOpensABlock)
{
    Arena arena;
    char* first = take(arena, 8);

    char* second = take(arena, 4096 - 23);
    char* third = take(arena, 8);

    EXPECT_NE(second - first, 16);
    EXPECT_EQ(sizeInFrontOf(second), 4096u - 23u);
    std::memset(second, 1, 4096 - 23);
    EXPECT_NE(third - first, 16); // the old block is not gone back to
}

TEST(Arena, PieceLargerThanABlockGetsOneAndTheNextPieceAnother)
{
    Arena arena;

    char* large = take(arena, 100000, 16);
    std::memset(large, 1, 100000);
    char* after = take(arena, 8);

    EXPECT_EQ(sizeInFrontOf(large), 100000u);
    EXPECT_TRUE(after < large || after >= large + 100000);
    EXPECT_NE(after - large, 100008); // where it would be in the same block
    EXPECT_EQ(take(arena, 8) - after, 16);
}

TEST(Arena, NothingIsTakenBack)
{
    Arena arena;
    char* first = take(arena, 8);

    arena.deallocate(first, 8, 8);

    EXPECT_EQ(take(arena, 8) - first, 16);
}

TEST(Arena, EqualsNoneNotEvenItself)
{
    Arena arena, other;

    EXPECT_FALSE(arena.is_equal(arena));
    EXPECT_FALSE(arena.is_equal(other));
}

TEST(Arena, WhatMallocCannotServeIsRefused)
{
    Arena arena;
    const volatile std::size_t tooMuch =
        std::numeric_limits<std::size_t>::max(); // volatile: not for the compiler to see

    EXPECT_THROW(static_cast<void>(arena.allocate(8, 64)), std::bad_alloc);
    EXPECT_THROW(static_cast<void>(arena.allocate(tooMuch, 8)), std::bad_alloc);
    EXPECT_NE(take(arena, 8), nullptr);
}

TEST(Arena, AbsorbedPiecesStayWhereTheyAreAndLiveOn)
{
    Arena arena;
    std::memcpy(take(arena, 4), "abc", 4);
    char* absorbed = nullptr;
    {
        Arena other;
        absorbed = take(other, 4);
        std::memcpy(absorbed, "xyz", 4);
        take(other, 5000); // a block more
        arena.absorb(other);
    }

    EXPECT_STREQ(absorbed, "xyz");
    EXPECT_EQ(sizeInFrontOf(absorbed), 4u);
}

TEST(Arena, AfterAbsorbingPiecesFollowInTheBlocksThatCame)
{
    Arena arena, other;
    take(arena, 4000);
    char* absorbed = take(other, 16);

    arena.absorb(other);

    EXPECT_EQ(take(arena, 16) - absorbed, 24);
    char* next = take(arena, 4000); // does not fit any more
    std::memset(next, 1, 4000);
    EXPECT_EQ(sizeInFrontOf(absorbed), 16u);
}

TEST(Arena, AbsorbsOneThatAbsorbedAnother)
{
    Arena arena;
    char* piece = nullptr;
    {
        Arena second;
        {
            Arena third;
            piece = take(third, 4);
            std::memcpy(piece, "abc", 4);
            second.absorb(third);
        }
        arena.absorb(second);
    }

    EXPECT_STREQ(piece, "abc");
}

} // namespace
} // namespace vrk::selection
