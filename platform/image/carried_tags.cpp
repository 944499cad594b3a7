// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/carried_tags.h"

#include "platform/foundation/byte_view.h"
#include "platform/image/exiv2_access.h"
#include "platform/image/heif_reader.h"
#include "platform/image/write/jpeg_segments.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace clipheave::platform {

struct CarriedTags::State {
    Exiv2::ExifData exif;
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
    Exiv2::ByteOrder order = Exiv2::littleEndian;
    std::string comment;
};

namespace {

constexpr std::uint64_t kHeadToKnow = 64;

const Exiv2::byte* exivBytes(const QByteArray& bytes) {
    return reinterpret_cast<const Exiv2::byte*>(bytes.constData());
}

/// Tags of a TIFF structure that holds one group only, its main directory read as that group.
void addGroup(const QByteArray& bytes, const char* group, Exiv2::ExifData& exif) {
    Exiv2::ExifData raw;
    if (!bytes.isEmpty())
        Exiv2::ExifParser::decode(raw, exivBytes(bytes), static_cast<std::uint32_t>(bytes.size()));
    for (const Exiv2::Exifdatum& datum : raw)
        if (datum.groupName() == "Image")
            exif.add(Exiv2::ExifKey(datum.tag(), group), &datum.value());
}

template <class State> void readBoxes(FileReader& reader, State& state) {
    const auto facts = readHeif(reader);
    if (!facts)
        return;
    if (!facts->exif.isEmpty())
        state.order = Exiv2::ExifParser::decode(state.exif, exivBytes(facts->exif),
                                                static_cast<std::uint32_t>(facts->exif.size()));
    addGroup(facts->mainTags, "Image", state.exif);
    addGroup(facts->photoTags, "Photo", state.exif);
    addGroup(facts->gpsTags, "GPSInfo", state.exif);
}

template <class State> void readFile(const FileReader& reader, State& state) {
    const auto image = openExiv2Image(reader);
    const auto take = [&] {
        state.exif = image->exifData();
        state.iptc = image->iptcData();
        state.xmp = image->xmpData();
        state.comment = image->comment();
        if (image->byteOrder() != Exiv2::invalidByteOrder)
            state.order = image->byteOrder();
    };
    try {
        image->readMetadata();
    } catch (const Exiv2::Error&) {
        take(); // a photo that is cut behind its tags keeps them
        throw;
    }
    take();
}

/// Tags of IFD0 that say how the file is stored, or belong to a raw photo. Source: TIFF 6.0, DNG
/// 1.6: everything from DNGVersion on.
bool describesStorage(const Exiv2::Exifdatum& datum) {
    static constexpr std::array<std::uint16_t, 36> kTags{
        0x00fe, 0x00ff, 0x0100, 0x0101, 0x0102, 0x0103, 0x0106, 0x010a, 0x0111,
        0x0115, 0x0116, 0x0117, 0x0118, 0x0119, 0x011c, 0x0120, 0x0121, 0x0124,
        0x0125, 0x013d, 0x0140, 0x0142, 0x0143, 0x0144, 0x0145, 0x014a, 0x0152,
        0x0153, 0x015b, 0x0201, 0x0202, 0x02bc, 0x83bb, 0x8649, 0x8773, 0x935c};
    constexpr std::uint16_t kFirstOfDng = 0xc612, kLastOfDng = 0xcd4b;
    constexpr std::uint16_t kFirstOfCfa = 0x828d, kLastOfCfa = 0x828f;
    if (datum.groupName() != "Image")
        return false;
    const std::uint16_t tag = datum.tag();
    return std::binary_search(kTags.begin(), kTags.end(), tag) ||
           (tag >= kFirstOfDng && tag <= kLastOfDng) || (tag >= kFirstOfCfa && tag <= kLastOfCfa);
}

void dropStorage(Exiv2::ExifData& exif) {
    Exiv2::ExifThumb(exif).erase();
    for (auto datum = exif.begin(); datum != exif.end();)
        datum = describesStorage(*datum) ? exif.erase(datum) : std::next(datum);
}

/// Properties of the parts that a file has behind its image, of embedded images, and of the file.
bool describesParts(const Exiv2::Xmpdatum& datum) {
    static constexpr std::array<std::string_view, 10> kGroups{
        "Container", "GAudio", "GCamera",    "GContainer", "GDepth",
        "GImage",    "Item",   "MicroVideo", "hdrgm",      "xmpNote"};
    const std::string group = datum.groupName(), name = datum.tagName();
    return std::find(kGroups.begin(), kGroups.end(), group) != kGroups.end() ||
           (group == "xmp" && name.rfind("Thumbnails", 0) == 0) ||
           (group == "photoshop" && name == "ICCProfile");
}

void dropParts(Exiv2::XmpData& xmp) {
    for (auto datum = xmp.begin(); datum != xmp.end();)
        datum = describesParts(*datum) ? xmp.erase(datum) : std::next(datum);
}

void setWhereStated(Exiv2::XmpData& xmp, const char* name, const std::string& value) {
    const auto found = xmp.findKey(Exiv2::XmpKey(name));
    if (found != xmp.end())
        found->setValue(value);
}

std::string textOfTag(const Exiv2::ExifData& exif, const char* name) {
    const auto found = exif.findKey(Exiv2::ExifKey(name));
    return found == exif.end() ? std::string() : found->toString();
}

QByteArray bigEndian(qsizetype value, int count) {
    QByteArray bytes;
    for (int i = count; i-- > 0;)
        bytes.append(static_cast<char>(value >> (8 * i) & 0xff));
    return bytes;
}

/// Source: Exif 2.3, 4.7.2. Empty without tags.
QByteArray exifPayload(const Exiv2::ExifData& exif, Exiv2::ByteOrder order) {
    if (exif.empty())
        return {};
    Exiv2::ExifData rendered = exif;
    Exiv2::Blob blob;
    Exiv2::ExifParser::encode(blob, order, rendered);
    return QByteArray("Exif\0\0", 6) + QByteArray(reinterpret_cast<const char*>(blob.data()),
                                                  static_cast<qsizetype>(blob.size()));
}

/// Source: XMP part 3, 1.1.3.
QByteArray xmpPayload(const Exiv2::XmpData& xmp) {
    if (xmp.empty())
        return {};
    std::string packet;
    const Exiv2::XmpData& data = xmp;
    if (Exiv2::XmpParser::encode(packet, data) != 0)
        throw Exiv2::Error(Exiv2::ErrorCode::kerErrorMessage, "XMP");
    constexpr char kName[] = "http://ns.adobe.com/xap/1.0/"; // with its zero
    return QByteArray(kName, sizeof kName) + QByteArray::fromStdString(packet);
}

/// Source: the image resource blocks of Photoshop: "8BIM", number, empty name, length, bytes.
QByteArray iptcPayload(const Exiv2::IptcData& iptc) {
    constexpr qsizetype kIptcResource = 0x0404;
    if (iptc.empty())
        return {};
    const QByteArray records = bytesOf(Exiv2::IptcParser::encode(iptc));
    QByteArray payload = QByteArray("Photoshop 3.0", 14) + "8BIM" + bigEndian(kIptcResource, 2) +
                         QByteArray(2, '\0') + bigEndian(records.size(), 4) + records;
    if (records.size() % 2 != 0)
        payload.append('\0');
    return payload;
}

/// Adds the segment that `render` makes, or a note that it cannot be.
template <class Render>
void addSegment(CarriedTags::Segments& all, unsigned char marker, const char* name,
                const Render& render) {
    const auto payload = withExiv2(kWritePhotoTags, {}, render);
    if (payload && payload->isEmpty())
        return;
    const auto segment = payload ? jpegSegment(marker, *payload) : payload;
    if (segment)
        all.bytes += *segment;
    else
        all.leftOut.append(Message(kTagsLeftOut, {QString::fromLatin1(name)}));
}

} // namespace

