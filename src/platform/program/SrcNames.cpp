#include "platform/program/SrcNames.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace vrk::program {

void SrcNames::countAssignments(std::string_view text)
{
    SrcLines lines(text);
    std::string_view line;
    while (lines.next(line)) {
        if (line.find('=') == std::string_view::npos)
            continue;
        Tokens at(line, 0, lines.number());
        if (at.peek().kind != Token::Kind::Word)
            continue;
        const std::string name = takeName(at);
        if (at.peek().isSymbol("="))
            ++assignments[name];
        else if (at.peek().isSymbol("."))
            assignments[name] += 2;
    }
}

int SrcNames::assignmentsOf(const std::string& name) const
{
    const std::size_t bracket = name.find('[');
    const auto count = [this](const std::string& key) {
        const auto found = assignments.find(key);
        return found == assignments.end() ? 0 : found->second;
    };
    const int anyElement = bracket == std::string::npos ? 0 : 2 * count(name.substr(0, bracket) + "[?]");
    return count(name) + anyElement;
}

void SrcNames::readData(std::string_view data)
{
    try {
        SrcLines lines(data);
        std::string_view line;
        if (!lines.next(line) || !Tokens(line, 0, lines.number()).peek().isWord("DEFDAT"))
            failAtLine(std::max(1U, lines.number()), "expected DEFDAT");
        for (;;) {
            if (!lines.next(line))
                failAtLine(lines.number(), "the file ends before ENDDAT");
            Tokens at(line, 0, lines.number());
            if (at.peek().isWord("ENDDAT"))
                return;
            readAssignment(at, true);
        }
    } catch (const ProgramFault& fault) {
        const std::string text = fault.what(); // "line 3: ..."
        const std::size_t colon = text.find(':');
        throw ProgramFault(text.substr(0, colon) + " of the .dat file" + text.substr(colon));
    }
}

void SrcNames::readAssignment(Tokens& at, bool isData)
{
    const unsigned line = at.peek().line;
    while (at.peek().isWord("DECL") || at.peek().isWord("GLOBAL") || at.peek().isWord("CONST"))
        at.next();
    if (at.peek().kind != Token::Kind::Word)
        return;
    std::string name = takeName(at);
    std::string shown = name;
    if (at.peek().kind == Token::Kind::Word) { // the first one was a type
        shown = at.peek().text;
        name = takeName(at);
        if (name.find('[') != std::string::npos)
            shown = name;
    }
    if (!at.peek().isSymbol("="))
        return;
    at.next();
    if (!at.peek().isSymbol("{"))
        return;
    const std::optional<SrcAggregate> aggregate = takeAggregate(at);
    if (!aggregate || !at.peek().isEnd())
        failAtLine(line, inQuotes(shown) + ": braces that do not hold names and numbers");
    give(name, shown, *aggregate, line, isData);
}

const SrcName* SrcNames::find(const std::string& name) const
{
    const auto found = names.find(name);
    return found == names.end() ? nullptr : &found->second;
}

void SrcNames::give(const std::string& name, const std::string& shown, const SrcAggregate& aggregate, unsigned line,
                    bool isData)
{
    SrcName& named = names[name];
    named = {Place(), aggregate};
    if (name.starts_with("$") || !aggregate.isPlace())
        return; // a frame of the controller's own, or no target at all
    const Place found = addTarget(shown, line, aggregate);
    program.declaredWithoutPlace += found.placing == Placing::Placed ? 0 : 1;
    if (assignmentsOf(name) <= (isData ? 0 : 1))
        named.place = found;
}

Place SrcNames::addTarget(const std::string& name, unsigned line, const SrcAggregate& from)
{
    Target target{onOneLine(name), line, {}, {}};
    bool isPlace = true;
    if (from.isPosture()) {
        for (const char* axis : {"a1", "a2", "a3", "a4", "a5", "a6"}) {
            if (!from.has(axis))
                return {Placing::RunTime, none}; // the others stay as they are
            isPlace = isPlace && std::isfinite(from.at(axis));
            target.joints.push_back(toRadians(from.at(axis)));
        }
    } else {
        const std::optional<rob::Posed> pose = poseOf(from);
        if (!pose)
            return {Placing::RunTime, none};
        target.pose = *pose;
        isPlace = makePlace(target.pose);
    }
    return isPlace ? enterTarget(program, std::move(target)) : enterFault(program, name, line);
}

} // namespace vrk::program
