#include "platform/program/ModMoves.h"

#include <fmt/format.h>

namespace vrk::program {

using task::Motion;
using task::MoveLine;

std::optional<ModMove> modMoveOf(std::string_view word)
{
    static const std::unordered_map<std::string, ModMove> words = [] {
        std::unordered_map<std::string, ModMove> all;
        const std::pair<const char*, Motion> ways[] = {
            {"j", Motion::Joint}, {"l", Motion::Linear}, {"c", Motion::Circular}};
        for (const auto& [letter, motion] : ways) {
            for (const char* suffix : {"", "do", "ao", "go", "sync"})
                all.emplace(std::string("move") + letter + suffix, ModMove{motion, false, false});
            all.emplace(std::string("trigg") + letter, ModMove{motion, false, true});
            for (const char* suffix : {"", "start", "end", "1", "2"})
                if (motion != Motion::Joint)
                    all.emplace(std::string("arc") + letter + suffix, ModMove{motion, false, true});
        }
        all.emplace("moveabsj", ModMove{Motion::Joint, true, false});
        return all;
    }();
    const auto found = words.find(lowerCase(word));
    return found == words.end() ? std::nullopt : std::optional(found->second);
}

ModMoves::ModMoves(Program& program, ModNames& names, const ModExpression& expression)
    : program(program), names(names), expression(expression)
{
}

void ModMoves::split(std::string_view text, const Token& first, std::vector<Argument>& arguments,
                     std::vector<Option>& options)
{
    Tokens at(text, '!', first.line);
    at.next(); // the instruction's own name
    int depth = 0;
    std::size_t begin = at.peek().at;
    unsigned line = at.peek().line;
    bool isOption = false;
    const auto take = [&](std::size_t end) {
        const std::string_view piece = at.between(begin, end);
        if (isOption) {
            const std::size_t sign = piece.find(":=");
            options.push_back({piece.substr(0, sign), sign == std::string_view::npos
                                                          ? std::string_view()
                                                          : at.between(begin + sign + 2, end)});
            // Between the name and the sign there may be blanks.
            while (!options.back().name.empty() && options.back().name.back() == ' ')
                options.back().name.remove_suffix(1);
        } else if (!piece.empty()) {
            arguments.push_back({piece, line});
        }
    };
    for (;;) {
        const Token token = at.peek();
        depth += opens(token) ? 1 : closes(token) ? -1 : 0;
        const bool isBreak = depth == 0 && (token.isSymbol(",") || token.isSymbol("\\"));
        if (token.isEnd() || isBreak)
            take(token.isEnd() ? text.size() : token.at);
        if (token.isEnd())
            return;
        at.next();
        if (isBreak) {
            isOption = token.isSymbol("\\");
            begin = at.peek().at;
            // An option's piece begins behind the stroke, whatever blanks follow.
            line = at.peek().line;
        }
    }
}

void ModMoves::read(Step& step, const ModMove& move, std::string_view text, const Token& first)
{
    std::vector<Argument> arguments;
    std::vector<Option> options;
    split(text, first, arguments, options);
    const std::size_t targets = move.motion == Motion::Circular ? 2 : 1;
    if (arguments.size() < targets + 3)
        failAtLine(first.line, fmt::format("{} needs a target, a speed, a zone and a tool", inQuotes(first.text)));
    const std::size_t toolAt = move.hasToolLast ? arguments.size() - 1 : targets + 2;
    step.isMove = true;
    step.motion = move.motion;
    step.drawn = move.motion == Motion::Joint && !move.isPosture ? MoveLine::Dashed : MoveLine::Solid;
    step.speed = onOneLine(arguments[targets].text);
    step.zone = onOneLine(arguments[toolAt - 1].text);
    step.tool = toolOf(arguments[toolAt]);

    const Place target = findTarget(arguments[targets - 1], move.isPosture);
    setPlace(step, target, targets == 2 ? std::optional(findTarget(arguments[0], false)) : std::nullopt);
    for (const Option& option : options)
        if (sameWord(option.name, "WObj") && !move.isPosture)
            setWorkObject(step, option.value, first.line);
}

int ModMoves::toolOf(const Argument& argument)
{
    const ModName* const declared = names.find(argument.text);
    if (declared)
        return declared->kind == ModName::Kind::Tool ? declared->index : none;
    if (sameWord(argument.text, "tool0"))
        return 0;
    return toolNamed(argument.text);
}

int ModMoves::toolNamed(std::string_view name)
{
    for (std::size_t i = 0; i < program.tools.size(); ++i)
        if (sameWord(program.tools[i].name, name))
            return static_cast<int>(i);
    program.tools.push_back({onOneLine(name), {}, false, false});
    return static_cast<int>(program.tools.size()) - 1;
}

void ModMoves::setWorkObject(Step& step, std::string_view name, unsigned line)
{
    const ModName* const declared = names.find(name);
    if (declared && declared->kind == ModName::Kind::WorkObject) {
        step.workObject = declared->index;
    } else if (declared) {
        step.placing = Placing::RunTime; // handed to the routine
    } else if (!sameWord(name, "wobj0")) {
        const auto [known, isNew] = untoldFrames.try_emplace(lowerCase(name), program.workObjects.size());
        if (isNew) {
            program.workObjects.push_back({onOneLine(name), {}, {}, false, false});
            program.notes.push_back({line, fmt::format("{}: a work object that is not in the files; its targets stand "
                                                       "in the robot's own frame",
                                                       inQuotes(name))});
        }
        step.workObject = static_cast<int>(known->second);
    }
}

Place ModMoves::findTarget(const Argument& argument, bool isToPosture)
{
    Tokens at(argument.text, '!', argument.line);
    const Token first = at.next();
    if (first.kind == Token::Kind::Word && !at.peek().isSymbol("(") && !at.peek().isSymbol(".")) {
        const ModName* const declared = names.find(first.text);
        if (!declared)
            return {Placing::Missing, none};
        const std::optional<ModValue> index = expression.takeIndex(at);
        if (declared->kind != ModName::Kind::Targets || !at.peek().isEnd())
            return {Placing::RunTime, none};
        const Place found = ModNames::placeOf(*declared, index);
        const bool isOfKind = found.target == none || isPosture(program, found.target) == isToPosture;
        return isOfKind ? found : Place{Placing::Faulty, none};
    }
    if (first.isSymbol("*"))
        return {Placing::Missing, none};
    const ModValue value = expression.evaluate(argument.text, argument.line);
    return names.addTarget(onOneLine(argument.text), argument.line, value, isToPosture);
}

} // namespace vrk::program
