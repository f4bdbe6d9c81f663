#pragma once

#include "platform/common/Export.h"

#include <chrono>
#include <cstdint>
#include <filesystem>

namespace vrk::station {

/// How STEP, IGES and BREP files are read.
///
/// A damaged file can crash Open CASCADE, or keep it busy for ever, where nothing foresees it. So these files are read,
/// transferred and meshed by a program of their own, "vrkcadreader", one run for each file; what comes back is looked
/// through before it is used. An import that fails, whatever way, is an `ImportError`, and the application goes on.
struct CadReaderSettings {
    /// Reads in the application's own process instead, without limits: a crash of Open CASCADE ends the application.
    bool inOwnProcess = false;
    /// The program; empty for the one that is installed with the library.
    std::filesystem::path program;
    /// Milliseconds without any progress after which an import is given up; 0 for no limit. The parse of a STEP file tells
    /// nothing until it is done: up to a minute for each 300 MB.
    std::chrono::milliseconds longestSilence = std::chrono::minutes(10);
    /// Milliseconds that an import may take; 0 for no limit.
    std::chrono::milliseconds longestTime{0};
    /// Bytes of memory that an import may take; 0 for nine tenths of what the machine has. Builds with sanitizers hold to
    /// no limit.
    std::uint64_t mostMemory = 0;
};

/// Any thread; it holds for the imports that begin later.
VRK_EXPORT void SetCadReaderSettings(const CadReaderSettings& settings);
VRK_EXPORT CadReaderSettings GetCadReaderSettings();

/// The program that the settings name, else "vrkcadreader" beside this library, else in libexec/vrkvisual of the
/// installation that the library lies in. The file may be absent. Any thread.
VRK_EXPORT std::filesystem::path GetCadReaderPath();

} // namespace vrk::station
