#pragma once

#include "platform/common/Export.h"

#include <memory>
#include <string>
#include <unordered_map>

namespace sdf {
class Element;
}

namespace vrk {

/// The colours of one body, as texts.
struct ColorInfo {
    std::string bodyColor = "#B4B9BE";
    std::unordered_map<unsigned, std::string> faceColors; ///< by face number from 1; only faces that differ
};

namespace geometry {

/// What colours the model gives a body. Any thread; the forms that take an id hold the model's shared lock meanwhile.
/// An unknown id, or a body without a colour, has the default body colour.
class VRK_EXPORT BodyColorTool {
public:
    static ColorInfo GetColorInfo(unsigned id);
    static std::string GetFaceColor(unsigned id, unsigned face);
    static std::string GetBodyColor(unsigned id);
    static std::string GetBodyColor(const std::shared_ptr<sdf::Element>& element);
};

} // namespace geometry
} // namespace vrk
