// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/shared_fields.h"

#include <utility>

namespace clipheave::app {

namespace {

std::size_t indexOf(SharedFields::Place place) {
    return place == SharedFields::Place::Audio ? 0 : 1;
}

const QStringList& sharedNames() {
    static const QStringList names{
        QStringLiteral("titlelab"),     QStringLiteral("artistlab"),
        QStringLiteral("copyrightlab"), QStringLiteral("commentslab"),
        QStringLiteral("keywordslab"),  QStringLiteral("imageDescrilab")};
    return names;
}

} // namespace

SharedFields::SharedFields(QObject* parent) : QObject(parent) {
    for (const QString& name : sharedNames()) {
        auto* field = new EditField;
        field->setObjectName(name);
        m_fields[name].widget = field;
    }
}

SharedFields::~SharedFields() {
    // In a row they are that row's.
    for (const Field& field : m_fields)
        if (field.widget && !field.widget->parent())
            delete field.widget;
}

bool SharedFields::isShared(const QString& name) {
    return sharedNames().contains(name);
}

EditField* SharedFields::field(const QString& name) const {
    return m_fields.value(name).widget;
}

void SharedFields::addRow(Place place, const QString& name, FieldRow* row) {
    Field& field = m_fields[name];
    field.rows[indexOf(place)] = row;
    if (place == m_place)
        row->setField(field.widget);
}

void SharedFields::moveTo(Place place) {
    if (place == m_place)
        return;
    // Before the texts change: what happens on the way is the new form's.
    const Place from = std::exchange(m_place, place);
    for (Field& field : m_fields)
        move(field, from);
    Q_EMIT moved();
}

void SharedFields::move(Field& field, Place from) {
    EditField* widget = field.widget;
    field.contents[indexOf(from)] = {widget->shownText(), widget->text()};
    if (FieldRow* row = field.rows[indexOf(from)])
        row->setField(nullptr);
    // What one form says about a field is not true in the other.
    widget->setSuffix({});
    widget->setPlaceholderText({});
    widget->setFault({});
    const Content& content = field.contents[indexOf(m_place)];
    widget->setShownText(content.shown);
    widget->setText(content.typed);
    widget->setCursorPosition(0);
    if (FieldRow* row = field.rows[indexOf(m_place)])
        row->setField(widget);
}

void SharedFields::setShownText(Place place, const QString& name, const QString& text) {
    Field& field = m_fields[name];
    if (place == m_place)
        field.widget->setShownText(text);
    else
        field.contents[indexOf(place)] = {text, text};
}

QString SharedFields::text(Place place, const QString& name) const {
    const Field field = m_fields.value(name);
    return place == m_place ? field.widget->text() : field.contents[indexOf(place)].typed;
}

bool SharedFields::isChanged(Place place, const QString& name) const {
    const Field field = m_fields.value(name);
    const Content& content = field.contents[indexOf(place)];
    return place == m_place ? field.widget->isChanged() : content.typed != content.shown;
}

} // namespace clipheave::app
