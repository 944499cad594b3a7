// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/box.h"
#include "platform/isobmff/write/write_offsets.h"

#include <QByteArray>

#include <vector>

// What stands where in the source and in the target of a pass-through.
namespace clipheave::platform {

/// A `moov` beyond this is refused; the sample tables of a day of video take about a tenth.
inline constexpr std::uint64_t kMaxMoovSize = 256u << 20;
/// Offset-bearing boxes beyond this are refused when they would have to be patched.
inline constexpr std::uint64_t kMaxPatchedBox = 64u << 20;
/// File systems share blocks between files at this granularity.
inline constexpr std::uint64_t kCloneBlock = 4096;

/// The source open, its top level known and its movie header in memory.
struct SourceFile {
    FileReader reader;
    std::vector<Box> boxes; ///< top level, in file order
    std::size_t moovIndex = 0;
    std::uint64_t tail = 0; ///< where the boxes end; bytes from here are carried as they are
    QByteArray moov;        ///< payload
    QByteArray ftyp;        ///< payload, empty when there is none
};
/// NotFound and the like; InvalidData without a `moov`, Truncated when it is cut, LimitExceeded.
[[nodiscard]] Result<SourceFile> openSourceFile(const QString& path);

/// The XMP packet at file level as a whole box; empty when there is none, or none of a sane size.
[[nodiscard]] QByteArray readXmpPacket(SourceFile& source);

/// Bytes of the source that stay together.
struct SourceRun {
    std::uint64_t begin = 0, end = 0;
    bool cut = false; ///< ends with a box that announces more than the file has
    bool afterMoov = false;
};
/// How much of the file's top level a target gets.
enum class Keep {
    All,
    AllButDescriptions, ///< no XMP packet and no padding, where old texts hide
    WhatPlays,          ///< only the kinds of boxes that playing needs, nothing behind the last one
};
/// The kept runs in file order: `ftyp`, every `moov` and zero-filled padding beside them never.
[[nodiscard]] std::vector<SourceRun> keptRuns(SourceFile& source, Keep keep);

/// One stretch of the target.
struct TargetPart {
    enum class Kind { Ftyp, Moov, Padding, Run };
    Kind kind = Kind::Run;
    std::uint64_t size = 0; ///< bytes
    std::size_t run = 0;    ///< which one, of Kind::Run
};
struct TargetLayout {
    std::vector<TargetPart> parts;
    OffsetMap map;
    std::uint64_t size = 0;
};
/// Places the runs. The movie header stays on its side of the payload unless `moovFirst`. Runs stay
/// where they were when there is room before them; long ones at least keep their place within a
/// block, so that the file system can share them.
[[nodiscard]] TargetLayout planLayout(const std::vector<SourceRun>& runs, std::uint64_t ftypSize,
                                      std::uint64_t moovSize, bool moovFirst);

} // namespace clipheave::platform
