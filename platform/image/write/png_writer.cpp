// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/messages.h"
#include "platform/image/write/iptc_block.h"
#include "platform/image/write/photo_plan.h"

#include <QtEndian>

#include <zlib.h>

#include <algorithm>
#include <array>
#include <utility>

// Chunks of PNG files. Source: Portable Network Graphics (third edition), 5 and 11.3; the "Raw
// profile type" texts are those of ImageMagick.
namespace clipheave::platform {

namespace {

constexpr std::uint64_t kSignatureSize = 8, kChunkFrame = 12;
constexpr std::size_t kMostPngChunks = 1u << 20;
constexpr std::uint64_t kMostPngText = 16u << 20;
const QByteArray kXmpKeyword = QByteArrayLiteral("XML:com.adobe.xmp");
const QByteArray kRawProfile = QByteArrayLiteral("Raw profile type ");
const QByteArray kXmpSign("http://ns.adobe.com/xap/1.0/\0", 29); // of a JPEG segment

struct PngChunk {
    QByteArray type;
    std::uint64_t offset = 0, length = 0; ///< of the whole chunk; of its data
    [[nodiscard]] std::uint64_t size() const { return length + kChunkFrame; }
};

Error brokenPng(const FileReader& reader) {
    return {ErrorCode::InvalidData, kReadPhoto, reader.path(), kPngBroken};
}

/// Source: PNG, annex D.
std::uint32_t crcOf(const QByteArray& bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<std::uint8_t>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

QByteArray png32(std::uint32_t value) {
    QByteArray bytes(4, '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

QByteArray pngChunk(const QByteArray& type, const QByteArray& data) {
    return png32(static_cast<std::uint32_t>(data.size())) + type + data + png32(crcOf(type + data));
}

Result<std::vector<PngChunk>> pngChunks(FileReader& reader) {
    std::vector<PngChunk> chunks;
    for (std::uint64_t at = kSignatureSize; chunks.size() < kMostPngChunks;) {
        const ByteView head = reader.viewUpTo(at, 8);
        const auto length = head.be32(0);
        if (head.size() < 8 || *length > 0x7FFFFFFF || kChunkFrame + *length > reader.size() - at)
            return tl::unexpected(brokenPng(reader));
        chunks.push_back({head.sub(4, 4).toByteArray(), at, *length});
        at += chunks.back().size();
        if (chunks.back().type == "IEND")
            return chunks;
    }
    return tl::unexpected(brokenPng(reader));
}

/// Returns what zlib data becomes; nothing when it is damaged or becomes more than a text may have:
/// a small chunk could fill the memory.
QByteArray inflated(const QByteArray& data) {
    QByteArray result;
    for (uLongf size = 1u << 16; size <= kMostPngText; size *= 4) {
        result.resize(static_cast<qsizetype>(size));
        uLongf length = size;
        const int code =
            uncompress(static_cast<Bytef*>(static_cast<void*>(result.data())), &length,
                       static_cast<const Bytef*>(static_cast<const void*>(data.data())),
                       static_cast<uLong>(data.size()));
        if (code == Z_OK)
            return result.first(static_cast<qsizetype>(length));
        if (code != Z_BUF_ERROR)
            break;
    }
    return {};
}

/// A text chunk, whatever its form.
struct PngText {
    QByteArray keyword, text;
};

PngText pngText(const QByteArray& type, const QByteArray& data) {
    const qsizetype end = data.indexOf('\0');
    if (end < 0)
        return {};
    PngText text{data.first(end), {}};
    if (type == "tEXt") {
        text.text = data.mid(end + 1);
    } else if (type == "zTXt") {
        text.text = inflated(data.mid(end + 2));
    } else {
        const bool isPacked = data.mid(end + 1, 1) == QByteArray("\1", 1);
        const qsizetype language = data.indexOf('\0', end + 3);
        const qsizetype translated = language < 0 ? -1 : data.indexOf('\0', language + 1);
        if (translated < 0)
            return {};
        const QByteArray rest = data.mid(translated + 1);
        text.text = isPacked ? inflated(rest) : rest;
    }
    return text;
}

/// Lines: name, length, then hexadecimal digits.
QByteArray rawProfileBytes(const QByteArray& text) {
    const QList<QByteArray> lines = text.trimmed().split('\n');
    return lines.size() < 3 ? QByteArray()
                            : QByteArray::fromHex(lines.mid(2).join().replace(' ', ""));
}

/// `name`: of the profile, in lower case.
bool isRawXmp(const QByteArray& name, const QByteArray& bytes) {
    return name == "xmp" || (name == "app1" && bytes.startsWith(kXmpSign));
}

QByteArray rawProfileChunk(const QByteArray& name, const QByteArray& bytes) {
    const QByteArray hex = bytes.toHex();
    QByteArray text = '\n' + name + '\n' + QByteArray::number(bytes.size()).rightJustified(8);
    constexpr qsizetype kLine = 72;
    for (qsizetype at = 0; at < hex.size(); at += kLine)
        text += '\n' + hex.mid(at, kLine);
    const QByteArray packed = qCompress(text + '\n').mid(4);
    return pngChunk("zTXt", kRawProfile + name + QByteArray("\0\0", 2) + packed);
}

QByteArray xmpChunk(const QByteArray& packet) {
    return pngChunk("iTXt", kXmpKeyword + QByteArray("\0\0\0\0\0", 5) + packet);
}

/// Keywords that repeat a tag. Source: PNG, 11.3.3.1.
constexpr std::pair<const char*, const char*> kTagTexts[] = {{"Author", "Artist"},
                                                             {"Description", "ImageDescription"},
                                                             {"Copyright", "Copyright"},
                                                             {"Comment", "UserComment"},
                                                             {"Creation Time", "DateTimeOriginal"}};

/// Returns the new text of a keyword, null when the change does not concern it.
QString renewedText(const QByteArray& keyword, const PhotoChange& change) {
    constexpr std::uint8_t kObjectName = 5;
    const auto title = change.iptc.find(kObjectName);
    if (keyword == "Title" && title != change.iptc.end())
        return title->second.join(u' ') + QLatin1String("");
    for (const auto& [known, name] : kTagTexts)
        for (const auto* tags : {&change.image, &change.exif})
            for (const AskedTag& asked : *tags)
                if (keyword == known && asked.name == QLatin1String(name))
                    return asked.value.toString() + QLatin1String("");
    return {};
}

QByteArray textChunk(const QByteArray& keyword, const QString& text) {
    const QByteArray latin = text.toLatin1();
    if (QString::fromLatin1(latin) == text)
        return pngChunk("tEXt", keyword + '\0' + latin);
    return pngChunk("iTXt", keyword + QByteArray("\0\0\0\0\0", 5) + text.toUtf8());
}

bool isText(const QByteArray& type) {
    return type == "tEXt" || type == "zTXt" || type == "iTXt";
}

bool isOfPngPicture(const QByteArray& type) {
    static const std::array kKept{"IHDR", "PLTE", "IDAT", "IEND", "tRNS", "gAMA", "cHRM",
                                  "sRGB", "iCCP", "sBIT", "bKGD", "pHYs", "hIST", "sPLT",
                                  "acTL", "fcTL", "fdAT", "cICP", "mDCV", "cLLI"};
    return std::any_of(kKept.begin(), kKept.end(), [&](const char* kept) { return type == kept; });
}

class PngPlan {
public:
    PngPlan(FileReader& reader, const PhotoChange& change) : m_reader(reader), m_change(change) {}

    Result<PhotoPlan> run() {
        const auto chunks = pngChunks(m_reader);
        if (!chunks)
            return tl::unexpected(chunks.error());
        for (const PngChunk& chunk : *chunks)
            read(chunk);
        if (auto done = changeBlocks(); !done)
            return tl::unexpected(done.error());
        m_plan.addRange(0, kSignatureSize);
        for (const PngChunk& chunk : *chunks)
            place(chunk);
        const PngChunk& last = chunks->back();
        const std::uint64_t end = last.offset + last.size();
        if (!m_change.dropsEverything)
            m_plan.addRange(end, m_reader.size() - end);
        return std::move(m_plan);
    }

private:
    QByteArray dataOf(const PngChunk& chunk) {
        if (chunk.length > kMostPngText)
            return {};
        return m_reader.read(chunk.offset + 8, chunk.length).value_or(QByteArray());
    }

    void read(const PngChunk& chunk) {
        if (chunk.type == "eXIf" && m_exif.isNull()) {
            m_exif = dataOf(chunk);
            return;
        }
        if (!isText(chunk.type))
            return;
        const PngText text = pngText(chunk.type, dataOf(chunk));
        if (text.keyword == kXmpKeyword && m_xmp.isNull()) {
            m_xmp = text.text;
        } else if (text.keyword.startsWith(kRawProfile)) {
            const QByteArray name = text.keyword.mid(kRawProfile.size()).toLower();
            const QByteArray bytes = rawProfileBytes(text.text);
            if (isRawXmp(name, bytes))
                m_rawXmp = bytes.mid(bytes.startsWith(kXmpSign) ? kXmpSign.size() : 0);
            else if (name == "exif" || name == "app1")
                m_rawExif = bytes;
            else if (name == "iptc" || name == "8bim")
                m_iptc = bytes;
        }
    }

    Result<void> changeBlocks() {
        if (auto done = changeExif(); !done)
            return done;
        if (auto done = changeIptc(); !done)
            return done;
        changeXmp();
        return {};
    }

    /// A packet in a raw profile becomes that of the file when it changes, or goes if there is one.
    void changeXmp() {
        const bool isAlone = m_xmp.isNull();
        const QByteArray old = isAlone ? m_rawXmp : m_xmp;
        m_newXmp = m_iptc.isEmpty() ? changedXmpWithIptc(old, m_change, m_plan.notes)
                                    : changedXmpOrNote(old, m_change, m_plan.notes);
        m_changesXmp = m_newXmp != old;
        m_changesRawXmp =
            isAlone ? m_changesXmp : changedXmpOrNote(m_rawXmp, m_change, m_plan.notes) != m_rawXmp;
    }

    Result<void> changeExif() {
        const QByteArray prefix("Exif\0\0", 6); // in raw profiles, and by some writers in chunks
        QByteArray block = m_exif.isEmpty() ? m_rawExif : m_exif;
        if (block.startsWith(prefix))
            block.remove(0, prefix.size());
        m_changesExif = m_change.changesTags();
        const auto changed = changedTiffBlock(block, m_change);
        if (changed)
            m_newExif = *changed;
        else if (!m_change.dropsEverything && !(m_change.dropsExif && m_change.dropsGps))
            return tl::unexpected(changed.error());
        return {};
    }

    Result<void> changeIptc() {
        if (m_iptc.isEmpty() || !m_change.touchesIptc())
            return {};
        m_changesIptc = true;
        const auto changed =
            m_iptc.startsWith("8BIM")
                ? changedImageResources(m_iptc, m_change, ResourceBlocks::Iptc, m_plan.notes)
                : changedIptc(m_iptc, m_change);
        if (changed)
            m_newIptc = *changed;
        else if (!m_change.dropsEverything && !m_change.dropsIptc)
            return tl::unexpected(changed.error());
        return {};
    }

    /// New blocks stand before the pixels.
    void addNew() {
        if (m_changesExif && !m_newExif.isEmpty())
            m_plan.add(pngChunk("eXIf", m_newExif));
        if (m_changesXmp && !m_newXmp.isEmpty())
            m_plan.add(xmpChunk(m_newXmp));
        if (m_changesIptc && !m_newIptc.isEmpty())
            m_plan.add(rawProfileChunk("iptc", m_newIptc));
        m_isPlaced = true;
    }

    bool isReplaced(const PngChunk& chunk) {
        if (m_changesExif && chunk.type == "eXIf")
            return true;
        if (!isText(chunk.type))
            return false;
        const PngText text = pngText(chunk.type, dataOf(chunk));
        if (text.keyword == kXmpKeyword)
            return m_changesXmp;
        if (text.keyword.startsWith("exif:")) // tags as texts, by ImageMagick
            return text.keyword.startsWith("exif:GPS") ? m_change.dropsGps : m_change.dropsExif;
        if (!text.keyword.startsWith(kRawProfile))
            return renewsText(text.keyword);
        const QByteArray name = text.keyword.mid(kRawProfile.size()).toLower();
        if (isRawXmp(name, rawProfileBytes(text.text)))
            return m_changesRawXmp;
        return (m_changesExif && (name == "exif" || name == "app1")) ||
               (m_changesIptc && (name == "iptc" || name == "8bim"));
    }

    void place(const PngChunk& chunk) {
        const bool isKept = !m_change.dropsEverything || isOfPngPicture(chunk.type);
        if (!m_isPlaced && (chunk.type == "PLTE" || chunk.type == "IDAT"))
            addNew();
        if (isKept && !isReplaced(chunk))
            m_plan.addRange(chunk.offset, chunk.size());
    }

    /// Texts that repeat a changed tag follow it: an old one would be shown there.
    bool renewsText(const QByteArray& keyword) {
        const QString text = renewedText(keyword, m_change);
        if (!text.isEmpty() && !m_change.dropsEverything)
            m_plan.add(textChunk(keyword, text));
        return !text.isNull();
    }

    FileReader& m_reader;
    const PhotoChange& m_change;
    PhotoPlan m_plan;
    QByteArray m_exif, m_rawExif, m_xmp, m_rawXmp, m_iptc;
    QByteArray m_newExif, m_newXmp, m_newIptc;
    bool m_changesExif = false, m_changesIptc = false;
    bool m_changesXmp = false, m_changesRawXmp = false, m_isPlaced = false;
};

} // namespace

Result<PhotoPlan> planPng(FileReader& reader, const PhotoChange& change) {
    return PngPlan(reader, change).run();
}

} // namespace clipheave::platform
