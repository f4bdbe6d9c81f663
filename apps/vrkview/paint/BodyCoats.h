#pragma once

#include "platform/process/Coat.h"
#include "platform/process/SprayGun.h"
#include "platform/process/ThicknessColors.h"

#include <QObject>
#include <QString>

#include <map>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace vrk::visual {
class PaintVisual;
}
namespace vrk::process {
struct ThicknessMap;
}

namespace vrkview {

class ViewState;

/// How thick paint lies on the bodies of the station, drawn on them by colour. It is no part of the station and its file: a map
/// is saved for itself.
///
/// A body that leaves the scene and comes back has its paint again. One that has another mesh then is bare, until it has the
/// first one again.
///
/// Thread: the application's, which is the render thread.
class BodyCoats : public QObject {
    Q_OBJECT

public:
    /// @param state  outlives this.
    explicit BodyCoats(ViewState& state, QObject* parent = nullptr);
    ~BodyCoats() override;

    /// What a stroke of a spray changed on a body.
    struct Patch {
        unsigned body = 0;
        std::vector<unsigned> vertices; // each once
        std::vector<float> before, after;
    };
    /// How much of what is painted has which thickness: parts of its vertices, whose triangles are of one size.
    struct Shares {
        double below = 0, on = 0, above = 0;
        std::size_t painted = 0; ///< vertices
    };

    /// Gives a skin to all bodies with triangles in these things, however deep; bare ones where they are not painted yet.
    /// Bodies without are passed over. A large one takes a second.
    /// @return the bodies.
    /// @throws std::exception where a skin cannot be made, as for want of memory.
    std::vector<unsigned> cover(const std::vector<unsigned>& things);
    /// Takes the skins away with all that lies on them.
    void uncover(const std::vector<unsigned>& bodies);
    /// Every body is as if it had never been painted.
    void forget();
    /// Those that have skins in the view; ascending.
    std::vector<unsigned> getBodies() const;

    /// Sprays from one place along a way to another, seen from the world.
    /// @throws std::invalid_argument as `SprayGun::check` and `SprayWay`.
    std::vector<Patch> spray(const std::vector<unsigned>& bodies, const vrk::process::SprayGun& gun,
                             const std::vector<vrk::process::SprayPlace>& way, double speed, double from, double to);
    /// Writes what lies on some vertices of a body; nothing for a body that has another skin now, or none.
    void put(unsigned body, std::span<const unsigned> vertices, std::span<const float> thickness);
    /// Empty for a body without a skin.
    std::vector<float> getThickness(unsigned body) const;
    void setThickness(unsigned body, const std::vector<float>& thickness);

    /// What is wanted. It only changes how the paint is drawn.
    const vrk::process::ThicknessTarget& getTarget() const { return target; }
    void setTarget(const vrk::process::ThicknessTarget& wanted);
    Shares getShares() const;

    /// The skin of a body with what lies on it; empty for a body without.
    std::optional<vrk::process::ThicknessMap> mapOf(unsigned body) const;
    /// How thick the paint lies at a place of a body, both in the world.
    /// @param outwards  which way the body faces there, about.
    std::optional<double> thicknessAt(unsigned body, const vrk::rob::Posd& place,
                                      const vrk::rob::Vec3d& outwards) const;
    /// For the user: "38 µm, on target".
    QString textOf(double thickness) const;

signals:
    /// Another body is painted, something else lies on one, or the target is another.
    void changed();

private:
    struct Skin {
        vrk::process::Coat coat;
        vrk::process::CoatProbe probe;
        std::vector<float> parts; // of what is wanted
    };

    using Key = std::pair<unsigned, std::size_t>; // the body, and how many vertices the skin of its mesh has

    static vrk::visual::PaintVisual* visualOf(unsigned body);
    const Skin* skinOf(unsigned body) const;
    Skin* skinOf(unsigned body) { return const_cast<Skin*>(std::as_const(*this).skinOf(body)); }
    bool take(unsigned body);
    void draw(unsigned body, Skin& skin);
    void drawVertices(unsigned body, Skin& skin, std::span<const unsigned> vertices);
    void follow();

    vrk::process::ThicknessTarget target;
    std::map<Key, Skin> skins; // those of bodies that are not in the scene, too
};

} // namespace vrkview
