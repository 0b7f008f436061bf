#pragma once

#include <CLI/App.hpp>

#include <string>
#include <vector>

/// "; did you mean convert?" for the first word that is nearly a command or an option of the command, or of
/// one above it; empty when none is.
std::string SuggestionFor(const CLI::App& command, const std::vector<std::string>& words);
