// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/paths.h"

#include "tests/testkit/testkit.h"

#include <QRandomGenerator>

using namespace clipheave::platform;

TEST(Paths, EveryByteStringSurvivesTheWayThroughText) {
    // Overlong forms, surrogates and beginnings of characters among them.
    const QByteArray awkward =
        " plain gr%C3%BC%C3%9F %F0%9F%8E%AC %FF%FE caf%E9 %80 %C0%AF %E0%80%AF %F0%80%80%AF "
        "%ED%A0%80 "
        "%ED%B0%80 %ED%A0%80%ED%B0%80 %ED%B2%80 %F4%90%80%80 %F5%80%80%80 %E2%82 %F0%9F%8E "
        "%F0%9F%8E%FF %EF%BF%BD %EF%BF%BF %EF%BB%BFbom";
    for (const QByteArray& encoded : awkward.split(' ')) {
        const QByteArray bytes = QByteArray::fromPercentEncoding(encoded);
        EXPECT_EQ(nativePath(pathFromNative(bytes)), bytes) << encoded;
    }

    QRandomGenerator random(1);
    for (int round = 0; round < 20'000; ++round) {
        QByteArray bytes;
        for (quint32 length = random.bounded(1u, 8u); length > 0; --length) {
            // Mostly the bytes at the borders of the encoding.
            static const QByteArray borders(
                "\x7F\x80\x8F\x90\x9F\xA0\xBF\xC1\xC2\xDF\xE0\xED\xEE\xEF\xF0\xF4\xF5\xB2", 18);
            bytes += borders[random.bounded(int(borders.size()))];
        }
        ASSERT_EQ(nativePath(pathFromNative(bytes)), bytes) << bytes.toHex();
    }
}

TEST(Paths, OnlyBytesThatAreNoUtf8AreEscaped) {
    EXPECT_EQ(pathFromNative("a\xE9/\xC3\xA9"), u"a\xDCE9/\u00E9"_s);
    EXPECT_EQ(pathFromNative("\xED\xB2\x80"), u"\xDCED\xDCB2\xDC80"_s);
    EXPECT_EQ(pathFromNative("\xF0\x9F\x8E\xAC"), u"\U0001F3AC");
    // U+1F4A9 has the low surrogate U+DCA9: a pair is no escaped byte.
    EXPECT_EQ(nativePath(u"\U0001F4A9"_s), "\xF0\x9F\x92\xA9");
    EXPECT_EQ(displayPath(u"caf\xDCE9 \U0001F4A9"_s), u"caf\uFFFD \U0001F4A9");
}

TEST(Paths, PartsOfNames) {
    struct Row {
        const char16_t *path, *extension, *without, *last, *folder;
    };
    const Row rows[] = {{u"a.tar.gz", u"gz", u"a.tar", u"a.tar.gz", u""},
                        {u".hidden", u"", u".hidden", u".hidden", u""},
                        {u"dir.x/file", u"", u"dir.x/file", u"file", u"dir.x"},
                        {u"x..tiff", u"tiff", u"x.", u"x..tiff", u""},
                        {u"a.", u"", u"a", u"a.", u""},
                        {u"dir/", u"", u"dir", u"dir", u""},
                        {u"/", u"", u"/", u"/", u"/"},
                        {u"..", u"", u"..", u"..", u""},
                        {u"", u"", u"", u"", u""},
                        {u"/b", u"", u"/b", u"b", u"/"},
                        {u"/d//b.c//", u"c", u"/d/b", u"b.c", u"/d"},
                        {u"/d/.b.c", u"c", u"/d/.b", u".b.c", u"/d"}};
    for (const Row& row : rows) {
        const QString path = QStringView(row.path).toString();
        EXPECT_EQ(pathExtension(path), QStringView(row.extension).toString()) << path;
        EXPECT_EQ(deletingPathExtension(path), QStringView(row.without).toString()) << path;
        EXPECT_EQ(lastPathComponent(path), QStringView(row.last).toString()) << path;
        EXPECT_EQ(deletingLastPathComponent(path), QStringView(row.folder).toString()) << path;
    }
    EXPECT_EQ(appendingPathComponent(u"a//", u"/b"), u"a/b");
    EXPECT_EQ(appendingPathComponent(u"/", u"b"), u"/b");
    EXPECT_EQ(appendingPathComponent(u"", u"b"), u"b");
}
