#include "canvas/Backdrop.h"
#include "canvas/CloudLooks.h"
#include "canvas/FrameShade.h"
#include "canvas/Pick.h"
#include "canvas/ProgramParts.h"
#include "canvas/RobotReaches.h"
#include "canvas/Surroundings.h"
#include "canvas/ViewWidget.h"
#include "demo/DemoStation.h"
#include "files/EdgesOfMeshes.h"
#include "files/FileStation.h"
#include "files/JointWishes.h"
#include "files/PictureFile.h"
#include "files/StationScene.h"
#include "files/UnitAdvice.h"
#include "recording/Player.h"
#include "recording/Recorder.h"
#include "recording/Session.h"
#include "start/Headless.h"
#include "start/Options.h"
#include "start/PrivateDisplay.h"
#include "start/StartUp.h"
#include "window/Settings.h"
#include "window/ViewWindow.h"

#include "platform/common/ResourcePath.h"
#include "platform/station/StationFile.h"
#include "scene/Scene.h"
#include "scene/StartUp.h"

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

#include <Standard_Failure.hxx>
#include <fmt/format.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>

#include <unistd.h>

namespace vrkview {
namespace {

constexpr int unusable = 2;         // a file, the resources or the display
constexpr int playsDifferently = 3; // a recording

/// Sends what the library tells on standard output to standard error: the former is for what was asked for.
class QuietOutput {
public:
    QuietOutput() : before(std::cout.rdbuf(std::cerr.rdbuf())) {}
    ~QuietOutput() { std::cout.rdbuf(before); }
    QuietOutput(const QuietOutput&) = delete;
    QuietOutput& operator=(const QuietOutput&) = delete;

private:
    std::streambuf* before;
};

/// In one line, whatever the cause says and names hold: a terminal takes other control characters for orders.
void warn(const std::string& text)
{
    constexpr std::size_t longest = 300;
    std::string line;
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '\n' || c == '\t')
            line += ' ';
        else if (code < 0x20 || code == 0x7f)
            line += fmt::format("\\x{:02x}", code);
        else
            line += c;
    }
    if (line.size() > longest) {
        line.resize(longest - 3);
        while (!line.empty() && (static_cast<unsigned char>(line.back()) & 0xc0) == 0x80) // within a character
            line.pop_back();
        if (!line.empty() && static_cast<unsigned char>(line.back()) >= 0xc0)
            line.pop_back();
        line += "...";
    }
    std::cerr << "vrkview: " << line << std::endl;
}

/// What cannot be opened beside others is told, a line each. Any thread.
Station readStation(const Options& options)
{
    if (options.files.empty())
        return demoStation();
    Station station = importFiles(options.files, options.reading);
    for (const std::string& failure : station.failures)
        warn(failure);
    for (const std::string& note : station.notes)
        warn(note);
    return station;
}

/// Reads the station while the library starts: the one knows nothing of the other, and mostly there are two cores.
/// The locale of numbers must stay as it is meanwhile.
Station readAndStart(const Options& options)
{
    std::future<Station> station = std::async(std::launch::async, [&options] { return readStation(options); });
    startLibrary(); // where it fails the thread is waited for
    return station.get();
}

/// With a started library.
/// @throws std::runtime_error, before anything is shown, if it cannot be saved.
void build(const Station& station, const Options& options, const DrawMode& mode)
{
    showBackdrop(options.backdrop);
    setGroundShadowed(options.hasGroundShadow);
    showStation(station);
    if (!options.joints.empty())
        for (const std::string& note : moveJoints(options.joints))
            warn(note);
    if (!options.save.empty())
        vrk::station::SaveStationFile(options.save);
    showAs(mode, station.hiddenFaces);
    showCloudsByHeight(options.cloudsByHeight);
    vrk::visual::Scene::Get()->processMsgs();
    if (!options.reading.unit)
        for (const std::string& line : unitAdvice(station, "--unit m"))
            warn(line);
    suitSurroundings();
    vrk::visual::Scene::Get()->processMsgs();
}

/// So that a name that was mistyped is told ahead of minutes of import, and not after them.
void checkFoldersOfPictures(const Options& options)
{
    for (const std::filesystem::path& file : {options.picture, options.pickPicture, options.playPicture}) {
        const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : ".";
        if (!file.empty() && (!std::filesystem::is_directory(folder) || access(folder.c_str(), W_OK) != 0))
            throw std::runtime_error(pictureCannotBeWritten(file));
    }
}

/// So that what is amiss with the resources or the command line is told ahead of all else.
void checkBeforehand(const Options& options)
{
    vrk::visual::CheckResources();
    checkFoldersOfPictures(options);
}

/// The display to draw on; pictures and lists have one of their own where that can be had. Checks beforehand.
std::unique_ptr<PrivateDisplay> chooseDisplay(const Options& options)
{
    const bool showsWindow = options.task == Options::Task::OpenWindow;
    const bool hasWindow = showsWindow || options.task == Options::Task::PlaySession;
    const int width = hasWindow ? 1280 : 64; // Xvfb fills its screen before it answers
    const int height = hasWindow ? 1024 : 64;
    if (!showsWindow && !options.onPresentDisplay && PrivateDisplay::IsAvailable())
        return std::make_unique<PrivateDisplay>(width, height, [&options] {
            checkBeforehand(options);
            loadSoftwareDriver();
        });
    checkBeforehand(options);
    if (!displayAnswers())
        throw std::runtime_error(
            showsWindow || options.onPresentDisplay
                ? "no display: DISPLAY is not set or does not answer (--shot needs none with Xvfb)"
                : "no display: DISPLAY is not set or does not answer, and Xvfb is not on the PATH");
    return nullptr;
}

