#include "docks/ProgramModel.h"

#include "Programs.h"

#include "support/ProcessorTime.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>
#include <QGuiApplication>
#include <QSignalSpy>

#include <mutex>
#include <numeric>

namespace vrkview::test {
namespace {

using namespace vrk::task;
using testing::ElementsAre;
using vrk::layout::Layout;

class ProgramModelTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        static int count = 3;
        static const char* words[] = {"test", "-platform", "offscreen"};
        application = std::make_unique<QGuiApplication>(count, const_cast<char**>(words));
    }
    static void TearDownTestSuite() { application.reset(); }
    void TearDown() override { Layout::inst().clear(); }

    static std::shared_ptr<Task> addTask(const std::string& name, const std::vector<int>& movesOfPaths)
    {
        auto task = std::make_shared<Task>(newId(), name);
        for (std::size_t i = 0; i < movesOfPaths.size(); ++i)
            pathOf(*task, name + std::to_string(i), movesOfPaths[i]);
        Layout::inst().addTask(task);
        return task;
    }
    /// Enters the step where the model can find it.
    static void insert(Path& path, std::size_t place, const std::shared_ptr<Instruction>& step)
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        sdf::SdfManager::inst().add(step);
        path.insertInstruction(place, step);
    }
    static std::vector<QString> texts(const QAbstractItemModel& model, const QModelIndex& parent, int column)
    {
        std::vector<QString> all;
        for (int i = 0; i < model.rowCount(parent); ++i)
            all.push_back(model.index(i, column, parent).data().toString());
        return all;
    }

private:
    static inline std::unique_ptr<QGuiApplication> application;
};

TEST_F(ProgramModelTest, TaskHoldsItsPathsAndThoseTheirInstructions)
{
    const auto task = addTask("weld", {2, 0});
    insert(*task->getOwnPaths()[0], 1, step("WHILE again DO"));
    const ProgramModel model;
    const QModelIndex top = model.index(0, 0);
    const QModelIndex path = model.index(0, 0, top);

    EXPECT_THAT(texts(model, {}, ProgramModel::Step), ElementsAre("weld"));
    EXPECT_THAT(texts(model, top, ProgramModel::Step), ElementsAre("weld0", "weld1"));
    EXPECT_THAT(texts(model, top, ProgramModel::Target), ElementsAre("2 moves", "0 moves"));
    EXPECT_THAT(texts(model, path, ProgramModel::Step), ElementsAre("Linear", "WHILE again DO", "Linear"));
    EXPECT_THAT(texts(model, path, ProgramModel::Target), ElementsAre("p1", "", "p2"));
    EXPECT_THAT(texts(model, path, ProgramModel::Speed), ElementsAre("v100", "", "v100"));
    EXPECT_THAT(texts(model, path, ProgramModel::Zone), ElementsAre("z10", "", "z10"));
    EXPECT_EQ(model.count(), 6u);
}

TEST_F(ProgramModelTest, EachKindOfMoveHasItsWord)
{
    const auto task = addTask("weld", {1});
    Path& path = *task->getOwnPaths().front();
    const auto target = task->getDataItems().front();
    const auto arc = std::make_shared<MoveInst>(newId(), "arc", Motion::Circular, target);
    arc->setCircleItem(target);
    insert(path, 1, arc);
    insert(path, 2, std::make_shared<MoveInst>(newId(), "joint", Motion::Joint, target, MoveLine::Dashed));
    insert(path, 3, std::make_shared<MoveInst>(newId(), "spline", Motion::Linear, target, MoveLine::Dashed));
    const ProgramModel model;

    const QModelIndex parent = model.index(0, 0, model.index(0, 0));

    EXPECT_THAT(texts(model, parent, ProgramModel::Step), ElementsAre("Linear", "Circular", "Joint", "Curve"));
    EXPECT_THAT(texts(model, parent, ProgramModel::Target), ElementsAre("p1", "p1 over p1", "p1", "p1"));
}

