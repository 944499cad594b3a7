// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/message.h"

namespace clipheave::platform {

namespace {

Wording& installedWording() {
    static Wording wording;
    return wording;
}

QString plainText(const Message& message) {
    QString text = QString::fromLatin1(message.code().id).replace(u'-', u' ');
    if (!message.arguments().isEmpty())
        text += QLatin1String(": ") + message.arguments().join(QLatin1String(", "));
    return text;
}

} // namespace

void setWording(Wording wording) {
    installedWording() = std::move(wording);
}

QString Message::text() const {
    if (*m_code.id == '\0')
        return m_verbatim;
    return installedWording() ? installedWording()(*this) : plainText(*this);
}

QString textOf(const Notes& notes) {
    QStringList texts;
    for (const Message& note : notes)
        if (const QString text = note.text(); !text.isEmpty())
            texts.append(text);
    return texts.join(QLatin1String("; "));
}

QString fillGaps(const QString& sentence, const QStringList& arguments) {
    QString filled;
    for (qsizetype i = 0; i < sentence.size(); ++i) {
        const qsizetype gap = sentence[i] == u'%' && i + 1 < sentence.size()
                                  ? qsizetype{sentence[i + 1].unicode()} - u'1'
                                  : -1;
        if (gap >= 0 && gap < 9 && gap < arguments.size()) {
            filled += arguments[gap];
            ++i;
        } else {
            filled += sentence[i];
        }
    }
    return filled;
}

} // namespace clipheave::platform
