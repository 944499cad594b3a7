// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace clipheave::platform {

/// The frames that are written, with the library's numbers for them.
enum ID3_WrittenFrame : int {
    ID3FID_COMMENT_ = 4,
    ID3FID_ALBUM_ = 29,
    ID3FID_COMPOSER_ = 31,
    ID3FID_COPYRIGHT_ = 33,
    ID3FID_LYRICIST_ = 43,
    ID3FID_TITLE_ = 47,
    ID3FID_SUBTITLE_ = 48,
    ID3FID_LEADARTIST_ = 61,
    ID3FID_BAND_ = 62,
    ID3FID_PUBLISHER_ = 67,
    ID3FID_TRACKNUM_ = 68,
    ID3FID_RECORDINGDATES_ = 69,
    ID3FID_YEAR_ = 80,
};

struct Id3TextFrame {
    ID3_WrittenFrame frame;
    QString text; ///< may be empty: a blank frame
};

/// A tag of these frames in this order as the ID3 library renders it: version 2.3, texts in UTF-16,
/// no unsynchronisation, no padding. `image` becomes a front cover without type and description;
/// empty: none. No frame at all gives no bytes. LimitExceeded over 256 MiB, the format's own limit.
[[nodiscard]] Result<QByteArray> renderId3Tag(const QList<Id3TextFrame>& frames,
                                              const QByteArray& image);

} // namespace clipheave::platform
