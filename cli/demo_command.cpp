// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/commands.h"
#include "cli/demo_library.h"
#include "cli/json_writer.h"
#include "platform/foundation/paths.h"

namespace clipheave::cli {

int runDemo(const GlobalOptions& global, const QString& folder, Console& console) {
    QStringList paths;
    const auto count = writeDemoLibrary(folder, [&](const QString& path) {
        paths.append(path);
        console.progress(QStringLiteral("written"), static_cast<int>(paths.size()), 0);
    });
    console.clearProgress();
    QByteArray out;
    JsonWriter json;
    json.beginArray();
    for (const QString& path : paths) {
        out += platform::nativePath(path) + '\n';
        json.string(path);
    }
    json.endArray();
    const bool written = printOut(global.json ? json.take() : out);
    if (!count) {
        printError(count.error().text());
        return kSomeFailed;
    }
    return written ? kAllDone : kSomeFailed;
}

} // namespace clipheave::cli
