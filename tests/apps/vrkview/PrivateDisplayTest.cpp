#include "start/PrivateDisplay.h"
#include "start/StartUp.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

#include <sys/wait.h>
#include <unistd.h>

namespace vrkview::test {
namespace {

TEST(PrivateDisplayTest, AnswersAsLongAsItLivesAndNotAfterwards)
{
    {
        const PrivateDisplay display;
        EXPECT_TRUE(displayAnswers());
    }
    EXPECT_FALSE(displayAnswers());
}

TEST(PrivateDisplayTest, TwoHaveTwoNumbers)
{
    const PrivateDisplay first;
    const std::string name = std::getenv("DISPLAY");
    const PrivateDisplay second;

    EXPECT_NE(name, std::getenv("DISPLAY"));
    EXPECT_TRUE(displayAnswers());
}

TEST(PrivateDisplayTest, EndsWithAProcessThatIsKilled)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        const PrivateDisplay display;
        const std::string name = std::getenv("DISPLAY");
        if (write(ends[1], name.data(), name.size()) < 0)
            _exit(1);
        pause();
    }
    char name[32] = {};
    ASSERT_GT(read(ends[0], name, sizeof name - 1), 0);
    setenv("DISPLAY", name, 1);
    ASSERT_TRUE(displayAnswers());

    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);

    for (int i = 0; i < 100 && displayAnswers(); ++i)
        usleep(50'000);
    EXPECT_FALSE(displayAnswers());
}

TEST(PrivateDisplayTest, WithoutXvfbItIsNotAvailableAndDoesNotStart)
{
    const std::string path = std::getenv("PATH");
    EXPECT_TRUE(PrivateDisplay::IsAvailable());

    setenv("PATH", "/nowhere", 1);
    EXPECT_FALSE(PrivateDisplay::IsAvailable());
    EXPECT_THROW(PrivateDisplay(), std::runtime_error);

    setenv("PATH", path.c_str(), 1);
}

} // namespace
} // namespace vrkview::test
