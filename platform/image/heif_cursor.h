// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/byte_view.h"

#include <cstdint>

namespace clipheave::platform {

/// Reads numbers one after the other; after a read past the end everything is nothing.
class HeifCursor {
public:
    explicit HeifCursor(ByteView bytes) : m_bytes(bytes) {}

    /// A big-endian number of 0 to 8 bytes; a width of 0 gives 0.
    std::uint64_t number(unsigned width) {
        if (!m_bytes.has(m_at, width)) {
            m_good = false;
            return 0;
        }
        std::uint64_t value = 0;
        for (unsigned i = 0; i < width; ++i)
            value = value << 8 | *m_bytes.u8(m_at++);
        return value;
    }
    std::uint32_t u32(unsigned width) { return static_cast<std::uint32_t>(number(width)); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
    /// Returns what follows.
    [[nodiscard]] ByteView rest() const { return m_bytes.sub(m_at); }
    [[nodiscard]] bool good() const { return m_good; }

private:
    ByteView m_bytes;
    std::uint64_t m_at = 0;
    bool m_good = true;
};

/// What a full box begins with.
struct HeifBoxHead {
    unsigned version = 0, flags = 0;
};
inline HeifBoxHead readHeifBoxHead(HeifCursor& cursor) {
    const std::uint32_t word = cursor.u32(4);
    return {word >> 24, word & 0xFFFFFF};
}

} // namespace clipheave::platform
