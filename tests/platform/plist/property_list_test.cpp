// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/plist/messages.h"
#include "platform/plist/property_list.h"
#include "tests/testkit/media.h"

#include <QDateTime>
#include <QStringEncoder>
#include <QTimeZone>

#include <limits>

namespace clipheave::platform {

namespace {

using testkit::be;

/// Runs a script of Python, whose module plistlib this project did not write.
QByteArray python(const QByteArray& script, const QStringList& arguments) {
    const auto result = testkit::run(u"/usr/bin/python3"_s,
                                     QStringList{u"-c"_s, QString::fromUtf8(script)} + arguments);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    return result.out.trimmed();
}

QVariantMap everyKind() {
    return {{u"text"_s, u"Grüße <&> 𝄞"_s},
            {u"empty"_s, QString()},
            {u"number"_s, -5LL},
            {u"large"_s, std::numeric_limits<qlonglong>::max()},
            {u"real"_s, 1.0 / 60},
            {u"small"_s, -1.25e-9},
            {u"truth"_s, true},
            {u"date"_s, QDateTime(QDate(2019, 5, 4), QTime(10, 11, 12), QTimeZone::utc())},
            {u"data"_s, QByteArray("\0\1\xFF", 3)},
            {u"list"_s, QVariantList{1LL, u"b"_s, QVariantList(), QVariantMap()}},
            {u"{Exif}"_s, QVariantMap{{u"key with blanks"_s, false}}}};
}
constexpr char kEveryKind[] =
    "{'data': b'\\x00\\x01\\xff', 'date': datetime.datetime(2019, 5, 4, 10, 11, 12), 'empty': '', "
    "'large': 9223372036854775807, 'list': [1, 'b', [], {}], 'number': -5, 'real': "
    "0.016666666666666666, 'small': -1.25e-09, 'text': 'Grüße <&> 𝄞', 'truth': True, '{Exif}': "
    "{'key with blanks': False}}";

/// A binary list of these objects, the first of which is its root.
QByteArray binaryList(const QByteArrayList& objects, int referenceBytes = 1) {
    QByteArray bytes = "bplist00", offsets;
    for (const QByteArray& object : objects) {
        offsets += be(static_cast<quint64>(bytes.size()), 4);
        bytes += object;
    }
    const auto table = static_cast<quint64>(bytes.size());
    return bytes + offsets + QByteArray(6, 0) + be(4, 1) +
           be(static_cast<quint64>(referenceBytes), 1) +
           be(static_cast<quint64>(objects.size()), 8) + be(0, 8) + be(table, 8);
}
/// Arrays of which each holds the next one `copies` times; the innermost is empty.
QByteArray nestedBinary(int levels, int copies = 1) {
    QByteArrayList objects;
    for (int level = 1; level < levels; ++level)
        objects += be(0xA0u + static_cast<unsigned>(copies), 1) +
                   be(static_cast<quint64>(level), 4).repeated(copies);
    return binaryList(objects << QByteArray("\xA0"), 4);
}
QByteArray nestedXml(int levels) {
    return "<plist>" + QByteArray("<array>").repeated(levels) +
           QByteArray("</array>").repeated(levels) + "</plist>";
}

Message refusalOf(const QByteArray& bytes) {
    const auto list = propertyListWithData(bytes);
    return list ? Message() : list.error().detail;
}

} // namespace

TEST(PropertyList, GoesToPythonAndBackInBothForms) {
    const testkit::TempDir dir;
    const QString path = dir.path("a.plist");
    const auto written = writeToFile_atomically(everyKind(), path);
    ASSERT_TRUE(written) << written.error().text();
    EXPECT_EQ(python("import plistlib, sys; print(plistlib.load(open(sys.argv[1], 'rb')))", {path}),
              kEveryKind);
    for (const char* format : {"FMT_XML", "FMT_BINARY"}) {
        python("import datetime, plistlib, sys\nplistlib.dump(" + QByteArray(kEveryKind) +
                   ", open(sys.argv[1], 'wb'), fmt=plistlib." + format + ")",
               {path});
        const auto list = propertyListWithContentsOfFile(path);
        ASSERT_TRUE(list) << list.error().text();
        EXPECT_EQ(list->toMap(), everyKind()) << format;
    }
    EXPECT_EQ(dir.files(), QStringList{u"a.plist"_s});
}

TEST(PropertyList, WritesTextsThatXmlCannotHold) {
    const auto xml = dataWithPropertyList(
        QVariantMap{{u"a\u0001b"_s, u"x\u0000y\uFFFE\tz"_s}, {u"gone"_s, {}}, {QString(), 1}});
    ASSERT_TRUE(xml) << xml.error().text();
    EXPECT_EQ(propertyListWithData(*xml).value(), (QVariantMap{{u"ab"_s, u"xy\tz"_s}}));
}

TEST(PropertyList, ReadsTextsInTheirEncoding) {
    const QString xml = u"<?xml version=\"1.0\"?>\n<plist><string>é</string></plist>"_s;
    for (const auto encoding :
         {QStringConverter::Utf8, QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
        QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
        EXPECT_EQ(propertyListWithData(encoder(xml)).value(), QVariant(u"é"_s));
    }
}

TEST(PropertyList, LibraryNeverSeesWhatItCannotBear) {
    constexpr int kFits = kMostPropertyListLevels;
    EXPECT_EQ(refusalOf(nestedXml(kFits)), Message());
    EXPECT_EQ(refusalOf(nestedBinary(kFits)), Message());
    const QByteArray itself = binaryList({"\xA1\1", "\xD1\2" + QByteArray(1, 0), "\x51k"});
    const Message tooDeep(kPropertyListTooDeep, {QString::number(kFits)});
    const struct {
        QByteArray bytes;
        Message reason;
    } cases[] = {
        {nestedXml(kFits + 1), tooDeep},
        {nestedXml(500'000), tooDeep},
        {"<plist>" + QByteArray("<x>").repeated(100'000), tooDeep},
        {"<plist><!-- </array> -->" + QByteArray("<array><!-- </array> -->").repeated(100),
         tooDeep},
        {"<!DOCTYPE plist [<!--]>--><!ENTITY a \"<array>\">]><plist><array/></plist>",
         kPropertyListDeclares},
        {nestedBinary(kFits + 1), tooDeep},
        {nestedBinary(100'000), tooDeep},
        {nestedBinary(kFits, 2), kPropertyListTooLarge}, // 2^63 copies of the innermost
        {itself.left(8) +
             QByteArray(itself.mid(8)).replace(QByteArray("\2\0", 2), QByteArray("\2\1", 2)),
         kPropertyListHoldsItself},
        {binaryList({"\xA1\5"}), kNoPropertyList},
        {binaryList({"\xAF\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}), kNoPropertyList},
        {nestedBinary(3).chopped(1), kNoPropertyList},
        {"bplist00", kNoPropertyList},
        {"{ a = b; }", kNoPropertyList},
        {"", kNoPropertyList},
        {"<plist/>", kNoPropertyList},
        {"<plist><array></plist>", kNoPropertyList},
        {QByteArray(static_cast<qsizetype>(kMostPropertyListBytes) + 1, ' '),
         kPropertyListTooLarge},
    };
    for (const auto& [bytes, reason] : cases)
        EXPECT_EQ(refusalOf(bytes), reason) << bytes.left(60);
}

TEST(PropertyList, RefusesToWriteWhatNoListHolds) {
    QVariant deep = 1;
    for (int level = 0; level <= kMostPropertyListLevels; ++level)
        deep = QVariantList{deep};
    const QVariant old = QDateTime(QDate(1900, 1, 1), QTime(0, 0), QTimeZone::utc());
    for (const QVariant& value : {deep, old, QVariant(QChar(u'x')), QVariant()})
        EXPECT_FALSE(dataWithPropertyList(value)) << value.typeName();
}

} // namespace clipheave::platform
