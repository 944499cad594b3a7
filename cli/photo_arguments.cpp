// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/photo_arguments.h"

namespace clipheave::cli {

namespace {

void addStampOptions(CLI::App& command, PhotoArguments& arguments) {
    constexpr int kLargestSize = 10000;
    command.add_option("--position", arguments.position, "The corner, as in the preferences")
        ->type_name("TITLE");
    command.add_option("--layout", arguments.layout, "The order of the date's parts")
        ->type_name("TITLE");
    command.add_option("--font", arguments.font, "A font family")->type_name("NAME");
    command.add_option("--font-size", arguments.fontSize, "In pixels of the photo")
        ->check(CLI::Range(1, kLargestSize))
        ->type_name("N");
    command.add_option("--color", arguments.color)->type_name("#RRGGBB");
}

void addExportOptions(CLI::App& command, PhotoArguments& arguments) {
    command
        .add_option("LIST", arguments.list,
                    "tiff, exif, exif-tiff, exif-gps, template or all: one list, of the last "
                    "photo; each: one list for each photo")
        ->required();
}

void addImportOptions(CLI::App& command, PhotoArguments& arguments) {
    command.add_option("PLIST", arguments.plist, "A property list, as an export writes it")
        ->required();
}

void addBlock(CLI::App& command, PhotoArguments& arguments) {
    command.add_option("BLOCK", arguments.block, "exif, gps, iptc, exif-gps or all")->required();
}

void addPlace(CLI::App& command, PhotoArguments& arguments) {
    command.add_option("LAT", arguments.latitude, "Degrees, south is negative")->required();
    command.add_option("LON", arguments.longitude, "Degrees, west is negative")->required();
    command.add_option("ALT", arguments.altitude, "Metres")->required();
}

void addPlaceAndTime(CLI::App& command, PhotoArguments& arguments) {
    addPlace(command, arguments);
    command.add_option("--date", arguments.date, "Universal date")
        ->type_name("YYYY:MM:DD")
        ->required();
    command.add_option("--time", arguments.time, "Universal time")
        ->type_name("HH:MM:SS")
        ->required();
}

void addFields(CLI::App& command, PhotoArguments& arguments) {
    command.add_option("--set", arguments.set, "FIELD=TEXT, as often as needed")
        ->type_name("FIELD=TEXT")
        ->allow_extra_args(false);
}

void addDateOptions(CLI::App& command, PhotoArguments& arguments) {
    command.add_option("--taken", arguments.taken, "The dates of the file")->type_name("TEXT");
    command
        .add_option("--digitised", arguments.digitised,
                    "The date taken and digitised in the metadata")
        ->type_name("TEXT");
}

struct PhotoJobArguments {
    const char* name;
    const char* help;
    void (*addOptions)(CLI::App& command, PhotoArguments& arguments);
};
constexpr PhotoJobArguments kPhotoJobs[] = {
    {"remove", "Copies of the photos without a block of metadata", &addBlock},
    {"gps", "Copies of the photos with this position", &addPlaceAndTime},
    {"change-gps", "Copies with this position and without EXIF data", &addPlace},
    {"apply", "Types values into the fields of the photo pane", &addFields},
    {"dates", "Copies of the photos with these dates", &addDateOptions},
    {"stamp", "Draws the date of each photo onto a small JPEG copy of it", &addStampOptions},
    {"export", "Writes the metadata of photos as property lists", &addExportOptions},
    {"import", "Copies of the photos with what a property list says", &addImportOptions},
};

} // namespace

CLI::App* addPhoto(CLI::App& app, PhotoArguments& arguments) {
    CLI::App* photo = app.add_subcommand("photo", "Makes new photos and property lists of photos");
    photo->require_subcommand(1);
    photo->fallthrough();
    for (const PhotoJobArguments& job : kPhotoJobs) {
        CLI::App* command = photo->add_subcommand(job.name, job.help);
        command->fallthrough();
        job.addOptions(*command, arguments);
        command->add_option("PHOTO", arguments.paths, "Photos and folders")->required();
    }
    return photo;
}

} // namespace clipheave::cli
