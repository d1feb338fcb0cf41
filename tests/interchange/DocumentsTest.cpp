// The documents of tests/interchange/documents, with what they must give. In each file:
//
//     === a title, perhaps with options: rate=25 csv.shape=long
//     the document; {{0d}} is that byte, {{.}} at the end of a line leaves its line end out
//     --- ball/tx: 1 0.5, 2 -1.25            a curve, and values at frames
//     --- keys ball/tx: 1, 2, 3              the frames of its keys
//     --- property frame_rate: 25            of the container
//     --- curve property ball/tx unit: cm
//     --- report time moved: ...             the beginning of a loss, as Describe has it
//     --- written again                      to the same bytes
//     --- refused BadDocument:2:3: message
//
// Whatever else the report says is an error, as is a curve that is not named. Each document is also read cut off and
// with changed bytes: then it gives curves or an exception of the library's.

#include "FCurveInterchange/FCurveInterchange.h"
#include "support/Invariants.h"
#include "support/Random.h"
#include "support/StreamOf.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using namespace Test;
using namespace VEM_FN::FCurveLib::Interchange;

namespace {

const std::string kFolder = FCURVELIB_SOURCE_DIR "/tests/interchange/documents/";

struct Sample {
    std::string title;
    ConversionOptions options;
    std::string bytes;
    std::vector<std::string> expected;
};

std::string withBytes(std::string text) {
    for (std::size_t at = 0; (at = text.find("{{", at)) != std::string::npos; ++at) {
        if (text.compare(at, 6, "{{.}}\n") == 0)
            text.erase(at, 6);
        else if (text.compare(at + 4, 2, "}}") == 0)
            text.replace(at, 6, 1, static_cast<char>(std::stoi(text.substr(at + 2, 2), nullptr, 16)));
    }
    return text;
}

std::vector<Sample> samplesOf(const std::string& format) {
    std::vector<Sample> samples;
    std::istringstream lines(readWholeFile(kFolder + format + ".txt"));
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, 4, "=== ") == 0) {
            Sample& sample = samples.emplace_back();
            sample.title = line.substr(4);
            std::istringstream words(sample.title);
            for (std::string word; words >> word;) {
                const std::size_t equals = word.find('=');
                if (equals == std::string::npos) continue;
                if (word.compare(0, 5, "rate=") == 0)
                    sample.options.frameRate = std::stod(word.substr(5));
                else
                    sample.options.settings[word.substr(0, equals)] = word.substr(equals + 1);
            }
        } else if (line.compare(0, 4, "--- ") == 0) {
            samples.back().expected.push_back(withBytes(line.substr(4)));
        } else {
            samples.back().bytes += line + '\n';
        }
    }
    for (Sample& sample : samples) sample.bytes = withBytes(sample.bytes);
    return samples;
}

struct Outcome {
    std::shared_ptr<FCurveContainer> curves = FCurveContainer::create();
    ConversionReport report;
    std::string refusal;
};

Outcome read(const std::string& bytes, const std::string& format, const ConversionOptions& options) {
    Outcome outcome;
    MemoryStream stream = StreamOf(bytes);
    ContainerInterface target(*outcome.curves);
    const Conversion conversion(outcome.report, options);
    try {
        FormatFactory::getReader(format.c_str())->readCurves(stream, target);
    } catch (const InterchangeError& error) {
        const std::string what = error.what();
        outcome.refusal = what.substr(what.rfind(':') + 1) + ':' + std::to_string(error.line()) + ':'
                          + std::to_string(error.column()) + ": " + error.message();
    } catch (const FormatError& error) { // of the readers that the core has
        outcome.refusal = error.what();
    }
    return outcome;
}

FCurve* curveOf(FCurveContainer& curves, const std::string& name) {
    for (FCurve& curve : curves)
        if (curve.getName() == name) return &curve;
    return nullptr;
}

std::pair<std::string, std::string> splitAt(const std::string& text, const std::string& mark) {
    const std::size_t at = text.rfind(mark);
    return at == std::string::npos ? std::pair(text, std::string())
                                   : std::pair(text.substr(0, at), text.substr(at + mark.size()));
}

