#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FormatType.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/ProjectionIterator.h"
#include "FCurveLib/Reader.h"
#include "FCurveLib/Writer.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Finds readers and writers among all that are alive, the newest first. Formats are found by their exact name; null
/// counts as the empty name. What is returned stays the property of its format; null where there is none.
class FCURVELIB_API FormatFactory {
public:
    FormatFactory() = delete;

    /// \name By name
    /// @{
    static Reader* getReader(const char* name);
    static Reader* getReader(const FormatType& type);
    static Writer* getWriter(const char* name);
    static Writer* getWriter(const FormatType& type);
    /// @}

    /// \name By content
    /// @{

    /// Shows each reader the first 1024 bytes of the stream (zeros after a shorter one) and returns the first
    /// that recognises them. A reader that raises an exception derived from Exception does not recognise them. The
    /// stream stands at position 0 afterwards.
    static Reader* getReader(Stream& stream);
    /// @}

    /// \name By file name
    /// The newest whose extension is that of the path, in letters of either case; null where the path has none. For
    /// what is about to be written, and for what the content does not tell.
    /// @{
    static Reader* getReaderByExtension(const char* path);
    static Writer* getWriterByExtension(const char* path);
    /// @}

    /// \name All formats
    /// Iterators over the FormatType of every reader or writer, in the order in which they are asked. find gives the
    /// first of that name, or the end.
    /// @{
    struct ProjectReaderType {
        const FormatType& operator()(const Reader& reader) const noexcept { return reader.getFormatType(); }
    };
    struct ProjectWriterType {
        const FormatType& operator()(const Writer& writer) const noexcept { return writer.getFormatType(); }
    };
    using ReaderTypeIterator = ProjectionIterator<ProjectReaderType, SimpleListNode<Reader>::iterator>;
    using WriterTypeIterator = ProjectionIterator<ProjectWriterType, SimpleListNode<Writer>::iterator>;

    static ReaderTypeIterator beginReaderTypes();
    static ReaderTypeIterator endReaderTypes();
    static ReaderTypeIterator findReaderType(const char* name);
    static WriterTypeIterator beginWriterTypes();
    static WriterTypeIterator endWriterTypes();
    static WriterTypeIterator findWriterType(const char* name);
    /// @}
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
