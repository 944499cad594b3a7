// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"
#include "platform/image/exiv2.h"
#include "platform/image/messages.h"

#include <memory>
#include <new>
#include <type_traits>

// How Exiv2 is called. Only for the .cpp files that include Exiv2.
namespace clipheave::platform {

/// Silences the library and lets its XMP part, which keeps state of the whole process, be used by
/// several threads. To be called before anything else of it; any thread.
void initializeExiv2();
/// Opens a photo of any type that the library knows, but for HEIF; nothing is read yet. Throws what
/// the library throws, also for what is no photo: it reads videos too, where hostile files keep it
/// busy for ever, and sidecars.
[[nodiscard]] std::unique_ptr<Exiv2::Image> openExiv2Image(const FileReader& reader);
/// Returns what an exception of the library says: NotSupported for an unknown type, else
/// InvalidData.
[[nodiscard]] Error exiv2Error(const Exiv2::Error& error, MessageCode operation,
                               const QString& path);

/// Runs `work`; what it throws becomes a failure. The only place where exceptions of the library
/// end.
template <class Work>
auto withExiv2(MessageCode operation, const QString& path, const Work& work)
    -> Result<std::invoke_result_t<Work>> {
    try {
        initializeExiv2();
        return work();
    } catch (const Exiv2::Error& error) {
        return tl::unexpected(exiv2Error(error, operation, path));
    } catch (const std::bad_alloc&) {
        return failure(ErrorCode::LimitExceeded, operation, path, kTagsNeedTooMuchMemory);
    } catch (const std::exception& error) {
        return failure(ErrorCode::InvalidData, operation, path, QString::fromUtf8(error.what()));
    }
}

} // namespace clipheave::platform
