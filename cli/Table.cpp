#include "cli/Table.h"

#include "cli/TerminalText.h"

#include <algorithm>
#include <ostream>

namespace scrivly::cli {

Table::Table(std::vector<Column> columns) : m_columns(std::move(columns)) {}

void Table::add(std::vector<std::string> cells) {
    cells.resize(m_columns.size());
    for (auto& cell : cells) {
        cell = TerminalText::cleaned(cell, false);
    }
    m_rows.push_back(std::move(cells));
}

void Table::print(std::ostream& out, bool styled) const {
    std::vector<std::size_t> widths;
    for (const auto& column : m_columns) {
        widths.push_back(TerminalText::displayWidth(column.title));
    }
    for (const auto& row : m_rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], TerminalText::displayWidth(row[i]));
        }
    }

    const auto printRow = [&](const std::vector<std::string>& cells) {
        std::string line;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const bool last = i + 1 == cells.size();
            const std::size_t columns = TerminalText::displayWidth(cells[i]);
            const std::size_t fill = widths[i] > columns ? widths[i] - columns : 0;
            if (m_columns[i].align == Align::right) {
                line.append(fill, ' ');
                line += cells[i];
            } else {
                line += cells[i];
                if (!last) {
                    line.append(fill, ' ');
                }
            }
            if (!last) {
                line += "  ";
            }
        }
        while (!line.empty() && line.back() == ' ') {
            line.pop_back();
        }
        return line;
    };

    std::vector<std::string> titles;
    for (const auto& column : m_columns) {
        titles.push_back(column.title);
    }
    const std::string titleLine = printRow(titles);
    out << (styled ? "\x1b[1m" + titleLine + "\x1b[0m" : titleLine) << '\n';
    for (const auto& row : m_rows) {
        out << printRow(row) << '\n';
    }
}

} // namespace scrivly::cli
