// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"

#include <QSet>

namespace clipheave::media {

/// Lets the items of one import hold equal texts once: kinds, artists, albums, rates, and the key
/// spaces, keys and identifiers of their metadata. Used on one thread, before an item is handed
/// over.
class SharedTexts {
public:
    /// Replaces the texts of `item` by equal ones of earlier items; none changes its value.
    void shareTextsOf(IKImageItem& item);

private:
    void share(QString& text);

    QSet<QString> m_texts;
};

} // namespace clipheave::media
