// One operation of each class of the installed headers, so that a class that is not exported fails to link. Where all
// operations of a class are virtual its constructor stands for it, or a class of ours that derives from it.

#include "mesh/Mesh.h"
#include "mesh/MeshManager.h"
#include "platform/broker/SignalBroker.h"
#include "platform/common/Checks.h"
#include "platform/common/Hash.h"
#include "platform/common/Logger.h"
#include "platform/common/ResourcePath.h"
#include "platform/common/ZipManager.h"
#include "platform/geometry/BodyColorTool.h"
#include "platform/geometry/EdgePoints.h"
#include "platform/geometry/EdgePolygons.h"
#include "platform/geometry/MfgVector.h"
#include "platform/geometry/ProjectPoint.h"
#include "platform/kinematics/ArmChain.h"
#include "platform/kinematics/Reach.h"
#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Group.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/program/Program.h"
#include "platform/sdf/Element.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "platform/smart/SmartComponent.h"
#include "platform/smart/StationLogic.h"
#include "platform/station/CadReader.h"
#include "platform/station/FileKinds.h"
#include "platform/station/GeometryCache.h"
#include "platform/station/Import.h"
#include "platform/station/ImportCloud.h"
#include "platform/station/ImportProgram.h"
#include "platform/station/ImportUrdf.h"
#include "platform/station/StationFile.h"
#include "platform/station/Uri.h"
#include "platform/task/DataItem.h"
#include "platform/task/EdgeMfgShape.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Seam.h"
#include "platform/task/SeamPath.h"
#include "platform/task/Task.h"
#include "preview/PolylineVisual.h"
#include "preview/PreviewCurve.h"
#include "preview/TriangleMeshVisual.h"
#include "preview/annotation/DimensionVisual.h"
#include "preview/annotation/WorkEnvelopeVisuals.h"
#include "preview/marks/PickedMarks.h"
#include "preview/marks/PreviewVisualsHelper.h"
#include "preview/marks/PreviewedJointVisual.h"
#include "scene/Init.h"
#include "scene/Scene.h"
#include "scene/core/CameraSnapshot.h"
#include "scene/core/RenderTaskQueue.h"
#include "selection/SelectableObject.h"
#include "selection/ViewPixels.h"
#include "selection/VisualSelection.h"
#include "selection/geometry/Arena.h"
#include "selection/geometry/BVH.h"
#include "selection/geometry/BVHBuilder.h"
#include "selection/geometry/BVHNode.h"
#include "selection/geometry/BVHPrimitive.h"
#include "selection/geometry/Box.h"
#include "selection/geometry/Cone.h"
#include "selection/geometry/Math.h"
#include "selection/geometry/Plane.h"
#include "selection/geometry/PrimitiveContainer.h"
#include "selection/geometry/Result.h"
#include "station/AssemblyVisual.h"
#include "station/CompoundVisual.h"
#include "station/LinkVisual.h"
#include "station/ManipulatorVisual.h"
#include "station/MechanismVisual.h"
#include "station/PartVisual.h"
#include "station/TcpTraceVisual.h"
#include "station/TcpVisual.h"
#include "station/ToolVisual.h"
#include "station/WObjVisual.h"
#include "task/InstanceFrameVisual.h"
#include "task/JointTargetVisual.h"
#include "task/MoveInstructionVisual.h"
#include "task/PathArrowVisual.h"
#include "task/PathLineVisual.h"
#include "task/PathVisual.h"
#include "task/RobtargetVisual.h"
#include "task/bands/BandVectorVisual.h"
#include "task/bands/VectorBandVisual.h"
#include "view/AxesCross.h"
#include "view/BandedPicture.h"
#include "view/Camera.h"
#include "view/Navigator.h"
#include "view/OffscreenTarget.h"
#include "view/OrbitPivotVisual.h"
#include "view/OrbitViewController.h"
#include "view/RegionOutline.h"
#include "view/RenderFrame.h"
#include "view/ViewBounds.h"
#include "view/WindowTarget.h"
#include "visual/ArrowVisual.h"
#include "visual/BodyVisual.h"
#include "visual/CurveVisual.h"
#include "visual/DynamicLines.h"
#include "visual/EdgeVisual.h"
#include "visual/FacetVisual.h"
#include "visual/FrameVisual.h"
#include "visual/LineVisual.h"
#include "visual/MeshVisual.h"
#include "visual/PointCloudVisual.h"
#include "visual/PointVisual.h"
#include "visual/PointsVisual.h"
#include "visual/SolidVisual.h"
#include "visual/Visual.h"
#include "visual/VisualMark.h"
#include "visual/VisualStateManager.h"

