#include "Tools/Text/Table.h"

#include "Tools/Text/TerminalText.h"

#include <algorithm>
#include <cassert>
#include <numeric>
#include <utility>

namespace CommandLine {
namespace {

constexpr int gap = 2;
constexpr int narrowest = 8; // of a column that is shortened

std::string filled(const std::string& text, int width, bool isRightAligned) {
    const std::string shown = shortened(text, std::max(width, 1));
    const std::string blanks(static_cast<std::size_t>(std::max(width - displayWidth(shown), 0)), ' ');
    return isRightAligned ? blanks + shown : shown + blanks;
}

} // namespace

Table::Table(std::vector<Column> columns) : _columns(std::move(columns)) {
    std::vector<std::string> titles;
    titles.reserve(_columns.size());
    for (const Column& column : _columns)
        titles.push_back(column.title);
    _rows.push_back(std::move(titles));
}

void Table::add(std::vector<std::string> row) {
    assert(row.size() == _columns.size());
    _rows.push_back(std::move(row));
}

std::vector<int> Table::widths(std::optional<int> width) const {
    std::vector<int> widths(_columns.size(), 0);
    for (const std::vector<std::string>& row : _rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row[i]));
    const int gaps = gap * static_cast<int>(_columns.size() - 1);
    while (width && std::accumulate(widths.begin(), widths.end(), gaps) > *width) {
        int* widest = nullptr;
        for (std::size_t i = 0; i < widths.size(); ++i)
            if (_columns[i].mayBeShortened && widths[i] > narrowest && (!widest || widths[i] > *widest))
                widest = &widths[i];
        if (!widest)
            break;
        --*widest;
    }
    return widths;
}

std::string Table::text(std::optional<int> width) const {
    const std::vector<int> columnWidths = widths(width);
    std::string text;
    for (const std::vector<std::string>& row : _rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line += (i == 0 ? "" : std::string(gap, ' ')) + filled(row[i], columnWidths[i], _columns[i].isRightAligned);
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

} // namespace CommandLine
