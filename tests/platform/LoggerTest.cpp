#include "platform/common/Logger.h"

#include "support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vrk {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

/// Collects what a logger says for as long as it lives.
class Listener {
public:
    explicit Listener(Logger* logger) : logger(logger)
    {
        logger->setListener([this](LogLevel level, const std::string& text) {
            const std::lock_guard lock(mutex);
            messages.emplace_back(level, text);
        });
    }
    ~Listener() { logger->setListener({}); }

    Logger* logger;
    std::mutex mutex;
    std::vector<std::pair<LogLevel, std::string>> messages;
};

std::string unique(const std::string& text)
{
    return text + " " + std::to_string(getpid());
}

std::string logFile()
{
    return test::TempFolder::Read(std::filesystem::temp_directory_path() / "vrk.log");
}

TEST(Logger, ListenerHearsEachLevel)
{
    const Listener listener(AppLogger::inst());

    AppLogger::inst()->error("an error");
    AppLogger::inst()->warn("a warning");
    AppLogger::inst()->trace("a trace");

    EXPECT_THAT(listener.messages, ElementsAre(Pair(LogLevel::Error, "an error"), Pair(LogLevel::Warn, "a warning"),
                                               Pair(LogLevel::Trace, "a trace")));
}

TEST(Logger, MessageIsTakenAsItStands)
{
    const Listener listener(AppLogger::inst());

    AppLogger::inst()->warn("{} %s {0}");

    EXPECT_THAT(listener.messages, ElementsAre(Pair(LogLevel::Warn, "{} %s {0}")));
    EXPECT_THAT(logFile(), HasSubstr("{} %s {0}"));
}

TEST(Logger, EmptyListenerEndsListening)
{
    int heard = 0;
    FileLogger::inst()->setListener([&heard](LogLevel, const std::string&) { ++heard; });
    FileLogger::inst()->trace("heard");

    FileLogger::inst()->setListener({});
    FileLogger::inst()->trace("not heard");

    EXPECT_EQ(heard, 1);
}

TEST(Logger, ListenerMayLogItself)
{
    std::vector<std::string> heard;
    FileLogger::inst()->setListener([&heard](LogLevel level, const std::string& text) {
        heard.push_back(text);
        if (level == LogLevel::Error)
            FileLogger::inst()->warn("again");
    });

    FileLogger::inst()->error("once");
    FileLogger::inst()->setListener({});

    EXPECT_THAT(heard, ElementsAre("once", "again"));
}

TEST(Logger, ThreadsLogAtTheSameTime)
{
    Listener listener(FileLogger::inst());

    std::vector<std::jthread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < 50; ++i)
                FileLogger::inst()->trace("from a thread");
        });
    }
    threads.clear();

    EXPECT_EQ(listener.messages.size(), 200u);
}

TEST(FileLogger, MessagesLieInTheLogFileOfTheTemporaryFolder)
{
    FileLogger::inst()->trace(unique("a trace for the file"));

    EXPECT_THAT(logFile(), HasSubstr(unique("a trace for the file")));
}

TEST(AppLogger, MessagesLieInTheLogFileToo)
{
    AppLogger::inst()->error(unique("an error for the user"));

    EXPECT_THAT(logFile(), HasSubstr(unique("an error for the user")));
}

} // namespace
} // namespace vrk
