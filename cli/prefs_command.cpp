// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/commands.h"
#include "cli/json_writer.h"
#include "media/preferences.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"

#include <QDir>

#include <array>

namespace clipheave::cli {

namespace {

using platform::NSUserDefaults;

struct PreferenceRow {
    QString key;
    QString value;
};

std::array<PreferenceRow, 5> rows(const NSUserDefaults& defaults) {
    const media::Preferences values = media::readPreferences(defaults);
    return {{{QString::fromUtf16(media::kStoragePathKey), values.storagelocation},
             {QString::fromUtf16(media::kFontNameKey), values.currentFontname},
             {QString::fromUtf16(media::kFontSizeKey), QString::number(values.currentFontSize)},
             {QString::fromUtf16(media::kPositionKey), values.position},
             {QString::fromUtf16(media::kDateFormatKey), values.dateFormat}}};
}

QString oneOf(const QStringList& titles) {
    return QStringLiteral("one of: ") + titles.join(u", ");
}

/// Returns what the key takes; null when `value` fits.
QString valueFault(const QString& key, const QString& value) {
    if (key == media::kStoragePathKey && value.isEmpty())
        return QStringLiteral("a folder");
    if (key == media::kFontSizeKey) {
        bool ok = false;
        const int size = value.toInt(&ok);
        return ok && size >= 1 && size <= 1000 ? QString()
                                               : QStringLiteral("a whole number from 1 to 1000");
    }
    // In any case: what is stored at the first start is none of the titles by its case.
    if (key == media::kPositionKey && !media::stampPositions().contains(value, Qt::CaseInsensitive))
        return oneOf(media::stampPositions());
    if (key == media::kDateFormatKey && !media::stampDateFormats().contains(value))
        return oneOf(media::stampDateFormats());
    return {};
}

int setPreference(NSUserDefaults& defaults, const QString& key, const QString& value) {
    const QString fault = valueFault(key, value);
    if (!fault.isEmpty()) {
        printError(QStringLiteral("%1 takes %2").arg(key, fault));
        return kWrongUsage;
    }
    platform::Result<void> written;
    if (key == media::kStoragePathKey)
        written = media::setStorageLocation(defaults, absolutePath(value));
    else if (key == media::kFontSizeKey)
        written = defaults.setObject_forKey(value.toInt(), key);
    else
        written = defaults.setObject_forKey(value, key);
    if (written)
        return kAllDone;
    printError(written.error().text());
    return kSomeFailed;
}

} // namespace

int runPrefs(const GlobalOptions& global, const QString& key, const QString& value, bool hasValue) {
    NSUserDefaults defaults(global.config.isEmpty() ? QString() : absolutePath(global.config));
    QByteArray out;
    JsonWriter json;
    json.beginObject();
    bool known = false;
    for (const PreferenceRow& row : rows(defaults)) {
        if (!key.isEmpty() && row.key != key)
            continue;
        known = true;
        json.key(row.key.toLatin1().constData()).string(row.value);
        const QByteArray text = platform::nativePath(row.value) + '\n';
        out += key.isEmpty() ? row.key.toUtf8() + " = " + text : text;
    }
    json.endObject();
    if (!known) {
        printError(QStringLiteral("unknown preference \"%1\"").arg(key));
        return kWrongUsage;
    }
    if (hasValue)
        return setPreference(defaults, key, value);
    return printOut(global.json ? json.take() : out) ? kAllDone : kSomeFailed;
}

QString absolutePath(const QString& path) {
    const QString absolute =
        path.startsWith(u'/') ? path : platform::appendingPathComponent(QDir::currentPath(), path);
    const QStringList components = absolute.split(u'/');
    if (!components.contains(u".") && !components.contains(u".."))
        return absolute;
    // As the kernel follows it: ".." behind a link is the parent of where the link leads.
    const QString real = platform::canonicalPath(absolute);
    return real.isEmpty() ? absolute : real;
}

media::Preferences storedPreferences(const GlobalOptions& global) {
    const NSUserDefaults defaults(global.config.isEmpty() ? QString()
                                                          : absolutePath(global.config));
    return media::preferencesAtStart(defaults);
}

QString storageLocation(const GlobalOptions& global) {
    return global.storage.isEmpty() ? storedPreferences(global).storagelocation
                                    : absolutePath(global.storage);
}

} // namespace clipheave::cli
