// Runs fcurvetool itself.

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
#include <map>
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
    Result run(const std::string& arguments, const std::string& environment = "") const {
        const std::string command = "cd '" + m_folder.path().string() + "' && { " + environment + " '" FCURVETOOL "' "
                                    + arguments + "; } >.stdout 2>.stderr";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read(".stdout"), read(".stderr")};
    }
    /// Each line of rows is a command line, " => ", and how the complaint starts after "fcurvetool: ". All end with the
    /// code and nothing but one line, and no file has changed.
    void expectComplaints(int code, const char* rows) const {
        const auto before = contents();
        for (const std::string& row : Lines(rows)) {
            const auto arrow = row.find(" => ");
            if (arrow == std::string::npos) continue;
            const Result result = run(row.substr(0, arrow));
            EXPECT_EQ(result.code, code) << row;
            EXPECT_EQ(result.out, "") << row;
            EXPECT_THAT(result.err, StartsWith("fcurvetool: " + row.substr(arrow + 4))) << row;
            EXPECT_EQ(Lines(result.err).size(), 1U) << result.err;
        }
        EXPECT_EQ(contents(), before);
    }
    std::string path(const std::string& name) const { return m_folder.file(name); }
    std::string read(const std::string& name) const { return readWholeFile(path(name)); }
    void write(const std::string& name, const std::string& text) const { writeWholeFile(path(name), text); }
    std::map<std::string, std::string> contents() const {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.path())) {
            const std::string name = entry.path().filename().string();
            if (name[0] != '.') files[name] = read(name);
        }
        return files;
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

