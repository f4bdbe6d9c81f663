#include "platform/sdf/SdfManager.h"
#include "platform/task/EdgeMfgShape.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Seam.h"
#include "preview/PreviewLists.h"
#include "preview/marks/PreviewedMarks.h"
#include "scene/core/SceneCore.h"
#include "scene/math/Shapes.h"
#include "selection/VisualSelection.h"
#include "station/ManipulatorVisual.h"
#include "station/support/TestStation.h"
#include "task/MoveInstructionVisual.h"
#include "task/PathArrowVisual.h"
#include "task/PathLineVisual.h"
#include "task/PathVisual.h"
#include "task/RobtargetVisual.h"
#include "task/bands/VectorBandVisual.h"
#include "visual/Edges.h"
#include "visual/FrameVisual.h"
#include "visual/MeshVisual.h"
#include "visual/VisualStateManager.h"

#include <Ogre.h>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <random>
#include <set>

namespace vrk::visual {
namespace {

constexpr int operations = 10'000;
constexpr std::size_t mostObjects = 40; // beyond that objects are removed first
constexpr std::size_t mostBands = 12;
constexpr std::size_t mostPreviews = 40;
constexpr unsigned edgesOfABox = 12;

/// A station on which everything that moves, attaches, hides, marks and removes visuals is done in any order. Run it under
/// the address sanitizer as well: what dangles shows there.
class StationRandom : public test::SceneFixture {
protected:
    ~StationRandom() override { SceneCore::Get()->settings = test::testSettings(); }
    unsigned below(std::size_t n) { return static_cast<unsigned>(random() % n); }
    unsigned anyId()
    {
        const auto& all = SceneCore::Get()->visuals.all();
        const unsigned id = std::next(all.begin(), below(all.size()))->first;
        // The frame of the world belongs to the scene and stays out of it.
        return below(20) == 0 || id == worldFrame->getId() ? 4711 : id;
    }
    static bool isUnder(const Visual* visual, const Visual* above)
    {
        for (; visual; visual = visual->getParent())
            if (visual == above)
                return true;
        return false;
    }

    void addObject()
    {
        switch (below(4)) {
        case 0:
            parts.push_back(test::makePart("part"));
            layout::Layout::inst().addPart(parts.back());
            scene.addPart(parts.back().get());
            break;
        case 1:
            assemblies.push_back(test::makeAssembly("assembly", 2));
            layout::Layout::inst().addAssembly(assemblies.back());
            scene.addAssembly(assemblies.back().get());
            break;
        case 2:
            mechanisms.push_back(test::makeArm());
            layout::Layout::inst().addMechanism(mechanisms.back());
            scene.addMechanism(mechanisms.back().get(), true);
            break;
        default:
            mechanisms.push_back(test::makeDevice());
            layout::Layout::inst().addMechanism(mechanisms.back());
            scene.addMechanism(mechanisms.back().get(), true);
            break;
        }
    }
    rob::Posed anyPose() { return rob::Posed(rob::Posd(below(100), below(100), below(100))); }