std::string keysOf(const FCurve& curve) {
    std::ostringstream text;
    for (const Segment& segment : curve)
        if (segment.getLeftKey()) text << (text.tellp() > 0 ? ", " : "") << segment.getLeftKey()->getX();
    return text.str();
}

void expectValues(const FCurve& curve, const std::string& pairs) {
    std::istringstream list(pairs);
    for (std::string pair; std::getline(list, pair, ',');) {
        std::istringstream numbers(pair);
        double x = 0.0;
        double y = NAN;
        numbers >> x >> y;
        EXPECT_NEAR(curve.eval(x), y, 6e-9 * std::max(1.0, std::fabs(y))) << curve.getName() << " at " << x;
    }
}

void check(const Sample& sample, const std::string& format) {
    SCOPED_TRACE(sample.title);
    const Outcome outcome = read(sample.bytes, format, sample.options);
    std::set<std::string> named;
    std::vector<std::string> reports;
    std::string refusal;
    for (const std::string& line : sample.expected) {
        const auto is = [&](const char* word) { return line.compare(0, std::string(word).size(), word) == 0; };
        if (line == "written again") continue;
        if (is("refused "))
            refusal = line.substr(8);
        else if (is("report "))
            reports.push_back(line.substr(7));
        else if (is("property ")) {
            const auto [key, value] = splitAt(line.substr(9), ": ");
            EXPECT_EQ(outcome.curves->getProperty(key.c_str()), value) << key;
        } else if (is("curve property ")) {
            const auto [place, value] = splitAt(line.substr(15), ": ");
            const auto [name, key] = splitAt(place, " ");
            FCurve* const curve = curveOf(*outcome.curves, name);
            ASSERT_TRUE(curve) << name;
            EXPECT_EQ(curve->getProperty(key.c_str()), value) << place;
        } else {
            const bool isKeys = is("keys ");
            const auto [name, values] = splitAt(line.substr(isKeys ? 5 : 0), ": ");
            FCurve* const curve = curveOf(*outcome.curves, name);
            ASSERT_TRUE(curve) << name << " is not there; " << outcome.refusal;
            EXPECT_EQ(Fault(*curve), "");
            named.insert(name);
            if (isKeys)
                EXPECT_EQ(keysOf(*curve), values) << name;
            else
                expectValues(*curve, values);
        }
    }
    EXPECT_EQ(outcome.refusal, refusal);
    if (refusal.empty()) {
        EXPECT_EQ(named.size(), outcome.curves->size());
    }
    if (std::find(sample.expected.begin(), sample.expected.end(), "written again") != sample.expected.end()) {
        MemoryStream stream;
        const Conversion conversion(sample.options);
        WriteCurves(*outcome.curves, stream, format.c_str());
        EXPECT_EQ(BytesOf(stream), sample.bytes);
    }
    std::vector<std::string> told;
    for (const Loss& loss : outcome.report.losses()) told.push_back(Describe(loss));
    if (!refusal.empty()) return;
    EXPECT_EQ(told.size(), reports.size());
    for (std::size_t i = 0; i < std::max(told.size(), reports.size()); ++i) {
        const std::string expected = i < reports.size() ? reports[i] : "nothing";
        const std::string found = i < told.size() ? told[i] : "";
        EXPECT_EQ(found.substr(0, expected.size()), expected);
    }
}

class InterchangeDocuments : public testing::TestWithParam<const char*> {};

} // namespace

TEST_P(InterchangeDocuments, GiveWhatTheyMust) {
    RegisterFormats();
    const std::vector<Sample> samples = samplesOf(GetParam());
    ASSERT_FALSE(samples.empty());
    for (const Sample& sample : samples) check(sample, GetParam());
}

TEST_P(InterchangeDocuments, AreRecognised) {
    RegisterFormats();
    for (const Sample& sample : samplesOf(GetParam())) {
        if (!sample.expected.empty() && sample.expected.back().compare(0, 7, "refused") == 0) continue;
        if (!sample.options.settings.empty()) continue;
        MemoryStream stream = StreamOf(sample.bytes);
        const Reader* const reader = FormatFactory::getReader(stream);
        ASSERT_TRUE(reader) << sample.title;
        EXPECT_STREQ(reader->getFormatType().getFormatName(), GetParam()) << sample.title;
    }
}

