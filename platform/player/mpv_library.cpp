// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/player/mpv_library.h"

#include "platform/foundation/log.h"

#include <QString>

#include <dlfcn.h>

namespace clipheave::platform {

namespace {

constexpr unsigned kApiGenerationShift = 16; // the upper half of a version breaks compatibility
constexpr auto kLibraryName = "libmpv.so.2";

template <typename Function>
bool findFunction(void* library, const char* name, Function& function) {
    // POSIX: an object pointer of dlsym may be converted to a function pointer.
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

bool findFunctions(void* library, MpvLibrary& found) {
    return findFunction(library, "mpv_client_api_version", found.clientApiVersion) &&
           findFunction(library, "mpv_create", found.create) &&
           findFunction(library, "mpv_initialize", found.initialize) &&
           findFunction(library, "mpv_terminate_destroy", found.terminateDestroy) &&
           findFunction(library, "mpv_set_option_string", found.setOptionString) &&
           findFunction(library, "mpv_set_property_async", found.setPropertyAsync) &&
           findFunction(library, "mpv_get_property_async", found.getPropertyAsync) &&
           findFunction(library, "mpv_observe_property", found.observeProperty) &&
           findFunction(library, "mpv_command_async", found.commandAsync) &&
           findFunction(library, "mpv_error_string", found.errorString) &&
           findFunction(library, "mpv_wait_event", found.waitEvent) &&
           findFunction(library, "mpv_set_wakeup_callback", found.setWakeupCallback) &&
           findFunction(library, "mpv_render_context_create", found.renderContextCreate) &&
           findFunction(library, "mpv_render_context_set_update_callback",
                        found.renderContextSetUpdateCallback) &&
           findFunction(library, "mpv_render_context_update", found.renderContextUpdate) &&
           findFunction(library, "mpv_render_context_render", found.renderContextRender) &&
           findFunction(library, "mpv_render_context_free", found.renderContextFree);
}

const MpvLibrary* loadMpvLibrary() {
    // Never closed: the libraries that it loads cannot be unloaded safely.
    void* library = dlopen(kLibraryName, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    static MpvLibrary found;
    if (library == nullptr || !findFunctions(library, found)) {
        const char* text = dlerror();
        log(LogLevel::Error, QStringLiteral("load the player: ") +
                                 QString::fromUtf8(text != nullptr ? text : "unknown failure"));
        return nullptr;
    }
    if (found.clientApiVersion() >> kApiGenerationShift !=
        MPV_CLIENT_API_VERSION >> kApiGenerationShift) {
        log(LogLevel::Error,
            QStringLiteral("load the player: its interface is of another major version"));
        return nullptr;
    }
    return &found;
}

} // namespace

const MpvLibrary* mpvLibrary() {
    static const MpvLibrary* const library = loadMpvLibrary();
    return library;
}

} // namespace clipheave::platform
