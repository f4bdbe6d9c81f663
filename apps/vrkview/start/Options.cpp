#include "start/Options.h"

#include "platform/station/SmoothMeshes.h"
#include "platform/station/StationFile.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <numbers>
#include <sstream>
#include <string_view>

namespace vrkview {
namespace {

constexpr int wrongCommandLine = 1;
constexpr int maxPictureSide = 8192; // what every driver with OpenGL 4 draws to

/// One side of a "<width>x<height>", taken off the front of `text`; 0 where there is no usable number.
int takeSide(std::string_view& text)
{
    int side = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), side);
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
    return error == std::errc() && side >= 1 && side <= maxPictureSide ? side : 0;
}

/// @param option  whose value `given` is.
void readSize(const std::string& given, const char* option, int& width, int& height)
{
    std::string_view text = given;
    width = takeSide(text);
    const bool isSeparated = text.starts_with('x');
    text.remove_prefix(isSeparated ? 1 : 0);
    height = takeSide(text);
    if (!isSeparated || !text.empty() || width == 0 || height == 0)
        throw CLI::ValidationError(
            option, fmt::format("'{}' is not a size such as 1600x1000, each side from 1 to {}", given, maxPictureSide));
}

/// @param values  of the option, each with numbers joined by commas.
/// @param told    what is told to be no number; null for the value.
template <typename Number>
void readNumbers(const std::vector<std::string>& values, const char* option, std::vector<Number>& numbers,
                 const std::string* told = nullptr)
{
    for (const std::string& value : values) {
        // A gap is no number either: what stands behind it would move to the place before.
        std::istringstream stream(value + ',');
        for (std::string text; std::getline(stream, text, ',');) {
            char* stop = nullptr;
            const double number = std::strtod(text.c_str(), &stop);
            if (stop == text.c_str() || *stop != '\0' || !std::isfinite(number))
                throw CLI::ConversionError(option, std::vector<std::string>{told ? *told : value});
            numbers.push_back(static_cast<Number>(number));
        }
    }
}

/// @param values  each with numbers, or "name=number", joined by commas.
void readJoints(const std::vector<std::string>& values, std::vector<JointWish>& wishes)
{
    for (const std::string& value : values) {
        std::istringstream stream(value + ',');
        for (std::string text; std::getline(stream, text, ',');) {
            const std::size_t sign = text.rfind('=');
            std::vector<double> number;
            const bool isNamed = sign != std::string::npos && sign > 0;
            readNumbers({isNamed ? text.substr(sign + 1) : text}, "--joints", number, &value);
            wishes.push_back({isNamed ? std::optional(text.substr(0, sign)) : std::nullopt, number.front()});
        }
    }
}

void checkPicks(const Options& options)
{
    if (options.picks.size() % 2 != 0)
        throw CLI::ValidationError("--pick", "a pixel is two numbers, x and y");
    for (std::size_t i = 0; i < options.picks.size(); ++i) {
        const int side = i % 2 == 0 ? options.pictureWidth : options.pictureHeight;
        if (!(options.picks[i] >= 0 && options.picks[i] <= static_cast<float>(side)))
            throw CLI::ValidationError("--pick", fmt::format("{} lies outside the picture of {}x{}", options.picks[i],
                                                             options.pictureWidth, options.pictureHeight));
    }
}

/// @param names  joined by commas.
void readViews(const std::string& names, Options& options)
{
    std::istringstream stream(names + ',');
    for (std::string name; std::getline(stream, name, ',');) {
        if (name == "all") {
            for (const View& view : allViews())
                options.views.push_back(&view);
        } else if (const View* view = findView(name)) {
            options.views.push_back(view);
        } else {
            throw CLI::ValidationError("--view", fmt::format("'{}' is none of {}, all", name, viewNames()));
        }
    }
}

