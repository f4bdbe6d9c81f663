#pragma once

#include "canvas/Backdrop.h"
#include "canvas/DrawMode.h"
#include "canvas/Views.h"
#include "files/FileStation.h"
#include "files/JointWishes.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vrkview {

/// What the command line asks for.
struct Options {
    enum class Task { OpenWindow, PlaySession, TakePicture, ListTree, Pick, PickGrid };

    Task task = Task::OpenWindow;
    std::vector<std::filesystem::path> files; // none: the demo station
    ReadingOptions reading;                   // of the files
    std::filesystem::path picture;
    int pictureWidth = 1600;
    int pictureHeight = 1000;
    std::vector<const View*> views; // none: the one that the station was left with
    std::vector<float> picks;       // x, y of each pixel of the picture
    bool listsCandidates = false;   // of each of them
    int gridColumns = 0;
    int gridRows = 0;
    std::filesystem::path pickPicture; // empty: none
    std::filesystem::path recording;   // made of what is done in the window; empty: none
    std::filesystem::path session;     // to be played
    std::filesystem::path playPicture; // of the view after that; empty: none
    std::filesystem::path playSave;    // the station after that; empty: none
    std::vector<std::string> whole;    // what the picture has that is no ghost; empty: all
    const DrawMode* drawMode = nullptr;
    std::optional<Backdrop> backdrop = usualBackdrop(); // nothing: the library's plain grey
    bool hasGroundShadow = true;
    bool cloudsByHeight = false;  // also those that have colours
    bool isDrawModeGiven = false; // rather than the usual one
    bool onPresentDisplay = false;
    std::vector<JointWish> joints;
    std::filesystem::path save;      // where the station is written; empty: nowhere
    std::filesystem::path resources; // empty: the installed ones
};

/// Reads the command line. What there is to tell (help, version, what is wrong) is printed here.
/// @return the exit code where the program has nothing more to do: 0 after help and version, 1 for a wrong command line.
std::optional<int> parseOptions(int argc, const char* const* argv, Options& options);

} // namespace vrkview
