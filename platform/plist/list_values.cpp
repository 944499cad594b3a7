// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/plist/list_values.h"

#include "platform/foundation/utc.h"
#include "platform/plist/messages.h"
#include "platform/plist/property_list.h"

#include <QDateTime>

#include <cstdlib>
#include <limits>

namespace clipheave::platform {

namespace {

constexpr qint64 kEpoch = 978'307'200; ///< 2001-01-01 in seconds of Unix

QString textAt(const char* text) {
    return QString::fromUtf8(text);
}

QString textOfNode(plist_t node) {
    return textAt(plist_get_string_ptr(node, nullptr));
}

QVariant dateOfNode(plist_t node) {
    std::int32_t seconds = 0, microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    // What a date becomes that 32 bits cannot count.
    if (seconds == std::numeric_limits<std::int32_t>::min())
        return {};
    return QDateTime::fromSecsSinceEpoch(kEpoch + seconds, kUtc);
}

QVariant dataOfNode(plist_t node) {
    std::uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return QByteArray(bytes, static_cast<qsizetype>(length));
}

/// The state of a walk through a container, as libplist allocates it.
struct IteratorFree {
    void operator()(void* iterator) const noexcept { std::free(iterator); }
};
using Iterator = std::unique_ptr<void, IteratorFree>;

QVariantList listOfNode(plist_t node) {
    plist_array_iter made = nullptr;
    plist_array_new_iter(node, &made);
    const Iterator iterator(made);
    QVariantList list;
    plist_t item = nullptr;
    for (plist_array_next_item(node, made, &item); item; plist_array_next_item(node, made, &item))
        list.append(valueOfNode(item));
    return list;
}

QVariantMap mapOfNode(plist_t node) {
    plist_dict_iter made = nullptr;
    plist_dict_new_iter(node, &made);
    const Iterator iterator(made);
    QVariantMap map;
    char* key = nullptr;
    plist_t item = nullptr;
    for (plist_dict_next_item(node, made, &key, &item); item;
         plist_dict_next_item(node, made, &key, &item)) {
        const std::unique_ptr<char, IteratorFree> owned(key);
        map.insert(textAt(key), valueOfNode(item));
    }
    return map;
}

/// The text as XML can hold it: without control characters and halves of surrogate pairs.
QByteArray writable(const QString& text) {
    QString kept;
    kept.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            kept += text.mid(i++, 2);
        else if ((c >= u' ' && !c.isSurrogate() && c < u'\uFFFE') || c == u'\t' || c == u'\n' ||
                 c == u'\r')
            kept += c;
    }
    return kept.toUtf8();
}

tl::unexpected<Error> cannotHold(const QVariant& value) {
    return failure(ErrorCode::InvalidArgument, kWritePropertyList, {},
                   Message(kNoPropertyListValue, {QString::fromLatin1(value.typeName())}));
}

Result<PlistNode> nodeOfList(const QVariantList& list, int level) {
    PlistNode array(plist_new_array());
    for (const QVariant& value : list) {
        auto node = nodeOfValue(value, level);
        if (!node)
            return node;
        if (*node)
            plist_array_append_item(array.get(), node->release());
    }
    return array;
}

Result<PlistNode> nodeOfMap(const QVariantMap& map, int level) {
    PlistNode dictionary(plist_new_dict());
    for (auto entry = map.begin(); entry != map.end(); ++entry) {
        auto node = nodeOfValue(entry.value(), level);
        if (!node)
            return node;
        // libplist reads no list with a key without characters, although it writes one.
        const QByteArray key = writable(entry.key());
        if (*node && !key.isEmpty())
            plist_dict_set_item(dictionary.get(), key.constData(), node->release());
    }
    return dictionary;
}

Result<PlistNode> nodeOfDate(const QVariant& value) {
    const qint64 seconds = value.toDateTime().toSecsSinceEpoch() - kEpoch;
    // The smallest number stands for what cannot be counted.
    if (!value.toDateTime().isValid() || seconds <= std::numeric_limits<std::int32_t>::min() ||
        seconds > std::numeric_limits<std::int32_t>::max())
        return cannotHold(value);
    return PlistNode(plist_new_date(static_cast<std::int32_t>(seconds), 0));
}

PlistNode nodeOfData(const QByteArray& bytes) {
    return PlistNode(plist_new_data(bytes.constData(), static_cast<std::uint64_t>(bytes.size())));
}

} // namespace

QVariant valueOfNode(plist_t node) {
    std::uint64_t number = 0;
    double real = 0;
    std::uint8_t truth = 0;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        plist_get_bool_val(node, &truth);
        return truth != 0;
    case PLIST_UINT:
        plist_get_uint_val(node, &number);
        return static_cast<qlonglong>(number);
    case PLIST_REAL:
        plist_get_real_val(node, &real);
        return real;
    case PLIST_STRING:
        return textOfNode(node);
    case PLIST_DATE:
        return dateOfNode(node);
    case PLIST_DATA:
        return dataOfNode(node);
    case PLIST_ARRAY:
        return listOfNode(node);
    case PLIST_DICT:
        return mapOfNode(node);
    default: // keyed archives, nothing
        return {};
    }
}

Result<PlistNode> nodeOfValue(const QVariant& value, int levelsAbove) {
    switch (value.typeId()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        return PlistNode();
    case QMetaType::Bool:
        return PlistNode(plist_new_bool(value.toBool() ? 1 : 0));
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        return PlistNode(newPlistInteger(value.toLongLong()));
    case QMetaType::Float:
    case QMetaType::Double:
        return PlistNode(plist_new_real(value.toDouble()));
    case QMetaType::QString:
        return PlistNode(plist_new_string(writable(value.toString()).constData()));
    case QMetaType::QByteArray:
        return nodeOfData(value.toByteArray());
    case QMetaType::QDateTime:
        return nodeOfDate(value);
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
    case QMetaType::QVariantMap:
        break;
    default:
        return cannotHold(value);
    }
    if (levelsAbove >= kMostPropertyListLevels)
        return failure(ErrorCode::LimitExceeded, kWritePropertyList, {},
                       Message(kPropertyListTooDeep, {QString::number(kMostPropertyListLevels)}));
    return value.typeId() == QMetaType::QVariantMap ? nodeOfMap(value.toMap(), levelsAbove + 1)
                                                    : nodeOfList(value.toList(), levelsAbove + 1);
}

} // namespace clipheave::platform
