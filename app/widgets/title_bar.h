// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QWidget>

#include <optional>

class QLabel;
class QMenuBar;

namespace clipheave::app {

class ImageButton;

/// The 36 px at the top of a frameless window: mark, menus, name in the middle, three buttons. The
/// empty space drags the window, a double click maximises it. Minimise and resize act by
/// themselves; the close button only posts "MyClosebuttonMouseDown".
class TitleBar : public QWidget {
    Q_OBJECT
public:
    static constexpr int kHeight = 36;

    explicit TitleBar(QWidget* parent = nullptr);

    [[nodiscard]] QMenuBar* menuBar() const { return m_menuBar; }
    [[nodiscard]] ImageButton* minimiseButton() const { return m_minimise; }
    [[nodiscard]] ImageButton* resizeButton() const { return m_resize; }
    [[nodiscard]] ImageButton* closeButton() const { return m_close; }
    void setName(const QString& name);
    [[nodiscard]] QString name() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void toggleMaximised();
    void placeName();

    std::optional<QPoint> m_pressed; ///< until the window begins to move
    QMenuBar* m_menuBar;
    QLabel* m_name;
    ImageButton* m_minimise;
    ImageButton* m_resize;
    ImageButton* m_close;
};

} // namespace clipheave::app
