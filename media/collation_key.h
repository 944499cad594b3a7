// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>

#include <cstdint>
#include <vector>

namespace clipheave::media {

/// Returns true when the first character is punctuation in the Unicode sense ("_", "-", "(", "'" …,
/// but not "$" or "+", which are symbols).
[[nodiscard]] bool startsWithPunctuation(QStringView text);

/// Sort keys of many texts in one block of memory. Bytewise, the keys stand as the media list's
/// text columns ascend: empty texts, texts that begin with punctuation, all others; within a class
/// as platform::compareNumeric() without regard to case, and 0 there is equality here.
class CollationKeys {
public:
    struct Entry {
        std::uint64_t head;     ///< the first eight bytes of the key, big-endian; sorting uses it
        std::uint64_t offset;   ///< of the whole key
        std::uint32_t length;   ///< bytes
        std::uint32_t position; ///< in the order of the append() calls
    };

    explicit CollationKeys(std::size_t expectedTexts);
    void append(QStringView text);
    /// Returns the entries in ascending order of their keys, equal ones in the order of their
    /// positions.
    [[nodiscard]] std::vector<Entry> sorted() const;
    /// Returns -1, 0 or 1 for the texts appended at the two positions.
    [[nodiscard]] int compare(std::size_t a, std::size_t b) const;

private:
    /// Sorts the entries `begin` to `end`, whose keys are the same in their first `depth` bytes.
    struct Group {
        std::size_t begin, end;
        std::uint32_t depth;
    };
    [[nodiscard]] int compare(const Entry& a, const Entry& b) const;
    void sortGroup(std::vector<Entry>& entries, const Group& group,
                   std::vector<Group>& further) const;
    void appendDigitRun(QStringView text, qsizetype& i);
    void appendCodePoint(char32_t c);

    std::vector<std::uint8_t> m_bytes;
    std::vector<Entry> m_entries;
};

} // namespace clipheave::media
