// Documents become curves, then XML, and are compared with tests/golden. "FCURVELIB_UPDATE_GOLDEN=1 test_formats"
// writes these files anew and fails: git diff shows what became different.

#include "support/SameCurve.h"
#include "support/StreamOf.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <map>
#include <regex>
#include <sstream>

using namespace Test;

namespace {

const std::string kSource = FCURVELIB_SOURCE_DIR "/";

using Texts = std::map<std::string, std::string>; // by name

Texts filesIn(const std::string& folder) {
    Texts files;
    for (const auto& entry : std::filesystem::directory_iterator(kSource + folder))
        if (entry.is_regular_file()) files[entry.path().filename().string()] = readWholeFile(entry.path().string());
    return files;
}

// A listing that is a dump of bytes, "0004 b8 00  what they say", is these bytes.
std::string undumped(const std::string& listing) {
    const std::regex line("([0-9a-f]{4})((?: [0-9a-f]{2})+)(?=[ \n])");
    std::string bytes;
    for (std::sregex_iterator i(listing.begin(), listing.end(), line), end; i != end; ++i) {
        if (std::stoul((*i)[1], nullptr, 16) != bytes.size()) return listing;
        std::istringstream digits((*i)[2]);
        for (unsigned byte; digits >> std::hex >> byte;) bytes += static_cast<char>(byte);
    }
    return bytes.empty() ? listing : bytes;
}

Texts listings() {
    Texts found;
    for (const auto& [page, text] : filesIn("docs/formats")) {
        const std::regex fence("\n```[a-z]*\n([^]*?\n)```\n");
        int count = 0;
        for (std::sregex_iterator i(text.begin(), text.end(), fence), end; i != end; ++i)
            found[page + ", listing " + std::to_string(++count)] = undumped((*i)[1]);
    }
    return found;
}

template<class Read>
std::string errorOf(const Read& read) {
    try {
        read();
    } catch (const Exception& error) {
        const std::string what = error.what();
        ExceptionFormatter::LibraryFormatter library(what.substr(what.rfind(':') + 1).c_str());
        ExceptionFormatter messages;
        messages.addFormatter(library);
        std::ostringstream out;
        messages.formatException(out);
        return out.str();
    }
    return "";
}

std::string writtenAs(const char* format, const FCurveContainer& container) {
    MemoryStream stream;
    const bool isSingle = container.sizeProperties() == 0 && container.size() == 1;
    isSingle ? WriteCurve(*container.begin(), stream, format) : WriteCurves(container, stream, format);
    return BytesOf(stream);
}

std::string oldText(const FCurveContainer& container) {
    std::ostringstream out;
    for (const FCurve& curve : container) out << TovConversion::TovCurve(curve);
    return out.str();
}

// XML without what is the same in every document, a segment in a line. Long ones end in a checksum.
std::string shortened(const std::string& xml) {
    std::istringstream lines(std::regex_replace(xml, std::regex("\n *<(out|in|/segment)"), "<$1"));
    std::ostringstream result;
    std::uint64_t sum = 0;
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        line.erase(0, line.find_first_not_of(' '));
        if (std::regex_match(line, std::regex("<\\?xml.*|</?fcurvelib.*|</?container>|</curve>"))) continue;
        if (++count <= 40) result << line << '\n';
        for (const char c : line + '\n') sum = (sum ^ static_cast<unsigned char>(c)) * 1099511628211U;
    }
    if (count > 40) result << count << " lines, checksum " << std::hex << sum << '\n';
    return result.str();
}

// What reading makes of a document. The format is that of the reader which is asked where none recognises it.
std::string outcomeOf(const std::string& bytes, const char* format) {
    std::ostringstream out;
    MemoryStream stream = StreamOf(bytes);
    Reader* reader = FormatFactory::getReader(stream);
    out << (reader ? reader->getFormatType().getFormatName() : "not recognised") << '\n';
    if (!reader && !(reader = FormatFactory::getReader(format))) return out.str();
    const std::string name = reader->getFormatType().getFormatName();

    const auto container = FCurveContainer::create();
    ContainerInterface target(*container);
    const std::string error = errorOf([&] { reader->readCurves(stream, target); });
    out << shortened(writtenAs("xml", *container));
    if (!error.empty()) out << "! " << error << '\n';

    const auto curve = FCurve::create();
    const std::string single = errorOf([&] { ReadFCurveFromString(bytes, name.c_str(), *curve); });
    if (single != error) out << "! as a single curve: " << single << '\n';
    if (single.empty() && !container->empty()) {
        EXPECT_EQ(Difference(*curve, *container->begin()), "");
    }

    const bool isWritten = FormatFactory::getWriter(name.c_str()) != nullptr;
    if ((isWritten && writtenAs(name.c_str(), *container) == bytes) || oldText(*container) == bytes)
        out << "is written again byte for byte\n";
    return out.str();
}

class GoldenDocuments : public testing::TestWithParam<const char*> {};

} // namespace

TEST_P(GoldenDocuments, ReadAsEver) {
    const std::string group = GetParam();
    Texts documents = group == "docs"       ? listings()
                      : group == "examples" ? filesIn("examples/data")
                                            : filesIn("fuzz/seeds/" + group);
    ASSERT_FALSE(documents.empty());
    for (auto& [name, text] : documents) text = outcomeOf(text, GetParam());

    const std::string path = kSource + "tests/golden/" + group + ".txt";
    if (std::getenv("FCURVELIB_UPDATE_GOLDEN")) {
        std::string all;
        for (const auto& [name, text] : documents) all += "=== " + name + ": " + text;
        writeWholeFile(path, all);
        FAIL() << path << " is written anew";
    }
    std::istringstream lines(readWholeFile(path));
    Texts golden;
    std::string* outcome = nullptr;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t colon = line.rfind(": ");
        const bool isFirst = line.substr(0, 4) == "=== ";
        if (isFirst) outcome = &golden[line.substr(4, colon - 4)];
        ASSERT_TRUE(outcome);
        *outcome += (isFirst ? line.substr(colon + 2) : line) + '\n';
    }
    for (const auto& [name, text] : golden) EXPECT_EQ(documents.count(name), 1U) << name << " is not there";
    for (const auto& [name, text] : documents) EXPECT_EQ(text, golden[name]) << name;
}

INSTANTIATE_TEST_SUITE_P(Formats, GoldenDocuments,
                         testing::Values("docs", "examples", "xml", "binary", "text", "tov_fcurve", "hchan", "hClip"),
                         [](const auto& group) { return std::string(group.param); });
