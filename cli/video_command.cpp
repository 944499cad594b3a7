// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/write_run.h"
#include "video/video_jobs.h"
#include "video/video_titles.h"

namespace clipheave::cli {

namespace {

using video::titlesOf;
using video::VideoJobs;

/// A short text that stands for a title of the menus.
struct ShortForm {
    const char* text;
    int title; ///< index in the titles
};

/// One job of the video menu, with the option that chooses its title.
struct VideoCommand {
    const char* name;
    QStringList titles; ///< empty: the job has no choice
    std::vector<ShortForm> shortForms;
    video::Worker worker;
};

const std::vector<VideoCommand>& videoCommands() {
    static const std::vector<VideoCommand> commands{
        {"rotate",
         titlesOf(video::kRotations),
         {{"90", 0}, {"180", 1}, {"270", 2}},
         &VideoJobs::RotateVideoMediaFileFileThreader},
        {"merge", {}, {}, &VideoJobs::MergeVideoMediaFileFileThreader},
        {"speed", titlesOf(video::kSpeedUps), {}, &VideoJobs::SpeedUpVideoMediaFileFileThreader},
        // Factors that leave the speed as it is are titles of the job all the same.
        {"slow", titlesOf(video::kSpeedUps), {}, &VideoJobs::SlowDownVideoMediaFileFileThreader},
        {"compress",
         titlesOf(video::kQualities),
         {{"high", 0}, {"medium", 1}, {"low", 2}},
         &VideoJobs::CompressVideoMediaFileFileThreader},
        {"convert",
         titlesOf(video::kConversions),
         {{"mp4", 0}, {"mov", 1}, {"m4v", 2}},
         &VideoJobs::ConvertVideoMediaFileFileThreader},
        {"gif", {}, {}, &VideoJobs::ConvertGIFMediaFileFileThreader},
        {"audio", {}, {}, &VideoJobs::ExtractAudioMediaFileFileThreader},
        {"frames", titlesOf(video::kIntervals), {}, &VideoJobs::ExtractImagesMediaFileFileThreader},
        {"mute", {}, {}, &VideoJobs::RemoveAudioMediaFileFileThreader},
    };
    return commands;
}

/// Returns the menu title that was asked for; null when no title fits.
QString titleOf(const VideoCommand& command, const QString& choice) {
    const QStringList& titles = command.titles;
    for (const ShortForm& form : command.shortForms)
        if (choice.compare(QLatin1String(form.text), Qt::CaseInsensitive) == 0)
            return titles.at(form.title);
    const qsizetype index = titles.indexOf(choice);
    return index < 0 ? QString() : titles.at(index);
}

} // namespace

int runVideo(const GlobalOptions& global, const VideoOptions& options, Console& console) {
    for (const VideoCommand& command : videoCommands()) {
        if (options.job != QLatin1String(command.name))
            continue;
        const QString title =
            command.titles.isEmpty() ? QString() : titleOf(command, options.choice);
        if (!command.titles.isEmpty() && title.isNull()) {
            printError(QStringLiteral("video %1: \"%2\" is none of \"%3\"")
                           .arg(options.job, options.choice,
                                command.titles.join(QStringLiteral("\", \""))));
            return kWrongUsage;
        }
        const auto order = [&](const auto& import, const auto& settings) {
            return video::videoOrder(command.worker,
                                     {title, import.localPhotoItemArray(), settings});
        };
        // A clip may come twice in one video.
        const Repeats repeats = options.job == u"merge" ? Repeats::Kept : Repeats::TakenOnce;
        return runOverItems(global, options.paths, QStringLiteral("made"), order, console, repeats);
    }
    printError(QStringLiteral("video: unknown job \"%1\"").arg(options.job));
    return kWrongUsage;
}

} // namespace clipheave::cli
