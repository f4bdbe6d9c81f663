#pragma once

#include <atomic>

namespace vrk::visual {

/// A flag that one thread writes while others may read it; nothing else is told by it. It is copied as a bool is.
class SharedFlag {
public:
    SharedFlag(bool value) : flag(value) {} // NOLINT: in place of a bool
    SharedFlag(const SharedFlag& o) : flag(static_cast<bool>(o)) {}
    SharedFlag& operator=(const SharedFlag& o) { return *this = static_cast<bool>(o); }
    SharedFlag& operator=(bool value)
    {
        flag.store(value, std::memory_order_relaxed);
        return *this;
    }
    operator bool() const { return flag.load(std::memory_order_relaxed); }

private:
    std::atomic<bool> flag;
};

} // namespace vrk::visual
