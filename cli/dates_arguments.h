// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/commands.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace clipheave::cli {

/// `dates JOB … PATH…`, as bytes of the command line.
struct DatesArguments {
    std::vector<std::string> paths;
    std::string text, step, unit = "Second", copy;
    std::string years, months, days, hours, minutes, seconds;
    bool subtract = false, files = false, dryRun = false;
};
/// Adds the command with one sub-command per job; the one that was given is then its only parsed
/// sub-command.
CLI::App* addDates(CLI::App& app, DatesArguments& arguments);
/// Returns what was given. `paths` are those of the arguments, absolute.
[[nodiscard]] DatesOptions datesOptions(const CLI::App& command, const DatesArguments& arguments,
                                        const QStringList& paths);

} // namespace clipheave::cli
