// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/convert/tone_mapper.h"

extern "C" {
#include <libavutil/mastering_display_metadata.h>
}

#include <algorithm>
#include <cmath>

namespace clipheave::platform {

namespace {

constexpr double kDiffuseWhiteNits = 203;
constexpr double kUsualPeakNits = 1000;
/// Light up to here, 1 being diffuse white, keeps its value.
constexpr double kKnee = 0.5;
constexpr int kValues = 4096; ///< steps of a component that are distinguished
constexpr int kRollOffSteps = 8192;
constexpr int kCodedSteps = 16384;

/// Returns the cd/m2 of a value of 0 to 1 by SMPTE ST 2084.
double pqNits(double value) {
    constexpr double m1 = 2610.0 / 16384, m2 = 2523.0 / 32, c1 = 3424.0 / 4096, c2 = 2413.0 / 128,
                     c3 = 2392.0 / 128;
    const double power = std::pow(value, 1 / m2);
    return 10000 * std::pow(std::max(power - c1, 0.0) / (c2 - c3 * power), 1 / m1);
}

/// Returns the scene light (0 to 1) of an HLG value by ITU-R BT.2100.
double hlgSceneLight(double value) {
    constexpr double a = 0.17883277, b = 0.28466892, c = 0.55991073;
    return value <= 0.5 ? value * value / 3 : (std::exp((value - c) / a) + b) / 12;
}

double fromSrgb(double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double toSrgb(double light) {
    return light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

std::array<float, 9> matrixFrom(AVColorPrimaries primaries) {
    switch (primaries) {
    case AVCOL_PRI_BT2020:
        return {1.6605F,  -0.5876F, -0.0728F, -0.1246F, 1.1329F,
                -0.0083F, -0.0182F, -0.1006F, 1.1187F};
    case AVCOL_PRI_SMPTE432:
        return {1.2249F, -0.2249F, 0, -0.0421F, 1.0421F, 0, -0.0196F, -0.0786F, 1.0983F};
    default:
        return {1, 0, 0, 0, 1, 0, 0, 0, 1};
    }
}

double peakOf(const AVFrame& frame) {
    double nits = 0;
    if (const auto* data = av_frame_get_side_data(&frame, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL);
        data != nullptr && data->size >= sizeof(AVContentLightMetadata))
        nits = reinterpret_cast<const AVContentLightMetadata*>(data->data)->MaxCLL;
    if (const auto* data = av_frame_get_side_data(&frame, AV_FRAME_DATA_MASTERING_DISPLAY_METADATA);
        nits <= 0 && data != nullptr && data->size >= sizeof(AVMasteringDisplayMetadata)) {
        const auto* display = reinterpret_cast<const AVMasteringDisplayMetadata*>(data->data);
        if (display->has_luminance != 0)
            nits = seconds(display->max_luminance);
    }
    return nits;
}

} // namespace

bool ToneKind::needsMapping() const {
    return isHdr(transfer) || primaries == AVCOL_PRI_BT2020 || primaries == AVCOL_PRI_SMPTE432;
}

ToneKind toneKindOf(const AVFrame& frame, const Colours& colours) {
    ToneKind kind{colours.transfer, colours.primaries, 0};
    if (isHdr(kind.transfer) && kind.primaries == AVCOL_PRI_UNSPECIFIED)
        kind.primaries = AVCOL_PRI_BT2020;
    if (kind.transfer == AVCOL_TRC_SMPTE2084) {
        const double nits = peakOf(frame);
        kind.peakNits = nits > 0 ? std::clamp(nits, kDiffuseWhiteNits, 10000.0) : kUsualPeakNits;
    }
    return kind;
}

ToneMapper::ToneMapper(const ToneKind& kind)
    : m_kind(kind), m_matrix(matrixFrom(kind.primaries)),
      m_isHlg(kind.transfer == AVCOL_TRC_ARIB_STD_B67) {
    const bool isPq = kind.transfer == AVCOL_TRC_SMPTE2084;
    const double peakNits = isPq ? kind.peakNits : kUsualPeakNits;
    m_peak = isPq || m_isHlg ? static_cast<float>(peakNits / kDiffuseWhiteNits) : 1.0F;
    m_linear.resize(kValues);
    for (int i = 0; i < kValues; ++i) {
        const double value = static_cast<double>(i) / (kValues - 1);
        const double light = isPq      ? pqNits(value) / kDiffuseWhiteNits
                             : m_isHlg ? hlgSceneLight(value)
                                       : fromSrgb(value);
        m_linear[static_cast<std::size_t>(i)] = static_cast<float>(light);
    }
    m_rollOff.resize(kRollOffSteps);
    const double widest = (m_peak - kKnee) / (1 - kKnee);
    for (int i = 0; i < kRollOffSteps; ++i) {
        const double light = i * static_cast<double>(m_peak) / (kRollOffSteps - 1);
        const double over = (light - kKnee) / (1 - kKnee);
        const double shown = over * (1 + over / (widest * widest)) / (1 + over);
        m_rollOff[static_cast<std::size_t>(i)] =
            light <= kKnee || m_peak <= 1
                ? 1.0F
                : static_cast<float>((kKnee + (1 - kKnee) * shown) / light);
    }
    m_coded.resize(kCodedSteps);
    for (int i = 0; i < kCodedSteps; ++i)
        m_coded[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(
            std::lround(255 * toSrgb(static_cast<double>(i) / (kCodedSteps - 1))));
}

void ToneMapper::map(const std::uint16_t* from, std::uint32_t* to, int count) const {
    const auto coded = [this](float light) {
        const float step = std::clamp(light, 0.0F, 1.0F) * (kCodedSteps - 1) + 0.5F;
        return static_cast<std::uint32_t>(m_coded[static_cast<std::size_t>(step)]);
    };
    const float perLight = (kRollOffSteps - 1) / m_peak;
    for (const std::uint16_t* end = from + 3 * count; from != end; from += 3) {
        float r = m_linear[from[0] >> 4], g = m_linear[from[1] >> 4], b = m_linear[from[2] >> 4];
        float factor = 1;
        if (m_isHlg) // the OOTF of BT.2100 for a peak of 1000 cd/m2
            factor = m_peak * std::pow(0.2627F * r + 0.678F * g + 0.0593F * b, 0.2F);
        const float brightest = std::min(std::max({r, g, b}) * factor, m_peak);
        factor *= m_rollOff[static_cast<std::size_t>(brightest * perLight)];
        r *= factor;
        g *= factor;
        b *= factor;
        const auto& m = m_matrix;
        *to++ = 0xFF000000U | coded(m[0] * r + m[1] * g + m[2] * b) << 16 |
                coded(m[3] * r + m[4] * g + m[5] * b) << 8 | coded(m[6] * r + m[7] * g + m[8] * b);
    }
}

} // namespace clipheave::platform
