// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/video_arguments.h"

namespace clipheave::cli {

namespace {

struct JobArguments {
    const char* name;
    const char* help;
    const char* option; ///< null: the job has no choice
    const char* choice;
};
constexpr JobArguments kJobs[] = {
    {"rotate", "Rotates each video clockwise", "--by", "90|180|270"},
    {"merge", "Joins all videos; each is inserted at the longest duration before it", nullptr,
     nullptr},
    {"speed", "Cuts each video to its duration divided by the factor", "--factor", "TITLE"},
    {"slow", "Stretches each video", "--factor", "TITLE"},
    {"compress", "Transcodes each video", "--quality", "high|medium|low"},
    {"convert", "Copies the streams into another container", "--to", "mp4|mov|m4v"},
    {"gif", "Makes an animated image, one frame a second", nullptr, nullptr},
    {"audio", "Extracts the audio, as M4A", nullptr, nullptr},
    {"frames", "Saves single frames as images", "--every", "TITLE"},
    {"mute", "Silences the audio", nullptr, nullptr},
};

} // namespace

CLI::App* addVideo(CLI::App& app, VideoArguments& arguments) {
    CLI::App* video =
        app.add_subcommand("video", "Makes new videos, audio files and images of videos");
    video->require_subcommand(1);
    video->fallthrough();
    for (const JobArguments& job : kJobs) {
        CLI::App* command = video->add_subcommand(job.name, job.help);
        command->fallthrough();
        if (job.option)
            command->add_option(job.option, arguments.choice, "As in the menu, or in short")
                ->type_name(job.choice)
                ->required();
        command->add_option("PATH", arguments.paths, "Files and folders")->required();
    }
    return video;
}

} // namespace clipheave::cli
