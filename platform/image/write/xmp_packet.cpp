// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/xmp_packet.h"

#include "platform/image/messages.h"
#include "platform/image/write/xmp_synonyms.h"

#include <QStringConverter>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <iterator>

namespace clipheave::platform {

namespace {

constexpr QLatin1String kRdf("http://www.w3.org/1999/02/22-rdf-syntax-ns#");

/// Copies the tokens of the tree, but for the properties that change. Names keep their prefixes:
/// the reader does not resolve them, this class does.
class XmpCopy {
public:
    XmpCopy(QStringView text, const XmpSynonyms& synonyms)
        : m_reader(text.toString()), m_writer(&m_out), m_synonyms(synonyms) {
        m_reader.setNamespaceProcessing(false);
    }

    /// False when it is no XML.
    bool run() {
        while (!m_reader.atEnd()) {
            const auto token = m_reader.readNext();
            if (token == QXmlStreamReader::StartElement)
                startElement();
            else if (token == QXmlStreamReader::EndElement)
                endElement();
            else if (token != QXmlStreamReader::StartDocument &&
                     token != QXmlStreamReader::EndDocument && token != QXmlStreamReader::Invalid)
                m_writer.writeCurrentToken(m_reader);
        }
        return !m_reader.hasError();
    }

    [[nodiscard]] const QString& text() const { return m_out; }
    [[nodiscard]] bool isChanged() const { return m_changed; }
    [[nodiscard]] bool hasProperties() const { return m_properties > 0; }

private:
    XmpName nameOf(QStringView qualified) const {
        const qsizetype colon = qualified.indexOf(u':');
        const QString prefix = colon < 0 ? QString() : qualified.first(colon).toString();
        for (auto scope = m_prefixes.rbegin(); scope != m_prefixes.rend(); ++scope)
            if (const auto found = scope->find(prefix); found != scope->end())
                return {*found, qualified.mid(colon + 1).toString()};
        return {{}, qualified.mid(colon + 1).toString()};
    }

    void openScope() {
        QHash<QString, QString> declared;
        for (const QXmlStreamAttribute& attribute : m_reader.attributes()) {
            const QStringView name = attribute.qualifiedName();
            if (name == u"xmlns")
                declared.insert({}, attribute.value().toString());
            else if (name.startsWith(u"xmlns:"))
                declared.insert(name.mid(6).toString(), attribute.value().toString());
        }
        m_prefixes.push_back(declared);
    }

    void startElement() {
        openScope();
        const XmpName name = nameOf(m_reader.qualifiedName());
        if (m_synonyms.removes(name)) {
            m_changed = true;
            m_reader.skipCurrentElement();
            m_prefixes.pop_back();
            return;
        }
        if (const auto* texts = m_synonyms.renewed(name))
            return renew(*texts);
        m_writer.writeStartElement(m_reader.qualifiedName().toString());
        for (const QXmlStreamAttribute& attribute : m_reader.attributes())
            writeAttribute(attribute);
        if (name.space != kRdf && name.space != QLatin1String("adobe:ns:meta/"))
            ++m_properties;
    }

    void endElement() {
        m_writer.writeEndElement();
        m_prefixes.pop_back();
    }

    void writeAttribute(const QXmlStreamAttribute& attribute) {
        const QString qualified = attribute.qualifiedName().toString();
        if (qualified.startsWith(QLatin1String("xmlns"))) {
            m_writer.writeAttribute(qualified, attribute.value().toString());
            return;
        }
        const XmpName name = nameOf(qualified);
        if (m_synonyms.removes(name)) {
            m_changed = true;
            return;
        }
        const bool isProperty = !name.space.isEmpty() && name.space != kRdf &&
                                name.space != QLatin1String("adobe:ns:meta/") &&
                                !qualified.startsWith(QLatin1String("xml:"));
        m_properties += isProperty ? 1 : 0;
        if (const auto* texts = m_synonyms.renewed(name)) {
            m_changed = true;
            m_writer.writeAttribute(qualified, texts->join(QLatin1String("; ")));
            return;
        }
        m_writer.writeAttribute(qualified, attribute.value().toString());
    }

