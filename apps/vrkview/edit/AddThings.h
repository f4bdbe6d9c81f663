#pragma once

#include "edit/Change.h"

#include "files/Station.h"

#include <memory>

namespace vrkview {

/// What files brought, or the user made, joins the station.
class AddThings : public Change {
public:
    /// @param things  holds no whole station: that takes the place of the present one, and all steps with it.
    explicit AddThings(std::shared_ptr<const Station> things);
    /// For things that come from elsewhere.
    /// @param text  with a %1 for their title.
    AddThings(std::shared_ptr<const Station> things, const QString& text);

    void apply() override;
    void revert() override;

private:
    std::shared_ptr<const Station> things;
};

} // namespace vrkview
