#include "platform/station/CadReader.h"

#include "StepFiles.h"
#include "platform/geometry/BodyColorTool.h"
#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/station/Import.h"
#include "support/TempFolder.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS_Compound.hxx>

#include <fmt/format.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace vrk::station {
namespace {

using namespace std::chrono_literals;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::ThrowsMessage;
using Clock = std::chrono::steady_clock;

struct GivenUp {};

class CadReaderTest : public testing::Test {
protected:
    CadReaderTest()
    {
        BRepTools::Write(BRepPrimAPI_MakeBox(10, 20, 30).Shape(), file.c_str());
        settings.inOwnProcess = false;
    }
    ~CadReaderTest() override { SetCadReaderSettings({}); }

    /// A program of these lines of shell takes the place of the real one.
    void use(const std::string& lines)
    {
        settings.program = folder.write("reader.sh", "#!/bin/sh\n" + lines + "\n");
        std::filesystem::permissions(settings.program, std::filesystem::perms::owner_all);
        SetCadReaderSettings(settings);
    }
    /// Does as the real one, after these lines.
    void useAhead(const std::string& lines) { use(fmt::format("{}\nexec '{}' \"$@\"", lines, real.string())); }
    void expectRefused(const std::string& cause) const
    {
        EXPECT_THAT([&] { ImportFile(file); }, ThrowsMessage<ImportError>(file.string() + ": " + cause));
    }
    /// Enough faces to keep the mesher busy for seconds, in much memory.
    void writeManyBalls() const
    {
        TopoDS_Compound balls;
        const BRep_Builder builder;
        builder.MakeCompound(balls);
        for (int i = 0; i < 4000; ++i)
            builder.Add(balls,
                        TopExp_Explorer(BRepPrimAPI_MakeSphere(gp_Pnt(i, 0, 0), 50).Shape(), TopAbs_FACE).Current());
        BRepTools::Write(balls, file.c_str());
    }
    std::string told(const std::string& name) const { return test::TempFolder::Read(folder / name); }

    test::TempFolder folder;
    std::filesystem::path file = folder / "thing.brep";
    std::filesystem::path real = GetCadReaderPath();
    CadReaderSettings settings;
};

bool isRunning(int process)
{
    std::string stat = test::TempFolder::Read(fmt::format("/proc/{}/stat", process));
    const std::size_t name = stat.rfind(')');
    return name != std::string::npos && stat.substr(name, 4).find('Z') == std::string::npos;
}

TEST_F(CadReaderTest, ProgramThatDiesIsOneLineWithItsSignal)
{
    use("kill -SEGV $$");

    expectRefused("the program that reads CAD files ended (signal 11): the file is damaged");
}

TEST_F(CadReaderTest, ProgramThatEndsEarlyIsOneLineWithItsExitCode)
{
    use("exit 3");
    expectRefused("the program that reads CAD files ended (exit code 3): the file is damaged");
    use("exit 0");
    expectRefused("the program that reads CAD files ended without an answer: the file is damaged");
}

TEST_F(CadReaderTest, ProgramThatIsMissingIsNamed)
{
    settings.program = folder / "none";
    SetCadReaderSettings(settings);

    expectRefused("the program that reads CAD files is missing: " + (folder / "none").string());
}

TEST_F(CadReaderTest, FileThatIsNoProgramIsTold)
{
    settings.program = folder.write("text", "hello");
    SetCadReaderSettings(settings);

    EXPECT_THAT([&] { ImportFile(file); },
                ThrowsMessage<ImportError>(HasSubstr("the program that reads CAD files cannot be started: ")));
}

TEST_F(CadReaderTest, ReadingThatTakesTooLongIsGivenUp)
{
    settings.longestTime = 300ms;
    use("exec sleep 100");
    const Clock::time_point begin = Clock::now();

    expectRefused("reading takes longer than 0.3 s");
    EXPECT_LT(Clock::now() - begin, 20s);
}

TEST_F(CadReaderTest, ReadingThatComesNoFurtherIsGivenUp)
{
    settings.longestSilence = 300ms;
    use("while :; do echo 'progress 0.25 transferring' >&3; sleep 0.01; done");

    expectRefused("reading has come no further for 0.3 s");
}

TEST_F(CadReaderTest, ReadingThatNeedsTooMuchMemoryIsGivenUp)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "no limit of memory under sanitizers";
#endif
    writeManyBalls();
    settings.mostMemory = 100'000'000;
    SetCadReaderSettings(settings);

    expectRefused("reading needs more than 100 MB of memory");
}

