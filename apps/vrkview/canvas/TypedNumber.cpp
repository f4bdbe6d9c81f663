#include "canvas/TypedNumber.h"

#include <algorithm>

namespace vrkview {
namespace {

bool isPoint(const QString& key)
{
    return key == QLatin1String(".") || key == QLatin1String(","); // as keypads have it
}

bool isDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

} // namespace

bool TypedNumber::Takes(const QString& key)
{
    return key == QLatin1String("-") || isPoint(key) || (key.size() == 1 && isDigit(key.front()));
}

void TypedNumber::type(const QString& key)
{
    if (!Takes(key))
        return;
    if (key == QLatin1String("-"))
        negative = !negative;
    else if (isPoint(key))
        digits += digits.contains('.') ? QString() : QStringLiteral(".");
    else if (std::ranges::count_if(digits, isDigit) < mostDigits)
        digits += key;
}

void TypedNumber::removeLast()
{
    if (digits.isEmpty())
        negative = false;
    digits.chop(1);
}

std::optional<double> TypedNumber::getValue() const
{
    if (std::ranges::none_of(digits, isDigit))
        return std::nullopt;
    const double value = digits.toDouble();
    return negative ? -value : value;
}

QString TypedNumber::getText() const
{
    return (negative ? QStringLiteral("-") : QString()) + digits;
}

} // namespace vrkview
