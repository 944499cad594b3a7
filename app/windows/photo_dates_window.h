// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/windows/own_window.h"

class QGridLayout;
class QLabel;

namespace clipheave::app {

class EditField;

/// The dates of one photo as texts; empty for one that it does not have.
struct PhotoDateTexts {
    QString taken, digitised;  ///< of its metadata
    QString created, modified; ///< of its file
};

/// The dates of one photo: "changePhotoDateWindow". Movable, not modal. It shows; nothing is
/// changed from here yet, and it says so.
class PhotoDatesWindow : public OwnWindow {
    Q_OBJECT
public:
    explicit PhotoDatesWindow(QWidget* parent);
    /// Fills the window and brings it up.
    void present(const QString& name, const PhotoDateTexts& dates);

private:
    void addRow(const QString& label, QWidget* before, QWidget* after);
    QLabel* makeValue(const char* name);
    EditField* makeField(const char* name, const QString& label);
    void buildFoot();

    QGridLayout* m_grid;
    QLabel *m_taken, *m_digitised, *m_created, *m_modified;
    EditField *m_newTaken, *m_newDigitised;
};

} // namespace clipheave::app
