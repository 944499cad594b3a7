// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/collation_key.h"

#include <QChar>

#include <algorithm>
#include <cstring>

namespace clipheave::media {

namespace {

// First byte of a key.
enum KeyClass : std::uint8_t { EmptyText, PunctuationFirst, OtherText };

// A run of digits is one unit: this byte, its length without leading zeros, its digits. No other
// unit begins between '0' and '9', so that against other characters a run stands where its digits
// do.
constexpr std::uint8_t kDigitRun = '0';
/// Lengths from here on take four further bytes.
constexpr std::size_t kLongRun = 0xFF;
constexpr std::size_t kUsualKeyBytes = 32;

bool isKeyDigit(QStringView text, qsizetype i) {
    return i < text.size() && text[i] >= u'0' && text[i] <= u'9';
}

char32_t nextCodePoint(QStringView text, qsizetype& i) {
    const QChar first = text[i++];
    if (first.isHighSurrogate() && i < text.size() && text[i].isLowSurrogate())
        return QChar::surrogateToUcs4(first, text[i++]);
    return first.unicode();
}

char32_t folded(char32_t c) {
    if (c < 0x80) // nearly all of them
        return c >= U'A' && c <= U'Z' ? c + 0x20 : c;
    return QChar::toCaseFolded(c);
}

/// Up to here the whole keys are compared at once.
constexpr std::size_t kSmallGroup = 12;
constexpr std::uint32_t kHeadBytes = 8;

std::uint64_t headOf(const std::uint8_t* bytes, std::size_t length) {
    std::uint64_t head = 0;
    for (std::size_t i = 0; i < sizeof head; ++i)
        head = head << 8 | (i < length ? bytes[i] : 0u);
    return head;
}

} // namespace

bool startsWithPunctuation(QStringView text) {
    qsizetype i = 0;
    return !text.isEmpty() && QChar::isPunct(nextCodePoint(text, i));
}

CollationKeys::CollationKeys(std::size_t expectedTexts) {
    m_entries.reserve(expectedTexts);
    m_bytes.reserve(expectedTexts * kUsualKeyBytes);
}

void CollationKeys::appendDigitRun(QStringView text, qsizetype& i) {
    while (isKeyDigit(text, i) && text[i] == u'0')
        ++i;
    const qsizetype start = i;
    while (isKeyDigit(text, i))
        ++i;
    const auto length = static_cast<std::size_t>(i - start);
    m_bytes.push_back(kDigitRun);
    m_bytes.push_back(static_cast<std::uint8_t>(std::min(length, kLongRun)));
    if (length >= kLongRun)
        for (int shift = 24; shift >= 0; shift -= 8)
            m_bytes.push_back(static_cast<std::uint8_t>(length >> shift & 0xFF));
    for (qsizetype k = start; k < i; ++k)
        m_bytes.push_back(static_cast<std::uint8_t>(text[k].unicode()));
}

/// UTF-8, also of lone surrogates: its bytes stand in the order of the code points.
void CollationKeys::appendCodePoint(char32_t c) {
    const auto put = [this](char32_t byte) { m_bytes.push_back(static_cast<std::uint8_t>(byte)); };
    if (c < 0x80)
        return put(c);
    if (c < 0x800) {
        put(0xC0 | c >> 6);
        return put(0x80 | (c & 0x3F));
    }
    if (c < 0x10000) {
        put(0xE0 | c >> 12);
    } else {
        put(0xF0 | c >> 18);
        put(0x80 | (c >> 12 & 0x3F));
    }
    put(0x80 | (c >> 6 & 0x3F));
    put(0x80 | (c & 0x3F));
}

void CollationKeys::append(QStringView text) {
    const std::size_t offset = m_bytes.size();
    m_bytes.push_back(text.isEmpty()                ? EmptyText
                      : startsWithPunctuation(text) ? PunctuationFirst
                                                    : OtherText);
    for (qsizetype i = 0; i < text.size();) {
        if (isKeyDigit(text, i))
            appendDigitRun(text, i);
        else
            appendCodePoint(folded(nextCodePoint(text, i)));
    }
    const std::size_t length = m_bytes.size() - offset;
    m_entries.push_back({0, offset, static_cast<std::uint32_t>(length),
                         static_cast<std::uint32_t>(m_entries.size())});
}

int CollationKeys::compare(const Entry& a, const Entry& b) const {
    const int order = std::memcmp(m_bytes.data() + a.offset, m_bytes.data() + b.offset,
                                  std::min(a.length, b.length));
    if (order != 0)
        return order < 0 ? -1 : 1;
    return a.length < b.length ? -1 : a.length > b.length ? 1 : 0;
}

int CollationKeys::compare(std::size_t a, std::size_t b) const {
    return compare(m_entries[a], m_entries[b]);
}

/// Sorts by the eight bytes at the group's depth; what is equal in them and goes on becomes a
/// further group. The keys of a library begin alike ("IMG_", one artist), and following each to its
/// bytes in every comparison would cost a cache miss a time.
void CollationKeys::sortGroup(std::vector<Entry>& entries, const Group& group,
                              std::vector<Group>& further) const {
    const auto begin = entries.begin() + static_cast<std::ptrdiff_t>(group.begin);
    const auto end = entries.begin() + static_cast<std::ptrdiff_t>(group.end);
    if (group.end - group.begin <= kSmallGroup) {
        std::sort(begin, end, [this](const Entry& a, const Entry& b) {
            const int order = compare(a, b);
            return order != 0 ? order < 0 : a.position < b.position;
        });
        return;
    }
    // Bytes from the depth on, as far as they decide here: a key that ends stands first.
    const auto left = [&group](const Entry& entry) {
        return std::min(entry.length - group.depth, kHeadBytes + 1);
    };
    for (auto entry = begin; entry != end; ++entry)
        entry->head = headOf(m_bytes.data() + entry->offset + group.depth, left(*entry));
    std::sort(begin, end, [&left](const Entry& a, const Entry& b) {
        if (a.head != b.head)
            return a.head < b.head;
        if (left(a) != left(b))
            return left(a) < left(b);
        return a.position < b.position;
    });
    for (auto run = begin; run != end;) {
        const auto next = std::find_if(run, end, [&](const Entry& entry) {
            return entry.head != run->head || left(entry) != left(*run);
        });
        if (left(*run) > kHeadBytes && next - run > 1)
            further.push_back({static_cast<std::size_t>(run - entries.begin()),
                               static_cast<std::size_t>(next - entries.begin()),
                               group.depth + kHeadBytes});
        run = next;
    }
}

std::vector<CollationKeys::Entry> CollationKeys::sorted() const {
    std::vector<Entry> entries = m_entries;
    std::vector<Group> groups = {{0, entries.size(), 0}};
    while (!groups.empty()) {
        const Group group = groups.back();
        groups.pop_back();
        sortGroup(entries, group, groups);
    }
    return entries;
}

} // namespace clipheave::media
