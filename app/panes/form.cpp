// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/form.h"

#include "app/widgets/edit_field.h"

#include <QGridLayout>

#include <algorithm>

namespace clipheave::app {

namespace {

constexpr int kRowGap = 8, kColumnGap = 20;

} // namespace

Form::Form(Order order, QWidget* parent)
    : QWidget(parent), m_order(order), m_grid(new QGridLayout(this)) {
    // Rows begin with room for the mark of a changed field, left of where labels stand.
    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setVerticalSpacing(kRowGap);
    m_grid->setHorizontalSpacing(kColumnGap - FieldRow::kGutter);
}

void Form::addRow(FieldRow* row) {
    m_rows.append(row);
    arrange();
}

void Form::setColumns(int columns) {
    if (columns == m_columns)
        return;
    m_columns = columns;
    arrange();
}

void Form::arrange() {
    const int count = static_cast<int>(m_rows.size());
    const int perColumn = (count + m_columns - 1) / m_columns;
    for (int i = 0; i < count; ++i) {
        const bool byRows = m_order == Order::ByRows || m_columns == 1;
        const int row = byRows ? i / m_columns : i % perColumn;
        const int column = byRows ? i % m_columns : i / perColumn;
        m_grid->addWidget(m_rows[i], row, column);
    }
    refreshTabOrder();
    m_grid->setColumnStretch(0, 1);
    m_grid->setColumnStretch(1, m_columns == 2 ? 1 : 0);
}

void Form::refreshTabOrder() {
    QWidget* before = stopBefore();
    for (const FieldRow* row : m_rows) {
        if (row->field() == nullptr)
            continue;
        if (before != nullptr)
            setTabOrder(before, row->field());
        before = row->field();
    }
}

/// What the Tab key reaches before this form; null when there is nothing. Only widgets that can
/// have the focus can be put into an order.
QWidget* Form::stopBefore() const {
    const auto isOwn = [this](const QWidget* widget) {
        return std::any_of(m_rows.begin(), m_rows.end(),
                           [widget](const FieldRow* row) { return row->field() == widget; });
    };
    QWidget* stop = previousInFocusChain();
    while (stop != this && (stop->focusPolicy() == Qt::NoFocus || isOwn(stop)))
        stop = stop->previousInFocusChain();
    return stop != this ? stop : nullptr;
}

} // namespace clipheave::app
