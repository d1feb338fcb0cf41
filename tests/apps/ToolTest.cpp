// Runs fcurvetool itself.

#include "Picture.h"
#include "support/Museum.h"
#include "support/SameCurve.h"
#include "support/StreamOf.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using namespace Test;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

struct Result {
    int code;
    std::string out;
    std::string err;
};

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// A folder with the example data, in which the tool runs.
class Tool : public testing::Test {
protected:
    Tool() {
        const auto data = std::filesystem::path(FCURVELIB_SOURCE_DIR) / "examples" / "data";
        for (const auto& entry : std::filesystem::directory_iterator(data))
            std::filesystem::copy(entry.path(), m_folder.path());
    }

    /// Runs it with the arguments, which a shell splits; they may redirect.
    Result run(const std::string& arguments) const {
        const std::string command =
            "cd '" + m_folder.path().string() + "' && { '" FCURVETOOL "' " + arguments + "; } >.stdout 2>.stderr";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read(".stdout"), read(".stderr")};
    }
    /// It ends with the code, nothing but one line that begins so.
    void expectComplaint(const std::string& arguments, int code, const std::string& begin) const {
        const Result result = run(arguments);
        EXPECT_EQ(result.code, code) << arguments;
        EXPECT_EQ(result.out, "") << arguments;
        EXPECT_THAT(result.err, StartsWith("fcurvetool: " + begin)) << arguments;
        EXPECT_EQ(Lines(result.err).size(), 1U) << result.err;
    }
    std::string path(const std::string& name) const { return m_folder.file(name); }
    std::string read(const std::string& name) const { return readWholeFile(path(name)); }
    void write(const std::string& name, const std::string& text) const { writeWholeFile(path(name), text); }
    // Of the folder, but for the hidden ones.
    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.path())) {
            const std::string name = entry.path().filename().string();
            if (name[0] != '.') names.insert(name);
        }
        return names;
    }

    /// A file of straight curves under these names, each through (0, 0) and (10, 20 i) for the i-th.
    void writeCurves(const std::string& name, const std::vector<std::string>& curves) const {
        const auto container = FCurveContainer::create();
        double y = 0.0;
        for (const std::string& curve : curves) {
            y += 20.0;
            container->addCurve(MakeCurve({{0, 0, {}, {}, "linear()"}, {10, y, {}, {}, "constant()"}}))
                ->setName(curve.c_str());
        }
        save(*container, name);
    }
    void save(const FCurveContainer& container, const std::string& name) const {
        MemoryStream stream;
        WriteCurves(container, stream, "xml");
        write(name, BytesOf(stream));
    }
    std::shared_ptr<FCurveContainer> load(const std::string& name) const {
        auto container = FCurveContainer::create();
        FileStream stream(path(name).c_str(), FileStream::Read, 0);
        ReadCurves(stream, *container);
        return container;
    }

private:
    TempFolder m_folder;
};

} // namespace

TEST_F(Tool, HelpAndVersionSucceed) {
    for (const char* arguments :
         {"--help", "info --help", "eval -h", "sample --help", "plot --help", "convert --help"}) {
        const Result result = run(arguments);
        EXPECT_EQ(result.code, 0) << arguments;
        EXPECT_THAT(result.out, HasSubstr("Usage: fcurvetool")) << arguments;
        EXPECT_EQ(result.err, "");
    }
    EXPECT_THAT(run("--version").out, StartsWith("fcurvetool 19."));
    EXPECT_THAT(run("formats").out, testing::ContainsRegex("\nxml +XML +.fcrvx +read, write\n"));
}

