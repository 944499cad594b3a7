// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/fields.h"
#include "metadata/metadata_keys.h"
#include "metadata/video_plans.h"

#include <QAnyStringView>

// The text fields of a video, in the order in which every writer builds their items.
namespace clipheave::metadata {

/// One text field: where the pane shows it, where it was remembered, where the record holds it, and
/// what it is written as.
struct VideoTextRow {
    QString media::PaneTexts::*pane;
    QString media::ShownTexts::*old;
    QString media::IKImageItem::*record;
    bool media::ChangeFlags::*group;
    const char16_t* keySpace;
    const char16_t* key;
    const char* identifier;
};

inline constexpr auto kVideoTextRows =
    media::partsOf<media::isWrittenToVideos>([](const media::Field& field) {
        const auto& [keySpace, key, identifier] = field.written;
        return VideoTextRow{field.video.text,  field.video.shown, field.record,
                            field.video.group, keySpace,          key,
                            identifier};
    });

/// An item of one of the tables' places.
[[nodiscard]] inline platform::AVMetadataItem
newMetadataItem(const char16_t* keySpace, const char16_t* key, QAnyStringView identifier,
                platform::AVMetadataItem::Value value) {
    return platform::AVMetadataItem::make(QString::fromUtf16(keySpace), QString::fromUtf16(key),
                                          identifier.toString(), std::move(value));
}

/// The three identifiers under which a video may hold its shooting date.
[[nodiscard]] inline bool isDateIdentifier(const QString& identifier) {
    return identifier == kISODateIdentifier || identifier == kUserDataDateIdentifier ||
           identifier == kQuickTimeCreationDateIdentifier;
}

} // namespace clipheave::metadata