CarriedTags::CarriedTags() : m_state(std::make_unique<State>()) {
}
CarriedTags::CarriedTags(CarriedTags&&) noexcept = default;
CarriedTags& CarriedTags::operator=(CarriedTags&&) noexcept = default;
CarriedTags::~CarriedTags() = default;

CarriedTags CarriedTags::of(FileReader& reader) {
    CarriedTags tags;
    const bool boxes = isHeif(reader.viewUpTo(0, kHeadToKnow));
    const auto read = withExiv2(kReadPhotoTags, reader.path(), [&] {
        if (boxes)
            readBoxes(reader, *tags.m_state);
        else
            readFile(reader, *tags.m_state);
        return true;
    });
    ignoreFailure(read, "what was read before is carried, and the import has named the fault");
    const auto dropped = withExiv2(kReadPhotoTags, reader.path(), [&] {
        dropStorage(tags.m_state->exif);
        dropParts(tags.m_state->xmp);
        return true;
    });
    ignoreFailure(dropped, "then rendering fails too, which is noted");
    return tags;
}

bool CarriedTags::isAdobeRgb() const {
    static constexpr char kUncalibrated[] = "65535", kOfSomeCameras[] = "2";
    const auto named = withExiv2(kReadPhotoTags, {}, [this] {
        const std::string space = textOfTag(m_state->exif, "Exif.Photo.ColorSpace");
        return space == kOfSomeCameras ||
               (space == kUncalibrated &&
                textOfTag(m_state->exif, "Exif.Iop.InteroperabilityIndex").rfind("R03", 0) == 0);
    });
    return named.value_or(false);
}

