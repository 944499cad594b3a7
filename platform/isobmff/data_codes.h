// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace clipheave::platform {

/// What the value of a `data` box is: the "well-known data types" of QuickTime's file format.
struct DataCode {
    enum Value : std::uint32_t {
        Untyped = 0, ///< also "reserved"
        Utf8 = 1,
        Utf16 = 2,
        Utf8Sort = 4,
        Utf16Sort = 5,
        Gif = 12,
        Jpeg = 13,
        Png = 14,
        SignedInteger = 21,
        UnsignedInteger = 22,
        Float32 = 23,
        Float64 = 24,
        Bmp = 27,
        Int8 = 65,
        Int16 = 66,
        Int32 = 67,
        PointF32 = 70,
        DimensionsF32 = 71,
        RectF32 = 72,
        Int64 = 74,
        Uint8 = 75,
        Uint16 = 76,
        Uint32 = 77,
        Uint64 = 78,
        Json = 82,
    };
};

} // namespace clipheave::platform
