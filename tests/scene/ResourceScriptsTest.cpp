#include "support/SceneFixture.h"

#include <Ogre.h>

#include <algorithm>

namespace vrk::visual {
namespace {

using testing::Contains;
using testing::IsSupersetOf;

/// What the library asks for by name, and applications may; whoever draws with a name that is missing here draws nothing
/// that anybody chose.
const std::vector<std::string> namedMaterials = {
    "ABB",
    "ABBHighlighted",
    "ABBSelected",
    "Axis",
    "BandVector",
    "BandVectorHighlight",
    "BandVectorSelect",
    "BlueFrameLine",
    "BlueFrameLineSelected",
    "Body",
    "BodyCurve",
    "BodyCurveHighlighted",
    "BodyCurveSelected",
    "BodyHighlighted",
    "BodySelected",
    "CollisionContact",
    "CollisionNearMiss",
    "EmphasizeCollisionGroupA",
    "EmphasizeCollisionGroupB",
    "FANUC",
    "FANUCHighlighted",
    "FANUCSelected",
    "FrameLine",
    "GeneratedEdge",
    "GlobalFrame",
    "GreenFrameLine",
    "GreenFrameLineSelected",
    "HandleHighlight",
    "InstanceArrow",
    "InstanceFrame",
    "InstanceRobTarget",
    "InstanceRobTargetHighlight",
    "InstanceRobTargetSelected",
    "JointAxis",
    "KUKA",
    "KUKAHighlighted",
    "KUKASelected",
    "Mechanism",
    "MechanismHighlighted",
    "MechanismSelected",
    "MeshBody",
    "MeshBodyHighlighted",
    "MeshBodySelected",
    "PathBoundary",
    "PathLine",
    "PathLineHighlighted",
    "PathLineSelected",
    "Point",
    "PointBase",
    "PointCloud",
    "PointCloudColored",
    "PointCloudPhong",
    "PointCloudPhongColored",
    "PointCloudPhongSelected",
    "PointCloudSelected",
    "PointHighlighted",
    "PointPreview",
    "PointSelected",
    "PreviewCurve",
    "PreviewFace",
    "RedFrameLine",
    "RedFrameLineSelected",
    "SelectedBand",
    "Spray",
    "SprayThickness",
    "TcpTrace",
    "TransBody",
    "TransparentHandle",
    "UVIndicator",
    "VectorBand",
    "VertexColor",
    "WhiteFrameLine",
    "WireFrame",
    "WorkEnvelope",
    "WorkEnvelope3D",
    "YASKAWA",
    "YASKAWAHighlighted",
    "YASKAWASelected",
};

/// Everything in resources/material and resources/program.
class ResourceScripts : public test::SceneFixture {
protected:
    /// The names of what our scripts made in one of OGRE's managers.
    static std::vector<std::string> namesIn(Ogre::ResourceManager& manager)
    {
        std::vector<std::string> names;
        for (const auto& [handle, resource] : manager.getResourceIterator())
            if (resource->getOrigin().starts_with("resource://"))
                names.push_back(resource->getName());
        std::sort(names.begin(), names.end());
        return names;
    }
};

TEST_F(ResourceScripts, EveryProgramCompiles)
{
    auto& programs = Ogre::HighLevelGpuProgramManager::getSingleton();
    const std::vector<std::string> names = namesIn(programs);

    EXPECT_THAT(names, Contains("LitFragment"));
    for (const std::string& name : names) {
        const Ogre::HighLevelGpuProgramPtr program = programs.getByName(name, "General");
        program->load();
        EXPECT_TRUE(program->isSupported()) << name;
        EXPECT_FALSE(program->hasCompileError()) << name;
    }
}

TEST_F(ResourceScripts, EveryMaterialHasATechniqueWithPrograms)
{
    auto& materials = Ogre::MaterialManager::getSingleton();
    const std::vector<std::string> names = namesIn(materials);

    EXPECT_THAT(names, IsSupersetOf(namedMaterials));
    for (const std::string& name : names) {
        const Ogre::MaterialPtr material = materials.getByName(name, "General");
        material->load();
        EXPECT_EQ(material->getUnsupportedTechniquesExplanation(), "") << name;
        ASSERT_EQ(material->getSupportedTechniques().size(), 1u) << name;
        for (const Ogre::Pass* pass : material->getTechnique(0)->getPasses()) {
            EXPECT_TRUE(pass->hasVertexProgram()) << name;
            EXPECT_TRUE(pass->hasFragmentProgram()) << name;
        }
    }
}

TEST_F(ResourceScripts, EveryMaterialThatIsAskedForByItsNameIsThere)
{
    std::vector<std::string> names = {"VertexColor",
                                      "TcpTrace",
                                      "GlobalFrame",
                                      "TransBody",
                                      "CollisionContact",
                                      "CollisionNearMiss",
                                      "EmphasizeCollisionGroupA",
                                      "EmphasizeCollisionGroupB",
                                      "Axis",
                                      "UVIndicator",
                                      "RedFrameLine",
                                      "GreenFrameLine",
                                      "BlueFrameLine",
                                      "WhiteFrameLine",
                                      "RedFrameLineSelected",
                                      "GreenFrameLineSelected",
                                      "BlueFrameLineSelected",
                                      "PreviewCurve",
                                      "BodyCurve",
                                      "BodyCurveHighlighted",
                                      "BodyCurveSelected",
                                      "GeneratedEdge",
                                      "WireFrame",
                                      "Point",
                                      "PointSelected",
                                      "PointHighlighted",
                                      "PointPreview",
                                      "PointBase",
                                      "PointCloud",
                                      "PointCloudColored",
                                      "PointCloudPhong",
                                      "PointCloudPhongColored",
                                      "PointCloudSelected",
                                      "PointCloudPhongSelected",
                                      "InstanceRobTarget",
                                      "InstanceFrame",
                                      "InstanceRobTargetHighlight",
                                      "InstanceRobTargetSelected",
                                      "InstanceArrow"};
    for (const std::string base : {"Body", "MeshBody", "ABB", "KUKA", "FANUC", "YASKAWA", "Mechanism"})
        for (const char* state : {"", "Selected", "Highlighted"})
            names.push_back(base + state);

    // Else OGRE's default takes its place, and nobody is told.
    for (const std::string& name : names)
        EXPECT_TRUE(Ogre::MaterialManager::getSingleton().resourceExists(name, "General")) << name;
}

TEST_F(ResourceScripts, EveryCompositorIsSupported)
{
    auto& compositors = Ogre::CompositorManager::getSingleton();
    const std::vector<std::string> names = namesIn(compositors);

    EXPECT_THAT(names, Contains("BorderHighlight"));
    for (const std::string& name : names) {
        const Ogre::CompositorPtr compositor = compositors.getByName(name, "General");
        compositor->load();
        EXPECT_GT(compositor->getNumSupportedTechniques(), 0u) << name;
    }
}

} // namespace
} // namespace vrk::visual
