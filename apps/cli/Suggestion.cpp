#include "apps/cli/Suggestion.h"

#include <algorithm>
#include <numeric>

namespace {

/// Letters that must be put in, taken out or changed to make one word of the other (Levenshtein's distance).
std::size_t Distance(const std::string& left, const std::string& right)
{
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t(0));
    for (std::size_t i = 0; i < left.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < right.size(); ++j) {
            const std::size_t changed = diagonal + (left[i] == right[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

/// Everything that can stand after the command: its own commands and options, and the options above.
std::vector<std::string> KnownWords(const CLI::App& command)
{
    std::vector<std::string> known;
    for (const CLI::App* each : command.get_subcommands([](const CLI::App*) { return true; })) {
        known.push_back(each->get_name());
    }
    for (const CLI::App* each = &command; each != nullptr; each = each->get_parent()) {
        for (const CLI::Option* option : each->get_options()) {
            for (const std::string& name : option->get_lnames()) {
                known.push_back("--" + name);
            }
        }
    }
    return known;
}

} // namespace

std::string SuggestionFor(const CLI::App& command, const std::vector<std::string>& words)
{
    const std::vector<std::string> known = KnownWords(command);
    for (const std::string& whole : words) {
        const std::string word = whole.substr(0, whole.find('='));
        if (word.size() < 3 || std::find(known.begin(), known.end(), word) != known.end()) {
            continue;
        }
        const auto nearest =
            std::min_element(known.begin(), known.end(), [&](const auto& left, const auto& right) {
                return Distance(word, left) < Distance(word, right);
            });
        if (nearest != known.end() && Distance(word, *nearest) <= (word.size() + 1) / 4 + 1 &&
            word.starts_with("--") == nearest->starts_with("--")) {
            return "; did you mean " + *nearest + "?";
        }
    }
    return {};
}
