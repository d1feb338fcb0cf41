#include "FCurveLib/ExceptionFormatter.h"

#include "FCurveLib/ArrayStreamAdaptor.h"
#include "FCurveLib/BinaryFormat.h"
#include "FCurveLib/CurveFiles.h"
#include "FCurveLib/DefaultFallbackParser.h"
#include "FCurveLib/File.h"
#include "FCurveLib/FileError.h"
#include "FCurveLib/FormatExceptions.h"
#include "FCurveLib/MemoryStream.h"
#include "FCurveLib/SafeFileSave.h"
#include "FCurveLib/Stream.h"
#include "formats/Text.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <ostream>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace {

// Printable as it stands: control characters would steer a terminal or break the line. UTF-8 passes.
std::string Printable(const char* text) {
    std::string result = Private::OrEmpty(text);
    std::replace_if(
        result.begin(), result.end(), [](char c) { return (c >= '\0' && c < ' ') || c == '\x7f'; }, '?');
    return result;
}

std::string PositionIn(const std::string& name, std::uint64_t line, std::uint64_t column) {
    if (line == 0) return name.empty() ? "" : name + ": ";
    const std::string l = std::to_string(line);
    const std::string c = std::to_string(column);
    return name.empty() ? "line " + l + ", column " + c + ": " : name + ':' + l + ':' + c + ": ";
}

} // namespace

ExceptionFormatter::Formatter::Formatter() noexcept = default;
ExceptionFormatter::Formatter::Formatter(const Formatter&) noexcept = default;
ExceptionFormatter::Formatter& ExceptionFormatter::Formatter::operator=(const Formatter&) noexcept = default;
ExceptionFormatter::Formatter::~Formatter() = default;

void ExceptionFormatter::Formatter::format(std::ostream&) const {
    throw;
}

ExceptionFormatter::ExceptionFormatter() = default;
ExceptionFormatter::ExceptionFormatter(const ExceptionFormatter&) = default;
ExceptionFormatter::ExceptionFormatter(ExceptionFormatter&&) noexcept = default;
ExceptionFormatter& ExceptionFormatter::operator=(const ExceptionFormatter&) = default;
ExceptionFormatter& ExceptionFormatter::operator=(ExceptionFormatter&&) noexcept = default;
ExceptionFormatter::~ExceptionFormatter() = default;

void ExceptionFormatter::addFormatter(Formatter& formatter) {
    m_formatters.push_front(&formatter); // before it is removed: when memory runs out, nothing has changed
    m_formatters.erase(std::remove(m_formatters.begin() + 1, m_formatters.end(), &formatter), m_formatters.end());
}

void ExceptionFormatter::formatException(std::ostream& out) const {
    for (const Formatter* formatter : m_formatters) {
        try {
            formatter->format(out);
            return;
        } catch (...) { // NOLINT(bugprone-empty-catch): declined, the next one is asked
        }
    }
    try {
        out << "An unknown error occurred.";
    } catch (...) { // NOLINT(bugprone-empty-catch): the stream throws, and there is nobody else to tell
    }
}

ExceptionFormatter::LibraryFormatter::LibraryFormatter(const char* name) : m_name(Printable(name)) {}
ExceptionFormatter::LibraryFormatter::LibraryFormatter(const LibraryFormatter&) = default;
ExceptionFormatter::LibraryFormatter&
ExceptionFormatter::LibraryFormatter::operator=(const LibraryFormatter&) = default;
ExceptionFormatter::LibraryFormatter::~LibraryFormatter() = default;

void ExceptionFormatter::LibraryFormatter::setName(const char* name) {
    m_name = Printable(name);
}

void ExceptionFormatter::LibraryFormatter::format(std::ostream& out) const {
    const auto write = [&](const char* sentence, std::uint64_t line = 0, std::uint64_t column = 0) {
        out << PositionIn(m_name, line, column) << sentence;
    };

    try {
        throw;
    }
    // formats
    catch (const UnknownFormat&) {
        write("The format is not recognised.");
    } catch (const BinaryFormat::BinaryError& error) {
        const std::string offset = "at byte " + std::to_string(error.offset()) + ": ";
        write(((error.offset() > 0 ? offset : "") + Printable(error.message())).c_str());
    } catch (const FormatError& error) {
        const std::string message = Printable(error.message());
        write(message.empty() ? "The content does not follow its format." : message.c_str(), error.line(),
              error.column());
    }
    // files
    catch (const FileError& error) {
        write(Printable(error.message()).c_str());
    } catch (const Cancelled&) {
        write("Cancelled.");
    } catch (const File::FileDoesntExist&) {
        write("No such file or folder.");
    } catch (const File::FileExists&) {
        write("The file already exists.");
    } catch (const File::AccessError&) {
        write("Permission denied, or the file was not opened for this.");
    } catch (const File::CantOpen&) {
        write("The file cannot be opened.");
    } catch (const File::ReadError&) {
        write("The file cannot be read.");
    } catch (const File::WriteError&) {
        write("The file cannot be written.");
    } catch (const File::EndOfFile&) {
        write("The file ends too early, or is too long.");
    } catch (const File::FileException&) {
        write("The file cannot be used.");
    } catch (const SafeFileSave::CantFinish&) {
        write("The file could not be written completely, or could not replace the old one.");
    }
    // streams in memory
    catch (const MemoryStream::EndOfBuffer&) {
        write("The data ends too early, or is too long.");
    } catch (const ArrayStreamAdaptor::EndOfBuffer&) {
        write("The data ends too early, or is longer than its buffer.");
    } catch (const ArrayStreamAdaptor::AccessError&) {
        write("The data is read-only.");
    } catch (const Stream::StreamException&) {
        write("The data cannot be read or written.");
    }
    // expressions
    catch (const DefaultFallbackParser::ParseError& error) {
        write((Printable(error.getMessage()) + " (at character " + std::to_string(error.getPosition() + 1) + ")")
                  .c_str());
    }
    // the rest
    catch (const Exception&) {
        write("Reading or writing failed.");
    } catch (const std::bad_alloc&) {
        write("Not enough memory.");
    }
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
