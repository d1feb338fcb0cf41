#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace fcurvetool {

/// Text in aligned columns, two blanks apart.
class Table {
public:
    enum class Align { Left, Right };

    void addColumn(std::string heading, Align align);
    /// One cell per column.
    void addRow(std::vector<std::string> cells);

    /// The headings and the rows, each with a line end and without blanks at its end.
    std::string text() const;

private:
    std::vector<Align> m_aligns;
    std::vector<std::size_t> m_widths;
    std::vector<std::vector<std::string>> m_rows = {{}};
};

} // namespace fcurvetool
