#include "support/Allocations.h"
#include "support/CallRecorder.h"
#include "support/Museum.h"
#include "support/RandomCurve.h"
#include "support/SameCurve.h"
#include "support/StreamOf.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace Test;
namespace fs = std::filesystem;

namespace {

struct Stop {};

struct Listener : ContainerObserver, FCurveObserver {
    int containers = 0;
    int curves = 0;
    void containerChanged(FCurveContainer&) override { ++containers; }
    void curveChanged(FCurve&) override { ++curves; }
};

// A container with two curves of thousands of keys, and a document of it that is there already.
class CurveFiles : public testing::Test {
protected:
    CurveFiles() {
        for (const char* name : {"a", "b"}) {
            const auto curve = FCurve::create();
            curve->setName(name);
            for (int x = 0; x < 5000; ++x)
                curve->insertSegment(*Keyframe::create(x, 0.1 * x), InterpolatorFactory::create("linear()"));
            m_container->addCurve(curve);
        }
        m_container->setProperty("shot", "12");
    }

    std::string at(const std::string& name) const { return m_folder.file(name); }

    std::size_t files() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(m_folder.path()), fs::directory_iterator()));
    }

    // What leaves: "", "Cancelled", "Stop", or the text of the exception without namespaces.
    static std::string outcomeOf(const std::function<void()>& act) {
        try {
            act();
            return "";
        } catch (const Stop&) {
            return "Stop";
        } catch (const Exception& error) {
            return std::string(error.what()).substr(19);
        }
    }

    TempFolder m_folder;
    std::shared_ptr<FCurveContainer> m_container = FCurveContainer::create();
};

// Ends the work at the callback of this number: cancels, or throws.
template<class Options>
struct Breaks {
    Breaks(int call, bool asException) : at(call), throws(asException) {}

    int at;
    bool throws;
    int calls = 0;
    std::vector<double> shares;

    Options options() {
        Options result;
        result.progress = [this](double share) {
            shares.push_back(share);
            if (throws && ++calls == at) throw Stop();
        };
        result.cancelled = [this] { return !throws && ++calls == at; };
        return result;
    }
};

void expectShares(const std::vector<double>& shares) {
    ASSERT_GE(shares.size(), 3U);
    EXPECT_GT(shares.front(), 0.0);
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_EQ(shares.back(), 1.0);
}

} // namespace

TEST_F(CurveFiles, SavedIsLoadedByContentInTheFormatOfTheName) {
    for (const char* file : {"a.fcrvx", "a.FCRVB", "a.unknown"}) {
        const std::string path = at(file);
        const char* const format = std::string(file) == "a.unknown" ? "binary" : nullptr;
        SaveCurves(path.c_str(), *m_container, format);
        const auto loaded = FCurveContainer::create();
        EXPECT_STREQ(LoadCurves(path.c_str(), *loaded).getFormatName(),
                     std::string(file) == "a.fcrvx" ? "xml" : "binary");
        EXPECT_EQ(Difference(*m_container, *loaded), "");

        SaveCurve(path.c_str(), *m_container->begin(), format);
        const auto one = RandomCurve(3).make();
        LoadCurve(path.c_str(), *one);
        EXPECT_EQ(Difference(*m_container->begin(), *one), "");
        LoadCurves(path.c_str(), *loaded);
        EXPECT_EQ(loaded->size(), 3U) << "added";
    }
    EXPECT_EQ(files(), 3U);
    EXPECT_EQ(outcomeOf([&] { SaveCurves(at("a.txt").c_str(), *m_container); }), "UnknownFormat");
    EXPECT_EQ(outcomeOf([&] { SaveCurves(at("fcrvx").c_str(), *m_container, ""); }), "UnknownFormat");
    EXPECT_EQ(outcomeOf([&] { SaveCurves(at("a.fcrvx").c_str(), *m_container, "nothing"); }), "UnknownFormat");
    EXPECT_EQ(outcomeOf([&] { SaveCurves(nullptr, *m_container, "xml"); }), "SaveError");
    EXPECT_EQ(outcomeOf([&] { LoadCurves(at("none").c_str(), *m_container); }), "LoadError");
    EXPECT_EQ(files(), 3U);
    LoadOptions text;
    text.format = "text";
    EXPECT_EQ(outcomeOf([&] { LoadCurves(at("a.fcrvx").c_str(), *m_container, text); }).substr(0, 10), "TextFormat");
    // Content that tells nothing: the name says which reader can complain.
    writeWholeFile(at("broken.fcrvx"), "< ?xml");
    EXPECT_EQ(outcomeOf([&] { LoadCurves(at("broken.fcrvx").c_str(), *m_container); }), "XMLFormat::ParseError");
    writeWholeFile(at("broken"), "< ?xml");
    EXPECT_EQ(outcomeOf([&] { LoadCurves(at("broken").c_str(), *m_container); }), "UnknownFormat");
}

