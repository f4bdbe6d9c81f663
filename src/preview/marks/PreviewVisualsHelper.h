#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"

#include <array>
#include <memory>

namespace vrk::visual {

class FromToLineVisual;
class PreviewFrameVisual;
class SelectPointVisual;
class TasksOfOwner;

/// The marks of a frame that is being defined by picks: crosses at the picks, lines between them, and the frames that would
/// result. Start-up makes one, with all of its marks hidden on the world, so that a pick costs a move and a show.
///
/// Whoever defines a frame by origin and axes uses the six "From" and "To" operations; by three points on a plane,
/// `addSelectPoint1` to 3; by an origin and two points, `addSelectFramePoint1` to 3. `removeAllVisuals` ends each.
///
/// Owner: the library, from `Init` to `ReleaseResources`. Thread: any; all operations post. What is still posted when it ends
/// is passed over.
class VRK_EXPORT PreviewVisualsHelper {
public:
    using Pos = rob::PosTemplate<float>;
    using Pose = rob::PoseTemplate<float>;

    static constexpr std::size_t pointCount = 6;

    /// To be made once, on the render thread, after the scene.
    PreviewVisualsHelper();
    /// Ends the crosses and the lines; the frames stay with the world. Render thread.
    ~PreviewVisualsHelper();
    PreviewVisualsHelper(const PreviewVisualsHelper&) = delete;
    PreviewVisualsHelper& operator=(const PreviewVisualsHelper&) = delete;

    /// The one of start-up; null before that. What it points to is gone after `ReleaseResources`.
    static PreviewVisualsHelper* Get();

    // Places are in the world. A "To" shows the line between both; a "From" that comes later only corrects it.

    void addPrimaryFrom(const Pos& position);
    void addPrimaryTo(const Pos& position);
    void addAxisXFrom(const Pos& position);
    void addAxisXTo(const Pos& position);
    void addAxisYFrom(const Pos& position);
    void addAxisYTo(const Pos& position);
    // Three points: a line to each of the others that is there, so that all three make a triangle.
    void addSelectPoint1(const Pos& position);
    void addSelectPoint2(const Pos& position);
    void addSelectPoint3(const Pos& position);
    // An origin, the first, and a line from it to each of the other two
    void addSelectFramePoint1(const Pos& position);
    void addSelectFramePoint2(const Pos& position);
    void addSelectFramePoint3(const Pos& position);
    void addPreviewUserFrame(const Pose& pose);
    void addPreviewObjectFrame(const Pose& pose);
    // How lines look, shown or not; nothing else changes that.
    void setPrimaryLineSelected(bool selected);
    void setAxisXLineSelected(bool selected);
    void setAxisYLineSelected(bool selected);
    void removeAllVisuals();

    // The marks. Render thread.
    const SelectPointVisual& getPoint(std::size_t index) const { return *point[index]; }
    const FromToLineVisual& getPrimaryLine() const { return *primaryLine; }
    const FromToLineVisual& getAxisXLine() const { return *axisXLine; }
    const FromToLineVisual& getAxisYLine() const { return *axisYLine; }
    const PreviewFrameVisual& getUserFrame() const { return *userFrame; }
    const PreviewFrameVisual& getObjectFrame() const { return *objectFrame; }

private:
    void doAddPrimaryFrom(const Pos& position);
    void doAddPrimaryTo(const Pos& position);
    void doAddAxisXFrom(const Pos& position);
    void doAddAxisXTo(const Pos& position);
    void doAddAxisYFrom(const Pos& position);
    void doAddAxisYTo(const Pos& position);
    void doAddSelectPoint1(const Pos& position);
    void doAddSelectPoint2(const Pos& position);
    void doAddSelectPoint3(const Pos& position);
    void doAddSelectFramePoint1(const Pos& position);
    void doAddSelectFramePoint2(const Pos& position);
    void doAddSelectFramePoint3(const Pos& position);
    void doAddPreviewUserFrame(const Pose& pose);
    void doAddPreviewObjectFrame(const Pose& pose);
    void doSetPrimaryLineSelected(bool selected);
    void doSetAxisXLineSelected(bool selected);
    void doSetAxisYLineSelected(bool selected);
    void doRemoveAllVisuals();

    bool isShown(std::size_t index) const;
    Pos positionOf(std::size_t index) const;

    std::array<SelectPointVisual*, pointCount> point;
    FromToLineVisual* primaryLine;
    FromToLineVisual* axisXLine;
    FromToLineVisual* axisYLine;
    PreviewFrameVisual* userFrame;
    PreviewFrameVisual* objectFrame;
    std::unique_ptr<TasksOfOwner> posts;
};

} // namespace vrk::visual
