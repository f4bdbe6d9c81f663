#include "support/DamagedText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <vector>

namespace vrk::test {
namespace {

class Damage {
public:
    Damage(std::string bytes, unsigned seed) : bytes(std::move(bytes)), random(seed) {}

    std::string done()
    {
        switch (below(8)) {
        case 0:
            bytes.resize(below(bytes.size()));
            break;
        case 1:
            bytes.erase(below(bytes.size()), 1 + below(bytes.size() / 10 + 1));
            break;
        case 2:
        case 3:
            loseLines();
            break;
        case 4:
        case 5:
            changeBytes();
            break;
        default:
            replaceNumbers();
        }
        return std::move(bytes);
    }

private:
    std::size_t below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(random); }

    void loseLines()
    {
        for (std::size_t left = 1 + below(5); left > 0; --left) {
            const std::size_t begin = bytes.find('\n', below(bytes.size()));
            if (begin == std::string::npos)
                continue;
            const std::size_t end = bytes.find('\n', begin + 1);
            bytes.erase(begin, end == std::string::npos ? end : end - begin);
        }
    }

    void changeBytes()
    {
        for (std::size_t left = 1 + below(10); left > 0; --left)
            bytes[below(bytes.size())] = static_cast<char>(below(256));
    }

    void replaceNumbers()
    {
        static constexpr std::array others{"1e308", "-1", "nan", "0", "0.0", "-1e308", "1e-308", "2147483647", "1.5"};
        for (std::size_t left = 1 + below(4); left > 0; --left) {
            const auto isNumber = [this](std::size_t i) {
                return std::isdigit(static_cast<unsigned char>(bytes[i])) != 0 || bytes[i] == '.' || bytes[i] == '-';
            };
            std::size_t begin = below(bytes.size());
            while (begin < bytes.size() && !isNumber(begin))
                ++begin;
            std::size_t end = begin;
            while (end < bytes.size() && isNumber(end))
                ++end;
            if (begin < end)
                bytes.replace(begin, end - begin, others[below(others.size())]);
        }
    }

    std::string bytes;
    std::mt19937 random;
};

} // namespace

std::string damaged(const std::string& bytes, unsigned seed)
{
    return bytes.empty() ? bytes : Damage(bytes, seed).done();
}

} // namespace vrk::test
