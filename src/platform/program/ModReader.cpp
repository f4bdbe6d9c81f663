#include "platform/program/ModMoves.h"

#include <fmt/format.h>

namespace vrk::program {
namespace {

class ModReader {
public:
    explicit ModReader(std::string_view text) : tokens(text, '!'), names(text, program)
    {
        program.workObjects.push_back({"wobj0", {}, {}, false, true});
        program.tools.push_back({"tool0", {}, false, true});
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
                readDeclaration(false);
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

    void readDeclaration(bool isLocal)
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
        names.declare({kind, type, name, isArray, hasValue ? expression.evaluate(text, line) : ModValue()}, isLocal);
    }

    // Routines

    void readRoutine()
    {
        const Token kind = tokens.next();
        if (kind.isWord("FUNC"))
            expectWord("the type of a function");
        const Token name = expectWord("the name of a routine");
        names.leaveRoutine();
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
        names.leaveRoutine();
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
                    names.declareParameter(last.text);
                if (isLast)
                    return;
            } else if (depth == 0)
                last = token;
        }
    }

    void readStatement()
    {
        const Token first = tokens.peek();
        if (isOneOf(first, {"CONST", "VAR", "PERS"})) {
            readDeclaration(true);
            return;
        }
        if (isOneOf(first,
                    {"ELSE", "ENDIF", "ENDFOR", "ENDWHILE", "ENDTEST", "UNDO", "BACKWARD", "ERROR", "DEFAULT"})) {
            tokens.next();
            if (first.isWord("ERROR") && tokens.peek().isSymbol("("))
                skipBrackets();
            if (tokens.peek().isSymbol(":"))
                tokens.next();
            addStep(program, tokens.between(first.at, tokens.behind()), first.line);
        } else if (isOneOf(first, {"IF", "ELSEIF"})) {
            readHead("THEN");
        } else if (isOneOf(first, {"FOR", "WHILE"})) {
            readHead("DO");
        } else if (first.isWord("TEST")) {
            while (!tokens.peek().isEnd() && tokens.peek().line == first.line)
                tokens.next();
            addStep(program, tokens.between(first.at, tokens.behind()), first.line);
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
            const bool isMove = first.isWord("IF") && token.kind == Token::Kind::Word && modMoveOf(token.text);
            if (isMove) {
                addStep(program, tokens.between(first.at, token.at), first.line);
                return;
            }
            tokens.next();
            if (token.isWord(end) || token.isSymbol(end) || (first.isWord("IF") && token.isSymbol(";"))) {
                addStep(program, tokens.between(first.at, token.isSymbol(";") ? token.at : tokens.behind()),
                        first.line);
                return;
            }
        }
    }

    void readPlainStatement()
    {
        const Token first = tokens.peek();
        const std::optional<ModMove> move = first.kind == Token::Kind::Word ? modMoveOf(first.text) : std::nullopt;
        if (!move) {
            // A label ends with its colon.
            if (first.kind == Token::Kind::Word && isLabel()) {
                addStep(program, first.text, first.line);
                return;
            }
            const std::string_view text = skipStatement();
            if (!text.empty())
                addStep(program, text, first.line);
            return;
        }
        const std::string_view text = skipStatement();
        moves.read(addStep(program, text, first.line), *move, text, first);
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

    Tokens tokens;
    Program program;
    ModNames names;
    ModExpression expression{names};
    ModMoves moves{program, names, expression};
};

} // namespace

Program readMod(std::string_view text)
{
    const std::string plain = asUtf8(text);
    return ModReader(plain).read();
}

} // namespace vrk::program
