#include "platform/common/Logger.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <filesystem>
#include <iostream>
#include <mutex>
#include <vector>

namespace vrk {
namespace {

constexpr std::size_t largestLogFile = 4 << 20; // bytes; one older file is kept beside it

spdlog::level::level_enum levelOf(LogLevel level)
{
    switch (level) {
    case LogLevel::Error:
        return spdlog::level::err;
    case LogLevel::Warn:
        return spdlog::level::warn;
    case LogLevel::Trace:
        break;
    }
    return spdlog::level::trace;
}

/// The one log file, shared by both loggers. Where it cannot be opened, standard error takes its messages.
const spdlog::sink_ptr& fileSink()
{
    static const spdlog::sink_ptr sink = []() -> spdlog::sink_ptr {
        try {
            const std::filesystem::path file = std::filesystem::temp_directory_path() / "vrk.log";
            return std::make_shared<spdlog::sinks::rotating_file_sink_mt>(file.string(), largestLogFile, 1);
        } catch (const std::exception& failure) { // spdlog_ex or filesystem_error: logging must not stop the program
            std::cerr << "no log file: " << failure.what() << '\n';
            return std::make_shared<spdlog::sinks::stderr_sink_mt>();
        }
    }();
    return sink;
}

} // namespace

struct Logger::State {
    using Listener = std::function<void(LogLevel, const std::string&)>;

    State(const std::string& name, std::vector<spdlog::sink_ptr> sinks) : logger(name, sinks.begin(), sinks.end())
    {
        logger.set_level(spdlog::level::trace);
        logger.flush_on(spdlog::level::trace); // the last lines before a crash are the ones that are looked for
    }

    spdlog::logger logger;
    std::mutex mutex; // guards `listener`
    std::shared_ptr<const Listener> listener;
};

Logger::Logger(std::unique_ptr<State> state) : state(std::move(state)) {}

Logger::~Logger() = default;

void Logger::error(const std::string& message)
{
    write(LogLevel::Error, message);
}

void Logger::warn(const std::string& message)
{
    write(LogLevel::Warn, message);
}

void Logger::trace(const std::string& message)
{
    write(LogLevel::Trace, message);
}

void Logger::setListener(std::function<void(LogLevel, const std::string&)> listener)
{
    std::shared_ptr<const State::Listener> next;
    if (listener)
        next = std::make_shared<const State::Listener>(std::move(listener));
    const std::lock_guard lock(state->mutex);
    state->listener.swap(next);
}

void Logger::write(LogLevel level, const std::string& message)
{
    state->logger.log(levelOf(level), spdlog::string_view_t(message.data(), message.size()));

    std::shared_ptr<const State::Listener> listener;
    {
        const std::lock_guard lock(state->mutex);
        listener = state->listener;
    }
    if (listener)
        (*listener)(level, message); // outside the lock: it may log itself
}

AppLogger::AppLogger()
    : Logger(std::make_unique<State>(
          "app", std::vector<spdlog::sink_ptr>{std::make_shared<spdlog::sinks::stderr_sink_mt>(), fileSink()}))
{
}

AppLogger* AppLogger::inst()
{
    static AppLogger* const logger = new AppLogger; // never freed: destructors of statics log, too
    return logger;
}

FileLogger::FileLogger() : Logger(std::make_unique<State>("file", std::vector<spdlog::sink_ptr>{fileSink()})) {}

FileLogger* FileLogger::inst()
{
    static FileLogger* const logger = new FileLogger; // never freed, as above
    return logger;
}

} // namespace vrk
