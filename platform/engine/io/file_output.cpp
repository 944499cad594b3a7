// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/io/file_output.h"

#include "platform/engine/messages.h"
#include "platform/foundation/paths.h"

#include <unistd.h>

namespace clipheave::platform {

tl::unexpected<Error> FileOutput::failed(MessageCode operation, int code) const {
    ErrorCode kind = ErrorCode::Io;
    if (code == AVERROR(ENOSPC) || code == AVERROR(EDQUOT))
        kind = ErrorCode::NoSpace;
    else if (code == AVERROR(EACCES) || code == AVERROR(EPERM))
        kind = ErrorCode::AccessDenied;
    else if (code == AVERROR(ENOENT))
        kind = ErrorCode::NotFound;
    else if (code == AVERROR(EINVAL) || code == AVERROR_INVALIDDATA)
        kind = ErrorCode::InvalidData;
    return failure(kind, operation, m_target, ffmpegReason(code));
}

Result<std::unique_ptr<FileOutput>> FileOutput::create(const char* container,
                                                       const QString& target) {
    std::unique_ptr<FileOutput> output(new FileOutput);
    output->m_target = target;
    // The prefix keeps names with a colon from being taken for another protocol.
    const QByteArray url = "file:" + nativePath(target);
    AVFormatContext* context = nullptr;
    if (avformat_alloc_output_context2(&context, nullptr, container, url.constData()) < 0)
        return failure(ErrorCode::NotSupported, kCreateMediaFile, target,
                       {kNoMuxer, {QString::fromLatin1(container)}});
    output->m_context.reset(context);
    // Repeatable output: no dates, no version texts.
    context->flags |= AVFMT_FLAG_BITEXACT;
    const int opened =
        avio_open2(&context->pb, url.constData(), AVIO_FLAG_READ_WRITE, nullptr, nullptr);
    if (opened < 0)
        return output->failed(kCreateMediaFile, opened);
    output->m_native = nativePath(target);
    return output;
}

FileOutput::~FileOutput() {
    if (m_context && m_context->pb != nullptr)
        avio_closep(&m_context->pb);
    if (!m_finished && !m_native.isEmpty())
        unlink(m_native.constData());
}

Result<void> FileOutput::writeHeader(Dictionary& options) {
    const int code = avformat_write_header(m_context.get(), &options.entries);
    if (code < 0)
        return failed(kBeginMediaFile, code);
    return {};
}

Result<void> FileOutput::finish() {
    int code = av_write_trailer(m_context.get());
    const int closed = avio_closep(&m_context->pb);
    if (code >= 0)
        code = closed;
    if (code < 0)
        return failed(kCompleteMediaFile, code);
    m_finished = true;
    return {};
}

} // namespace clipheave::platform
