// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/theme/theme.h"

#include <QAbstractButton>
#include <QFrame>
#include <QList>
#include <QWidget>

class QHBoxLayout;

namespace clipheave::app {

class ImageButton;

/// The title of a part of a form with a rule to its right and an optional note at the end.
class SectionHeading : public QWidget {
    Q_OBJECT
public:
    explicit SectionHeading(const QString& title, QWidget* parent = nullptr);
    /// Shows a note at the right end, behind an accent dot ("2 changed"); none when empty.
    void setNote(const QString& note);
    [[nodiscard]] QString note() const { return m_note; }
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_title, m_note;
};

/// A rounded box around controls that belong together. Lay them out inside as in any widget; the
/// padding is the layout's (16 sideways, 12 above and below).
class Card : public QFrame {
    Q_OBJECT
public:
    explicit Card(QWidget* parent = nullptr);
    /// Draws the accent outline of the chosen alternative.
    void setChosen(bool chosen);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool m_chosen = false;
};

/// A short state in a pill of 20 px, with an image, so that colour is never the only sign.
class Chip : public QWidget {
    Q_OBJECT
public:
    enum class Kind { Neutral, Ok, Bad, Running };
    explicit Chip(Kind kind = Kind::Neutral, const QString& text = {}, QWidget* parent = nullptr);
    /// `image` empty: the kind's own (none, check, fail, none).
    void set(Kind kind, const QString& text, const QString& image = {});
    [[nodiscard]] QString text() const { return m_text; }
    [[nodiscard]] Kind kind() const { return m_kind; }
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Kind m_kind;
    QString m_text, m_image;
};

/// Two or more buttons of which one is chosen.
class Segment : public QWidget {
    Q_OBJECT
public:
    enum class Size { Normal, Small };
    explicit Segment(Size size = Size::Normal, QWidget* parent = nullptr);
    ImageButton* addPart(const QString& label, const QString& image = {},
                         const QString& objectName = {});
    [[nodiscard]] ImageButton* part(int index) const;
    [[nodiscard]] int count() const;
    [[nodiscard]] int currentIndex() const { return m_current; }
    /// Chooses a part without a signal.
    void setCurrentIndex(int index);
    /// When off, a click changes nothing by itself: whoever gets the part's notification decides.
    void setSwitchesItself(bool switches) { m_switchesItself = switches; }

Q_SIGNALS:
    /// The user chose another part.
    void currentChanged(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void choose(int index);

    Size m_size;
    QHBoxLayout* m_layout;
    QList<ImageButton*> m_parts;
    int m_current = -1;
    bool m_switchesItself = true;
};

/// The storage folder at the right end of the tool bar: clicked() asks to open it; whoever owns the
/// chip shows the context menu (Qt::CustomContextMenu).
class StorageChip : public QAbstractButton {
    Q_OBJECT
public:
    explicit StorageChip(QWidget* parent = nullptr);
    /// Sets the path; its last component is shown, the whole path is the tool tip.
    void setPath(const QString& path);
    [[nodiscard]] QString path() const { return m_path; }
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_path;
};

/// The line between two groups of tools, with its gaps.
class ToolSeparator : public QWidget {
    Q_OBJECT
public:
    explicit ToolSeparator(QWidget* parent = nullptr);
    [[nodiscard]] QSize sizeHint() const override { return {maximumWidth(), height()}; }

protected:
    void paintEvent(QPaintEvent* event) override;
};

/// The band of 60 px below the title bar: tools in a row, separators between their groups.
class ToolBand : public QWidget {
    Q_OBJECT
public:
    static constexpr int kHeight = 60;
    explicit ToolBand(QWidget* parent = nullptr);
    void add(QWidget* widget);
    void addSeparator();
    void addStretch();
    void addGap(int width);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QHBoxLayout* m_layout;
};

/// Darkens a window below a sheet: covers its parent from `top` down until it is deleted. It takes
/// the clicks; the sheet is its own window above.
class Scrim : public QWidget {
    Q_OBJECT
public:
    explicit Scrim(QWidget* window, int top = 36);
    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void cover();

    int m_top;
};

} // namespace clipheave::app
