// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/plist/property_list.h"

#include "platform/foundation/atomic_file.h"
#include "platform/foundation/file_reader.h"
#include "platform/plist/libplist.h"
#include "platform/plist/list_scan.h"
#include "platform/plist/list_values.h"
#include "platform/plist/messages.h"

#include <QStringDecoder>

#include <clocale>

namespace clipheave::platform {

namespace {

constexpr char kBinaryStart[] = "bplist00";

/// While it lives, this thread reads and writes numbers with a point, whatever the user's language:
/// libplist takes the decimal sign of the locale.
class DecimalPoint {
public:
    DecimalPoint() : m_before(uselocale(plain())) {}
    DecimalPoint(const DecimalPoint&) = delete;
    DecimalPoint& operator=(const DecimalPoint&) = delete;
    ~DecimalPoint() { uselocale(m_before); }

private:
    static locale_t plain() {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
        return locale;
    }
    locale_t m_before;
};

/// Returns the text of an XML list, which states its encoding by its first bytes.
QString textOf(const QByteArray& bytes) {
    const auto encoding = QStringConverter::encodingForData(bytes, u'<');
    return QStringDecoder(encoding.value_or(QStringConverter::Utf8))(bytes);
}

Result<PlistNode> parseBinary(const QByteArray& bytes) {
    if (const auto checked = checkBinaryList(bytes); !checked)
        return tl::unexpected(checked.error());
    plist_t node = nullptr;
    plist_from_bin(bytes.constData(), static_cast<std::uint32_t>(bytes.size()), &node);
    return PlistNode(node);
}

Result<PlistNode> parseXml(const QByteArray& bytes) {
    const QString text = textOf(bytes);
    if (const auto checked = checkXmlList(text); !checked)
        return tl::unexpected(checked.error());
    const QByteArray utf8 = text.toUtf8();
    const DecimalPoint point;
    plist_t node = nullptr;
    plist_from_xml(utf8.constData(), static_cast<std::uint32_t>(utf8.size()), &node);
    return PlistNode(node);
}

} // namespace

Result<QVariant> propertyListWithData(const QByteArray& bytes) {
    if (static_cast<std::uint64_t>(bytes.size()) > kMostPropertyListBytes)
        return failure(ErrorCode::LimitExceeded, kReadPropertyList, {}, kPropertyListTooLarge);
    const auto node = bytes.startsWith(kBinaryStart) ? parseBinary(bytes) : parseXml(bytes);
    if (!node)
        return tl::unexpected(node.error());
    if (!*node)
        return failure(ErrorCode::InvalidData, kReadPropertyList, {}, kNoPropertyList);
    return valueOfNode(node->get());
}

Result<QVariant> propertyListWithContentsOfFile(const QString& path) {
    auto reader = FileReader::open(path);
    if (!reader)
        return tl::unexpected(reader.error());
    if (reader->size() > kMostPropertyListBytes)
        return failure(ErrorCode::LimitExceeded, kReadPropertyList, path, kPropertyListTooLarge);
    const auto bytes = reader->read(0, reader->size());
    if (!bytes)
        return tl::unexpected(bytes.error());
    auto list = propertyListWithData(*bytes);
    if (!list)
        list.error().path = path;
    return list;
}

Result<QByteArray> dataWithPropertyList(const QVariant& list) {
    const auto node = nodeOfValue(list);
    if (!node)
        return tl::unexpected(node.error());
    if (!*node)
        return failure(ErrorCode::InvalidArgument, kWritePropertyList, {},
                       Message(kNoPropertyListValue, {QString()}));
    const DecimalPoint point;
    char* text = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(node->get(), &text, &length);
    const std::unique_ptr<char, Releaser<std::free>> owned(text);
    return QByteArray(text, static_cast<qsizetype>(length));
}

Result<void> writeToFile_atomically(const QVariant& list, const QString& path) {
    const auto bytes = dataWithPropertyList(list);
    if (!bytes)
        return tl::unexpected(bytes.error());
    auto file = AtomicFile::create(path, static_cast<std::uint64_t>(bytes->size()));
    if (!file)
        return tl::unexpected(file.error());
    if (auto written = file->write(*bytes); !written)
        return written;
    return file->commit();
}

} // namespace clipheave::platform