TEST_F(CadReaderTest, ImportIsCancelledWhileTheProgramHangs)
{
    use(fmt::format("echo $$ >'{}'; echo 'progress 0.5 meshing 1 of 1' >&3; exec sleep 100", (folder / "id").string()));
    Clock::time_point last = Clock::now();
    Clock::duration longest{0};
    int calls = 0;

    const auto cancelLater = [&](std::string_view step, double fraction) {
        longest = std::max(longest, Clock::now() - last);
        last = Clock::now();
        if (step != "meshing 1 of 1")
            return;
        EXPECT_EQ(fraction, 0.5);
        if (++calls == 10)
            throw GivenUp();
    };

    EXPECT_THROW(ImportFile(file, cancelLater), GivenUp);
    EXPECT_LT(Clock::now() - last, 1s) << "the busy machine of a test; 50 ms else";
    EXPECT_LT(longest, 1s);
    EXPECT_FALSE(isRunning(std::stoi(told("id"))));
}

TEST_F(CadReaderTest, ImportIsCancelledWhileOpenCascadeIsAtWork)
{
    writeManyBalls();
    useAhead(fmt::format("echo $$ >'{}'", (folder / "id").string()));

    const auto cancel = [](std::string_view step, double) {
        if (step.starts_with("meshing"))
            throw GivenUp();
    };

    EXPECT_THROW(ImportFile(file, cancel), GivenUp);
    EXPECT_FALSE(isRunning(std::stoi(told("id"))));
}

TEST_F(CadReaderTest, NothingIsLeftOfAProgramAndNoDescriptorIsOpen)
{
    const auto descriptors = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    ImportFile(file);
    const auto before = descriptors();

    ImportFile(file);
    use("kill -SEGV $$");
    EXPECT_THROW(ImportFile(file), ImportError);

    EXPECT_EQ(descriptors(), before);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child that nobody waited for";
}

TEST_F(CadReaderTest, ProgramInheritsNoDescriptorOfTheApplication)
{
    const int open = fcntl(STDERR_FILENO, F_DUPFD, 77); // as those of careless libraries: not closed on exec
    ASSERT_GE(open, 77);
    useAhead(fmt::format("all=\nfor each in /proc/$$/fd/*; do all=\"$all <${{each##*/}}>\"; done\n"
                         "for each in 0 1 2; do all=\"$all $(readlink /proc/$$/fd/$each)\"; done\necho \"$all\" >'{}'",
                         (folder / "open").string()));

    ImportFile(file);
    close(open);

    EXPECT_THAT(told("open"), HasSubstr("<4>"));
    EXPECT_THAT(told("open"), Not(HasSubstr(fmt::format("<{}>", open))));
    EXPECT_THAT(told("open"), EndsWith(" /dev/null /dev/null /dev/null\n"));
}

TEST_F(CadReaderTest, ApplicationThatLetsNoChildWaitIsServed)
{
    const auto before = signal(SIGCHLD, SIG_IGN);

    const auto parts = ImportFile(file);
    use("kill -SEGV $$");
    EXPECT_THROW(ImportFile(file), ImportError);
    signal(SIGCHLD, before);

    EXPECT_EQ(parts.size(), 1u);
}

TEST_F(CadReaderTest, ProgramEndsWithTheApplication)
{
    const std::filesystem::path endless = folder / "endless.brep";
    ASSERT_EQ(mkfifo(endless.c_str(), 0600), 0); // who opens it waits
    const std::string line =
        fmt::format("'{}' vrk1 $$ 4000000000 bare '{}' 3>/dev/null 4>/dev/null & echo $! >'{}'; sleep 0.5",
                    real.string(), endless.string(), (folder / "id").string());
    std::thread application([&] { EXPECT_EQ(std::system(line.c_str()), 0); });
    while (told("id").find('\n') == std::string::npos)
        std::this_thread::sleep_for(10ms);
    const int id = std::stoi(told("id"));
    EXPECT_TRUE(isRunning(id));

    application.join();

    for (int i = 0; i < 200 && isRunning(id); ++i)
        std::this_thread::sleep_for(10ms);
    EXPECT_FALSE(isRunning(id));
}

TEST_F(CadReaderTest, TwoImportsAtOnceAreBothWhole)
{
    const std::filesystem::path second = folder / "second.brep";
    BRepTools::Write(BRepPrimAPI_MakeCylinder(2, 50).Shape(), second.c_str());
    const auto facesOf = [](const std::filesystem::path& file) {
        return ImportFile(file).at(0)->getBodies().at(0)->getFaceMap().Extent();
    };

    int cylinder = 0;
    std::thread other([&] {
        for (int i = 0; i < 5; ++i)
            cylinder += facesOf(second);
    });
    int box = 0;
    for (int i = 0; i < 5; ++i)
        box += facesOf(file);
    other.join();

    EXPECT_EQ(box, 5 * 6);
    EXPECT_EQ(cylinder, 5 * 3);
}

