// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <cstdint>
#include <optional>

namespace clipheave::platform {

/// Bounded view of bytes for parsers of hostile input. Every reader returns nothing instead of
/// reading outside; an offset may be any 64-bit number. Borrowed: the bytes must outlive the view.
class ByteView {
public:
    constexpr ByteView() = default;
    constexpr ByteView(const std::uint8_t* data, std::uint64_t size) : m_data(data), m_size(size) {}
    // Aliasing char and unsigned char is what the language allows.
    ByteView(QByteArrayView bytes)
        : m_data(static_cast<const std::uint8_t*>(static_cast<const void*>(bytes.data()))),
          m_size(static_cast<std::uint64_t>(bytes.size())) {}
    ByteView(const QByteArray& bytes) : ByteView(QByteArrayView(bytes)) {}

    [[nodiscard]] constexpr std::uint64_t size() const { return m_size; }
    [[nodiscard]] constexpr bool empty() const { return m_size == 0; }
    [[nodiscard]] constexpr const std::uint8_t* data() const { return m_data; }

    [[nodiscard]] constexpr bool has(std::uint64_t offset, std::uint64_t length) const {
        return offset <= m_size && length <= m_size - offset;
    }
    /// The part from `offset`, `length` bytes long; cut at the end, empty beyond it.
    [[nodiscard]] constexpr ByteView sub(std::uint64_t offset,
                                         std::uint64_t length = UINT64_MAX) const {
        if (offset >= m_size)
            return {};
        const std::uint64_t left = m_size - offset;
        return {m_data + offset, length < left ? length : left};
    }
    [[nodiscard]] constexpr std::optional<std::uint8_t> u8(std::uint64_t at) const {
        if (!has(at, 1))
            return std::nullopt;
        return m_data[at];
    }
    [[nodiscard]] constexpr std::optional<std::uint16_t> be16(std::uint64_t at) const {
        return big<std::uint16_t>(at);
    }
    [[nodiscard]] constexpr std::optional<std::uint32_t> be32(std::uint64_t at) const {
        return big<std::uint32_t>(at);
    }
    [[nodiscard]] constexpr std::optional<std::uint64_t> be64(std::uint64_t at) const {
        return big<std::uint64_t>(at);
    }
    [[nodiscard]] constexpr std::optional<std::uint16_t> le16(std::uint64_t at) const {
        return little<std::uint16_t>(at);
    }
    [[nodiscard]] constexpr std::optional<std::uint32_t> le32(std::uint64_t at) const {
        return little<std::uint32_t>(at);
    }
    [[nodiscard]] constexpr std::optional<std::uint64_t> le64(std::uint64_t at) const {
        return little<std::uint64_t>(at);
    }

    [[nodiscard]] QByteArrayView bytes() const {
        return {static_cast<const char*>(static_cast<const void*>(m_data)),
                static_cast<qsizetype>(m_size)};
    }
    [[nodiscard]] QByteArray toByteArray() const { return bytes().toByteArray(); }
    [[nodiscard]] bool startsWith(QByteArrayView text) const { return bytes().startsWith(text); }

private:
    template <class T> [[nodiscard]] constexpr std::optional<T> big(std::uint64_t at) const {
        if (!has(at, sizeof(T)))
            return std::nullopt;
        T value = 0;
        for (std::size_t i = 0; i < sizeof(T); ++i)
            value = static_cast<T>(static_cast<T>(value << 8) | m_data[at + i]);
        return value;
    }
    template <class T> [[nodiscard]] constexpr std::optional<T> little(std::uint64_t at) const {
        if (!has(at, sizeof(T)))
            return std::nullopt;
        T value = 0;
        for (std::size_t i = sizeof(T); i-- > 0;)
            value = static_cast<T>(static_cast<T>(value << 8) | m_data[at + i]);
        return value;
    }

    const std::uint8_t* m_data = nullptr;
    std::uint64_t m_size = 0;
};

} // namespace clipheave::platform
