#include "platform/geometry/StlFormat.h"

#include "platform/common/NumberText.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace vrk::geometry {
namespace {

static_assert(std::endian::native == std::endian::little, "binary STL is copied as it lies in the file");
static_assert(sizeof(StlFacet) == 48); // what a record begins with

bool isSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Takes words and numbers off a text as a stream with the classic locale does, without its cost.
class Scanner {
public:
    explicit Scanner(std::string_view text) : at(text.data()), end(text.data() + text.size()) {}

    /// Whether nothing but white space is left.
    bool isAtEnd()
    {
        skipSpace();
        return at == end;
    }

    /// The characters up to the next white space; empty at the end of the text.
    std::string_view word()
    {
        skipSpace();
        const char* begin = at;
        while (at != end && !isSpace(*at))
            ++at;
        return {begin, at};
    }

    /// Reads a number, which ends where no more of it can follow.
    /// @return false where there is none, for "nan" and "inf", and for one that is too large for a float.
    bool number(float& value)
    {
        skipSpace();
        const std::string_view text = numberText();
        const char* last = text.data() + text.size();
        const auto [stop, error] = common::readNumber(text.data(), last, value);
        return error == std::errc() && stop == last && std::isfinite(value);
    }

    bool isBehindWord() const { return at == end || isSpace(*at); }

    std::string_view restOfLine()
    {
        const char* begin = at;
        at = std::find(at, end, '\n');
        return {begin, at};
    }
    /// Goes on from a place in the text.
    void goTo(const char* place) { at = place; }

private:
    void skipSpace()
    {
        while (at != end && isSpace(*at))
            ++at;
    }
    bool take(char a, char b)
    {
        if (at == end || (*at != a && *at != b))
            return false;
        ++at;
        return true;
    }
    void takeDigits()
    {
        while (at != end && isDigit(*at))
            ++at;
    }

    /// What a stream would gather before it converts: it takes the 'e' before it knows whether digits follow.
    std::string_view numberText()
    {
        const char* begin = at;
        take('+', '-');
        takeDigits();
        if (take('.', '.'))
            takeDigits();
        if (take('e', 'E')) {
            take('+', '-');
            takeDigits();
        }
        return {begin, at};
    }

    const char* at;
    const char* end;
};

using FacetVisitor = std::function<void(const StlFacet&, unsigned)>;

class TextReader {
public:
    TextReader(std::string_view text, StlSyntax syntax, const FacetVisitor& visit)
        : scanner(text), syntax(syntax), visit(visit)
    {
    }

    StlText read()
    {
        bool hasFacet = false;
        for (std::string_view word = scanner.word(); !word.empty(); word = scanner.word()) {
            if (syntax.solidNames && (isSame(word, "solid") || isSame(word, "endsolid"))) {
                skipName();
                continue;
            }
            if (!is(word, "facet"))
                continue;
            hasFacet = true;
            result.fault = readFacet();
            if (result.fault != StlFault::None)
                return result;
        }
        if (!hasFacet)
            result.fault = StlFault::NoFacet;
        return result;
    }

private:
    /// Skips the name of a solid: the rest of its line, or what stands ahead of the first facet in that line, since some
    /// files are one line.
    void skipName()
    {
        std::string_view before, beforeThat, facet;
        Scanner words(scanner.restOfLine());
        for (std::string_view word = words.word(); !word.empty(); word = words.word()) {
            if (isSame(beforeThat, "facet") && isSame(before, "normal") && isNumber(word)) {
                scanner.goTo(facet.data());
                return;
            }
            if (isSame(word, "facet")) {
                result.isFacetInName = result.isFacetInName || !facet.empty(); // the one before it began no facet
                facet = word;
            }
            beforeThat = before;
            before = word;
        }
        result.isFacetInName = result.isFacetInName || !facet.empty();
    }

    static bool isNumber(std::string_view word)
    {
        Scanner scanner(word);
        float value = 0;
        return scanner.number(value) && scanner.isAtEnd();
    }

    static bool isSame(std::string_view word, std::string_view small)
    {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
        return std::ranges::equal(word, small, {}, lower);
    }

    /// Whether a word is this one; capitals are noted.
    bool is(std::string_view word, std::string_view small)
    {
        if (word == small)
            return true;
        if (!syntax.anyCase || !isSame(word, small))
            return false;
        result.isInSmallLetters = false;
        return true;
    }

    /// Reads on from behind the word "facet" to its "endfacet".
    StlFault readFacet()
    {
        StlFacet facet;
        unsigned normals = 0;
        unsigned vertices = 0;
        unsigned cornersBeforeNormal = 0;
        for (std::string_view word = scanner.word(); !is(word, "endfacet"); word = scanner.word()) {
            if (word.empty())
                return StlFault::CutShort;
            if (is(word, "normal")) {
                if (!readTriple(facet.normal.data()))
                    return StlFault::Normal;
                cornersBeforeNormal = vertices;
                ++normals;
            } else if (is(word, "vertex")) {
                if (!readTriple(facet.corners.data() + 3 * std::min(vertices, 2u)))
                    return StlFault::Vertex;
                ++vertices;
            }
        }
        if (vertices != 3 || normals != 1)
            return StlFault::Facet;
        visit(facet, cornersBeforeNormal);
        return StlFault::None;
    }

    bool readTriple(float* numbers)
    {
        for (int i = 0; i < 3; ++i) {
            result.endsInNumbers = scanner.isAtEnd();
            if (!scanner.number(numbers[i]) || (syntax.wholeNumbers && !scanner.isBehindWord()))
                return false;
        }
        return true;
    }

    Scanner scanner;
    StlSyntax syntax;
    const FacetVisitor& visit;
    StlText result;
};

} // namespace

void StlFacet::computeNormal()
{
    std::array<double, 3> u{}, v{};
    for (std::size_t i = 0; i < 3; ++i) {
        u[i] = static_cast<double>(corners[3 + i]) - corners[i];
        v[i] = static_cast<double>(corners[6 + i]) - corners[i];
    }
    const std::array<double, 3> n{u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
    const double length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
    for (std::size_t i = 0; i < 3; ++i)
        normal[i] = length > 0 ? static_cast<float>(n[i] / length) : 0.0f;
}

std::uint32_t stlCount(const void* header)
{
    std::uint32_t count = 0;
    std::memcpy(&count, static_cast<const char*>(header) + stlHeaderSize - sizeof count, sizeof count);
    return count;
}

StlText readStlText(std::string_view text, StlSyntax syntax,
                    const std::function<void(const StlFacet&, unsigned cornersBeforeNormal)>& visit)
{
    return TextReader(text, syntax, visit).read();
}

} // namespace vrk::geometry
