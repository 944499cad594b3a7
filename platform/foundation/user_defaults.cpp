// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/user_defaults.h"

#include "platform/foundation/text.h"

#include <QSettings>
#include <QStandardPaths>

namespace clipheave::platform {
namespace {

QString standardDefaultsFile() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/clipheave/clipheave.conf");
}

/// Writes what has been changed, merged into what other processes have written.
Result<void> synchronize(QSettings& store, const QString& file) {
    const QString operation = QStringLiteral("write the settings");
    store.sync();
    switch (store.status()) {
    case QSettings::NoError:
        return {};
    case QSettings::AccessError:
        return failure(ErrorCode::AccessDenied, operation, file);
    case QSettings::FormatError:
        break;
    }
    return failure(ErrorCode::InvalidData, operation, file);
}

} // namespace

NSUserDefaults::NSUserDefaults(QString file)
    : m_file(file.isEmpty() ? standardDefaultsFile() : std::move(file)) {
}

QString NSUserDefaults::stringForKey(const QString& key) const {
    const QVariant value = objectForKey(key);
    // A comma that someone typed into the file without quotes makes a list of the text.
    if (value.typeId() == QMetaType::QStringList)
        return value.toStringList().join(QLatin1String(", "));
    return value.toString();
}

int NSUserDefaults::integerForKey(const QString& key) const {
    const QString text = stringForKey(key);
    return text == QLatin1String("true") ? 1 : intValue(text);
}

QVariant NSUserDefaults::objectForKey(const QString& key) const {
    return QSettings(m_file, QSettings::IniFormat).value(key);
}

bool NSUserDefaults::contains(const QString& key) const {
    return QSettings(m_file, QSettings::IniFormat).contains(key);
}

QStringList NSUserDefaults::allKeys() const {
    return QSettings(m_file, QSettings::IniFormat).allKeys();
}

Result<void> NSUserDefaults::setObject_forKey(const QVariant& value, const QString& key) {
    QSettings store(m_file, QSettings::IniFormat);
    store.setValue(key, value);
    return synchronize(store, m_file);
}

Result<void> NSUserDefaults::removeObjectForKey(const QString& key) {
    QSettings store(m_file, QSettings::IniFormat);
    store.remove(key);
    return synchronize(store, m_file);
}

} // namespace clipheave::platform
