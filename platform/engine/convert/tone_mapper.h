// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/colours.h"

#include <array>
#include <vector>

namespace clipheave::platform {

/// How bright and how colourful the light is that a frame's values stand for.
struct ToneKind {
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    double peakNits = 0; ///< brightest light of a PQ video, cd/m2
    bool operator==(const ToneKind&) const = default;
    /// Returns false when the values suit a common screen as they are.
    [[nodiscard]] bool needsMapping() const;
};
[[nodiscard]] ToneKind toneKindOf(const AVFrame& frame, const Colours& colours);

/// Maps wide gamuts and HDR (PQ and HLG, ITU-R BT.2100) to sRGB: diffuse white (203 cd/m2, ITU-R
/// BT.2408) stays bright, what is brighter rolls off without clipping.
class ToneMapper {
public:
    explicit ToneMapper(const ToneKind& kind);
    [[nodiscard]] const ToneKind& kind() const { return m_kind; }
    /// Maps `count` pixels of three 16-bit values each to 0xffRRGGBB.
    void map(const std::uint16_t* from, std::uint32_t* to, int count) const;

private:
    ToneKind m_kind;
    std::vector<float> m_linear;       ///< light of a value, 1 being diffuse white
    std::vector<float> m_rollOff;      ///< factor for the light of the brightest component
    std::vector<std::uint8_t> m_coded; ///< sRGB value of a light up to 1
    std::array<float, 9> m_matrix{};   ///< to the primaries of BT.709
    float m_peak = 1;
    bool m_isHlg = false;
};

} // namespace clipheave::platform
