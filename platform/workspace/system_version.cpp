// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/workspace/system_version.h"

#include "platform/workspace/messages.h"

#include <QStringList>
#include <QSysInfo>

namespace clipheave::platform {

Result<SystemVersion> parseSystemVersion(const QString& text) {
    const QStringList parts = text.split(QLatin1Char('.'));
    SystemVersion version;
    std::uint32_t* const numbers[] = {&version.major, &version.minor, &version.bugFix};
    for (qsizetype i = 0; i < 3 && i < parts.size(); ++i) {
        bool ok = false;
        *numbers[i] = parts[i].toUInt(&ok);
        if (!ok && i == 0)
            return failure(ErrorCode::InvalidData, kReadSystemVersion, {}, text);
    }
    return version;
}

Result<SystemVersion> systemVersion() {
    return parseSystemVersion(QSysInfo::productVersion());
}

SystemVersion decodePackedVersion(std::uint32_t packed) {
    const auto nibble = [packed](int shift) { return (packed >> shift) & 0xF; };
    return {nibble(12) * 10 + nibble(8), nibble(4), nibble(0)};
}

} // namespace clipheave::platform
