// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "batch/rename_plan.h"

#include <QAbstractTableModel>
#include <QTableView>

#include <vector>

namespace clipheave::app {

/// The plan of a rename as a table, a row for each file.
class RenamePreviewModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { CurrentName, NewName, Note, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    void setPlan(std::vector<batch::RenameMove> plan);
    [[nodiscard]] const std::vector<batch::RenameMove>& plan() const { return m_plan; }
    /// How many files move to another folder.
    [[nodiscard]] int leavingCount() const;

    /// The name that the file will have.
    [[nodiscard]] static QString newName(const batch::RenameMove& move);
    /// The text beside that name: the folder that the file moves to, or that it keeps its name;
    /// empty for a new name in the same folder.
    [[nodiscard]] static QString hint(const batch::RenameMove& move);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

private:
    std::vector<batch::RenameMove> m_plan;
};

/// The table of current and new names. Nothing in it can be selected; the keys scroll it.
class RenamePreview : public QTableView {
    Q_OBJECT
public:
    static constexpr int kRowHeight = 28;

    explicit RenamePreview(QWidget* parent = nullptr);
    [[nodiscard]] RenamePreviewModel* previewModel() const { return m_model; }

Q_SIGNALS:
    /// The keyboard focus has come (true) or gone.
    void focusShown(bool shown);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void setUpHeader();

    RenamePreviewModel* m_model;
};

} // namespace clipheave::app
