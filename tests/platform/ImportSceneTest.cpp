// Meshes that a package reads: OBJ, glTF, 3MF and Collada.

#include "platform/station/Import.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/station/CadReader.h"
#include "platform/station/clouds/PlyMesh.h"
#include "station/CacheFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

namespace vrk::station {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testing::ThrowsMessage;

const std::string triangleObj = "v 0 0 0\nv 1 0 0\nv 0 1 2\nf 1 2 3\n";

std::string base64(const std::string& bytes)
{
    const char* const digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        unsigned bits = 0;
        for (std::size_t k = 0; k < 3; ++k)
            bits = bits << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        for (int shift = 18; shift >= 0; shift -= 6)
            text += digits[bits >> shift & 63];
    }
    for (std::size_t i = bytes.size() % 3; i != 0 && i < 3; ++i)
        text[text.size() - (3 - i)] = '=';
    return text;
}

/// A triangle with corners at the origin, one metre along x and one metre up, which is y there.
std::string gltf(const std::string& color)
{
    const float corners[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const std::string bytes(reinterpret_cast<const char*>(corners), sizeof corners);
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],)"
           R"("materials":[{"pbrMetallicRoughness":{"baseColorFactor":[)" +
           color +
           R"(,1]}}],"meshes":[{"primitives":[{"attributes":{"POSITION":0},"material":0}]}],)"
           R"("accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3","min":[0,0,0],"max":[1,1,0]}],)"
           R"("bufferViews":[{"buffer":0,"byteLength":36}],"buffers":[{"byteLength":36,"uri":)"
           R"("data:application/octet-stream;base64,)" +
           base64(bytes) + R"("}]})";
}

std::string collada(const std::string& up, const std::string& metre)
{
    return R"(<?xml version="1.0"?><COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1"><asset>)"
           R"(<unit meter=")" +
           metre + R"("/><up_axis>)" + up +
           R"(</up_axis></asset><library_geometries><geometry id="g"><mesh><source id="p"><float_array id="a" count="9">)"
           R"(0 0 0 1 0 0 0 0 1</float_array><technique_common><accessor source="#a" count="3" stride="3"><param name="X" )"
           R"(type="float"/><param name="Y" type="float"/><param name="Z" type="float"/></accessor></technique_common></source>)"
           R"(<vertices id="v"><input semantic="POSITION" source="#p"/></vertices><triangles count="1"><input )"
           R"(semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles></mesh></geometry></library_geometries>)"
           R"(<library_visual_scenes><visual_scene id="s"><node><instance_geometry url="#g"/></node></visual_scene>)"
           R"(</library_visual_scenes><scene><instance_visual_scene url="#s"/></scene></COLLADA>)";
}

class ImportSceneTest : public testing::Test {
protected:
    ~ImportSceneTest() override { SetCadReaderSettings({}); }

    geometry::TriangleMesh meshOf(const std::filesystem::path& file, LengthUnit unit = LengthUnit::Millimetre)
    {
        parts = ImportFile(file, {}, unit);
        body = parts.at(0)->getBodies().at(0);
        return parsePlyMesh(test::TempFolder::Read(body->getGeometryUri())).mesh;
    }

    test::TempFolder folder;
    test::CacheFolder cache;
    std::vector<std::shared_ptr<layout::Part>> parts;
    std::shared_ptr<layout::Body> body;
};

TEST_F(ImportSceneTest, ObjIsReadInTheUnitThatIsTold)
{
    const std::filesystem::path file = folder.write("lamp.OBJ", triangleObj);

    EXPECT_THAT(meshOf(file).points, Contains(rob::Posf(0, 1, 2)));
    EXPECT_EQ(parts.at(0)->getName(), "lamp");
    EXPECT_EQ(body->getFileType(), "mesh");
    EXPECT_EQ(body->getMaterialName(), "MeshBody") << "it says no colour";
    EXPECT_EQ(body->getSourceFile(), file.string());
    EXPECT_THAT(meshOf(file, LengthUnit::Inch).points, Contains(rob::Posf(0, 25.4f, 50.8f)));
}

TEST_F(ImportSceneTest, ColoursOfMaterialsAreThoseOfTheirPieces)
{
    folder.write("two.mtl", "newmtl red\nKd 1 0 0\nnewmtl blue\nKd 0 0 1\n");
    const auto mesh =
        meshOf(folder.write("two.obj", "mtllib two.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 5\nv 1 0 5\nv 0 1 5\n"
                                       "usemtl red\nf 1 2 3\nusemtl blue\nf 4 5 6\n"));

    EXPECT_EQ(body->getMaterialName(), "Body");
    ASSERT_EQ(mesh.points.size(), 6u);
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_EQ(mesh.colors[i], mesh.points[i].z == 0 ? (PointColor{255, 0, 0}) : (PointColor{0, 0, 255}));
}

