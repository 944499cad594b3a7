// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

// Paths are QString. Linux names are bytes: a byte that is not UTF-8 is in the text as the lone
// low surrogate U+DC00 + byte (the "surrogateescape" form), so that every name survives the way
// through the program and back. Only these two functions convert.
namespace clipheave::platform {

[[nodiscard]] QByteArray nativePath(const QString& path);
[[nodiscard]] QString pathFromNative(QByteArrayView bytes);
/// For people: each escaped byte becomes U+FFFD.
[[nodiscard]] QString displayPath(const QString& path);

/// Text after the last dot of the last component, without the dot. Empty for ".hidden", "a.", "..".
[[nodiscard]] QString pathExtension(QStringView path);
/// The path without ".ext"; unchanged when there is no extension ("a." gives "a").
[[nodiscard]] QString deletingPathExtension(QStringView path);
/// "dir/" gives "dir", "/" gives "/", "" gives "".
[[nodiscard]] QString lastPathComponent(QStringView path);
/// "a/b" gives "a", "b" gives "", "/b" gives "/", a trailing slash is dropped first.
[[nodiscard]] QString deletingLastPathComponent(QStringView path);
/// The same, but "." where that gives nothing: a folder that can be opened.
[[nodiscard]] QString containingFolder(const QString& path);
/// Exactly one slash between the two; repeated slashes of `path`'s end are collapsed.
[[nodiscard]] QString appendingPathComponent(QStringView path, QStringView component);
/// "dir/B.E" and 2 give "dir/B 2.E". The base loses characters at its end where the name would be
/// longer than file systems allow (255 bytes).
[[nodiscard]] QString numberedName(const QString& path, int number);

} // namespace clipheave::platform
