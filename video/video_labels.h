// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

// What the title of the menu entry that started a job stands for.
namespace clipheave::video {

/// Degrees clockwise; none for another title.
[[nodiscard]] std::optional<int> rotationOfTitle(const QString& title);
/// Factor of the speed; 1 for another title. Deliberate: slowing down knows no factor over 1 and
/// leaves the speed alone for "2X" and more.
[[nodiscard]] double speedUpFactor(const QString& title);
[[nodiscard]] double slowDownFactor(const QString& title);
/// Name of the export preset. Deliberate: another title gives a name that no export knows, so that
/// job fails in sight instead of choosing a quality for the user.
[[nodiscard]] QString compressPreset(const QString& title);
/// "mp4" for another title.
[[nodiscard]] QString convertExtension(const QString& title);
/// Seconds between the frames; 1 for another title.
[[nodiscard]] double extractInterval(const QString& title);

/// Output file type by the extension of `path`, whatever its case: "mp4", "mpeg", "m4v", "mov".
/// Null for all others: the export then fails.
[[nodiscard]] QString outputFileTypeOfPath(const QString& path);

} // namespace clipheave::video
