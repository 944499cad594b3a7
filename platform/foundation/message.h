// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

namespace clipheave::platform {

/// Names a sentence that a user may read: lower-case words joined by hyphens, "disk-full". Declared
/// as a constant in the messages.h of its layer; the sentence stands in the tables of the fronts.
struct MessageCode {
    const char* id = "";

    friend bool operator==(MessageCode a, MessageCode b) { return qstrcmp(a.id, b.id) == 0; }
};

/// A sentence as data, so that each front words it in its own language: a code with what stands in
/// the gaps of the sentence, or the text of the system or a library, which is shown as it is.
class Message {
public:
    Message() = default;
    // NOLINTNEXTLINE(google-explicit-constructor): a code alone is a message
    Message(MessageCode code, QStringList arguments = {})
        : m_code(code), m_arguments(std::move(arguments)) {}
    // NOLINTNEXTLINE(google-explicit-constructor): so is a text of the system
    Message(const QString& verbatim) : m_verbatim(verbatim) {}

    [[nodiscard]] MessageCode code() const { return m_code; } ///< empty for a text of the system
    [[nodiscard]] bool isOurs() const { return *m_code.id != '\0'; } ///< a sentence of this program
    [[nodiscard]] const QStringList& arguments() const { return m_arguments; }
    [[nodiscard]] const QString& verbatim() const { return m_verbatim; }
    [[nodiscard]] bool isEmpty() const { return !isOurs() && m_verbatim.isEmpty(); }
    /// The sentence as the front words it.
    [[nodiscard]] QString text() const;

    friend bool operator==(const Message& a, const Message& b) = default;

private:
    MessageCode m_code;
    QStringList m_arguments;
    QString m_verbatim;
};

/// What a user should know of a result, in the order in which it was noticed.
using Notes = QList<Message>;
/// The sentences, separated by semicolons.
[[nodiscard]] QString textOf(const Notes& notes);

/// How this program words messages. Called on any thread; set once by the front before any other
/// thread begins. Without one a message reads as the words of its code and its arguments.
using Wording = std::function<QString(const Message& message)>;
void setWording(Wording wording);

/// Fills the gaps "%1" to "%9" of a sentence in one pass: a "%1" inside an argument stays. A gap
/// without an argument is left as it is; arguments beyond the gaps are dropped.
[[nodiscard]] QString fillGaps(const QString& sentence, const QStringList& arguments);

} // namespace clipheave::platform
