// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/write/render_items.h"

#include "platform/foundation/text.h"
#include "platform/isobmff/box.h"
#include "platform/isobmff/data_codes.h"
#include "platform/isobmff/messages.h"

#include <QLocale>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>

namespace clipheave::platform {
namespace {

QByteArray renderData(DataCode::Value code, QByteArrayView value, std::uint16_t language = 0) {
    QByteArray payload(8, '\0');
    qToBigEndian(static_cast<quint32>(code), payload.data());
    qToBigEndian(language, payload.data() + 6);
    return renderBox(fourCc("data"), payload + value.toByteArray());
}

QByteArray renderInteger(qint64 value, int width) {
    QByteArray bytes(8, '\0');
    qToBigEndian(value, bytes.data());
    return bytes.right(width);
}

std::optional<DataCode::Value> imageCode(QByteArrayView bytes) {
    if (bytes.startsWith("\xFF\xD8\xFF"))
        return DataCode::Jpeg;
    if (bytes.startsWith("\x89PNG"))
        return DataCode::Png;
    if (bytes.startsWith("GIF8"))
        return DataCode::Gif;
    if (bytes.startsWith("BM"))
        return DataCode::Bmp;
    return std::nullopt;
}

QByteArray renderArtwork(const AVMetadataItem& item, Notes& notes) {
    const QByteArray bytes = item.dataValue();
    const auto code = imageCode(bytes);
    if (!code) {
        notes << kArtworkFormatNotStored;
        return {};
    }
    return renderData(*code, bytes);
}

/// "n" or "n/m" as the binary pair; empty for any other text.
QByteArray renderPair(const QString& text, qsizetype size) {
    const QStringList parts = text.trimmed().split(u'/');
    std::array<ushort, 2> numbers{};
    if (parts.isEmpty() || parts.size() > 2)
        return {};
    for (qsizetype i = 0; i < parts.size(); ++i) {
        bool good = false;
        numbers.at(static_cast<std::size_t>(i)) = parts[i].trimmed().toUShort(&good);
        if (!good)
            return {};
    }
    QByteArray pair(size, '\0');
    qToBigEndian(numbers[0], pair.data() + 2);
    qToBigEndian(numbers[1], pair.data() + 4);
    return renderData(DataCode::Untyped, pair);
}

struct IntegerAtom {
    std::uint32_t code;
    int width; ///< bytes
};
constexpr std::array kIntegerAtoms{
    IntegerAtom{fourCc("cpil"), 1}, IntegerAtom{fourCc("pgap"), 1}, IntegerAtom{fourCc("pcst"), 1},
    IntegerAtom{fourCc("hdvd"), 1}, IntegerAtom{fourCc("shwm"), 1}, IntegerAtom{fourCc("stik"), 1},
    IntegerAtom{fourCc("rtng"), 1}, IntegerAtom{fourCc("akID"), 1}, IntegerAtom{fourCc("tmpo"), 2},
    IntegerAtom{fourCc("tvsn"), 4}, IntegerAtom{fourCc("tves"), 4}, IntegerAtom{fourCc("cnID"), 4},
};

QByteArray renderListText(std::uint32_t code, const AVMetadataItem& item) {
    const QString text = item.stringValue();
    for (const IntegerAtom& atom : kIntegerAtoms) {
        bool good = false;
        const qint64 value = atom.code == code ? text.toLongLong(&good) : 0;
        if (good)
            return renderData(DataCode::SignedInteger, renderInteger(value, atom.width));
    }
    return text.isNull() ? QByteArray() : renderData(DataCode::Utf8, text.toUtf8());
}

QByteArray renderListValue(std::uint32_t code, const AVMetadataItem& item, Notes& notes) {
    if (code == fourCc("covr"))
        return renderArtwork(item, notes);
    const bool isPair = code == fourCc("trkn") || code == fourCc("disk");
    if (const auto* bytes = std::get_if<QByteArray>(&item.value)) {
        // Bytes are the payload of the binary codes; elsewhere text when they can be read as text.
        if (isPair || item.stringValue().isNull())
            return renderData(DataCode::Untyped, *bytes);
    } else if (isPair) {
        QByteArray pair = renderPair(item.stringValue(), code == fourCc("trkn") ? 8 : 6);
        if (!pair.isEmpty())
            return pair;
    }
    return renderListText(code, item);
}

/// "com.apple.iTunes.NAME": the domain, then the name.
QByteArray renderNamedEntry(const QByteArray& key, const AVMetadataItem& item, Notes& notes) {
    constexpr QByteArrayView domain("com.apple.iTunes");
    const qsizetype dot = key.startsWith(domain) ? domain.size() : key.lastIndexOf('.');
    const QByteArray data = renderListValue(0, item, notes);
    if (dot <= 0 || dot + 1 >= key.size() || data.isEmpty())
        return {};
    const QByteArray versionAndFlags(4, '\0');
    return renderBox(fourCc("----"),
                     renderBox(fourCc("mean"), versionAndFlags + key.left(dot)) +
                         renderBox(fourCc("name"), versionAndFlags + key.mid(dot + 1)) + data);
}

struct DataTypeName {
    QLatin1String name; ///< behind "com.apple.metadata.datatype."
    DataCode::Value code;
};
constexpr std::array kDataTypes{
    DataTypeName{QLatin1String("raw-data"), DataCode::Untyped},
    DataTypeName{QLatin1String("UTF-8"), DataCode::Utf8},
    DataTypeName{QLatin1String("UTF-16"), DataCode::Utf16},
    DataTypeName{QLatin1String("JPEG"), DataCode::Jpeg},
    DataTypeName{QLatin1String("PNG"), DataCode::Png},
    DataTypeName{QLatin1String("BMP"), DataCode::Bmp},
    DataTypeName{QLatin1String("GIF"), DataCode::Gif},
    DataTypeName{QLatin1String("float32"), DataCode::Float32},
    DataTypeName{QLatin1String("float64"), DataCode::Float64},
};

DataCode::Value dataCode(const AVMetadataItem& item) {
    constexpr QLatin1String prefix("com.apple.metadata.datatype.");
    if (item.dataType.startsWith(prefix))
        for (const DataTypeName& type : kDataTypes)
            if (QStringView(item.dataType).mid(prefix.size()) == type.name)
                return type.code;
    if (std::holds_alternative<QString>(item.value))
        return DataCode::Utf8;
    return imageCode(item.dataValue()).value_or(DataCode::Untyped);
}

} // namespace

QByteArray renderBox(std::uint32_t type, QByteArrayView payload) {
    QByteArray box(8, '\0');
    qToBigEndian(static_cast<quint32>(payload.size() + 8), box.data());
    qToBigEndian(type, box.data() + 4);
    box += payload;
    return box;
}

QByteArray renderCarriedBox(const QByteArray& bytes) {
    const ByteView view(bytes);
    const auto box = parseBoxHeader(view.sub(0, 16), 0, view.size());
    if (!box)
        return {};
    if (!box->cut && !box->toEnd)
        return bytes.left(static_cast<qsizetype>(box->size));
    return renderBox(box->type, QByteArrayView(bytes).sliced(box->headerSize));
}

QByteArray renderListEntry(const QByteArray& key, const AVMetadataItem& item, Notes& notes) {
    if (key.size() != 4)
        return renderNamedEntry(key, item, notes);
    const std::uint32_t code = qFromBigEndian<quint32>(key.constData());
    const QByteArray data = renderListValue(code, item, notes);
    return data.isEmpty() ? data : renderBox(code, data);
}

QByteArray renderKeyData(const AVMetadataItem& item, Notes& notes) {
    const std::uint16_t language =
        item.extendedLanguageTag.isEmpty() || item.extendedLanguageTag == QLatin1String("und")
            ? std::uint16_t{0}
            : packedLanguage(item.extendedLanguageTag);
    if (const double* number = std::get_if<double>(&item.value)) {
        QByteArray bytes(8, '\0');
        const DataCode::Value code = dataCode(item);
        if (code == DataCode::Float32) {
            qToBigEndian(static_cast<float>(*number), bytes.data());
            return renderData(code, bytes.left(4), language);
        }
        const bool whole = std::nearbyint(*number) == *number && std::abs(*number) < 0x1p53;
        if (code != DataCode::Float64 && whole)
            return renderData(DataCode::SignedInteger,
                              renderInteger(static_cast<qint64>(*number), 8), language);
        qToBigEndian(*number, bytes.data());
        return renderData(DataCode::Float64, bytes, language);
    }
    const QByteArray bytes = item.dataValue();
    if (bytes.isNull()) {
        notes << Message(kValueNotStored, {item.key});
        return {};
    }
    return renderData(dataCode(item), bytes, language);
}

std::uint16_t packedLanguage(const QString& tag) {
    QString code = tag.section(u'-', 0, 0).toLower();
    if (code.size() == 2)
        code = QLocale::languageToCode(QLocale::codeToLanguage(code), QLocale::ISO639Part2T);
    const auto isLetter = [](QChar c) { return c >= u'a' && c <= u'z'; };
    if (code.size() != 3 || !std::all_of(code.begin(), code.end(), isLetter))
        code = QStringLiteral("und");
    unsigned packed = 0;
    for (const QChar letter : code)
        packed = packed << 5 | (letter.unicode() - 0x60U);
    return static_cast<std::uint16_t>(packed);
}

} // namespace clipheave::platform
