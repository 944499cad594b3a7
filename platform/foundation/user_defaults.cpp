// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/user_defaults.h"

#include "platform/foundation/messages.h"
#include "platform/foundation/text.h"

#include <QFile>
#include <QSettings>
#include <QStandardPaths>

#include <algorithm>

namespace clipheave::platform {
namespace {

QString standardDefaultsFile() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/clipheave/clipheave.conf");
}

/// Writes what has been changed, merged into what other processes have written.
Result<void> synchronize(QSettings& store, const QString& file) {
    const MessageCode operation = kWriteSettings;
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

constexpr qint64 kMostStoreBytes = 1 << 20;
constexpr int kMostBackups = 100;

/// QSettings takes nearly any bytes for keys and values: what no store of ours holds is control
/// characters, text that is not UTF-8, and a megabyte.
bool isWholeStore(const QString& file) {
    QFile store(file);
    if (!store.open(QIODevice::ReadOnly))
        return true; // missing or closed to us: another matter
    if (store.size() > kMostStoreBytes)
        return false;
    const QByteArray bytes = store.readAll();
    const bool printable = std::all_of(bytes.begin(), bytes.end(), [](char byte) {
        return static_cast<unsigned char>(byte) >= 0x20 || byte == '\n' || byte == '\r' ||
               byte == '\t';
    });
    return printable && bytes.isValidUtf8() &&
           QSettings(file, QSettings::IniFormat).status() != QSettings::FormatError;
}

} // namespace

NSUserDefaults::NSUserDefaults(QString file)
    : m_file(file.isEmpty() ? standardDefaultsFile() : std::move(file)) {
}

QString NSUserDefaults::setAsideWhenBroken() const {
    if (isWholeStore(m_file))
        return {};
    const QString name = m_file + QStringLiteral(".broken");
    for (int number = 1; number <= kMostBackups; ++number) {
        QString backup = number == 1 ? name : name + QStringLiteral(" %1").arg(number);
        if (QFile::rename(m_file, backup)) // never replaces
            return backup;
    }
    return {};
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
