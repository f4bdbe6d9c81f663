#pragma once

#include <QString>

#include <optional>

namespace vrkview {

/// A number as it is typed, key by key: digits, one point, and a sign that may come at any time.
class TypedNumber {
public:
    static constexpr int mostDigits = 12; ///< of which a double loses none

    bool isEmpty() const { return digits.isEmpty() && !negative; }
    /// Whether a key has a meaning here: "0" to "9", "-", "." or ",".
    static bool Takes(const QString& key);
    /// Any other key, a second point and digits beyond the most change nothing.
    void type(const QString& key);
    void removeLast();
    void clear() { *this = {}; }
    /// Empty before the first digit.
    std::optional<double> getValue() const;
    /// As it was typed: "-12.5"
    QString getText() const;

private:
    bool negative = false;
    QString digits; // with the point
};

} // namespace vrkview
