#include "platform/geometry/ColorText.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/station/CadReader.h"
#include "platform/station/Import.h"
#include "scene/Scene.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepTools.hxx>
#include <TopoDS_Edge.hxx>
#include <gp_Pnt.hxx>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iostream>

void keepOneOperationOfEachClass();

namespace {

/// By the program that is installed with the library.
bool readsCadFiles()
{
    const std::string name = "vrk_consumer_" + std::to_string(getpid()) + ".brep";
    const std::string file = (std::filesystem::temp_directory_path() / name).string();
    BRepTools::Write(BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(1, 0, 0)).Edge(), file.c_str());
    std::size_t bodies = 0;
    try {
        bodies = vrk::station::ImportFile(file).at(0)->getBodies().size();
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
    }
    std::remove(file.c_str());
    std::cout << vrk::station::GetCadReaderPath().string() << '\n';
    return bodies == 1;
}

} // namespace

int main()
{
    keepOneOperationOfEachClass();
    const bool platformLinks = vrk::geometry::ParseColorText("#FF0000").r == 1.0f;
    const bool visualLinks = vrk::visual::Scene::Get() == nullptr;
    return platformLinks && visualLinks && readsCadFiles() ? 0 : 1;
}
