#include "platform/program/ProgramText.h"

#include <fmt/format.h>

#include <cmath>
#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace vrk::program {
namespace {

using task::Motion;
using task::MoveLine;

constexpr int deepestNesting = 50; // of brackets, which are read by calling oneself
constexpr double unusedAxis = 9e8; // external axes that are not there are 9E9

/// What an expression of constants gives: nothing that is known, a number, or values in brackets.
struct Value {
    enum class Kind { Unknown, Number, List } kind = Kind::Unknown;
    double number = 0;
    std::vector<Value> list;

    static Value Of(double number) { return {Kind::Number, number, {}}; }
    bool isNumber() const { return kind == Kind::Number; }
    bool isList(std::size_t size) const { return kind == Kind::List && list.size() >= size; }
};

Value listOf(std::initializer_list<double> numbers)
{
    Value value{Value::Kind::List, 0, {}};
    for (const double number : numbers)
        value.list.push_back(Value::Of(number));
    return value;
}

Value poseValue(const rob::Posed& pose)
{
    const rob::Posd& p = pose.position;
    const rob::Orientd& o = pose.orientation;
    Value value{Value::Kind::List, 0, {}};
    value.list = {listOf({p.x, p.y, p.z}), listOf({o.w, o.x, o.y, o.z})};
    return value;
}

enum class Shape { Fits, IsUnknown, IsWrong };

/// The first `numbers.size()` numbers of a list.
Shape takeNumbers(const Value& value, std::vector<double>& numbers)
{
    if (value.kind == Value::Kind::Unknown)
        return Shape::IsUnknown;
    if (!value.isList(numbers.size()))
        return Shape::IsWrong;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (value.list[i].kind == Value::Kind::Unknown)
            return Shape::IsUnknown;
        if (!value.list[i].isNumber())
            return Shape::IsWrong;
        numbers[i] = value.list[i].number;
    }
    return Shape::Fits;
}

/// A pose in its brackets: [[x, y, z], [q1, q2, q3, q4]], with more behind it or not.
Shape takePose(const Value& value, rob::Posed& pose)
{
    if (value.kind == Value::Kind::Unknown)
        return Shape::IsUnknown;
    if (!value.isList(2))
        return Shape::IsWrong;
    std::vector<double> p(3), q(4);
    const Shape place = takeNumbers(value.list[0], p);
    const Shape turn = takeNumbers(value.list[1], q);
    if (place != Shape::Fits || turn != Shape::Fits)
        return place == Shape::IsWrong || turn == Shape::IsWrong ? Shape::IsWrong : Shape::IsUnknown;
    pose = {rob::Posd(p[0], p[1], p[2]), rob::Orientd(q[0], q[1], q[2], q[3])};
    return Shape::Fits;
}

/// The names of the fields of a record, in order.
int fieldOf(std::string_view name)
{
    static const std::unordered_map<std::string, int> fields{
        {"trans", 0},  {"rot", 1},    {"robconf", 2}, {"extax", 3},  {"x", 0},  {"y", 1},
        {"z", 2},      {"q1", 0},     {"q2", 1},      {"q3", 2},     {"q4", 3}, {"uframe", 3},
        {"oframe", 4}, {"tframe", 1}, {"robax", 0},   {"robhold", 0}};
    const auto found = fields.find(lowerCase(name));
    return found == fields.end() ? none : found->second;
}

/// What a name of the program stands for.
struct Declared {
    enum class Kind { Value, Targets, Tool, WorkObject } kind = Kind::Value;
    Value value;
    bool isChanging = false; ///< while the program runs
    std::vector<int> targets;
    std::vector<Placing> placings; ///< of the targets; those that are not placed have no index
    int index = none;              ///< of the tool or the work object
};

/// A target as a move names it.
struct Found {
    Placing placing = Placing::RunTime;
    int target = none;
};

struct Option {
    std::string_view name;
    std::string_view value;
};