TEST_F(Tool, BadCommandLinesEndWithTwo) {
    write("picture.svg", read("ball.fcrvx"));
    expectComplaints(2, R"(
 => a command is required (run fcurvetool --help for details)
frobnicate => unknown command "frobnicate" (run fcurvetool --help
smoht ball.fcrvx => unknown command "smoht"; did you mean smooth? (run
info => FILE is required (run fcurvetool info --help for details)
info ball.fcrvx --nonsense =>
info ball.fcrvx --format nonsense => --format: unknown format "nonsense" (the tool reads 
info ball.fcrvx --fps 24 => --frame-column and --fps are for .chan files; ball.fcrvx is XML
info camera.chan --fps 0 => --fps: must be above 0
info camera.chan --fps 24 --frame-column no => --fps needs the first column
info camera.chan --frame-column maybe => --frame-column: "maybe" is not auto, yes or no
eval ball.fcrvx =>
eval ball.fcrvx ten => frames: "ten" is not a valid frame range
eval ball.fcrvx 1:2:3:4 => frames: "1:2:3:4"
eval ball.fcrvx 1:2:0 => a step of 0 does not lead from 1 to 2
eval ball.fcrvx 10:1 => a step of 1 does not lead from 10 to 1
eval ball.fcrvx 0:1e6 => more than 100000 frames
eval ball.fcrvx 1 --curve '' => --curve: the name is empty
sample ball.fcrvx --step -1 => a step of -1
sample ball.fcrvx --step x =>
sample ball.fcrvx --from 10 --to 5 => a step of 1
sample ball.fcrvx --to 1e300 => too many frames
sample ball.fcrvx --step 1e-6 => 6.9e+07 samples from frame 1 to 70; --no-limit allows more
sample ball.fcrvx -o ./ball.fcrvx => ./ball.fcrvx is the input, too
plot ball.fcrvx --size 10 => --size: "10" is not
plot ball.fcrvx --size 100x => --size: "100x" is not
plot ball.fcrvx --size 300x100 => --size: too little room here, take at least
plot ball.fcrvx --range 5:5 => --range: "5:5" is not LOW:HIGH
plot ball.fcrvx --values 1 => --values: "1" is not LOW:HIGH
plot ball.fcrvx --keys maybe =>
plot ball.fcrvx --select height:3-1 => --select: "height:3-1" ends before
plot ball.fcrvx -o slide.fcrvx => slide.fcrvx: pictures are written as .svg or .png
plot ball.fcrvx -o picture.svg => picture.svg is a file of curves
bake ball.fcrvx out.fcrvx --plot out.fcrvx => out.fcrvx: pictures are written as
bake ball.fcrvx out.svg --to xml --plot out.svg => out.svg is a file of curves
bake ball.fcrvx - --step 0 => --step: must be above 0
bake ball.fcrvx - --step 1e-9 => ball.fcrvx: height: 6.8e+10 samples
smooth ball.fcrvx - --step 1e-9 => ball.fcrvx: height: 6.8e+10 samples
fit ball.fcrvx - --step 0 => --step: must be keys, or a number above 0
reduce ball.fcrvx - --tolerance x% => --tolerance: "x%" is not
reduce ball.fcrvx - --tolerance -1 => --tolerance: "-1" is not
smooth ball.fcrvx - --filter nice => --filter: "nice" is not
bake ball.fcrvx => OUTPUT is required, or --in-place
bake ball.fcrvx ball.fcrvx => ball.fcrvx is the input, too; give --in-place
bake ball.fcrvx out.fcrvx --in-place => --in-place writes to FILE
bake - --in-place => --in-place cannot write to standard input
insert ball.fcrvx out.fcrvx => --at is required
convert ball.fcrvx => OUTPUT is required
convert ball.fcrvx ball.unknown => --to is required
convert ball.fcrvx b.csv --set long => --set: "long" is not FORMAT.SETTING=VALUE
convert ball.fcrvx b.csv --set csv.shpae=long => --set: There is no setting "csv.shpae"; there are chan.frames, css.
convert ball.fcrvx b.csv --set csv.shape=sideways => --set: csv.shape is wide or long or table, not "sideways".
convert ball.fcrvx b.csv --set csv.time=0 => --set: csv.time is rows or the number of a column, not "0".
convert ball.fcrvx b.csv --tolerance 0 => --tolerance: must be above 0
convert ball.fcrvx b.csv --report ball.fcrvx => ball.fcrvx is the input, too
convert ball.fcrvx b.csv --report ./b.csv => --report and OUTPUT are both b.csv
convert ball.fcrvx slide.chan --to chan => --to: "chan" cannot be written
)");
}

TEST_F(Tool, BadInputEndsWithOneAndSaysWhere) {
    write("empty.fcrvx", "");
    write("letter.txt", "Dear Sir,\nthis is no curve.\n");
    write("ragged.chan", "1 2 3\n2 3 4\n3 4\n");
    write("word.chan", "1 2\n2 three\n");
    writeCurves("unknown.fcrvx", {"a"});
    const auto unknown = load("unknown.fcrvx");
    std::next(unknown->begin()->begin())->setInterpolator(InterpolatorFactory::create("dance(x"));
    save(*unknown, "unknown.fcrvx");
    const std::string ball = read("ball.fcrvx");
    write("mismatched.fcrvx", ball.substr(0, ball.find('\n', 100)) + "</nothing>");
    expectComplaints(1, R"(
info missing.fcrvx => missing.fcrvx: cannot be read: No such file
info . => .: cannot be read: Is a directory
info empty.fcrvx => empty.fcrvx: empty
info letter.txt => letter.txt: not in a known format (
info letter.txt --format hchan => letter.txt:1:1:
info ragged.chan => ragged.chan:3:
eval word.chan 1 => word.chan:2:3:
sample mismatched.fcrvx => mismatched.fcrvx:4:28:
convert --format hchan - out.fcrvx <word.chan => <stdin>:2:3:
convert slide.fcrvx b.usda --set usda.into=none.usda => none.usda: cannot be read: No such file or directory
convert slide.fcrvx b.usda --set usda.into=letter.txt => letter.txt:1:1: Expected
plot ball.fcrvx --curve nobody => ball.fcrvx: no curve "nobody" (it has height, squash)
plot ball.fcrvx --select height:99 => --select: height has no key 99
plot ball.fcrvx -o nowhere/ball.svg => nowhere/ball.svg: cannot be written: No such file or directory
sample ball.fcrvx --curve nobody -o slide.fcrvx => ball.fcrvx: no curve
)");
    // Warnings tell file, curve and text, and do not stop the work unless they are to.
    for (const char* command :
         {"info unknown.fcrvx", "eval unknown.fcrvx 1", "sample unknown.fcrvx", "plot unknown.fcrvx",
          "bake unknown.fcrvx -", "smooth unknown.fcrvx -", "insert unknown.fcrvx - --at 5"}) {
        const std::string warning =
            "fcurvetool: warning: unknown.fcrvx: a: the expression \"dance(x\" is unknown and evaluates to 0\n";
        const Result result = run(command);
        EXPECT_EQ(result.code, 0) << command;
        EXPECT_THAT(result.err, StartsWith(warning)) << command;
        EXPECT_NE(result.out, "") << command;
        const Result strict = run(command + std::string(" --strict"));
        EXPECT_EQ(strict.code, 1) << command;
        EXPECT_THAT(strict.err, StartsWith(warning)) << command;
        EXPECT_EQ(strict.out, "") << command;
    }
    // One bad file does not stop the others.
    const Result info = run("info ragged.chan camera.chan word.chan ball.fcrvx");
    EXPECT_EQ(info.code, 1);
    EXPECT_EQ(Lines(info.err).size(), 2U) << info.err;
    EXPECT_THAT(info.out, StartsWith("camera.chan: Houdini Channel, 6 curves\n"));
    EXPECT_THAT(info.out, HasSubstr("\n\nball.fcrvx: XML, 2 curves\n"));
}

TEST_F(Tool, FullDeviceEndsWithOne) {
    if (!std::filesystem::is_character_file("/dev/full")) GTEST_SKIP() << "no device that is always full";
    expectComplaints(1, "sample ball.fcrvx >/dev/full => <stdout>: cannot be written: No space left\n"
                        "plot ball.fcrvx -o /dev/full => /dev/full: cannot be written: No space left\n"
                        "sample ball.fcrvx -o . => .: cannot be written: Is a directory\n"
                        "convert ball.fcrvx /dev/full --to xml => /dev/full: cannot be written: No space left\n");
}

TEST_F(Tool, InfoFindsExtremaBetweenKeysAndHoldsStrangeNames) {
    const auto container = FCurveContainer::create();
    container->addCurve(MakeCurve({{0, 0, {}, {}, "16 * sin(x) ** 2"}, {1e9, 1, {}, {}, "constant()"}}))
        ->setName("\x1b[31mred\nline\u009B");
    container->addCurve(FCurve::create());
    container->addCurve(MakeCurve({{0, 0, {}, Vector2D<double>(5, 9)}, {10, 0, Vector2D<double>(-5, 9)}}));
    save(*container, "strange.fcrvx");
    const Result result = run("info strange.fcrvx");
    EXPECT_EQ(result.code, 0) << result.err;
    const auto lines = Lines(result.out);
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_THAT(lines[2], HasSubstr("\\x1b[31mred\\x0aline\\x9b  "));
    EXPECT_THAT(lines[2], HasSubstr("  15.99")); // 10^9 frames are looked at in a moment
    EXPECT_THAT(lines[3], HasSubstr("0      -"));
    EXPECT_THAT(lines[4], HasSubstr("     6.75  "));
}

TEST_F(Tool, TablesHoldWhatWasMeant) {
    writeCurves("two.fcrvx", {"a", "b"});
    writeCurves("names.fcrvx", {"a,b", "say \"x\"", "", "same", "same", "2"});
    writeCurves("more.fcrvx", {"same"});
    write("ramp.chan", "1 5\n2 6\n3 7\n");
    write("seconds.chan", "0 5\n0.041667 6\n0.083333 7\n");
    const std::pair<const char*, const char*> rows[] = {
        {"eval two.fcrvx 2.5 -1 0:0.3:0.1", "frame    a    b\n  2.5    5   10\n   -1    0    0\n    0    0    0\n"
                                            "  0.1  0.2  0.4\n  0.2  0.4  0.8\n  0.3  0.6  1.2\n"},
        {"eval two.fcrvx 5:3:-2 --curve b --velocity --acceleration",
         "frame   b  b velocity  b acceleration\n    5  20           4               0\n"
         "    3  12           4               0\n"},
        {"sample two.fcrvx --from 100000.25 --to 100000.35 --step 0.05", // decimal numbers, not sums of rounded steps
         "frame,a,b\n100000.25,20,40\n100000.3,20,40\n100000.35,20,40\n"},
        {"sample names.fcrvx --to 0", "frame,\"a,b\",\"say \"\"x\"\"\",curve 3,same,same (2),2\n0,0,0,0,0,0,0\n"},
        {"sample names.fcrvx --to 0 -c 3 -c 's*' -c same",
         "frame,curve 3,\"say \"\"x\"\"\",same,same (2)\n0,0,0,0,0\n"},
        {"sample names.fcrvx --to 0 -c 2", "frame,2\n0,0\n"}, // a name goes before a number
        {"sample names.fcrvx more.fcrvx --to 0 -c same", "frame,names: same,names: same (2),more: same\n0,0,0,0\n"},
        {"sample camera.chan --from 0 --to 0 -c rz -c chan1", "frame,chan5 (rz),chan1 (ty)\n0,0,1.6\n"},
        {"sample ramp.chan", "frame,chan0\n1,5\n2,6\n3,7\n"},
        {"sample ramp.chan --frame-column no --to 1", "frame,chan0,chan1\n1,1,5\n"},
        {"sample seconds.chan --fps 24", "frame,chan0\n0,5\n1,6\n2,7\n"},
        {"sample seconds.chan --frame-column yes", "frame,chan0\n0,5\n"},
    };
    for (const auto& [arguments, table] : rows) EXPECT_EQ(run(arguments).out, table) << arguments;
    // To the last bit, whatever the file; so many values are the compiled curves'.
    EXPECT_EQ(run("sample ball.fcrvx --step 0.25 -o ball.csv").out, "");
    const CompiledSet expected(*load("ball.fcrvx"));
    ASSERT_EQ(expected.size(), 2U);
    for (const std::string& line : Lines(read("ball.csv"))) {
        if (line == "frame,height,squash") continue;
        char* at = nullptr;
        const double frame = std::strtod(line.c_str(), &at);
        double values[2];
        expected.eval(frame, values);
        for (const double value : values) EXPECT_EQ(std::strtod(at + 1, &at), value);
    }
}

TEST_F(Tool, PlotDrawsWhatIsAskedFor) {
    writeCurves("two.fcrvx", {"shown", "hidden"});
    const auto container = load("two.fcrvx");
    SetVisible(*std::next(container->begin()), false);
    save(*container, "two.fcrvx");
    const auto count = [](const std::string& text, const std::string& what) {
        std::size_t number = 0;
        for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++number;
        return number;
    };
    const struct {
        const char* arguments;
        const char* what;
        std::size_t times;
    } rows[] = {{"two.fcrvx", "class=\"curve\"", 1},
                {"two.fcrvx --curve hidden", "class=\"curve\"", 1},
                {"two.fcrvx -c '*'", "class=\"curve\"", 2},
                {"slide.fcrvx --separate --velocity --acceleration", "class=\"panel\"", 9},
                {"slide.fcrvx --range 20:30 -c eased", "class=\"key\"", 2}, // at frame 25, and in the legend
                {"slide.fcrvx --size 500x300 --title 'A & B'", "width=\"500\" height=\"300\"", 2},
                {"slide.fcrvx --title 'A & B'", ">A &amp; B<", 2},
                {"slide.fcrvx --select eased:1-2", "class=\"selected\"", 2}};
    for (const auto& row : rows)
        EXPECT_EQ(count(run(std::string("plot ") + row.arguments).out, row.what), row.times) << row.arguments;
    const Result png = run("plot ball.fcrvx -o ball.png");
    if (std::system("command -v rsvg-convert >/dev/null") == 0)
        EXPECT_THAT(read("ball.png"), StartsWith("\x89PNG"));
    else
        EXPECT_EQ(png.code, 2);
    EXPECT_THAT(run("plot ball.fcrvx -o no.png", "PATH=/nowhere").err,
                HasSubstr("takes rsvg-convert, which is not installed"));
}

TEST_F(Tool, ConvertKeepsEveryCurveAndTellsLosses) {
    ASSERT_EQ(run("convert camera.chan camera.fcrvx").err, "");
    EXPECT_EQ(Difference(*load("camera.chan"), *load("camera.fcrvx")), "");
    // Once more, through pipes, and by the format's name: the same bytes.
    EXPECT_EQ(run("convert - - --to xml <camera.fcrvx").out, read("camera.fcrvx"));
    const Result old = run("convert ends.fcrvx old.fcrv");
    EXPECT_EQ(old.code, 0);
    EXPECT_EQ(Lines(old.err).size(), 6U) << old.err;
    EXPECT_THAT(old.err, HasSubstr("warning: ends.fcrvx: continued: lost in \"tov_fcurve\": how the curve goes on"));
    EXPECT_EQ(run("convert ends.fcrvx strict.fcrv --strict").code, 1);
    EXPECT_FALSE(std::filesystem::exists(path("strict.fcrv")));

    const Result table = run("convert ball.fcrvx ball.csv --report lost.json");
    EXPECT_EQ(table.code, 0);
    EXPECT_THAT(table.err, HasSubstr("warning: ball.fcrvx: lost in \"csv\": height: kind replaced: "));
    EXPECT_THAT(read("lost.json"), HasSubstr("\"what\": \"kind\",\n      \"remedy\": \"replaced\""));
    EXPECT_EQ(run("convert ball.csv again.csv --set csv.shape=long --strict").err, "");
    EXPECT_THAT(read("again.csv"), StartsWith("curve,frame,value\nheight,"));
    EXPECT_EQ(run("convert ball.fcrvx strict.csv --strict --report strict.json").code, 1);
    EXPECT_FALSE(std::filesystem::exists(path("strict.csv")));
    EXPECT_TRUE(std::filesystem::exists(path("strict.json")));
}

TEST_F(Tool, EditsChangeTheChosenCurveOnly) {
    writeCurves("in.fcrvx", {"a", "b"}); // a through (10, 20), b through (10, 40)
    const struct {
        const char* arguments;
        double x;
        double expected;
        std::size_t keys; // 0: any number
        const char* says;
    } rows[] = {
        {"bake --step 2", 3.0, 6.0, 6, ""},
        {"bake --step 0.1", 0.3, 0.6, 101, ""},
        {"bake --step 0.1 --range 0.25:9", 9.0, 18.0, 90, ""},
        {"bake --step 3", 9.0, 18.0, 5, ""}, // widened to 12
        {"smooth --width 1 --filter triangle", 5.0, 10.0, 0, ""},
        {"fit --tolerance 0.1%", 3.0, 6.0, 2, ""},
        {"reduce --tolerance 0.01", 3.0, 6.0, 2, ""},
        {"transform --scale-value 3 --move-time 10", 15.0, 30.0, 2, ""},
        {"flip time", 2.0, 16.0, 2, ""},
        {"flip value --value 1", 2.0, -2.0, 2, ""},
        {"insert --at 4", 4.0, 8.0, 3, ""},
        {"move --time 30.4 --value 1.3 --snap 1 --snap-value 1", 35.0, 11.0, 2, ""},
        {"move --time -20 --range 5:20", -0.001 + 0.002, 20.0, 2,
         "fcurvetool: warning: in.fcrvx: held back after -9.999 frames\n"},
        {"move --time -20 --range 5:20 --cross", -5.0, 10.0, 2, ""},
        {"scale --time 2 --value 0.5 --about 10", 0.0, 5.0, 2, ""},
        {"delete --range 5:20", 5.0, 0.0, 1, ""},
        {"insert --at 10 --at 4", 4.0, 8.0, 3,
         "fcurvetool: warning: in.fcrvx: a: no key inserted at frame 10, where one stands already\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arguments);
        const Result result = run(std::string(row.arguments) + " --curve a --plot edit.svg in.fcrvx out.fcrvx");
        ASSERT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(result.err, row.says);
        EXPECT_THAT(read("edit.svg"), HasSubstr("class=\"before\""));
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
        if (std::string(row.arguments) == "bake --step 0.1") {
            double frame = 0.0; // keys on the decimal numbers that were meant
            for (auto it = std::next(a.begin()); it != a.end(); ++it)
                EXPECT_EQ(it->getLeftKey()->getX(), frame++ / 10.0);
        }
    }
}

TEST_F(Tool, CurvesAreTakenOutPutTogetherAndRenamed) {
    const auto names = [&](const std::string& file) {
        const auto curves = load(file);
        std::vector<std::string> result;
        for (const FCurve& curve : *curves) result.push_back(curve.getName());
        return result;
    };
    writeCurves("abc.fcrvx", {"a", "b", "c"});
    writeCurves("b.fcrvx", {"b"});
    const auto done = [&](const std::string& arguments) {
        const Result result = run(arguments);
        EXPECT_EQ(result.code, 0) << arguments << result.err;
        return names("out.fcrvx");
    };
    using Strings = std::vector<std::string>;
    EXPECT_EQ(done("extract -c c -c a abc.fcrvx out.fcrvx"), (Strings{"c", "a"}));
    EXPECT_EQ(done("delete -c b abc.fcrvx out.fcrvx"), (Strings{"a", "c"}));
    EXPECT_THAT(run("rename --name d=x abc.fcrvx out.fcrvx").err, HasSubstr("abc.fcrvx: no curve \"d\""));
    EXPECT_EQ(done("rename --name b=a --name 'a=b' --name 'c=*_2' abc.fcrvx out.fcrvx"), (Strings{"b", "a", "c_2"}));
    EXPECT_EQ(done("merge b.fcrvx abc.fcrvx --replace -o out.fcrvx"), (Strings{"b", "a", "c"}));
    EXPECT_EQ(load("out.fcrvx")->begin()->eval(10), 40.0) << "the last one, in the place of the first";
    EXPECT_EQ(done("merge b.fcrvx abc.fcrvx --prefix -o out.fcrvx"), (Strings{"b:b", "abc:a", "abc:b", "abc:c"}));
    EXPECT_THAT(run("merge b.fcrvx abc.fcrvx -o no.fcrvx").err, HasSubstr("abc.fcrvx: a curve \"b\" came before"));
}

// What is taken out is what was there, or a warning says how far it is not.
TEST_F(Tool, AStretchThatIsTakenOutKeepsItsShape) {
    const auto automatic = FCurveContainer::create();
    automatic->addCurve(FCurve::create());
    automatic->begin()->setName("a");
    const std::pair<double, double> keys[] = {{0, 0}, {10, 10}, {20, 4}, {30, 12}, {30.5, 11}, {44, 1}};
    for (const auto& [x, y] : keys) SetKey(*automatic->begin(), x, y, EditSettings::spline());
    save(*automatic, "auto.fcrvx");
    const struct {
        const char* file;
        const char* range;
        const char* says;
    } rows[] = {{"ball.fcrvx", "20:40", ""},
                {"ball.fcrvx", "20.5:41.25", ""},
                {"auto.fcrvx", "10:20", ""},
                {"auto.fcrvx", "5:30", ""},
                {"auto.fcrvx", "10:30.4995", "a: no key can stand at frame 30.4995; kept up to the one at frame 30.5"},
                {"ends.fcrvx", "0:20", ""},
                {"ends.fcrvx", "10:60", "repeated: changes by 4.31 at frame 25"},
                {"ends.fcrvx", "30:40", "continued: changes by 2.5 at frame 40"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.file) + " " + row.range);
        const Result result = run(std::string("extract --range ") + row.range + " " + row.file + " cut.fcrvx");
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_THAT(result.err, HasSubstr(row.says));
        const auto before = load(row.file), after = load("cut.fcrvx");
        const std::string range = row.range;
        DiffOptions options;
        options.start = std::stod(range);
        options.end = std::stod(range.substr(range.find(':') + 1));
        for (auto i = before->begin(), j = after->begin(); i != before->end(); ++i, ++j) {
            EXPECT_TRUE(result.err.find(i->getName()) < result.err.size() || Diff(*i, *j, options).largest < 1e-9);
            EXPECT_LE(Keys(*j).back().getX(), std::max(options.end, 30.5));
        }
    }
}

TEST_F(Tool, DiffEndsWithOneBeyondTheTolerance) {
    EXPECT_EQ(run("transform --move-value 0.25 ball.fcrvx up.fcrvx").code, 0);
    EXPECT_EQ(run("convert ball.fcrvx same.fcrvb").code, 0);
    const struct {
        const char* arguments;
        int code;
        const char* says;
    } rows[] = {{"ball.fcrvx same.fcrvb --keys", 0, ""},
                {"ball.fcrvx up.fcrvx --tolerance 0.2501", 0, ""},
                {"ball.fcrvx up.fcrvx --tolerance 0.24", 1, "height differs by 0.25 at frame "},
                {"ball.fcrvx up.fcrvx --tolerance 0.2501 --keys -c squash", 0, ""},
                {"ball.fcrvx slide.fcrvx -c height", 1, "height is not in slide.fcrvx"},
                {"ball.fcrvx slide.fcrvx", 1, "height is not in slide.fcrvx, and 4 more"},
                {"ball.fcrvx none.fcrvx", 1, "none.fcrvx: cannot be read"},
                {"ball.fcrvx up.fcrvx --tolerance -1", 2, "--tolerance: must not be below 0"},
                {"ball.fcrvx up.fcrvx --tolerance nan", 2, "nan is not a finite number"}};
    for (const auto& row : rows) {
        const Result result = run(std::string("diff ") + row.arguments);
        EXPECT_EQ(result.code, row.code) << row.arguments << result.err;
        EXPECT_THAT(result.err, HasSubstr(row.says)) << row.arguments;
    }
    EXPECT_THAT(run("diff ball.fcrvx up.fcrvx").out, HasSubstr("height     0.25"));
    EXPECT_EQ(run("diff ball.fcrvx up.fcrvx -q").out, "");
}

TEST_F(Tool, TellsMachinesAndShells) {
    writeCurves("one.fcrvx", {"a\"b\xff"});
    const Result json = run("info --json one.fcrvx missing.fcrvx");
    EXPECT_EQ(json.code, 1);
    EXPECT_THAT(json.out, StartsWith("[\n  {\n    \"file\": \"one.fcrvx\",\n    \"format\": \"xml\","));
    EXPECT_THAT(json.out, HasSubstr("\"name\": \"a\\\"b\xef\xbf\xbd\",\n        \"keys\": 2,"));
    EXPECT_THAT(json.out, HasSubstr("\"linear()\": 1"));
    // Every command is in the manual and in the completions, which the shell accepts.
    const std::string page = run("manual").out;
    const std::string bash = run("completion bash >c.bash && bash -n c.bash && cat c.bash").out;
    const std::string fish = run("completion fish").out;
    const std::string zsh = run("completion zsh").out;
    for (const std::string& line : Lines(run("--help").out.substr(run("--help").out.find("Subcommands:")))) {
        const std::string command = line.substr(0, 2) == "  " ? line.substr(2, line.find(' ', 2) - 2) : "";
        if (command.empty()) continue;
        EXPECT_THAT(page, HasSubstr("\n.SS " + command + "\n"));
        EXPECT_THAT(bash, HasSubstr("\n        " + command + ") words='"));
        EXPECT_THAT(fish, HasSubstr(" -a " + command + " -d '"));
        EXPECT_THAT(zsh, HasSubstr("\n    " + command + ") _arguments"));
    }
    EXPECT_EQ(run("completion csh").code, 2);
}

TEST_F(Tool, OutputsReplaceFilesAsAWhole) {
    write("out.csv", "precious");
    ASSERT_EQ(::chmod(path("out.csv").c_str(), 0640), 0);
    std::filesystem::create_symlink("out.csv", path("link.csv"));
    EXPECT_EQ(run("sample ball.fcrvx -o link.csv").code, 0);
    EXPECT_THAT(read("out.csv"), StartsWith("frame,height"));
    EXPECT_TRUE(std::filesystem::is_symlink(path("link.csv")));
    struct ::stat status {};
    ASSERT_EQ(::stat(path("out.csv").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
    for (const char* command : {"flip value --value 0", "convert"}) {
        EXPECT_EQ(run(command + std::string(" slide.fcrvx --in-place")).code, 0);
        EXPECT_EQ(load("slide.fcrvx")->begin()->eval(25.0), -100.0);
    }
    // A device is written to, not replaced.
    EXPECT_EQ(run("plot ball.fcrvx -o /dev/null").code, 0);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    for (const auto& [name, content] : contents()) EXPECT_THAT(name, Not(HasSubstr(".tmp")));
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
