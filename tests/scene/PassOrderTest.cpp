#include "support/SceneFixture.h"

#include <Ogre.h>

#include <map>
#include <string>
#include <utility>

namespace vrk::visual {
namespace {

using PassOrder = test::SceneFixture;

const Ogre::Pass& firstPass(const Ogre::Material& material)
{
    return *material.getTechnique(0)->getPass(0);
}

/// OGRE has the hashes of passes ready when it draws.
Ogre::uint32 hashOf(const Ogre::Material& material)
{
    return (*Ogre::Pass::getHashFunction())(&firstPass(material));
}

TEST_F(PassOrder, TellsAllMaterialsOfOneProgramApart)
{
    std::map<std::pair<Ogre::uint32, std::string>, std::string> names;
    auto& materials = Ogre::MaterialManager::getSingleton();
    int seen = 0;
    for (const auto& [handle, resource] : materials.getResourceIterator()) {
        const auto& material = static_cast<const Ogre::Material&>(*resource);
        if (material.getNumTechniques() == 0 || !firstPass(material).hasFragmentProgram())
            continue;
        ++seen;
        const auto [other, isNew] =
            names.try_emplace({hashOf(material), firstPass(material).getFragmentProgramName()}, material.getName());
        EXPECT_TRUE(isNew) << material.getName() << " and " << other->second;
    }
    EXPECT_GT(seen, 60);
}

TEST_F(PassOrder, IsTheSameForAMaterialThatIsMadeAgainElsewhere)
{
    auto& materials = Ogre::MaterialManager::getSingleton();
    const Ogre::MaterialPtr line = materials.getByName("RedFrameLine");
    const auto first = line->clone("PassOrderTest");
    const Ogre::uint32 hash = hashOf(*first);
    materials.remove(first); // it lives, so the second lies elsewhere

    const auto second = line->clone("PassOrderTest");

    EXPECT_NE(&firstPass(*first), &firstPass(*second));
    EXPECT_EQ(hashOf(*second), hash);
    EXPECT_NE(hashOf(*line), hash);
    materials.remove(second);
}

TEST_F(PassOrder, LaterPassesOfAMaterialFollowAllFirstOnes)
{
    const Ogre::MaterialPtr twice =
        Ogre::MaterialManager::getSingleton().getByName("RedFrameLine")->clone("PassOrderTwice");
    Ogre::Pass* second = twice->getTechnique(0)->createPass();
    EXPECT_GT((*Ogre::Pass::getHashFunction())(second), hashOf(*twice));
    Ogre::MaterialManager::getSingleton().remove(twice);
}

TEST_F(PassOrder, PathsLieOverCurvesAndStatesOverBoth)
{
    const auto hash = [](const char* name) { return hashOf(*Ogre::MaterialManager::getSingleton().getByName(name)); };
    for (const char* plain : {"WireFrame", "BodyCurve", "GeneratedEdge", "RedFrameLine"}) {
        EXPECT_LT(hash(plain), hash("PathLine")) << plain;
        EXPECT_LT(hash(plain), hash("BodyCurveSelected")) << plain;
    }
    EXPECT_LT(hash("PathLine"), hash("BodyCurveSelected"));
    EXPECT_LT(hash("PathLineSelected"), hash("BodyCurveHighlighted"));
    EXPECT_LT(hash("BodyCurveSelected"), hash("PathLineHighlighted"));
}

} // namespace
} // namespace vrk::visual
