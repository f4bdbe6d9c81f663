#include "view/WindowTarget.h"

#include "view/Camera.h"
#include "view/NativeDisplay.h"
#include "view/StartedRoot.h"
#include "view/TargetPixels.h"

#include <fmt/format.h>

#include <Ogre.h>

#include <cmath>
#include <stdexcept>

namespace vrk::visual {
namespace {

constexpr std::uint32_t plainGrey = 0xff737373; // 0.45 of each, as cameras draw it where there is nothing
constexpr unsigned largestSide = 16384;         // the least of what drivers and X11 have

void checkSize(unsigned width, unsigned height)
{
    if (width == 0 || height == 0 || width > largestSide || height > largestSide)
        throw std::runtime_error(fmt::format("A window cannot have {} x {} pixels.", width, height));
}

Ogre::RenderWindow* makeWindow(Ogre::Root& root, std::uintptr_t parent, unsigned width, unsigned height,
                               unsigned samples)
{
    static unsigned counter = 0;
    const Ogre::NameValuePairList parameters = {
        {"parentWindowHandle", std::to_string(parent)}, {"FSAA", std::to_string(samples)}, {"vsync", "false"}};
    try {
        return root.createRenderWindow("WindowTarget" + std::to_string(++counter), width, height, false, &parameters);
    } catch (const Ogre::Exception& failure) {
        throw std::runtime_error(fmt::format("The window {} cannot be drawn to: {}", parent, failure.getDescription()));
    }
}

} // namespace

/// Hears of the first picture. From then on the display fills nothing that other windows uncover: it would show for a moment.
class WindowTarget::FirstPicture : public Ogre::RenderTargetListener {
public:
    FirstPicture(NativeDisplay& display, std::uintptr_t handle) : display(display), handle(handle) {}

    bool isDrawn() const { return drawn; }
    void postRenderTargetUpdate(const Ogre::RenderTargetEvent& event) override
    {
        if (drawn || event.source->getNumViewports() == 0)
            return;
        drawn = true;
        display.leaveWindow(handle);
    }

private:
    NativeDisplay& display;
    std::uintptr_t handle;
    bool drawn = false;
};

WindowTarget::WindowTarget(std::uintptr_t parent, unsigned width, unsigned height, unsigned samples)
{
    Ogre::Root& root = startedRoot();
    checkSize(width, height);
    display = std::make_unique<NativeDisplay>();
    if (!display->hasWindow(parent))
        throw std::runtime_error(fmt::format("{} is no window of this display.", parent));
    window = makeWindow(root, parent, width, height, samples);
    window->getCustomAttribute("WINDOW", &handle);
    // It asks the display on OGRE's connection, which is done with making the window by the time of the answer. Depending on
    // its version OGRE then takes the size of the parent.
    window->windowMovedOrResized();
    display->fillWindow(handle, plainGrey);
    display->clearWindow(handle); // OGRE's are black
    firstPicture = std::make_unique<FirstPicture>(*display, handle);
    window->addListener(firstPicture.get());
    fit(width, height);
}

WindowTarget::~WindowTarget()
{
    window->removeListener(firstPicture.get());
    window->removeAllViewports();
    Ogre::Root::getSingleton().destroyRenderTarget(window);
    display->destroyWindow(handle); // OGRE leaves a window with a parent to the end of that
}

unsigned WindowTarget::getWidth() const
{
    return window->getWidth();
}

unsigned WindowTarget::getHeight() const
{
    return window->getHeight();
}

void WindowTarget::resize(unsigned width, unsigned height)
{
    checkSize(width, height);
    if (width == getWidth() && height == getHeight())
        return;
    display->fillWindow(handle, plainGrey);
    fit(width, height);
    if (firstPicture->isDrawn())
        display->leaveWindow(handle);
    // A driver may look for the size only here, and draw the next picture in pixels of the old one otherwise. The new part of
    // what it shows is black.
    display->coverWindow(handle, width, height);
    window->swapBuffers();
    window->windowMovedOrResized(); // as above: what was shown has come to the display by then
    fit(width, height);
    display->uncoverWindow();
    Camera::FitThoseOf(*window);
}

void WindowTarget::fit(unsigned width, unsigned height)
{
    window->resize(width, height);
    display->resizeWindow(handle, width, height);
}

void WindowTarget::setDevicePixelRatio(double ratio)
{
    if (!(ratio > 0) || !std::isfinite(ratio))
        throw std::invalid_argument("The pixel ratio of a window must be above 0 and finite");
    devicePixelRatio = ratio;
}

Ogre::RenderTarget* WindowTarget::renderTarget() const
{
    return window;
}

void WindowTarget::draw()
{
    window->update(true);
}

std::vector<std::uint8_t> WindowTarget::read()
{
    if (window->getNumViewports() == 0)
        throw std::logic_error("No camera draws into the window.");
    window->update(false);
    return readPixels(*window);
}

void WindowTarget::savePng(const std::filesystem::path& file)
{
    writePng(file, getWidth(), getHeight(), read());
}

} // namespace vrk::visual
