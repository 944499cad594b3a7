// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/write/write_layout.h"

#include "platform/isobmff/compressed_header.h"
#include "platform/isobmff/messages.h"
#include "platform/isobmff/write/write_removal.h"

#include <algorithm>

namespace clipheave::platform {
namespace {

/// Top-level boxes of a file; a day of fragments of half a second has a third of them.
constexpr std::uint64_t kMaxTopLevelBoxes = 1u << 20;
/// Padding up to this is taken up again when it is all zeros, and left rather than moving all.
constexpr std::uint64_t kMaxSlack = FileReader::kWindow;
/// Runs shorter than this are not worth padding for.
constexpr std::uint64_t kLongRun = 64u << 10;
constexpr std::uint64_t kMinBox = 8;

/// An XMP packet beyond this is not carried into another file.
constexpr std::uint64_t kMaxXmpPacket = 64u << 20;
/// uuid of the XMP packet in ISO base media files (Adobe XMP, part 3).
constexpr char kXmpUuid[] = "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC";

/// Box headers all over a file, fetched by reads that are small beside the payload between them.
class TopLevelHeaders {
public:
    explicit TopLevelHeaders(FileReader& reader) : m_reader(reader) {}

    /// The 16 bytes at `offset`, fewer at the end of the file.
    [[nodiscard]] ByteView at(std::uint64_t offset) {
        if (offset < m_begin || !ByteView(m_bytes).has(offset - m_begin, 16)) {
            constexpr std::uint64_t kPiece = 6u << 10;
            m_begin = offset;
            m_bytes = m_reader.read(offset, std::min(kPiece, m_reader.size() - offset))
                          .value_or(QByteArray());
        }
        return ByteView(m_bytes).sub(offset - m_begin, 16);
    }

private:
    FileReader& m_reader;
    QByteArray m_bytes;
    std::uint64_t m_begin = 0;
};

bool isMovieHeader(const Box& box) {
    return box.type == fourCc("moov");
}

bool isZeroPadding(FileReader& reader, const Box& box) {
    if (box.type != fourCc("free") || box.cut || box.payloadSize() > kMaxSlack)
        return false;
    const auto bytes = reader.view(box.payloadOffset(), box.payloadSize());
    return bytes && std::all_of(bytes->data(), bytes->data() + bytes->size(),
                                [](std::uint8_t byte) { return byte == 0; });
}

bool isXmpPacket(FileReader& reader, const Box& box) {
    return box.type == fourCc("uuid") &&
           reader.viewUpTo(box.payloadOffset(), 16).startsWith(QByteArrayView(kXmpUuid, 16));
}

/// Editors leave old headers behind in padding.
bool isPadding(const Box& box) {
    return (box.type == fourCc("free") || box.type == fourCc("skip")) && !box.cut;
}

bool goes(FileReader& reader, const Box& box, Keep keep) {
    switch (keep) {
    case Keep::All:
        return false;
    case Keep::AllButDescriptions:
        return isPadding(box) || isXmpPacket(reader, box);
    case Keep::WhatPlays:
        break;
    }
    // One that reaches over the end goes like the others: the trailer of a camera, text or an image
    // behind the boxes reads like that.
    return !staysAtRemoval(box, reader.viewUpTo(box.payloadOffset(), box.payloadSize()));
}

/// The output gets a plain header.
Result<void> inflateMovieHeader(SourceFile& source) {
    const ByteView compressed = findPayload(source.moov, {fourCc("cmov")});
    if (compressed.empty())
        return {};
    const auto whole = inflatedMovieHeader(compressed);
    if (!whole)
        return failure(whole.error().code, kReadMovieHeader, source.reader.path(),
                       whole.error().detail);
    source.moov = findPayload(*whole, {fourCc("moov")}).toByteArray();
    return {};
}

Result<void> loadMovieHeader(SourceFile& source) {
    const MessageCode operation = kReadMovieHeader;
    const auto moov = std::find_if(source.boxes.begin(), source.boxes.end(), isMovieHeader);
    if (moov == source.boxes.end())
        return failure(ErrorCode::InvalidData, operation, source.reader.path(), kNoMovieHeader);
    if (moov->cut)
        return failure(ErrorCode::Truncated, operation, source.reader.path(), kMovieHeaderCut);
    if (moov->payloadSize() > kMaxMoovSize)
        return failure(ErrorCode::LimitExceeded, operation, source.reader.path(),
                       kMovieHeaderTooLarge);
    source.moovIndex = static_cast<std::size_t>(moov - source.boxes.begin());
    auto bytes = source.reader.read(moov->payloadOffset(), moov->payloadSize());
    if (!bytes)
        return tl::unexpected(bytes.error());
    source.moov = std::move(*bytes);
    return inflateMovieHeader(source);
}

/// Where the next run may begin at best: in its old place, else at the same place in a block.
std::uint64_t runTarget(const SourceRun& run, std::uint64_t position) {
    const auto usable = [&](std::uint64_t target) {
        return target == position || target >= position + kMinBox;
    };
    const std::uint64_t limit = run.end - run.begin >= kLongRun ? kMaxSlack : kCloneBlock;
    if (run.begin >= position && run.begin - position < limit && usable(run.begin))
        return run.begin;
    if (run.end - run.begin < kLongRun)
        return position;
    std::uint64_t target = position - position % kCloneBlock + run.begin % kCloneBlock;
    while (target < position || !usable(target))
        target += kCloneBlock;
    return target;
}

} // namespace

Result<SourceFile> openSourceFile(const QString& path) {
    auto reader = FileReader::open(path);
    if (!reader)
        return tl::unexpected(reader.error());
    SourceFile source{std::move(*reader), {}, 0, 0, {}, {}};
    TopLevelHeaders headers(source.reader);
    while (source.boxes.size() < kMaxTopLevelBoxes) {
        const auto box = parseBoxHeader(headers.at(source.tail), source.tail,
                                        source.reader.size() - source.tail);
        if (!box)
            break;
        source.boxes.push_back(*box);
        source.tail = box->end();
    }
    const auto loaded = loadMovieHeader(source);
    if (!loaded)
        return tl::unexpected(loaded.error());
    if (source.boxes[0].type == fourCc("ftyp") && source.boxes[0].payloadSize() <= kMaxSlack)
        source.ftyp =
            source.reader.viewUpTo(source.boxes[0].payloadOffset(), source.boxes[0].payloadSize())
                .toByteArray();
    return source;
}

QByteArray readXmpPacket(SourceFile& source) {
    for (const Box& box : source.boxes) {
        if (box.cut || box.size > kMaxXmpPacket || !isXmpPacket(source.reader, box))
            continue;
        const auto bytes = source.reader.read(box.offset, box.size);
        return bytes ? *bytes : QByteArray();
    }
    return {};
}

std::vector<SourceRun> keptRuns(SourceFile& source, Keep keep) {
    std::vector<SourceRun> runs;
    bool afterMoov = false, beside = true;
    std::uint64_t previousEnd = UINT64_MAX;
    const auto add = [&](std::uint64_t begin, std::uint64_t end, bool cut) {
        if (begin == previousEnd && !runs.empty())
            runs.back().end = end;
        else
            runs.push_back({begin, end, cut, afterMoov});
        runs.back().cut |= cut;
        previousEnd = end;
    };
    for (std::size_t i = 0; i < source.boxes.size(); ++i) {
        const Box& box = source.boxes[i];
        if (isMovieHeader(box) || (box.type == fourCc("ftyp") && i == 0)) {
            // Boxes that the header has moved across in the target start a run of their own.
            afterMoov |= i == source.moovIndex;
            beside = true;
            continue;
        }
        if ((beside && isZeroPadding(source.reader, box)) || goes(source.reader, box, keep))
            continue;
        beside = false;
        add(box.offset, box.end(), box.cut);
    }
    if (source.tail < source.reader.size() && keep != Keep::WhatPlays)
        add(source.tail, source.reader.size(), false);
    return runs;
}

TargetLayout planLayout(const std::vector<SourceRun>& runs, std::uint64_t ftypSize,
                        std::uint64_t moovSize, bool moovFirst) {
    TargetLayout layout;
    const auto place = [&](TargetPart::Kind kind, std::uint64_t size, std::size_t run = 0) {
        layout.parts.push_back({kind, size, run});
        layout.size += size;
    };
    place(TargetPart::Kind::Ftyp, ftypSize);
    bool moovPlaced = moovFirst;
    if (moovFirst)
        place(TargetPart::Kind::Moov, moovSize);
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const SourceRun& run = runs[i];
        if (!moovPlaced && run.afterMoov) {
            place(TargetPart::Kind::Moov, moovSize);
            moovPlaced = true;
        }
        const std::uint64_t target = runTarget(run, layout.size);
        if (target != layout.size)
            place(TargetPart::Kind::Padding, target - layout.size);
        layout.map.add({run.begin, run.end, target, run.cut});
        place(TargetPart::Kind::Run, run.end - run.begin, i);
    }
    if (!moovPlaced)
        place(TargetPart::Kind::Moov, moovSize);
    return layout;
}

} // namespace clipheave::platform