TEST_F(Tool, BadCommandLinesEndWithTwoAndOneLine) {
    // A command's beginning, and what makes it bad.
    const std::pair<std::string, std::vector<std::string>> rows[] = {
        {"", {"", "frobnicate", "info", "insert ball.fcrvx out.fcrvx", "bake --step 0 ball.fcrvx -"}},
        {"info ball.fcrvx ", {"--nonsense", "--format nonsense"}},
        {"eval ball.fcrvx ", {"", "1:2:0", "ten", "0:1e6"}},
        {"sample ball.fcrvx ", {"--step -1", "--step x", "--from 10 --to 5", "--to 1e300"}},
        {"plot ball.fcrvx ",
         {"--size 10", "--size 100x", "--size 200x100", "--range 5:5", "--values 1", "--keys maybe"}},
        {"convert ball.fcrvx ", {"", "ball.unknown", "-", "ball.chan --to hchan"}},
    };
    const auto before = files();
    for (const auto& [begin, ends] : rows) {
        for (const std::string& end : ends) expectComplaint(begin + end, 2, "");
    }
    EXPECT_EQ(files(), before);
}

TEST_F(Tool, BadInputEndsWithOneAndSaysWhere) {
    write("empty.fcrvx", "");
    write("letter.txt", "Dear Sir,\nthis is no curve.\n");
    write("ragged.chan", "1 2 3\n2 3 4\n3 4\n");
    write("word.chan", "1 2\n2 three\n");
    const std::string ball = read("ball.fcrvx");
    const std::string half = ball.substr(0, ball.find('\n', ball.size() / 2));
    write("truncated.fcrvx", half);
    write("mismatched.fcrvx", half + "</nothing>" + ball.substr(half.size()));
    const std::string line = std::to_string(Lines(half).size());

    // The arguments, and the beginning of what is said.
    const std::pair<std::string, std::string> rows[] = {
        {"info missing.fcrvx", "missing.fcrvx: cannot be read: No such file"},
        {"info .", ".: cannot be read: Is a directory"},
        {"info empty.fcrvx", "empty.fcrvx: empty"},
        {"info letter.txt", "letter.txt: in none of the formats that can be read (xml, "},
        {"info ragged.chan", "ragged.chan:3:"},
        {"eval word.chan 1", "word.chan:2:3: "},
        {"info letter.txt --format hchan", "letter.txt:1:1: "},
        {"info ball.fcrvx --format hchan", "ball.fcrvx:1:1: "},
        {"plot truncated.fcrvx", "truncated.fcrvx:" + line + ":"},
        {"sample mismatched.fcrvx", "mismatched.fcrvx:" + line + ":"},
        {"convert --format hchan - out.fcrvx <word.chan", "<stdin>:2:3: "},
        {"plot ball.fcrvx --curve nobody", "ball.fcrvx: no curve \"nobody\" (there are height, squash)"},
        {"plot ball.fcrvx -o nowhere/ball.svg", "nowhere/ball.svg: cannot be written: there is no such folder"},
    };
    for (const auto& [arguments, begin] : rows) expectComplaint(arguments, 1, begin);
}

TEST_F(Tool, FullDeviceEndsWithOne) {
    if (!std::filesystem::is_character_file("/dev/full")) GTEST_SKIP() << "no device that is always full";
    expectComplaint("sample ball.fcrvx >/dev/full", 1, "<stdout>: cannot be written: No space left");
    expectComplaint("plot ball.fcrvx -o /dev/full", 1, "/dev/full: cannot be written: No space left");
}

TEST_F(Tool, InfoDescribesEveryCurve) {
    const Result result = run("info slide.fcrvx camera.chan");
    ASSERT_EQ(result.code, 0) << result.err;
    const auto lines = Lines(result.out);
    ASSERT_EQ(lines.size(), 1 + 1 + 3 + 1 + 1 + 1 + 6U) << result.out;
    EXPECT_EQ(lines[0], "slide.fcrvx: XML, 3 curves");
    EXPECT_THAT(lines[2],
                testing::ContainsRegex("1  eased +4 +1 +61 +0 +100  constant\\(\\)  constant\\(\\)  bezier\\(\\) x 3"));
    EXPECT_THAT(lines[4], testing::ContainsRegex("3  straight +4 +1 +61 +0 +100 .* linear\\(\\) x 3"));
    EXPECT_EQ(lines[6], "camera.chan: Houdini Channel, 6 curves");
    EXPECT_THAT(lines[8], testing::ContainsRegex("1  chan0 \\(tx\\) +120 +1 +120 +-6 "));
}

