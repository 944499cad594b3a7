// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRectF>
#include <QString>
#include <QWidget>

class QPainter;

namespace clipheave::platform {
class MpvPlayer;
}

namespace clipheave::app {

/// The player's frame, letterboxed. With the focus: Space plays and pauses, comma and period step
/// one frame, Left and Right go 5 s. A TransportBar below it completes the card.
class PlayerView : public QWidget {
    Q_OBJECT
public:
    enum class Corners {
        Top,  ///< a transport bar follows below
        All,  ///< stands alone
        None, ///< full screen
    };

    explicit PlayerView(QWidget* parent = nullptr);
    ~PlayerView() override;

    /// Opens the file, paused at its first frame. The same file again starts over.
    void setFile(const QString& path);
    void clear();
    [[nodiscard]] platform::MpvPlayer* player() const { return m_player; }
    void setCorners(Corners corners);

    [[nodiscard]] QSize sizeHint() const override { return {336, 189}; }
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override { return width * 9 / 16; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void paintContent(QPainter& painter);
    /// Returns where the frame is drawn, in logical px.
    [[nodiscard]] QRectF imageRect() const;

    platform::MpvPlayer* m_player;
    QString m_failure; ///< shown in the well
    Corners m_corners = Corners::Top;
    bool m_focusRing = false;
};

} // namespace clipheave::app
