#include "nearestOption.hpp"

#include <algorithm>
#include <numeric>
#include <vector>

#include "CommandTable.hpp"

namespace tqarchive {

namespace {

// Levenshtein distance: letters added, dropped or changed.
std::size_t editDistance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t above = row[j];
            row[j] = std::min(
                {row[j] + 1, row[j - 1] + 1, diagonal + (from[i - 1] == to[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[to.size()];
}

}  // namespace

std::optional<std::string> nearestOption(const std::string& unknown, const Command* command) {
    std::vector<OptionId> ids = CommandTable::common();
    for (const Command& row : CommandTable::commands()) {
        if (command == nullptr || &row == command) {
            for (const OptionUse& use : row.options) {
                ids.push_back(use.id);
            }
        }
    }
    std::optional<std::string> best;
    std::size_t bestDistance = 3;  // farther than two edits is a guess, not a typo
    for (OptionId id : ids) {
        for (const std::string& spelling : CommandTable::spellings(CommandTable::option(id))) {
            const std::size_t distance = editDistance(unknown, spelling);
            // A short option is one letter: any other letter is "near" it.
            if (spelling.size() > 2 && distance < bestDistance) {
                best = spelling;
                bestDistance = distance;
            }
        }
    }
    return best;
}

}  // namespace tqarchive
