// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/file_reader.h"

#include "tests/testkit/testkit.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace clipheave::platform;

namespace {

QByteArray countingBytes(qsizetype size) {
    QByteArray bytes(size, '\0');
    for (qsizetype i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i % 251);
    return bytes;
}

ErrorCode openError(const QString& path) {
    const auto reader = FileReader::open(path);
    return reader ? ErrorCode::Cancelled : reader.error().code;
}

} // namespace

TEST(FileReader, GivesEveryRangeAndFetchesASmallHeadOnce) {
    const testkit::TempDir dir;
    const QByteArray bytes = countingBytes(300'000);
    auto reader = FileReader::open(dir.write("f", bytes));
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->size(), 300'000u);
    for (const std::uint64_t at : {0u, 8u, 100u, 65'000u})
        EXPECT_EQ(reader->view(at, 32)->toByteArray(), bytes.mid(qsizetype(at), 32));
    EXPECT_EQ(reader->bytesFetched(), FileReader::kWindow);

    for (const std::uint64_t at : {65'530u, 1u, 70'001u, 234'465u, 299'999u, 300'000u})
        for (const std::uint64_t length : {0u, 1u, 4096u, 5000u, 65'536u, 200'000u}) {
            const QByteArray expected = bytes.mid(qsizetype(at), qsizetype(length));
            const bool whole = at + length <= 300'000;
            const auto read = reader->read(at, length);
            EXPECT_EQ(read ? *read : QByteArray("x"), whole ? expected : QByteArray("x"));
            EXPECT_EQ(reader->viewUpTo(at, length).toByteArray(), expected.left(65'536));
            const auto view = reader->view(at, length);
            ASSERT_EQ(view.has_value(), whole && length <= FileReader::kWindow);
            EXPECT_EQ(view ? view->toByteArray() : expected, expected);
        }
    EXPECT_EQ(reader->view(0, FileReader::kWindow + 1).error().code, ErrorCode::LimitExceeded);
    EXPECT_EQ(reader->view(UINT64_MAX, 2).error().code, ErrorCode::Truncated);
    EXPECT_EQ(reader->read(2, UINT64_MAX).error().code, ErrorCode::Truncated);
    EXPECT_TRUE(reader->viewUpTo(300'001, 1).empty());
}

TEST(FileReader, AFileThatShrinksMeanwhileIsTruncated) {
    const testkit::TempDir dir;
    const QString path = dir.write("f", countingBytes(200'000));
    auto reader = FileReader::open(path);
    ASSERT_TRUE(reader);
    ASSERT_EQ(::truncate(path.toUtf8().constData(), 100'000), 0);
    EXPECT_EQ(reader->view(99'990, 20).error().code, ErrorCode::Truncated);
    EXPECT_EQ(reader->viewUpTo(99'990, 20).size(), 10u);
    EXPECT_TRUE(reader->viewUpTo(150'000, 20).empty());
    EXPECT_EQ(reader->read(90'000, 20'000).error().code, ErrorCode::Truncated);
    EXPECT_EQ((FileSlice{path, 99'990, 20}.load().error().code), ErrorCode::Truncated);
    EXPECT_EQ(FileSlice({path, 99'990, 10}).load()->size(), 10);
    EXPECT_EQ((FileSlice{path, 0, 11}.load(10).error().code), ErrorCode::LimitExceeded);
}

TEST(FileReader, OpensOnlyRegularFilesAndNeverBlocks) {
    const testkit::TempDir dir;
    const QString fifo = dir.path("fifo");
    ASSERT_EQ(::mkfifo(fifo.toUtf8().constData(), 0600), 0);
    EXPECT_EQ(openError(fifo), ErrorCode::NotSupported);
    EXPECT_EQ(openError(dir.path()), ErrorCode::NotSupported);
    EXPECT_EQ(openError(u"/dev/null"_s), ErrorCode::NotSupported);
    EXPECT_EQ(openError(dir.path("absent")), ErrorCode::NotFound);
    EXPECT_EQ(openError({}), ErrorCode::NotFound);
    const QString odd = dir.path(u"caf\xDCE9"_s);
    ASSERT_TRUE(::symlink("/etc/passwd", (dir.path().toUtf8() + "/caf\xE9").constData()) == 0);
    EXPECT_TRUE(FileReader::open(odd)); // a name that is no UTF-8, through a link
    ASSERT_EQ(::unlink((dir.path().toUtf8() + "/caf\xE9").constData()), 0);

    // A sparse file claims what no memory holds.
    const QString sparse = dir.write("sparse", "x");
    ASSERT_EQ(::truncate(sparse.toUtf8().constData(), 1LL << 42), 0);
    EXPECT_EQ(FileReader::open(sparse)->read(0, 1ULL << 42).error().code, ErrorCode::LimitExceeded);
}
