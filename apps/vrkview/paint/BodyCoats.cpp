#include "paint/BodyCoats.h"

#include "canvas/ViewState.h"
#include "edit/ModelPlaces.h"

#include "mesh/paint/PaintMesh.h"
#include "platform/process/ThicknessMap.h"
#include "scene/Scene.h"
#include "visual/PaintVisual.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::process::Coverage;
using vrk::rob::Posd;
using vrk::rob::Posed;
using vrk::rob::Vec3d;
using vrk::visual::PaintMesh;
using vrk::visual::PaintVisual;
using vrk::visual::Scene;
using vrk::visual::Visual;

constexpr unsigned theSpray = 1;      // the viewer has one, of which all skins know
constexpr double pieceOfSpot = 0.1;   // a stroke is reckoned in pieces of this part of the radius of the gun's spot
constexpr double reachOfProbe = 0.01; // of the skin's extent: so far it may lie from what was picked
constexpr double micrometres = 1000;  // in a millimetre

std::vector<unsigned> paintableIn(const std::vector<unsigned>& things)
{
    std::vector<unsigned> found = bodyIdsIn(things);
    std::erase_if(found, [](unsigned id) {
        if (!Scene::HasVisual(id))
            return true;
        const VisualType type = Scene::GetVisual(id)->getType();
        return type != VisualType::Solid && type != VisualType::Mesh;
    });
    return found;
}

double extentOf(PaintMesh& mesh)
{
    return std::max({mesh.getBounds().getExtent(0), mesh.getBounds().getExtent(1), mesh.getBounds().getExtent(2)});
}

std::vector<unsigned> allOf(std::size_t count)
{
    std::vector<unsigned> vertices(count);
    std::iota(vertices.begin(), vertices.end(), 0U);
    return vertices;
}

} // namespace

BodyCoats::BodyCoats(ViewState& state, QObject* parent) : QObject(parent)
{
    connect(&state, &ViewState::stationChanged, this, &BodyCoats::follow);
}

BodyCoats::~BodyCoats() = default;

// Skins

PaintVisual* BodyCoats::visualOf(unsigned body)
{
    if (!Scene::HasVisual(body))
        return nullptr;
    for (Visual* child : Scene::GetVisual(body)->getChildren())
        if (child->getType() == VisualType::Paint)
            return dynamic_cast<PaintVisual*>(child);
    return nullptr;
}

/// That of the mesh that the body has now; null without one.
const BodyCoats::Skin* BodyCoats::skinOf(unsigned body) const
{
    PaintVisual* visual = visualOf(body);
    const auto found = visual ? skins.find({body, visual->getMesh()->vertices.size()}) : skins.end();
    return found == skins.end() ? nullptr : &found->second;
}

std::vector<unsigned> BodyCoats::cover(const std::vector<unsigned>& things)
{
    std::vector<unsigned> covered;
    for (const unsigned body : paintableIn(things))
        if (take(body))
            covered.push_back(body);
    emit changed();
    return covered;
}

/// False for a body that takes no paint.
bool BodyCoats::take(unsigned body)
{
    if (!visualOf(body))
        Scene::Get()->doCreatePaintVisual(theSpray, body);
    PaintVisual* visual = visualOf(body);
    if (!visual)
        return false;
    const PaintMesh& mesh = *visual->getMesh();
    if (!skinOf(body))
        skins.emplace(Key(body, mesh.vertices.size()), Skin{vrk::process::Coat(mesh.vertices, mesh.normals),
                                                            vrk::process::CoatProbe(mesh.vertices, mesh.indices),
                                                            std::vector<float>(mesh.vertices.size())});
    draw(body, *skinOf(body));
    return true;
}

void BodyCoats::uncover(const std::vector<unsigned>& bodies)
{
    for (const unsigned body : bodies) {
        std::erase_if(skins, [body](const auto& each) { return each.first.first == body; });
        if (visualOf(body))
            Scene::Get()->removePaintVisual(theSpray, body);
    }
    emit changed();
}

void BodyCoats::forget()
{
    const std::vector<unsigned> bodies = getBodies();
    skins.clear();
    uncover(bodies);
}

std::vector<unsigned> BodyCoats::getBodies() const
{
    std::vector<unsigned> bodies;
    for (const auto& [key, skin] : skins)
        if ((bodies.empty() || bodies.back() != key.first) && visualOf(key.first))
            bodies.push_back(key.first);
    return bodies;
}

/// Bodies that came back are drawn without their paint.
void BodyCoats::follow()
{
    std::vector<unsigned> back;
    for (const auto& [key, skin] : skins)
        if (Scene::HasVisual(key.first) && !visualOf(key.first) && (back.empty() || back.back() != key.first))
            back.push_back(key.first);
    for (const unsigned body : back)
        take(body);
    emit changed();
}

// What lies on them

