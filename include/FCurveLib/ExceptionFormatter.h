#pragma once

#include "FCurveLib/Export.h"

#include <deque>
#include <iosfwd>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Turns the exception that is being handled into a message for a user, by asking formatters in turn.
///
///     ExceptionFormatter::LibraryFormatter library("walk.fcrvx");
///     ExceptionFormatter messages;
///     messages.addFormatter(library);
///     messages.addFormatter(ours);             // asked first
///     try {
///         ReadCurves(stream, container);
///     } catch (...) {
///         messages.formatException(std::cerr); // walk.fcrvx:12:5: The attribute x has ...
///     }
///
/// Copies share the formatters, which are not owned and must live as long as they are asked. Any number of threads may
/// format with one object that nobody adds to.
class FCURVELIB_API ExceptionFormatter {
public:
    /// Knows the messages of some exceptions.
    class FCURVELIB_API Formatter {
    public:
        Formatter() noexcept;
        virtual ~Formatter();

        /// Writes a message for the exception that is being handled, or raises to decline; what was written before
        /// stays. Implementations re-raise the exception inside a try block of their own (`throw;`) and catch what they
        /// know. The default re-raises it: it declines everything. Precondition: an exception is being handled.
        virtual void format(std::ostream& out) const;

    protected:
        Formatter(const Formatter&) noexcept;
        Formatter& operator=(const Formatter&) noexcept;
    };

    class LibraryFormatter;

    /// Without formatters.
    ExceptionFormatter();
    ExceptionFormatter(const ExceptionFormatter&);
    ExceptionFormatter(ExceptionFormatter&&) noexcept;
    ExceptionFormatter& operator=(const ExceptionFormatter&);
    ExceptionFormatter& operator=(ExceptionFormatter&&) noexcept;
    ~ExceptionFormatter();

    /// Puts a formatter in front of all others; one that is here already moves there.
    void addFormatter(Formatter& formatter);

    /// Writes the message of the first formatter that returns, "An unknown error occurred." if none does; no line
    /// break. A formatter that raises after it wrote something leaves that in front of the next one's message. Raises
    /// nothing: what formatters raise, and what a stream that throws raises, is swallowed. Precondition: an exception
    /// is being handled.
    void formatException(std::ostream& out) const;

private:
    std::deque<Formatter*> m_formatters; // the front is asked first
};

/// The messages for every exception of the library, and for memory that runs out (std::bad_alloc); declines all others.
///
/// One line without a line break: the name of what was read, then as much of the position as the exception knows, then
/// whole sentences that say what was expected and what was found.
///
///     walk.fcrvx:12:5: The attribute x has the value "1,5", which is not a number.
///     walk.fcrvb: at byte 96: ...
///     walk.fcrvx: No such file or folder.
///
/// Of an exception class that a host derived, the message is that of the library's class which it derives from. Bytes
/// of the name and of the document that a terminal could take for commands are replaced by '?'.
class FCURVELIB_API ExceptionFormatter::LibraryFormatter : public ExceptionFormatter::Formatter {
public:
    /// name is what stands at the beginning: normally a file's. Null or empty for none; the line then begins with the
    /// position ("line 12, column 5: ..."), or with the sentence where there is none.
    explicit LibraryFormatter(const char* name = nullptr);
    LibraryFormatter(const LibraryFormatter&);
    LibraryFormatter& operator=(const LibraryFormatter&);
    ~LibraryFormatter() override;

    void setName(const char* name);

    void format(std::ostream& out) const override;

private:
    std::string m_name;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