    /// A program of a few moves of all kinds in two work objects, one of them on whatever there is.
    void addProgram()
    {
        auto task = std::make_shared<task::Task>(test::newId(), "task");
        std::vector<std::shared_ptr<task::WObjDataItem>> frames;
        for (const unsigned owner : {0u, anyId()}) {
            frames.push_back(std::make_shared<task::WObjDataItem>(test::newId(), "wobj"));
            frames.back()->setOwnerId(owner);
            task->addDataItem(frames.back());
        }
        auto path = std::make_shared<task::Path>(test::newId(), "main");
        task->addPath(path);
        for (unsigned i = 0; i < 6; ++i)
            addMove(*task, *path, frames[i / 4]);
        layout::Layout::inst().addTask(task);
        programs.push_back(task);
    }
    std::shared_ptr<task::DataItem> addItem(task::Task& task, bool isPosture)
    {
        std::shared_ptr<task::DataItem> item;
        if (isPosture)
            item = std::make_shared<task::JointTargetDataItem>(test::newId(), "home");
        else
            item = std::make_shared<task::RobTargetDataItem>(test::newId(), "p");
        item->setPose(anyPose());
        task.addDataItem(item);
        sdf::SdfManager::inst().add(item);
        return item;
    }
    task::MoveInst* addMove(task::Task& task, task::Path& path, const std::shared_ptr<task::WObjDataItem>& frame)
    {
        const unsigned kind = below(6);
        const bool isCircular = kind == 1;
        const auto target = addItem(task, kind == 0);
        auto move = std::make_shared<task::MoveInst>(test::newId(), "move",
                                                     isCircular ? task::Motion::Circular : task::Motion::Linear, target,
                                                     kind == 2 ? task::MoveLine::Dashed : task::MoveLine::Solid);
        move->setWObjItem(frame);
        if (isCircular)
            move->setCircleItem(addItem(task, false));
        path.addInstruction(move);
        sdf::SdfManager::inst().add(move);
        return move.get();
    }
    task::Path& anyPath() { return *programs[below(programs.size())]->getOwnPaths().front(); }
    task::MoveInst* anyMove()
    {
        const auto& moves = anyPath().getMoveInstructions();
        return moves[below(moves.size())];
    }
    /// A switch only ever changes: switched on twice, targets and arrows stand there twice.
    void doSwitch()
    {
        SceneSettings& settings = SceneCore::Get()->settings;
        switch (below(4)) {
        case 0:
            scene.setDrawTargetVisual(!settings.drawTargetVisual);
            break;
        case 1:
            scene.setDrawPathArrow(!settings.drawPathArrow);
            break;
        case 2:
            scene.setDrawSegVisual(!settings.drawSegVisual);
            break;
        default:
            scene.setDrawTargetZAxisOnly(!settings.drawTargetZAxisOnly);
            break;
        }
    }
    void doSomethingWithAProgram()
    {
        task::MoveInst* move = anyMove();
        task::Path& path = anyPath();
        switch (below(10)) {
        case 0:
            scene.removePathVisual(path.getId());
            break;
        // What is there already would stand there twice, and of the first nobody would know the id.
        case 1:
            if (!Scene::HasVisual(path.getId()) && !Scene::HasVisual(move->getWObjItemId()))
                scene.addTask(path.getTask()->getId());
            break;
        case 2:
            if (!Scene::HasVisual(path.getId()))
                addPathTo(path);
            break;
        case 3:
            move->getTargetItem()->setPose(anyPose());
            scene.updateInstruction(move->getId());
            break;
        case 4:
            move->getTargetItem()->setPose(anyPose());
            scene.updatePaths({path.getId(), anyPath().getId()});
            break;
        case 5:
            scene.upadateInstructionParent(move->getId(), below(4) ? move->getWObjItemId() : anyId());
            break;
        case 6:
            if (!Scene::HasVisual(move->getId()))
                scene.buildMoveInstruction(move);
            break;
        case 7:
            scene.removeVisual(below(2) ? move->getId() : move->getTargetItemId());
            break;
        case 8:
            scene.updateWObj(move->getWObjItemId());
            break;
        default:
            doSwitch();
            break;
        }
    }
    /// On a body, whether it has a visual or not, and now and then on the world.
    void addBand()
    {
        const std::shared_ptr<layout::Body> body = anyBody();
        const auto seam = task::MakeSeam(test::newId(), "seam", body->getShape(), below(8) ? body->getId() : 0,
                                         {1 + below(edgesOfABox)});
        const auto& program = programs[below(programs.size())];
        program->addMfgShape(seam);
        sdf::SdfManager::inst().add(seam);
        bands.push_back({program, seam});
        scene.addBand(seam->getId());
    }
    /// Out of the model, with its visual or ahead of it.
    void forgetBand(std::size_t index)
    {
        const auto [program, seam] = bands[index];
        if (below(2) && Scene::HasVisual(seam->getId()))
            scene.removeVisual(seam->getId());
        program->removeMfgShape(seam->getId());
        sdf::SdfManager::inst().remove(seam->getId());
        bands.erase(bands.begin() + static_cast<std::ptrdiff_t>(index));
    }
    /// Mostly one that has a visual.
    std::shared_ptr<layout::Body> anyBody()
    {
        constexpr int tries = 8;
        std::shared_ptr<layout::Body> body;
        for (int i = 0; i < tries && (!body || !Scene::HasVisual(body->getId())); ++i)
            body = parts[below(parts.size())]->getBodies().front();
        return body;
    }
    void doSomethingOnABand(VectorBandVisual& band, const task::EdgeMfgShape& seam)
    {
        const task::EdgeMfgShape::PathPoint point{0, 0.5 * (1 + below(20))};
        switch (below(6)) {
        case 0:
            band.selectVector(seam, below(2) ? seam.getStart() : point);
            break;
        case 1:
            band.previewVector(seam, point);
            break;
        case 2:
            band.selectRange(seam, seam.getStart(), point);
            break;
        case 3:
            band.clearHighlightOrSelect();
            break;
        case 4:
            scene.deleteVisual(band.getBandVectors().empty() ? static_cast<Visual*>(&band)
                                                             : band.getBandVectors().front());
            break;
        default:
            band.updateBand(seam);
            break;
        }
    }
    void doSomethingWithABand()
    {
        const std::shared_ptr<layout::Body> body = anyBody();
        if (bands.size() < mostBands && (bands.empty() || below(3) == 0)) {
            addBand();
            return;
        }
        const std::size_t index = below(bands.size());
        const std::shared_ptr<task::EdgeMfgShape> seam = bands[index].second;
        switch (below(8)) {
        case 0:
            forgetBand(index);
            break;
        case 1:
            scene.removeVisual(seam->getId());
            break;
        case 2:
            scene.addBand(seam->getId());
            break;
        case 3:
            scene.setVisualVisible(seam->getId(), below(2) == 0);
            break;
        case 4:
            scene.updateSolidVisual(body.get(), body->getShape());
            break;
        case 5:
            scene.removeVisual(body->getId());
            break;
        default:
            if (Scene::HasVisual(seam->getId()))
                doSomethingOnABand(dynamic_cast<VectorBandVisual&>(*Scene::GetVisual(seam->getId())), *seam);
            break;
        }
    }
    static std::vector<VisualList*> previewLists()
    {
        SceneCore& core = *SceneCore::Get();
        return {&core.record<PreviewCurves>(), &core.record<PreviewFaces>(), &core.record<PreviewedPoints>(),
                &core.record<Polylines>(), &core.record<DimensionVisuals>()};
    }
    static std::size_t previewCount()
    {
        std::size_t count = SceneCore::Get()->record<PreviewedFrames>().byId.size();
        for (const VisualList* list : previewLists())
            count += list->all().size();
        return count;
    }
    void removePreviews()
    {
        switch (below(7)) {
        case 0:
            scene.removePreviewCurves();
            break;
        case 1:
            scene.removePreviewFaces();
            break;
        case 2:
            scene.removePreviewedPoints();
            break;
        case 3:
            scene.removePolylines();
            break;
        case 4:
            scene.removeDimensionVisual();
            break;
        case 5:
            scene.removeAllPositionVisuals();
            break;
        default:
            scene.removePreviewCurve(below(5));
            break;
        }
    }
    void deleteAPreview()
    {
        const VisualList& list = *previewLists()[below(previewLists().size())];
        if (!list.all().empty())
            scene.deleteVisual(list.all()[below(list.all().size())]);
    }
    void doSomethingWithAPreviewedFrame()
    {
        const unsigned id = below(4);
        switch (below(6)) {
        case 0:
            scene.createPreviewedFrameVisual(id, below(2) == 0);
            break;
        case 1:
            scene.setPreviewedFrameVisible(id, anyPose());
            break;
        case 2:
            scene.removePreviewedFrameVisual(id);
            break;
        case 3:
            scene.createPreviewedJointVisual();
            break;
        case 4:
            scene.setPreviewedJointVisible(anyPose().position, anyPose().position);
            break;
        default:
            scene.removePreviewedJointVisual();
            break;
        }
    }
    void doSomethingWithAnEnvelope()
    {
        // An arm that stands in the scene, or anything.
        unsigned id = anyId();
        for (const auto& [registered, visual] : SceneCore::Get()->visuals.all())
            if (visual->getType() == VisualType::Manipulator && below(8))
                id = registered;
        switch (below(6)) {
        case 0:
            scene.updateWorkEnvelopeVisual(id, below(2) == 0, below(2) == 0);
            break;
        case 1:
            scene.removeWorkEnvelopeVisual(id);
            break;
        default:
            scene.addWorkEnvelopeVisual(id, anyId(), {{100, 0, 0}, {100, 0, 50}}, {{1, 0, 0}, {1, 0, 0}}, 0, 1);
            break;
        }
    }
    void preview()
    {
        const unsigned id = anyId();
        const rob::Posed pose = anyPose();
        switch (below(12)) {
        case 0:
            scene.previewEdge(edge, rob::Posef(pose));
            break;
        case 1:
            scene.previewEdges(&edges, rob::Posef(pose));
            break;
        case 2:
            scene.previewCurves(&wires, rob::Posef(pose));
            break;
        case 3:
            scene.addPreviewCurves(id, new geometry::PointList(points));
            break;
        case 4:
            scene.addPreviewCurvesWithDirection(below(2) ? 0 : id, new geometry::PointList(points),
                                                {static_cast<float>(below(2)), 0, 0}, below(5));
            break;
        case 5:
        case 6:
            scene.previewFaces(faces, below(4) ? anyBody()->getId() : id);
            break;
        case 7:
            scene.previewPoints(&pickedPoints, id, {});
            break;
        case 8:
            scene.previewTargets({rob::Posef(pose), rob::Posef()});
            break;
        case 9:
            scene.drawPolylines(points, below(2) ? 0 : id, below(2) == 0);
            break;
        case 10:
            scene.createAngleVisual(pose.position, anyPose().position, anyPose().position, below(2));
            break;
        default:
            scene.createDiameterVisual(rob::TPCircle({1, 0, 0}, {0, 1, 0}, {-1, 0, 0}));
            break;
        }
    }
    void doSomethingWithAPreview()
    {
        if (previewCount() > mostPreviews) {
            removePreviews();
            return;
        }
        switch (below(10)) {
        case 0:
            removePreviews();
            break;
        case 1:
            deleteAPreview();
            break;
        case 2:
            doSomethingWithAPreviewedFrame();
            break;
        case 3:
        case 4:
            doSomethingWithAnEnvelope();
            break;
        case 5:
            scene.setArrowSizeLevel(below(10));
            break;
        default:
            preview();
            break;
        }
    }
    void addPathTo(task::Path& path)
    {
        try {
            scene.addPath(&path);
        } catch (const std::out_of_range&) {
            ++refused; // a work object without visual is told at the call
        }
    }
    void doSomething()
    {
        const unsigned id = anyId();
        const rob::Posed pose = anyPose();
        switch (below(6)) {
        case 0:
        case 1:
            doSomethingWithAProgram();
            return;
        case 2:
            doSomethingWithABand();
            return;
        default:
            break;
        }
        switch (below(14)) {
        case 0:
            if (addedToWorld().size() < mostObjects + previewCount())
                addObject();
            else
                scene.removeVisual(id);
            break;
        case 1:
            scene.removeVisual(id);
            break;
        case 2:
            scene.addAttachment(id, anyId(), pose);
            break;
        case 3:
            scene.deleteAttachment(id, 0, below(2) ? 0 : anyId(), pose);
            break;
        case 4:
            scene.reparentVisual(id, below(2) ? 0 : anyId());
            break;
        case 5:
            scene.moveVisualToParent(id, below(2) ? 0 : anyId(), rob::Posef(pose));
            break;
        case 6:
            scene.setVisualPose(id, rob::Posef(pose));
            break;
        case 7:
            scene.setVisualVisible(id, below(2) == 0);
            break;
        case 8:
            scene.setVisualSelected(id);
            break;
        case 9:
            if (Scene::HasVisual(id))
                scene.setVisualHighlighted(id);
            break;
        case 10:
            scene.setCollision(id, below(2) == 0);
            break;
        case 11:
            scene.clearAllCollisionContacts();
            break;
        case 12:
            scene.showCopiedVisual(id, rob::Posef(pose));
            break;
        default:
            scene.deleteCopiedVisual();
            break;
        }
    }
    void collect(const Visual* visual, std::set<const Visual*>& found)
    {
        ASSERT_TRUE(found.insert(visual).second) << "a visual stands twice in the tree";
        for (const Visual* child : visual->getChildren()) {
            ASSERT_EQ(child->getParent(), visual);
            collect(child, found);
        }
    }
    static std::vector<const Visual*> partsOf(const MoveInstructionVisual& move)
    {
        return {move.getTarget(), move.getCircle(), move.getArrow()};
    }
    static std::vector<const Visual*> partsOf(const VectorBandVisual& band)
    {
        std::vector<const Visual*> found(band.getBandVectors().begin(), band.getBandVectors().end());
        for (const Visual* part : std::initializer_list<const Visual*>{
                 band.getArrow(), band.getSelectedVector(), band.getExtraSelectedVector(), band.getPreviewVector()})
            found.push_back(part);
        return found;
    }
    void checkPreviews(const std::set<const Visual*>& tree)
    {
        for (const VisualList* list : previewLists())
            for (const Visual* visual : list->all())
                ASSERT_TRUE(tree.contains(visual)) << "a preview that is not in the tree";
        for (const auto& [id, frame] : SceneCore::Get()->record<PreviewedFrames>().byId)
            ASSERT_TRUE(tree.contains(frame)) << "a previewed frame that is not in the tree: " << id;
        const Visual* joint = SceneCore::Get()->record<PreviewedJoint>().get();
        ASSERT_TRUE(!joint || tree.contains(joint)) << "a previewed joint that is not in the tree";
        for (const auto& [id, visual] : SceneCore::Get()->visuals.all())
            if (const auto* arm = dynamic_cast<const ManipulatorVisual*>(visual))
                for (const Visual* envelope : {arm->getEnvelope2D(), arm->getEnvelope3D()}) {
                    ASSERT_TRUE(!envelope || tree.contains(envelope)) << "an envelope that is not in the tree";
                    envelopesSeen += envelope ? 1 : 0;
                }
        previewsSeen += previewCount();
    }
    void checkEverything()
    {
        std::set<const Visual*> tree;
        collect(world, tree);
        checkPreviews(tree);
        if (HasFatalFailure())
            return;
        for (const auto& [id, visual] : SceneCore::Get()->visuals.all()) {
            ASSERT_TRUE(tree.contains(visual)) << "registered and not in the tree: " << id;
            ASSERT_EQ(visual->getId(), id);
        }
        for (const visual::Visual* visual : selection::VisualSelection::Get()->registeredVisuals())
            ASSERT_TRUE(tree.contains(visual) || test::isPartOfHandle(visual)) << "pickable and not in the tree";
        for (const visual::Visual* visual : Scene::GetStateManager()->visualsWithLayers())
            ASSERT_TRUE(tree.contains(visual)) << "has layers and is not in the tree";
        for (const auto& [id, visual] : SceneCore::Get()->visuals.all()) {
            const auto* path = dynamic_cast<const PathVisual*>(visual);
            for (const PathLineVisual* line : path ? path->getLines() : std::vector<PathLineVisual*>())
                ASSERT_TRUE(tree.contains(line)) << "a line of a path that is not in the tree";
            const auto* move = dynamic_cast<const MoveInstructionVisual*>(visual);
            for (const Visual* part : move ? partsOf(*move) : std::vector<const Visual*>())
                ASSERT_TRUE(!part || tree.contains(part)) << "a part of a move that is not in the tree";
            movesSeen += move ? 1 : 0;
            const auto* band = dynamic_cast<const VectorBandVisual*>(visual);
            for (const Visual* part : band ? partsOf(*band) : std::vector<const Visual*>())
                ASSERT_TRUE(!part || tree.contains(part)) << "a part of a band that is not in the tree";
            bandsSeen += band ? 1 : 0;
        }
    }

