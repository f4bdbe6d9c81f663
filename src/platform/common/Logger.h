#pragma once

#include "platform/common/Export.h"

#include <functional>
#include <memory>
#include <string>

namespace vrk {

enum class LogLevel { Trace, Warn, Error };

/// One destination of messages. Every operation may be called from any thread.
class VRK_EXPORT Logger {
public:
    virtual ~Logger();

    void error(const std::string& message);
    void warn(const std::string& message);
    void trace(const std::string& message);

    /// Also hands every message to `listener`, on the thread that logs; an empty function ends that.
    void setListener(std::function<void(LogLevel, const std::string&)> listener);

protected:
    struct State;
    explicit Logger(std::unique_ptr<State> state);

private:
    void write(LogLevel level, const std::string& message);

    std::unique_ptr<State> state;
};

/// Messages for the application's user: standard error, and the log file as well.
class VRK_EXPORT AppLogger : public Logger {
public:
    static AppLogger* inst();

private:
    AppLogger();
};

/// Messages for developers who look for a fault: the file "vrk.log" in the system's temporary directory.
class VRK_EXPORT FileLogger : public Logger {
public:
    static FileLogger* inst();

private:
    FileLogger();
};

} // namespace vrk
