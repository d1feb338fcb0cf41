#include "Table.h"

#include "Text.h"

#include <algorithm>
#include <utility>

namespace fcurvetool {

void Table::addColumn(std::string heading, Align align) {
    m_aligns.push_back(align);
    m_widths.push_back(CountCharacters(heading));
    m_rows.front().push_back(std::move(heading));
}

void Table::addRow(std::vector<std::string> cells) {
    for (std::size_t i = 0; i < cells.size(); ++i) m_widths[i] = std::max(m_widths[i], CountCharacters(cells[i]));
    m_rows.push_back(std::move(cells));
}

std::string Table::text() const {
    std::string text;
    for (const auto& row : m_rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::size_t room = m_widths[i] - CountCharacters(row[i]);
            if (i > 0) text += "  ";
            if (m_aligns[i] == Align::Right) text.append(room, ' ');
            text += row[i];
            if (m_aligns[i] == Align::Left) text.append(room, ' ');
        }
        text.erase(text.find_last_not_of(' ') + 1);
        text += '\n';
    }
    return text;
}

} // namespace fcurvetool
