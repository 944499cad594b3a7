// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/dates_arguments.h"

namespace clipheave::cli {

namespace {

void addFilesOption(CLI::App& command, DatesArguments& arguments) {
    command.add_flag("--files", arguments.files,
                     "The dates of the file system instead of the camera date");
}

void addOneDate(CLI::App& command, DatesArguments& arguments) {
    command.add_option("TEXT", arguments.text, "YYYY:MM:DD HH:MM:SS, local time")->required();
    command.add_option("--step", arguments.step, "Each file so much later than the one before")
        ->type_name("N");
    command.add_option("--unit", arguments.unit, "Second, Minute or Hour, of --step")
        ->check(CLI::IsMember({"Second", "Minute", "Hour"}))
        ->type_name("UNIT");
    addFilesOption(command, arguments);
}

void addShift(CLI::App& command, DatesArguments& arguments) {
    command.add_option("--years", arguments.years)->type_name("N");
    command.add_option("--months", arguments.months)->type_name("N");
    command.add_option("--days", arguments.days)->type_name("N");
    command.add_option("--hours", arguments.hours)->type_name("N");
    command.add_option("--minutes", arguments.minutes)->type_name("N");
    command.add_option("--seconds", arguments.seconds)->type_name("N");
    command.add_flag("--subtract", arguments.subtract, "Earlier instead of later");
    addFilesOption(command, arguments);
}

void addNothing(CLI::App&, DatesArguments&) {
}

void addCopy(CLI::App& command, DatesArguments& arguments) {
    command
        .add_option("WHAT", arguments.copy,
                    "created-to-modified, modified-to-created, created-to-camera, "
                    "camera-to-created or name-to-comments")
        ->check(CLI::IsMember({"created-to-modified", "modified-to-created", "created-to-camera",
                               "camera-to-created", "name-to-comments"}))
        ->required();
}

struct DatesJobArguments {
    const char* name;
    const char* help;
    void (*addOptions)(CLI::App& command, DatesArguments& arguments);
};
constexpr DatesJobArguments kDatesJobs[] = {
    {"set", "Copies of the files with this date", &addOneDate},
    {"shift", "Copies with their own date moved", &addShift},
    {"from-name", "Copies of the videos with the date in their name", &addNothing},
    {"copy", "Copies with one date in the place of another", &addCopy},
};

QString given(const std::string& argument) {
    return QString::fromUtf8(argument.data(), static_cast<qsizetype>(argument.size()));
}

} // namespace

CLI::App* addDates(CLI::App& app, DatesArguments& arguments) {
    CLI::App* dates = app.add_subcommand("dates", "Changes the dates of copies");
    dates->require_subcommand(1);
    dates->fallthrough();
    for (const DatesJobArguments& job : kDatesJobs) {
        CLI::App* command = dates->add_subcommand(job.name, job.help);
        command->fallthrough();
        job.addOptions(*command, arguments);
        command->add_flag("--dry-run", arguments.dryRun, "Print the dates, write nothing");
        command->add_option("PATH", arguments.paths, "Files and folders")->required();
    }
    return dates;
}

DatesOptions datesOptions(const CLI::App& command, const DatesArguments& arguments,
                          const QStringList& paths) {
    DatesOptions options;
    options.paths = paths;
    options.job = given(command.get_subcommands().front()->get_name());
    options.copy = given(arguments.copy);
    options.files = arguments.files;
    options.dryRun = arguments.dryRun;
    batch::DateRequest& request = options.request;
    request.mutSetDatelab = given(arguments.text);
    request.AddDateNumBtn = !arguments.step.empty();
    request.AddDateNumlab = given(arguments.step);
    request.AddDateUnitBtn = given(arguments.unit);
    request.AddTimeBtn = !arguments.subtract;
    request.yearVaulab = given(arguments.years);
    request.monthVaulab = given(arguments.months);
    request.dayVaulab = given(arguments.days);
    request.hourVaulab = given(arguments.hours);
    request.minuVaulab = given(arguments.minutes);
    request.secVaulab = given(arguments.seconds);
    return options;
}

} // namespace clipheave::cli
