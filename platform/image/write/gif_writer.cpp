// SPDX-License-Identifier: GPL-3.0-or-later
// Sources: GIF89a specification; XMP part 3, 1.1.2 (its application extension).
#include "platform/image/gif_blocks.h"
#include "platform/image/messages.h"
#include "platform/image/write/photo_plan.h"

#include <QList>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kPacketAt = 14; ///< behind introducer, label, size and name
constexpr std::uint64_t kMagicSize = 258, kMostGifPacket = 64u << 20;
const QByteArray kXmpName = QByteArrayLiteral("XMP DataXMP");

/// What leads readers that do not know the packet to its end: 01 FF FE … 00 00.
QByteArray magicTrailer() {
    QByteArray magic(1, '\1');
    for (int value = 255; value >= 0; --value)
        magic += static_cast<char>(value);
    return magic + '\0';
}

class GifPlan {
public:
    GifPlan(FileReader& reader, const PhotoChange& change) : m_reader(reader), m_change(change) {}

    Result<PhotoPlan> run() {
        std::uint64_t at = firstGifBlock(m_reader);
        m_plan.addRange(0, at);
        while (const auto block = gifBlockAt(m_reader, at)) {
            place(*block);
            at = block->end();
            if (block->type == kGifTrailer)
                return finished(at);
        }
        return failure(ErrorCode::InvalidData, kReadPhoto, m_reader.path(), kGifBroken);
    }

private:
    void place(const GifBlock& block) {
        static const QList<QByteArray> kPlayed{"NETSCAPE2.0", "ANIMEXTS1.0", "ICCRGBG1012"};
        const bool isApplication = block.isExtension(kGifApplication);
        if (isApplication && block.name == kXmpName)
            return placePacket(block);
        const bool isMetadata =
            (isApplication && !kPlayed.contains(block.name)) || block.isExtension(kGifComment);
        if (!isMetadata || !m_change.dropsEverything)
            m_plan.addRange(block.offset, block.size);
    }

    void placePacket(const GifBlock& block) {
        QByteArray old;
        if (block.size > kPacketAt + kMagicSize && block.size <= kMostGifPacket)
            old = m_reader.read(block.offset + kPacketAt, block.size - kPacketAt - kMagicSize)
                      .value_or(QByteArray());
        if (old.isEmpty() && m_change.removesAny())
            return static_cast<void>(m_plan.notes.append(kUnreadableXmpRemoved));
        const QByteArray changed = changedXmpOrNote(old, m_change, m_plan.notes);
        if (changed == old)
            return m_plan.addRange(block.offset, block.size);
        if (changed.isEmpty())
            return;
        m_plan.addRange(block.offset, kPacketAt);
        m_plan.add(changed);
        m_plan.add(magicTrailer());
    }

    Result<PhotoPlan> finished(std::uint64_t end) {
        if (!m_change.dropsEverything)
            m_plan.addRange(end, m_reader.size() - end);
        return std::move(m_plan);
    }

    FileReader& m_reader;
    const PhotoChange& m_change;
    PhotoPlan m_plan;
};

} // namespace

Result<PhotoPlan> planGif(FileReader& reader, const PhotoChange& change) {
    // Deliberate: such fields could go into XMP, where hardly any reader of GIF files looks.
    if (change.setsTags() || !change.iptc.empty())
        return failure(ErrorCode::NotSupported, kWritePhotoTags, reader.path(), kGifHoldsNoTags);
    return GifPlan(reader, change).run();
}

} // namespace clipheave::platform
