// Writes the demo's shapes into the file that is taken into the program. The build runs it.

#include "demo/DemoStation.h"
#include "demo/KeptShapes.h"
#include "files/Station.h"

#include "platform/station/GeometryCache.h"

#include <Standard_Failure.hxx>

#include <cstdlib>
#include <exception>
#include <iostream>

std::span<const std::byte> vrkview::demo::keptBytes()
{
    return {};
}

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "Writes the demo's shapes; usage: " << argv[0] << " FILE\n";
        return EXIT_FAILURE;
    }
    try {
        const vrkview::demo::ShapesMadeAnew made;
        vrkview::demoStation();
        vrk::station::writeWhole(argv[1], vrkview::demo::bytesOf(made.get()));
        return EXIT_SUCCESS;
    } catch (const Standard_Failure& failure) {
        std::cerr << argv[0] << ": " << failure.GetMessageString() << '\n';
    } catch (const std::exception& failure) {
        std::cerr << argv[0] << ": " << failure.what() << '\n';
    }
    return EXIT_FAILURE;
}
