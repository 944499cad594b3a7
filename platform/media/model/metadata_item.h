// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"
#include "platform/foundation/result.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>
#include <optional>
#include <variant>

namespace clipheave::platform {

/// Where an item stood in its file, so that a writer can carry it across byte for byte: the whole
/// box of an `ilst` entry or of a `udta` child, header included. Small boxes are kept, large ones
/// (artwork) are read again from the file when they are needed.
struct SourceBox {
    std::variant<QByteArray, FileSlice> bytes;
    [[nodiscard]] Result<QByteArray> load() const;
    [[nodiscard]] std::uint64_t size() const;
};

/// One metadata item of a file. Items are values; change a copy and clear `source` with it, or
/// build a new one with make().
struct AVMetadataItem {
    /// Nothing, text, bytes at hand, bytes still in the file, or a number.
    using Value = std::variant<std::monostate, QString, QByteArray, FileSlice, double>;

    QString keySpace;   ///< "itsk", "mdta", "udta", "uiso", "org.id3", "caaf", "comn"
    QString key;        ///< "com.apple.quicktime.make", "TIT2", "©nam" (U+00A9 for the byte A9)
    QString identifier; ///< "itsk/%A9nam"; empty when a maker left it to key space and key
    Value value;
    QString dataType;            ///< "com.apple.metadata.datatype.UTF-8", may be empty
    QString extendedLanguageTag; ///< BCP-47, may be empty
    /// The item's box as it stands in the source; null for an item that was made here.
    std::shared_ptr<const SourceBox> source;

    [[nodiscard]] static AVMetadataItem make(QString keySpace, QString key, QString identifier,
                                             Value value);

    /// The value as text: texts as they are, numbers in "%@" form, bytes as UTF-8 when they are
    /// valid UTF-8 without a NUL (a final one dropped); null otherwise.
    [[nodiscard]] QString stringValue() const;
    /// The value as bytes: bytes as they are, slices loaded, texts as UTF-8; null on failure.
    [[nodiscard]] QByteArray dataValue() const;
    /// `identifier`, or the one that key space and key give.
    [[nodiscard]] QString effectiveIdentifier() const;
    /// The common identifier this item maps to ("common/title"), null when there is none.
    [[nodiscard]] QString commonIdentifier() const;
};

/// Key space (its identifier prefix: "id3" for "org.id3", "common" for "comn") + "/" + key,
/// percent-escaped byte by byte; U+00A9 and a leading "@" of a four-character code count as the
/// byte A9. "itsk", "©nam" gives "itsk/%A9nam"; "caaf", "info-track number" gives
/// "caaf/info-track%20number".
[[nodiscard]] QString metadataIdentifier(const QString& keySpace, const QString& key);

/// Returns how people know an item: "TPOS", "bext", of a user's text "TXXX:Gain".
[[nodiscard]] QString itemName(const AVMetadataItem& item);
/// Returns whether only encoders care for the item: their settings (TSSE), a duration (TLEN). None
/// of it is the user's, or true of another file.
[[nodiscard]] bool isEncoderNote(const AVMetadataItem& item);

/// The track or disc number of an item as text: the binary pair of "trkn" and "disk" gives "n", or
/// "n/m" when a total is set; a text or a number is given as it stands. Null when nothing is set.
[[nodiscard]] QString trackNumberText(const AVMetadataItem& item);

} // namespace clipheave::platform