/// One argument of an instruction, with the options behind it.
struct Argument {
    std::string_view text;
    unsigned line = 0;
};

/// What an instruction of motion is: its way, and where its arguments stand.
struct MoveWord {
    Motion motion = Motion::Linear;
    bool isPosture = false;
    bool hasToolLast = false; ///< what lies between speed and zone differs
};

std::optional<MoveWord> moveWordOf(std::string_view word)
{
    static const std::unordered_map<std::string, MoveWord> words = [] {
        std::unordered_map<std::string, MoveWord> all;
        const std::pair<const char*, Motion> ways[] = {
            {"j", Motion::Joint}, {"l", Motion::Linear}, {"c", Motion::Circular}};
        for (const auto& [letter, motion] : ways) {
            for (const char* suffix : {"", "do", "ao", "go", "sync"})
                all.emplace(std::string("move") + letter + suffix, MoveWord{motion, false, false});
            all.emplace(std::string("trigg") + letter, MoveWord{motion, false, true});
            for (const char* suffix : {"", "start", "end", "1", "2"})
                if (motion != Motion::Joint)
                    all.emplace(std::string("arc") + letter + suffix, MoveWord{motion, false, true});
        }
        all.emplace("moveabsj", MoveWord{Motion::Joint, true, false});
        return all;
    }();
    const auto found = words.find(lowerCase(word));
    return found == words.end() ? std::nullopt : std::optional(found->second);
}

bool isOneOf(const Token& token, std::initializer_list<std::string_view> words)
{
    for (const std::string_view word : words)
        if (token.isWord(word))
            return true;
    return false;
}

bool opens(const Token& token)
{
    return token.isSymbol("(") || token.isSymbol("[") || token.isSymbol("{");
}

bool closes(const Token& token)
{
    return token.isSymbol(")") || token.isSymbol("]") || token.isSymbol("}");
}

class ModReader {
public:
    explicit ModReader(std::string_view text) : tokens(text, '!')
    {
        program.workObjects.push_back({"wobj0", {}, {}, false, true});
        program.tools.push_back({"tool0", {}, false, true});
        collectAssigned(text);
    }

    Program read()
    {
        skipHeader();
        if (!tokens.peek().isWord("MODULE"))
            failAtLine(tokens.peek().line, "expected MODULE");
        while (!tokens.peek().isEnd())
            readModule();
        return std::move(program);
    }

private:
    using Names = std::unordered_map<std::string, Declared>; // by their small letters

    /// Names that the program gives other values while it runs.
    void collectAssigned(std::string_view text)
    {
        Tokens all(text, '!');
        bool isDeclaration = false;
        std::vector<std::string_view> roots{{}};
        Token last;
        while (!all.peek().isEnd()) {
            const Token token = all.next();
            if (isOneOf(token, {"CONST", "VAR", "PERS"}))
                isDeclaration = true;
            else if (token.isSymbol(";"))
                isDeclaration = false;
            else if (token.isSymbol("{"))
                roots.emplace_back();
            else if (token.isSymbol("}") && roots.size() > 1)
                roots.pop_back();
            else if (token.kind == Token::Kind::Word && !last.isSymbol("."))
                roots.back() = last.isSymbol("\\") ? std::string_view() : token.text;
            else if (token.isSymbol(":=") && !isDeclaration && !roots.back().empty())
                assigned.insert(lowerCase(roots.back()));
            last = token;
        }
    }

    /// Three percent signs, and what stands between them.
    void skipHeader()
    {
        if (!tokens.peek().isSymbol("%"))
            return;
        while (!tokens.peek().isEnd() && !tokens.peek().isWord("MODULE"))
            tokens.next();
    }

    Token expectWord(const char* what)
    {
        if (tokens.peek().kind != Token::Kind::Word)
            failAtLine(tokens.peek().line, fmt::format("expected {}", what));
        return tokens.next();
    }

