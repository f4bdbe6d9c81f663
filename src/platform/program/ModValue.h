#pragma once

#include "platform/program/Program.h"

#include <initializer_list>

namespace vrk::program {

/// What an expression of a ".mod" program gives: nothing that is known before it runs, a number, or values in brackets.
/// A record is the list of its fields.
struct ModValue {
    enum class Kind { Unknown, Number, List } kind = Kind::Unknown;
    double number = 0;
    std::vector<ModValue> list;

    static ModValue Of(double number) { return {Kind::Number, number, {}}; }
    bool isNumber() const { return kind == Kind::Number; }
    bool isList(std::size_t size) const { return kind == Kind::List && list.size() >= size; }
};

ModValue listOf(std::initializer_list<double> numbers);
/// [[x, y, z], [q1, q2, q3, q4]]
ModValue poseValue(const rob::Posed& pose);

/// Whether a value has the brackets and the numbers that are asked of it.
enum class Shape { Fits, IsUnknown, IsWrong };

/// The first `numbers.size()` numbers of a list.
Shape takeNumbers(const ModValue& value, std::vector<double>& numbers);
/// A pose in its brackets: [[x, y, z], [q1, q2, q3, q4]], with more behind it or not. The rotation is as it is told.
Shape takePose(const ModValue& value, rob::Posed& pose);

} // namespace vrk::program
