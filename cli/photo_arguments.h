// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace clipheave::cli {

/// `photo JOB … PHOTO…`, as bytes of the command line.
struct PhotoArguments {
    std::vector<std::string> paths, set;
    std::string taken, digitised;
    std::string block, latitude, longitude, altitude, date, time;
    std::string position, layout, font, color;
    std::string list, plist;
    int fontSize = 0;
};
/// Adds the command with one sub-command per job; the one that was given is then its only parsed
/// sub-command.
CLI::App* addPhoto(CLI::App& app, PhotoArguments& arguments);

} // namespace clipheave::cli
