#include "platform/sdf/Element.h"

#include <gtest/gtest.h>

namespace sdf {
namespace {

using vrk::rob::Posd;
using vrk::rob::Posed;

TEST(Element, NewOneHasANameAndNothingElse)
{
    const std::shared_ptr<Element> root = Element::Create("part");

    EXPECT_EQ(root->getName(), "part");
    EXPECT_EQ(root->getParent(), nullptr);
    EXPECT_TRUE(root->getChildren().empty());
    EXPECT_TRUE(std::holds_alternative<std::monostate>(root->getValue()));
}

TEST(Element, TouchMakesThePathOnceAndGetFindsIt)
{
    const std::shared_ptr<Element> root = Element::Create("body");

    const std::shared_ptr<Element> uri = root->touch("geometry/uri");

    EXPECT_EQ(root->touch("geometry/uri"), uri);
    EXPECT_EQ(root->get("geometry/uri"), uri);
    EXPECT_EQ(root->get("geometry")->get("uri"), uri);
    EXPECT_EQ(uri->getParent(), root->get("geometry"));
    EXPECT_EQ(root->getChildren().size(), 1u);
}

TEST(Element, GetOfAMissingPathIsNullAndMakesNothing)
{
    const std::shared_ptr<Element> root = Element::Create("body");
    root->touch("geometry");

    EXPECT_EQ(root->get("visual"), nullptr);
    EXPECT_EQ(root->get("geometry/uri"), nullptr);
    EXPECT_EQ(root->get("visual/material/name"), nullptr);
    EXPECT_EQ(root->getChildren().size(), 1u);
}

TEST(Element, PathFindsTheFirstOfTwoChildrenWithOneName)
{
    const std::shared_ptr<Element> root = Element::Create("part");
    const std::shared_ptr<Element> first = root->append("body");
    const std::shared_ptr<Element> second = root->append("body");

    EXPECT_NE(first, second);
    EXPECT_EQ(root->get("body"), first);
    EXPECT_EQ(root->getChildren().size(), 2u);
}

TEST(Element, RemovedChildHasNoParent)
{
    const std::shared_ptr<Element> root = Element::Create("part");
    const std::shared_ptr<Element> first = root->append("body");
    const std::shared_ptr<Element> second = root->append("body");

    root->remove(first);
    root->remove(first); // it is no child any more

    EXPECT_EQ(first->getParent(), nullptr);
    EXPECT_EQ(root->get("body"), second);
    EXPECT_EQ(root->getChildren().size(), 1u);
}

TEST(Element, OutlivesItsParentWithoutOne)
{
    std::shared_ptr<Element> root = Element::Create("part");
    const std::shared_ptr<Element> child = root->append("body");

    root.reset();

    EXPECT_EQ(child->getParent(), nullptr);
}

TEST(Element, ValuesAreReadAsTheirOwnKind)
{
    const std::shared_ptr<Element> root = Element::Create("part");
    const Posed pose(Posd(1, 2, 3));
    root->touch("pose")->set(pose);
    root->touch("name")->set(std::string("box"));
    root->touch("detectable")->set(true);

    EXPECT_EQ(root->get("pose")->asPose(), pose);
    EXPECT_EQ(root->get("name")->asString(), "box");
    EXPECT_TRUE(root->get("detectable")->asBool());
}

TEST(Element, ValuesOfAnotherKindReadAsNothing)
{
    const std::shared_ptr<Element> root = Element::Create("part");
    root->set(2.5);

    EXPECT_EQ(root->asPose(), Posed());
    EXPECT_EQ(root->asString(), "");
    EXPECT_FALSE(root->asBool());
}

TEST(Element, TextAndTruthAtAPathAreEmptyWhereThereIsNone)
{
    const std::shared_ptr<Element> root = Element::Create("body");
    root->touch("geometry/uri")->set(std::string("a.stl"));
    root->touch("detectable")->set(true);

    EXPECT_EQ(textAt(*root, "geometry/uri"), "a.stl");
    EXPECT_EQ(textAt(*root, "geometry/file_type"), "");
    EXPECT_TRUE(boolAt(*root, "detectable"));
    EXPECT_FALSE(boolAt(*root, "geometry/uri"));
    EXPECT_FALSE(boolAt(*root, "hidden"));
}

} // namespace
} // namespace sdf
