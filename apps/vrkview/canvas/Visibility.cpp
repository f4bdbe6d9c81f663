#include "canvas/Visibility.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "platform/task/DataItem.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"
#include "selection/VisualSelection.h"
#include "visual/FrameVisual.h"
#include "visual/VisualStateManager.h"

#include <algorithm>
#include <shared_mutex>
#include <unordered_map>
#include <unordered_set>

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::layout::Attachment;
using vrk::layout::Layout;
using vrk::selection::VisualSelection;
using vrk::visual::FrameVisual;
using vrk::visual::Scene;
using vrk::visual::Visual;

bool framesShown = true; // of the one scene

/// Answers, under the model's lock, whether a thing is hidden by itself or with what it belongs to or hangs on.
class HiddenQuestion {
public:
    HiddenQuestion()
    {
        const Layout& layout = Layout::inst();
        for (const unsigned id : layout.visibilities)
            add(id);
        for (const Attachment& attachment : layout.attachments)
            carriers[attachment.child] = attachment.parent;
    }

    bool isListed(unsigned id) const { return listed.contains(id); }
    bool isHidden(unsigned id) const
    {
        // A model may hold a ring of attachments, which has no top.
        for (std::size_t steps = 0; id != 0 && steps <= sdf::SdfManager::inst().size(); ++steps) {
            if (listed.contains(id))
                return true;
            id = above(id);
        }
        return false;
    }

private:
    void add(unsigned id)
    {
        if (!listed.insert(id).second)
            return;
        const sdf::SdfObject* object = sdf::SdfManager::inst().find(id);
        if (!object || !sdf::isGroup(object->getModelType()))
            return;
        std::vector<sdf::SdfObject*> members;
        object->getMembers(members);
        for (const sdf::SdfObject* member : members)
            add(member->getId());
    }

    unsigned above(unsigned id) const
    {
        if (const auto carrier = carriers.find(id); carrier != carriers.end())
            return carrier->second;
        const sdf::SdfObject* object = sdf::SdfManager::inst().find(id);
        return object ? object->getParentId() : 0;
    }

    std::unordered_set<unsigned> listed;
    std::unordered_map<unsigned, unsigned> carriers; // by what they carry
};

void forAll(Visual& top, const auto& call)
{
    call(top);
    for (Visual* child : top.getChildren())
        forAll(*child, call);
}

bool isMechanism(const Visual& visual)
{
    switch (visual.getType()) {
    case VisualType::Manipulator:
    case VisualType::Tool:
    case VisualType::Device:
        return true;
    default:
        return false;
    }
}

/// Shows a visual's looks anew, and over them those of what is below it: its own reach down to them.
void refreshWithMembers(Visual& top)
{
    vrk::visual::VisualStateManager& looks = *Scene::GetStateManager();
    looks.refresh(&top);
    forAll(top, [&](Visual& visual) {
        if (&visual != &top && looks.hasEntry(&visual))
            looks.refresh(&visual);
    });
}

void finishShowing(unsigned id)
{
    if (!Scene::HasVisual(id)) // it may have been removed since the post
        return;
    forAll(*Scene::GetVisual(id), [](Visual& visual) {
        if (isMechanism(visual))
            refreshWithMembers(visual);
    });
    forAll(*Scene::GetVisual(id), [](Visual& visual) {
        if (dynamic_cast<FrameVisual*>(&visual) && visual.isVisible())
            visual.update();
    });
}

/// Those that the scene's switch of frames reaches.
std::vector<Visual*> registeredFrames()
{
    std::vector<Visual*> frames;
    forAll(*Scene::GetWorldVisual(), [&frames](Visual& visual) {
        if (visual.getType() == VisualType::Frame && Scene::HasVisual(visual.getId()) &&
            Scene::GetVisual(visual.getId()) == &visual)
            frames.push_back(&visual);
    });
    return frames;
}

void postFrames()
{
    Scene& scene = *Scene::Get();
    scene.setFrameVisualVisible(framesShown);
    scene.addRenderTask(
        [shown = framesShown] {
            std::vector<Visual*> hidden;
            {
                const std::shared_lock lock(sdf::SdfManager::inst().mutex());
                const HiddenQuestion question;
                for (Visual* frame : registeredFrames()) {
                    const bool isShown = shown && !question.isHidden(frame->getId());
                    VisualSelection::Get()->setObjectEnabled(frame, isShown);
                    if (shown && !isShown)
                        hidden.push_back(frame);
                    else if (shown)
                        frame->update(); // the length may have changed meanwhile
                }
            }
            for (Visual* frame : hidden)
                frame->setVisible(false, false);
        },
        0);
}

} // namespace

std::vector<unsigned> carriedByHidden()
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const Layout& layout = Layout::inst();
    const HiddenQuestion question;
    std::vector<unsigned> carried;
    for (const Attachment& attachment : layout.attachments)
        if (!question.isListed(attachment.child) && question.isHidden(attachment.parent))
            carried.push_back(attachment.child);
    for (const auto& task : layout.tasks)
        for (const auto& item : task->getDataItems())
            if (item->asType(sdf::ModelType::WObjData) && !question.isListed(item->getId()) &&
                question.isHidden(item->getOwnerId()))
                carried.push_back(item->getId());
    return carried;
}

void showThings(const std::vector<unsigned>& ids)
{
    Scene& scene = *Scene::Get();
    for (const unsigned id : ids)
        scene.setVisualVisible(id, true);
    scene.addRenderTask([ids] { std::ranges::for_each(ids, finishShowing); }, 0);
    if (!framesShown)
        postFrames(); // a thing brings its frames along
}

void hideThings(const std::vector<unsigned>& ids)
{
    for (const unsigned id : ids)
        Scene::Get()->setVisualVisible(id, false);
}

void hideWhatModelHides()
{
    std::vector<unsigned> ids;
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        ids = Layout::inst().visibilities;
    }
    hideThings(ids);
    hideThings(carriedByHidden());
}

void showFrames(bool shown)
{
    framesShown = shown;
    postFrames();
}

} // namespace vrkview