/// @param tolerance  "auto" for the usual one.
Coarser readCoarser(const std::string& tolerance)
{
    if (tolerance == "auto")
        return {};
    std::vector<double> numbers;
    readNumbers({tolerance}, "--simplify", numbers);
    if (numbers.size() != 1 || numbers[0] < 0)
        throw CLI::ValidationError("--simplify", fmt::format("'{}' is no distance in millimetres", tolerance));
    return {numbers[0]};
}

/// @param angle  "auto" for the usual one.
double readSmooth(const std::string& angle)
{
    if (angle == "auto")
        return vrk::station::usualSmoothAngle;
    std::vector<double> numbers;
    readNumbers({angle}, "--smooth", numbers);
    if (numbers.size() != 1 || !(numbers[0] >= 0 && numbers[0] <= 180))
        throw CLI::ValidationError("--smooth", fmt::format("'{}' is no angle from 0 to 180 degrees", angle));
    return numbers[0] * std::numbers::pi / 180;
}

vrk::LengthUnit readUnit(const std::string& name)
{
    if (const auto unit = vrk::LengthUnitNamed(name))
        return *unit;
    throw CLI::ValidationError("--unit", fmt::format("'{}' is none of mm, cm, m, in", name));
}

std::optional<Backdrop> backdropNamed(const std::string& text)
{
    if (text == "none")
        return std::nullopt;
    if (const auto backdrop = readBackdrop(text))
        return backdrop;
    throw CLI::ValidationError("--background", fmt::format("'{}' is no colour such as #4080C0, nor none", text));
}

const DrawMode* readDrawMode(const std::string& name)
{
    if (const DrawMode* mode = findDrawMode(name))
        return mode;
    throw CLI::ValidationError("--display", fmt::format("'{}' is none of {}", name, drawModeNames()));
}

std::string complaintOfName(const std::string& file)
{
    return file.empty() ? "the name of a file is empty" : "";
}

