// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/flac/flac_tags.h"

#include "platform/formats/flac/flac_blocks.h"
#include "platform/formats/flac/flac_foreign_tag.h"
#include "platform/formats/flac/flac_picture.h"
#include "platform/formats/flac/vorbis_comment.h"
#include "platform/formats/messages.h"
#include "platform/formats/mpeg/mpeg_tags.h"
#include "platform/foundation/atomic_file.h"
#include "platform/foundation/unchanged_files.h"
#include "platform/media/model/messages.h"

#include <algorithm>
#include <vector>

namespace clipheave::platform {

namespace {

constexpr std::uint32_t kMostCommentsKept = 1 << 16;
constexpr std::uint64_t kStreamInfoSize = 34;

tl::unexpected<Error> flacFailure(ErrorCode code, const FileReader& reader, MessageCode why) {
    return failure(code, kWriteFlacTags, reader.path(), why);
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

struct WrittenBlock {
    FlacBlock source;
    std::optional<QByteArray> fresh; ///< a new body in place of the source's

    [[nodiscard]] std::uint64_t size() const {
        return fresh ? static_cast<std::uint64_t>(fresh->size()) : source.size;
    }
};

WrittenBlock freshBlock(FlacBlockType type, QByteArray body) {
    WrittenBlock block;
    block.source.type = type;
    block.fresh = std::move(body);
    return block;
}

struct FlacLayout {
    std::uint64_t start = 0;      ///< of "fLaC"
    std::uint64_t copiedFrom = 0; ///< `start` where the foreign tag before it goes
    std::vector<WrittenBlock> blocks;
    std::uint64_t audioStart = 0;
    std::uint64_t audioEnd = 0; ///< where the tags behind the audio begin
    std::uint64_t copiedTo = 0; ///< `audioEnd` where they go, else the file's end

    [[nodiscard]] bool hasForeignTag(const FileReader& reader) const {
        return start > 0 || audioEnd < reader.size();
    }
};

/// The sync code of a frame, 14 bits; a block size that lies ends somewhere else.
bool startsFlacFrame(FileReader& reader, std::uint64_t at) {
    return (reader.viewUpTo(at, 2).be16(0).value_or(0) & 0xFFFC) == 0xFFF8;
}

Result<FlacLayout> readFlacLayout(FileReader& reader) {
    const auto start = findFlacSignature(reader);
    if (!start)
        return flacFailure(ErrorCode::InvalidData, reader, kSignatureMissing);
    FlacLayout layout;
    layout.start = *start;
    const auto keep = [&](const FlacBlock& block) { layout.blocks.push_back({block, {}}); };
    const FlacBlocksEnd end = visitFlacBlocks(reader, layout.start + 4, keep);
    if (end.reason != FlacBlocksEnd::Reason::LastBlock)
        return flacFailure(ErrorCode::InvalidData, reader, kFlacBlockDamaged);
    layout.audioStart = end.offset;
    layout.audioEnd = startOfTrailingTags(reader, end.offset);
    layout.copiedTo = reader.size();
    const FlacBlock& first = layout.blocks.front().source;
    if (first.type != FlacBlockType::StreamInfo || first.size != kStreamInfoSize)
        return flacFailure(ErrorCode::InvalidData, reader, kNoFlacStreamInfo);
    if (end.offset < reader.size() && !startsFlacFrame(reader, end.offset))
        return flacFailure(ErrorCode::InvalidData, reader, kNoFlacAudio);
    return layout;
}

qsizetype removeNamed(QByteArrayList& entries, QByteArrayView name) {
    const auto has = [name](const QByteArray& entry) { return isCommentNamed(entry, name); };
    const auto first = std::find_if(entries.cbegin(), entries.cend(), has);
    if (first == entries.cend())
        return -1;
    const qsizetype place = first - entries.cbegin();
    entries.removeIf(has);
    return place;
}

/// What stands there already, joined as the reader joins several values.
QString shownText(const QByteArrayList& entries, QByteArrayView name) {
    QList<NamedTag> values;
    for (const QByteArray& entry : entries)
        if (isCommentNamed(entry, name))
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

struct StoredComments {
    QByteArray vendor;
    QByteArrayList entries;
};

std::optional<StoredComments> loadComments(const ByteRange& body) {
    const auto bytes = body.load(FlacBlock::kLargestBody);
    if (!bytes)
        return std::nullopt;
    const VorbisComment split = splitVorbisComment(ByteRange(*bytes), kMostCommentsKept);
    if (!split.isComplete)
        return std::nullopt;
    StoredComments comments;
    comments.vendor = split.vendor.load(FlacBlock::kLargestBody).value_or(QByteArray());
    for (const ByteRange& entry : split.entries)
        comments.entries.append(entry.load(FlacBlock::kLargestBody).value_or(QByteArray()));
    return comments;
}

std::vector<WrittenBlock>::iterator findComments(FlacLayout& layout) {
    return std::find_if(layout.blocks.begin(), layout.blocks.end(), [](const WrittenBlock& block) {
        return block.source.type == FlacBlockType::VorbisComment;
    });
}

/// Moves what foreign tags say into the comments; the tags go. Returns their cover.
EncodedImage moveForeignTag(FileReader& reader, FlacLayout& layout, QByteArrayList& entries,
                            Notes& notes) {
    if (!layout.hasForeignTag(reader))
        return {};
    const bool hasPicture =
        std::any_of(layout.blocks.begin(), layout.blocks.end(), [](const WrittenBlock& block) {
            return block.source.type == FlacBlockType::Picture;
        });
    const FlacForeignTag foreign = readFlacForeignTag(
        reader, flacForeignItems(reader, layout.start, layout.audioStart), entries, hasPicture);
    entries += foreign.comments;
    layout.copiedFrom = layout.start;
    layout.copiedTo = layout.audioEnd;
    if (!foreign.notCarried.isEmpty())
        notes.append(Message(kTagsNotCarriedOver, {foreign.notCarried.join(QLatin1String(", "))}));
    return foreign.cover;
}

/// Returns the cover of a foreign tag, null without one.
Result<EncodedImage> changeCommentBlock(FileReader& reader, FlacLayout& layout,
                                        const QMap<QString, QString>& info, Notes& notes) {
    if (info.isEmpty() && !layout.hasForeignTag(reader))
        return EncodedImage();
    const auto block = findComments(layout);
    const bool isNew = block == layout.blocks.end();
    auto comments =
        isNew ? std::optional(StoredComments()) : loadComments(block->source.body(reader));
    if (!comments)
        return flacFailure(ErrorCode::InvalidData, reader, kFlacCommentsDamaged);
    EncodedImage cover = moveForeignTag(reader, layout, comments->entries, notes);
    changeComments(comments->entries, info);
    const QByteArray body = renderVorbisComment(comments->vendor, comments->entries);
    if (isNew)
        layout.blocks.insert(layout.blocks.begin() + 1,
                             freshBlock(FlacBlockType::VorbisComment, body));
    else
        block->fresh = body;
    return cover;
}

Result<void> changeFrontCover(FileReader& reader, FlacLayout& layout, const EncodedImage& image) {
    if (image.isNull())
        return {};
    const QByteArray body = renderFlacFrontCover(image);
    if (body.isEmpty())
        return flacFailure(ErrorCode::Io, reader, kArtworkUnreadable);
    const auto cover =
        std::find_if(layout.blocks.begin(), layout.blocks.end(), [&](const WrittenBlock& b) {
            return b.source.type == FlacBlockType::Picture &&
                   flacPictureType(b.source.body(reader)) == FlacPicture::kFrontCover;
        });
    if (cover == layout.blocks.end())
        layout.blocks.push_back(freshBlock(FlacBlockType::Picture, body));
    else
        cover->fresh = body;
    return {};
}

Result<void> writeBlock(AtomicFile& file, FileReader& reader, const WrittenBlock& block,
                        bool isLast) {
    if (block.size() > FlacBlock::kLargestBody)
        return flacFailure(ErrorCode::LimitExceeded, reader, kFlacBlockTooLarge);
    const QByteArray header = flacBlockHeader(block.source.type, block.size(), isLast);
    if (auto written = file.write(header); !written)
        return written;
    return block.fresh ? file.write(*block.fresh)
                       : file.copyFrom(reader.fd(), block.source.offset, block.source.size);
}

Result<void> writeBlocks(AtomicFile& file, FileReader& reader, const FlacLayout& layout) {
    if (auto copied =
            file.copyFrom(reader.fd(), layout.copiedFrom, layout.start + 4 - layout.copiedFrom);
        !copied)
        return copied;
    for (const WrittenBlock& block : layout.blocks)
        if (auto written = writeBlock(file, reader, block, &block == &layout.blocks.back());
            !written)
            return written;
    return {};
}

/// Works out the blocks of the output. Without a change everything stays, a foreign tag too.
Result<Notes> changeLayout(FileReader& reader, FlacLayout& layout, const FlacTagChanges& changes) {
    Notes notes;
    if (changes.info.isEmpty() && changes.image.isNull())
        return notes;
    const auto moved = changeCommentBlock(reader, layout, changes.info, notes);
    if (!moved)
        return tl::unexpected(moved.error());
    const auto covered =
        changeFrontCover(reader, layout, changes.image.isNull() ? *moved : changes.image);
    return covered ? Result<Notes>(notes) : tl::unexpected(covered.error());
}

} // namespace

Result<Notes> rewriteFlacTags(const QString& source, const QString& target,
                              const FlacTagChanges& changes,
                              const std::function<bool(double)>& progress) {
    auto reader = FileReader::open(source);
    if (!reader)
        return tl::unexpected(reader.error());
    const UnchangedFiles unchanged(*reader);
    auto layout = readFlacLayout(*reader);
    if (!layout)
        return tl::unexpected(layout.error());
    const auto notes = changeLayout(*reader, *layout, changes);
    if (!notes)
        return notes;
    auto file = AtomicFile::create(target, reader->size());
    if (!file)
        return tl::unexpected(file.error());
    file->copyExtendedAttributes(reader->fd());
    file->takePermissionsOf(FileReference::ofDescriptor(reader->fd()));
    if (auto written = writeBlocks(*file, *reader, *layout); !written)
        return tl::unexpected(written.error());
    const std::uint64_t length = layout->copiedTo - layout->audioStart;
    const auto report = [&](std::uint64_t done) {
        return !progress || progress(static_cast<double>(done) / static_cast<double>(length + 1));
    };
    if (auto copied = file->copyFrom(reader->fd(), layout->audioStart, length, report); !copied)
        return tl::unexpected(copied.error());
    if (auto same = unchanged.check(); !same)
        return tl::unexpected(same.error());
    const auto committed = file->commit();
    return committed ? notes : tl::unexpected(committed.error());
}

} // namespace clipheave::platform
