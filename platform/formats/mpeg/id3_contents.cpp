// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/mpeg/id3_contents.h"

#include "platform/formats/mpeg/id3_frames.h"
#include "platform/formats/mpeg/id3_header.h"
#include "platform/formats/tag_text.h"
#include "platform/media/model/tag_mapping.h"

#include <QHash>

namespace clipheave::platform {
namespace {

// Longer than any text a person writes; lyrics of a whole opera fit.
constexpr std::uint64_t kLargestId3Text = 1u << 20;
// MIME type, image type and description stand before the image's bytes.
constexpr std::uint64_t kImageIntroduction = 1024;
constexpr int kFrontCover = 3;

struct Id3Image {
    int type = 0;
    ByteRange data;
};

struct Id3Comment {
    QString description;
    QString text;
};

AVMetadataItem id3Item(const QByteArray& id, AVMetadataItem::Value value,
                       const QString& description = {}) {
    const QString key = QString::fromLatin1(id);
    const QString identifier = description.isEmpty() ? QStringLiteral("id3/") + key
                                                     : metadataIdentifier(QStringLiteral("org.id3"),
                                                                          key + u':' + description);
    return AVMetadataItem::make(QStringLiteral("org.id3"), key, identifier, std::move(value));
}

Id3Encoding encodingOf(ByteView body) {
    const int number = body.u8(0).value_or(0);
    return number > 3 ? Id3Encoding::Latin1 : static_cast<Id3Encoding>(number);
}

/// ID3v2.4.0 frames, section 4.14; v2.2 has a format of three letters in place of the MIME type.
std::optional<Id3Image> id3Image(const ByteRange& body, int version) {
    const ByteView head = body.view(0, kImageIntroduction);
    const Id3Encoding encoding = encodingOf(head);
    ByteView rest = head.sub(1);
    QString mime;
    if (version == 2) {
        mime = QString::fromLatin1(rest.sub(0, 3).bytes());
        rest = rest.sub(3);
    } else {
        mime = takeId3Text(Id3Encoding::Latin1, rest);
    }
    const auto type = rest.u8(0);
    if (!type || mime == QLatin1String("-->")) // a link to an image elsewhere
        return std::nullopt;
    rest = rest.sub(1);
    static_cast<void>(takeId3Text(encoding, rest));
    const auto start = static_cast<std::uint64_t>(head.size() - rest.size());
    if (start >= body.size())
        return std::nullopt;
    return Id3Image{*type, body.sub(start)};
}

int imageRank(int type) {
    if (type == kFrontCover)
        return 2;
    return type == 1 || type == 2 ? 0 : 1; // file icons
}

/// Collects the items of one tag.
class Id3ItemList {
public:
    explicit Id3ItemList(int version) : m_version(version) {}
    /// Returns false for what cannot become an item: an image elsewhere, a text over the limit.
    [[nodiscard]] bool add(const Id3Frame& frame);
    [[nodiscard]] QList<AVMetadataItem> take();

private:
    [[nodiscard]] bool addRecording(const Id3Frame& frame);
    void addText(const Id3Frame& frame, ByteView bytes);
    void addDescribed(const Id3Frame& frame, ByteView bytes);
    void appendComments();

