// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/plist/property_list.h"

#include <cstddef>
#include <cstdint>

using namespace clipheave::platform;

namespace {

/// Returns the list as it is written; what was written must read back.
QByteArray rewritten(const QByteArray& bytes, bool isOurs) {
    const auto list = propertyListWithData(bytes);
    if (!list && isOurs)
        __builtin_trap();
    const auto written = list ? dataWithPropertyList(*list).value_or(QByteArray()) : QByteArray();
    return static_cast<std::uint64_t>(written.size()) > kMostPropertyListBytes ? QByteArray()
                                                                               : written;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(static_cast<const char*>(static_cast<const void*>(data)),
                           static_cast<qsizetype>(size));
    const QByteArray first = rewritten(bytes, false);
    if (first.isEmpty())
        return 0;
    // Keys that lose characters may change their order, but once.
    const QByteArray second = rewritten(first, true);
    if (rewritten(second, true) != second)
        __builtin_trap();
    return 0;
}
