// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QWidget>

namespace clipheave::app {

/// A text field that knows the text it was filled with.
class EditField : public QLineEdit {
    Q_OBJECT
public:
    explicit EditField(QWidget* parent = nullptr);

    /// Fills the field; the text is also what isChanged() compares with. Nothing is edited yet.
    void setShownText(const QString& remembered);
    [[nodiscard]] QString shownText() const { return m_shown; }
    [[nodiscard]] bool isChanged() const { return text() != m_shown; }
    /// A short unit at the right end ("m", "N").
    void setSuffix(const QString& suffix);
    [[nodiscard]] QString suffix() const { return m_suffix; }
    /// Marks a text that cannot be written, with the reason as tool tip; an empty one takes the
    /// mark away.
    void setFault(const QString& reason);
    [[nodiscard]] QString fault() const { return m_fault; }

Q_SIGNALS:
    /// The user begins to edit: once between focus-in and focus-out, before the text changes (after
    /// it when the change comes from the context menu).
    void editingBegun();
    void changeMarkChanged(bool changed);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void begin();
    void refreshMark();
    void applyMarks();
    void fadeEnd();

    QString m_shown;
    QString m_suffix, m_fault;
    bool m_begun = false;
    bool m_marked = false;
};

/// A label and its control in one line of 28 px. The row begins with kGutter px for the mark of a
/// changed field: place it that much further left than its label is to stand.
class FieldRow : public QWidget {
    Q_OBJECT
public:
    static constexpr int kGutter = 10;
    static constexpr int kLabelWidth = 76; ///< for the design's font; grows with the system's

    FieldRow(const QString& label, EditField* field, int labelWidth = kLabelWidth,
             QWidget* parent = nullptr);
    /// For controls that carry no mark (pop-ups, several fields).
    FieldRow(const QString& label, QWidget* control, int labelWidth = kLabelWidth,
             QWidget* parent = nullptr);
    /// Puts another field of the same meaning into the row, or none. The old one leaves the layout
    /// but is not deleted.
    void setField(EditField* field);
    [[nodiscard]] EditField* field() const { return m_field; }
    [[nodiscard]] QLabel* label() const { return m_label; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void build(const QString& label, QWidget* control, int labelWidth);
    void showMark(bool changed);

    QLabel* m_label = nullptr;
    QPointer<EditField> m_field;
};

} // namespace clipheave::app
