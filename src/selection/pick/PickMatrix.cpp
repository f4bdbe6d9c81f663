#include "selection/pick/PickMatrix.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrk::selection {

PickMatrix product(const PickMatrix& a, const PickMatrix& b)
{
    PickMatrix c{};
    for (unsigned row = 0; row < 4; ++row)
        for (unsigned column = 0; column < 4; ++column)
            for (unsigned k = 0; k < 4; ++k)
                c[4 * row + column] += a[4 * row + k] * b[4 * k + column];
    return c;
}

/// By elimination, with the largest number of each column as its pivot.
std::optional<PickMatrix> inverseOf(const PickMatrix& matrix)
{
    if (!std::ranges::all_of(matrix, [](double v) { return std::isfinite(v); }))
        return std::nullopt;
    PickMatrix m = matrix;
    PickMatrix inverse{};
    for (unsigned i = 0; i < 4; ++i)
        inverse[5 * i] = 1;
    for (unsigned column = 0; column < 4; ++column) {
        unsigned pivot = column;
        for (unsigned row = column + 1; row < 4; ++row)
            if (std::abs(m[4 * row + column]) > std::abs(m[4 * pivot + column]))
                pivot = row;
        const double divisor = m[4 * pivot + column];
        if (divisor == 0)
            return std::nullopt;
        for (unsigned k = 0; k < 4; ++k) {
            std::swap(m[4 * pivot + k], m[4 * column + k]);
            std::swap(inverse[4 * pivot + k], inverse[4 * column + k]);
        }
        for (unsigned k = 0; k < 4; ++k) {
            m[4 * column + k] /= divisor;
            inverse[4 * column + k] /= divisor;
        }
        for (unsigned row = 0; row < 4; ++row) {
            const double factor = m[4 * row + column];
            if (row == column || factor == 0)
                continue;
            for (unsigned k = 0; k < 4; ++k) {
                m[4 * row + k] -= factor * m[4 * column + k];
                inverse[4 * row + k] -= factor * inverse[4 * column + k];
            }
        }
    }
    if (!std::ranges::all_of(inverse, [](double v) { return std::isfinite(v); }))
        return std::nullopt;
    return inverse;
}

} // namespace vrk::selection
