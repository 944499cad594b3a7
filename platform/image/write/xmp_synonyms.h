// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/write/photo_change.h"

#include <QHash>
#include <QString>
#include <QStringList>

namespace clipheave::platform {

struct XmpName {
    QString space, name;
};

/// The XMP properties that repeat what a change is about: they go with it or follow it.
class XmpSynonyms {
public:
    explicit XmpSynonyms(const PhotoChange& change);
    [[nodiscard]] bool isEmpty() const;
    [[nodiscard]] bool removes(const XmpName& name) const;
    /// Returns the new texts of a property, null when it keeps its own.
    [[nodiscard]] const QStringList* renewed(const XmpName& name) const;

private:
    void renew(const char* space, const char* name, const QStringList& texts);
    void renewTags(const PhotoChange& change);
    void renewPlace(const PhotoChange& change);

    bool m_exif = false, m_gps = false, m_tiff = false, m_iptc = false;
    bool m_movesPlace = false; ///< a new place: of the old one nothing stays in other forms
    QHash<QString, QStringList> m_renewed; ///< by name space and name
};

} // namespace clipheave::platform