TEST_P(InterchangeDocuments, MayBeCutOffAndChanged) {
    RegisterFormats();
    Random random(3);
    for (const Sample& sample : samplesOf(GetParam())) {
        const int size = static_cast<int>(sample.bytes.size());
        if (size == 0) continue;
        for (int i = 0; i < 200; ++i) {
            std::string bytes = sample.bytes;
            if (i % 2 == 0) {
                bytes.resize(static_cast<std::size_t>(size < 100 ? std::min(i / 2, size) : random.below(size)));
            } else {
                for (int n = random.below(3); n >= 0; --n)
                    random.oneOf(bytes) =
                        random.coin() ? "09.,;-e\"{}()[]: \n"[random.below(16)] : static_cast<char>(random.below(256));
            }
            const Outcome outcome = read(bytes, GetParam(), sample.options);
            for (FCurve& curve : *outcome.curves) ASSERT_EQ(Fault(curve), "") << bytes;
        }
    }
}

TEST_P(InterchangeDocuments, OfThePageAreRead) {
    const std::string format = GetParam();
    if (format == "hchan" || format == "hClip" || format == "text") return; // pages of the core
    if (format == "glb") return;                                            // bytes
    const std::string page = readWholeFile(FCURVELIB_SOURCE_DIR "/docs/formats/" + format + ".md");
    const std::string fence = "\n```" + format + '\n';
    int count = 0;
    for (std::size_t at = 0; (at = page.find(fence, at)) != std::string::npos; ++count) {
        at += fence.size();
        const Outcome outcome = read(page.substr(at, page.find("\n```", at) + 1 - at), format, {});
        EXPECT_EQ(outcome.refusal, "");
        EXPECT_FALSE(outcome.curves->empty());
    }
    EXPECT_GT(count, 0);
}

// Under a limit that just suffices a document is read; under one less it is refused.
TEST(InterchangeLimits, HoldForReaders) {
    RegisterFormats();
    const std::string table = "frame,ab,c\n1,2,3\n2,3,4\n3,4,5\n";
    const std::string anim = "animVersion 1.1; anim x x n 0 0 0; animData { keys { 0 0 flat flat 0 0 0; "
                             "1 1 flat flat 0 0 0; } } anim y y n 0 0 1; animData { }";
    const std::string frames =
        "{\"k\":[{\"t\":0,\"s\":[1,2],\"h\":1},{\"t\":1,\"s\":[1,2],\"h\":1},{\"t\":2,\"s\":[2,3]}]}";
    const struct {
        const char* format;
        std::string document;
        std::size_t FormatLimits::*limit;
        std::size_t enough;
    } rows[] = {
        {"csv", table, &FormatLimits::curves, 2},
        {"csv", table, &FormatLimits::keys, 3},
        {"csv", table, &FormatLimits::text, 2},
        {"css_easings", "ease\nsteps(3)\n", &FormatLimits::curves, 2},
        {"css_easings", "ease\nsteps(3)\n", &FormatLimits::keys, 4},
        {"lottie", frames, &FormatLimits::curves, 2},
        {"lottie", frames, &FormatLimits::keys, 3},
        {"maya_anim", anim, &FormatLimits::curves, 2},
        {"maya_anim", anim, &FormatLimits::keys, 2},
    };
    for (const auto& row : rows) {
        for (const std::size_t less : {0U, 1U}) {
            FormatLimits limits;
            limits.*row.limit = row.enough - less;
            const UnderLimits under(limits);
            const std::string refusal = read(row.document, row.format, {}).refusal;
            EXPECT_EQ(refusal.substr(0, 8), less ? "TooMuch:" : "") << row.format << ' ' << row.enough;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Interchange, InterchangeDocuments,
                         testing::Values("css_easings", "csv", "glb", "gltf", "hchan", "hClip", "lottie", "maya_anim",
                                         "text", "usda"),
                         [](const auto& format) { return std::string(format.param); });
