// vrkcadreader: reads one CAD file for libvrkplatform, which a damaged file thus cannot take down. See CadProtocol.h.

#include "platform/station/import/CadAnswer.h"
#include "platform/station/import/CadProtocol.h"
#include "platform/station/import/ReadScene.h"

#include "platform/station/clouds/PlyMesh.h"

#include "platform/cadreader/MemoryLimit.h"

#include <fmt/format.h>

#include <malloc.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <new>
#include <system_error>
#include <utility>

#ifdef __SANITIZE_ADDRESS__
/// What a program that lives for one file holds at its end is not worth the search.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options()
{
    return "detect_leaks=0";
}
#endif

namespace {

using namespace vrk::station;

void say(const std::string& line)
{
    for (std::size_t from = 0; from < line.size();) {
        const ssize_t count = write(child::messages, line.data() + from, line.size() - from);
        if (count < 0 && errno != EINTR)
            _exit(1); // nobody listens
        from += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
}

/// The process goes when the one that started it goes, and never writes out what it holds of the file.
void bindTo(pid_t parent)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) // it went before the line above
        _exit(1);
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    prctl(PR_SET_DUMPABLE, 0);
    std::signal(SIGXFSZ, SIG_IGN); // an answer beyond the limit is an error of its writing
    // Where the machine runs out of memory, this process is the one to end, and not the application.
    std::ofstream("/proc/self/oom_score_adj") << 1000;
}

/// Memory comes in large pieces and goes with the process: a twelfth of the time of an import.
void hoardMemory()
{
    constexpr int piece = 64 << 20;
    mallopt(M_TOP_PAD, piece);
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_MMAP_THRESHOLD, piece / 2); // the most that it takes
}

CadRequest requestOf(const std::string& word)
{
    for (const auto& [name, request] :
         {std::pair{"bare", CadRequest::Bare}, std::pair{"meshed", CadRequest::Meshed},
          std::pair{"triangles", CadRequest::Triangles}, std::pair{"robot-triangles", CadRequest::RobotTriangles}})
        if (word == name)
            return request;
    return CadRequest::Whole;
}

std::uint64_t writeTriangles(const std::filesystem::path& file, const Progress& progress, SceneAxes axes)
{
    const std::string bytes = plyOf(readScene(file, progress, axes));
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = write(child::answer, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno != EINTR)
            throw std::system_error(errno, std::generic_category(), "write");
        written += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    return written;
}

std::uint64_t answerTo(const std::filesystem::path& file, CadRequest request, const Progress& progress)
{
    switch (request) {
    case CadRequest::Triangles:
        return writeTriangles(file, progress, SceneAxes::ZUp);
    case CadRequest::RobotTriangles:
        return writeTriangles(file, progress, SceneAxes::AsTheyStand);
    default:
        return writeAnswer(readCad(file, request, progress), child::answer);
    }
}

void read(const std::filesystem::path& file, CadRequest request)
{
    const Progress progress = [](std::string_view step, double fraction) {
        say(fmt::format("progress {} {}\n", fraction, step));
    };
    try {
        const std::uint64_t size = answerTo(file, request, progress);
        say(fmt::format("done {}\n", size));
        _exit(0); // what a large file leaves would take long to free piece by piece
    } catch (const ImportError& failure) {
        // The library names the file again.
        const std::string text = failure.what();
        const std::string prefix = file.string() + ": ";
        say(fmt::format("error {}\n", text.starts_with(prefix) ? text.substr(prefix.size()) : text));
    } catch (const std::bad_alloc&) {
        say("memory\n");
    } catch (const std::system_error&) { // the answer, which lies in memory, found no room
        say("memory\n");
    } catch (const std::exception& failure) {
        say(fmt::format("error {}\n", oneLine(failure.what())));
    }
    _exit(0);
}

} // namespace

int main(int count, char** words)
{
    if (count != 6 || std::string_view(words[1]) != child::protocol) {
        std::fputs("vrkcadreader is started by libvrkplatform when it reads a CAD file, and does nothing by itself\n",
                   stderr);
        return 2;
    }
    bindTo(std::atoi(words[2]));
    hoardMemory();
    cadreader::limitMemory(std::strtoull(words[3], nullptr, 10));
    read(words[5], requestOf(words[4]));
}
