// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>

namespace clipheave::app {

/// A line with the template of file names: plain text, its tag words shown as tinted chips.
class TemplateField : public QLineEdit {
    Q_OBJECT
public:
    explicit TemplateField(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void tintWords();
};

} // namespace clipheave::app
