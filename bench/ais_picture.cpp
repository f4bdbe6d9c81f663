// A picture of one CAD or mesh file as Open CASCADE's own viewer draws it with its usual settings, to be laid beside the
// viewer's: ais_picture FILE PNG WIDTH HEIGHT. Needs a display; xvfb-run gives it one. scripts/compare-pictures.sh runs it.
//
// Prints where the camera stands and what it looks at, for programs that are to look from there too. Ends with 2 where it
// cannot read a file of this kind.

#include <AIS_InteractiveContext.hxx>
#include <AIS_Shape.hxx>
#include <Aspect_DisplayConnection.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <Graphic3d_RenderingParams.hxx>
#include <Image_AlienPixMap.hxx>
#include <OpenGl_GraphicDriver.hxx>
#include <Poly_Triangulation.hxx>
#include <Prs3d_Drawer.hxx>
#include <RWStl.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDocStd_Document.hxx>
#include <TopoDS_Face.hxx>
#include <V3d_View.hxx>
#include <V3d_Viewer.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <XCAFPrs_AISObject.hxx>
#include <Xw_Window.hxx>
#include <gp.hxx>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <numbers>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr int failed = 1;
constexpr int unknownKind = 2;
constexpr double horizontalField = 0.47;            // radians, of the viewer's camera
constexpr double roomAround = 0.08;                 // part of the picture that the viewer leaves free
constexpr double sharpAngle = std::numbers::pi / 6; // between triangles that keep their edge

using Things = std::vector<Handle(AIS_InteractiveObject)>;

/// The bodies of a STEP file in their colours.
Things readStep(const std::string& file)
{
    Handle(TDocStd_Document) document;
    XCAFApp_Application::GetApplication()->NewDocument("BinXCAF", document);
    STEPCAFControl_Reader reader;
    if (reader.ReadFile(file.c_str()) != IFSelect_RetDone || !reader.Transfer(document))
        throw std::runtime_error("the STEP file cannot be read");
    TDF_LabelSequence shapes;
    XCAFDoc_DocumentTool::ShapeTool(document->Main())->GetFreeShapes(shapes);
    Things things;
    for (const TDF_Label& shape : shapes)
        things.emplace_back(new XCAFPrs_AISObject(shape));
    return things;
}

Things readBrep(const std::string& file)
{
    TopoDS_Shape shape;
    if (!BRepTools::Read(shape, file.c_str(), BRep_Builder()))
        throw std::runtime_error("the BREP file cannot be read");
    return {new AIS_Shape(shape)};
}

Things readStl(const std::string& file)
{
    const Handle(Poly_Triangulation) mesh = RWStl::ReadFile(file.c_str(), sharpAngle);
    if (mesh.IsNull())
        throw std::runtime_error("the STL file cannot be read");
    TopoDS_Face face;
    BRep_Builder().MakeFace(face, mesh);
    return {new AIS_Shape(face)};
}

/// What the file holds; nothing for a kind that is not read here.
Things read(const std::string& file)
{
    std::string ending = std::filesystem::path(file).extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (ending == ".step" || ending == ".stp")
        return readStep(file);
    if (ending == ".brep")
        return readBrep(file);
    if (ending == ".stl")
        return readStl(file);
    return {};
}

Handle(V3d_View)
    makeView(const Handle(Aspect_DisplayConnection) & display, const Handle(V3d_Viewer) & viewer, double aspect)
{
    viewer->SetDefaultLights();
    viewer->SetLightOn();
    const Handle(V3d_View) view = viewer->CreateView();
    constexpr int side = 64; // any: the picture has a buffer of its own
    const Handle(Xw_Window) window = new Xw_Window(display, "ais_picture", 0, 0, side, side);
    window->SetVirtual(true);
    view->SetWindow(window);
    view->SetBgGradientColors(Quantity_NOC_GRAY70, Quantity_NOC_GRAY30, Aspect_GFM_VER);
    view->ChangeRenderingParams().NbMsaaSamples = 8;
    const Handle(Graphic3d_Camera)& camera = view->Camera();
    camera->SetProjectionType(Graphic3d_Camera::Projection_Perspective);
    camera->SetFOVy(2 * std::atan(std::tan(horizontalField / 2) / aspect) * 180 / std::numbers::pi);
    camera->SetAspect(aspect);
    view->SetProj(V3d_XposYnegZpos); // from the front, the right and above, z upwards
    return view;
}

void tell(const gp_Pnt& place, const char* end)
{
    std::cout << place.X() << ',' << place.Y() << ',' << place.Z() << end;
}

void draw(const Things& things, const std::string& picture, int width, int height)
{
    const Handle(Aspect_DisplayConnection) display = new Aspect_DisplayConnection();
    const Handle(V3d_Viewer) viewer = new V3d_Viewer(new OpenGl_GraphicDriver(display)); // a view does not keep it
    const Handle(V3d_View) view = makeView(display, viewer, static_cast<double>(width) / height);
    const Handle(AIS_InteractiveContext) context = new AIS_InteractiveContext(viewer);
    context->DefaultDrawer()->SetFaceBoundaryDraw(true);
    for (const Handle(AIS_InteractiveObject) & thing : things)
        context->Display(thing, AIS_Shaded, -1, false);
    // Fitted by its camera: the view would take the window's aspect.
    const Handle(Graphic3d_Camera)& camera = view->Camera();
    camera->FitMinMax(view->View()->MinMaxValues(), roomAround, gp::Resolution());

    Image_AlienPixMap pixels;
    V3d_ImageDumpOptions options;
    options.Width = width;
    options.Height = height;
    options.BufferType = Graphic3d_BT_RGB;
    if (!view->ToPixMap(pixels, options) || !pixels.Save(picture.c_str()))
        throw std::runtime_error("the picture cannot be drawn");
    tell(camera->Eye(), " ");
    tell(camera->Center(), "\n");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5) {
        std::cerr << "ais_picture FILE PNG WIDTH HEIGHT\n";
        return failed;
    }
    try {
        const Things things = read(argv[1]);
        if (things.empty())
            return unknownKind;
        draw(things, argv[2], std::max(1, std::atoi(argv[3])), std::max(1, std::atoi(argv[4])));
    } catch (const Standard_Failure& failure) {
        std::cerr << "ais_picture: " << failure.GetMessageString() << '\n';
        return failed;
    } catch (const std::exception& failure) {
        std::cerr << "ais_picture: " << failure.what() << '\n';
        return failed;
    }
    return 0;
}
