// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/cm_time.h"
#include "platform/media/model/cv_pixel_buffer.h"

#include <memory>

namespace clipheave::platform {

/// A frame and when it is shown. Copies share the frame.
struct CMSampleBuffer {
    std::shared_ptr<CVPixelBuffer> imageBuffer;
    CMTime presentationTimeStamp{0, 0};
    CMTime duration{0, 0}; ///< invalid: until the next frame
};

[[nodiscard]] inline const std::shared_ptr<CVPixelBuffer>&
CMSampleBufferGetImageBuffer(const CMSampleBuffer& sample) {
    return sample.imageBuffer;
}
[[nodiscard]] inline CMTime CMSampleBufferGetPresentationTimeStamp(const CMSampleBuffer& sample) {
    return sample.presentationTimeStamp;
}
[[nodiscard]] inline CMTime CMSampleBufferGetDuration(const CMSampleBuffer& sample) {
    return sample.duration;
}

} // namespace clipheave::platform
