#include "platform/geometry/BodyColorTool.h"

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"

#include <charconv>
#include <mutex>
#include <string_view>

namespace vrk::geometry {
namespace {

std::string bodyColorOf(const sdf::Element& element)
{
    const std::string text = sdf::textAt(element, "visual/color");
    return text.empty() ? ColorInfo().bodyColor : text;
}

/// The face number in a name such as "f12"; 0 where it is none.
unsigned faceOf(std::string_view name)
{
    unsigned face = 0;
    if (!name.starts_with('f'))
        return 0;
    const char* const end = name.data() + name.size();
    const auto [stop, error] = std::from_chars(name.data() + 1, end, face);
    return error == std::errc() && stop == end ? face : 0;
}

ColorInfo colorsOf(const sdf::Element& element)
{
    ColorInfo info;
    info.bodyColor = bodyColorOf(element);
    if (const std::shared_ptr<sdf::Element> faces = element.get("visual/face_colors")) {
        for (const std::shared_ptr<sdf::Element>& child : faces->getChildren()) {
            const unsigned face = faceOf(child->getName());
            if (std::string text = child->asString(); face != 0 && !text.empty())
                info.faceColors.insert_or_assign(face, std::move(text));
        }
    }
    return info;
}

} // namespace

ColorInfo BodyColorTool::GetColorInfo(unsigned id)
{
    sdf::SdfManager& manager = sdf::SdfManager::inst();
    const std::shared_lock lock(manager.mutex());
    const auto* node = dynamic_cast<const sdf::SdfNode*>(manager.find(id));
    return node == nullptr ? ColorInfo() : colorsOf(*node->getElement());
}

std::string BodyColorTool::GetFaceColor(unsigned id, unsigned face)
{
    const ColorInfo info = GetColorInfo(id);
    const auto found = info.faceColors.find(face);
    return found == info.faceColors.end() ? info.bodyColor : found->second;
}

std::string BodyColorTool::GetBodyColor(unsigned id)
{
    return GetColorInfo(id).bodyColor;
}

std::string BodyColorTool::GetBodyColor(const std::shared_ptr<sdf::Element>& element)
{
    return element == nullptr ? ColorInfo().bodyColor : bodyColorOf(*element);
}

} // namespace vrk::geometry
