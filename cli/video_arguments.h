// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace clipheave::cli {

/// `video JOB [--OPTION CHOICE] PATH…`, as bytes of the command line.
struct VideoArguments {
    std::string choice;
    std::vector<std::string> paths;
};
/// Adds the command with one sub-command per job; the one that was given is then its only parsed
/// sub-command.
CLI::App* addVideo(CLI::App& app, VideoArguments& arguments);

} // namespace clipheave::cli
