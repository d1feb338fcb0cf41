// Documents become curves, then XML, and are compared with tests/golden; those of tests/refused raise the message that
// stands above them. "FCURVELIB_UPDATE_GOLDEN=1 test_formats" writes these files anew and fails: git diff shows what
// became different.

#include "support/BinaryDocument.h"
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
        if (text.find("Read and written by `FCurveLib::Interchange`") != std::string::npos)
            continue; // tests/interchange reads these
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
    const bool isSingle = container.sizeProperties() == 0 && container.size() == 1;
    return isSingle ? WrittenAs(format, *container.begin()) : WrittenAs(format, container);
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

// In tests/refused "{{00}}" is a byte.
std::string withBytes(std::string text) {
    for (std::size_t at = 0; (at = text.find("{{", at)) != std::string::npos && text.compare(at + 4, 2, "}}") == 0;
         ++at)
        text.replace(at, 6, 1, static_cast<char>(std::stoi(text.substr(at + 2, 2), nullptr, 16)));
    return text;
}

// The document of a text such as: Name[ "sized" u8:7 f64:nan 'raw' ]
std::string assembled(std::istream& in) {
    std::string bytes;
    for (std::string word; in >> word && word != "]";) {
        const std::string number = word.substr(word.find(':') + 1);
        const std::string text = word.size() > 1 ? withBytes(word.substr(1, word.size() - 2)) : "";
        if (word.back() == '[') {
            bytes += block(word.substr(0, 4), assembled(in));
        } else if (word[0] == '\'' || word[0] == '"') {
            bytes += word[0] == '"' ? sized(text) : text;
        } else if (word[0] == 'f') {
            bytes += f64(std::strtod(number.c_str(), nullptr));
        } else {
            bytes += u32(std::stoul(number)).substr(0, std::stoul(word.substr(1)) / 8);
        }
    }
    return bytes;
}

// Reading a container, or where that succeeds, a single curve. An expression is parsed.
std::string refusalOf(const std::string& text, const char* format) {
    if (format == std::string("expression")) {
        try {
            DefaultFallbackParser().parseOrThrow(withBytes(text).c_str());
        } catch (const DefaultFallbackParser::ParseError& error) {
            const std::string what = error.what();
            return what.substr(what.rfind(':') + 1) + " at " + std::to_string(error.getPosition()) + ": "
                   + error.getMessage();
        }
        return "";
    }
    std::istringstream words(text);
    const std::string bytes = format == std::string("binary") ? assembled(words) : withBytes(text);
    FormatInterface nobody;
    MemoryStream stream = StreamOf(bytes);
    const std::string error = errorOf([&] { FormatFactory::getReader(format)->readCurves(stream, nobody); });
    if (!error.empty()) return error;
    const auto curve = FCurve::create();
    const auto before = FCurve::createCopy(*curve);
    const std::string single = errorOf([&] { ReadFCurveFromString(bytes, format, *curve); });
    EXPECT_EQ(Difference(*curve, *before), "");
    return single;
}

bool isUpdating() {
    return std::getenv("FCURVELIB_UPDATE_GOLDEN") != nullptr;
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
    if (isUpdating()) {
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

class RefusedDocuments : public testing::TestWithParam<const char*> {};

TEST_P(RefusedDocuments, RaiseTheMessagesAboveThem) {
    const std::string path = kSource + "tests/refused/" + GetParam() + ".txt";
    const std::string all = readWholeFile(path);
    std::string anew;
    int count = 0;
    for (std::size_t at = 0; at < all.size(); ++count) {
        ASSERT_EQ(all.compare(at, 4, "--- "), 0) << all.substr(at, 100);
        const std::size_t line = all.find('\n', at);
        const std::size_t next = std::min(all.find("\n--- ", line), all.size() - 1) + 1;
        const std::string text = next > line + 1 ? all.substr(line + 1, next - line - 2) : "";
        const std::string message = refusalOf(text, GetParam());
        EXPECT_NE(message, "") << "is read: " << text;
        if (!isUpdating()) {
            EXPECT_EQ(message, all.substr(at + 4, line - at - 4)) << text;
        }
        anew += "--- " + message + '\n' + text + '\n';
        at = next;
    }
    EXPECT_GT(count, 10);
    if (!isUpdating()) return;
    writeWholeFile(path, anew);
    FAIL() << path << " is written anew";
}

INSTANTIATE_TEST_SUITE_P(Formats, RefusedDocuments,
                         testing::Values("xml", "binary", "text", "tov_fcurve", "hchan", "hClip", "expression"),
                         [](const auto& format) { return std::string(format.param); });
