#include "canvas/Pick.h"

#include "files/ObjectNames.h"
#include "files/PictureFile.h"
#include "start/Headless.h"
#include "start/Options.h"

#include "scene/Scene.h"
#include "selection/VisualSelection.h"
#include "visual/SolidVisual.h"

#include <QColor>
#include <QImage>

#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iostream>
#include <vector>

namespace vrkview {
namespace {

using Json = nlohmann::ordered_json;
using vrk::selection::Result;
using vrk::selection::VisualSelection;
using vrk::visual::SolidVisual;
using vrk::visual::Visual;

constexpr QRgb nothingColor = qRgb(115, 115, 115); // as the empty view

Json toJson(const vrk::rob::PosTemplate<float>& p)
{
    return Json::array({p.x, p.y, p.z});
}

/// Of all that can be picked, the frames of a work object too, which the tree of the station leaves out.
const char* kindOfPicked(const Visual& visual)
{
    const char* listed = kindOf(visual);
    return listed ? listed : "frame";
}

/// An edge by its number, from 1, in the shape that it belongs to.
Json edgeOf(const Result& result)
{
    if (const auto param = result.getEdgeParam()) {
        TopTools_IndexedMapOfShape edges;
        TopExp::MapShapes(result.shape, TopAbs_EDGE, edges);
        return {{"index", edges.FindIndex(result.edge)}, {"param", *param}};
    }
    if (const auto edge = result.getFaceEdge())
        return {{"index", edge->index}, {"param", edge->param}};
    return nullptr;
}

/// All that a click there could mean, best first.
Json candidatesAt(float x, float y)
{
    using Clock = std::chrono::steady_clock;
    VisualSelection& service = *VisualSelection::Get();
    service.update();
    vrk::selection::PickQuery query;
    query.camera = vrk::selection::PickCamera::Main();
    query.x = x;
    query.y = y;
    const Clock::time_point start = Clock::now();
    const vrk::selection::PickAnswer answer = query.askAll(service);
    const double microseconds = std::chrono::duration<double, std::micro>(Clock::now() - start).count();
    Json list = Json::array();
    for (const vrk::selection::PickCandidate& candidate : answer.candidates)
        list.push_back(describe(candidate));
    return {{"x", x}, {"y", y}, {"candidates", list}, {"microseconds", microseconds}};
}

/// What was hit under which cells of a grid.
class PickGrid {
public:
    PickGrid(int columns, int rows) : columns(columns), rows(rows) {}

    void pick(int width, int height)
    {
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < columns; ++column) {
                const Pick found = pickAt((static_cast<float>(column) + 0.5f) * static_cast<float>(width) / columns,
                                          (static_cast<float>(row) + 0.5f) * static_cast<float>(height) / rows);
                cells.push_back(found.result.visual);
                times.push_back(found.microseconds);
            }
        gatherObjects();
    }

    Json summary() const
    {
        std::vector<double> sorted = times;
        std::ranges::sort(sorted);
        Json list = Json::array();
        for (const Object& object : objects)
            list.push_back({{"id", object.id},
                            {"name", nameOf(*object.visual)},
                            {"type", kindOfPicked(*object.visual)},
                            {"color", QColor(object.color).name().toStdString()},
                            {"cells", object.count}});
        const auto hits = cells.size() - static_cast<std::size_t>(std::ranges::count(cells, nullptr));
        return {{"grid", {columns, rows}},
                {"hits", hits},
                {"misses", cells.size() - hits},
                {"microseconds",
                 {{"median", sorted[sorted.size() / 2]},
                  {"p99", sorted[sorted.size() * 99 / 100]},
                  {"longest", sorted.back()}}},
                {"objects", list}};
    }

    QImage picture() const
    {
        QImage image(columns, rows, QImage::Format_RGB32);
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < columns; ++column)
                image.setPixel(column, row, colorOf(cells[static_cast<std::size_t>(row * columns + column)]));
        return image;
    }

private:
    struct Object {
        const Visual* visual;
        unsigned id;
        QRgb color;
        int count;
    };