TEST_F(ImportSceneTest, GltfIsInMetresWithYUpAndItsColoursAreThoseOfLight)
{
    const auto mesh = meshOf(folder.write("a.gltf", gltf("0.5,0,0")), LengthUnit::Inch);

    EXPECT_THAT(mesh.points, AllOf(Contains(rob::Posf(1000, 0, 0)), Contains(rob::Posf(0, 0, 1000))));
    EXPECT_THAT(mesh.colors, Each(PointColor{186, 0, 0}));
    EXPECT_THAT(mesh.normals, Each(rob::Vec3f(0, -1, 0)));
}

TEST_F(ImportSceneTest, ColladaSaysItsUnitAndWhereUpIs)
{
    EXPECT_THAT(meshOf(folder.write("z.dae", collada("Z_UP", "0.01"))).points,
                AllOf(Contains(rob::Posf(10, 0, 0)), Contains(rob::Posf(0, 0, 10))));
    EXPECT_THAT(meshOf(folder.write("y.dae", collada("Y_UP", "1"))).points,
                AllOf(Contains(rob::Posf(1000, 0, 0)), Contains(rob::Posf(0, -1000, 0))));
}

TEST_F(ImportSceneTest, DamageIsOneLine)
{
    const auto expectRefused = [this](const std::string& name, const std::string& bytes) {
        const std::filesystem::path file = folder.write(name, bytes);
        EXPECT_THAT([&] { ImportFile(file); },
                    ThrowsMessage<ImportError>(AllOf(StartsWith(file.string() + ": "), Not(HasSubstr("\n")))))
            << name;
    };
    expectRefused("a.obj", "nothing of the kind");
    expectRefused("a.gltf", gltf("1,0,0").substr(0, 200));
    expectRefused("a.glb", "glTF");
    expectRefused("a.3mf", "PK");
    expectRefused("a.dae", collada("Z_UP", "1").substr(0, 500));
    expectRefused("b.obj", "v 0 0 0\nv 1 0 0\nl 1 2\n");
}

TEST_F(ImportSceneTest, ProgramThatDiesOverItIsOneLine)
{
    CadReaderSettings settings;
    settings.program = folder.write("reader.sh", "#!/bin/sh\nkill -SEGV $$\n");
    std::filesystem::permissions(settings.program, std::filesystem::perms::owner_all);
    SetCadReaderSettings(settings);
    const std::filesystem::path file = folder.write("a.obj", triangleObj);

    EXPECT_THAT([&] { ImportFile(file); },
                ThrowsMessage<ImportError>(
                    file.string() + ": the program that reads CAD files ended (signal 11): the file is damaged"));
}

TEST_F(ImportSceneTest, InTheOwnProcessItIsTheSame)
{
    const std::filesystem::path file = folder.write("a.gltf", gltf("0.5,0,0"));
    const geometry::TriangleMesh inChild = meshOf(file);
    std::filesystem::remove_all(cache.path());
    CadReaderSettings settings;
    settings.inOwnProcess = true;
    SetCadReaderSettings(settings);

    const geometry::TriangleMesh here = meshOf(file);

    EXPECT_EQ(here.points, inChild.points);
    EXPECT_EQ(here.colors, inChild.colors);
    EXPECT_EQ(here.indices, inChild.indices);
}

TEST_F(ImportSceneTest, ImportIsGivenUpWhereTheProgressThrows)
{
    const std::filesystem::path file = folder.write("a.obj", triangleObj);

    EXPECT_THROW(ImportFile(file, [](std::string_view, double) { throw 1; }), int);
}

TEST_F(ImportSceneTest, DamagedVariantsAreReadOrRefused)
{
    std::mt19937 random(21);
    const auto number = [&](std::size_t below) {
        return std::uniform_int_distribution<std::size_t>(0, below - 1)(random);
    };
    const std::vector<std::pair<std::string, std::string>> seeds = {
        {"a.obj", "o a\n" + triangleObj + "vn 0 0 1\nvt 0 0\nf 1/1/1 3/1/1 2/1/1\n"},
        {"a.gltf", gltf("1,0,0")},
        {"a.dae", collada("Z_UP", "1")}};
    constexpr int variants = 60;
    for (int i = 0; i < variants; ++i) {
        auto [name, bytes] = seeds[static_cast<std::size_t>(i) % seeds.size()];
        for (std::size_t k = number(4) + 1; k > 0; --k)
            bytes[number(bytes.size())] = static_cast<char>(number(256));
        if (number(3) == 0)
            bytes.resize(number(bytes.size()));
        if (bytes.empty())
            continue;
        const std::filesystem::path file = folder.write(std::to_string(i) + name, bytes);
        try {
            EXPECT_EQ(ImportFile(file).size(), 1u);
        } catch (const ImportError& failure) {
            EXPECT_THAT(failure.what(), Not(HasSubstr("\n")));
        }
    }
}

} // namespace
} // namespace vrk::station
