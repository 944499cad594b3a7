// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QWidget>

class QGridLayout;

namespace clipheave::app {

class FieldRow;

/// Field rows in one or two columns.
class Form : public QWidget {
    Q_OBJECT
public:
    enum class Order { ByColumns, ByRows };

    explicit Form(Order order, QWidget* parent = nullptr);
    void addRow(FieldRow* row);
    void setColumns(int columns);
    /// Brings the fields into the order of their rows for the Tab key; to be called when a row got
    /// another field.
    void refreshTabOrder();

private:
    void arrange();
    [[nodiscard]] QWidget* stopBefore() const;

    Order m_order;
    QGridLayout* m_grid;
    QList<FieldRow*> m_rows;
    int m_columns = 2;
};

} // namespace clipheave::app
