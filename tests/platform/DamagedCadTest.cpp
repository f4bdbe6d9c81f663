#include "StepFiles.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/station/CadReader.h"
#include "platform/station/Import.h"
#include "support/DamagedText.h"
#include "support/TempFolder.h"

#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <BinTools.hxx>
#include <GeomAPI_PointsToBSplineSurface.hxx>
#include <Geom_BSplineSurface.hxx>
#include <TColgp_Array2OfPnt.hxx>
#include <TopoDS_Compound.hxx>

#include <gtest/gtest.h>

#include <chrono>

namespace vrk::station {
namespace {

using namespace std::chrono_literals;

constexpr unsigned shards = 10;   // run side by side
constexpr unsigned variants = 10; // of each of the four files, in each shard

TopoDS_Shape wavySheet()
{
    TColgp_Array2OfPnt points(1, 6, 1, 6);
    for (int i = 1; i <= 6; ++i)
        for (int k = 1; k <= 6; ++k)
            points(i, k) = gp_Pnt(20 * i, 20 * k, (i * k) % 4);
    return BRepBuilderAPI_MakeFace(GeomAPI_PointsToBSplineSurface(points).Surface(), 1e-6).Shape();
}

TopoDS_Shape someOfEach()
{
    TopoDS_Compound all;
    const BRep_Builder builder;
    builder.MakeCompound(all);
    for (const TopoDS_Shape& shape : {BRepPrimAPI_MakeBox(10, 20, 30).Shape(), BRepPrimAPI_MakeCylinder(2, 50).Shape(),
                                      BRepPrimAPI_MakeCone(9, 4, 20).Shape(), BRepPrimAPI_MakeSphere(12).Shape(),
                                      BRepPrimAPI_MakeTorus(50, 10).Shape(), wavySheet()})
        builder.Add(all, shape);
    return all;
}

class DamagedCad : public testing::TestWithParam<unsigned> {
protected:
    DamagedCad()
    {
        CadReaderSettings settings;
        settings.longestTime = 3s;
        settings.mostMemory = 2'000'000'000;
        SetCadReaderSettings(settings);
    }
    ~DamagedCad() override { SetCadReaderSettings({}); }

    /// Whatever comes of it, it comes back and says why in one line.
    void expectSurvived(const std::filesystem::path& file)
    {
        try {
            // The last ones stay while these come: bodies of one name are held against each other.
            last = ImportFile(file);
            for (const auto& part : last)
                for (const auto& body : part->getBodies())
                    EXPECT_GE(body->getFaceMap().Extent(), 0);
        } catch (const ImportError& failure) {
            const std::string text = failure.what();
            EXPECT_TRUE(text.starts_with(file.string() + ": ")) << text;
            EXPECT_EQ(text.find('\n'), std::string::npos) << text;
        }
    }
    void expectAllSurvived(const std::string& name)
    {
        const std::string whole = test::TempFolder::Read(folder / name);
        const unsigned first = GetParam() * variants;
        for (unsigned seed = first; seed < first + variants; ++seed) {
            SCOPED_TRACE(testing::Message() << name << ", seed " << seed);
            expectSurvived(
                folder.write("damaged" + std::filesystem::path(name).extension().string(), test::damaged(whole, seed)));
        }
    }

    test::TempFolder folder;
    std::vector<std::shared_ptr<layout::Part>> last;
};

TEST_P(DamagedCad, StepFileTakesNothingDown)
{
    test::StepDocument document;
    const TDF_Label top = document.addAssembly("top");
    const TDF_Label product = document.addProduct(someOfEach(), "some");
    document.setColor(product, "#ED1C24");
    document.addComponent(top, product, test::turnedAndMoved(1, 2, 3), "first");
    document.addComponent(top, product, test::moved(0, 500, 0), "second");
    document.write(folder / "whole.step");

    expectAllSurvived("whole.step");
}

TEST_P(DamagedCad, IgesFileTakesNothingDown)
{
    test::StepDocument document;
    const TDF_Label product = document.addProduct(someOfEach(), "some");
    document.setColor(product, "#ED1C24");
    document.writeIges(folder / "whole.igs", GetParam() % 2 == 0);

    expectAllSurvived("whole.igs");
}

TEST_P(DamagedCad, BrepTextTakesNothingDown)
{
    BRepTools::Write(someOfEach(), (folder / "whole.brep").c_str());

    expectAllSurvived("whole.brep");
}

TEST_P(DamagedCad, BinaryBrepTakesNothingDown)
{
    BinTools::Write(someOfEach(), (folder / "whole.brep").c_str());

    expectAllSurvived("whole.brep");
}

INSTANTIATE_TEST_SUITE_P(Shards, DamagedCad, testing::Range(0u, shards));

} // namespace
} // namespace vrk::station
