#pragma once

#include "edit/Change.h"

#include "files/Station.h"

#include <memory>

namespace vrkview {

/// What files brought joins the station.
class AddThings : public Change {
public:
    /// @param things  holds no whole station: that takes the place of the present one, and all steps with it.
    explicit AddThings(std::shared_ptr<const Station> things);

    void apply() override;
    void revert() override;

private:
    std::shared_ptr<const Station> things;
};

} // namespace vrkview
