// What parts, assemblies and bodies of a STEP file are called.

#include "StepFiles.h"
#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/station/Import.h"
#include "support/TempFolder.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRep_Builder.hxx>
#include <TopoDS_Compound.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vrk::station {
namespace {

using testing::ElementsAre;

class ImportNamesTest : public testing::Test {
protected:
    /// Writes the document with some of its texts replaced, and imports it.
    void import(const std::vector<std::pair<std::string, std::string>>& changes = {})
    {
        document.write(file);
        std::string text = test::TempFolder::Read(file);
        for (const auto& [from, to] : changes) {
            ASSERT_NE(text.find(from), std::string::npos) << from;
            for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
                text.replace(at, from.size(), to);
        }
        folder.write(file.filename().string(), text);
        parts = ImportFile(file);
    }
    std::vector<std::string> partNames() const
    {
        std::vector<std::string> names;
        for (const auto& part : parts)
            names.push_back(part->getName());
        return names;
    }
    std::vector<std::string> bodyNames() const
    {
        std::vector<std::string> names;
        for (const auto& part : parts)
            for (const auto& body : part->getBodies())
                names.push_back(body->getName());
        return names;
    }

    test::TempFolder folder;
    std::filesystem::path file = folder / "gripper.step";
    test::StepDocument document;
    TopoDS_Shape box = BRepPrimAPI_MakeBox(10, 20, 30).Shape();
    TopoDS_Shape pin = BRepPrimAPI_MakeCylinder(2, 50).Shape();
    std::vector<std::shared_ptr<layout::Part>> parts;
};

class ImportFillerNames : public ImportNamesTest, public testing::WithParamInterface<const char*> {};

TEST_P(ImportFillerNames, OccurrenceIsCalledAsItsProduct)
{
    const TDF_Label top = document.addAssembly("cell");
    document.addComponent(top, document.addProduct(box, "crate"), test::moved(1, 0, 0), "occurrence");
    document.addComponent(top, document.addProduct(pin, "pin"), test::moved(2, 0, 0), "left pin");

    import({{ "'occurrence'", std::string("'") + GetParam() + "'" }});

    EXPECT_THAT(partNames(), ElementsAre("crate", "left pin"));
    EXPECT_THAT(bodyNames(), ElementsAre("crate", "pin"));
}

TEST_P(ImportFillerNames, ProductIsCalledAsWhatItIsIn)
{
    const std::string filler = GetParam();
    const TDF_Label top = document.addAssembly("clamp");
    document.addComponent(top, document.addProduct(box, "product"), test::moved(1, 0, 0), "occurrence");

    import({{"'occurrence'", "'" + filler + "'"}, { "'product'", "'" + filler + "'" }});

    EXPECT_THAT(partNames(), ElementsAre("clamp"));
    EXPECT_THAT(bodyNames(), ElementsAre("clamp"));
}

TEST_P(ImportFillerNames, LonelyProductIsCalledAsItsFile)
{
    const std::string filler = GetParam();
    document.addProduct(box, "product");

    import({{ "'product'", "'" + filler + "'" }});

    EXPECT_THAT(partNames(), ElementsAre("gripper"));
    EXPECT_THAT(bodyNames(), ElementsAre("gripper"));
}

INSTANTIATE_TEST_SUITE_P(Names, ImportFillerNames,
                         testing::Values("", "  ", "=>[0:1:1:14]", "SOLID", "Compound", "NAUO1", "nauo", "---",
                                         "Open CASCADE STEP translator 7.3 2"));

TEST_F(ImportNamesTest, NumberOfAProductIsItsName)
{
    document.addComponent(document.addAssembly("cell"), document.addProduct(box, "4711-3"), test::moved(1, 0, 0), "1");
    import();
    EXPECT_THAT(partNames(), ElementsAre("4711-3"));

    import({{ "4711-3", "4711" }});
    EXPECT_THAT(partNames(), ElementsAre("4711"));
}

TEST_F(ImportNamesTest, OccurrencesOfOneProductAreToldApart)
{
    const TDF_Label top = document.addAssembly("cell");
    const TDF_Label bolt = document.addProduct(pin, "bolt");
    document.addComponent(top, bolt, test::moved(1, 0, 0), "NAUO1");
    document.addComponent(top, bolt, test::moved(2, 0, 0), "NAUO2");
    document.addComponent(top, bolt, test::moved(3, 0, 0), "lower bolt");
    document.addComponent(top, document.addProduct(box, "bolt (2)"), test::moved(4, 0, 0), "NAUO4");

    import();

    EXPECT_THAT(partNames(), ElementsAre("bolt", "bolt (2)", "lower bolt", "bolt (2) (2)"));
    EXPECT_EQ(parts[0]->getBodies().at(0)->getGeometryUri(), parts[1]->getBodies().at(0)->getGeometryUri());
}

TEST_F(ImportNamesTest, BodiesOfANamelessProductHaveItsPlaceInTheirNames)
{
    TopoDS_Compound both;
    const BRep_Builder builder;
    builder.MakeCompound(both);
    builder.Add(both, box);
    builder.Add(both, pin.Moved(test::moved(100, 0, 0)));
    document.addComponent(document.addAssembly("cell"), document.addProduct(both, "COMPOUND"), test::moved(1, 0, 0),
                          "hinge");

    import();

    EXPECT_THAT(partNames(), testing::Each(testing::StartsWith("hinge")));
    EXPECT_THAT(bodyNames(), testing::Each(testing::StartsWith("hinge")));
}

struct WrittenName {
    const char* written; // in the file
    const char* meant;
};

class ImportWrittenNames : public ImportNamesTest, public testing::WithParamInterface<WrittenName> {};

TEST_P(ImportWrittenNames, ComeOutAsTheyAreMeant)
{
    document.addProduct(box, "product");

    import({{ "'product'", std::string("'") + GetParam().written + "'" }});

    EXPECT_THAT(partNames(), ElementsAre(GetParam().meant));
}

INSTANTIATE_TEST_SUITE_P(
    Letters, ImportWrittenNames,
    testing::Values(WrittenName{"Geh\\X2\\00E4\\X0\\use", "Gehäuse"}, WrittenName{"Geh\\X\\E4use", "Gehäuse"},
                    WrittenName{"Geh\\S\\duse", "Gehäuse"}, WrittenName{"Gehäuse", "Gehäuse"},
                    WrittenName{"Geh\xE4use", "Gehäuse"}, WrittenName{"\\X2\\65E5672C\\X0\\ 7", "日本 7"},
                    WrittenName{"\\X4\\0001F916\\X0\\ arm", "🤖 arm"},
                    WrittenName{"\\X2\\D83EDD16\\X0\\ arm", "🤖 arm"}, WrittenName{"it''s", "it's"},
                    WrittenName{"a\\\\b", "a\\b"}, WrittenName{"two\\X\\0A\\X\\0Dlines", "two lines"},
                    WrittenName{"  wide   room ", "wide room"}, WrittenName{"a\\X2\\202E\\X0\\b", "a b"},
                    WrittenName{"\\X\\1Bclear", "clear"}));

} // namespace
} // namespace vrk::station
