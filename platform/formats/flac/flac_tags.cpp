// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/flac/flac_tags.h"

#include "platform/formats/mpeg/id3_tag.h"
#include "platform/foundation/file_manager.h"
#include "platform/media/model/tag_mapping.h"

#include <QtEndian>

#include <vector>

namespace clipheave::platform {

namespace {

constexpr int kMostBlocksRewritten = 4096;
constexpr std::uint32_t kMostStoredComments = 1 << 16;
constexpr qsizetype kLargestBlock = (1 << 24) - 1;
constexpr std::uint32_t kFrontCoverPicture = 3;
enum BlockType : std::uint8_t { StreamInfo = 0, VorbisComment = 4, Picture = 6, Invalid = 127 };

tl::unexpected<Error> flacFailure(ErrorCode code, const FileReader& reader, const char16_t* why) {
    return failure(code, QStringLiteral("write the FLAC tags"), reader.path(),
                   QString::fromUtf16(why));
}

/// The comments of an info key, the first of which is written.
struct CommentNames {
    QLatin1String key;
    std::initializer_list<QByteArrayView> names;
};
/// The further names are what the reader takes for the same text when the first is missing: they
/// must not shine through a text that was replaced or taken away.
const CommentNames kCommentNames[] = {
    {QLatin1String("title"), {"TITLE"}},
    {QLatin1String("subtitle"), {"SUBTITLE"}},
    {QLatin1String("album"), {"ALBUM"}},
    {QLatin1String("artist"), {"ARTIST"}},
    {QLatin1String("composer"), {"COMPOSER"}},
    {QLatin1String("recorded date"), {"DATE", "RECORDED DATE"}},
    {QLatin1String("year"), {"YEAR"}},
    {QLatin1String("copyright"), {"COPYRIGHT"}},
    {QLatin1String("comments"), {"COMMENT", "COMMENTS"}},
    {QLatin1String("lyricist"), {"LYRICIST"}},
};

struct StoredBlock {
    std::uint8_t type = Invalid;
    std::uint64_t offset = 0, size = 0; ///< of the body in the source
    std::optional<QByteArray> fresh;    ///< a new body in place of the source's
};

struct FlacLayout {
    std::uint64_t start = 0; ///< of "fLaC"; what stands before it stays
    std::vector<StoredBlock> blocks;
    std::uint64_t audioStart = 0;
};

Result<FlacLayout> readFlacLayout(FileReader& reader) {
    FlacLayout layout;
    if (const auto header = parseId3Header(reader.viewUpTo(0, 10)))
        layout.start = header->totalSize;
    if (!reader.viewUpTo(layout.start, 4).startsWith("fLaC"))
        return flacFailure(ErrorCode::InvalidData, reader, u"the signature is missing");
    std::uint64_t at = layout.start + 4;
    for (bool last = false; !last;) {
        const auto head = reader.viewUpTo(at, 4).be32(0);
        StoredBlock block;
        block.type = static_cast<std::uint8_t>(head.value_or(0x7F000000) >> 24 & 0x7F);
        block.offset = at + 4;
        block.size = head.value_or(0) & 0xFFFFFF;
        if (block.type == Invalid || block.size > reader.size() - at - 4 ||
            layout.blocks.size() >= kMostBlocksRewritten)
            return flacFailure(ErrorCode::InvalidData, reader, u"a metadata block is damaged");
        at = block.offset + block.size;
        last = *head >> 31;
        layout.blocks.push_back(std::move(block));
    }
    layout.audioStart = at;
    if (layout.blocks.front().type != StreamInfo || layout.blocks.front().size != 34)
        return flacFailure(ErrorCode::InvalidData, reader, u"there is no stream information");
    // The sync code of a frame, 14 bits; a size that lies would end somewhere else.
    if (at < reader.size() && (reader.viewUpTo(at, 2).be16(0).value_or(0) & 0xFFFC) != 0xFFF8)
        return flacFailure(ErrorCode::InvalidData, reader, u"no sound follows the metadata");
    return layout;
}

/// A comment block as bytes; entries as they stand, "NAME=text".
struct Comments {
    QByteArray vendor;
    QByteArrayList entries;
};

std::optional<QByteArray> takeCounted(ByteView& rest) {
    const auto length = rest.le32(0);
    if (!length || *length > rest.size() - 4)
        return std::nullopt;
    const QByteArray bytes = rest.sub(4, *length).toByteArray();
    rest = rest.sub(4 + std::uint64_t{*length});
    return bytes;
}

std::optional<Comments> parseComments(ByteView block) {
    Comments comments;
    const auto vendor = takeCounted(block);
    const auto count = block.le32(0);
    if (!vendor || !count || *count > kMostStoredComments)
        return std::nullopt;
    comments.vendor = *vendor;
    block = block.sub(4);
    for (std::uint32_t i = 0; i < *count; ++i) {
        const auto entry = takeCounted(block);
        if (!entry)
            return std::nullopt;
        comments.entries.append(*entry);
    }
    return comments;
}

QByteArray counted(const QByteArray& bytes) {
    QByteArray length(4, '\0');
    qToLittleEndian(static_cast<quint32>(bytes.size()), length.data());
    return length + bytes;
}

QByteArray renderComments(const Comments& comments) {
    QByteArray count(4, '\0');
    qToLittleEndian(static_cast<quint32>(comments.entries.size()), count.data());
    QByteArray block = counted(comments.vendor) + count;
    for (const QByteArray& entry : comments.entries)
        block += counted(entry);
    return block;
}

bool isNamed(const QByteArray& entry, QByteArrayView name) {
    return entry.size() > name.size() && entry[name.size()] == '=' &&
           QByteArrayView(entry).first(name.size()).compare(name, Qt::CaseInsensitive) == 0;
}

qsizetype removeNamed(QByteArrayList& entries, QByteArrayView name) {
    qsizetype first = -1;
    for (qsizetype i = entries.size() - 1; i >= 0; --i) {
        if (isNamed(entries[i], name)) {
            entries.removeAt(i);
            first = i;
        }
    }
    return first;
}

/// What stands there already, joined as the reader joins several values.
QString shownText(const QByteArrayList& entries, QByteArrayView name) {
    QList<NamedTag> values;
    for (const QByteArray& entry : entries)
        if (isNamed(entry, name))
            values.append({QStringLiteral("v"), QString::fromUtf8(entry.mid(name.size() + 1))});
    return tagText(values, QLatin1String("v"));
}

void changeComments(QByteArrayList& entries, const QMap<QString, QString>& info) {
    for (const CommentNames& row : kCommentNames) {
        const auto wanted = info.constFind(QString(row.key));
        // Several artists stay several when nothing was changed.
        if (wanted == info.cend() ||
            (!wanted->isEmpty() && *wanted == shownText(entries, *row.names.begin())))
            continue;
        qsizetype place = -1;
        for (const QByteArrayView name : row.names) {
            const qsizetype found = removeNamed(entries, name);
            place = place < 0 ? found : place;
        }
        if (row.key == QLatin1String("comments") && wanted->isEmpty() && place < 0)
            removeNamed(entries, "DESCRIPTION"); // what was shown came from there
        if (wanted->isEmpty())
            continue;
        const QByteArray entry = row.names.begin()->toByteArray() + '=' + wanted->toUtf8();
        entries.insert(place < 0 ? entries.size() : std::min(place, entries.size()), entry);
    }
}

Result<void> changeCommentBlock(FileReader& reader, FlacLayout& layout,
                                const QMap<QString, QString>& info) {
    if (info.isEmpty())
        return {};
    auto block = std::find_if(layout.blocks.begin(), layout.blocks.end(),
                              [](const StoredBlock& b) { return b.type == VorbisComment; });
    Comments comments;
    if (block == layout.blocks.end()) {
        StoredBlock added;
        added.type = VorbisComment;
        block = layout.blocks.insert(layout.blocks.begin() + 1, added);
    } else {
        const auto bytes = reader.read(block->offset, block->size);
        const auto parsed = bytes ? parseComments(*bytes) : std::nullopt;
        if (!parsed)
            return flacFailure(ErrorCode::InvalidData, reader, u"the comments are damaged");
        comments = *parsed;
    }
    changeComments(comments.entries, info);
    block->fresh = renderComments(comments);
    return {};
}

QByteArray renderPictureBlock(const EncodedImage& image) {
    const auto number = [](std::uint32_t value) {
        QByteArray bytes(4, '\0');
        qToBigEndian(value, bytes.data());
        return bytes;
    };
    const QByteArray data = image.bytes();
    if (data.isEmpty())
        return {};
    const QByteArray mime = "image/" + image.format().toLatin1();
    // Depth and colours: the image itself says them.
    return number(kFrontCoverPicture) + number(static_cast<std::uint32_t>(mime.size())) + mime +
           number(0) + number(static_cast<std::uint32_t>(image.size().width())) +
           number(static_cast<std::uint32_t>(image.size().height())) + number(24) + number(0) +
           number(static_cast<std::uint32_t>(data.size())) + data;
}

Result<void> changePictureBlock(FileReader& reader, FlacLayout& layout, const EncodedImage& image) {
    if (image.isNull())
        return {};
    const QByteArray body = renderPictureBlock(image);
    if (body.isEmpty())
        return flacFailure(ErrorCode::Io, reader, u"the picture cannot be read");
    for (StoredBlock& block : layout.blocks) {
        const bool isCover =
            block.type == Picture &&
            reader.viewUpTo(block.offset, 4).be32(0).value_or(0) == kFrontCoverPicture;
        if (isCover) {
            block.fresh = body;
            return {};
        }
    }
    StoredBlock added;
    added.type = Picture;
    added.fresh = body;
    layout.blocks.push_back(std::move(added));
    return {};
}

Result<void> writeBlocks(AtomicFile& file, FileReader& reader, const FlacLayout& layout) {
    if (auto copied = file.copyFrom(reader.fd(), 0, layout.start + 4); !copied)
        return copied;
    for (std::size_t i = 0; i < layout.blocks.size(); ++i) {
        const StoredBlock& block = layout.blocks[i];
        if (block.fresh && block.fresh->size() > kLargestBlock)
            return flacFailure(ErrorCode::LimitExceeded, reader, u"a block would be over 16 MiB");
        const auto size =
            block.fresh ? static_cast<std::uint64_t>(block.fresh->size()) : block.size;
        const bool last = i + 1 == layout.blocks.size();
        QByteArray head(4, '\0');
        qToBigEndian(static_cast<quint32>(last ? 0x80000000u : 0u) |
                         static_cast<quint32>(block.type) << 24 | static_cast<quint32>(size),
                     head.data());
        if (auto written = file.write(head); !written)
            return written;
        const auto body = block.fresh ? file.write(*block.fresh)
                                      : file.copyFrom(reader.fd(), block.offset, block.size);
        if (!body)
            return body;
    }
    return {};
}

} // namespace

Result<void> rewriteFlacTags(const QString& source, const QString& target,
                             const FlacTagChanges& changes,
                             const std::function<bool(double)>& progress) {
    auto reader = FileReader::open(source);
    if (!reader)
        return tl::unexpected(reader.error());
    auto layout = readFlacLayout(*reader);
    if (!layout)
        return tl::unexpected(layout.error());
    if (auto changed = changeCommentBlock(*reader, *layout, changes.info); !changed)
        return changed;
    if (auto changed = changePictureBlock(*reader, *layout, changes.image); !changed)
        return changed;
    auto file = AtomicFile::create(target, reader->size());
    if (!file)
        return tl::unexpected(file.error());
    file->copyExtendedAttributes(reader->fd());
    if (auto written = writeBlocks(*file, *reader, *layout); !written)
        return written;
    const std::uint64_t length = reader->size() - layout->audioStart;
    const auto report = [&](std::uint64_t done) {
        return !progress || progress(static_cast<double>(done) / static_cast<double>(length + 1));
    };
    if (auto copied = file->copyFrom(reader->fd(), layout->audioStart, length, report); !copied)
        return copied;
    return file->commit();
}

} // namespace clipheave::platform
