// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/error_text.h"

namespace clipheave::platform {

QString textBeside(const Error& error, const QString& shownPath) {
    if (error.path != shownPath)
        return error.text();
    Error shown = error;
    shown.path.clear();
    return shown.text();
}

} // namespace clipheave::platform
