// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QStringList>

namespace clipheave::app {

class Button;

/// A window-modal question or note with exactly the texts it is given, blanks included.
class AlertBox : public QDialog {
    Q_OBJECT
public:
    /// `buttons`: the default first, then the alternates; drawn from right to left. Deliberate: a
    /// button that deletes is never the default, Cancel is, so that Return destroys nothing.
    AlertBox(QWidget* parent, const QString& message, const QString& informative,
             const QStringList& buttons);

    [[nodiscard]] QString message() const { return m_message; }
    [[nodiscard]] QString informative() const { return m_informative; }
    /// Returns the texts in the order given.
    [[nodiscard]] QStringList buttonTexts() const { return m_texts; }
    [[nodiscard]] int defaultIndex() const { return m_default; }
    /// Returns the index that Esc chooses: "Cancel" where there is one, else the only button, else
    /// -1.
    [[nodiscard]] int escapeIndex() const;

    /// Shows the alert and waits. Returns the index of the pressed button in `buttons`.
    static int run(QWidget* parent, const QString& message, const QString& informative,
                   const QStringList& buttons);

    void reject() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void build();

    QString m_message;
    QString m_informative;
    QStringList m_texts;
    int m_default = 0;
    Button* m_defaultButton = nullptr;
};

} // namespace clipheave::app
