// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>
#include <QString>

namespace clipheave::platform {

/// Bytes up to the first NUL; UTF-8 when they are valid UTF-8, else Latin-1; blanks at the end
/// dropped, which cameras pad with.
[[nodiscard]] inline QString textFromTagBytes(QByteArrayView bytes) {
    const qsizetype end = bytes.indexOf('\0');
    const QByteArrayView view = end < 0 ? bytes : bytes.first(end);
    QString text = view.isValidUtf8() ? QString::fromUtf8(view) : QString::fromLatin1(view);
    while (text.endsWith(u' '))
        text.chop(1);
    return text;
}

} // namespace clipheave::platform
