// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <mpv/client.h>
#include <mpv/render.h>

namespace clipheave::platform {

/// The functions of the player's library that are used here, found at run time. Their types are
/// those of its headers. Deliberate: none of them waits for the running player. It may be waiting
/// for the main thread to draw an image, and then each call would hold up both for 200 ms.
struct MpvLibrary {
    decltype(&mpv_client_api_version) clientApiVersion = nullptr;
    decltype(&mpv_create) create = nullptr;
    decltype(&mpv_initialize) initialize = nullptr;
    decltype(&mpv_terminate_destroy) terminateDestroy = nullptr;
    decltype(&mpv_set_option_string) setOptionString = nullptr;
    decltype(&mpv_set_property_async) setPropertyAsync = nullptr;
    decltype(&mpv_get_property_async) getPropertyAsync = nullptr;
    decltype(&mpv_observe_property) observeProperty = nullptr;
    decltype(&mpv_command_async) commandAsync = nullptr;
    decltype(&mpv_error_string) errorString = nullptr;
    decltype(&mpv_wait_event) waitEvent = nullptr;
    decltype(&mpv_set_wakeup_callback) setWakeupCallback = nullptr;
    decltype(&mpv_render_context_create) renderContextCreate = nullptr;
    decltype(&mpv_render_context_set_update_callback) renderContextSetUpdateCallback = nullptr;
    decltype(&mpv_render_context_update) renderContextUpdate = nullptr;
    decltype(&mpv_render_context_render) renderContextRender = nullptr;
    decltype(&mpv_render_context_free) renderContextFree = nullptr;
};

/// Loads the library on the first call (some 90 ms); later calls return the same. Null when it is
/// missing or its interface is of another major version, which is logged once. Any thread.
[[nodiscard]] const MpvLibrary* mpvLibrary();

} // namespace clipheave::platform
