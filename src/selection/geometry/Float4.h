#pragma once

#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vrk::selection {

/// Four numbers side by side, which each operator takes at once. Each gets what the same operation on one number gives.
using Float4 = float __attribute__((vector_size(16)));
using Int4 = std::int32_t __attribute__((vector_size(16)));

// The compiler does not find these instructions by itself in every place. They answer alike with and without.

/// a > b ? a : b, for each of the four.
inline Float4 largerOf(const Float4& a, const Float4& b)
{
#ifdef __SSE2__
    return _mm_max_ps(a, b);
#else
    return a > b ? a : b;
#endif
}

/// a < b ? a : b, for each of the four.
inline Float4 smallerOf(const Float4& a, const Float4& b)
{
#ifdef __SSE2__
    return _mm_min_ps(a, b);
#else
    return a < b ? a : b;
#endif
}

/// Four bytes as numbers.
inline Float4 numbersOf(const std::uint8_t (&bytes)[4])
{
#ifdef __SSE2__
    int together;
    std::memcpy(&together, bytes, sizeof together);
    const __m128i zero = _mm_setzero_si128();
    const __m128i halves = _mm_unpacklo_epi8(_mm_cvtsi32_si128(together), zero);
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(halves, zero));
#else
    return Float4{static_cast<float>(bytes[0]), static_cast<float>(bytes[1]), static_cast<float>(bytes[2]),
                  static_cast<float>(bytes[3])};
#endif
}

/// A bit for each of the four, the first one lowest: set where a comparison held.
inline unsigned bitsOf(const Int4& held)
{
#ifdef __SSE2__
    return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(reinterpret_cast<const __m128i&>(held))));
#else
    return (held[0] & 1u) | (held[1] & 2u) | (held[2] & 4u) | (held[3] & 8u);
#endif
}

} // namespace vrk::selection
