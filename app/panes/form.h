// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QWidget>

class QGridLayout;

namespace clipheave::app {

class FieldRow;

/// Field rows in two columns, in one below kOneColumnBelow px of width.
class Form : public QWidget {
    Q_OBJECT
public:
    enum class Order { ByColumns, ByRows };
    static constexpr int kOneColumnBelow = 508; ///< px inside the pane's padding

    explicit Form(Order order, QWidget* parent = nullptr);
    void addRow(FieldRow* row);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void arrange();

    Order m_order;
    QGridLayout* m_grid;
    QList<FieldRow*> m_rows;
    int m_columns = 2;
};

} // namespace clipheave::app
