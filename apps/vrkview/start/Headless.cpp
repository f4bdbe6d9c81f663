#include "start/Headless.h"

#include "canvas/CloudLooks.h"
#include "canvas/FrameShade.h"
#include "canvas/Ghosts.h"
#include "canvas/HeightLegend.h"
#include "canvas/Surroundings.h"
#include "files/PictureFile.h"
#include "files/StationList.h"
#include "measure/StationDimensions.h"
#include "start/Options.h"
#include "start/StartUp.h"

#include "scene/Scene.h"
#include "scene/ViewLook.h"
#include "view/BandedPicture.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"

#include <QGuiApplication>
#include <QImage>
#include <QTemporaryDir>

#include <fmt/format.h>

#include <algorithm>
#include <clocale>
#include <iostream>
#include <optional>
#include <stdexcept>

namespace vrkview {
namespace {

using vrk::visual::BandedPicture;
using vrk::visual::Camera;
using vrk::visual::OffscreenTarget;

constexpr unsigned samples = 4;
constexpr long maxSupersampled = 4096L * 4096L; // pixels of the picture; above that the samples must do

std::filesystem::path fileFor(const Options& options, const View& view)
{
    if (options.views.size() == 1)
        return options.picture;
    const std::string name = fmt::format("{}-{}", options.picture.stem().string(), view.name);
    return options.picture.parent_path() / (name + options.picture.extension().string());
}

/// The cross of axes has its size in pixels; in a picture it has the part of it that it has in a window, or a larger one where
/// its letters could not be read.
/// @param scale  pixels that are drawn for each side of one of the picture.
void suitCross(const BandedPicture& target, int scale)
{
    constexpr float usualRows = 1000;
    constexpr float least = 0.55f; // letters of eight pixels
    const auto side = static_cast<float>(std::min(target.getWidth(), target.getHeight()));
    enlargeCross(std::max(side / usualRows, least * static_cast<float>(scale)));
}

/// What texts in pictures need of Qt, where there is no window.
class Fonts {
public:
    Fonts()
    {
        if (QCoreApplication::instance())
            return;
        // Without one, as on a build server, Qt takes another folder and says so beside what this program tells.
        if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
            qputenv("XDG_RUNTIME_DIR", folder.path().toLocal8Bit());
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application = std::make_unique<QGuiApplication>(count, words);
        std::setlocale(LC_NUMERIC, "C"); // Qt took the user's, with which other packages would misread numbers
    }

private:
    QTemporaryDir folder;
    int count = 1; // Qt keeps references to both
    char name[8] = "vrkview";
    char* words[2] = {name, nullptr};
    std::unique_ptr<QGuiApplication> application;
};

void copyInto(QImage& picture, int firstRow, std::span<const std::uint8_t> pixels)
{
    const std::size_t row = std::size_t{3} * static_cast<std::size_t>(picture.width());
    for (int y = 0; !pixels.empty(); ++y, pixels = pixels.subspan(row))
        std::ranges::copy(pixels.first(row), picture.scanLine(firstRow + y));
}

/// What the camera sees after the move that was posted, with a half of what is drawn as width and height where `scale` is 2.
QImage draw(BandedPicture& drawn, int scale)
{
    vrk::visual::Scene::Get()->processMsgs();
    StationDimensions::Get().updateWhole();
    if (isGroundShadowed())
        vrk::visual::TakeGroundShadow();
    const auto width = static_cast<int>(drawn.getWidth());
    QImage picture(width / scale, static_cast<int>(drawn.getHeight()) / scale, QImage::Format_RGB888);
    drawn.draw([&](unsigned firstRow, std::span<const std::uint8_t> pixels) {
        if (scale == 2)
            halveInto(picture, static_cast<int>(firstRow / 2), pixels, width);
        else
            copyInto(picture, static_cast<int>(firstRow), pixels);
    });
    return picture;
}

} // namespace

void takePictures(const Options& options)
{
    const QSize size(options.pictureWidth, options.pictureHeight);
    // Twice the size and then averaged: the samples smooth only the edges of triangles, not the highlights within.
    const int scale = long{size.width()} * size.height() <= maxSupersampled / 4 ? 2 : 1;
    BandedPicture drawn(*Camera::Get(), static_cast<unsigned>(scale * size.width()),
                        static_cast<unsigned>(scale * size.height()), samples);
    suitCameraToScene();
    suitCross(drawn, scale);
    vrk::visual::SetDepthShade(true);
    if (!options.whole.empty())
        showGhostsExcept(options.whole);
    StationDimensions::Get().setPixelRatio(scale);
    std::optional<Fonts> fonts; // where a picture has texts
    const auto take = [&](const std::filesystem::path& file) {
        QImage picture = draw(drawn, scale);
        if (shownHeights().clouds > 0) {
            if (!fonts)
                fonts.emplace();
            addHeightLegend(picture);
        }
        savePicture(picture, file);
    };
    if (options.views.empty()) {
        lookAsLeft();
        take(options.picture);
    }
    for (const View* view : options.views) {
        lookAlong(*view);
        take(fileFor(options, *view));
    }
}

PictureView::PictureView(const Options& options)
    : target(std::make_unique<OffscreenTarget>(static_cast<unsigned>(options.pictureWidth),
                                               static_cast<unsigned>(options.pictureHeight), 0u))
{
    Camera::Get()->setRenderTarget(target->renderTarget());
    suitCameraToScene();
    if (options.views.empty())
        lookAsLeft();
    else
        lookAlong(*options.views.front());
    vrk::visual::Scene::Get()->processMsgs();
}

PictureView::~PictureView() = default;

void printList(const Station& station)
{
    std::cout << listStation(station) << std::endl;
}

} // namespace vrkview
