#pragma once

#include <optional>
#include <string>
#include <vector>

namespace CommandLine {

/// A column of a table.
struct Column {
    /// Printable, as all texts of a table.
    std::string title;
    bool isRightAligned = false;
    /// Where the terminal is too narrow for the whole table.
    bool mayBeShortened = false;
};

/// Rows beneath titles, in columns two blanks apart.
class Table {
public:
    explicit Table(std::vector<Column> columns);

    /// As many texts as there are columns.
    void add(std::vector<std::string> row);

    /// Lines without blanks at their ends. `width` is the number of columns to stay within, if there is room for at
    /// least eight characters of each column that may be shortened: the widest of them are shortened first.
    std::string text(std::optional<int> width) const;

private:
    std::vector<int> widths(std::optional<int> width) const;

    std::vector<Column> _columns;
    std::vector<std::vector<std::string>> _rows; // the titles first
};

} // namespace CommandLine