void CarriedTags::describeUprightSrgb() {
    const auto described = withExiv2(kWritePhotoTags, {}, [this] {
        Exiv2::ExifData& exif = m_state->exif;
        const bool isStated = exif.findKey(Exiv2::ExifKey("Exif.Photo.ColorSpace")) != exif.end();
        exif["Exif.Image.Orientation"] = std::uint16_t{1};
        exif["Exif.Image.YCbCrPositioning"] = std::uint16_t{1}; // centred, as JFIF has it
        if (isStated)
            exif["Exif.Photo.ColorSpace"] = std::uint16_t{1};
        if (textOfTag(exif, "Exif.Iop.InteroperabilityIndex").rfind("R03", 0) == 0)
            exif["Exif.Iop.InteroperabilityIndex"] = "R98";
        setWhereStated(m_state->xmp, "Xmp.tiff.Orientation", "1");
        setWhereStated(m_state->xmp, "Xmp.exif.ColorSpace", "1");
        return true;
    });
    ignoreFailure(described, "then rendering fails too, which is noted");
}

void CarriedTags::setPixelDimensions(QSize size) {
    const auto set = withExiv2(kWritePhotoTags, {}, [&] {
        m_state->exif["Exif.Photo.PixelXDimension"] = static_cast<std::uint32_t>(size.width());
        m_state->exif["Exif.Photo.PixelYDimension"] = static_cast<std::uint32_t>(size.height());
        for (const char* name : {"Xmp.exif.PixelXDimension", "Xmp.tiff.ImageWidth"})
            setWhereStated(m_state->xmp, name, std::to_string(size.width()));
        for (const char* name : {"Xmp.exif.PixelYDimension", "Xmp.tiff.ImageLength"})
            setWhereStated(m_state->xmp, name, std::to_string(size.height()));
        return true;
    });
    ignoreFailure(set, "then rendering fails too, which is noted");
}

CarriedTags::Segments CarriedTags::segments() const {
    Segments all;
    addSegment(all, kJpegApp1, "EXIF",
               [this] { return exifPayload(m_state->exif, m_state->order); });
    addSegment(all, kJpegApp1, "XMP", [this] { return xmpPayload(m_state->xmp); });
    addSegment(all, kJpegApp13, "IPTC", [this] { return iptcPayload(m_state->iptc); });
    addSegment(all, kJpegComment, "COM",
               [this] { return QByteArray::fromStdString(m_state->comment); });
    return all;
}

QByteArray withSegments(const QByteArray& jpeg, const QByteArray& segments) {
    const ByteView bytes(jpeg);
    if (!bytes.startsWith("\xff\xd8\xff"))
        return jpeg;
    constexpr qsizetype kStart = 2;
    const bool hasJfif = bytes.be16(kStart) == 0xFFE0;
    const qsizetype at = hasJfif ? kStart + 2 + bytes.be16(kStart + 2).value_or(0) : kStart;
    return jpeg.left(at) + segments + jpeg.mid(at);
}

} // namespace clipheave::platform