/// The one that the command line asks for, else the one of the last run.
const DrawMode& chooseDrawMode(const Options& options)
{
    const DrawMode* last = findDrawMode(Settings().drawMode().toStdString());
    return options.isDrawModeGiven || !last ? *options.drawMode : *last;
}

/// Qt has options of its own, "-display" among them, and would take ours for these: it gets the program's name alone.
struct QtArguments {
    explicit QtArguments(char** argv) : words{argv[0], nullptr} {}

    int count = 1; // Qt keeps references to both
    char* words[2];
};

int openWindow(char** argv, const Options& options)
{
    // OGRE draws on X11; on a Wayland desktop that is what Xwayland is for.
    qputenv("QT_QPA_PLATFORM", "xcb");
    QtArguments arguments(argv);
    QApplication application(arguments.count, arguments.words);
    QApplication::setApplicationName("vrkview");
    std::setlocale(LC_NUMERIC, "C"); // Qt took the user's, with which other packages would misread numbers
    const DrawMode& mode = chooseDrawMode(options);
    for (const ProgramPartName& each : allProgramParts())
        draw(each.part,
             Settings().isDrawn(each.part)); // ahead of the start: of a long program each change takes its time
    const EdgesInBackground edges;
    const Station station = readAndStart(options);
    build(station, options, mode);
    ViewWindow window(station, mode);
    QObject::connect(&edges, &EdgesInBackground::came, &window.getState(), &ViewState::drawAnew);
    window.getFiles().getOpening().setReading(options.reading);
    std::optional<Recorder> recorder;
    if (!options.recording.empty())
        recorder.emplace(window, options.recording);
    window.show();
    window.getFiles().tellWhatIsAmiss(station, options.files.size());
    return QApplication::exec();
}

void playSession(char** argv, const Options& options)
{
    const Station station = readStation(options);
    const Session session = readSession(options.session);
    const QTemporaryDir settings; // the user's own would make other windows on other machines
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    // Without one, as on a build server, Qt takes another folder and says so beside what this program tells.
    if (!qEnvironmentVariableIsSet("XDG_RUNTIME_DIR"))
        qputenv("XDG_RUNTIME_DIR", settings.path().toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "xcb");
    QtArguments arguments(argv);
    const QApplication application(arguments.count, arguments.words);
    std::setlocale(LC_NUMERIC, "C");
    startLibrary();
    build(station, options, *findDrawMode(session.head.display));
    ViewWindow window(station, *findDrawMode(session.head.display));
    window.show();
    Player(window, session).play();
    if (!options.playSave.empty())
        vrk::station::SaveStationFile(options.playSave);
    if (options.playPicture.empty())
        return;
    const ViewWidget& view = window.getView();
    savePicture(window.getView().takePicture(view.toDevice(view.size())), options.playPicture);
}

int run(char** argv, const Options& options)
{
    std::optional<QuietOutput> quiet(std::in_place);
    if (!options.resources.empty())
        vrk::common::SetResourcePath(options.resources);
    const std::unique_ptr<PrivateDisplay> display = chooseDisplay(options);
    if (options.task == Options::Task::OpenWindow)
        return openWindow(argv, options);
    if (options.task == Options::Task::PlaySession) {
        playSession(argv, options);
        return 0;
    }
    const Station station = readAndStart(options);
    build(station, options, *options.drawMode);
    quiet.reset();
    switch (options.task) {
    case Options::Task::TakePicture:
        drawReachesNow(warn);
        takePictures(options);
        break;
    case Options::Task::Pick:
        printPicks(options);
        break;
    case Options::Task::PickGrid:
        printPickGrid(options);
        break;
    default:
        printList(station);
    }
    return station.failures.empty() && station.notes.empty() ? 0 : unusable; // some of what was asked for is missing
}

int fail(const std::string& text)
{
    warn(text);
    return unusable;
}

} // namespace
} // namespace vrkview

int main(int argc, char** argv)
{
    vrkview::Options options;
    if (const std::optional<int> done = vrkview::parseOptions(argc, argv, options))
        return *done;
    try {
        const int code = vrkview::run(argv, options);
        // What is left is OGRE's and the driver's memory, which the system takes back in a fraction of the time.
        std::cout << std::flush;
        std::fflush(nullptr);
        std::_Exit(code);
    } catch (const vrkview::BadFiles& bad) {
        for (const std::string& failure : bad.failures)
            vrkview::fail(failure);
        return vrkview::unusable;
    } catch (const vrkview::SessionDifference& difference) {
        std::cerr << "vrkview: " << difference.what() << std::endl;
        return vrkview::playsDifferently;
    } catch (const Standard_Failure& failure) {
        return vrkview::fail(failure.GetMessageString());
    } catch (const std::exception& failure) {
        return vrkview::fail(failure.what());
    }
}
