// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/write/write_offsets.h"

#include <QByteArray>

#include <optional>

namespace clipheave::platform {

/// Where the samples of a track lie: offsets into other files do not refer to this one.
enum class SampleHome { ThisFile, OtherFiles, Both };
[[nodiscard]] SampleHome sampleHome(ByteView trak);

/// The metadata boxes that go into the movie header; empty ones are left out.
struct MovieMetadata {
    QByteArray udta; ///< whole box
    QByteArray meta; ///< whole box
};

/// Rebuilds a movie header: its children byte for byte, except the metadata at movie level (when
/// `metadata` is given) and the absolute offsets. Source: ISO/IEC 14496-12 section 8.2.
class MovieHeaderBuilder {
public:
    /// `payload` is that of the source's `moov` and must outlive the builder.
    MovieHeaderBuilder(ByteView payload, std::optional<MovieMetadata> metadata);

    /// NotSupported for a compressed header, InvalidData when its boxes do not add up.
    [[nodiscard]] Result<void> check() const;
    /// The whole box. Where nothing moves the tracks stay as they are, unless rewriteTracks().
    /// With LimitExceeded call again after widen(): some offset has left the 32 bits.
    [[nodiscard]] Result<QByteArray> build(const OffsetMap& map) const;
    /// From now on the tracks are always rewritten, so that the size no longer depends on the
    /// map.
    void rewriteTracks() { m_rewrite = true; }
    /// From now on offsets are written in 64 bits.
    void widen() { m_wide = m_rewrite = true; }
    [[nodiscard]] bool isWide() const { return m_wide; }

private:
    struct Pass; ///< one build
    ByteView m_payload;
    std::optional<MovieMetadata> m_metadata;
    bool m_wide = false, m_rewrite = false;
};

} // namespace clipheave::platform
