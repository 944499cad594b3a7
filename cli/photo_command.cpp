// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/photo_edit_commands.h"
#include "cli/write_run.h"
#include "media/preferences.h"
#include "photo/photo_lists.h"
#include "photo/stamp_order.h"

#include <QColor>
#include <QRegularExpression>

#include <optional>

namespace clipheave::cli {

namespace {

int runOverPhotos(const GlobalOptions& global, const PhotoOptions& options, const QString& what,
                  const MakeOrder& makeOrder, Console& console) {
    return runOverItems(global, options.paths, what, makeOrder, console, Repeats::TakenOnce,
                        &media::MediaImport::importPhotos);
}

/// Returns whether the choice is one of the titles or not given; says so if not.
bool isTitle(const QString& choice, const QStringList& titles, const char* option) {
    if (choice.isNull() || titles.contains(choice))
        return true;
    printError(QStringLiteral("%1: \"%2\" is none of \"%3\"")
                   .arg(QLatin1String(option), choice, titles.join(QStringLiteral("\", \""))));
    return false;
}

bool isColor(const QString& text) {
    static const QRegularExpression form(QStringLiteral("^#[0-9A-Fa-f]{6}$"));
    if (text.isNull() || form.match(text).hasMatch())
        return true;
    printError(QStringLiteral("--color: \"%1\" is not of the form #RRGGBB").arg(text));
    return false;
}

/// Returns what was asked for, with the preferences in place of what was not; none, with an error
/// printed, for a value that does not exist.
std::optional<photo::StampStyle> stampStyle(const GlobalOptions& global,
                                            const StampOptions& options) {
    if (!isTitle(options.position, media::stampPositions(), "--position") ||
        !isTitle(options.layout, media::stampDateFormats(), "--layout") || !isColor(options.color))
        return std::nullopt;
    const media::Preferences stored = storedPreferences(global);
    photo::StampStyle style;
    style.position = options.position.isNull() ? stored.position : options.position;
    style.layout = options.layout.isNull() ? stored.dateFormat : options.layout;
    style.font = options.font.isNull() ? stored.currentFontname : options.font;
    style.fontSize = options.fontSize > 0 ? options.fontSize : stored.currentFontSize;
    if (!options.color.isNull()) // the colour is no preference: white, as at each start
        style.color = QColor(options.color);
    return style;
}

int runStamp(const GlobalOptions& global, const PhotoOptions& options, Console& console) {
    const auto style = stampStyle(global, options.stamp);
    if (!style)
        return kWrongUsage;
    const auto order = [&style](const auto& import, const auto& settings) {
        return photo::stampOrder({import.localPhotoItemArray(), *style, settings});
    };
    return runOverPhotos(global, options, QStringLiteral("stamped"), order, console);
}

/// A list that is exported.
struct ListExport {
    const char* list;
    void (photo::PhotoLists::*write)(const photo::PhotoRequest& request);
};
constexpr ListExport kListExports[] = {
    {"tiff", &photo::PhotoLists::ExportTiffInfoToPlist},
    {"exif", &photo::PhotoLists::ExportExifInfoToPlist},
    {"exif-tiff", &photo::PhotoLists::ExportExifandTiffInfoToPlist},
    {"exif-gps", &photo::PhotoLists::ExportExifandGPSInfoToPlist},
    {"template", &photo::PhotoLists::ExportTemplateDataToPlist},
    {"all", &photo::PhotoLists::ExportAllMetadataInfoToPlist},
    {"each", &photo::PhotoLists::WriteSelectedItemsExifDataToPlist},
};

int runExport(const GlobalOptions& global, const PhotoOptions& options, Console& console) {
    for (const ListExport& found : kListExports) {
        if (options.list != QLatin1String(found.list))
            continue;
        const auto order = [&found](const auto& import, const auto& settings) {
            return photo::listOrder(found.write, {import.localPhotoItemArray(), settings});
        };
        return runOverPhotos(global, options, QStringLiteral("exported"), order, console);
    }
    printError(QStringLiteral("photo export: \"%1\" is none of tiff, exif, exif-tiff, exif-gps, "
                              "template, all, each")
                   .arg(options.list));
    return kWrongUsage;
}

int runImport(const GlobalOptions& global, const PhotoOptions& options, Console& console) {
    const auto order = [&options](const auto& import, const auto& settings) {
        return photo::importOrder(options.plist, &photo::rewriteWithProperties,
                                  {import.localPhotoItemArray(), settings});
    };
    return runOverPhotos(global, options, QStringLiteral("written"), order, console);
}

/// One job of the photo menu.
struct PhotoCommand {
    const char* name;
    int (*run)(const GlobalOptions& global, const PhotoOptions& options, Console& console);
};
constexpr PhotoCommand kPhotoCommands[] = {
    {"stamp", &runStamp},        {"export", &runExport},    {"import", &runImport},
    {"remove", &runPhotoRemove}, {"gps", &runPhotoPlace},   {"change-gps", &runPhotoPlace},
    {"apply", &runPhotoApply},   {"dates", &runPhotoDates},
};

} // namespace

int runPhoto(const GlobalOptions& global, const PhotoOptions& options, Console& console) {
    for (const PhotoCommand& command : kPhotoCommands)
        if (options.job == QLatin1String(command.name))
            return command.run(global, options, console);
    printError(QStringLiteral("photo: unknown job \"%1\"").arg(options.job));
    return kWrongUsage;
}

} // namespace clipheave::cli
