#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace scrivly::cli {

// Columns aligned by their display width, two spaces apart, for lists that people read. Cells
// are cleaned for the terminal and kept on one line; the last column is never padded.
class Table {
public:
    enum class Align { left, right };
    struct Column {
        std::string title;
        Align align = Align::left;
    };

    explicit Table(std::vector<Column> columns);

    // Missing cells count as empty.
    void add(std::vector<std::string> cells);
    bool empty() const { return m_rows.empty(); }

    // With styled, the title row is bold.
    void print(std::ostream& out, bool styled) const;

private:
    std::vector<Column> m_columns;
    std::vector<std::vector<std::string>> m_rows;
};

} // namespace scrivly::cli
