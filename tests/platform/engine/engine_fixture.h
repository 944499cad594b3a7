// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_engine.h"
#include "tests/testkit/media.h"

namespace clipheave::platform {

/// The engine, and a folder for the videos that another program makes for it.
class EngineTest : public testing::Test {
protected:
    void SetUp() override {
        SKIP_WITHOUT("ffmpeg");
        const auto loaded = mediaEngine();
        ASSERT_TRUE(loaded) << loaded.error().text();
        m_engine = *loaded;
    }

    testkit::TempDir m_dir;
    MediaEngine* m_engine = nullptr;
};

} // namespace clipheave::platform
