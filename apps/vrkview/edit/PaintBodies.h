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
/// The colours lie in the mesh, so that bodies of one geometry share them in the view: those beside the ones that are
/// painted get the colour in the model, too, and a station that is opened again looks the same.
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
