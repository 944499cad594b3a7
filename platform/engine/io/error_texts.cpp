// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/io/error_texts.h"

namespace clipheave::platform {

namespace {

QString containerText(const AVOutputFormat& format) {
    const QByteArray name(format.name);
    if (name == "mov")
        return QStringLiteral("QuickTime movies");
    if (name == "mp4")
        return QStringLiteral("MP4 files");
    if (name == "ipod")
        return QStringLiteral("M4A and M4V files");
    return QStringLiteral("files of this kind");
}

/// Without that it is no question of the codec.
bool tellsItsShape(const AVCodecParameters& codec) {
    if (codec.codec_type == AVMEDIA_TYPE_VIDEO)
        return codec.width > 0 && codec.height > 0;
    return codec.codec_type != AVMEDIA_TYPE_AUDIO ||
           (codec.sample_rate > 0 && codec.ch_layout.nb_channels > 0);
}

/// Whether a file with nothing but this stream can be begun.
bool canBegin(const AVFormatContext& output, const AVStream& stream) {
    AVFormatContext* context = nullptr;
    if (avformat_alloc_output_context2(&context, output.oformat, nullptr, nullptr) < 0)
        return true;
    const OutputFormat trial(context);
    trial->strict_std_compliance = output.strict_std_compliance;
    AVStream* copy = avformat_new_stream(context, nullptr);
    if (copy == nullptr || avcodec_parameters_copy(copy->codecpar, stream.codecpar) < 0 ||
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

QString ffmpegText(int code) {
    switch (code) {
    case AVERROR_INVALIDDATA:
        return QStringLiteral("the data is damaged or of an unknown kind");
    case AVERROR_PATCHWELCOME:
    case AVERROR_DECODER_NOT_FOUND:
    case AVERROR_ENCODER_NOT_FOUND:
    case AVERROR_DEMUXER_NOT_FOUND:
    case AVERROR_BSF_NOT_FOUND:
        return QStringLiteral("this kind of data is not supported");
    case AVERROR_EOF:
        return QStringLiteral("it ends too early");
    case AVERROR_EXIT:
        return QStringLiteral("it was stopped");
    case AVERROR_BUG:
    case AVERROR_BUG2:
    case AVERROR_EXTERNAL:
    case AVERROR_UNKNOWN:
        return QStringLiteral("it cannot be processed");
    case AVERROR(EINVAL):
        return QStringLiteral("its properties are missing or wrong");
    default:
        break;
    }
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text); // those of the system
    return QString::fromUtf8(text);
}

QString codecText(AVCodecID codec) {
    if (codec == AV_CODEC_ID_NONE)
        return QStringLiteral("an unknown coding");
    const QString name = QString::fromLatin1(avcodec_get_name(codec)).toUpper().replace(u'_', u' ');
    return name.startsWith(u"PCM ") ? QStringLiteral("PCM") : name;
}

bool holdsCodec(const AVOutputFormat& format, AVCodecID codec, int compliance) {
    // Cameras and editors write it into QuickTime movies, under the name that it has elsewhere.
    if (codec == AV_CODEC_ID_CFHD && QByteArray(format.name) == "mov")
        return true;
    return avformat_query_codec(&format, codec, compliance) == 1;
}

tl::unexpected<Error> cannotHold(const char* operation, const AVFormatContext& output,
                                 const QStringList& codecs) {
    return failure(ErrorCode::NotSupported, QString::fromLatin1(operation), {},
                   containerText(*output.oformat) + QStringLiteral(" cannot hold ") +
                       codecs.join(QStringLiteral(", ")));
}

QStringList refusedCodecs(const AVFormatContext& output) {
    QStringList refused;
    for (unsigned i = 0; i < output.nb_streams; ++i) {
        const AVStream& stream = *output.streams[i];
        if (tellsItsShape(*stream.codecpar) && !canBegin(output, stream))
            refused << codecText(stream.codecpar->codec_id);
    }
    return refused;
}

} // namespace clipheave::platform
