// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/read/user_data.h"

#include "platform/isobmff/read/item_lists.h"
#include "platform/isobmff/read/item_texts.h"
#include "platform/isobmff/structural_user_data.h"

#include <algorithm>
#include <array>
#include <vector>

// Sources: QuickTime File Format, "User Data Atoms"; 3GPP TS 26.244 clause 8 for the ISO boxes.
namespace clipheave::platform {

namespace {

constexpr std::uint64_t kVersionFlags = 4;
constexpr std::size_t kMaxTextRecords = 256; // languages of one text

enum class UserDataForm {
    Raw,
    Text,           ///< language, text
    TextAfterEight, ///< entity, criteria, language, text
    TextAfterSix,   ///< entity, table, language, text
    BareText,
    Year,
    Keywords,
    Image,
    Rating,
    Location,
};

struct UserDataRow {
    std::uint32_t type;
    UserDataForm form;
};

constexpr std::array kIsoUserData{
    UserDataRow{fourCc("titl"), UserDataForm::Text},
    UserDataRow{fourCc("dscp"), UserDataForm::Text},
    UserDataRow{fourCc("cprt"), UserDataForm::Text},
    UserDataRow{fourCc("perf"), UserDataForm::Text},
    UserDataRow{fourCc("auth"), UserDataForm::Text},
    UserDataRow{fourCc("gnre"), UserDataForm::Text},
    UserDataRow{fourCc("coll"), UserDataForm::Text},
    UserDataRow{fourCc("albm"), UserDataForm::Text},
    UserDataRow{fourCc("manu"), UserDataForm::Text},
    UserDataRow{fourCc("modl"), UserDataForm::Text},
    UserDataRow{fourCc("swre"), UserDataForm::Text},
    UserDataRow{fourCc("rtng"), UserDataForm::TextAfterEight},
    UserDataRow{fourCc("clsf"), UserDataForm::TextAfterSix},
    UserDataRow{fourCc("date"), UserDataForm::BareText},
    UserDataRow{fourCc("yrrc"), UserDataForm::Year},
    UserDataRow{fourCc("kywd"), UserDataForm::Keywords},
    UserDataRow{fourCc("thmb"), UserDataForm::Image},
    UserDataRow{fourCc("urat"), UserDataForm::Rating},
    UserDataRow{fourCc("loci"), UserDataForm::Location},
    UserDataRow{fourCc("ades"), UserDataForm::Raw},
};

/// Handled elsewhere, or padding.
bool isNoUserDataItem(std::uint32_t type) {
    return type == fourCc("meta") || type == fourCc("free") || type == fourCc("skip") ||
           type == fourCc("wide") || isStructuralUserData(type);
}

const UserDataRow* isoUserDataRow(std::uint32_t type) {
    const auto* row = std::find_if(kIsoUserData.begin(), kIsoUserData.end(),
                                   [type](const UserDataRow& r) { return r.type == type; });
    return row == kIsoUserData.end() ? nullptr : row;
}

/// A text that was written without a length or language: nothing when it is not plain text.
std::optional<QString> plainText(ByteView bytes) {
    while (!bytes.empty() && bytes.data()[bytes.size() - 1] == 0)
        bytes = bytes.sub(0, bytes.size() - 1);
    const bool hasControls =
        std::any_of(bytes.data(), bytes.data() + bytes.size(), [](std::uint8_t byte) {
            return byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r';
        });
    if (bytes.empty() || hasControls || !bytes.bytes().isValidUtf8())
        return std::nullopt;
    return QString::fromUtf8(bytes.bytes());
}

/// The bytes of a string up to its NUL, one or two bytes wide, and where the next field begins.
struct IsoString {
    QString text;
    std::uint64_t next = 0;
};
IsoString isoString(ByteView bytes, std::uint64_t at) {
    const ByteView rest = bytes.sub(at);
    const bool wide = rest.be16(0) == 0xFEFF || rest.be16(0) == 0xFFFE;
    const std::uint64_t unit = wide ? 2 : 1;
    std::uint64_t end = 0;
    while (rest.has(end, unit) && (wide ? *rest.be16(end) != 0 : *rest.u8(end) != 0))
        end += unit;
    return {decodeUnicode(rest.sub(0, end)), at + end + unit};
}

QString isoLanguage(ByteView bytes, std::uint64_t at) {
    const int code = bytes.be16(at).value_or(0) & 0x7FFF;
    return code < kMacLanguageEnd ? QString() : languageTag(static_cast<std::uint16_t>(code));
}

/// A box that begins with version 0 and no flags.
bool hasVersionFlags(ByteView payload) {
    return payload.be32(0) == 0;
}

bool setIsoText(AVMetadataItem& item, ByteView payload, std::uint64_t skipped) {
    if (!hasVersionFlags(payload)) {
        const auto bare = plainText(payload);
        if (bare)
            setTextValue(item, *bare);
        return bare.has_value();
    }
    const std::uint64_t language = kVersionFlags + skipped;
    if (!payload.has(language, 2))
        return false;
    setTextValue(item, isoString(payload, language + 2).text);
    item.extendedLanguageTag = isoLanguage(payload, language);
    return true;
}

bool setIsoNumber(AVMetadataItem& item, std::optional<int> number) {
    if (number)
        item.value = static_cast<double>(*number);
    return number.has_value();
}

bool setIsoKeywords(AVMetadataItem& item, ByteView payload) {
    // Deliberate: one bare string is what the platform itself has written here.
    if (!hasVersionFlags(payload))
        return setIsoText(item, payload, 0);
    const auto count = payload.u8(kVersionFlags + 2);
    if (!count)
        return false;
    QStringList words;
    std::uint64_t at = kVersionFlags + 3;
    for (int i = 0; i < *count; ++i) {
        const auto length = payload.u8(at);
        if (!length || !payload.has(at + 1, *length))
            break;
        words += decodeUnicode(payload.sub(at + 1, *length));
        at += 1u + *length;
    }
    setTextValue(item, words.join(QLatin1String(", ")));
    item.extendedLanguageTag = isoLanguage(payload, kVersionFlags);
    return true;
}

bool setIsoLocation(AVMetadataItem& item, ByteView payload) {
    const IsoString name = isoString(payload, kVersionFlags + 2);
    const std::uint64_t numbers = name.next + 1; // behind the role
    if (!hasVersionFlags(payload) || !payload.has(numbers, 12))
        return false;
    const auto fixed = [&](std::uint64_t at) {
        return static_cast<std::int32_t>(*payload.be32(numbers + at)) / 65536.0;
    };
    // Deliberate: the altitude is printed even when it is zero, so that three signs stand; readers
    // of the text find the longitude by them.
    setTextValue(item, QString::asprintf("%+08.4f%+09.4f%+08.3f/", fixed(4), fixed(0), fixed(8)));
    item.extendedLanguageTag = isoLanguage(payload, kVersionFlags);
    return true;
}

bool setIsoValue(AVMetadataItem& item, ByteView payload, UserDataForm form) {
    switch (form) {
    case UserDataForm::Text:
        return setIsoText(item, payload, 0);
    case UserDataForm::TextAfterEight:
        return setIsoText(item, payload, 8);
    case UserDataForm::TextAfterSix:
        return setIsoText(item, payload, 6);
    case UserDataForm::Keywords:
        return setIsoKeywords(item, payload);
    case UserDataForm::Location:
        return setIsoLocation(item, payload);
    case UserDataForm::Year:
        return setIsoNumber(item, payload.be16(kVersionFlags));
    case UserDataForm::Rating:
        return setIsoNumber(item, payload.u8(kVersionFlags + 3));
    case UserDataForm::BareText:
        // Some writers give it a version and flags like the others.
        return setIsoText(item, payload, 0);
    case UserDataForm::Raw:
    case UserDataForm::Image:
        break;
    }
    return false;
}

/// Where the image of a `thmb` begins: behind version and flags, in some files behind its type
/// too.
std::uint64_t imageOffset(ByteView head) {
    for (const std::uint64_t at : {0u, 4u, 8u}) {
        if (head.sub(at).startsWith("\xFF\xD8\xFF") || head.sub(at).startsWith("\x89PNG"))
            return at;
    }
    return head.size() >= kVersionFlags && hasVersionFlags(head) ? kVersionFlags : 0;
}

void addIsoBox(ItemSink& sink, AVMetadataItem item, const Box& box, UserDataForm form) {
    const std::uint64_t payloadSize = box.payloadSize();
    FileSlice raw{sink.reader.path(), box.payloadOffset(), payloadSize};
    if (form == UserDataForm::Image) {
        raw.offset +=
            imageOffset(sink.reader.viewUpTo(raw.offset, std::min<std::uint64_t>(payloadSize, 16)));
        raw.length = box.end() - raw.offset;
    }
    const bool hasForm = form != UserDataForm::Raw && form != UserDataForm::Image;
    const bool done =
        hasForm && setIsoValue(item, sink.reader.viewUpTo(box.payloadOffset(), payloadSize), form);
    if (!done)
        setRawValue(item, sink.reader, raw);
    sink.add(sink.userData, std::move(item));
}

struct TextRecord {
    QString text;
    std::uint16_t language = 0;
};

QString recordText(ByteView bytes, std::uint16_t language) {
    const bool macintosh = language < kMacLanguageEnd || language == kMacLanguageUnspecified;
    // Deliberate: phones write UTF-8 under the Macintosh code 0. Text that is valid UTF-8 beyond
    // ASCII makes no sense as MacRoman.
    if (macintosh && !bytes.bytes().isValidUtf8() && bytes.be16(0) != 0xFEFF)
        return decodeMacRoman(bytes);
    return decodeUnicode(bytes);
}

/// The records of a ©-coded text; none when the payload has another layout.
std::vector<TextRecord> textRecords(ByteView payload) {
    constexpr std::uint64_t kRecordHead = 4;
    std::vector<TextRecord> records;
    std::uint64_t at = 0;
    while (payload.has(at, kRecordHead) && records.size() < kMaxTextRecords) {
        std::uint64_t length = *payload.be16(at);
        const std::uint16_t language = *payload.be16(at + 2);
        at += kRecordHead;
        // Some writers count the four bytes in.
        if (!payload.has(at, length) && length >= kRecordHead)
            length -= kRecordHead;
        if (!payload.has(at, length))
            break;
        records.push_back({recordText(payload.sub(at, length), language), language});
        at += length;
        // Padding behind the last record.
        if (payload.be32(at) == 0)
            break;
    }
    return records;
}

/// A ©-coded box that holds an iTunes value box instead of text records.
bool addValueBox(ItemSink& sink, AVMetadataItem item, ByteView payload, const Box& box) {
    constexpr std::uint64_t kValueHead = 16;
    if (payload.be32(4) != fourCc("data") || payload.size() < kValueHead)
        return false;
    const FileSlice slice{sink.reader.path(), box.payloadOffset() + kValueHead,
                          payload.size() - kValueHead};
    setTypedValue(item, sink.reader, payload.be32(8).value_or(0), slice, false);
    sink.add(sink.userData, std::move(item));
    return true;
}

void addTextBox(ItemSink& sink, AVMetadataItem item, const Box& box) {
    const ByteView payload = sink.reader.viewUpTo(box.payloadOffset(), box.payloadSize());
    if (addValueBox(sink, item, payload, box))
        return;
    const std::vector<TextRecord> records = textRecords(payload);
    for (const TextRecord& record : records) {
        setTextValue(item, record.text);
        item.extendedLanguageTag = languageTag(record.language);
        sink.add(sink.userData, item);
    }
    if (!records.empty())
        return;
    if (const auto bare = plainText(payload))
        setTextValue(item, *bare);
    else
        setRawValue(item, sink.reader,
                    {sink.reader.path(), box.payloadOffset(), box.payloadSize()});
    sink.add(sink.userData, std::move(item));
}

void addUserDataBox(ItemSink& sink, const Box& box) {
    constexpr std::uint32_t kCopyrightSign = 0xA9;
    const UserDataRow* row = isoUserDataRow(box.type);
    const bool asUdta = sink.quickTime && !row;
    const QByteArray code = fourCcText(box.type).toLatin1();
    AVMetadataItem item = newItem(internKey(asUdta ? "udta" : "uiso", code));
    item.source = sourceOf(sink.reader, box);
    if (row)
        addIsoBox(sink, std::move(item), box, row->form);
    else if (box.type >> 24 == kCopyrightSign)
        addTextBox(sink, std::move(item), box);
    else
        addIsoBox(sink, std::move(item), box, UserDataForm::Raw);
}

} // namespace

void readUserData(ItemSink& sink, const Box& udta) {
    FileBoxWalker walker(sink.reader, udta.payloadOffset(), udta.end());
    while (const auto box = walker.next()) {
        if (box->type == fourCc("meta"))
            readMetaItems(sink, *box);
        else if (!isNoUserDataItem(box->type) && !box->cut)
            addUserDataBox(sink, *box);
    }
    if (!walker.problem().isEmpty())
        sink.noteProblem(walker.problem());
}

} // namespace clipheave::platform
