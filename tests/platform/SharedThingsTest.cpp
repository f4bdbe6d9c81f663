#include "platform/common/SharedThings.h"

#include <gmock/gmock.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace vrk::common {
namespace {

using Texts = SharedThings<int, std::string>;

const auto always = [](const std::string&) { return true; };

std::shared_ptr<const std::string> made(const char* text)
{
    return std::make_shared<const std::string>(text);
}

TEST(SharedThings, WhoAsksLaterGetsWhatTheFirstHas)
{
    Texts texts;
    const auto first = texts.get(1, always, [] { return made("one"); });

    const auto second = texts.get(1, always, [] { return made("never"); });
    const auto other = texts.get(2, always, [] { return made("two"); });

    EXPECT_EQ(first, second);
    EXPECT_EQ(*other, "two");
}

TEST(SharedThings, GoesWithTheLastOneThatHasItAndIsMadeAgain)
{
    Texts texts;
    std::weak_ptr<const std::string> known = texts.get(1, always, [] { return made("one"); });
    EXPECT_TRUE(known.expired());

    EXPECT_EQ(*texts.get(1, always, [] { return made("again"); }), "again");
}

TEST(SharedThings, OneThatFitsNoLongerIsReplacedForThoseWhoComeLater)
{
    Texts texts;
    const auto old = texts.get(1, always, [] { return made("old"); });

    const auto fresh = texts.get(
        1, [](const std::string& text) { return text != "old"; }, [] { return made("new"); });

    EXPECT_EQ(*fresh, "new");
    EXPECT_EQ(texts.get(1, always, [] { return made("never"); }), fresh);
    EXPECT_EQ(*old, "old");
}

TEST(SharedThings, FailureIsThrownToWhoAskedAndTheNextOneTriesAgain)
{
    Texts texts;
    const auto fails = []() -> std::shared_ptr<const std::string> { throw std::runtime_error("no"); };

    EXPECT_THROW(texts.get(1, always, fails), std::runtime_error);

    EXPECT_EQ(*texts.get(1, always, [] { return made("yes"); }), "yes");
}

TEST(SharedThings, ThoseThatAreHeldOutliveThousandsThatAreNot)
{
    Texts texts;
    const auto held = texts.get(-1, always, [] { return made("held"); });

    for (int i = 0; i < 5000; ++i)
        texts.get(i, always, [] { return made("passing"); });

    EXPECT_EQ(texts.get(-1, always, [] { return made("never"); }), held);
}

TEST(SharedThings, ManyThreadsThatAskAtOnceGetOneThing)
{
    Texts texts;
    std::atomic<int> makes = 0;
    std::vector<std::shared_ptr<const std::string>> got(8);
    std::vector<std::thread> threads;
    for (auto& mine : got)
        threads.emplace_back([&] {
            mine = texts.get(1, always, [&makes] {
                ++makes;
                return made("one");
            });
        });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(makes, 1);
    EXPECT_THAT(got, testing::Each(got.front()));
}

} // namespace
} // namespace vrk::common
