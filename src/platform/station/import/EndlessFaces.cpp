// Faces that no thing has: a bound that went wrong makes one of 1e28 square millimetres of a small one.

#include "platform/station/import/CadParts.h"

#include <BRepBndLib.hxx>
#include <BRepTools_ReShape.hxx>
#include <Bnd_Box.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_DataMapOfShapeShape.hxx>
#include <TopTools_IndexedMapOfShape.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace vrk::station {
namespace {

constexpr double largest = 1e9;   // across, in model units: 1000 km
constexpr double farthest = 1e12; // from the origin, as places in a station

bool isEndless(const TopoDS_Shape& shape)
{
    Bnd_Box box;
    BRepBndLib::Add(shape, box);
    if (box.IsVoid())
        return false;
    if (box.IsOpen())
        return true;
    const gp_Pnt low = box.CornerMin(), high = box.CornerMax();
    const double extent = low.Distance(high);
    const double reach = std::max(low.XYZ().Modulus(), high.XYZ().Modulus());
    return !(extent <= largest && reach <= farthest); // also of no number
}

/// Takes endless faces out of shapes, and remembers them: occurrences share theirs.
class EndlessFaces {
public:
    /// The body without them, and with its colours on the faces that they were on. @return whether anything is left.
    bool takeOut(CadBody& body);
    std::string note() const;

private:
    TopoDS_Shape without(const CadBody& body);

    TopTools_DataMapOfShapeShape known; // what is left of those that had some
    TopTools_IndexedMapOfShape seen;
    std::size_t faces = 0; // of all
    std::size_t out = 0;
    std::set<std::string> bodies; // that had some
};

bool EndlessFaces::takeOut(CadBody& body)
{
    const TopoDS_Shape before = body.shape;
    if (seen.Contains(before)) {
        if (!known.IsBound(before))
            return true;
        body.shape = known.Find(before);
    } else {
        seen.Add(before);
        body.shape = without(body);
        if (body.shape.IsEqual(before))
            return true;
        known.Bind(before, body.shape);
    }
    if (body.shape.IsNull())
        return false;
    TopTools_IndexedMapOfShape all, left;
    TopExp::MapShapes(before, TopAbs_FACE, all);
    TopExp::MapShapes(body.shape, TopAbs_FACE, left);
    std::map<unsigned, std::string> colors;
    for (const auto& [face, color] : body.faceColors)
        if (const int index = left.FindIndex(all(static_cast<int>(face))); index > 0)
            colors[static_cast<unsigned>(index)] = color;
    body.faceColors = std::move(colors);
    return true;
}

/// Null where nothing is left.
TopoDS_Shape EndlessFaces::without(const CadBody& body)
{
    TopTools_IndexedMapOfShape all;
    TopExp::MapShapes(body.shape, TopAbs_FACE, all);
    faces += static_cast<std::size_t>(std::max(1, all.Extent())); // a curve counts as one
    if (!isEndless(body.shape))
        return body.shape;
    const Handle(BRepTools_ReShape) change = new BRepTools_ReShape;
    std::size_t removed = 0;
    for (int i = 1; i <= all.Extent(); ++i) {
        if (!isEndless(all(i)))
            continue;
        change->Remove(all(i));
        ++removed;
    }
    if (removed == 0 && all.Extent() > 0)
        return body.shape; // they lie far from each other
    out += std::max<std::size_t>(1, removed);
    bodies.insert(body.name);
    if (static_cast<int>(removed) == all.Extent())
        return {};
    return change->Apply(body.shape);
}

std::string EndlessFaces::note() const
{
    if (out == 0)
        return {};
    return fmt::format("{} of {} faces and curves {} without end or larger than 1000 km and left out: of {}", out,
                       faces, out == 1 ? "is" : "are", listed({bodies.begin(), bodies.end()}));
}

/// Parts without a body, and assemblies without a part, go; the owners of the others have other numbers then.
void dropEmpty(CadParts& parts)
{
    std::vector<bool> isKept;
    for (const CadPart& part : parts)
        isKept.push_back(!part.bodies.empty());
    for (std::size_t i = parts.size(); i-- > 0;)
        if (isKept[i] && parts[i].owner != 0)
            isKept[parts[i].owner - 1] = true;
    std::vector<std::uint32_t> numbers(parts.size() + 1, 0);
    CadParts kept;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (!isKept[i])
            continue;
        parts[i].owner = numbers[parts[i].owner];
        kept.push_back(std::move(parts[i]));
        numbers[i + 1] = static_cast<std::uint32_t>(kept.size());
    }
    parts = std::move(kept);
}

} // namespace

void leaveOutEndless(CadContent& content)
{
    EndlessFaces endless;
    bool isAnyEmpty = false;
    for (CadPart& part : content.parts) {
        std::erase_if(part.bodies, [&endless](CadBody& body) { return !endless.takeOut(body); });
        isAnyEmpty = isAnyEmpty || (part.bodies.empty() && !part.isAssembly);
    }
    if (isAnyEmpty)
        dropEmpty(content.parts);
    if (const std::string note = endless.note(); !note.empty())
        content.notes.push_back(note);
}

std::string listed(const std::vector<std::string>& names)
{
    constexpr std::size_t most = 6;
    const std::size_t shown = names.size() <= most + 1 ? names.size() : most;
    std::string text;
    for (std::size_t i = 0; i < shown; ++i)
        text += (i == 0 ? "" : ", ") + names[i];
    return shown == names.size() ? text : fmt::format("{} and {} more", text, names.size() - shown);
}

} // namespace vrk::station