    /// By ids, so that an object keeps its colour as long as the station stays the same. A target that several moves go to
    /// is drawn by each of them, and is one object.
    void gatherObjects()
    {
        for (const Visual* visual : cells) {
            if (!visual)
                continue;
            const auto known = std::ranges::find(objects, visual->getId(), &Object::id);
            if (known != objects.end())
                ++known->count;
            else
                objects.push_back({visual, visual->getId(), 0, 1});
        }
        std::ranges::sort(objects, {}, &Object::id);
        constexpr double goldenTurn = 0.6180339887; // neighbours in the list get colours far apart
        double hue = 0;
        int step = 0;
        for (Object& object : objects) {
            const int bright = 255 - 60 * (step++ % 3);
            object.color = QColor::fromHsv(static_cast<int>(hue * 360), 190, bright).rgb();
            hue = std::fmod(hue + goldenTurn, 1.0);
        }
    }

    QRgb colorOf(const Visual* visual) const
    {
        return visual ? std::ranges::find(objects, visual->getId(), &Object::id)->color : nothingColor;
    }

    int columns;
    int rows;
    std::vector<const Visual*> cells;
    std::vector<double> times;
    std::vector<Object> objects;
};

} // namespace

Pick pickAt(float x, float y)
{
    using Clock = std::chrono::steady_clock;
    VisualSelection& service = *VisualSelection::Get();
    service.update();
    Pick pick;
    const Clock::time_point start = Clock::now();
    pick.result = service.select(x, y);
    if (!pick.result.hit)
        if (Result point = service.selectPointInCloud(x, y); point.hit)
            pick.result = std::move(point);
    pick.microseconds = std::chrono::duration<double, std::micro>(Clock::now() - start).count();
    return pick;
}

Json describe(const Result& result)
{
    Json text = {{"hit", result.hit}};
    if (result.hit) {
        text["id"] = result.visual->getId();
        text["name"] = nameOf(*result.visual);
        text["type"] = kindOfPicked(*result.visual);
        if (const auto* solid = dynamic_cast<const SolidVisual*>(result.visual); solid && !result.face.IsNull())
            text["face"] = solid->getFaceIndex(TopoDS::Face(result.face));
        if (Json edge = edgeOf(result); !edge.is_null())
            text["edge"] = std::move(edge);
        if (result.pointIndex >= 0)
            text["point"] = result.pointIndex;
        text["distance"] = result.distance;
    }
    text["position"] = toJson(result.position); // without a hit, where the ray meets the floor
    return text;
}

Json describe(const vrk::selection::PickCandidate& candidate)
{
    Json text = {{"kind", nameOf(candidate.kind)},
                 {"id", candidate.visualId},
                 {"name", nameOf(*candidate.visual)},
                 {"type", kindOfPicked(*candidate.visual)}};
    if (candidate.subId >= 0)
        text["number"] = candidate.subId;
    text["distance"] = candidate.distance;
    text["pixels"] = candidate.pixels;
    text["position"] = {candidate.place.x, candidate.place.y, candidate.place.z};
    text["verdict"] = candidate.reason;
    return text;
}

void printPicks(const Options& options)
{
    const PictureView view(options);
    Json list = Json::array();
    for (std::size_t i = 0; i + 1 < options.picks.size(); i += 2) {
        const float x = options.picks[i], y = options.picks[i + 1];
        if (options.listsCandidates) {
            list.push_back(candidatesAt(x, y));
            continue;
        }
        const Pick pick = pickAt(x, y);
        Json entry = {{"x", x}, {"y", y}};
        entry.update(describe(pick.result));
        entry["microseconds"] = pick.microseconds;
        list.push_back(std::move(entry));
    }
    // Names come from files and may be in any encoding.
    std::cout << list.dump(2, ' ', false, Json::error_handler_t::replace) << std::endl;
}

void printPickGrid(const Options& options)
{
    const PictureView view(options);
    PickGrid grid(options.gridColumns, options.gridRows);
    grid.pick(options.pictureWidth, options.pictureHeight);
    if (!options.pickPicture.empty())
        savePicture(grid.picture().scaled(options.pictureWidth, options.pictureHeight), options.pickPicture);
    std::cout << grid.summary().dump(2, ' ', false, Json::error_handler_t::replace) << std::endl;
}

} // namespace vrkview
