// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/read/item_values.h"

#include "platform/isobmff/data_codes.h"
#include "platform/isobmff/messages.h"
#include "platform/isobmff/meta_kind.h"
#include "platform/isobmff/read/item_texts.h"

#include <QHash>
#include <QStringConverter>

#include <algorithm>
#include <bit>

namespace clipheave::platform {

namespace {

/// Distinct keys remembered per thread; more come from hostile files only.
constexpr qsizetype kMaxInternedKeys = 1024;
/// Untyped bytes of `ilst` (keywords, private blobs) that are kept in memory.
constexpr std::uint64_t kMaxKeptBytes = 64u << 10;

using enum DataCode::Value;

QString imageTypeName(ByteView head) {
    if (head.startsWith("\xFF\xD8\xFF"))
        return QStringLiteral("com.apple.metadata.datatype.JPEG");
    if (head.startsWith("\x89PNG"))
        return QStringLiteral("com.apple.metadata.datatype.PNG");
    if (head.startsWith("GIF8"))
        return QStringLiteral("com.apple.metadata.datatype.GIF");
    return {};
}

QString rawTypeName() {
    return QStringLiteral("com.apple.metadata.datatype.raw-data");
}

QString bytesTypeName(std::uint32_t code) {
    switch (code) {
    case Gif:
        return QStringLiteral("com.apple.metadata.datatype.GIF");
    case Jpeg:
        return QStringLiteral("com.apple.metadata.datatype.JPEG");
    case Png:
        return QStringLiteral("com.apple.metadata.datatype.PNG");
    case Bmp:
        return QStringLiteral("com.apple.metadata.datatype.BMP");
    case PointF32:
        return QStringLiteral("com.apple.metadata.datatype.point-float32");
    case DimensionsF32:
        return QStringLiteral("com.apple.metadata.datatype.dimensions-float32");
    case RectF32:
        return QStringLiteral("com.apple.metadata.datatype.rect-float32");
    case Json:
        return QStringLiteral("com.apple.metadata.datatype.JSON");
    default:
        return rawTypeName();
    }
}

QString signedTypeName(std::uint64_t size) {
    switch (size) {
    case 1:
        return QStringLiteral("com.apple.metadata.datatype.int8");
    case 2:
        return QStringLiteral("com.apple.metadata.datatype.int16");
    case 8:
        return QStringLiteral("com.apple.metadata.datatype.int64");
    default:
        return QStringLiteral("com.apple.metadata.datatype.int32");
    }
}

QString unsignedTypeName(std::uint64_t size) {
    switch (size) {
    case 1:
        return QStringLiteral("com.apple.metadata.datatype.uint8");
    case 2:
        return QStringLiteral("com.apple.metadata.datatype.uint16");
    case 8:
        return QStringLiteral("com.apple.metadata.datatype.uint64");
    default:
        return QStringLiteral("com.apple.metadata.datatype.uint32");
    }
}

bool setInteger(AVMetadataItem& item, ByteView bytes, bool isSigned) {
    const std::uint64_t size = bytes.size();
    if (size == 0 || (size > 4 && size != 8))
        return false;
    std::uint64_t number = 0;
    for (std::uint64_t i = 0; i < size; ++i)
        number = number << 8 | *bytes.u8(i);
    if (isSigned) {
        const unsigned unused = static_cast<unsigned>(64 - size * 8);
        const auto wide = std::bit_cast<std::int64_t>(number << unused) >> unused;
        item.value = static_cast<double>(wide);
        item.dataType = signedTypeName(size);
    } else {
        item.value = static_cast<double>(number);
        item.dataType = unsignedTypeName(size);
    }
    return true;
}

bool setFloat(AVMetadataItem& item, ByteView bytes) {
    if (bytes.size() == 4) {
        item.value = static_cast<double>(std::bit_cast<float>(*bytes.be32(0)));
        item.dataType = QStringLiteral("com.apple.metadata.datatype.float32");
        return true;
    }
    if (bytes.size() == 8) {
        item.value = std::bit_cast<double>(*bytes.be64(0));
        item.dataType = QStringLiteral("com.apple.metadata.datatype.float64");
        return true;
    }
    return false;
}

bool setNumber(AVMetadataItem& item, std::uint32_t code, ByteView bytes) {
    switch (code) {
    case SignedInteger:
    case Int8:
    case Int16:
    case Int32:
    case Int64:
        return setInteger(item, bytes, true);
    case UnsignedInteger:
    case Uint8:
    case Uint16:
    case Uint32:
    case Uint64:
        return setInteger(item, bytes, false);
    case Float32:
    case Float64:
        return setFloat(item, bytes);
    default:
        return false;
    }
}

bool isText(std::uint32_t code) {
    return code == Utf8 || code == Utf16 || code == Utf8Sort || code == Utf16Sort;
}

void keepBytes(AVMetadataItem& item, HeaderReader& reader, const FileSlice& payload,
               std::uint64_t limit) {
    if (payload.length > limit) {
        if (reader.isInMemory())
            item.value = reader.copy(payload.offset, payload.length);
        else
            item.value = payload;
        return;
    }
    const ByteView bytes = reader.view(payload.offset, payload.length);
    // An empty value is empty, not absent.
    item.value = bytes.empty() ? QByteArray("") : bytes.toByteArray();
}

} // namespace

void ItemSink::noteProblem(const Message& text) {
    if (problem.isEmpty())
        problem = text;
}

void ItemSink::add(QList<AVMetadataItem>& group, AVMetadataItem item) {
    if (itunes.size() + userData.size() + keyed.size() >= kMaxItems)
        return noteProblem(kTooManyMetadataItems);
    group.append(std::move(item));
}

KeyNames internKey(const char* keySpace, ByteView name) {
    thread_local QHash<QByteArray, KeyNames> known;
    QByteArray id(keySpace);
    id += name.bytes();
    const auto found = known.constFind(id);
    if (found != known.constEnd())
        return *found;
    const QString space = QLatin1String(keySpace);
    const bool isCode = space != QLatin1String("mdta") && space != QLatin1String("itlk");
    // Some cameras name their keys by four-character codes as well.
    const bool isLatin1 = isCode || !name.bytes().isValidUtf8();
    const QString key =
        isLatin1 ? QString::fromLatin1(name.bytes()) : QString::fromUtf8(name.bytes());
    KeyNames names{space, key, metadataIdentifier(space, key)};
    if (known.size() < kMaxInternedKeys)
        known.insert(id, names);
    return names;
}

AVMetadataItem newItem(const KeyNames& names) {
    return AVMetadataItem::make(names.keySpace, names.key, names.identifier, {});
}

std::shared_ptr<const SourceBox> sourceOf(HeaderReader& reader, const Box& box) {
    if (box.cut || box.toEnd)
        return nullptr;
    auto source = std::make_shared<SourceBox>();
    if (box.size > kInlineBytes && reader.isInMemory()) {
        source->bytes = reader.copy(box.offset, box.size);
        return source;
    }
    if (box.size > kInlineBytes) {
        source->bytes = FileSlice{reader.path(), box.offset, box.size};
        return source;
    }
    const ByteView bytes = reader.view(box.offset, box.size);
    if (bytes.size() != box.size)
        return nullptr;
    source->bytes = bytes.toByteArray();
    return source;
}

void setTextValue(AVMetadataItem& item, const QString& text) {
    item.value = text.isNull() ? QStringLiteral("") : text;
    item.dataType = QStringLiteral("com.apple.metadata.datatype.UTF-8");
}

void setRawValue(AVMetadataItem& item, HeaderReader& reader, const FileSlice& payload) {
    keepBytes(item, reader, payload, kInlineBytes);
    item.dataType =
        imageTypeName(reader.viewUpTo(payload.offset, std::min<std::uint64_t>(payload.length, 4)));
    if (item.dataType.isEmpty())
        item.dataType = rawTypeName();
}

void setTypedValue(AVMetadataItem& item, HeaderReader& reader, std::uint32_t typeCode,
                   const FileSlice& payload, bool isImage) {
    const bool imageCode =
        typeCode == Jpeg || typeCode == Png || typeCode == Gif || typeCode == Bmp;
    if (isImage || imageCode) {
        // Deliberate: the bytes decide, since many files name a PNG a JPEG.
        setRawValue(item, reader, payload);
        if (item.dataType == rawTypeName())
            item.dataType = bytesTypeName(typeCode);
        return;
    }
    if (isText(typeCode) && payload.length <= HeaderReader::kMaxView) {
        const ByteView bytes = reader.view(payload.offset, payload.length);
        const bool wide = typeCode == Utf16 || typeCode == Utf16Sort;
        setTextValue(item, wide ? decodeUtf16(bytes) : decodeUnicode(bytes));
        if (wide)
            item.dataType = QStringLiteral("com.apple.metadata.datatype.UTF-16");
        return;
    }
    constexpr std::uint64_t kLargestNumber = 8;
    if (payload.length <= kLargestNumber &&
        setNumber(item, typeCode, reader.view(payload.offset, payload.length)))
        return;
    // Keywords are text under the type of bytes.
    const bool isKeywords = item.key == u"com.apple.quicktime.keywords";
    keepBytes(item, reader, payload, isKeywords ? HeaderReader::kMaxView : kMaxKeptBytes);
    item.dataType = isText(typeCode) ? QStringLiteral("com.apple.metadata.datatype.UTF-8")
                                     : bytesTypeName(typeCode);
}

} // namespace clipheave::platform
