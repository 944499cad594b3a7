// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/windows/own_window.h"

#include <QPointer>

class QLineEdit;

namespace clipheave::app {

class Scrim;

/// A window-modal sheet: centred under the tool bar of its parent's window, which is dimmed below
/// its title bar meanwhile. It goes where the window goes and cannot be dragged. Esc and the close
/// button reject it, Return presses its default button.
class Sheet : public OwnWindow {
    Q_OBJECT
public:
    /// `size` in px at a system font of 13 px; the sheet is smaller in a window that has less room.
    Sheet(const QString& title, QSize size, QWidget* parent);

    /// Shows the sheet; its first field has the focus, with all of its text selected.
    void open() override;

protected:
    /// Sets what has the focus when the sheet opens.
    void setFirstField(QLineEdit* field);

    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void place();

    QSize m_size;
    QPointer<QLineEdit> m_firstField;
    QPointer<Scrim> m_scrim;
};

} // namespace clipheave::app
