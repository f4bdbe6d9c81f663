#pragma once

#include "Station.h"
#include "TemporaryFolder.h"

namespace vrkview {

/// The station that is shown when no file is named: machined parts on a fixture plate, a gear case whose front face is
/// hidden, and a printed vase that comes as an STL file.
///
/// Owner: keep it until the visuals are built; with it goes the folder of the STL file. Thread: any one thread.
class DemoStation {
public:
    /// @throws std::runtime_error if the STL file cannot be written.
    DemoStation();

    const Station& getStation() const { return station; }

private:
    TemporaryFolder folder;
    Station station;
};

} // namespace vrkview
