#include "FCurveLib/FCurveLib.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <new>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>

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

    // Held once: without b, nothing of a is left after it.
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

// What raised says, without "VEM_FN::FCurveLib::"; and its message, which no other has.
template<class Raised>
std::string textOf(const Raised& raised, std::set<std::string>& messages) {
    const std::string message = libraryMessageOf("f", raised), what = raised.what();
    EXPECT_EQ(message.find("f: "), 0U) << message;
    EXPECT_EQ(message.find("VEM_FN"), std::string::npos) << message;
    EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    EXPECT_TRUE(messages.insert(message).second) << message;
    EXPECT_EQ(what.find("VEM_FN::FCurveLib::"), 0U) << what;
    return what.substr(19);
}

TEST(LibraryFormatter, HasAMessageForEveryExceptionOfTheLibraryAndForNoOther) {
    std::set<std::string> messages;
    EXPECT_EQ(textOf(Exception(), messages), "Exception");
    EXPECT_EQ(textOf(UnknownFormat(), messages), "UnknownFormat");
    EXPECT_EQ(textOf(FormatError(), messages), "FormatError");
    EXPECT_EQ(textOf(File::FileException(), messages), "File::Exception");
    EXPECT_EQ(textOf(File::CantOpen(), messages), "File::CantOpen");
    EXPECT_EQ(textOf(File::FileExists(), messages), "File::FileExists");
    EXPECT_EQ(textOf(File::FileDoesntExist(), messages), "File::FileDoesntExist");
    EXPECT_EQ(textOf(File::AccessError(), messages), "File::AccessError");
    EXPECT_EQ(textOf(File::ReadError(), messages), "File::ReadError");
    EXPECT_EQ(textOf(File::WriteError(), messages), "File::WriteError");
    EXPECT_EQ(textOf(File::EndOfFile(), messages), "File::EndOfFile");
    EXPECT_EQ(textOf(SafeFileSave::CantFinish(), messages), "SafeFileSave::CantFinish");
    EXPECT_EQ(textOf(LoadError(ENOENT, "a"), messages), "LoadError");
    EXPECT_EQ(textOf(SaveError(EACCES, "a", SaveError::Old, "a.tmp\n", SaveError::New), messages), "SaveError");
    EXPECT_EQ(textOf(Cancelled(), messages), "Cancelled");
    EXPECT_EQ(textOf(Stream::StreamException(), messages), "Stream::StreamException");
    EXPECT_EQ(textOf(MemoryStream::EndOfBuffer(), messages), "MemoryStream::EndOfBuffer");
    EXPECT_EQ(textOf(ArrayStreamAdaptor::EndOfBuffer(), messages), "ArrayStreamAdaptor::EndOfBuffer");
    EXPECT_EQ(textOf(ArrayStreamAdaptor::AccessError(), messages), "ArrayStreamAdaptor::AccessError");
    EXPECT_EQ(libraryMessageOf("f", DefaultFallbackParser::UnexpectedEnd("The expression ended prematurely.", 3)),
              "f: The expression ended prematurely. (at character 4)");
    EXPECT_EQ(libraryMessageOf("f", std::bad_alloc()).find("f: "), 0U);
    EXPECT_EQ(libraryMessageOf("f", std::runtime_error("host's")), kFallback);
    EXPECT_EQ(libraryMessageOf("f", 5), kFallback);
}