TEST_F(Tool, InfoFindsExtremaBetweenKeysAndHoldsStrangeNames) {
    const auto container = FCurveContainer::create();
    container->addCurve(MakeCurve({{0, 0, {}, {}, "16 * sin(x) ** 2"}, {1e9, 1, {}, {}, "constant()"}}))
        ->setName("\x1b[31mred\nline");
    container->addCurve(FCurve::create());
    container->addCurve(MakeCurve({{0, 0, {}, Vector2D<double>(5, 9)}, {10, 0, Vector2D<double>(-5, 9)}}));
    save(*container, "strange.fcrvx");
    const Result result = run("info strange.fcrvx");
    EXPECT_EQ(result.code, 0) << result.err;
    const auto lines = Lines(result.out);
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_THAT(lines[2], HasSubstr("\\x1b[31mred\\x0aline  "));
    EXPECT_THAT(lines[2], HasSubstr("  15.99")); // 10^9 frames are looked at in a moment
    EXPECT_THAT(lines[3], HasSubstr("0      -"));
    EXPECT_THAT(lines[4], HasSubstr("     6.75  "));
}

TEST_F(Tool, EvalTabulates) {
    writeCurves("two.fcrvx", {"a", "b"});
    EXPECT_EQ(run("eval two.fcrvx 2.5 -1 0:0.2:0.1").out, "frame    a    b\n"
                                                          "  2.5    5   10\n"
                                                          "   -1    0    0\n"
                                                          "    0    0    0\n"
                                                          "  0.1  0.2  0.4\n"
                                                          "  0.2  0.4  0.8\n");
    EXPECT_EQ(run("eval two.fcrvx --curve b --velocity --acceleration 5").out,
              "frame   b  b velocity  b acceleration\n"
              "    5  20           4               0\n");
}

TEST_F(Tool, SampleWritesWhatTheCurvesGive) {
    const Result result = run("sample ball.fcrvx --step 0.25 -o ball.csv");
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "");
    const auto lines = Lines(read("ball.csv"));
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0], "frame,height,squash");
    const auto container = load("ball.fcrvx");
    const FCurve& height = *container->begin();
    const FCurve& squash = *std::next(container->begin());
    const double first = height.begin()->getRightKey()->getX();
    const double last = std::max((--height.end())->getLeftKey()->getX(), (--squash.end())->getLeftKey()->getX());
    ASSERT_EQ(static_cast<double>(lines.size()) - 2.0, (last - first) * 4.0);
    for (std::size_t i = 1; i < lines.size(); ++i) {
        char* at = nullptr;
        const double frame = std::strtod(lines[i].c_str(), &at);
        EXPECT_EQ(frame, first + static_cast<double>(i - 1) / 4.0);
        EXPECT_EQ(std::strtod(at + 1, &at), height.eval(frame)); // to the last bit
        EXPECT_EQ(std::strtod(at + 1, &at), squash.eval(frame));
        EXPECT_EQ(*at, '\0');
    }
}

TEST_F(Tool, SampleChoosesAndQuotesColumns) {
    writeCurves("names.fcrvx", {"a,b", "say \"x\"", "", "same", "same", "2"});
    writeCurves("more.fcrvx", {"same"});
    const std::pair<std::string, std::string> rows[] = {
        {"names.fcrvx", R"(frame,"a,b","say ""x""",curve 3,same,same (2),2)"},
        {"names.fcrvx --curve 3 --curve 's*' --curve same", R"(frame,curve 3,"say ""x""",same,same (2))"},
        {"names.fcrvx --curve 2", "frame,2"}, // a name goes before a number
        {"camera.chan --from 0 -c rz -c chan1", "frame,chan5 (rz),chan1 (ty)"},
        {"names.fcrvx more.fcrvx --curve same", "frame,names: same,names: same (2),more: same"},
    };
    for (const auto& [arguments, columns] : rows) {
        EXPECT_EQ(Lines(run("sample --to 0 " + arguments).out).at(0), columns);
    }
    const auto spans = FCurveContainer::create();
    spans->addCurve(MakeCurve({{2, 0}, {4, 0}}));
    spans->addCurve(MakeCurve({{3, 0}, {5, 0}}));
    save(*spans, "spans.fcrvx");
    EXPECT_EQ(Lines(run("sample spans.fcrvx").out).size(), 5U) << "a heading, and frames 2 to 5";
}

