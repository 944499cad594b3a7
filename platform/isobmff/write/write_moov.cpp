// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/write/write_moov.h"

#include "platform/isobmff/box.h"
#include "platform/isobmff/messages.h"
#include "platform/isobmff/write/write_patch.h"

#include <QtEndian>

#include <utility>

namespace clipheave::platform {
namespace {

tl::unexpected<Error> headerFailure(ErrorCode code, const Message& detail) {
    return failure(code, kRebuildMovieHeader, {}, detail);
}

tl::unexpected<Error> cutBox(const Box& box) {
    return headerFailure(ErrorCode::InvalidData,
                         Message(kMovieHeaderPartCut, {fourCcText(box.type)}));
}

bool isSampleContainer(std::uint32_t type) {
    return type == fourCc("trak") || type == fourCc("mdia") || type == fourCc("minf") ||
           type == fourCc("stbl");
}

} // namespace

SampleHome sampleHome(ByteView trak) {
    const ByteView dref =
        findPayload(trak, {fourCc("mdia"), fourCc("minf"), fourCc("dinf"), fourCc("dref")});
    BoxWalker walker(dref.sub(8));
    bool here = false, elsewhere = false;
    while (const auto entry = walker.next()) {
        constexpr std::uint32_t kSelfContained = 1;
        const bool self = (walker.payload(*entry).be32(0).value_or(1) & kSelfContained) != 0;
        (self ? here : elsewhere) = true;
    }
    if (here && elsewhere)
        return SampleHome::Both;
    return elsewhere ? SampleHome::OtherFiles : SampleHome::ThisFile;
}

/// Appends to one buffer and fills in the sizes of containers when they are complete.
struct MovieHeaderBuilder::Pass {
    const OffsetMap& map;
    bool wide, rewrite;
    QByteArray out;

    Result<void> copyBox(const BoxWalker& walker, const Box& box) {
        if (box.toEnd && box.size <= UINT32_MAX) { // no longer the last one
            const qsizetype start = out.size();
            out += walker.whole(box).bytes();
            qToBigEndian(static_cast<quint32>(box.size), out.data() + start);
            return {};
        }
        if (!holdsOffsets(box.type) || !rewrite) {
            out += walker.whole(box).bytes();
            return {};
        }
        QByteArray patched = walker.whole(box).toByteArray();
        const auto done = patchBox(patched, map);
        if (!done)
            return tl::unexpected(done.error());
        out += patched;
        return {};
    }

    Result<void> sampleContainer(std::uint32_t type, ByteView payload) {
        const qsizetype start = out.size();
        out += QByteArray(8, '\0');
        qToBigEndian(type, out.data() + start + 4);
        BoxWalker walker(payload);
        while (const auto box = walker.next()) {
            if (box->cut)
                return cutBox(*box);
            auto done = sampleBox(walker, *box);
            if (!done)
                return done;
        }
        if (!walker.problem().isEmpty())
            return headerFailure(ErrorCode::InvalidData, walker.problem());
        qToBigEndian(static_cast<quint32>(out.size() - start), out.data() + start);
        return {};
    }

    Result<void> sampleBox(const BoxWalker& walker, const Box& box) {
        const ByteView payload = walker.payload(box);
        if (isSampleContainer(box.type))
            return sampleContainer(box.type, payload);
        const auto table = offsetTable(box.type, payload);
        if (!table)
            return tl::unexpected(table.error());
        if (!*table)
            return copyBox(walker, box);
        const auto moved = movedTable(box.type, payload, map, wide);
        if (!moved)
            return tl::unexpected(moved.error());
        out += *moved;
        return {};
    }

    Result<void> track(const BoxWalker& walker, const Box& box) {
        if (!rewrite)
            return copyBox(walker, box);
        switch (sampleHome(walker.payload(box))) {
        case SampleHome::OtherFiles:
            out += walker.whole(box).bytes();
            return {};
        case SampleHome::Both:
            return headerFailure(ErrorCode::NotSupported, kSamplesInSeveralFiles);
        case SampleHome::ThisFile:
            break;
        }
        return sampleContainer(box.type, walker.payload(box));
    }
};

MovieHeaderBuilder::MovieHeaderBuilder(ByteView payload, std::optional<MovieMetadata> metadata)
    : m_payload(payload), m_metadata(std::move(metadata)) {
}

Result<void> MovieHeaderBuilder::check() const {
    BoxWalker walker(m_payload);
    while (const auto box = walker.next()) {
        if (box->type == fourCc("cmov"))
            return headerFailure(ErrorCode::NotSupported, kMovieHeaderCompressed);
        // A box that reaches over the end would swallow what is written behind it.
        if (box->cut)
            return cutBox(*box);
    }
    if (!walker.problem().isEmpty())
        return headerFailure(ErrorCode::InvalidData, walker.problem());
    return {};
}

Result<QByteArray> MovieHeaderBuilder::build(const OffsetMap& map) const {
    Pass pass{map, m_wide, m_rewrite || !map.isIdentity(), {}};
    pass.out.reserve(static_cast<qsizetype>(m_payload.size()) + 4096);
    pass.out += QByteArray("\0\0\0\0moov", 8);
    bool udtaPlaced = !m_metadata, metaPlaced = !m_metadata;
    BoxWalker walker(m_payload);
    while (const auto box = walker.next()) {
        Result<void> done;
        if (m_metadata && box->type == fourCc("udta")) {
            pass.out += std::exchange(udtaPlaced, true) ? QByteArray() : m_metadata->udta;
        } else if (m_metadata && box->type == fourCc("meta")) {
            pass.out += std::exchange(metaPlaced, true) ? QByteArray() : m_metadata->meta;
        } else {
            done =
                box->type == fourCc("trak") ? pass.track(walker, *box) : pass.copyBox(walker, *box);
        }
        if (!done)
            return tl::unexpected(done.error());
    }
    if (!udtaPlaced)
        pass.out += m_metadata->udta;
    if (!metaPlaced)
        pass.out += m_metadata->meta;
    if (pass.out.size() > static_cast<qsizetype>(UINT32_MAX))
        return headerFailure(ErrorCode::LimitExceeded, kMovieHeaderHasGrown);
    qToBigEndian(static_cast<quint32>(pass.out.size()), pass.out.data());
    return pass.out;
}

} // namespace clipheave::platform
