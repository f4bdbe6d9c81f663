#include "Program.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <STEPControl_Writer.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Vertex.hxx>
#include <gp.hxx>
#include <gp_Circ.hxx>

#include <fmt/format.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <sys/wait.h>

namespace vrkview::test {
namespace {

std::string quoted(const std::string& text)
{
    return fmt::format("'{}'", text);
}

} // namespace

Outcome runViewer(const std::vector<std::string>& arguments, const std::string& environment)
{
    const vrk::test::TempFolder folder;
    const std::string out = (folder / "out").string();
    const std::string err = (folder / "err").string();
    std::string command = fmt::format("env -u DISPLAY -u WAYLAND_DISPLAY {} {}", environment, quoted(VRKVIEW_PROGRAM));
    for (const std::string& argument : arguments)
        command.append(" ").append(quoted(argument));
    command.append(fmt::format(" < /dev/null > {} 2> {}", quoted(out), quoted(err)));
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, bytesOf(out), bytesOf(err)};
}

std::string Files::write(const std::string& name, const std::string& bytes) const
{
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
}

std::string Files::writeStep(const std::string& name) const
{
    Message::DefaultMessenger()->ChangePrinters().Clear(); // it tells of each file written
    STEPControl_Writer writer;
    writer.Transfer(BRepPrimAPI_MakeBox(30, 20, 10).Shape(), STEPControl_AsIs);
    if (writer.Write(path(name).c_str()) != IFSelect_RetDone)
        throw std::runtime_error("no STEP file");
    return path(name);
}

std::string Files::writeBrep(const std::string& name) const
{
    BRepTools::Write(BRepPrimAPI_MakeBox(30, 20, 10).Shape(), path(name).c_str());
    return path(name);
}

std::string Files::writeCurves(const std::string& name) const
{
    const BRep_Builder builder;
    TopoDS_Compound both;
    builder.MakeCompound(both);
    builder.Add(both, BRepBuilderAPI_MakeEdge(gp_Circ(gp::XOY(), 20)).Edge());
    builder.Add(both, BRepBuilderAPI_MakeVertex(gp_Pnt(0, 0, 10)).Vertex());
    BRepTools::Write(both, path(name).c_str());
    return path(name);
}

std::string Files::writeCloud(const std::string& name, double side, double x, double y) const
{
    constexpr int steps = 20;
    std::string text;
    for (int i = 0; i <= steps; ++i)
        for (int j = 0; j <= steps; ++j)
            text += fmt::format("{:.4f} {:.4f} {:.4f}\n", x + side * (i - steps / 2) / steps,
                                y + side * (j - steps / 2) / steps, side * 0.1 * (i * j % 7) / 7);
    return write(name, text);
}

std::string bytesOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace vrkview::test