std::string complaintOfPicture(const std::string& file)
{
    const std::string ending = std::filesystem::path(file).extension().string();
    const bool isPng = std::ranges::equal(ending, std::string_view(".png"), {},
                                          [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return isPng ? "" : fmt::format("'{}' does not end in .png", file);
}

void checkSave(const char* option, const std::filesystem::path& file)
{
    if (!file.empty() && !vrk::station::isStationFile(file)) // it could not be opened again
        throw CLI::ValidationError(option, fmt::format("'{}' does not end in .station.json", file.string()));
}

const char* const footer = "Keys in the window:\n"
                           "  F          everything in view, the direction kept\n"
                           "  Shift+F    what is selected in view\n"
                           "  1 to 6     from the front, back, left, right, top, bottom\n"
                           "  0 or I     from the front, above and to the right\n"
                           "  F5 to F8   shaded, shaded with edges, edges, wire\n"
                           "  F9, F10    lines, lines with the hidden ones dashed\n"
                           "  E          all but what is selected as ghosts\n"
                           "  G          shows or hides the grid\n"
                           "  N          lays the grid across the next axis: z, x, y\n"
                           "  + and -    longer and shorter frames\n"
                           "  Esc        selects nothing\n"
                           "  H          hides what is selected; Shift+H shows all\n"
                           "  Ctrl+O     opens more files\n"
                           "  F12        a picture of the view\n"
                           "  F1         the whole list\n"
                           "  Ctrl+Q     leave\n"
                           "\n"
                           "Mouse in the window:\n"
                           "  middle drag     orbits about what is under the mouse; left drag in empty space, too\n"
                           "  Shift+middle    moves the view\n"
                           "  wheel           zooms to what is under the mouse\n"
                           "  double click    flies to what is under the mouse\n"
                           "  click           selects a part or robot; Ctrl+click adds it or takes it out\n"
                           "  Alt+click       selects a face as base, Alt+Shift+click as side\n"
                           "\n"
                           "Exit codes: 0 done, 1 wrong command line, 2 a file or the display cannot be used,\n"
                           "3 a recording plays differently.";

} // namespace

std::optional<int> parseOptions(int argc, const char* const* argv, Options& options)
{
    CLI::App app("Shows CAD and mesh files (STEP, BREP, STL), robots (URDF), their programs (.mod, .src, .ls), point "
                 "clouds (PLY, "
                 "PCD, XYZ) and whole stations (.station.json). Any mix of files makes one station; without a file it "
                 "shows a demo station.",
                 "vrkview");
    app.footer(footer);
    app.set_version_flag("-V,--version", "vrkview " VRK_VERSION);
    app.add_option("files", options.files, "Files to show together")->type_name("FILE");

    std::string size;
    std::string grid;
    std::vector<std::string> picks;
    std::vector<std::string> joints;
    std::string views;
    std::string display = "shaded-edges";
    std::string tolerance;
    std::string smoothAngle;
    std::string unit;
    std::string background;
    bool isStrict = false;
    bool list = false;
    CLI::Option* shot =
        app.add_option("--shot", options.picture, "Draw a picture into this PNG file instead of opening a window")
            ->type_name("PNG");
    app.add_option("--size", size, "Size of the picture in pixels [1600x1000]")->type_name("WxH");
    CLI::Option* pick = app.add_option("--pick", picks,
                                       "Print what lies under these pixels of the picture, which is not drawn, as JSON")
                            ->type_name("X,Y,...")
                            ->allow_extra_args(false)
                            ->excludes(shot);
    app.add_flag("--all", options.listsCandidates,
                 "With --pick: print all that a click could mean there, with why it is taken or not")
        ->needs(pick);
    CLI::Option* pickGrid = app.add_option("--pick-grid", grid,
                                           "Pick so many pixels across and down, and print what was found and how fast")
                                ->type_name("NxM")
                                ->excludes(shot)
                                ->excludes(pick);
    app.add_option("--pick-picture", options.pickPicture,
                   "Write what --pick-grid found into this PNG file, each object in a colour of its own")
        ->type_name("PNG")
        ->needs(pickGrid);
    CLI::Option* record = app.add_option("--record", options.recording,
                                         "Write what is done in the window, and what it picks, into this file")
                              ->type_name("FILE")
                              ->excludes(shot)
                              ->excludes(pick)
                              ->excludes(pickGrid);
    CLI::Option* play = app.add_option("--play", options.session,
                                       "Do what this recording tells and compare what is picked; no window is seen")
                            ->type_name("FILE")
                            ->excludes(shot)
                            ->excludes(pick)
                            ->excludes(pickGrid)
                            ->excludes(record);
    app.add_option("--play-picture", options.playPicture, "Write what the view shows after --play into this PNG file")
        ->type_name("PNG")
        ->needs(play);
    app.add_option("--play-save", options.playSave, "Write the station as it is after --play as a station file")
        ->type_name("FILE")
        ->needs(play);
    app.add_option(
           "--view", views,
           fmt::format("Direction of the picture: {}. Several, joined by commas, or 'all', make several pictures "
                       "with the direction in their names [the view that a station was left with, else iso]",
                       viewNames()))
        ->type_name("NAME");
    const CLI::Option* displayOption =
        app.add_option("--display", display,
                       fmt::format("What is drawn of the bodies, in the window and in pictures: {} [{}]",
                                   drawModeNames(), display))
            ->type_name("NAME");
    app.add_option("--ghosts-except", options.whole,
                   "Draw all but the things of this name as ghosts in the picture; may be given several times")
        ->type_name("NAME")
        ->allow_extra_args(false)
        ->needs(shot);
    app.add_option("--background", background,
                   "Colour behind the scene, or two joined by a comma, from the upper edge to the lower one; none for "
                   "a plain grey [a quiet gradient]")
        ->type_name("#RRGGBB");
    app.add_flag("!--no-shadow", options.hasGroundShadow, "Draw no soft shadow on the ground that bodies stand on");
    app.add_option("--joints", joints,
                   "Joint values of the first mechanism that moves, in its order, or NAME=VALUE of any joint, joined "
                   "by commas: "
                   "degrees, or millimetres of joints that slide; --list names the joints with their limits")
        ->type_name("A,NAME=B,...")
        ->allow_extra_args(false);
    CLI::Option* simplify =
        app.add_flag("--simplify{auto}", tolerance,
                     "Make the meshes of STL files coarser as they are read; with =MM within so many millimetres")
            ->type_name("[=MM]");
    CLI::Option* smooth = app.add_flag("--smooth{auto}", smoothAngle,
                                       "Shade meshes smoothly as they are read, but for edges of more than 35 degrees, "
                                       "or =DEGREES; 0 shows their "
                                       "triangles")
                              ->type_name("[=DEGREES]");
    app.add_flag("--by-height", options.cloudsByHeight, "Colour all scans by height, also those that have colours");
    app.add_option("--unit", unit,
                   "What the numbers of files count that name no unit (meshes, scans): mm, cm, m or in [mm]")
        ->type_name("UNIT");
    app.add_option("--save", options.save, "Write what is shown as a station file, NAME.station.json")
        ->type_name("FILE");
    app.add_flag("--list", list, "Print what the files hold as JSON instead of opening a window")
        ->excludes(shot)
        ->excludes(pick)
        ->excludes(pickGrid)
        ->excludes(record)
        ->excludes(play);
    app.add_flag("--strict", isStrict,
                 "Show nothing where one of several files cannot be opened; otherwise the others are shown");
    app.add_flag("--gpu", options.onPresentDisplay,
                 "Draw pictures on the present display, and so with its graphics card, instead of a private one");
    app.add_option("--resources", options.resources, "The zip with materials and programs")
        ->type_name("ZIP")
        ->group("");

    const CLI::Validator isNamed(complaintOfName, "");
    for (const char* file :
         {"files", "--shot", "--pick-picture", "--record", "--play", "--play-picture", "--play-save", "--save"})
        app.get_option(file)->check(isNamed);
    const CLI::Validator isPicture(complaintOfPicture, "");
    for (const char* file : {"--shot", "--pick-picture", "--play-picture"})
        app.get_option(file)->check(isPicture);

    try {
        app.parse(argc, argv);
        if (app.count("--size") > 0)
            readSize(size, "--size", options.pictureWidth, options.pictureHeight);
        if (*pickGrid)
            readSize(grid, "--pick-grid", options.gridColumns, options.gridRows);
        if (app.count("--view") > 0)
            readViews(views, options);
        const bool isPicking = *pick || *pickGrid;
        for (const char* ofPicture : {"--size", "--view"})
            if (app.count(ofPicture) > 0 && !*shot && !isPicking)
                throw CLI::RequiresError(ofPicture, "--shot, --pick or --pick-grid");
        if (isPicking && options.views.size() > 1)
            throw CLI::ValidationError("--view", "picking takes one direction");
        readNumbers(picks, "--pick", options.picks);
        readJoints(joints, options.joints);
        if (*simplify)
            options.reading.coarser = readCoarser(tolerance);
        if (*smooth)
            options.reading.smooth = readSmooth(smoothAngle);
        if (isStrict)
            options.reading.bad = BadFile::EndsAll;
        if (!unit.empty())
            options.reading.unit = readUnit(unit);
        if (app.count("--background") > 0)
            options.backdrop = backdropNamed(background);
        checkPicks(options);
        checkSave("--save", options.save);
        checkSave("--play-save", options.playSave);
        options.drawMode = readDrawMode(display);
        options.isDrawModeGiven = displayOption->count() > 0;
    } catch (const CLI::ParseError& stop) {
        if (stop.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
            return app.exit(stop); // help or version
        std::cerr << "vrkview: " << stop.what() << " (--help lists the options)\n";
        return wrongCommandLine;
    }
    if (list)
        options.task = Options::Task::ListTree;
    else if (*play)
        options.task = Options::Task::PlaySession;
    else if (*shot)
        options.task = Options::Task::TakePicture;
    else if (*pick)
        options.task = Options::Task::Pick;
    else if (*pickGrid)
        options.task = Options::Task::PickGrid;
    return std::nullopt;
}

} // namespace vrkview
