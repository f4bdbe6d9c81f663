#include "platform/broker/SignalBroker.h"

#include <boost/signals2/shared_connection_block.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

namespace vrk::broker {
namespace {

using boost::signals2::scoped_connection;
using testing::ElementsAre;

TEST(SignalBroker, RaisingWithoutAReceiverDoesNothing)
{
    SignalBroker::updateScene();
    SignalBroker::cameraMoved();
    SignalBroker::snapResultInvalidated();
    SignalBroker::frameTicked(1);
}

TEST(SignalBroker, EachSignalReachesItsOwnReceivers)
{
    std::vector<std::string> heard;
    const scoped_connection a(SignalBroker::onUpdateScene([&] { heard.push_back("update"); }));
    const scoped_connection b(SignalBroker::onCameraMoved([&] { heard.push_back("camera"); }));
    const scoped_connection c(SignalBroker::onSnapResultInvalidated([&] { heard.push_back("snap"); }));
    const scoped_connection d(
        SignalBroker::onFrameTicked([&](double ms) { heard.push_back(std::to_string(int(ms))); }));

    SignalBroker::frameTicked(16.5);
    SignalBroker::snapResultInvalidated();
    SignalBroker::cameraMoved();
    SignalBroker::updateScene();

    EXPECT_THAT(heard, ElementsAre("16", "snap", "camera", "update"));
}

TEST(SignalBroker, ReceiversAreCalledInTheOrderOfConnection)
{
    std::vector<int> heard;
    const scoped_connection a(SignalBroker::onUpdateScene([&] { heard.push_back(1); }));
    const scoped_connection b(SignalBroker::onUpdateScene([&] { heard.push_back(2); }));
    const scoped_connection c(SignalBroker::onUpdateScene([&] { heard.push_back(3); }));

    SignalBroker::updateScene();

    EXPECT_THAT(heard, ElementsAre(1, 2, 3));
}

TEST(SignalBroker, DisconnectedReceiverIsNotCalledAndIsFreed)
{
    auto count = std::make_shared<int>(0);
    boost::signals2::connection connection = SignalBroker::onUpdateScene([count] { ++*count; });
    SignalBroker::updateScene();
    EXPECT_TRUE(connection.connected());

    connection.disconnect();
    SignalBroker::updateScene();

    EXPECT_EQ(*count, 1);
    EXPECT_EQ(count.use_count(), 1);
    EXPECT_FALSE(connection.connected());
}

TEST(SignalBroker, BlockedReceiverIsPassedOver)
{
    int count = 0;
    const scoped_connection connection(SignalBroker::onUpdateScene([&] { ++count; }));
    {
        const boost::signals2::shared_connection_block block(connection);
        SignalBroker::updateScene();
        EXPECT_EQ(count, 0);
    }

    SignalBroker::updateScene();

    EXPECT_EQ(count, 1);
}

TEST(SignalBroker, ReceiverMayDisconnectItselfAndConnectAnother)
{
    int first = 0, second = 0;
    boost::signals2::connection a;
    scoped_connection b;
    a = SignalBroker::onUpdateScene([&] {
        ++first;
        a.disconnect();
        b = SignalBroker::onUpdateScene([&] { ++second; });
    });

    SignalBroker::updateScene(); // who connects meanwhile hears the next one
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0);

    SignalBroker::updateScene();
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
}

TEST(SignalBroker, ReceiverThatDisconnectsItselfLivesUntilItsCallEnds)
{
    const auto count = std::make_shared<int>(0);
    long usersInside = 0;
    boost::signals2::connection connection;
    connection = SignalBroker::onUpdateScene([&connection, &usersInside, count] {
        connection.disconnect();
        usersInside = count.use_count(); // reads what it captured after it was disconnected
    });

    SignalBroker::updateScene();

    EXPECT_EQ(usersInside, 2);
    EXPECT_EQ(count.use_count(), 1);
}

TEST(SignalBroker, ReceiverThatFailedIsFreedWhenItIsDisconnected)
{
    const auto count = std::make_shared<int>(0);
    boost::signals2::connection connection = SignalBroker::onUpdateScene([count] { throw std::logic_error("no"); });
    EXPECT_THROW(SignalBroker::updateScene(), std::logic_error);

    connection.disconnect();

    EXPECT_EQ(count.use_count(), 1);
}

TEST(SignalBroker, CaptureMayConnectAndRaiseAsItDies)
{
    int heard = 0;
    scoped_connection later;
    struct Dying {
        int* heard;
        scoped_connection* later;
        ~Dying()
        {
            *later = SignalBroker::onUpdateScene([count = heard] { ++*count; });
            SignalBroker::updateScene();
        }
    };
    boost::signals2::connection connection =
        SignalBroker::onUpdateScene([dying = std::make_shared<Dying>(&heard, &later)] {});

    connection.disconnect();

    EXPECT_EQ(heard, 1);
}

TEST(SignalBroker, FailureOfAReceiverReachesWhoRaises)
{
    const scoped_connection connection(SignalBroker::onUpdateScene([] { throw std::logic_error("no"); }));

    EXPECT_THROW(SignalBroker::updateScene(), std::logic_error);
}

TEST(SignalBroker, ThreadsRaiseWhileOthersConnectAndDisconnect)
{
    constexpr int threadCount = 4;
    constexpr int raises = 2000;
    std::atomic<int> heard{0};
    std::atomic<int> others{0};
    const scoped_connection steady(SignalBroker::onUpdateScene([&] { heard.fetch_add(1); }));

    std::vector<std::jthread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < raises; ++i)
                SignalBroker::updateScene();
        });
    }
    threads.emplace_back([&] {
        for (int i = 0; i < 200; ++i)
            const scoped_connection passing(SignalBroker::onUpdateScene([&] { others.fetch_add(1); }));
    });
    threads.clear();

    EXPECT_EQ(heard.load(), threadCount * raises);
}

TEST(SignalBroker, ReceiversThatPassWhileThreadsRaiseAreAllFreed)
{
    const auto captured = std::make_shared<std::atomic<int>>(0);
    std::atomic<bool> isOver{false};
    std::vector<std::jthread> raising;
    for (int t = 0; t < 3; ++t)
        raising.emplace_back([&isOver] {
            while (!isOver)
                SignalBroker::updateScene();
        });

    for (int i = 0; i < 500; ++i)
        const scoped_connection passing(SignalBroker::onUpdateScene([captured] { captured->fetch_add(1); }));
    isOver = true;
    raising.clear();

    EXPECT_EQ(captured.use_count(), 1);
}

} // namespace
} // namespace vrk::broker
