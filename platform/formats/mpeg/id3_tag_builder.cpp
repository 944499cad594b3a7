// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/mpeg/id3_tag_builder.h"

#include "platform/formats/messages.h"
#include "platform/formats/mpeg/id3_frames.h"
#include "platform/formats/mpeg/id3_header.h"

#include <QtEndian>

#include <algorithm>
#include <utility>
#include <vector>

#include <id3/tag.h>
#include <id3/writer.h>

namespace clipheave::platform {

namespace {

constexpr std::uint32_t kTextEncodingUtf16 = 1;
constexpr std::uint32_t kFrontCoverType = 3;
constexpr qsizetype kTagHeaderSize = Id3Header::kSize;
constexpr int kRenderedVersion = 3;

static_assert(static_cast<int>(ID3FID_TITLE_) == static_cast<int>(ID3FID_TITLE) &&
              static_cast<int>(ID3FID_RECORDINGDATES_) == static_cast<int>(ID3FID_RECORDINGDATES));

// Never deleted through its base, whose destructor is not virtual.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
/// Takes whatever the library writes. Its own writer into memory trusts a size that it gets wrong.
class ByteArrayWriter final : public ID3_Writer {
public:
    using ID3_Writer::writeChars;
    void close() override {}
    void flush() override {}
    pos_type getCur() override { return static_cast<pos_type>(bytes.size()); }
    size_type writeChars(const char_type buffer[], size_type length) override {
        bytes.append(static_cast<const char*>(static_cast<const void*>(buffer)), length);
        return length;
    }

    QByteArray bytes;
};
#pragma GCC diagnostic pop

/// The library keeps texts as big-endian bytes and takes them from memory as they lie there.
std::vector<unicode_t> bigEndianUnits(const QString& text) {
    std::vector<unicode_t> units;
    units.reserve(static_cast<std::size_t>(text.size()) + 1);
    for (const QChar letter : text)
        units.push_back(qToBigEndian(static_cast<unicode_t>(letter.unicode())));
    units.push_back(0);
    return units;
}

/// The tag owns the frame. Handing it over spares the library's copy of a frame, which frees memory
/// under a wrong size.
ID3_Frame& addFrame(ID3_Tag& tag, ID3_FrameID id) {
    auto* frame = new ID3_Frame(id); // NOLINT: owned by the tag
    tag.AttachFrame(frame);
    frame->GetField(ID3FN_TEXTENC)->Set(kTextEncodingUtf16);
    return *frame;
}

struct RenderedFrame {
    qsizetype body = 0, end = 0; ///< offsets in the tag
};

/// Returns the frame that begins at `at`; nothing at the padding and at the end.
std::optional<RenderedFrame> renderedFrameAt(const QByteArray& tag, qsizetype at) {
    const auto header =
        id3FrameHeaderAt(ByteRange(tag), static_cast<std::uint64_t>(at), kRenderedVersion);
    if (!header)
        return std::nullopt;
    const qsizetype body = at + static_cast<qsizetype>(header->headerSize);
    return RenderedFrame{body,
                         std::min(body + static_cast<qsizetype>(header->bodySize), tag.size())};
}

/// The library renders a copy of the tag, which pads in steps of 2 KiB in spite of SetPadding().
void dropPadding(QByteArray& tag) {
    qsizetype end = kTagHeaderSize;
    while (const auto frame = renderedFrameAt(tag, end))
        end = frame->end;
    tag.truncate(end);
}

/// The library writes an empty description without the byte order mark of its encoding. Some
/// readers refuse the whole frame then, and the user would not find the comment again.
void markEmptyDescriptions(QByteArray& tag) {
    constexpr std::pair<QByteArrayView, qsizetype> kDescriptions[] = {
        {"COMM", 1 + 3},    // behind encoding and language
        {"APIC", 1 + 1 + 1} // behind encoding, an empty type and the kind of image
    };
    qsizetype at = kTagHeaderSize;
    while (auto frame = renderedFrameAt(tag, at)) {
        for (const auto& [id, offset] : kDescriptions) {
            const qsizetype place = frame->body + offset;
            if (!QByteArrayView(tag).sliced(at).startsWith(id) || frame->end < place + 2 ||
                tag[place] != 0 || tag[place + 1] != 0)
                continue;
            tag.insert(place, "\xFF\xFE", 2);
            frame->end += 2;
            qToBigEndian(static_cast<std::uint32_t>(frame->end - frame->body), tag.data() + at + 4);
        }
        at = frame->end;
    }
}

void writeTagSize(QByteArray& tag) {
    const auto size = static_cast<std::uint32_t>(tag.size() - kTagHeaderSize);
    qToBigEndian(syncSafeOfNumber(size), tag.data() + 6);
}

} // namespace

Result<QByteArray> renderId3Tag(const QList<Id3TextFrame>& frames, const QByteArray& image) {
    if (frames.isEmpty() && image.isEmpty())
        return QByteArray();
    qsizetype bytes = image.size();
    for (const Id3TextFrame& frame : frames)
        bytes += frame.text.size() * 2 + 64;
    if (bytes > qsizetype{kLargestSyncSafeNumber} - 4096)
        return failure(ErrorCode::LimitExceeded, kBuildId3Tag, {}, kTagTooLarge);
    ID3_Tag tag;
    tag.Clear();
    for (const Id3TextFrame& row : frames) {
        ID3_Frame& frame = addFrame(tag, static_cast<ID3_FrameID>(row.frame));
        ID3_Field* text = frame.GetField(ID3FN_TEXT);
        text->SetEncoding(ID3TE_UTF16);
        text->Set(bigEndianUnits(row.text).data());
    }
    if (!image.isEmpty()) {
        ID3_Frame& frame = addFrame(tag, ID3FID_PICTURE);
        frame.GetField(ID3FN_PICTURETYPE)->Set(kFrontCoverType);
        frame.GetField(ID3FN_DATA)
            ->Set(static_cast<const uchar*>(static_cast<const void*>(image.constData())),
                  static_cast<std::size_t>(image.size()));
    }
    tag.SetPadding(false);
    tag.SetUnsync(false);
    ByteArrayWriter writer;
    tag.Render(writer, ID3TT_ID3V2);
    if (writer.bytes.size() < kTagHeaderSize || !writer.bytes.startsWith("ID3"))
        return failure(ErrorCode::Io, kBuildId3Tag, {}, kNoTagFromLibrary);
    dropPadding(writer.bytes);
    markEmptyDescriptions(writer.bytes);
    writeTagSize(writer.bytes);
    return writer.bytes;
}

} // namespace clipheave::platform
