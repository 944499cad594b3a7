// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/log.h"
#include "platform/media/asset/media_engine_loader.h"
#include "platform/media/messages.h"
#include "tests/testkit/testkit.h"

namespace clipheave::platform {

namespace {

/// A module of the next version, which trusts the program.
MediaEngine* newerModule(const MediaEngineHost&, int& abi) {
    abi = kMediaEngineAbi + 1;
    static char memory[64] = {};
    return reinterpret_cast<MediaEngine*>(memory);
}

} // namespace

TEST(EngineModule, LogsToTheListenersOfTheProgram) {
    const auto entry = findMediaEngine();
    ASSERT_TRUE(entry) << entry.error().text();
    QStringList lines;
    const LogSubscription listening(LogLevel::Trace,
                                    [&](const LogLine& line) { lines << line.text; });
    ASSERT_TRUE(startMediaEngine(*entry));
    EXPECT_EQ(lines.filter(u"libavcodec"_s).size(), 1);
}

TEST(EngineModule, OfAnotherAbiIsRefused) {
    const auto entry = findMediaEngine();
    ASSERT_TRUE(entry) << entry.error().text();
    const struct {
        MediaEngineEntry entry;
        int module, program;
    } cases[] = {{*entry, kMediaEngineAbi, kMediaEngineAbi + 7},
                 {&newerModule, kMediaEngineAbi + 1, kMediaEngineAbi}};
    for (const auto& [other, module, program] : cases) {
        const auto refused = startMediaEngine(other, program);
        ASSERT_FALSE(refused);
        EXPECT_EQ(refused.error().code, ErrorCode::NotSupported);
        EXPECT_EQ(refused.error().detail.code(), kOtherEngineAbi);
        EXPECT_EQ(refused.error().detail.arguments(),
                  (QStringList{QString::number(module), QString::number(program)}));
    }
}

} // namespace clipheave::platform