    std::mt19937 random{20240607};
    std::vector<std::shared_ptr<layout::Part>> parts;
    std::vector<std::shared_ptr<layout::Assembly>> assemblies;
    std::vector<std::shared_ptr<layout::Mechanism>> mechanisms;
    std::vector<std::shared_ptr<task::Task>> programs;
    int refused = 0;
    std::vector<std::pair<std::shared_ptr<task::Task>, std::shared_ptr<task::EdgeMfgShape>>> bands; // of the model
    // Summed over all steps
    std::size_t movesSeen = 0;
    std::size_t bandsSeen = 0;
    std::size_t previewsSeen = 0;
    std::size_t envelopesSeen = 0;
    // What is previewed
    const TopoDS_Edge edge = test::straightEdge({0, 0, 0}, {10, 0, 0});
    std::vector<TopoDS_Edge> edges{edge, test::straightEdge({0, 0, 0}, {0, 10, 0})};
    std::vector<TopoDS_Wire> wires{test::wireOfThree({0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 1, 1})};
    const geometry::PointList points{{{0, 0, 0}, {1, 0, 0}}, {{2, 0, 0}, {3, 0, 0}}};
    std::vector<gp_Pnt> pickedPoints{{1, 2, 3}, {4, 5, 6}};
    const std::vector<TopoDS_Face> faces = [] {
        TopExp_Explorer each(test::meshedBox(10, 10, 10), TopAbs_FACE);
        return std::vector{TopoDS::Face(each.Current())};
    }();
};

TEST_F(StationRandom, NothingDanglesAfterAnySequenceOfOperations)
{
    for (int i = 0; i < 4; ++i)
        addObject();
    while (parts.empty())
        addObject();
    drain();
    for (int i = 0; i < 3; ++i)
        addProgram();
    for (const auto& program : programs)
        scene.buildTask(program->getId());

    for (int step = 0; step < operations; ++step) {
        SCOPED_TRACE(testing::Message() << "step " << step);
        doSomething();
        if (below(2))
            doSomethingWithAPreview();
        try {
            drain();
        } catch (const std::out_of_range&) {
            ++refused; // an id that has no visual
        } catch (const std::bad_optional_access&) {
            ++refused; // a kind that is not copied, no body to preview a face of, no arm
        } catch (const std::overflow_error&) {
            ++refused; // a direction or an angle that is none
        }
        checkEverything();
        if (HasFatalFailure())
            return;
    }
    EXPECT_GT(refused, operations / 100);
    EXPECT_LT(refused, operations / 2);
    EXPECT_GT(movesSeen, 2 * operations) << "the programs were there";
    EXPECT_GT(bandsSeen, operations / 2) << "and the bands";
    EXPECT_GT(previewsSeen, 5 * operations) << "and the previews";
    EXPECT_GT(envelopesSeen, operations / 10) << "and the envelopes";
    scene.deleteCopiedVisual();
    drain();
    // A path whose moves were taken away one by one has no look to go back to: the end of a highlight would fail.
    for (const auto& program : programs)
        for (const auto& path : program->getOwnPaths())
            if (Scene::HasVisual(path->getId()))
                scene.deleteVisual(Scene::GetVisual(path->getId()));
}

} // namespace
} // namespace vrk::visual