TEST_F(Tool, PlotDrawsEveryExample) {
    for (const char* file : {"ball.fcrvx", "slide.fcrvx", "ends.fcrvx"}) {
        const Result result = run(std::string("plot --separate --velocity --keys on ") + file + " -o out.svg");
        ASSERT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(result.out + result.err, "");
        const View::Picture picture(read("out.svg"));
        const auto container = load(file);
        std::size_t keys = 0;
        for (const FCurve& curve : *container) keys += curve.size() - 1;
        EXPECT_EQ(picture.root().find("circle", "key").size(), keys);
        EXPECT_EQ(picture.panels().size(), 2 * container->size());
        for (const FCurve& curve : *container) EXPECT_THAT(picture.allText(), HasSubstr(curve.getName()));
    }
}

TEST_F(Tool, PlotLeavesHiddenCurvesOutUnlessNamed) {
    writeCurves("two.fcrvx", {"shown", "hidden"});
    const auto container = load("two.fcrvx");
    SetVisible(*std::next(container->begin()), false);
    save(*container, "two.fcrvx");
    const auto drawn = [this](const std::string& options) {
        return View::Picture(run("plot two.fcrvx " + options).out).root().find("g", "curve").size();
    };
    EXPECT_EQ(drawn(""), 1U);
    EXPECT_EQ(drawn("--curve hidden"), 1U);
    EXPECT_EQ(drawn("-c '*'"), 2U);
}

TEST_F(Tool, PlotObeysItsOptions) {
    const View::Picture picture(
        run("plot slide.fcrvx --size 500x300 --title 'A & B' --range 20:30 --values 50:150 -c eased").out);
    EXPECT_EQ(picture.root()["width"], "500");
    EXPECT_EQ(picture.root()["height"], "300");
    EXPECT_EQ(picture.root().find("title").front()->text, "A & B");
    EXPECT_EQ(picture.root().find("circle", "key").size(), 1U); // at frame 25
    const auto& [panel, frames, values] = picture.panels().front();
    const auto clip = panel->find("rect").front();
    EXPECT_NEAR(frames.toValue(clip->number("x")), 20.0, 0.01);
    EXPECT_NEAR(frames.toValue(clip->number("x") + clip->number("width")), 30.0, 0.01);
    EXPECT_NEAR(values.toValue(clip->number("y")), 150.0, 0.2);
    EXPECT_NEAR(values.toValue(clip->number("y") + clip->number("height")), 50.0, 0.2);
}

TEST_F(Tool, ConvertKeepsEveryCurve) {
    ASSERT_EQ(run("convert camera.chan camera.fcrvx").code, 0);
    EXPECT_EQ(Difference(*load("camera.chan"), *load("camera.fcrvx")), "");
    // Once more, through pipes, and by the format's name: the same bytes.
    EXPECT_EQ(run("convert - - --to xml <camera.fcrvx").out, read("camera.fcrvx"));
    EXPECT_EQ(run("convert --format hchan - - --to xml <camera.chan").out, read("camera.fcrvx"));
    // The old text holds keys and shapes to the last bit, and says what it does not hold.
    ASSERT_EQ(run("convert camera.chan old.fcrv").code, 0);
    const std::string samples = run("sample camera.chan --step 0.37").out;
    const std::string heading = "frame,chan0,chan1,chan2,chan3,chan4,chan5"; // without the roles of the channels
    EXPECT_TRUE(run("sample old.fcrv --step 0.37").out == heading + samples.substr(samples.find('\n')));
    EXPECT_EQ(read("old.fcrv").rfind("// property data loss\n", 0), 0U);
}