TEST_F(ProgramModelTest, WhatDrawsNothingIsWeakerAndTellsWhy)
{
    const auto task = addTask("weld", {1, 0});
    const auto unknown = step("MoveL Offs(p, x, 0, 0)", "not known before it runs");
    unknown->line = 12;
    insert(*task->getOwnPaths()[0], 1, unknown);
    const ProgramModel model;
    const QModelIndex top = model.index(0, 0), path = model.index(0, 0, top);
    const QModelIndex move = model.index(0, 0, path), other = model.index(1, 0, path);

    EXPECT_FALSE(top.data(Qt::ForegroundRole).isValid());
    EXPECT_FALSE(path.data(Qt::ForegroundRole).isValid());
    EXPECT_FALSE(move.data(Qt::ForegroundRole).isValid());
    EXPECT_TRUE(other.data(Qt::ForegroundRole).isValid());
    EXPECT_TRUE(model.index(1, 0, top).data(Qt::ForegroundRole).isValid());
    EXPECT_EQ(other.siblingAtColumn(ProgramModel::Target).data().toString(), "not known before it runs");
    EXPECT_EQ(other.data(Qt::ToolTipRole).toString(), "line 12: MoveL Offs(p, x, 0, 0)<br>not known before it runs");
}

TEST_F(ProgramModelTest, RowsAreFoundById)
{
    const auto task = addTask("weld", {2, 3});
    const Path& path = *task->getOwnPaths()[1];
    const ProgramModel model;
    const QModelIndex top = model.index(0, 0);

    EXPECT_EQ(model.indexOf(task->getId()), top);
    EXPECT_EQ(model.indexOf(path.getId()), model.index(1, 0, top));
    EXPECT_EQ(model.indexOf(path.getInstructions()[2]->getId()), model.index(2, 0, model.index(1, 0, top)));
    EXPECT_FALSE(model.indexOf(0).isValid());
    EXPECT_FALSE(model.indexOf(task->getDataItems().front()->getId()).isValid());
}

TEST_F(ProgramModelTest, OneInstructionMoreIsOneRowMore)
{
    const auto task = addTask("weld", {3, 2});
    ProgramModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    const QPersistentModelIndex last = model.indexOf(task->getOwnPaths()[0]->getInstructions()[2]->getId());
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted), removed(&model, &QAbstractItemModel::rowsRemoved);
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    const auto more = step("WaitTime 1");
    insert(*task->getOwnPaths()[0], 1, more);

    model.follow();

    ASSERT_EQ(inserted.count(), 1);
    EXPECT_EQ(inserted[0][1].toInt(), 1);
    EXPECT_EQ(inserted[0][2].toInt(), 1);
    EXPECT_EQ(removed.count(), 0);
    EXPECT_EQ(reset.count(), 0);
    EXPECT_EQ(last.row(), 3);
    EXPECT_EQ(model.indexOf(more->getId()).row(), 1);
    EXPECT_EQ(model.indexOf(task->getOwnPaths()[0]->getInstructions()[3]->getId()).row(), 3);
}

TEST_F(ProgramModelTest, ProgramsAndPathsComeAndGo)
{
    const auto first = addTask("first", {1}), second = addTask("second", {2, 1}), third = addTask("third", {1});
    ProgramModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    const QPersistentModelIndex kept = model.indexOf(third->getOwnPaths()[0]->getInstructions()[0]->getId());

    Layout::inst().remove(first->getId());
    model.follow();
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        second->removePath(second->getOwnPaths()[0]->getId());
    }
    model.follow();
    const auto fourth = addTask("fourth", {4});
    model.follow();

    EXPECT_THAT(texts(model, {}, ProgramModel::Step), ElementsAre("second", "third", "fourth"));
    EXPECT_THAT(texts(model, model.index(0, 0), ProgramModel::Step), ElementsAre("second1"));
    EXPECT_TRUE(kept.isValid());
    EXPECT_EQ(kept.parent().parent().row(), 1);
    EXPECT_FALSE(model.indexOf(first->getId()).isValid());
    EXPECT_EQ(model.rowCount(model.index(0, 0, model.index(2, 0))), 4);
}

