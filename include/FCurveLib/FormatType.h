#pragma once

#include "FCurveLib/Export.h"

#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Describes a file format: the name by which FormatFactory finds it (compared exactly, case matters), a title for
/// people, and a file-name extension without a dot. Formats are compared by their names. Null texts count as empty.
class FCURVELIB_API FormatType {
public:
    /// Three empty texts.
    FormatType();
    FormatType(const char* name, const char* title, const char* extension);
    FormatType(const FormatType&);
    FormatType(FormatType&&) noexcept;
    FormatType& operator=(const FormatType&);
    FormatType& operator=(FormatType&&) noexcept;
    ~FormatType();

    const char* getFormatName() const noexcept { return m_name.c_str(); }
    const char* getTitle() const noexcept { return m_title.c_str(); }
    const char* getExtension() const noexcept { return m_extension.c_str(); }

    void setTitle(const char* title);
    void setExtension(const char* extension);

private:
    std::string m_name;
    std::string m_title;
    std::string m_extension;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