TEST_F(Tool, EditsChangeTheChosenCurveOnly) {
    writeCurves("in.fcrvx", {"a", "b"}); // a through (10, 20), b through (10, 40)
    const struct {
        const char* arguments;
        double x;
        double expected;
        std::size_t keys; // 0: any number
    } rows[] = {
        {"bake --step 2", 3.0, 6.0, 6},
        {"smooth --width 1 --filter triangle", 5.0, 10.0, 0},
        {"transform --scale-value 3 --move-time 10", 15.0, 30.0, 2},
        {"flip time", 2.0, 16.0, 2},
        {"flip value --value 1", 2.0, -2.0, 2},
        {"insert --at 4", 4.0, 8.0, 3},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arguments);
        const Result result = run(std::string(row.arguments) + " --curve a --plot edit.svg in.fcrvx out.fcrvx");
        ASSERT_EQ(result.code, 0) << result.err;
        EXPECT_THAT(read("edit.svg"), HasSubstr("</svg>"));
        const auto edited = load("out.fcrvx");
        ASSERT_EQ(edited->size(), 2u);
        const FCurve& a = *edited->begin();
        const FCurve& b = *std::next(edited->begin());
        EXPECT_NEAR(a.eval(row.x), row.expected, 1e-9);
        if (row.keys > 0) {
            EXPECT_EQ(a.size(), row.keys + 1);
        }
        EXPECT_EQ(b.size(), 3u);
        EXPECT_EQ(b.eval(5.0), 20.0);
    }
}

TEST_F(Tool, OutputsReplaceFilesAsAWhole) {
    write("out.csv", "precious");
    EXPECT_EQ(run("sample ball.fcrvx --curve nobody -o out.csv").code, 1);
    EXPECT_EQ(read("out.csv"), "precious");
    ASSERT_EQ(::chmod(path("out.csv").c_str(), 0640), 0);
    std::filesystem::create_symlink("out.csv", path("link.csv"));
    EXPECT_EQ(run("sample ball.fcrvx -o link.csv").code, 0);
    EXPECT_THAT(read("out.csv"), StartsWith("frame,height"));
    EXPECT_TRUE(std::filesystem::is_symlink(path("link.csv")));
    struct ::stat status {};
    ASSERT_EQ(::stat(path("out.csv").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
    // In place, the input is read before it is replaced.
    EXPECT_EQ(run("convert slide.fcrvx slide.fcrvx").code, 0);
    EXPECT_EQ(load("slide.fcrvx")->size(), 3U);
    // A device is written to, not replaced.
    EXPECT_EQ(run("plot ball.fcrvx -o /dev/null").code, 0);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    for (const std::string& name : files()) EXPECT_THAT(name, Not(HasSubstr(".tmp")));
}

// The tool waits for its input here, which is work that lasts.
TEST_F(Tool, ProgressShowsOnTerminalsOnly) {
    int master = -1;
    int terminal = -1;
    char name[256];
    ASSERT_EQ(::openpty(&master, &terminal, name, nullptr, nullptr), 0);
    for (const std::string& errors : {std::string(name), path("errors")}) {
        const std::string command =
            "(sleep 1.3; cat '" + path("slide.fcrvx") + "') | '" FCURVETOOL "' info - >/dev/null 2>'" + errors + "'";
        EXPECT_EQ(std::system(command.c_str()), 0);
    }
    ::close(terminal);
    std::string shown;
    char piece[4096];
    for (ssize_t count; (count = ::read(master, piece, sizeof piece)) > 0;) {
        shown.append(piece, static_cast<std::size_t>(count));
    }
    ::close(master);
    EXPECT_THAT(shown, HasSubstr("fcurvetool: reading <stdin>, 1 s"));
    EXPECT_EQ(shown.substr(shown.rfind('\r')), "\r\x1b[K"); // the line is erased at the end
    EXPECT_EQ(read("errors"), "");
}
