// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/paths.h"

#include <algorithm>

namespace clipheave::platform {
namespace {

constexpr char16_t kEscapeBase = 0xDC00;
constexpr QChar kPathSlash = u'/';

/// Length of the well-formed UTF-8 sequence at the start, 0 when there is none (Unicode table 3-7:
/// no overlong forms, no surrogates, nothing above U+10FFFF).
qsizetype utf8SequenceLength(QByteArrayView bytes) {
    const auto at = [bytes](qsizetype i) {
        return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0u;
    };
    const auto continues = [&](qsizetype i) { return (at(i) & 0xC0u) == 0x80u; };
    const unsigned first = at(0);
    if (first < 0x80)
        return 1;
    if (first < 0xC2 || first > 0xF4 || !continues(1))
        return 0;
    if (first < 0xE0)
        return 2;
    const unsigned second = at(1);
    if (first < 0xF0) {
        const bool bad = (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F);
        return !bad && continues(2) ? 3 : 0;
    }
    const bool bad = (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
    return !bad && continues(2) && continues(3) ? 4 : 0;
}

/// QString::fromUtf8 drops a byte order mark at the start; in a name it is a character like others.
void appendUtf8(QString& text, QByteArrayView bytes) {
    constexpr QByteArrayView kMark = "\xEF\xBB\xBF";
    for (; bytes.startsWith(kMark); bytes = bytes.sliced(kMark.size()))
        text += QChar(QChar::ByteOrderMark);
    text += QString::fromUtf8(bytes);
}

bool isEscapedByte(QChar c) {
    return c.unicode() >= kEscapeBase + 0x80 && c.unicode() <= kEscapeBase + 0xFF;
}

/// Index of the first escaped byte at or after `from`, or the size. A low surrogate that belongs to
/// a pair is a part of an ordinary character.
qsizetype findEscapedByte(const QString& path, qsizetype from) {
    for (qsizetype i = from; i < path.size(); ++i) {
        if (isEscapedByte(path[i]) && (i == 0 || !path[i - 1].isHighSurrogate()))
            return i;
    }
    return path.size();
}

QStringView withoutTrailingSlashes(QStringView path) {
    while (path.size() > 1 && path.endsWith(kPathSlash))
        path.chop(1);
    return path;
}

QStringView lastComponentOf(QStringView path) {
    path = withoutTrailingSlashes(path);
    return path.size() == 1 ? path : path.sliced(path.lastIndexOf(kPathSlash) + 1);
}

/// Position of the dot that separates name and extension, -1 when there is none.
qsizetype extensionDot(QStringView name) {
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot > 0 && name != QLatin1String("..") ? dot : -1;
}

QString collapsedSlashes(QStringView path) {
    QString text;
    text.reserve(path.size());
    for (const QChar c : path) {
        if (c != kPathSlash || !text.endsWith(kPathSlash))
            text += c;
    }
    return text;
}

} // namespace

QByteArray nativePath(const QString& path) {
    qsizetype escaped = findEscapedByte(path, 0);
    if (escaped == path.size())
        return path.toUtf8();
    QByteArray bytes;
    for (qsizetype start = 0;;) {
        bytes += QStringView(path).sliced(start, escaped - start).toUtf8();
        if (escaped == path.size())
            return bytes;
        bytes += static_cast<char>(path[escaped].unicode() - kEscapeBase);
        start = escaped + 1;
        escaped = findEscapedByte(path, start);
    }
}

QString pathFromNative(QByteArrayView bytes) {
    QString text;
    if (bytes.isValidUtf8()) {
        appendUtf8(text, bytes);
        return text;
    }
    text.reserve(bytes.size());
    for (qsizetype i = 0; i < bytes.size();) {
        const qsizetype length = utf8SequenceLength(bytes.sliced(i));
        if (length > 0)
            appendUtf8(text, bytes.sliced(i, length));
        else
            text += QChar(static_cast<char16_t>(kEscapeBase + static_cast<uchar>(bytes[i])));
        i += std::max<qsizetype>(length, 1);
    }
    return text;
}

QString displayPath(const QString& path) {
    qsizetype escaped = findEscapedByte(path, 0);
    if (escaped == path.size())
        return path;
    QString text = path;
    while (escaped < path.size()) {
        text[escaped] = QChar::ReplacementCharacter;
        escaped = findEscapedByte(path, escaped + 1);
    }
    return text;
}

QString pathExtension(QStringView path) {
    const QStringView name = lastComponentOf(path);
    const qsizetype dot = extensionDot(name);
    return dot < 0 ? QString() : name.sliced(dot + 1).toString();
}

QString deletingPathExtension(QStringView path) {
    const QStringView whole = withoutTrailingSlashes(path);
    const QStringView name = lastComponentOf(whole);
    const qsizetype dot = extensionDot(name);
    return collapsedSlashes(dot < 0 ? whole : whole.chopped(name.size() - dot));
}

QString lastPathComponent(QStringView path) {
    return lastComponentOf(path).toString();
}

QString deletingLastPathComponent(QStringView path) {
    path = withoutTrailingSlashes(path);
    const qsizetype slash = path.lastIndexOf(kPathSlash);
    if (slash < 0)
        return {};
    return withoutTrailingSlashes(path.first(std::max<qsizetype>(slash, 1))).toString();
}

QString containingFolder(const QString& path) {
    const QString folder = deletingLastPathComponent(path);
    return folder.isEmpty() ? QStringLiteral(".") : folder;
}

QString appendingPathComponent(QStringView path, QStringView component) {
    path = withoutTrailingSlashes(path);
    while (component.startsWith(kPathSlash))
        component = component.sliced(1);
    if (path.isEmpty() || component.isEmpty())
        return path.isEmpty() ? component.toString() : path.toString();
    QString joined;
    joined.reserve(path.size() + 1 + component.size());
    joined += path;
    if (!path.endsWith(kPathSlash))
        joined += kPathSlash;
    joined += component;
    return joined;
}

QString numberedName(const QString& path, int number) {
    constexpr qsizetype kLongestName = 255; // bytes
    const QString extension = pathExtension(path);
    QString ending = u' ' + QString::number(number);
    if (!extension.isEmpty())
        ending += u'.' + extension;
    QString base = deletingPathExtension(path);
    const qsizetype room = kLongestName - nativePath(ending).size();
    while (nativePath(lastPathComponent(base)).size() > room && lastPathComponent(base).size() > 1)
        base.chop(base.size() > 1 && base.back().isLowSurrogate() &&
                          base[base.size() - 2].isHighSurrogate()
                      ? 2
                      : 1);
    return base + ending;
}

} // namespace clipheave::platform
