// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/preferences.h"

#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"
#include "platform/workspace/ns_workspace.h"

namespace clipheave::media {

namespace {

using platform::NSFileManager;
using platform::NSUserDefaults;
using platform::Result;

constexpr int kFirstFontSize = 14;
constexpr int kFirstLabelSize = 24; // Deliberate: not kFirstFontSize, see Preferences::fontLabel

QString key(const char16_t* name) {
    return QString::fromUtf16(name);
}

QString textOr(const NSUserDefaults& defaults, const char16_t* name, const QString& otherwise) {
    const QString text = defaults.stringForKey(key(name));
    return text.isNull() ? otherwise : text;
}

QString fontLabel(const QString& name, int size) {
    return QStringLiteral("%1 %2").arg(name).arg(size);
}

/// Deliberate: by its case no title, see Preferences::position.
QString firstPosition() {
    return QStringLiteral("lower left corner");
}

Result<void> writeFirstValues(NSUserDefaults& defaults) {
    const std::pair<const char16_t*, QString> values[] = {
        {kStoragePathKey, defaultStorageLocation()},
        {kFontNameKey, QStringLiteral("Lucida Grande")},
        {kPositionKey, firstPosition()},
        {kDateFormatKey, QStringLiteral("MM/DD/YYYY HH:MM")},
    };
    for (const auto& [name, value] : values) {
        const bool isSet = defaults.contains(key(name)); // by the command line, before any window
        auto written =
            defaults.setObject_forKey(isSet ? defaults.objectForKey(key(name)) : value, key(name));
        if (!written)
            return written;
    }
    return {};
}

Result<void> writeValuesBack(NSUserDefaults& defaults) {
    for (const char16_t* name :
         {kStoragePathKey, kFontNameKey, kFontSizeKey, kPositionKey, kDateFormatKey}) {
        if (!defaults.contains(key(name)))
            continue;
        auto written = defaults.setObject_forKey(defaults.objectForKey(key(name)), key(name));
        if (!written)
            return written;
    }
    return {};
}

} // namespace

const QStringList& stampPositions() {
    static const QStringList titles{
        QStringLiteral("Upper left corner"), QStringLiteral("Upper right corner"),
        QStringLiteral("Lower left corner"), QStringLiteral("Lower right corner")};
    return titles;
}

const QStringList& stampDateFormats() {
    static const QStringList titles{QStringLiteral("MM/DD/YYYY HH:MM"),
                                    QStringLiteral("DD/MM/YYYY HH:MM"),
                                    QStringLiteral("YYYY/MM/DD HH:MM")};
    return titles;
}

QString defaultStorageLocation() {
    return platform::appendingPathComponent(platform::videosFolder(), u"com.Tarvolin.clipheave");
}

Preferences readPreferences(const NSUserDefaults& defaults) {
    Preferences values;
    values.firstStart = !defaults.contains(key(kStoragePathKey));
    values.storagelocation = textOr(defaults, kStoragePathKey, defaultStorageLocation());
    values.currentFontname = textOr(defaults, kFontNameKey, QStringLiteral("Lucida Grande"));
    values.currentFontSize = kFirstFontSize;
    const bool fontChosen = !values.firstStart && defaults.contains(key(kFontNameKey));
    // A size is stored only when a font was chosen; without one the first size stays in force.
    if (fontChosen && defaults.contains(key(kFontSizeKey)))
        values.currentFontSize = defaults.integerForKey(key(kFontSizeKey));
    values.fontLabel =
        fontLabel(values.currentFontname, fontChosen ? values.currentFontSize : kFirstLabelSize);
    values.position = textOr(defaults, kPositionKey, stampPositions().at(2));
    values.dateFormat = textOr(defaults, kDateFormatKey, stampDateFormats().at(0));
    return values;
}

Preferences preferencesAtStart(const NSUserDefaults& defaults) {
    Preferences values = readPreferences(defaults);
    if (values.firstStart && !defaults.contains(key(kPositionKey)))
        values.position = firstPosition();
    return values;
}

Result<Preferences> applyPreferencesAtStart(NSUserDefaults& defaults) {
    const Preferences values = preferencesAtStart(defaults);
    const auto written = values.firstStart ? writeFirstValues(defaults) : writeValuesBack(defaults);
    platform::ignoreFailure(
        NSFileManager::defaultManager().createDirectoryAtPath(values.storagelocation),
        "jobs that write to the storage folder report it");
    if (!written)
        return tl::unexpected(written.error());
    return values;
}

Result<void> setStorageLocation(NSUserDefaults& defaults, const QString& folder) {
    auto written = defaults.setObject_forKey(folder, key(kStoragePathKey));
    if (!written)
        return written;
    return NSFileManager::defaultManager().createDirectoryAtPath(folder);
}

} // namespace clipheave::media
