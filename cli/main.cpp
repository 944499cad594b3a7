// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/commands.h"
#include "cli/dates_arguments.h"
#include "cli/photo_arguments.h"
#include "cli/video_arguments.h"
#include "cli/words.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"
#include "platform/media/export/av_asset_export_session.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QGuiApplication>

#include <memory>
#include <string>
#include <vector>

namespace clipheave::cli {

namespace {

QString textOf(const std::string& argument) {
    return platform::pathFromNative(
        QByteArrayView(argument.data(), static_cast<qsizetype>(argument.size())));
}

QStringList absolutePaths(const std::vector<std::string>& arguments) {
    QStringList paths;
    for (const std::string& argument : arguments)
        paths.append(absolutePath(textOf(argument)));
    return paths;
}

/// The arguments as the parser gives them: bytes of the command line.
struct Arguments {
    std::string storage, config, artwork, key, value, folder;
    std::vector<std::string> paths, set;
    GlobalOptions global;
    ListOptions list;
    RenameOptions rename;
    std::string renameText, dateFormat;
};

/// An empty name would mean the default in silence: a script's unset variable.
std::string refuseEmpty(const std::string& value) {
    return value.empty() ? "is empty" : std::string();
}

void addGlobalOptions(CLI::App& app, Arguments& arguments) {
    app.add_option("--storage", arguments.storage, "Output folder of this run")
        ->check(refuseEmpty)
        ->type_name("DIR");
    app.add_option("--config", arguments.config, "Preferences file of this run")
        ->check(refuseEmpty)
        ->type_name("FILE");
    app.add_option("--jobs", arguments.global.jobs, "Exports that run at once (default: the cores)")
        ->check(CLI::Range(1, 256))
        ->type_name("N");
    app.add_flag("--json", arguments.global.json, "One JSON document on standard output");
    app.add_flag("--quiet", arguments.global.quiet, "No progress bar and no log");
    app.add_flag("--verbose", arguments.global.verbose, "Every log text of the application");
    app.require_subcommand(1);
    app.fallthrough();
}

CLI::App* addList(CLI::App& app, Arguments& arguments) {
    CLI::App* list = app.add_subcommand("list", "Import and print");
    list->add_flag("--metadata", arguments.list.metadata,
                   "With --json: the raw metadata items too");
    list->add_flag("--photos", arguments.list.photos,
                   "Photos and videos, as the photo browser takes them");
    list->add_option("PATH", arguments.paths, "Files and folders")->required();
    return list;
}

CLI::App* addSave(CLI::App& app, Arguments& arguments) {
    CLI::App* save =
        app.add_subcommand("save", "Type values into the fields of each file and save");
    save->add_option("--set", arguments.set, "FIELD=TEXT, as often as needed")
        ->type_name("FIELD=TEXT")
        ->allow_extra_args(false);
    save->add_option("--artwork", arguments.artwork, "Artwork")->type_name("IMAGE");
    save->add_option("PATH", arguments.paths, "Files and folders")->required();
    return save;
}

CLI::App* addRename(CLI::App& app, Arguments& arguments) {
    CLI::App* rename = app.add_subcommand("rename", "Give the files new names, in place");
    CLI::Option* text = rename->add_option("--text", arguments.renameText, "One text for all");
    rename
        ->add_option("--template", arguments.renameText,
                     "Text with tag words, such as \"{Title} {Artist}\"")
        ->excludes(text);
    rename->add_flag("--number", arguments.rename.number, "A number at the end, from 000001 on");
    rename->add_option("--date-format", arguments.dateFormat, "Layout of {Camera Date}")
        ->type_name("TITLE");
    rename->add_flag("--photos", arguments.rename.photos,
                     "Photos and videos, as the photo browser takes them");
    rename->add_flag("--dry-run", arguments.rename.dryRun, "Print \"old -> new\" only");
    rename->add_flag("--undo", arguments.rename.undo, "Put the last job's names back");
    rename->add_option("PATH", arguments.paths, "Files and folders");
    return rename;
}

int rename(const CLI::App& command, Arguments& arguments, Console& console) {
    RenameOptions& options = arguments.rename;
    options.paths = absolutePaths(arguments.paths);
    options.text = textOf(arguments.renameText);
    if (command.count("--text") > 0)
        options.mode = batch::RenameMode::CustomText;
    else if (command.count("--template") > 0)
        options.mode = batch::RenameMode::MetadataTags;
    if (command.count("--date-format") > 0)
        options.dateFormat = textOf(arguments.dateFormat);
    return runRename(arguments.global, options, console);
}

/// A command that takes nothing but paths.
struct PathCommand {
    const char* name;
    const char* help;
    int (*run)(const GlobalOptions&, const QStringList& paths, Console&);
};
constexpr PathCommand kPathCommands[] = {
    {"clear", "Copies of the files without their metadata", &runClear},
    {"title-to-name", "Copies of the videos, each named by its title", &runTitleToName},
    {"name-to-title", "The name of each video becomes its title", &runNameToTitle},
};

void addPathCommands(CLI::App& app, Arguments& arguments) {
    for (const PathCommand& command : kPathCommands)
        app.add_subcommand(command.name, command.help)
            ->add_option("PATH", arguments.paths, "Files and folders")
            ->required();
}

/// Splits each "FIELD=TEXT"; false, with an error printed, when one has no "=".
bool splitPairs(const std::vector<std::string>& arguments,
                std::vector<std::pair<QString, QString>>& pairs) {
    for (const std::string& pair : arguments) {
        const std::size_t equals = pair.find('=');
        if (equals == std::string::npos) {
            printError(QStringLiteral("--set takes FIELD=TEXT, not \"%1\"").arg(textOf(pair)));
            return false;
        }
        pairs.emplace_back(textOf(pair.substr(0, equals)), textOf(pair.substr(equals + 1)));
    }
    return true;
}

int save(const Arguments& arguments, Console& console) {
    SaveOptions options;
    options.paths = absolutePaths(arguments.paths);
    if (!arguments.artwork.empty())
        options.artwork = absolutePath(textOf(arguments.artwork));
    if (!splitPairs(arguments.set, options.set))
        return kWrongUsage;
    return runSave(arguments.global, options, console);
}

/// Prints why the arguments were not taken, or the help that they asked for; returns the exit
/// status. An unknown argument comes before what is missing because of it.
int explain(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<std::string> unknown = app.remaining(true);
    const bool missing = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    const int status =
        missing && !unknown.empty() ? app.exit(CLI::ExtrasError(unknown)) : app.exit(error);
    return status == 0 ? kAllDone : kWrongUsage;
}

/// Null for an option that is not given.
QString givenText(const std::string& argument) {
    return argument.empty() ? QString() : textOf(argument);
}

PhotoOptions photoOptions(const CLI::App& command, const PhotoArguments& arguments) {
    PhotoOptions options;
    options.paths = absolutePaths(arguments.paths);
    options.job = textOf(command.get_subcommands().front()->get_name());
    options.stamp = {givenText(arguments.position), givenText(arguments.layout),
                     givenText(arguments.font), givenText(arguments.color), arguments.fontSize};
    options.list = textOf(arguments.list);
    if (!arguments.plist.empty())
        options.plist = absolutePath(textOf(arguments.plist));
    options.block = textOf(arguments.block);
    options.latitude = textOf(arguments.latitude);
    options.longitude = textOf(arguments.longitude);
    options.altitude = textOf(arguments.altitude);
    options.taken = givenText(arguments.taken);
    options.digitised = givenText(arguments.digitised);
    options.date = textOf(arguments.date);
    options.time = textOf(arguments.time);
    return options;
}

/// Fonts need the toolkit's larger application; it asks for no screen here.
std::unique_ptr<QCoreApplication> applicationFor(bool drawsText, int& argc, char** argv) {
    if (!drawsText)
        return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QGuiApplication>(argc, argv);
}

int photo(const GlobalOptions& global, const CLI::App& command, const PhotoArguments& arguments,
          Console& console) {
    PhotoOptions options = photoOptions(command, arguments);
    return splitPairs(arguments.set, options.set) ? runPhoto(global, options, console)
                                                  : kWrongUsage;
}

int video(const GlobalOptions& global, const CLI::App& command, const VideoArguments& arguments,
          Console& console) {
    return runVideo(global,
                    {absolutePaths(arguments.paths),
                     textOf(command.get_subcommands().front()->get_name()),
                     textOf(arguments.choice)},
                    console);
}

int run(int argc, char** argv) {
    CLI::App app("ClipHeave: batch work on videos, audio files and photos", "clipheave-cli");
    app.set_version_flag("--version", CLIPHEAVE_VERSION);
    Arguments arguments;
    addGlobalOptions(app, arguments);
    CLI::App* listCommand = addList(app, arguments);
    CLI::App* saveCommand = addSave(app, arguments);
    CLI::App* renameCommand = addRename(app, arguments);
    VideoArguments videoArguments;
    CLI::App* videoCommand = addVideo(app, videoArguments);
    PhotoArguments photoArguments;
    CLI::App* photoCommand = addPhoto(app, photoArguments);
    DatesArguments datesArguments;
    CLI::App* datesCommand = addDates(app, datesArguments);
    addPathCommands(app, arguments);
    CLI::App* prefs = app.add_subcommand("prefs", "Print or set the preferences");
    prefs->add_option("KEY", arguments.key);
    CLI::Option* value = prefs->add_option("VALUE", arguments.value);
    CLI::App* demo = app.add_subcommand("demo", "Write a small sample library into a folder");
    demo->add_option("DIR", arguments.folder)->required();
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return explain(app, error);
    }
    const auto application = applicationFor(photoCommand->parsed(), argc, argv);
    GlobalOptions& global = arguments.global;
    global.storage = textOf(arguments.storage);
    global.config = textOf(arguments.config);
    if (global.jobs > 0)
        platform::AVAssetExportSession::setMaximumConcurrentExports(global.jobs);
    watchSignals();
    Console console(global.quiet     ? Console::Detail::Quiet
                    : global.verbose ? Console::Detail::Verbose
                                     : Console::Detail::Normal);
    if (listCommand->parsed()) {
        arguments.list.paths = absolutePaths(arguments.paths);
        return runList(global, arguments.list, console);
    }
    if (saveCommand->parsed())
        return save(arguments, console);
    if (renameCommand->parsed())
        return rename(*renameCommand, arguments, console);
    if (videoCommand->parsed())
        return video(global, *videoCommand, videoArguments, console);
    if (datesCommand->parsed())
        return runDates(
            global,
            datesOptions(*datesCommand, datesArguments, absolutePaths(datesArguments.paths)),
            console);
    if (photoCommand->parsed())
        return photo(global, *photoCommand, photoArguments, console);
    for (const PathCommand& command : kPathCommands)
        if (app.got_subcommand(command.name))
            return command.run(global, absolutePaths(arguments.paths), console);
    if (prefs->parsed())
        return runPrefs(global, textOf(arguments.key), textOf(arguments.value), value->count() > 0);
    return runDemo(global, absolutePath(textOf(arguments.folder)), console);
}

} // namespace

} // namespace clipheave::cli

namespace {

/// Messages of the toolkit are for --verbose, not for the middle of a user's output.
void takeToolkitMessage(QtMsgType, const QMessageLogContext&, const QString& text) {
    clipheave::platform::log(clipheave::platform::LogLevel::Trace, text);
}

} // namespace

int main(int argc, char** argv) {
    clipheave::cli::installWords();
    qInstallMessageHandler(&takeToolkitMessage);
    // Local times are computed thousands of times; without this each checks the zone file.
    if (!qEnvironmentVariableIsSet("TZ"))
        qputenv("TZ", ":/etc/localtime");
    QCoreApplication::setApplicationName(QStringLiteral("clipheave"));
    return clipheave::cli::run(argc, argv);
}
