#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vrk::test {

/// Runs the fuzz target that the program is linked with; it aborts by itself where an input is not taken as it should be.
inline void feed(const std::string& input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

/// One to four edits: a byte changed, a piece removed, a piece of another seed put in.
inline std::string mutated(std::string text, const std::vector<std::string>& seeds, std::mt19937& random)
{
    for (unsigned edits = 1 + random() % 4; edits-- > 0;) {
        const std::size_t at = random() % (text.size() + 1);
        const unsigned kind = random() % 3;
        if (kind == 0 && at < text.size()) {
            text[at] = static_cast<char>(random());
        } else if (kind == 1) {
            text.erase(at, random() % 20);
        } else {
            const std::string& other = seeds[random() % seeds.size()];
            text.insert(at, other.substr(random() % (other.size() + 1), random() % 60));
        }
    }
    return text;
}

} // namespace vrk::test