    void skipBrackets()
    {
        const unsigned line = tokens.peek().line;
        int depth = 0;
        do {
            if (tokens.peek().isEnd())
                failAtLine(line, "brackets that do not match");
            depth += opens(tokens.peek()) ? 1 : closes(tokens.peek()) ? -1 : 0;
            tokens.next();
        } while (depth > 0);
    }

    void readModule()
    {
        const Token module = tokens.next();
        if (!module.isWord("MODULE"))
            failAtLine(module.line, "expected MODULE");
        const Token name = expectWord("the name of a module");
        if (program.name.empty())
            program.name = name.text;
        if (tokens.peek().isSymbol("("))
            skipBrackets();
        for (;;) {
            const Token token = tokens.peek();
            if (token.isEnd())
                failAtLine(token.line, "the file ends before ENDMODULE");
            if (token.isWord("ENDMODULE")) {
                tokens.next();
                return;
            }
            if (isOneOf(token, {"LOCAL", "TASK"}))
                tokens.next();
            else if (isOneOf(token, {"CONST", "VAR", "PERS"}))
                readDeclaration(global);
            else if (isOneOf(token, {"PROC", "FUNC", "TRAP"}))
                readRoutine();
            else if (token.isWord("RECORD"))
                skipBehind("ENDRECORD");
            else if (token.isWord("ALIAS"))
                skipStatement();
            else
                failAtLine(token.line, inQuotes(token.text) + " where a declaration or a routine is expected");
        }
    }

    void skipBehind(std::string_view word)
    {
        const unsigned line = tokens.peek().line;
        while (!tokens.peek().isWord(word)) {
            if (tokens.peek().isEnd())
                failAtLine(line, fmt::format("{} without {}", inQuotes(tokens.peek().text), word));
            tokens.next();
        }
        tokens.next();
    }

    /// Takes all up to a semicolon, and that. @return the source in front of it.
    std::string_view skipStatement()
    {
        const Token first = tokens.peek();
        int depth = 0;
        for (;;) {
            const Token& token = tokens.peek();
            if (token.isEnd() || isOneOf(token, {"PROC", "ENDPROC", "ENDFUNC", "ENDTRAP", "ENDMODULE", "CONST", "VAR",
                                                 "PERS", "ENDIF", "ENDFOR", "ENDWHILE", "ENDTEST"}))
                failAtLine(first.line, inQuotes(first.text) + ": a statement without its semicolon");
            if (token.isSymbol(";"))
                break;
            depth += opens(token) ? 1 : closes(token) ? -1 : 0;
            if (depth < 0)
                failAtLine(token.line, "brackets that do not match");
            tokens.next();
        }
        if (depth != 0)
            failAtLine(first.line, inQuotes(first.text) + ": brackets that do not match");
        const std::size_t end = tokens.peek().at;
        tokens.next();
        return tokens.between(first.at, end);
    }

    void readDeclaration(Names& names)
    {
        const Token kind = tokens.next();
        const Token type = expectWord("the type of a declaration");
        const Token name = expectWord("the name of a declaration");
        const bool isArray = tokens.peek().isSymbol("{");
        if (isArray)
            skipBrackets();
        const bool hasValue = tokens.peek().isSymbol(":=");
        if (hasValue)
            tokens.next();
        else if (!tokens.peek().isSymbol(";"))
            failAtLine(name.line, inQuotes(name.text) + ": a declaration without its semicolon");
        const unsigned line = tokens.peek().line;
        const std::string_view text = skipStatement();
        Value value;
        if (hasValue)
            value = evaluate(text, line);

        Declared declared;
        declared.isChanging = !kind.isWord("CONST") && assigned.contains(lowerCase(name.text));
        declare(declared, name, type, isArray, std::move(value));
        names[lowerCase(name.text)] = std::move(declared);
    }

