// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"
#include "platform/media/model/media_engine.h"

#include <QByteArrayList>

#include <array>
#include <climits>
#include <dlfcn.h>
#include <unistd.h>

namespace clipheave::platform {

namespace {

/// Folder of the running program, empty when the system does not tell it.
QByteArray programFolder() {
    std::array<char, PATH_MAX> buffer{};
    const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length <= 0)
        return {};
    const QByteArray path(buffer.data(), length);
    return path.left(path.lastIndexOf('/'));
}

/// Beside the program (the build does that, tests included), then where it is installed.
QByteArrayList moduleCandidates() {
    QByteArrayList folders;
    if (const QByteArray own = programFolder(); !own.isEmpty())
        folders << own << own + "/../lib/clipheave";
    for (QByteArray& folder : folders)
        folder += QByteArray("/") + kMediaEngineModule;
    return folders;
}

Result<MediaEngine*> loadEngine() {
    QByteArray reason = "no folder to look in";
    for (const QByteArray& path : moduleCandidates()) {
        if (access(path.constData(), F_OK) != 0) {
            reason = path + ": no such file";
            continue;
        }
        // Never closed: the libraries behind it register what cannot be taken back.
        void* module = dlopen(path.constData(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        void* symbol = module != nullptr ? dlsym(module, kMediaEngineSymbol) : nullptr;
        if (symbol == nullptr) {
            const char* text = dlerror();
            reason = text != nullptr ? text : "unknown loader failure";
            continue;
        }
        // POSIX: an object pointer of dlsym may be converted to a function pointer.
        const auto entry = reinterpret_cast<MediaEngineEntry>(symbol);
        if (MediaEngine* engine = entry())
            return engine;
        reason = path + ": the entry point gave nothing";
    }
    const QString text = pathFromNative(reason);
    log(LogLevel::Error, QStringLiteral("load the media engine: ") + text);
    return failure(ErrorCode::NotSupported, QStringLiteral("load the media engine"), {}, text);
}

} // namespace

Result<MediaEngine*> mediaEngine() {
    static const Result<MediaEngine*> engine = loadEngine();
    return engine;
}

} // namespace clipheave::platform