TEST_F(CurveFiles, CallbacksHearOfTheWorkAndEndIt) {
    const std::string path = at("a.fcrvx");
    SaveCurves(path.c_str(), *m_container);
    const std::string old = readWholeFile(path);
    m_container->setProperty("shot", "13");
    for (const bool throws : {false, true}) {
        for (int call = 1;; ++call) {
            Breaks<SaveOptions> breaks{call, throws};
            const std::string outcome =
                outcomeOf([&] { SaveCurves(path.c_str(), *m_container, nullptr, breaks.options()); });
            EXPECT_EQ(files(), 1U);
            if (outcome.empty()) {
                EXPECT_GT(call, 5);
                expectShares(breaks.shares);
                EXPECT_NE(readWholeFile(path), old);
                writeWholeFile(path, old);
                break;
            }
            EXPECT_EQ(outcome, throws ? "Stop" : "Cancelled");
            EXPECT_EQ(readWholeFile(path), old);
        }
        for (int call = 1;; ++call) {
            Breaks<LoadOptions> breaks{call, throws};
            const auto loaded = FCurveContainer::create();
            loaded->setProperty("shot", "1");
            Listener listener;
            loaded->subscribe(listener);
            const std::string outcome = outcomeOf([&] { LoadCurves(path.c_str(), *loaded, breaks.options()); });
            if (outcome.empty()) {
                EXPECT_GE(call, 4);
                expectShares(breaks.shares);
                break;
            }
            EXPECT_EQ(outcome, throws ? "Stop" : "Cancelled");
            EXPECT_TRUE(loaded->empty());
            EXPECT_STREQ(loaded->getProperty("shot"), "1");
            EXPECT_EQ(listener.containers, 0);
        }
    }
}

TEST_F(CurveFiles, ALoadThatFailsChangesNothing) {
    const std::string path = at("a.fcrvx");
    SaveCurves(path.c_str(), *m_container);
    const std::string bytes = readWholeFile(path);
    const auto target = FCurveContainer::create();
    target->addCurve(RandomCurve(1).make());
    target->setProperty("shot", "1");
    target->setProperty("take", "2");
    const auto before = FCurveContainer::create();
    before->addCurve(FCurve::createCopy(*target->begin()));
    before->setProperty("shot", "1");
    before->setProperty("take", "2");
    FCurve& first = *target->begin();
    Listener listener;
    target->subscribe(listener);
    FCurve::subscribeGlobal(listener);

    for (const double part : {0.1, 0.5, 0.9, 0.999}) { // within the second curve, too
        writeWholeFile(path, bytes.substr(0, static_cast<std::size_t>(part * static_cast<double>(bytes.size()))));
        EXPECT_NE(outcomeOf([&] { LoadCurves(path.c_str(), *target); }), "");
        EXPECT_NE(outcomeOf([&] { LoadCurve(path.c_str(), first); }), "");
        EXPECT_EQ(Difference(*before, *target), "");
    }
    // A small document, whose every allocation fails in turn.
    const auto small = FCurveContainer::create();
    for (const unsigned seed : {2U, 3U}) small->addCurve(RandomCurve(seed).make());
    small->setProperty("shot", "2");
    SaveCurves(path.c_str(), *small);
    EXPECT_EQ(listener.containers, 0);
    listener.curves = 0;
    long allocation = 0;
    while (runsOutOfMemory(allocation, [&] { LoadCurves(path.c_str(), *target); })) {
        ASSERT_EQ(Difference(*before, *target), "") << allocation;
        ASSERT_EQ(listener.containers + listener.curves, 0);
        ++allocation;
    }
    EXPECT_GT(allocation, 20);
    EXPECT_EQ(listener.containers, 1);
    EXPECT_EQ(listener.curves, 0);
    EXPECT_EQ(target->size(), 3U);
    EXPECT_EQ(&*target->begin(), &first);
    EXPECT_STREQ(target->getProperty("shot"), "2");
    EXPECT_STREQ(target->getProperty("take"), "2");
}

TEST_F(CurveFiles, AHostsWriterNeedsNoDocumentOfItsOwn) {
    RecordingWriter writer; // has none: is linked
    writer.only = {"startCurve"};
    EXPECT_EQ(writer.createDocument(*std::make_unique<MemoryStream>()), nullptr);
    SaveCurves(at("a.rec").c_str(), *m_container);
    EXPECT_EQ(writer.joined(), "startCurve a, startCurve b");
    EXPECT_EQ(writer.getStream(), nullptr);
    EXPECT_EQ(FormatFactory::getWriterByExtension("folder.rec/file"), nullptr);
    EXPECT_EQ(FormatFactory::getWriterByExtension("a.REC"), &writer);
    EXPECT_EQ(FormatFactory::getWriterByExtension(".rec"), nullptr);
    EXPECT_EQ(FormatFactory::getWriterByExtension(nullptr), nullptr);
}