    void declare(Declared& declared, const Token& name, const Token& type, bool isArray, Value value)
    {
        const bool isPosture = type.isWord("jointtarget");
        if (isPosture || type.isWord("robtarget")) {
            declared.kind = Declared::Kind::Targets;
            const bool isList = isArray && value.kind == Value::Kind::List;
            const std::size_t count = isList ? value.list.size() : 1;
            for (std::size_t i = 0; i < count; ++i) {
                const std::string called = isList ? fmt::format("{}{{{}}}", name.text, i + 1) : std::string(name.text);
                const Found found = addTarget(called, name.line, isList ? value.list[i] : value, isPosture);
                declared.targets.push_back(found.target);
                declared.placings.push_back(found.placing);
                program.declaredWithoutPlace += found.placing == Placing::Placed ? 0 : 1;
            }
        } else if (type.isWord("tooldata") && !isArray) {
            declared.kind = Declared::Kind::Tool;
            declared.index = addTool(name, value);
        } else if (type.isWord("wobjdata") && !isArray) {
            declared.kind = Declared::Kind::WorkObject;
            declared.index = addWorkObject(name, value);
        } else {
            declared.value = std::move(value);
        }
    }

    Found addTarget(const std::string& name, unsigned line, const Value& value, bool isPosture)
    {
        Target target{name, line, {}, {}};
        Shape shape = Shape::IsWrong;
        bool isFaulty = false;
        if (isPosture) {
            std::vector<double> axes(6);
            shape = value.kind == Value::Kind::List && !value.list.empty() ? takeNumbers(value.list[0], axes)
                    : value.kind == Value::Kind::Unknown                   ? Shape::IsUnknown
                                                                           : Shape::IsWrong;
            for (const double axis : axes) {
                isFaulty = isFaulty || !std::isfinite(axis) || std::abs(axis) >= unusedAxis;
                target.joints.push_back(toRadians(axis));
            }
        } else {
            shape = takePose(value, target.pose);
            isFaulty = shape == Shape::Fits && !makePlace(target.pose);
        }
        if (shape == Shape::IsUnknown)
            return {Placing::RunTime, none};
        if (shape == Shape::IsWrong)
            failAtLine(line, fmt::format("{}: expected {}", inQuotes(name),
                                         isPosture ? "[[six angles], ...]" : "[[x, y, z], [q1, q2, q3, q4], ...]"));
        if (isFaulty) {
            program.notes.push_back({line, fmt::format("{}: {}", inQuotes(name), faultyPlace)});
            return {Placing::Faulty, none};
        }
        program.targets.push_back(std::move(target));
        return {Placing::Placed, static_cast<int>(program.targets.size()) - 1};
    }

    /// A frame whose numbers are not known, or are faulty, counts as not told.
    int addTool(const Token& name, const Value& value)
    {
        Tool tool{std::string(name.text), {}, false, false};
        if (value.isList(2)) {
            tool.isTold = takePose(value.list[1], tool.pose) == Shape::Fits && makePlace(tool.pose);
            tool.isStill = value.list[0].isNumber() && value.list[0].number == 0;
        }
        if (!tool.isTold)
            tool.pose = {};
        program.tools.push_back(std::move(tool));
        return static_cast<int>(program.tools.size()) - 1;
    }

    int addWorkObject(const Token& name, const Value& value)
    {
        WorkObject frame{std::string(name.text), {}, {}, false, false};
        if (value.isList(5)) {
            frame.isHeld = value.list[0].isNumber() && value.list[0].number != 0;
            frame.isTold = takePose(value.list[3], frame.user) == Shape::Fits && makePlace(frame.user) &&
                           takePose(value.list[4], frame.object) == Shape::Fits && makePlace(frame.object);
        }
        if (!frame.isTold)
            frame.user = frame.object = {};
        program.workObjects.push_back(std::move(frame));
        return static_cast<int>(program.workObjects.size()) - 1;
    }

    const Declared* findName(std::string_view name) const
    {
        const std::string key = lowerCase(name);
        for (const Names* names : {&local, &global}) {
            const auto found = names->find(key);
            if (found != names->end())
                return &found->second;
        }
        return nullptr;
    }

    // Expressions