std::vector<BodyCoats::Patch> BodyCoats::spray(const std::vector<unsigned>& bodies, const vrk::process::SprayGun& gun,
                                               const std::vector<vrk::process::SprayPlace>& way, double speed,
                                               double from, double to)
{
    gun.check();
    const double piece = std::max(pieceOfSpot * gun.reach * std::tan(gun.halfAngle) / 2, (to - from) / 1e5);
    std::vector<Patch> patches;
    for (const unsigned body : bodies) {
        Skin* skin = skinOf(body);
        if (!skin)
            continue;
        const Posed back = worldPoseOfThing(body).inverse();
        std::vector<vrk::process::SprayPlace> onBody;
        for (const vrk::process::SprayPlace& place : way)
            onBody.push_back({back * place.nozzle, back * place.axis});
        Patch patch{body, {}, skin->coat.getThickness(), {}};
        vrk::process::Coat& coat = skin->coat;
        coat.sprayAlong(gun, vrk::process::SprayWay(std::move(onBody), speed), from, to, piece, patch.vertices);
        std::ranges::sort(patch.vertices);
        const auto [same, end] = std::ranges::unique(patch.vertices);
        patch.vertices.erase(same, end);
        std::vector<float> before;
        for (const unsigned vertex : patch.vertices) {
            before.push_back(patch.before[vertex]);
            patch.after.push_back(coat.getThickness()[vertex]);
        }
        patch.before = std::move(before);
        drawVertices(body, *skin, patch.vertices);
        if (!patch.vertices.empty())
            patches.push_back(std::move(patch));
    }
    emit changed();
    return patches;
}

void BodyCoats::put(unsigned body, std::span<const unsigned> vertices, std::span<const float> thickness)
{
    Skin* skin = skinOf(body);
    if (!skin || (!vertices.empty() && std::ranges::max(vertices) >= skin->parts.size()))
        return;
    std::vector<float> all = skin->coat.getThickness();
    for (std::size_t i = 0; i < vertices.size(); ++i)
        all[vertices[i]] = thickness[i];
    skin->coat.setThickness(std::move(all));
    drawVertices(body, *skin, vertices);
    emit changed();
}

std::vector<float> BodyCoats::getThickness(unsigned body) const
{
    const Skin* skin = skinOf(body);
    return skin ? skin->coat.getThickness() : std::vector<float>();
}

void BodyCoats::setThickness(unsigned body, const std::vector<float>& thickness)
{
    put(body, allOf(thickness.size()), thickness);
}

void BodyCoats::drawVertices(unsigned body, Skin& skin, std::span<const unsigned> vertices)
{
    for (const unsigned vertex : vertices)
        skin.parts[vertex] = skin.coat.getThickness()[vertex] / static_cast<float>(target.thickness);
    if (PaintVisual* visual = visualOf(body); visual && visual->getMesh()->vertices.size() == skin.parts.size())
        visual->setThickness(skin.parts, vertices);
}

void BodyCoats::draw(unsigned body, Skin& skin)
{
    if (PaintVisual* visual = visualOf(body))
        visual->showThickness(static_cast<float>(target.low() / target.thickness),
                              static_cast<float>(target.high() / target.thickness),
                              static_cast<float>(target.mostShown() / target.thickness));
    drawVertices(body, skin, allOf(skin.parts.size()));
}

void BodyCoats::setTarget(const vrk::process::ThicknessTarget& wanted)
{
    target = wanted;
    for (const unsigned body : getBodies())
        draw(body, *skinOf(body));
    emit changed();
}

// What is told of them

BodyCoats::Shares BodyCoats::getShares() const
{
    Shares shares;
    for (const unsigned body : getBodies())
        for (const float each : skinOf(body)->coat.getThickness())
            switch (coverageOf(each, target)) {
            case Coverage::Bare:
                break;
            case Coverage::BelowTarget:
                shares.below += 1;
                break;
            case Coverage::OnTarget:
                shares.on += 1;
                break;
            case Coverage::AboveTarget:
                shares.above += 1;
                break;
            }
    const double painted = shares.below + shares.on + shares.above;
    shares.painted = static_cast<std::size_t>(painted);
    if (painted > 0)
        for (double* share : {&shares.below, &shares.on, &shares.above})
            *share /= painted;
    return shares;
}

std::optional<vrk::process::ThicknessMap> BodyCoats::mapOf(unsigned body) const
{
    const Skin* skin = skinOf(body);
    if (!skin)
        return std::nullopt;
    const PaintMesh& mesh = *visualOf(body)->getMesh();
    return vrk::process::ThicknessMap{mesh.vertices, skin->coat.getThickness(), mesh.indices};
}

std::optional<double> BodyCoats::thicknessAt(unsigned body, const Posd& place, const Vec3d& outwards) const
{
    const Skin* skin = skinOf(body);
    if (!skin)
        return std::nullopt;
    const Posed back = worldPoseOfThing(body).inverse();
    const auto at =
        skin->probe.at(back * place, back.rotation() * outwards, reachOfProbe * extentOf(*visualOf(body)->getMesh()));
    if (!at)
        return std::nullopt;
    return at->valueOf(skin->coat.getThickness());
}

QString BodyCoats::textOf(double thickness) const
{
    const QString value = tr("%1 µm").arg(thickness * micrometres, 0, 'f', 1);
    switch (coverageOf(thickness, target)) {
    case Coverage::BelowTarget:
        return tr("%1, below target").arg(value);
    case Coverage::OnTarget:
        return tr("%1, on target").arg(value);
    case Coverage::AboveTarget:
        return tr("%1, above target").arg(value);
    default:
        return tr("bare");
    }
}

} // namespace vrkview