/// Any run of changes leaves the rows as a model made anew has them.
TEST_F(ProgramModelTest, AfterAnyChangesTheRowsAreThoseOfTheModel)
{
    std::srand(7);
    const auto random = [](std::size_t below) { return static_cast<std::size_t>(std::rand()) % below; };
    std::vector<std::shared_ptr<Task>> all = {addTask("a", {3, 5}), addTask("b", {0})};
    ProgramModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    const auto flat = [](const ProgramModel& of) {
        QStringList rows;
        const std::function<void(const QModelIndex&)> visit = [&](const QModelIndex& parent) {
            for (int i = 0; i < of.rowCount(parent); ++i) {
                rows << of.index(i, 0, parent).data(ProgramModel::IdRole).toString();
                visit(of.index(i, 0, parent));
            }
        };
        visit({});
        return rows;
    };
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        for (std::size_t change = 0; change < 1 + random(3); ++change) {
            const std::shared_ptr<Task>& task = all[random(all.size())];
            const auto& paths = task->getOwnPaths();
            const std::shared_ptr<Path> path = paths.empty() ? nullptr : paths[random(paths.size())];
            switch (random(4)) {
            case 0: {
                const auto added = std::make_shared<Path>(newId(), "path");
                const std::unique_lock lock(sdf::SdfManager::inst().mutex());
                sdf::SdfManager::inst().add(added);
                task->addPath(added);
                break;
            }
            case 1:
                if (path)
                    insert(*path, random(path->getInstructions().size() + 1), step("p" + std::to_string(random(30))));
                break;
            case 2:
                if (path && !path->getInstructions().empty()) {
                    const std::unique_lock lock(sdf::SdfManager::inst().mutex());
                    path->removeInstruction(path->getInstructions()[random(path->getInstructions().size())]->getId());
                }
                break;
            default:
                if (path && random(4) == 0) {
                    const std::unique_lock lock(sdf::SdfManager::inst().mutex());
                    task->removePath(path->getId());
                }
            }
        }
        const QString filter = random(3) == 0 ? "p1" : "";
        model.follow();
        model.setFilter(filter);

        ProgramModel anew;
        anew.setFilter(filter);
        ASSERT_EQ(flat(model), flat(anew));
    }
}

TEST_F(ProgramModelTest, FilterLeavesWhatHasTheTextWithWhatItLiesIn)
{
    const auto task = addTask("weld", {2, 12});
    const auto other = addTask("other", {3});
    insert(*task->getOwnPaths()[0], 0, step("MoveJ home", "not known before it runs"));
    ProgramModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);

    model.setFilter("P1");
    EXPECT_THAT(texts(model, {}, ProgramModel::Step), ElementsAre("weld", "other"));
    EXPECT_THAT(texts(model, model.index(1, 0, model.index(0, 0)), ProgramModel::Target),
                ElementsAre("p1", "p10", "p11", "p12"));
    EXPECT_FALSE(model.indexOf(task->getOwnPaths()[1]->getInstructions()[1]->getId()).isValid());

    model.setFilter("not known");
    EXPECT_THAT(texts(model, {}, ProgramModel::Step), ElementsAre("weld"));
    EXPECT_EQ(model.count(), 3u);

    model.setFilter("other"); // a program's name lets all of it through
    EXPECT_EQ(model.count(), 5u);

    model.setFilter("");
    EXPECT_EQ(model.count(), 2u + 3u + 3u + 12u + 3u);
}

TEST_F(ProgramModelTest, HundredThousandInstructionsAreFollowedAndFilteredAtOnce)
{
    const auto task = addTask("weld", {100000});
    ProgramModel model;
    insert(*task->getOwnPaths()[0], 500, step("WaitTime 1"));
    double before = vrk::test::threadSeconds();
    const auto took = [&before](const char* what, double most) {
        const double milliseconds = 1e3 * (vrk::test::threadSeconds() - before);
        std::cout << what << ": " << milliseconds << " ms" << std::endl;
        EXPECT_LT(milliseconds, most) << what;
        before = vrk::test::threadSeconds();
    };

    model.follow();
    took("one instruction more", 100);
    EXPECT_TRUE(model.indexOf(task->getOwnPaths()[0]->getInstructions()[99999]->getId()).isValid());
    took("the first row found", 200);
    for (std::size_t i = 0; i < 100000; i += 10)
        model.indexOf(task->getOwnPaths()[0]->getInstructions()[i]->getId());
    took("10,000 rows found", 200);
    model.setFilter("p777");
    took("filtered", 400);
    EXPECT_EQ(model.count(), 2u + 111u);
    model.setFilter({});
    took("unfiltered", 200);
}

} // namespace
} // namespace vrkview::test