    /// Writes the property with new texts, in the form that it has: plain, or a list.
    void renew(const QStringList& texts) {
        m_changed = true;
        const QString element = m_reader.qualifiedName().toString();
        QString list, item;
        while (!m_reader.atEnd()) {
            const auto token = m_reader.readNext();
            if (token == QXmlStreamReader::EndElement && m_reader.qualifiedName() == element)
                break;
            if (token != QXmlStreamReader::StartElement)
                continue;
            if (list.isEmpty())
                list = m_reader.qualifiedName().toString();
            else if (item.isEmpty())
                item = m_reader.qualifiedName().toString();
        }
        m_prefixes.pop_back();
        if (texts.isEmpty())
            return;
        ++m_properties;
        m_writer.writeStartElement(element);
        if (list.isEmpty() || item.isEmpty())
            m_writer.writeCharacters(texts.join(QLatin1String("; ")));
        else
            writeList(list, item, texts);
        m_writer.writeEndElement();
    }

    void writeList(const QString& list, const QString& item, const QStringList& texts) {
        const bool isByLanguage = list.endsWith(QLatin1String("Alt"));
        m_writer.writeStartElement(list);
        for (const QString& text : texts) {
            m_writer.writeStartElement(item);
            if (isByLanguage)
                m_writer.writeAttribute(QStringLiteral("xml:lang"), QStringLiteral("x-default"));
            m_writer.writeCharacters(text);
            m_writer.writeEndElement();
        }
        m_writer.writeEndElement();
    }

