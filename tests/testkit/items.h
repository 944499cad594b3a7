// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/metadata_item.h"

#include <QStringList>

// Metadata items by their identifiers.
namespace testkit {

/// Returns an item with the key space and the key of its identifier, such as "itsk/%A9nam".
inline clipheave::platform::AVMetadataItem
itemOf(const QString& identifier, const clipheave::platform::AVMetadataItem::Value& value) {
    const qsizetype slash = identifier.indexOf(u'/');
    return clipheave::platform::AVMetadataItem::make(identifier.left(slash),
                                                     identifier.mid(slash + 1), identifier, value);
}
inline clipheave::platform::AVMetadataItem itemOf(const char* identifier, const char* text) {
    return itemOf(QString::fromLatin1(identifier), QString::fromUtf8(text));
}

/// Returns "identifier=text" of every item.
inline QStringList itemTexts(const QList<clipheave::platform::AVMetadataItem>& items) {
    QStringList texts;
    for (const auto& item : items)
        texts += item.effectiveIdentifier() + u'=' + item.stringValue();
    return texts;
}

} // namespace testkit
