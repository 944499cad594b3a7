// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/byte_view.h"

#include <optional>

namespace clipheave::platform {

/// Header or footer of an APE tag of version 1000 or 2000 ("APE Tags Header" of the APEv2
/// format): the items stand between the two, version 1000 has the footer alone.
struct ApeTagEdge {
    static constexpr std::uint64_t kSize = 32;

    std::uint32_t tagSize = 0; ///< of items and footer, without the header
    std::uint32_t itemCount = 0;
    bool hasHeader = false;
    bool isHeader = false;
};
[[nodiscard]] std::optional<ApeTagEdge> parseApeTagEdge(ByteView bytes);

/// What stands in front of the value of an item ("APE Tag Item").
struct ApeItemHeader {
    static constexpr std::uint64_t kLargest = 8 + 256; ///< longest key that the format allows

    std::uint32_t valueSize = 0;
    bool isText = false;
    QByteArray key;

    /// Offset of the value from the start of the item.
    [[nodiscard]] std::uint64_t size() const {
        return 8 + static_cast<std::uint64_t>(key.size()) + 1;
    }
};
/// Nothing when the key is empty or has no end in `bytes`.
[[nodiscard]] std::optional<ApeItemHeader> parseApeItemHeader(ByteView bytes);

} // namespace clipheave::platform
