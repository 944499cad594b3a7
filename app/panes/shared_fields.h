// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/widgets/edit_field.h"

#include <QHash>
#include <QPointer>
#include <QStringList>

#include <array>

namespace clipheave::app {

/// The fields that the forms of audio files and of photos have in common, as one set of widgets:
/// they stand in the form that is shown, so that a field found by its name is the visible one. Each
/// form keeps its own texts and what it was filled with while the fields are in the other.
class SharedFields : public QObject {
    Q_OBJECT
public:
    enum class Place { Audio, Photo };

    /// Makes the fields; they stand in the audio form first.
    explicit SharedFields(QObject* parent = nullptr);
    ~SharedFields() override;

    [[nodiscard]] static bool isShared(const QString& name);
    /// Returns the widget of this name, null for a field that is not shared.
    [[nodiscard]] EditField* field(const QString& name) const;
    /// Sets the row of a form in which the field stands while it is there.
    void addRow(Place place, const QString& name, FieldRow* row);

    /// Moves the fields into the other form, with the texts and the marks that they had there.
    void moveTo(Place place);
    [[nodiscard]] Place place() const { return m_place; }

    /// As EditField::setShownText(), for the form's own text of the field.
    void setShownText(Place place, const QString& name, const QString& text);
    [[nodiscard]] QString text(Place place, const QString& name) const;
    [[nodiscard]] bool isChanged(Place place, const QString& name) const;

Q_SIGNALS:
    void moved();

private:
    struct Content {
        QString shown, typed;
    };
    struct Field {
        QPointer<EditField> widget;
        std::array<QPointer<FieldRow>, 2> rows; ///< by place
        std::array<Content, 2> contents;        ///< by place; out of date where the widget is
    };
    void move(Field& field, Place from);

    QHash<QString, Field> m_fields;
    Place m_place = Place::Audio;
};

} // namespace clipheave::app
