#pragma once

#include <QString>

#include <functional>

namespace vrkview {

/// Runs a command of the user that changes the station or, where it throws, leaves it as it was.
/// @param tell  is given what went wrong, in words for the user.
void attempt(const std::function<void()>& act, const std::function<void(const QString&)>& tell);

} // namespace vrkview
