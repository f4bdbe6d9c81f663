#pragma once

#include "platform/common/Export.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vrk::common {

/// Takes bytes in any number of pieces (64 bit FNV-1a). For telling contents apart, not against who forges them.
class VRK_EXPORT Hash {
public:
    void add(std::string_view bytes)
    {
        for (const unsigned char c : bytes)
            state = (state ^ c) * 0x100000001b3;
    }
    template <typename Number>
    void addNumber(const Number& number)
    {
        add({reinterpret_cast<const char*>(&number), sizeof number});
    }
    std::uint64_t value() const { return state; }
    /// 16 digits, small letters; the same in every run.
    std::string text() const;

private:
    std::uint64_t state = 0xcbf29ce484222325;
};

} // namespace vrk::common
