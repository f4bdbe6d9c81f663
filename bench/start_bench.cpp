// How long the viewer takes from its call to the first picture: in a window on a display of its own, and into a file. The
// counters are milliseconds: cpu is processor time of the program and of what it starts, shown is until its window is there.
//
// VRK_START_PROGRAM names another program to time in place of the one that was built, and so an older state of it.

#include "bench/support/Size.h"

#include "start/PrivateDisplay.h"

#include <benchmark/benchmark.h>

#include <QImage>
#include <QTemporaryDir>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#undef None // Xlib's, a word that others use

namespace {

using Clock = std::chrono::steady_clock;

const std::string pictureSize = vrk::bench::sized("1600x1000", "64x64");
constexpr std::chrono::seconds patience(60);

double since(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// The program, running.
class Run {
public:
    explicit Run(const std::vector<std::string>& arguments)
    {
        const char* other = std::getenv("VRK_START_PROGRAM");
        std::vector<std::string> words = {other ? other : VRKVIEW_PROGRAM};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> pointers;
        for (std::string& word : words)
            pointers.push_back(word.data());
        pointers.push_back(nullptr);
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        const int failure = posix_spawn(&process, pointers[0], &files, nullptr, pointers.data(), environ);
        posix_spawn_file_actions_destroy(&files);
        if (failure != 0)
            throw std::runtime_error("the viewer does not start");
    }
    ~Run()
    {
        if (process > 0)
            end(SIGKILL);
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    /// Its processor time in milliseconds, when it has ended by itself or by the signal.
    /// @throws std::runtime_error where it ended in any other way.
    double end(int signal = 0)
    {
        if (signal != 0)
            kill(process, signal);
        int status = 0;
        rusage used{};
        wait4(std::exchange(process, -1), &status, 0, &used);
        if (signal == 0 && (!WIFEXITED(status) || WEXITSTATUS(status) != 0))
            throw std::runtime_error("the viewer failed");
        const auto milliseconds = [](const timeval& time) { return 1e3 * time.tv_sec + 1e-3 * time.tv_usec; };
        return milliseconds(used.ru_utime) + milliseconds(used.ru_stime);
    }

private:
    pid_t process = -1;
};

/// A folder for what is read and written, which the programs have their settings in, too.
class Folder {
public:
    Folder()
    {
        for (const char* variable : {"XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
            setenv(variable, folder.path().toLocal8Bit().constData(), 1);
    }

    std::string file(const char* name) const { return folder.filePath(name).toStdString(); }
    /// A tetrahedron as STL text.
    std::string part() const
    {
        const char* corners[] = {"0 0 0", "90 0 0", "0 60 0", "0 0 40"};
        constexpr int faces[4][3] = {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}};
        std::ofstream text(file("part.stl"));
        text << "solid part\n";
        for (const auto& face : faces) {
            text << "facet normal 0 0 0\nouter loop\n";
            for (const int corner : face)
                text << "vertex " << corners[corner] << '\n';
            text << "endloop\nendfacet\n";
        }
        text << "endsolid part\n";
        return file("part.stl");
    }

private:
    QTemporaryDir folder;
};

void runToItsEnd(benchmark::State& state, const std::vector<std::string>& arguments, const std::string& picture)
{
    double processor = 0;
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        Run run(arguments);
        processor += run.end();
        state.SetIterationTime(since(start));
        if (!picture.empty() && QImage(QString::fromStdString(picture)).isNull())
            throw std::runtime_error("no picture was written");
    }
    state.counters["cpu"] = benchmark::Counter(processor, benchmark::Counter::kAvgIterations);
}

void listOfTheDemo(benchmark::State& state)
{
    const Folder folder;
    runToItsEnd(state, {"--list"}, {});
}

void pictureOfAPart(benchmark::State& state)
{
    const Folder folder;
    const std::string picture = folder.file("part.png");
    runToItsEnd(state, {folder.part(), "--shot", picture, "--size", pictureSize}, picture);
}

void pictureOfTheDemo(benchmark::State& state)
{
    const Folder folder;
    const std::string picture = folder.file("demo.png");
    runToItsEnd(state, {"--shot", picture, "--size", pictureSize}, picture);
}

/// What is on a display, looked at from outside.
class Looker {
public:
    Looker() : display(XOpenDisplay(nullptr))
    {
        if (!display)
            throw std::runtime_error("the display does not answer");
    }
    ~Looker() { XCloseDisplay(display); }
    Looker(const Looker&) = delete;
    Looker& operator=(const Looker&) = delete;

    bool seesWindow() const
    {
        Window root = 0, parent = 0, *children = nullptr;
        unsigned count = 0;
        XQueryTree(display, DefaultRootWindow(display), &root, &parent, &children, &count);
        bool found = false;
        for (unsigned i = 0; i < count && !found; ++i) {
            XWindowAttributes window{};
            found = XGetWindowAttributes(display, children[i], &window) != 0 && window.map_state == IsViewable &&
                    window.width > 300;
        }
        if (children)
            XFree(children);
        return found;
    }
    /// The arm's colour, which nothing of the window around the view has.
    bool seesOrange() const
    {
        constexpr int rows = 300, step = 4;
        const int width = DisplayWidth(display, 0);
        XImage* const image = XGetImage(display, DefaultRootWindow(display), 0, (DisplayHeight(display, 0) - rows) / 2,
                                        static_cast<unsigned>(width), rows, AllPlanes, ZPixmap);
        if (!image)
            return false;
        int orange = 0;
        for (int y = 0; y < rows; y += step)
            for (int x = 0; x < width; x += step) {
                const unsigned long pixel = XGetPixel(image, x, y);
                const unsigned long red = pixel >> 16 & 0xff, green = pixel >> 8 & 0xff, blue = pixel & 0xff;
                orange += red > 150 && red > green + 50 && green > blue + 15 ? 1 : 0;
            }
        XDestroyImage(image);
        return orange > 20;
    }

private:
    Display* display;
};

template <typename Condition>
void wait(const Condition& condition, Clock::time_point start)
{
    while (!condition()) {
        if (Clock::now() - start > patience)
            throw std::runtime_error("the window does not come");
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void windowOfTheDemo(benchmark::State& state)
{
    const Folder folder;
    const vrkview::PrivateDisplay display;
    const Looker looker;
    double processor = 0, shown = 0;
    for (auto _ : state) {
        wait([&] { return !looker.seesOrange(); }, Clock::now()); // the window of the run before is gone
        const Clock::time_point start = Clock::now();
        Run run({});
        wait([&] { return looker.seesWindow(); }, start);
        shown += 1e3 * since(start);
        wait([&] { return looker.seesOrange(); }, start);
        state.SetIterationTime(since(start));
        processor += run.end(SIGTERM);
    }
    state.counters["cpu"] = benchmark::Counter(processor, benchmark::Counter::kAvgIterations);
    state.counters["shown"] = benchmark::Counter(shown, benchmark::Counter::kAvgIterations);
}

BENCHMARK(listOfTheDemo)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(pictureOfAPart)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(pictureOfTheDemo)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(windowOfTheDemo)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
