#include "scene/core/SceneRecords.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace vrk::visual {
namespace {

struct Core {
    int number = 7;
};

struct OfCore {
    explicit OfCore(Core& core) : number(core.number) {}
    int number;
};

struct Plain {
    int number = 3;
};

TEST(SceneRecords, RecordIsMadeOnceAndOfTheCoreWhereItTakesOne)
{
    Core core;
    SceneRecords records;
    EXPECT_EQ(records.get<OfCore>(core).number, 7);
    EXPECT_EQ(records.get<Plain>(core).number, 3);

    records.get<Plain>(core).number = 4;
    core.number = 8;
    EXPECT_EQ(records.get<Plain>(core).number, 4);
    EXPECT_EQ(records.get<OfCore>(core).number, 7);
}

TEST(SceneRecords, RecordsOfOneNameInTwoPlacesAreTwo)
{
    struct Plain {
        int number = 5;
    };
    Core core;
    SceneRecords records;
    EXPECT_EQ(records.get<Plain>(core).number, 5);
    EXPECT_EQ(records.get<vrk::visual::Plain>(core).number, 3);
}

TEST(SceneRecords, ThreadsThatAskAtOnceGetTheSameRecord)
{
    Core core;
    SceneRecords records;
    std::vector<const Plain*> found(4);
    {
        std::vector<std::jthread> threads;
        for (const Plain*& place : found)
            threads.emplace_back([&] { place = &records.get<Plain>(core); });
    }
    for (const Plain* record : found)
        EXPECT_EQ(record, found[0]);
}

} // namespace
} // namespace vrk::visual
