// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/box.h"
#include "platform/media/model/metadata_item.h"

// What the reader of `ilst` and the reader of `udta` share.
namespace clipheave::platform {

/// Boxes and images up to this size are kept, larger ones stay in the file.
inline constexpr std::uint64_t kInlineBytes = 4096;

/// The items of one file while it is read, in the three groups of the final order.
struct ItemSink {
    HeaderReader& reader;
    bool quickTime = false; ///< by brand: ©-codes are "udta" instead of "uiso"
    QList<AVMetadataItem> itunes, userData, keyed;
    Message problem; ///< the first one

    void noteProblem(const Message& text);
    void add(QList<AVMetadataItem>& group, AVMetadataItem item);
};

/// Key space, key and identifier, shared among all files of a thread, since a library of songs has
/// the same few.
struct KeyNames {
    QString keySpace, key, identifier;
};
/// `name` is a four-character code for "itsk", "udta" and "uiso", else UTF-8.
[[nodiscard]] KeyNames internKey(const char* keySpace, ByteView name);
[[nodiscard]] AVMetadataItem newItem(const KeyNames& names);

/// The box as it stands; null when the file does not hold all of it or its size is left open, so
/// that it could not stand elsewhere.
[[nodiscard]] std::shared_ptr<const SourceBox> sourceOf(HeaderReader& reader, const Box& box);

/// The payload of a `data` box at `payload`, behind type and locale, into value and data type.
/// `isImage`: the key holds images whatever the type code says.
void setTypedValue(AVMetadataItem& item, HeaderReader& reader, std::uint32_t typeCode,
                   const FileSlice& payload, bool isImage);
/// Bytes of no known type: kept up to kInlineBytes, else left in the file.
void setRawValue(AVMetadataItem& item, HeaderReader& reader, const FileSlice& payload);
void setTextValue(AVMetadataItem& item, const QString& text);

} // namespace clipheave::platform
