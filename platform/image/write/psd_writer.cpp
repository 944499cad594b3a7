// SPDX-License-Identifier: GPL-3.0-or-later
// Source: Adobe Photoshop File Formats: the header, the section of colours, that of the image
// resources with all metadata, then layers and pixels, which hold no offsets into the file.
#include "platform/image/messages.h"
#include "platform/image/write/iptc_block.h"
#include "platform/image/write/photo_plan.h"

#include <QtEndian>

#include <algorithm>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kPsdHeader = 26, kSectionLength = 4;

QByteArray sectionLength(qsizetype size) {
    QByteArray bytes(kSectionLength, '\0');
    qToBigEndian(static_cast<quint32>(size), bytes.data());
    return bytes;
}

/// Returns where the joined image ends that stands behind layers and masks from `at` on; the end of
/// the file where that cannot be told. What follows was put there by other programs.
std::uint64_t endOfPsdImage(FileReader& reader, std::uint64_t at) {
    constexpr std::uint16_t kPlain = 0, kRunLengths = 1, kLargeDocument = 2;
    const QByteArray header = reader.viewUpTo(0, kPsdHeader).toByteArray();
    const ByteView fields(header);
    const bool isLarge = fields.be16(4) == kLargeDocument;
    const std::uint64_t channels = fields.be16(12).value_or(0), rows = fields.be32(14).value_or(0),
                        columns = fields.be32(18).value_or(0), bits = fields.be16(22).value_or(0);
    const ByteView length = reader.viewUpTo(at, 8);
    const std::uint64_t layers = isLarge ? length.be64(0).value_or(0) : length.be32(0).value_or(0);
    const std::uint64_t image = at + (isLarge ? 8 : 4) + layers;
    const auto compression = reader.viewUpTo(image, 2).be16(0);
    std::uint64_t end = image + 2;
    if (layers > reader.size() || channels * rows > reader.size())
        return reader.size();
    if (compression == kPlain) {
        end += channels * rows * ((columns * bits + 7) / 8);
    } else if (compression == kRunLengths) {
        const std::uint64_t width = isLarge ? 4 : 2;
        const auto table = reader.read(end, channels * rows * width);
        if (!table)
            return reader.size();
        const ByteView counts(*table);
        end += channels * rows * width;
        for (std::uint64_t i = 0; i < channels * rows; ++i)
            end +=
                isLarge ? counts.be32(i * width).value_or(0) : counts.be16(i * width).value_or(0);
    } else {
        return reader.size();
    }
    return std::min(end, reader.size());
}

} // namespace

Result<PhotoPlan> planPsd(FileReader& reader, const PhotoChange& change) {
    const auto broken = [&] {
        return failure(ErrorCode::InvalidData, kReadPhoto, reader.path(), kPsdBroken);
    };
    const auto colours = reader.viewUpTo(kPsdHeader, kSectionLength).be32(0);
    if (!colours)
        return broken();
    const std::uint64_t at = kPsdHeader + kSectionLength + *colours;
    const auto length = reader.viewUpTo(at, kSectionLength).be32(0);
    const std::uint64_t end = at + kSectionLength + length.value_or(0);
    if (!length || end > reader.size())
        return broken();
    const auto resources = reader.read(at + kSectionLength, *length);
    if (!resources)
        return tl::unexpected(resources.error());
    PhotoPlan plan;
    const auto changed =
        changedImageResources(*resources, change, ResourceBlocks::IptcAndExif, plan.notes);
    if (!changed)
        return tl::unexpected(changed.error());
    plan.addRange(0, at);
    plan.add(sectionLength(changed->size()));
    plan.add(*changed);
    plan.addRange(end, (change.dropsEverything ? endOfPsdImage(reader, end) : reader.size()) - end);
    return plan;
}

} // namespace clipheave::platform
