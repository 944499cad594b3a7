// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/io/container_codecs.h"

#include "platform/engine/messages.h"

namespace clipheave::platform {

namespace {

MessageCode cannotHoldIn(const AVOutputFormat& format) {
    const QByteArray name(format.name);
    if (name == "mov")
        return kMovCannotHold;
    if (name == "mp4")
        return kMp4CannotHold;
    return name == "ipod" ? kM4aCannotHold : kContainerCannotHold;
}

/// Without these properties the codec is not why a stream is refused.
bool isDescribed(const AVCodecParameters& codec) {
    if (codec.codec_type == AVMEDIA_TYPE_VIDEO)
        return codec.width > 0 && codec.height > 0;
    return codec.codec_type != AVMEDIA_TYPE_AUDIO ||
           (codec.sample_rate > 0 && codec.ch_layout.nb_channels > 0);
}

/// Returns whether a file with nothing but this stream can be begun.
bool canBegin(const AVFormatContext& output, const AVStream& stream) {
    AVFormatContext* context = nullptr;
    if (avformat_alloc_output_context2(&context, output.oformat, nullptr, nullptr) < 0)
        return true;
    const OutputFormat trial(context);
    trial->strict_std_compliance = output.strict_std_compliance;
    AVStream* copy = avformat_new_stream(context, nullptr);
    if (copy == nullptr || copyParameters(copy->codecpar, stream.codecpar) < 0 ||
        avio_open_dyn_buf(&context->pb) < 0)
        return true;
    copy->time_base = stream.time_base;
    const bool begun = avformat_write_header(context, nullptr) >= 0;
    std::uint8_t* bytes = nullptr;
    avio_close_dyn_buf(context->pb, &bytes);
    context->pb = nullptr;
    av_free(bytes);
    return begun;
}

} // namespace

QString codecName(AVCodecID codec) {
    const QString name = QString::fromLatin1(avcodec_get_name(codec)).toUpper().replace(u'_', u' ');
    return name.startsWith(u"PCM ") ? QStringLiteral("PCM") : name;
}

QString streamText(const AVCodecParameters& stream) {
    const char* type = av_get_media_type_string(stream.codec_type);
    return QString::fromLatin1(type != nullptr ? type : "unknown") + QStringLiteral(" (") +
           QString::fromLatin1(avcodec_get_name(stream.codec_id)) + u')';
}

Message noDecoder(const AVCodecParameters& stream) {
    const bool video = stream.codec_type == AVMEDIA_TYPE_VIDEO;
    if (stream.codec_id == AV_CODEC_ID_NONE)
        return video ? kUnknownVideoCodec : kUnknownAudioCodec;
    return {video ? kNoVideoDecoder : kNoAudioDecoder, {codecName(stream.codec_id)}};
}

bool holdsCodec(const AVOutputFormat& format, AVCodecID codec, int compliance) {
    // Cameras and editors write it into QuickTime movies, under the name that it has elsewhere.
    const QByteArray name(format.name);
    if (codec == AV_CODEC_ID_CFHD && name == "mov")
        return true;
    // Deliberate: MP4 has had boxes for PCM since 2018 only, which most players do not know.
    if (name == "mp4" && QByteArray(avcodec_get_name(codec)).startsWith("pcm_"))
        return false;
    return avformat_query_codec(&format, codec, compliance) == 1;
}

std::uint32_t codecTag(const AVOutputFormat& format, const AVCodecParameters& stream) {
    unsigned other = 0;
    const bool kept = av_codec_get_id(format.codec_tag, stream.codec_tag) == stream.codec_id ||
                      av_codec_get_tag2(format.codec_tag, stream.codec_id, &other) == 0;
    // Deliberate: QuickTime plays H.265 under this code only.
    if (stream.codec_id == AV_CODEC_ID_HEVC)
        return MKTAG('h', 'v', 'c', '1');
    return kept ? stream.codec_tag : 0;
}

tl::unexpected<Error> cannotHold(MessageCode operation, const AVFormatContext& output,
                                 const QStringList& codecs) {
    return failure(ErrorCode::NotSupported, operation, {},
                   {cannotHoldIn(*output.oformat), {codecs.join(QStringLiteral(", "))}});
}

QStringList refusedCodecs(const AVFormatContext& output) {
    QStringList refused;
    for (unsigned i = 0; i < output.nb_streams; ++i) {
        const AVStream& stream = *output.streams[i];
        if (isDescribed(*stream.codecpar) && !canBegin(output, stream))
            refused << codecName(stream.codecpar->codec_id);
    }
    return refused;
}

} // namespace clipheave::platform
