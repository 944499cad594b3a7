// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/encode/audio_encoding.h"

#include "platform/engine/messages.h"

#include <algorithm>
#include <cstdlib>

namespace clipheave::platform {

namespace {

constexpr int kShortSampleBits = 16;
constexpr int kLosslessBits = 24; ///< the most that the ALAC encoder takes
constexpr const char* kAac = "aac";
constexpr const char* kAlac = "alac";

Result<const AVCodec*> findAudioEncoder(const char* name) {
    if (const AVCodec* codec = avcodec_find_encoder_by_name(name))
        return codec;
    return failure(ErrorCode::NotSupported, kEncodeAudio, {},
                   {kNoEncoder, {QString::fromLatin1(name)}});
}

int nearestSampleRate(const AVCodec& codec, int wanted) {
    const auto rates = sampleRatesOf(codec);
    int best = rates.empty() ? wanted : rates.front();
    for (const int rate : rates)
        if (std::abs(rate - wanted) < std::abs(best - wanted))
            best = rate;
    return best;
}

/// Deliberate: only the layouts that AAC has numbers for; players do not know the others.
ChannelLayout aacLayout(int channels) {
    constexpr std::uint64_t kMasks[] = {AV_CH_LAYOUT_MONO,         AV_CH_LAYOUT_STEREO,
                                        AV_CH_LAYOUT_SURROUND,     AV_CH_LAYOUT_4POINT0,
                                        AV_CH_LAYOUT_5POINT0_BACK, AV_CH_LAYOUT_5POINT1_BACK,
                                        AV_CH_LAYOUT_5POINT1_BACK, AV_CH_LAYOUT_7POINT1};
    AVChannelLayout layout{};
    av_channel_layout_from_mask(&layout, kMasks[std::clamp(channels, 1, 8) - 1]);
    return ChannelLayout(layout);
}

/// Returns the source's layout, or one that the encoder has with as many channels: they keep their
/// order.
Result<ChannelLayout> sameChannels(const AVCodec& codec, const AVChannelLayout& wanted) {
    const AVChannelLayout* found = nullptr;
    const auto layouts = channelLayoutsOf(codec);
    for (const AVChannelLayout& layout : layouts) {
        if (av_channel_layout_compare(&layout, &wanted) == 0)
            return ChannelLayout(layout);
        if (layout.nb_channels == wanted.nb_channels && found == nullptr)
            found = &layout;
    }
    if (found != nullptr)
        return ChannelLayout(*found);
    if (!layouts.empty())
        return failure(ErrorCode::NotSupported, kEncodeAudio, {},
                       {kTooManyChannels, {QString::number(wanted.nb_channels)}});
    if (wanted.order != AV_CHANNEL_ORDER_UNSPEC)
        return ChannelLayout(wanted);
    AVChannelLayout usual{};
    av_channel_layout_default(&usual, wanted.nb_channels);
    return ChannelLayout(usual);
}

struct SampleDepth {
    bool isFloat;
    int bits;
};

SampleDepth depthOf(const AVCodecContext& decoder) {
    const AVSampleFormat packed = av_get_packed_sample_fmt(decoder.sample_fmt);
    const bool isFloat = packed == AV_SAMPLE_FMT_FLT || packed == AV_SAMPLE_FMT_DBL;
    const int raw = decoder.bits_per_raw_sample;
    return {isFloat, raw > 0 && !isFloat ? raw : av_get_bytes_per_sample(packed) * 8};
}

} // namespace

Result<AudioEncoding> aacEncoding(const AVCodecParameters& source, int channels,
                                  std::int64_t bitRate) {
    constexpr std::int64_t kHighestBitRate = 2'000'000;
    const auto codec = findAudioEncoder(kAac);
    if (!codec)
        return tl::unexpected(codec.error());
    const int all = source.ch_layout.nb_channels;
    AudioEncoding encoding;
    encoding.encoder = kAac;
    encoding.format = {AV_SAMPLE_FMT_FLTP, nearestSampleRate(**codec, source.sample_rate),
                       aacLayout(channels > 0 ? std::min(channels, all) : all)};
    encoding.bitRate = std::min(bitRate, kHighestBitRate);
    return encoding;
}

Result<AudioEncoding> unmixedAacEncoding(const AVCodecContext& decoder, std::int64_t bitRate) {
    const auto codec = findAudioEncoder(kAac);
    if (!codec)
        return tl::unexpected(codec.error());
    const auto layout = sameChannels(**codec, decoder.ch_layout);
    if (!layout)
        return tl::unexpected(layout.error());
    AudioEncoding encoding;
    encoding.encoder = kAac;
    encoding.format = {AV_SAMPLE_FMT_FLTP, nearestSampleRate(**codec, decoder.sample_rate),
                       *layout};
    encoding.bitRate = bitRate;
    return encoding;
}

Result<AudioEncoding> alacEncoding(const AVCodecContext& decoder) {
    const auto codec = findAudioEncoder(kAlac);
    if (!codec)
        return tl::unexpected(codec.error());
    const auto layout = sameChannels(**codec, decoder.ch_layout);
    if (!layout)
        return tl::unexpected(layout.error());
    const bool isShort = depthOf(decoder).bits <= kShortSampleBits;
    AudioEncoding encoding;
    encoding.encoder = kAlac;
    encoding.format = {isShort ? AV_SAMPLE_FMT_S16P : AV_SAMPLE_FMT_S32P, decoder.sample_rate,
                       *layout};
    encoding.bitsPerRawSample = isShort ? kShortSampleBits : kLosslessBits;
    return encoding;
}

bool isFinerThanAlac(const AVCodecContext& decoder) {
    const SampleDepth depth = depthOf(decoder);
    return depth.isFloat || depth.bits > kLosslessBits;
}

} // namespace clipheave::platform