    QXmlStreamReader m_reader;
    QString m_out;
    QXmlStreamWriter m_writer;
    const XmpSynonyms& m_synonyms;
    std::vector<QHash<QString, QString>> m_prefixes;
    bool m_changed = false;
    int m_properties = 0;
};

/// Packets are UTF-8 nearly always; ISO 16684-1, 7.1 allows the others.
QString decoded(const QByteArray& packet) {
    const auto encoding = QStringConverter::encodingForData(packet, u'<');
    return QStringDecoder(encoding.value_or(QStringConverter::Utf8)).decode(packet);
}

/// Returns whether the packet mentions a place in any form.
bool mentionsPlace(const QString& text) {
    return text.contains(QLatin1String("GPS"), Qt::CaseInsensitive) ||
           text.contains(QLatin1String("wgs84_pos")) || text.contains(QLatin1String("drone-dji"));
}

/// Returns where the outermost element begins; what stands before are processing instructions.
qsizetype startOfTree(const QString& text) {
    for (qsizetype at = text.indexOf(u'<'); at >= 0; at = text.indexOf(u'<', at + 1))
        if (at + 1 < text.size() && text[at + 1].isLetter())
            return at;
    return -1;
}

} // namespace

Result<QByteArray> changedXmpPacket(const QByteArray& packet, const PhotoChange& change) {
    if (packet.isEmpty() || change.dropsEverything)
        return QByteArray();
    const XmpSynonyms synonyms(change);
    if (synonyms.isEmpty())
        return packet;
    const QString text = decoded(packet);
    const bool placeAlone = change.dropsGps && !change.dropsExif && !change.dropsIptc;
    if (placeAlone && !mentionsPlace(text))
        return packet; // also one that is no XML
    const qsizetype start = startOfTree(text);
    const qsizetype lastTag = text.lastIndexOf(QLatin1String("</"));
    const qsizetype end = lastTag < 0 ? -1 : text.indexOf(u'>', lastTag) + 1;
    if (start < 0 || end <= start)
        return failure(ErrorCode::InvalidData, kReadPhotoTags, {}, kXmpUnreadable);
    XmpCopy copy(QStringView(text).sliced(start, end - start), synonyms);
    if (!copy.run())
        return failure(ErrorCode::InvalidData, kReadPhotoTags, {}, kXmpUnreadable);
    if (!copy.isChanged())
        return packet;
    if (!copy.hasProperties())
        return QByteArray();
    return (text.first(start) + copy.text() + text.sliced(end)).toUtf8();
}

namespace {

struct IptcProperty {
    std::uint8_t dataSet;
    const char* name;
    const char* list; ///< null for a plain text
};
constexpr IptcProperty kIptcProperties[] = {
    {5, "dc:title", "Alt"},
    {15, "photoshop:Category", nullptr},
    {20, "photoshop:SupplementalCategories", "Bag"},
    {25, "dc:subject", "Bag"},
    {40, "photoshop:Instructions", nullptr},
    {80, "dc:creator", "Seq"},
    {85, "photoshop:AuthorsPosition", nullptr},
    {90, "photoshop:City", nullptr},
    {95, "photoshop:State", nullptr},
    {101, "photoshop:Country", nullptr},
    {103, "photoshop:TransmissionReference", nullptr},
    {105, "photoshop:Headline", nullptr},
    {110, "photoshop:Credit", nullptr},
    {115, "photoshop:Source", nullptr},
    {116, "dc:rights", "Alt"},
    {120, "dc:description", "Alt"},
    {122, "photoshop:CaptionWriter", nullptr},
};

/// Returns the text without what no XML may hold: a packet with it is unreadable. The
/// stream writer leaves it out by itself.
QString inXml(QString text) {
    text.removeIf([](QChar c) {
        const bool isBlank = c == u'\t' || c == u'\n' || c == u'\r';
        return (c.unicode() < 0x20 && !isBlank) || c.unicode() >= 0xFFFE;
    });
    return text;
}

QString xmpPropertyText(const IptcProperty& property, const QStringList& texts) {
    const QString name = QLatin1String(property.name);
    if (property.list == nullptr)
        return QStringLiteral("<%1>%2</%1>")
            .arg(name, inXml(texts.join(QLatin1String("; "))).toHtmlEscaped());
    const QString list = QLatin1String(property.list);
    const QString language =
        list == QLatin1String("Alt") ? QStringLiteral(" xml:lang=\"x-default\"") : QString();
    QString items;
    for (const QString& text : texts)
        items += QStringLiteral("<rdf:li%1>").arg(language) + inXml(text).toHtmlEscaped() +
                 QStringLiteral("</rdf:li>");
    return QStringLiteral("<%1><rdf:%2>").arg(name, list) + items +
           QStringLiteral("</rdf:%2></%1>").arg(name, list);
}

constexpr char kEmptyPacket[] =
    "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>"
    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
    "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"></rdf:RDF></x:xmpmeta>"
    "<?xpacket end=\"w\"?>";

} // namespace

QByteArray xmpPacketWithIptc(const QByteArray& packet, const IptcChanges& texts,
                             std::vector<std::uint8_t>& left) {
    QByteArray added;
    for (const auto& [dataSet, values] : texts) {
        if (values.isEmpty())
            continue;
        const auto* row = std::find_if(std::begin(kIptcProperties), std::end(kIptcProperties),
                                       [number = dataSet](const IptcProperty& property) {
                                           return property.dataSet == number;
                                       });
        if (row == std::end(kIptcProperties))
            left.push_back(dataSet);
        else if (!packet.contains(row->name))
            added += xmpPropertyText(*row, values).toUtf8();
    }
    if (added.isEmpty())
        return packet;
    QByteArray result = packet.isEmpty() ? QByteArray(kEmptyPacket) : packet;
    const qsizetype end = result.lastIndexOf("</rdf:RDF>");
    if (end < 0)
        return xmpPacketWithIptc({}, texts, left);
    result.insert(end,
                  "<rdf:Description rdf:about=\"\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
                  "xmlns:photoshop=\"http://ns.adobe.com/photoshop/1.0/\">" +
                      added + "</rdf:Description>");
    return result;
}

} // namespace clipheave::platform
