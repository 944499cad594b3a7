// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/tone_mapper.h"

#include <QSize>

#include <cstdint>
#include <optional>
#include <vector>

namespace clipheave::platform {

enum class Scaling {
    Fine,       ///< bicubic, halved colours interpolated: for images
    Reversible, ///< bicubic, halved colours repeated: an encoder that halves them again loses none
    Fast,       ///< area averages: for thumbnails
};

/// Draws decoded frames at one size, not rotated, in the colours of a common screen.
class FramePainter {
public:
    /// The scaler writes whole vectors: rows are a multiple of this long, and behind the last one
    /// there is as much room again.
    static constexpr int kRowAlignment = 64;

    /// `stream` is borrowed and gives the tags that frames lack; null: none.
    FramePainter(const AVCodecParameters* stream, QSize size, int threads,
                 Scaling scaling = Scaling::Reversible);
    [[nodiscard]] QSize size() const { return m_size; }
    /// Draws opaque pixels of four bytes, 0xffRRGGBB in the machine's order, into rows of `stride`
    /// bytes. Returns false for a pixel format that is not known.
    [[nodiscard]] bool paint(const AVFrame& frame, std::uint8_t* to, int stride);

private:
    [[nodiscard]] bool prepare(const AVFrame& frame);
    [[nodiscard]] bool scale(const AVFrame& frame, std::uint8_t* to, int stride);
    [[nodiscard]] bool paintWide(const AVFrame& frame, std::uint8_t* to, int stride);
    void makeOpaque(std::uint8_t* to, int stride) const;

    /// What a scaler was made for.
    struct Kind {
        int width = 0, height = 0, format = -1;
        Colours colours;
        bool isWide = false;
        bool operator==(const Kind&) const = default;
    };
    const AVCodecParameters* m_stream;
    QSize m_size;
    int m_threads;
    Scaling m_scaling;
    Kind m_kind;
    Scaler m_scaler;
    std::optional<ToneMapper> m_tones;
    std::vector<std::uint8_t> m_wide; ///< 16 bits a component, before the tones are mapped
};

} // namespace clipheave::platform
