// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/asset/media_engine_loader.h"

#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"
#include "platform/media/messages.h"

#include <QByteArrayList>

#include <array>
#include <climits>
#include <dlfcn.h>
#include <unistd.h>

namespace clipheave::platform {

namespace {

/// Returns the folder of the running program; empty when the system does not give it.
QByteArray programFolder() {
    std::array<char, PATH_MAX> buffer{};
    const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length <= 0)
        return {};
    const QByteArray path(buffer.data(), length);
    return path.left(path.lastIndexOf('/'));
}

/// Returns where the module may be: beside the program (as the build puts it), then where it is
/// installed.
QByteArrayList moduleCandidates() {
    QByteArrayList folders;
    if (const QByteArray own = programFolder(); !own.isEmpty())
        folders << own << own + "/../lib/clipheave";
    for (QByteArray& folder : folders)
        folder += QByteArray("/") + kMediaEngineModule;
    return folders;
}

tl::unexpected<Error> notLoaded(const Message& reason) {
    return failure(ErrorCode::NotSupported, kLoadMediaEngine, {}, reason);
}

Result<MediaEngine*> loadEngine() {
    auto engine = findMediaEngine().and_then([](MediaEngineEntry entry) {
        return startMediaEngine(entry); //
    });
    if (!engine)
        log(LogLevel::Error, engine.error().text());
    return engine;
}

void logOfModule(const LogLine& line) {
    log(line.level, line.text, line.path);
}

QString textOfModule(const Message& message) {
    return message.text();
}

} // namespace

Result<MediaEngineEntry> findMediaEngine() {
    Message reason = kNoModuleFolder;
    for (const QByteArray& path : moduleCandidates()) {
        if (access(path.constData(), F_OK) != 0) {
            // A module that cannot be loaded says more than a missing one; of missing ones, the
            // first place is the usual one.
            if (reason == Message(kNoModuleFolder))
                reason = {kNoSuchModule, {pathFromNative(path)}};
            continue;
        }
        // Never closed: the libraries that it loads cannot be unloaded safely.
        void* module = dlopen(path.constData(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        void* symbol = module != nullptr ? dlsym(module, kMediaEngineSymbol) : nullptr;
        // POSIX: an object pointer of dlsym may be converted to a function pointer.
        if (symbol != nullptr)
            return reinterpret_cast<MediaEngineEntry>(symbol);
        const char* text = dlerror();
        reason = text != nullptr ? Message(kModuleNotLoadable, {pathFromNative(text)})
                                 : Message(kUnknownLoaderFailure);
    }
    return notLoaded(reason);
}

Result<MediaEngine*> startMediaEngine(MediaEngineEntry entry, int abi) {
    const MediaEngineHost host{abi, &logOfModule, &textOfModule};
    int moduleAbi = 0;
    MediaEngine* engine = entry(host, moduleAbi);
    if (engine != nullptr && moduleAbi == abi)
        return engine;
    return notLoaded({kOtherEngineAbi, {QString::number(moduleAbi), QString::number(abi)}});
}

Result<MediaEngine*> mediaEngine() {
    static const Result<MediaEngine*> engine = loadEngine();
    return engine;
}

} // namespace clipheave::platform