    Value evaluate(std::string_view text, unsigned line)
    {
        Tokens expression(text, '!', line);
        Value value = sum(expression, 0);
        return expression.peek().isEnd() ? value : Value();
    }

    static Value combined(const Value& a, const Value& b, char operation)
    {
        if (!a.isNumber() || !b.isNumber())
            return {};
        switch (operation) {
        case '+':
            return Value::Of(a.number + b.number);
        case '-':
            return Value::Of(a.number - b.number);
        case '*':
            return Value::Of(a.number * b.number);
        case '/':
            return Value::Of(a.number / b.number);
        case 'D':
            return b.number == 0 ? Value() : Value::Of(std::trunc(a.number / b.number));
        default:
            return b.number == 0 ? Value() : Value::Of(std::fmod(a.number, b.number));
        }
    }

    Value sum(Tokens& at, int depth)
    {
        Value value = product(at, depth);
        while (at.peek().isSymbol("+") || at.peek().isSymbol("-")) {
            const char operation = at.next().text[0];
            value = combined(value, product(at, depth), operation);
        }
        return value;
    }

    Value product(Tokens& at, int depth)
    {
        Value value = factor(at, depth);
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

    Value factor(Tokens& at, int depth)
    {
        bool isNegative = false;
        while (at.peek().isSymbol("-") || at.peek().isSymbol("+"))
            isNegative = at.next().isSymbol("-") != isNegative;
        Value value = primary(at, depth);
        if (isNegative)
            return value.isNumber() ? Value::Of(-value.number) : Value();
        return value;
    }

    Value primary(Tokens& at, int depth)
    {
        if (depth > deepestNesting)
            failAtLine(at.peek().line, "brackets nested too deeply");
        const Token token = at.next();
        if (token.kind == Token::Kind::Number) {
            double number = 0;
            return parseNumber(token.text, number) ? Value::Of(number) : Value();
        }
        if (token.isSymbol("("))
            return bracketed(at, ")", depth).first();
        if (token.isSymbol("["))
            return bracketed(at, "]", depth).list();
        if (token.kind != Token::Kind::Word)
            return {};
        if (token.isWord("TRUE") || token.isWord("FALSE"))
            return Value::Of(token.isWord("TRUE") ? 1 : 0);
        if (at.peek().isSymbol("(")) {
            at.next();
            return function(token, bracketed(at, ")", depth));
        }
        return named(token, at, depth);
    }

    /// Values between brackets.
    struct Bracketed {
        std::vector<Value> values;
        std::vector<std::pair<std::string, Value>> options;
        bool isWhole = true;

        Value first() const { return isWhole && values.size() == 1 ? values[0] : Value(); }
        Value list() { return isWhole ? Value{Value::Kind::List, 0, std::move(values)} : Value(); }
    };

    Bracketed bracketed(Tokens& at, std::string_view end, int depth)
    {
        Bracketed found;
        while (!at.peek().isEnd() && !at.peek().isSymbol(end)) {
            if (at.peek().isSymbol("\\")) {
                at.next();
                std::string name = lowerCase(at.next().text);
                Value value;
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

    /// The functions whose values are plain arithmetic.
    static Value function(const Token& name, const Bracketed& given)
    {
        std::vector<double> n(given.values.size());
        const bool areNumbers = takeNumbers({Value::Kind::List, 0, given.values}, n) == Shape::Fits && given.isWhole;
        if (name.isWord("OrientZYX") && areNumbers && n.size() == 3) {
            const rob::Rotationd turn = fromZyx(n[0], n[1], n[2]);
            return listOf({turn.w, turn.x, turn.y, turn.z});
        }
        rob::Posed pose;
        if (!given.isWhole || given.values.size() < 4 || takePose(given.values[0], pose) != Shape::Fits)
            return {};
        std::vector<double> by(3);
        if (takeNumbers({Value::Kind::List, 0, {given.values.begin() + 1, given.values.end()}}, by) != Shape::Fits)
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

    /// A name, with the index of an array and the fields of records behind it.
    Value named(const Token& name, Tokens& at, int depth)
    {
        const Declared* const declared = findName(name.text);
        std::optional<Value> index;
        if (at.peek().isSymbol("{")) {
            at.next();
            index = bracketed(at, "}", depth).first();
        }
        Value value;
        if (declared && !declared->isChanging)
            value = valueOf(*declared, index);
        while (at.peek().isSymbol(".")) {
            at.next();
            const int field = fieldOf(at.next().text);
            const bool isThere = field != none && value.isList(static_cast<std::size_t>(field) + 1);
            value = isThere ? Value(value.list[static_cast<std::size_t>(field)]) : Value();
        }
        return value;
    }

    Value valueOf(const Declared& declared, const std::optional<Value>& index) const
    {
        if (declared.kind == Declared::Kind::Targets) {
            const Found found = elementOf(declared, index);
            const bool isPlace = found.placing == Placing::Placed &&
                                 program.targets[static_cast<std::size_t>(found.target)].joints.empty();
            return isPlace ? poseValue(program.targets[static_cast<std::size_t>(found.target)].pose) : Value();
        }
        if (!index)
            return declared.value;
        const double i = index->isNumber() ? index->number : 0;
        return i >= 1 && i == std::floor(i) && declared.value.isList(1) &&
                       i <= static_cast<double>(declared.value.list.size())
                   ? declared.value.list[static_cast<std::size_t>(i) - 1]
                   : Value();
    }

    /// One target of a name, which may be an array.
    static Found elementOf(const Declared& declared, const std::optional<Value>& index)
    {
        if (declared.isChanging)
            return {Placing::RunTime, none};
        if (declared.targets.empty())
            return {Placing::Missing, none}; // an array whose brackets hold nothing
        std::size_t element = 0;
        if (index) {
            const double i = index->isNumber() ? index->number : 0;
            if (!(i >= 1) || i != std::floor(i))
                return {Placing::RunTime, none};
            const bool isFilled = declared.placings[0] != Placing::RunTime || declared.targets.size() > 1;
            if (i > static_cast<double>(declared.targets.size()))
                return {isFilled ? Placing::Missing : Placing::RunTime, none};
            element = static_cast<std::size_t>(i) - 1;
        }
        return {declared.placings[element], declared.targets[element]};
    }

    // Routines

    void readRoutine()
    {
        const Token kind = tokens.next();
        if (kind.isWord("FUNC"))
            expectWord("the type of a function");
        const Token name = expectWord("the name of a routine");
        local.clear();
        if (tokens.peek().isSymbol("("))
            readParameters();
        else if (!kind.isWord("TRAP"))
            failAtLine(name.line, inQuotes(name.text) + ": expected '('");
        program.routines.push_back({std::string(name.text), name.line, {}});
        const std::string end = "END" + std::string(kind.text);
        while (!tokens.peek().isWord(end)) {
            const Token& token = tokens.peek();
            if (token.isEnd() || isOneOf(token, {"ENDMODULE", "PROC", "FUNC", "TRAP", "ENDPROC", "ENDFUNC", "ENDTRAP"}))
                failAtLine(token.line, fmt::format("{} of line {} has no {}", inQuotes(name.text), name.line, end));
            readStatement();
        }
        tokens.next();
        local.clear();
    }

    /// What is handed to a routine is known when it runs.
    void readParameters()
    {
        const unsigned line = tokens.next().line;
        Token last;
        int depth = 0;
        for (;;) {
            const Token token = tokens.next();
            if (token.isEnd())
                failAtLine(line, "brackets that do not match");
            const bool isLast = token.isSymbol(")") && depth == 0;
            if (token.isSymbol("{"))
                ++depth;
            else if (token.isSymbol("}"))
                --depth;
            else if (isLast || token.isSymbol(",") || token.isSymbol("|")) {
                if (last.kind == Token::Kind::Word)
                    local[lowerCase(last.text)].isChanging = true;
                if (isLast)
                    return;
            } else if (depth == 0)
                last = token;
        }
    }

    Step& addStep(const Token& first, std::string_view text)
    {
        std::vector<Step>& steps = program.routines.back().steps;
        steps.emplace_back();
        steps.back().text = onOneLine(text);
        steps.back().line = first.line;
        return steps.back();
    }

    void readStatement()
    {
        const Token first = tokens.peek();
        if (isOneOf(first, {"CONST", "VAR", "PERS"})) {
            readDeclaration(local);
            return;
        }
        if (isOneOf(first,
                    {"ELSE", "ENDIF", "ENDFOR", "ENDWHILE", "ENDTEST", "UNDO", "BACKWARD", "ERROR", "DEFAULT"})) {
            tokens.next();
            if (first.isWord("ERROR") && tokens.peek().isSymbol("("))
                skipBrackets();
            if (tokens.peek().isSymbol(":"))
                tokens.next();
            addStep(first, tokens.between(first.at, tokens.behind()));
        } else if (isOneOf(first, {"IF", "ELSEIF"})) {
            readHead("THEN");
        } else if (isOneOf(first, {"FOR", "WHILE"})) {
            readHead("DO");
        } else if (first.isWord("TEST")) {
            while (!tokens.peek().isEnd() && tokens.peek().line == first.line)
                tokens.next();
            addStep(first, tokens.between(first.at, tokens.behind()));
        } else if (first.isWord("CASE")) {
            readHead(":");
        } else {
            readPlainStatement();
        }
    }

    /// The first line of a block, up to the word that ends it. What a condition on one line leads to is a statement of its
    /// own.
    void readHead(std::string_view end)
    {
        const Token first = tokens.next();
        for (;;) {
            const Token token = tokens.peek();
            if (token.isEnd() || isOneOf(token, {"ENDPROC", "ENDFUNC", "ENDTRAP", "ENDMODULE"}))
                failAtLine(first.line, fmt::format("{} without {}", inQuotes(first.text), inQuotes(end)));
            const bool isMove = first.isWord("IF") && token.kind == Token::Kind::Word && moveWordOf(token.text);
            if (isMove) {
                addStep(first, tokens.between(first.at, token.at));
                return;
            }
            tokens.next();
            if (token.isWord(end) || token.isSymbol(end) || (first.isWord("IF") && token.isSymbol(";"))) {
                addStep(first, tokens.between(first.at, token.isSymbol(";") ? token.at : tokens.behind()));
                return;
            }
        }
    }

    void readPlainStatement()
    {
        const Token first = tokens.peek();
        const std::optional<MoveWord> move = first.kind == Token::Kind::Word ? moveWordOf(first.text) : std::nullopt;
        if (!move) {
            // A label ends with its colon.
            if (first.kind == Token::Kind::Word && isLabel()) {
                addStep(first, first.text);
                return;
            }
            const std::string_view text = skipStatement();
            if (!text.empty())
                addStep(first, text);
            return;
        }
        const std::string_view text = skipStatement();
        readMove(addStep(first, text), *move, text, first);
    }

    /// Takes "name :" where that is what follows.
    bool isLabel()
    {
        const Tokens before = tokens;
        tokens.next();
        if (tokens.peek().isSymbol(":")) {
            tokens.next();
            return true;
        }
        tokens = before;
        return false;
    }

    // Moves

    /// The arguments of an instruction, and its options by name.
    static void split(std::string_view text, const Token& first, std::vector<Argument>& arguments,
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

    void readMove(Step& step, const MoveWord& word, std::string_view text, const Token& first)
    {
        std::vector<Argument> arguments;
        std::vector<Option> options;
        split(text, first, arguments, options);
        const std::size_t targets = word.motion == Motion::Circular ? 2 : 1;
        if (arguments.size() < targets + 3)
            failAtLine(first.line, fmt::format("{} needs a target, a speed, a zone and a tool", inQuotes(first.text)));
        const std::size_t toolAt = word.hasToolLast ? arguments.size() - 1 : targets + 2;
        step.isMove = true;
        step.motion = word.motion;
        step.drawn = word.motion == Motion::Joint && !word.isPosture ? MoveLine::Dashed : MoveLine::Solid;
        step.speed = onOneLine(arguments[targets].text);
        step.zone = onOneLine(arguments[toolAt - 1].text);
        step.tool = toolOf(arguments[toolAt]);

        const Found target = findTarget(arguments[targets - 1], word.isPosture);
        step.placing = target.placing;
        step.target = target.target;
        if (targets == 2) {
            const Found via = findTarget(arguments[0], false);
            step.via = via.target;
            if (step.placing == Placing::Placed)
                step.placing = via.placing;
        }
        for (const Option& option : options)
            if (sameWord(option.name, "WObj") && !word.isPosture)
                setWorkObject(step, option.value, first.line);
    }

    int toolOf(const Argument& argument)
    {
        const Declared* const declared = findName(argument.text);
        if (declared)
            return declared->kind == Declared::Kind::Tool ? declared->index : none;
        if (sameWord(argument.text, "tool0"))
            return 0;
        return toolNamed(argument.text);
    }

    int toolNamed(std::string_view name)
    {
        for (std::size_t i = 0; i < program.tools.size(); ++i)
            if (sameWord(program.tools[i].name, name))
                return static_cast<int>(i);
        program.tools.push_back({onOneLine(name), {}, false, false});
        return static_cast<int>(program.tools.size()) - 1;
    }

    void setWorkObject(Step& step, std::string_view name, unsigned line)
    {
        const Declared* const declared = findName(name);
        if (declared && declared->kind == Declared::Kind::WorkObject) {
            step.workObject = declared->index;
        } else if (declared) {
            step.placing = Placing::RunTime; // handed to the routine
        } else if (!sameWord(name, "wobj0")) {
            const auto [known, isNew] = untoldFrames.try_emplace(lowerCase(name), program.workObjects.size());
            if (isNew) {
                program.workObjects.push_back({onOneLine(name), {}, {}, false, false});
                program.notes.push_back(
                    {line, fmt::format("{}: a work object that is not in the files; its targets stand "
                                       "in the robot's own frame",
                                       inQuotes(name))});
            }
            step.workObject = static_cast<int>(known->second);
        }
    }

    /// A target as an argument tells it: a name, an element of an array, brackets with numbers, or an offset from one of
    /// these.
    Found findTarget(const Argument& argument, bool isPosture)
    {
        Tokens at(argument.text, '!', argument.line);
        const Token first = at.next();
        if (first.kind == Token::Kind::Word && !at.peek().isSymbol("(") && !at.peek().isSymbol(".")) {
            const Declared* const declared = findName(first.text);
            if (!declared)
                return {Placing::Missing, none};
            std::optional<Value> index;
            if (at.peek().isSymbol("{")) {
                at.next();
                index = bracketed(at, "}", 0).first();
            }
            if (declared->kind != Declared::Kind::Targets || !at.peek().isEnd())
                return {Placing::RunTime, none};
            const Found found = elementOf(*declared, index);
            const bool isOfKind = found.target == none ||
                                  program.targets[static_cast<std::size_t>(found.target)].joints.empty() != isPosture;
            return isOfKind ? found : Found{Placing::Faulty, none};
        }
        if (first.isSymbol("*"))
            return {Placing::Missing, none};
        return addTarget(onOneLine(argument.text), argument.line, evaluate(argument.text, argument.line), isPosture);
    }

    Tokens tokens;
    Program program;
    Names global;
    Names local; ///< of the routine that is being read
    std::unordered_set<std::string> assigned;
    std::unordered_map<std::string, std::size_t> untoldFrames;
};

} // namespace

Program readMod(std::string_view text)
{
    const std::string plain = asUtf8(text);
    return ModReader(plain).read();
}

} // namespace vrk::program
