// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/compressed_header.h"

#include "platform/isobmff/box.h"
#include "platform/isobmff/messages.h"

#include <zlib.h>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kCmovSizeField = 4;

/// Returns exactly `size` bytes; what would give more is damage.
Result<QByteArray> inflated(ByteView deflated, std::uint64_t size) {
    QByteArray bytes(static_cast<qsizetype>(size), Qt::Uninitialized);
    auto* out = static_cast<Bytef*>(static_cast<void*>(bytes.data()));
    auto length = static_cast<uLongf>(size);
    const int code = uncompress(out, &length, deflated.data(), static_cast<uLong>(deflated.size()));
    if (code != Z_OK || length != size)
        return failure(ErrorCode::InvalidData, kReadMovieHeader, {}, kMovieHeaderDamaged);
    return bytes;
}

} // namespace

Result<QByteArray> inflatedMovieHeader(ByteView cmov) {
    const ByteView method = findPayload(cmov, {fourCc("dcom")});
    const ByteView data = findPayload(cmov, {fourCc("cmvd")});
    if (method.be32(0) != fourCc("zlib"))
        return failure(ErrorCode::NotSupported, kReadMovieHeader, {}, kMovieHeaderCompressed);
    const std::uint64_t size = data.be32(0).value_or(0);
    if (size > kMaxInflatedHeader || data.size() > kMaxInflatedHeader)
        return failure(ErrorCode::LimitExceeded, kReadMovieHeader, {}, kMovieHeaderTooLarge);
    auto bytes = inflated(data.sub(kCmovSizeField), size);
    if (!bytes)
        return bytes;
    const auto box = parseBoxHeader(ByteView(*bytes), 0, size);
    if (!box || box->type != fourCc("moov") || box->cut)
        return failure(ErrorCode::InvalidData, kReadMovieHeader, {}, kMovieHeaderDamaged);
    return bytes;
}

} // namespace clipheave::platform