TEST_F(CadReaderTest, BodiesOfOneFileAskTheProgramOnce)
{
    TopoDS_Compound both;
    const BRep_Builder builder;
    builder.MakeCompound(both);
    builder.Add(both, BRepPrimAPI_MakeBox(1, 2, 3).Shape());
    builder.Add(both, BRepPrimAPI_MakeBox(4, 5, 6).Shape());
    BRepTools::Write(both, file.c_str());
    useAhead(fmt::format("echo run >>'{}'", (folder / "runs").string()));

    ImportShape(file.string() + "#1");
    ImportShape(file.string() + "#2");
    ImportShape(file.string() + "#1");

    EXPECT_EQ(told("runs"), "run\n");
}

TEST_F(CadReaderTest, MeshesAndTheApplicationsOwnProcessNeedNoProgram)
{
    settings.program = folder / "none";
    settings.inOwnProcess = true;
    SetCadReaderSettings(settings);
    EXPECT_EQ(ImportFile(file).size(), 1u);
    EXPECT_EQ(ImportShape(file.string() + "#1").ShapeType(), TopAbs_SOLID);

    settings.inOwnProcess = false;
    SetCadReaderSettings(settings);
    const auto mesh = folder.write("a.stl", "solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\n"
                                            "vertex 0 2 0\nendloop\nendfacet\nendsolid a\n");
    EXPECT_EQ(ImportFile(mesh).size(), 1u);
}

TEST_F(CadReaderTest, ProgramThatAPersonStartsSaysWhatItIs)
{
    EXPECT_EQ(std::system(fmt::format("'{}' 2>'{}'", real.string(), (folder / "said").string()).c_str()), 2 << 8);
    EXPECT_THAT(told("said"), HasSubstr("started by libvrkplatform"));
}

/// An answer that was recorded and is given again, with whatever happened to it.
class CadReaderAnswer : public CadReaderTest {
protected:
    CadReaderAnswer()
    {
        const std::string again = fmt::format("cat '{0}' >&4; echo \"done $(stat -c %s '{0}')\" >&3", kept.string());
        use(fmt::format("'{}' \"$1\" $$ \"$3\" \"$4\" \"$5\" 3>/dev/null 4>'{}'\n{}", real.string(), kept.string(),
                        again));
        EXPECT_EQ(ImportFile(file).size(), 1u);
        bytes = test::TempFolder::Read(kept);
        use(again);
    }
    std::filesystem::path kept = folder / "answer";
    std::string bytes;
};

TEST_F(CadReaderAnswer, ThatIsCutShortIsRefused)
{
    EXPECT_EQ(ImportFile(file).size(), 1u);
    for (std::size_t length = 0; length < bytes.size(); length += 1 + bytes.size() / 20) {
        folder.write("answer", std::string_view(bytes).substr(0, length));
        EXPECT_THAT([&] { ImportFile(file); },
                    ThrowsMessage<ImportError>(HasSubstr("gave an answer that cannot be used")))
            << length;
    }
}

TEST_F(CadReaderAnswer, ThatGoesOnOrIsNotOfTheSizeThatWasToldIsRefused)
{
    folder.write("answer", bytes + "more");
    EXPECT_THAT([&] { ImportFile(file); }, ThrowsMessage<ImportError>(HasSubstr("goes on behind its end")));
    use(fmt::format("cat '{0}' >&4; echo 'done 20' >&3", kept.string()));
    expectRefused("the program that reads CAD files gave an answer that cannot be used");
}

TEST_F(CadReaderAnswer, WhoseNumbersNameNothingIsRefused)
{
    const std::size_t head = bytes.find("Open CASCADE");
    ASSERT_NE(head, std::string::npos);
    for (std::size_t at = 0; at + 4 <= head; ++at) { // counts, lengths and the number of the shape are among these
        std::string damaged = bytes;
        damaged.replace(at, 4, "\xFF\xFF\xFF\x7F");
        folder.write("answer", damaged);
        try {
            EXPECT_EQ(ImportFile(file).size(), 1u) << "a name or a place may be any";
        } catch (const ImportError& failure) {
            EXPECT_THAT(failure.what(), HasSubstr("gave an answer that cannot be used")) << at;
        }
    }
}

TEST_F(CadReaderAnswer, OfOtherWordsIsRefused)
{
    for (const char* line : {"hello", "progress", "progress x reading", "progress 2 reading", "progress nan reading"}) {
        use(fmt::format("echo '{}' >&3; exec sleep 100", line));
        expectRefused("the program that reads CAD files says what cannot be understood");
    }
    use("yes x | tr -d '\\n' >&3");
    expectRefused("the program that reads CAD files says what cannot be understood");
}

} // namespace
} // namespace vrk::station
