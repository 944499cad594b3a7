// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/heif_sequence.h"

#include "platform/image/messages.h"
#include "platform/isobmff/box.h"
#include "platform/isobmff/write/write_patch.h"

#include <algorithm>
#include <array>
#include <vector>

namespace clipheave::platform {

namespace {

constexpr std::size_t kMostBoxes = 1u << 16;
constexpr qsizetype kShortHead = 8; // of the tables that movedTable() returns

bool leadsToTables(std::uint32_t type) {
    static constexpr std::array kContainers{fourCc("moov"), fourCc("trak"), fourCc("mdia"),
                                            fourCc("minf"), fourCc("stbl")};
    return std::find(kContainers.begin(), kContainers.end(), type) != kContainers.end();
}

bool holdsTexts(std::uint32_t type) {
    return type == fourCc("udta") || type == fourCc("meta") || type == fourCc("uuid");
}

/// Returns the boxes inside these containers; a container in one of its own kind is one of them.
Result<std::vector<Box>> leavesOf(const QByteArray& moov) {
    std::vector<Box> leaves, open;
    if (const auto box = parseBoxHeader(moov, 0, static_cast<std::uint64_t>(moov.size())))
        open.push_back(*box);
    while (!open.empty()) {
        const Box parent = open.back();
        open.pop_back();
        BoxWalker children(ByteView(moov).sub(parent.payloadOffset(), parent.payloadSize()),
                           parent.payloadOffset());
        while (const auto box = children.next()) {
            const bool isContainer = leadsToTables(box->type) && box->type != parent.type;
            (isContainer ? open : leaves).push_back(*box);
        }
        if (!children.problem().isEmpty() || leaves.size() > kMostBoxes)
            return failure(ErrorCode::InvalidData, kReadImageBoxes, {}, kHeifBroken);
    }
    return leaves;
}

QByteArray bytesOfBox(const QByteArray& moov, const Box& box) {
    return moov.mid(static_cast<qsizetype>(box.offset), static_cast<qsizetype>(box.size));
}

/// Creation and modification, behind version and flags.
void clearDates(QByteArray& moov, const Box& box) {
    constexpr std::uint64_t kLongest = 20;
    if (box.payloadSize() < kLongest)
        return;
    const auto at = static_cast<qsizetype>(box.payloadOffset());
    const qsizetype length = moov[at] == 1 ? 16 : 8;
    moov.replace(at + 4, length, QByteArray(length, '\0'));
}

void makeFree(QByteArray& moov, const Box& box) {
    moov.replace(static_cast<qsizetype>(box.offset) + 4, 4, "free");
    const auto length = static_cast<qsizetype>(box.payloadSize());
    moov.replace(static_cast<qsizetype>(box.payloadOffset()), length, QByteArray(length, '\0'));
}

} // namespace

bool hasLocatedTexts(const QByteArray& moov) {
    const auto leaves = leavesOf(moov);
    return !leaves || std::any_of(leaves->begin(), leaves->end(), [&](const Box& box) {
        return holdsTexts(box.type) && bytesOfBox(moov, box).contains("iloc");
    });
}

Result<void> removeSequenceTexts(QByteArray& moov) {
    const auto leaves = leavesOf(moov);
    if (!leaves)
        return tl::unexpected(leaves.error());
    for (const Box& box : *leaves) {
        if (box.type == fourCc("mvhd") || box.type == fourCc("tkhd") || box.type == fourCc("mdhd"))
            clearDates(moov, box);
        else if (holdsTexts(box.type))
            makeFree(moov, box);
    }
    return {};
}

Result<void> moveSequence(QByteArray& moov, const OffsetMap& map) {
    const auto leaves = leavesOf(moov);
    if (!leaves)
        return tl::unexpected(leaves.error());
    for (const Box& box : *leaves) {
        QByteArray moved = bytesOfBox(moov, box);
        const ByteView payload = ByteView(moved).sub(box.headerSize);
        const auto table = offsetTable(box.type, payload);
        if (!table)
            return tl::unexpected(table.error());
        if (*table) {
            const auto entries = movedTable(box.type, payload, map, false);
            if (!entries)
                return tl::unexpected(entries.error());
            moved = moved.left(box.headerSize) + entries->mid(kShortHead);
        } else if (holdsOffsets(box.type)) {
            if (const auto done = patchBox(moved, map); !done)
                return tl::unexpected(done.error());
        }
        moov.replace(static_cast<qsizetype>(box.offset), moved.size(), moved);
    }
    return {};
}

} // namespace clipheave::platform
