// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QHBoxLayout;

namespace clipheave::app {

class ToneLabel;

/// A movable window with a head of its own (title and close button), a body and, once asked for, a
/// foot for its buttons. Esc and the close button reject it. The head drags it.
class OwnWindow : public QDialog {
    Q_OBJECT
public:
    static constexpr int kHeadHeight = 40;
    static constexpr int kFootHeight = 56;

    OwnWindow(const QString& title, QWidget* parent);

    /// Shows another title than the one it was made with.
    void setTitle(const QString& title);
    /// A quiet text behind the title; none when empty.
    void setSubtitle(const QString& text);
    /// Lay the contents out in here.
    [[nodiscard]] QWidget* body() const { return m_body; }
    /// Put the buttons here from left to right; begins with a stretch.
    QHBoxLayout* foot();

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    QWidget* m_body;
    ToneLabel *m_title, *m_subtitle;
    QWidget* m_foot = nullptr;
    bool m_placed = false;
};

} // namespace clipheave::app
