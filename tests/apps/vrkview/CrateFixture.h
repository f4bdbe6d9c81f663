#pragma once

#include "MouseFixture.h"
#include "demo/DemoParts.h"
#include "demo/DemoSolids.h"
#include "files/Station.h"
#include "files/StationScene.h"

#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "scene/Scene.h"

#include <vector>

namespace vrkview::test {

/// The window with boxes above the station, which a test adds and may take away.
template <typename Base = MouseFixture>
class WithCrates : public Base {
protected:
    void TearDown() override
    {
        for (const unsigned crate : crates) {
            removeFromScene(crate);
            vrk::layout::Layout::inst().remove(crate);
        }
        Base::state().stationHasChanged();
        Base::TearDown();
    }
    /// A cube of 300 standing on this place.
    unsigned addCrate(const std::string& name, const vrk::rob::Posed& place = demo::at(0, 0, 2300))
    {
        return addShape(name, place, demo::box({-150, -150, 0}, {150, 150, 300}));
    }
    unsigned addShape(const std::string& name, const vrk::rob::Posed& place, const TopoDS_Shape& shape)
    {
        Station station;
        station.parts = {demo::single(name, place, shape, demo::color::wood)};
        crates.push_back(station.parts.front()->getId());
        addToStation(station);
        Base::state().stationHasChanged();
        Base::view().drain();
        return crates.back();
    }
    static void removeFromScene(unsigned crate)
    {
        if (vrk::visual::Scene::HasVisual(crate))
            vrk::visual::Scene::Get()->removeVisual(crate);
        Base::view().drain();
    }

private:
    std::vector<unsigned> crates;
};

} // namespace vrkview::test
