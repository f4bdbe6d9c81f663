#pragma once

#include "edit/Change.h"

#include "platform/sdf/Element.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vrkview {

/// Bodies get one colour, faces with colours of their own included.
///
/// In the view the colours belong to the mesh, which all bodies of one geometry share. So every body of that geometry gets
/// the colour in the model, too; otherwise a station that is saved and opened again would look different.
class PaintBodies : public Change {
public:
    /// @param things  all bodies in these are meant, however deep: of an assembly those of its members.
    /// @param color   a colour text such as "#ED1C24".
    PaintBodies(const std::vector<unsigned>& things, const std::string& color);

    bool isNeeded() const override { return !bodies.empty(); }
    void apply() override;
    void revert() override;

    /// The colour of the first body in these; empty where there is none, or it has the usual colour.
    static std::string ColorOf(const std::vector<unsigned>& things);

private:
    struct Colors {
        unsigned body = 0;
        std::optional<std::string> color;
        std::vector<std::pair<std::string, sdf::Element::Value>> faces; // by the names of their elements
    };

    static Colors read(unsigned body);
    static void put(const Colors& colors);
    void show() const;

    std::vector<Colors> bodies; // as they were
    std::string color;
};

} // namespace vrkview
