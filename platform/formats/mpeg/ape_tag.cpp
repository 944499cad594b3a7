// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/mpeg/ape_tag.h"

namespace clipheave::platform {

std::optional<ApeTagEdge> parseApeTagEdge(ByteView bytes) {
    if (!bytes.startsWith("APETAGEX") || bytes.size() < ApeTagEdge::kSize)
        return std::nullopt;
    const std::uint32_t flags = *bytes.le32(20);
    return ApeTagEdge{*bytes.le32(12), *bytes.le32(16), (flags & 0x80000000) != 0,
                      (flags & 0x20000000) != 0};
}

std::optional<ApeItemHeader> parseApeItemHeader(ByteView bytes) {
    const auto flags = bytes.le32(4);
    const QByteArrayView key = bytes.sub(8).bytes();
    const qsizetype keyLength = key.indexOf('\0');
    if (!flags || keyLength < 1)
        return std::nullopt;
    return ApeItemHeader{*bytes.le32(0), (*flags >> 1 & 3) == 0,
                         key.first(keyLength).toByteArray()};
}

} // namespace clipheave::platform
