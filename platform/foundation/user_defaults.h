// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QString>
#include <QStringList>
#include <QVariant>

namespace clipheave::platform {

/// The per-user defaults store: an INI file, written atomically at every set. The standard file is
/// "<XDG config folder>/clipheave/clipheave.conf"; values are texts, integers and flags.
class NSUserDefaults {
public:
    /// `file` empty: the standard file. A missing file is an empty store.
    explicit NSUserDefaults(QString file = {});

    [[nodiscard]] QString filePath() const { return m_file; }
    /// A store that is not an INI file of texts (cut, overwritten, binary) is renamed to
    /// "<file>.broken" ("<file>.broken 2" …) and counts as missing from then on. Returns the new
    /// path; empty when the store is whole, missing or could not be renamed.
    [[nodiscard]] QString setAsideWhenBroken() const;
    /// Null when the key is missing.
    [[nodiscard]] QString stringForKey(const QString& key) const;
    /// 0 when the key is missing; a text is read as intValue reads it.
    [[nodiscard]] int integerForKey(const QString& key) const;
    [[nodiscard]] QVariant objectForKey(const QString& key) const;
    [[nodiscard]] bool contains(const QString& key) const;
    [[nodiscard]] QStringList allKeys() const;
    /// Other keys of the file, also those another process has written meanwhile, stay.
    [[nodiscard]] Result<void> setObject_forKey(const QVariant& value, const QString& key);
    [[nodiscard]] Result<void> removeObjectForKey(const QString& key);

private:
    QString m_file;
};

} // namespace clipheave::platform
