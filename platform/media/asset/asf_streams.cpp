// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/asset/asf_streams.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

constexpr int kMostAsfObjects = 1000;
constexpr std::uint64_t kAsfObjectHeader = 24; ///< identifier and size
constexpr std::uint64_t kAsfHeaderFields = 30, kAsfExtensionFields = 46;
constexpr std::uint64_t kAsfExtendedFields = 88; ///< the last two: counts of names and extensions
constexpr std::uint64_t kAsfNameFields = 4, kAsfPayloadFields = 22;

constexpr char kAsfStreamProperties[] =
    "\x91\x07\xDC\xB7\xB7\xA9\xCF\x11\x8E\xE6\x00\xC0\x0C\x20\x53\x65";
constexpr char kAsfHeaderExtension[] =
    "\xB5\x03\xBF\x5F\x2E\xA9\xCF\x11\x8E\xE3\x00\xC0\x0C\x20\x53\x65";
constexpr char kAsfExtendedStream[] =
    "\xCB\xA5\xE6\x14\x72\xC6\x32\x43\x83\x99\xA9\x69\x52\x06\x5B\x5A";
constexpr char kAsfAudioMedia[] =
    "\x40\x9E\x69\xF8\x4D\x5B\xCF\x11\xA8\xFD\x00\x80\x5F\x5C\x44\x2B";
constexpr char kAsfVideoMedia[] =
    "\xC0\xEF\x19\xBC\x4D\x5B\xCF\x11\xA8\xFD\x00\x80\x5F\x5C\x44\x2B";

QByteArrayView asfIdentifier(const char (&bytes)[17]) {
    return {bytes, 16};
}

class AsfHeader {
public:
    explicit AsfHeader(FileReader& reader) : m_reader(reader) {}
    void walk(std::uint64_t at, std::uint64_t end);
    [[nodiscard]] const AsfStreams& streams() const { return m_streams; }

private:
    void take(std::uint64_t at, std::uint64_t size);
    void takeStream(ByteView properties);
    void takeExtended(std::uint64_t at, std::uint64_t end);

    FileReader& m_reader;
    AsfStreams m_streams;
    int m_objects = 0;
};

void AsfHeader::takeStream(ByteView properties) {
    const ByteView type = properties.sub(kAsfObjectHeader);
    m_streams.audio = m_streams.audio || type.startsWith(asfIdentifier(kAsfAudioMedia));
    m_streams.video = m_streams.video || type.startsWith(asfIdentifier(kAsfVideoMedia));
}

/// Walks the plain description that may stand behind names and payload extensions.
void AsfHeader::takeExtended(std::uint64_t at, std::uint64_t end) {
    const ByteView fields = m_reader.viewUpTo(at, kAsfExtendedFields);
    const int names = fields.le16(84).value_or(0), extensions = fields.le16(86).value_or(0);
    at += kAsfExtendedFields;
    for (int i = 0; i < names + extensions && at < end; ++i) {
        if (++m_objects > kMostAsfObjects)
            return;
        if (i < names)
            at += kAsfNameFields + m_reader.viewUpTo(at, kAsfNameFields).le16(2).value_or(0);
        else
            at += kAsfPayloadFields + m_reader.viewUpTo(at, kAsfPayloadFields).le32(18).value_or(0);
    }
    walk(at, end);
}

void AsfHeader::take(std::uint64_t at, std::uint64_t size) {
    const ByteView object = m_reader.viewUpTo(at, kAsfObjectHeader + 16);
    if (object.startsWith(asfIdentifier(kAsfStreamProperties)))
        takeStream(object);
    else if (object.startsWith(asfIdentifier(kAsfExtendedStream)))
        takeExtended(at, at + size);
    else if (object.startsWith(asfIdentifier(kAsfHeaderExtension)))
        walk(at + kAsfExtensionFields, at + size);
}

void AsfHeader::walk(std::uint64_t at, std::uint64_t end) {
    while (at + kAsfObjectHeader <= end && ++m_objects <= kMostAsfObjects) {
        const std::uint64_t size = m_reader.viewUpTo(at, kAsfObjectHeader).le64(16).value_or(0);
        if (size < kAsfObjectHeader || size > end - at)
            return;
        take(at, size);
        at += size;
    }
}

} // namespace

AsfStreams asfStreams(FileReader& reader, std::uint64_t start) {
    const std::uint64_t left = reader.size() - std::min(start, reader.size());
    const std::uint64_t size = reader.viewUpTo(start, kAsfHeaderFields).le64(16).value_or(0);
    AsfHeader header(reader);
    header.walk(start + kAsfHeaderFields, start + std::min(size, left));
    return header.streams();
}

} // namespace clipheave::platform
