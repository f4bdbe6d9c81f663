#pragma once

#include <gmock/gmock.h>

#include <string>
#include <typeindex>

namespace vrk::test {

/// A call that fails with this text and with this very type: `testing::ThrowsMessage` also lets derived types pass, and a
/// caller tells failures apart by the type.
template <typename Failure>
auto throwsExactly(const std::string& text)
{
    const auto typeOf = [](const Failure& failure) { return std::type_index(typeid(failure)); };
    return testing::Throws<Failure>(testing::AllOf(testing::Property(&std::exception::what, testing::StrEq(text)),
                                                   testing::ResultOf(typeOf, std::type_index(typeid(Failure)))));
}

} // namespace vrk::test
