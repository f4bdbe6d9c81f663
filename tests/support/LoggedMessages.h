#pragma once

#include "platform/common/Logger.h"

#include <string>
#include <vector>

namespace vrk::test {

/// What the library writes into its log while this lives.
class LoggedMessages {
public:
    LoggedMessages()
    {
        FileLogger::inst()->setListener([this](LogLevel level, const std::string& text) {
            (level == LogLevel::Error ? errors : others).push_back(text);
        });
    }
    ~LoggedMessages() { FileLogger::inst()->setListener({}); }
    LoggedMessages(const LoggedMessages&) = delete;
    LoggedMessages& operator=(const LoggedMessages&) = delete;

    std::vector<std::string> errors;
    std::vector<std::string> others;
};

} // namespace vrk::test
