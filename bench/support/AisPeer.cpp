#include "bench/support/AisPeer.h"

#include <AIS_InteractiveContext.hxx>
#include <AIS_Shape.hxx>
#include <Aspect_DisplayConnection.hxx>
#include <Graphic3d_RenderingParams.hxx>
#include <Image_PixMap.hxx>
#include <OpenGl_GraphicDriver.hxx>
#include <Prs3d_Drawer.hxx>
#include <V3d_View.hxx>
#include <V3d_Viewer.hxx>
#include <Xw_Window.hxx>

#include <numbers>
#include <stdexcept>

#include <GL/glx.h>

namespace vrk::bench {
namespace {

/// Makes what is current now current again: other programs' viewers keep no book of who else draws.
class KeptContext {
public:
    KeptContext() : display(glXGetCurrentDisplay()), drawable(glXGetCurrentDrawable()), context(glXGetCurrentContext())
    {
    }
    ~KeptContext()
    {
        if (context)
            glXMakeCurrent(display, drawable, context);
    }
    KeptContext(const KeptContext&) = delete;
    KeptContext& operator=(const KeptContext&) = delete;

private:
    Display* display;
    GLXDrawable drawable;
    GLXContext context;
};

} // namespace

struct AisPeer::Viewer {
    Handle(Aspect_DisplayConnection) display = new Aspect_DisplayConnection();
    Handle(V3d_Viewer) viewer = new V3d_Viewer(new OpenGl_GraphicDriver(display));
    Handle(V3d_View) view;
    Handle(AIS_InteractiveContext) context;
    Handle(Standard_Transient) buffer;
    Image_PixMap picture;
    std::vector<std::uint8_t> pixels;
};

AisPeer::AisPeer(const std::vector<std::pair<TopoDS_Shape, gp_Vec>>& placed, int width, int height, int samples)
{
    const KeptContext kept;
    viewer = std::make_unique<Viewer>();
    viewer->viewer->SetDefaultLights();
    viewer->viewer->SetLightOn();
    viewer->view = viewer->viewer->CreateView();
    constexpr int side = 64; // any: the picture has a buffer of its own
    const Handle(Xw_Window) window = new Xw_Window(viewer->display, "AIS", 0, 0, side, side);
    window->SetVirtual(true);
    viewer->view->SetWindow(window);
    viewer->view->ChangeRenderingParams().NbMsaaSamples = samples;
    viewer->context = new AIS_InteractiveContext(viewer->viewer);
    viewer->context->DefaultDrawer()->SetFaceBoundaryDraw(true);
    viewer->context->DefaultDrawer()->SetAutoTriangulation(false);
    for (const auto& [shape, place] : placed) {
        const Handle(AIS_Shape) body = new AIS_Shape(shape);
        gp_Trsf trsf;
        trsf.SetTranslation(place);
        body->SetLocalTransformation(trsf);
        viewer->context->Display(body, AIS_Shaded, -1, false); // not to be picked
    }
    const Handle(Graphic3d_CView)& drawn = viewer->view->View();
    viewer->buffer = drawn->FBOCreate(width, height);
    if (viewer->buffer.IsNull())
        throw std::runtime_error("Open CASCADE's viewer has no buffer of that size");
    drawn->SetFBO(viewer->buffer);
    viewer->view->Camera()->SetProjectionType(Graphic3d_Camera::Projection_Perspective);
    viewer->view->Camera()->SetAspect(static_cast<double>(width) / height);
    viewer->picture.InitZero(Image_Format_RGB, static_cast<std::size_t>(width), static_cast<std::size_t>(height));
}

AisPeer::~AisPeer()
{
    const KeptContext kept;
    viewer->view->View()->FBORelease(viewer->buffer);
    viewer->context->RemoveAll(false);
    viewer->view->Remove();
    viewer.reset();
}

const std::vector<std::uint8_t>& AisPeer::draw(const gp_Pnt& eye, const gp_Pnt& target, double verticalAngle)
{
    const KeptContext kept;
    const Handle(Graphic3d_Camera)& camera = viewer->view->Camera();
    camera->SetUp(gp::DZ());
    camera->SetEyeAndCenter(eye, target);
    camera->SetFOVy(verticalAngle * 180 / std::numbers::pi);
    viewer->view->Invalidate();
    viewer->view->Redraw();
    if (!viewer->view->View()->BufferDump(viewer->picture, Graphic3d_BT_RGB))
        throw std::runtime_error("Open CASCADE's viewer gives no picture");
    const Image_PixMap& picture = viewer->picture;
    viewer->pixels.assign(picture.Data(), picture.Data() + picture.SizeBytes());
    return viewer->pixels;
}

} // namespace vrk::bench