    int m_version;
    QHash<QByteArray, qsizetype> m_seen; ///< the places of text frames among the items
    QList<AVMetadataItem> m_items;
    std::vector<Id3Image> m_images;
    std::vector<Id3Comment> m_comments;
};

bool Id3ItemList::add(const Id3Frame& frame) {
    const QByteArray& id = frame.id;
    if (id == "APIC") {
        const auto image = id3Image(frame.body, m_version);
        if (image)
            m_images.push_back(*image);
        return image.has_value();
    }
    const bool described = id == "COMM" || id == "USLT" || id == "TXXX" || id == "WXXX";
    const bool text = described || id[0] == 'T' || id[0] == 'W' || id == "IPLS" || id == "GRP1" ||
                      id == "MVNM" || id == "MVIN";
    if (!text) {
        if (id == "UFID" && addRecording(frame))
            return true;
        m_items.append(id3Item(id, frame.body.value()));
        return true;
    }
    const auto bytes = frame.body.load(kLargestId3Text);
    if (!bytes)
        return false;
    if (described)
        addDescribed(frame, *bytes);
    else
        addText(frame, *bytes);
    return true;
}

/// MusicBrainz keeps its number of the recording here, others their own.
bool Id3ItemList::addRecording(const Id3Frame& frame) {
    constexpr QByteArrayView kOwner("http://musicbrainz.org\0", 23);
    const auto bytes = frame.body.load(kLargestId3Text);
    if (!bytes || !bytes->startsWith(kOwner))
        return false;
    m_items.append(userTextItem(QStringLiteral("MusicBrainz Track Id"),
                                QString::fromLatin1(bytes->mid(kOwner.size()))));
    return true;
}

void Id3ItemList::addText(const Id3Frame& frame, ByteView bytes) {
    // WFED is a link by its name and a text by its layout: so wrote the program that invented it.
    const bool link = frame.id[0] == 'W' && bytes.u8(0).value_or(0) > 3;
    const QString text = link ? takeId3Text(Id3Encoding::Latin1, bytes)
                              : id3Texts(encodingOf(bytes), bytes.sub(1)).join(kValueSeparator);
    if (text.isEmpty())
        return;
    // Of repeated frames the last one counts, as of every other list.
    const auto seen = m_seen.constFind(frame.id);
    if (seen != m_seen.constEnd()) {
        m_items[*seen] = id3Item(frame.id, text);
        return;
    }
    m_seen.insert(frame.id, m_items.size());
    m_items.append(id3Item(frame.id, text));
}

void Id3ItemList::addDescribed(const Id3Frame& frame, ByteView bytes) {
    const bool hasLanguage = frame.id == "COMM" || frame.id == "USLT";
    const Id3Encoding encoding = encodingOf(bytes);
    ByteView rest = bytes.sub(hasLanguage ? 4 : 1);
    const QString description = takeId3Text(encoding, rest);
    const QString text = frame.id == "WXXX" ? takeId3Text(Id3Encoding::Latin1, rest)
                                            : id3Texts(encoding, rest).join(kValueSeparator);
    if (text.isEmpty())
        return;
    if (frame.id == "COMM")
        m_comments.push_back({description, text});
    else if (frame.id == "USLT")
        m_items.append(id3Item(frame.id, text));
    else
        m_items.append(id3Item(frame.id, text, description));
}

void Id3ItemList::appendComments() {
    const auto plain = std::find_if(m_comments.cbegin(), m_comments.cend(),
                                    [](const auto& c) { return c.description.isEmpty(); });
    const auto chosen = plain != m_comments.cend()
                            ? plain
                            : std::find_if(m_comments.cbegin(), m_comments.cend(), [](auto& c) {
                                  return !c.description.contains(QLatin1String("iTun"));
                              });
    for (auto it = m_comments.cbegin(); it != m_comments.cend(); ++it) {
        AVMetadataItem item = id3Item("COMM", it->text);
        if (it != chosen)
            item.identifier =
                metadataIdentifier(item.keySpace, QLatin1String("COMM:") + it->description);
        m_items.append(item);
    }
}

QList<AVMetadataItem> Id3ItemList::take() {
    appendComments();
    // Last the image that a reader of "the" image gets: the first front cover, else the last image
    // that is no file icon.
    auto best = m_images.begin();
    for (auto it = m_images.begin(); it != m_images.end(); ++it) {
        const int rank = imageRank(it->type), highest = imageRank(best->type);
        if (rank > highest || (rank == highest && it->type != kFrontCover))
            best = it;
    }
    for (auto it = m_images.begin(); it != m_images.end(); ++it) {
        if (it != best)
            m_items.append(id3Item("APIC", it->data.value()));
    }
    if (best != m_images.end())
        m_items.append(id3Item("APIC", best->data.value()));
    return std::move(m_items);
}

} // namespace

Id3Contents readId3(const ByteRange& range) {
    const auto header = parseId3Header(range.view(0, Id3Header::kSize));
    if (!header)
        return {};
    Id3ItemList list(header->version);
    QByteArrayList unread;
    for (const Id3Frame& frame : readId3Frames(range, &unread))
        if (!list.add(frame))
            unread.append(frame.id);
    Id3Contents contents{std::min(header->totalSize, range.size()), list.take(), {}};
    for (const QByteArray& id : unread)
        contents.hidden.append(QString::fromLatin1(id));
    return contents;
}

EncodedImage artworkOf(FileReader& reader, const QList<AVMetadataItem>& items) {
    for (auto it = items.crbegin(); it != items.crend(); ++it) {
        if (it->identifier != QLatin1String("id3/APIC"))
            continue;
        if (const auto* slice = std::get_if<FileSlice>(&it->value))
            return EncodedImage::fromSlice(reader, *slice);
        if (const auto* bytes = std::get_if<QByteArray>(&it->value))
            return EncodedImage::fromBytes(*bytes);
    }
    return {};
}

} // namespace clipheave::platform
