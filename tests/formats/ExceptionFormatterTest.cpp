#include "FCurveLib/FCurveLib.h"

#include <gtest/gtest.h>

#include <new>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

using namespace VEM_FN::FCurveLib;

namespace {

const std::string kFallback = "An unknown error occurred.";

template<class Raised>
std::string messageOf(const ExceptionFormatter& messages, const Raised& raised) {
    std::ostringstream out;
    try {
        throw raised; // NOLINT(misc-throw-by-value-catch-by-reference)
    } catch (...) {
        messages.formatException(out);
    }
    return out.str();
}

template<class Raised>
std::string libraryMessageOf(const char* name, const Raised& raised) {
    ExceptionFormatter::LibraryFormatter library(name);
    ExceptionFormatter messages;
    messages.addFormatter(library);
    return messageOf(messages, raised);
}

template<class... Raised>
std::vector<std::string> libraryMessagesOf(const Raised&... raised) {
    return {libraryMessageOf("f", raised)...};
}

// Knows one type.
template<class Known>
struct Says : ExceptionFormatter::Formatter {
    std::string text;
    explicit Says(std::string message) : text(std::move(message)) {}
    void format(std::ostream& out) const override {
        try {
            throw;
        } catch (const Known&) {
            out << text;
        }
    }
};

} // namespace

TEST(ExceptionFormatter, AsksTheNewestFirstAndEachOnce) {
    Says<std::runtime_error> a("a");
    Says<std::exception> b("b");
    ExceptionFormatter messages;
    EXPECT_EQ(messageOf(messages, 5), kFallback);
    messages.addFormatter(a);
    messages.addFormatter(b);
    EXPECT_EQ(messageOf(messages, std::runtime_error("")), "b");
    EXPECT_EQ(messageOf(messages, 5), kFallback);
    const ExceptionFormatter copy = messages;
    messages.addFormatter(a);
    EXPECT_EQ(messageOf(messages, std::runtime_error("")), "a");
    EXPECT_EQ(messageOf(messages, std::logic_error("")), "b");
    EXPECT_EQ(messageOf(copy, std::runtime_error("")), "b");

    // Held once: without b, nothing of a is left behind it.
    ExceptionFormatter twice;
    struct Counts : ExceptionFormatter::Formatter {
        mutable int asked = 0;
        void format(std::ostream& out) const override {
            ++asked;
            Formatter::format(out);
        }
    } counts;
    twice.addFormatter(counts);
    twice.addFormatter(counts);
    EXPECT_EQ(messageOf(twice, 5), kFallback);
    EXPECT_EQ(counts.asked, 1);
}

TEST(ExceptionFormatter, KeepsWhatAFormatterWroteBeforeItRaised) {
    struct Half : ExceptionFormatter::Formatter {
        void format(std::ostream& out) const override {
            out << "half, ";
            throw std::runtime_error("another");
        }
    } half;
    Says<int> whole("whole");
    ExceptionFormatter messages;
    messages.addFormatter(whole);
    messages.addFormatter(half);
    EXPECT_EQ(messageOf(messages, 5), "half, whole");
    EXPECT_EQ(messageOf(messages, 'c'), "half, " + kFallback);
}

TEST(ExceptionFormatter, RaisesNothingEvenWhenTheStreamDoes) {
    std::ostream out(nullptr); // takes no character
    EXPECT_THROW(out.exceptions(std::ios::badbit), std::ios::failure);
    EXPECT_THROW(out << "text", std::ios::failure);
    Says<int> willing("message");
    ExceptionFormatter messages;
    messages.addFormatter(willing);
    try {
        throw 5;
    } catch (...) {
        EXPECT_NO_THROW(messages.formatException(out));
    }
}

TEST(LibraryFormatter, PutsNameAndPositionInFront) {
    struct HostsError : FormatError {
        using FormatError::FormatError;
    };
    const HostsError error("A \"b\" was expected\n\x1b[2Jhere.", 12, 5);
    EXPECT_EQ(libraryMessageOf("walk.fcrvx", error), "walk.fcrvx:12:5: A \"b\" was expected??[2Jhere.");
    EXPECT_EQ(libraryMessageOf("wälk\n", error), "wälk?:12:5: A \"b\" was expected??[2Jhere.");
    EXPECT_EQ(libraryMessageOf(nullptr, error), "line 12, column 5: A \"b\" was expected??[2Jhere.");
    EXPECT_EQ(libraryMessageOf("f", HostsError("No position.")), "f: No position.");
    EXPECT_EQ(libraryMessageOf("", HostsError("No position.")), "No position.");
    EXPECT_EQ(libraryMessageOf("f", HostsError()), "f: The content does not follow its format.");
}

TEST(LibraryFormatter, HasAMessageForEveryExceptionOfTheLibraryAndForNoOther) {
    const std::vector<std::string> messages = libraryMessagesOf(
        Exception(), UnknownFormat(), FormatError(), File::FileException(), File::CantOpen(), File::FileExists(),
        File::FileDoesntExist(), File::AccessError(), File::ReadError(), File::WriteError(), File::EndOfFile(),
        SafeFileSave::CantFinish(), Stream::StreamException(), MemoryStream::EndOfBuffer(),
        ArrayStreamAdaptor::EndOfBuffer(), ArrayStreamAdaptor::AccessError(),
        DefaultFallbackParser::UnexpectedEnd("The expression ended prematurely.", 3), std::bad_alloc());
    for (const std::string& message : messages) {
        EXPECT_EQ(message.find("f: "), 0U) << message;
        EXPECT_EQ(message.find("VEM_FN"), std::string::npos) << message;
        EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    }
    EXPECT_EQ(std::set<std::string>(messages.begin(), messages.end()).size(), messages.size());

    EXPECT_EQ(libraryMessageOf("f", std::runtime_error("host's")), kFallback);
    EXPECT_EQ(libraryMessageOf("f", 5), kFallback);
}
