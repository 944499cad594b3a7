// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <exiv2/exiv2.hpp>

#include <cstddef>
#include <cstdint>

// What differs between releases 0.27 and 0.28 of Exiv2. Only for the .cpp files that include Exiv2.
namespace clipheave::platform {

/// Returns one number of a tag's value as a whole number. Throws what the library throws.
[[nodiscard]] inline std::int64_t integerAt(const Exiv2::Exifdatum& datum, long index) {
#if EXIV2_TEST_VERSION(0, 28, 0)
    return datum.toInt64(static_cast<std::size_t>(index));
#else
    return datum.toLong(index);
#endif
}

/// Returns a copy of the bytes.
[[nodiscard]] inline QByteArray bytesOf(const Exiv2::DataBuf& buffer) {
#if EXIV2_TEST_VERSION(0, 28, 0)
    const void* bytes = buffer.c_data();
    const auto size = static_cast<qsizetype>(buffer.size());
#else
    const void* bytes = buffer.pData_;
    const auto size = static_cast<qsizetype>(buffer.size_);
#endif
    return {static_cast<const char*>(bytes), size};
}

/// Returns the colour profile of an image that has been read, empty if it has none.
[[nodiscard]] inline QByteArray iccProfileOf(Exiv2::Image& image) {
#if EXIV2_TEST_VERSION(0, 28, 0)
    return bytesOf(image.iccProfile());
#else
    const Exiv2::DataBuf* profile = image.iccProfile();
    return profile != nullptr ? bytesOf(*profile) : QByteArray();
#endif
}

} // namespace clipheave::platform