namespace {

using namespace vrk;
using namespace vrk::visual;
using namespace vrk::selection;

/// Stored where the compiler must take it to be read, the address of an operation has to be found by the linker.
template <typename Operation>
void keep(Operation operation)
{
    [[maybe_unused]] volatile Operation kept = operation;
}

/// The base is whole if this derived class links: its constructors, its destructor and its table of virtual operations.
template <typename Base>
struct Derived : Base {
    using Base::Base;
};

/// Never run: what is constructed here has only to be linked.
template <typename Class, typename... Arguments>
void construct(Arguments... arguments)
{
    delete new Class(arguments...);
}

struct OwnCompound : CompoundVisual {
    using CompoundVisual::CompoundVisual;
    bool takesAppearance(const Visual&) const override { return true; }
};

struct OwnMechanism : MechanismVisual {
    OwnMechanism(sdf::SdfNode* node, Visual* parent) : MechanismVisual(node, parent, true, VisualType::Device) {}
};

struct OwnObject : SelectableObject {
    explicit OwnObject(Visual* visual) : SelectableObject(ObjectKind::Mesh, visual) {}
    void update() override {}
    void buildPrimitives() override {}
};

void keepPlatform()
{
    keep(&kinematics::ChainJoint::poseAt);
    keep(&kinematics::ArmChain::pointAt);
    keep(&kinematics::computeReach);
    keep(&broker::SignalBroker::updateScene);
    keep(&common::hexByte);
    keep(&Logger::error);
    keep(&AppLogger::inst);
    keep(&FileLogger::inst);
    keep(&common::GetResourcePath);
    keep(&common::ZipManager::Exists);
    keep(&geometry::BodyColorTool::GetColorInfo);
    keep(&common::Hash::text);
    keep(&geometry::GetPointAtParameter);
    keep(&geometry::addEdgePolygons);
    keep(&geometry::MfgVector::getPose);
    keep(&geometry::MfgVector::getToolPose);
    keep(&geometry::ProjectPoint);
    keep(&layout::PartContainer::addPart);
    keep(&construct<layout::Assembly, unsigned, std::string>);
    keep(&layout::Body::getGeometryUri);
    keep(&construct<layout::Frame, unsigned, std::string>);
    keep(&construct<layout::Wrist, unsigned, std::string>);
    keep(&construct<layout::Group, sdf::ModelType, unsigned, std::string>);
    keep(&layout::StationContent::objects);
    keep(&layout::Layout::inst);
    keep(&layout::Mechanism::addLink);
    keep(&layout::Manipulator::getVendor);
    keep(&layout::Tool::addFrame);
    keep(&layout::Device::addFrame);
    keep(&layout::Part::isDetectable);
    keep(&layout::PointCloud::getGeometryUri);
    keep(&sdf::Element::Create);
    keep(&sdf::textAt);
    keep(&sdf::SdfManager::inst);
    keep(&sdf::SdfNode::setPose);
    keep(&sdf::SdfContainer::getChildren);
    keep(&smartcomp::SmartComponent::addComponent);
    keep(&smartcomp::GetAllSmartComponents);
    keep(&smartcomp::StationLogic::inst);
    keep(&station::GeometryCache::KeyOf);
    keep(&station::SetCadReaderSettings);
    keep(&station::GetCadReaderPath);
    keep(&station::ImportAssembled);
    keep(&station::ImportFile);
    keep(&construct<station::ImportError, std::filesystem::path, std::string>);
    keep(&ReadFileFromURI);
    keep(&construct<task::ToolDataItem, unsigned, std::string>);
    keep(&construct<task::WObjDataItem, unsigned, std::string>);
    keep(&construct<task::JointTargetDataItem, unsigned, std::string>);
    keep(&task::Task::addDataItem);
    keep(&construct<task::Path, unsigned, std::string>);
    keep(&construct<task::Instruction, unsigned, std::string>);
    keep(&task::MoveInst::setTargetItem);
    keep(&task::EdgeMfgShape::addEdge);
    keep(&task::TangentChain);
    keep(&task::MakeSeamPath);
    keep(&program::textOf);
    keep(&station::ProgramSummary::text);
    keep(&station::fileKindOf);
    keep(&station::ImportProgram);
    keep(&construct<task::Operation, unsigned, std::string>);
    keep(&task::GetAllTasks);
}

void keepSelection()
{
    keep(&selection::Init);
    keep(&VisualSelection::Get);
    keep(&viewportRay);
    keep(&construct<OwnObject, Visual*>);
    keep(&Arena::absorb);
    keep(&BVH::swap);
    keep(&BVHBuilder::build);
    keep(&construct<BVHInnerNode, BVHNode*, BVHNode*, unsigned>);
    keep(&PrimitiveContainer::queryLine);
    keep(&Box::getCorner);
    keep(&Cone::isPointInside);
    keep(&Math::DistancePointPlane);
    keep(&Plane::distanceAlong);
    keep(&Result::getFaceEdge);
}

void keepVisuals()
{
    keep(&Scene::Get);
    keep(&ReleaseResources);
    keep(&CameraSnapshot::rayThrough);
    keep(&RenderTaskQueue::post);
    keep(&Mesh::getBounds);
    keep(&MeshManager::Get);
    keep(&Visual::getParent);
    keep(&VisualStateManager::setLayer);
    keep(&construct<HighlightedVisual, Visual*>);
    keep(&construct<SelectedVisual, Visual*>);
    keep(&construct<Derived<BodyVisual>, std::string, Visual*>);
    keep(&ArrowVisual::PlaceOn);
    keep(&CurveVisual::addArrow);
    keep(&DynamicLines::addPoint);
    keep(&EdgeVisual::Build);
    keep(&FacetVisual::useNamedMaterial);
    keep(&FrameVisual::SizeOf);
    keep(&LineVisual::createDynamicLine);
    keep(&MeshVisual::getMesh);
    keep(&PointCloudVisual::Build);
    keep(&PointVisual::setColor);
    keep(&PointsVisual::setColor);
    keep(&SolidVisual::getShape);
}

void keepPreviews()
{
    keep(&construct<PreviewCurve, std::string, Visual*>);
    keep(&PolylineVisual::Build);
    keep(&construct<TriangleMeshVisual, Visual*>);
    keep(&construct<DimensionVisual, Visual*, rob::Posf, rob::Posf>);
    keep(&WorkEnvelope2DVisual::setCurve);
    keep(&WorkEnvelope3DVisual::setSurface);
    keep(&construct<SelectPointVisual, Visual*>);
    keep(&construct<PreviewFrameVisual, Visual*>);
    keep(&FromToLineVisual::set);
    keep(&PreviewVisualsHelper::Get);
    keep(&PreviewedJointVisual::set);
}

void keepStationAndView()
{
    keep(&AssemblyVisual::Build);
    keep(&construct<OwnCompound, sdf::SdfNode*, Visual*, VisualType>);
    keep(&LinkVisual::Build);
    keep(&ManipulatorVisual::Build);
    keep(&WristVisual::Build);
    keep(&construct<OwnMechanism, sdf::SdfNode*, Visual*>);
    keep(&TcpTraceVisual::addColorPoint);
    keep(&TcpVisual::Build);
    keep(&ToolVisual::Build);
    keep(&DeviceVisual::Build);
    keep(&WObjVisual::Build);
    keep(&InstanceFrameVisual::getFrameSize);
    keep(&JointTargetVisual::Build);
    keep(&RobtargetVisual::Build);
    keep(&MoveInstructionVisual::Build);
    keep(&PathArrowVisual::setScale);
    keep(&PathLineVisual::finish);
    keep(&PathVisual::Build);
    keep(&BandVectorVisual::getPathPoint);
    keep(&VectorBandVisual::updateBand);
    keep(&AxesCross::setScale);
    keep(&BandedPicture::draw);
    keep(&Camera::Published);
    keep(&Navigator::turnWheel);
    keep(&OffscreenTarget::read);
    keep(&OrbitPivotVisual::updateScale);
    keep(&OrbitViewController::startRotating);
    keep(&RegionOutline::showRectangle);
    keep(&renderFrame);
    keep(&ViewBounds::held);
    keep(&WindowTarget::draw);
}

} // namespace

void keepOneOperationOfEachClass()
{
    keepPlatform();
    keepSelection();
    keepVisuals();
    keepPreviews();
    keepStationAndView();
}
