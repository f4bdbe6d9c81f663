#include "platform/program/ModExpression.h"

#include <cmath>

namespace vrk::program {
namespace {

constexpr int deepestNesting = 50; // of brackets, which are read by calling oneself

/// Where a field stands in the list of its record; `none` where no record has it.
int fieldOf(std::string_view name)
{
    static const std::unordered_map<std::string, int> fields{
        {"trans", 0},  {"rot", 1},    {"robconf", 2}, {"extax", 3},  {"x", 0},  {"y", 1},
        {"z", 2},      {"q1", 0},     {"q2", 1},      {"q3", 2},     {"q4", 3}, {"uframe", 3},
        {"oframe", 4}, {"tframe", 1}, {"robax", 0},   {"robhold", 0}};
    const auto found = fields.find(lowerCase(name));
    return found == fields.end() ? none : found->second;
}

ModValue combined(const ModValue& a, const ModValue& b, char operation)
{
    if (!a.isNumber() || !b.isNumber())
        return {};
    switch (operation) {
    case '+':
        return ModValue::Of(a.number + b.number);
    case '-':
        return ModValue::Of(a.number - b.number);
    case '*':
        return ModValue::Of(a.number * b.number);
    case '/':
        return ModValue::Of(a.number / b.number);
    case 'D':
        return b.number == 0 ? ModValue() : ModValue::Of(std::trunc(a.number / b.number));
    default:
        return b.number == 0 ? ModValue() : ModValue::Of(std::fmod(a.number, b.number));
    }
}

} // namespace

ModValue ModExpression::evaluate(std::string_view text, unsigned line) const
{
    Tokens tokens(text, '!', line);
    ModValue value = sum(tokens, 0);
    return tokens.peek().isEnd() ? value : ModValue();
}

ModValue ModExpression::sum(Tokens& at, int depth) const
{
    ModValue value = product(at, depth);
    while (at.peek().isSymbol("+") || at.peek().isSymbol("-")) {
        const char operation = at.next().text[0];
        value = combined(value, product(at, depth), operation);
    }
    return value;
}

ModValue ModExpression::product(Tokens& at, int depth) const
{
    ModValue value = factor(at, depth);
    for (;;) {
        char operation = 0;
        if (at.peek().isSymbol("*") || at.peek().isSymbol("/"))
            operation = at.peek().text[0];
        else if (at.peek().isWord("DIV"))
            operation = 'D';
        else if (at.peek().isWord("MOD"))
            operation = 'M';
        if (operation == 0)
            return value;
        at.next();
        value = combined(value, factor(at, depth), operation);
    }
}

ModValue ModExpression::factor(Tokens& at, int depth) const
{
    const bool isNegative = takeSigns(at);
    ModValue value = primary(at, depth);
    if (isNegative)
        return value.isNumber() ? ModValue::Of(-value.number) : ModValue();
    return value;
}

ModValue ModExpression::primary(Tokens& at, int depth) const
{
    if (depth > deepestNesting)
        failAtLine(at.peek().line, "brackets nested too deeply");
    const Token token = at.next();
    if (token.kind == Token::Kind::Number) {
        double number = 0;
        return parseNumber(token.text, number) ? ModValue::Of(number) : ModValue();
    }
    if (token.isSymbol("("))
        return bracketed(at, ")", depth).first();
    if (token.isSymbol("["))
        return bracketed(at, "]", depth).list();
    if (token.kind != Token::Kind::Word)
        return {};
    if (token.isWord("TRUE") || token.isWord("FALSE"))
        return ModValue::Of(token.isWord("TRUE") ? 1 : 0);
    if (at.peek().isSymbol("(")) {
        at.next();
        return function(token, bracketed(at, ")", depth));
    }
    return named(token, at, depth);
}

ModExpression::Bracketed ModExpression::bracketed(Tokens& at, std::string_view end, int depth) const
{
    Bracketed found;
    while (!at.peek().isEnd() && !at.peek().isSymbol(end)) {
        if (at.peek().isSymbol("\\")) {
            at.next();
            std::string name = lowerCase(at.next().text);
            ModValue value;
            if (at.peek().isSymbol(":=")) {
                at.next();
                value = sum(at, depth + 1);
            }
            found.options.emplace_back(std::move(name), std::move(value));
        } else {
            found.values.push_back(sum(at, depth + 1));
        }
        if (at.peek().isSymbol(","))
            at.next();
        else if (!at.peek().isSymbol("\\"))
            break;
    }
    found.isWhole = at.peek().isSymbol(end);
    if (found.isWhole)
        at.next();
    return found;
}

std::optional<ModValue> ModExpression::index(Tokens& at, int depth) const
{
    if (!at.peek().isSymbol("{"))
        return std::nullopt;
    at.next();
    return bracketed(at, "}", depth).first();
}

ModValue ModExpression::named(const Token& name, Tokens& at, int depth) const
{
    const ModName* const declared = names.find(name.text);
    const std::optional<ModValue> element = index(at, depth);
    ModValue value;
    if (declared && !declared->isChanging)
        value = names.valueOf(*declared, element);
    while (at.peek().isSymbol(".")) {
        at.next();
        const int field = fieldOf(at.next().text);
        const bool isThere = field != none && value.isList(static_cast<std::size_t>(field) + 1);
        value = isThere ? ModValue(value.list[static_cast<std::size_t>(field)]) : ModValue();
    }
    return value;
}

ModValue ModExpression::function(const Token& name, const Bracketed& given)
{
    std::vector<double> n(given.values.size());
    const bool areNumbers = takeNumbers({ModValue::Kind::List, 0, given.values}, n) == Shape::Fits && given.isWhole;
    if (name.isWord("OrientZYX") && areNumbers && n.size() == 3) {
        const rob::Rotationd turn = fromZyx(n[0], n[1], n[2]);
        return listOf({turn.w, turn.x, turn.y, turn.z});
    }
    rob::Posed pose;
    if (!given.isWhole || given.values.size() < 4 || takePose(given.values[0], pose) != Shape::Fits)
        return {};
    std::vector<double> by(3);
    if (takeNumbers({ModValue::Kind::List, 0, {given.values.begin() + 1, given.values.end()}}, by) != Shape::Fits)
        return {};
    const rob::Posd offset(by[0], by[1], by[2]);
    if (name.isWord("Offs"))
        return poseValue({pose.position + rob::Vec3d(offset), pose.orientation});
    if (!name.isWord("RelTool"))
        return {};
    double angles[3] = {0, 0, 0};
    for (const auto& [option, value] : given.options) {
        const bool isAngle = option == "rx" || option == "ry" || option == "rz";
        if (!isAngle || !value.isNumber())
            return {};
        angles[option[1] - 'x'] = value.number;
    }
    if (!makePlace(pose))
        return {};
    return poseValue(pose * rob::Posed(offset, fromXyz(angles[0], angles[1], angles[2])));
}

} // namespace vrk::program
