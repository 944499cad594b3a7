// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/theme/theme.h"

#include <QIconEngine>

namespace clipheave::app {

/// Draws one SVG of the resources in the colour of a token, as it is when it is drawn.
class IconEngine : public QIconEngine {
public:
    IconEngine(QString path, Token token);

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    /// `size` as QIcon gives it, which devicePixelsOf() knows.
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state,
                         qreal scale) override;
    [[nodiscard]] QIconEngine* clone() const override;
    bool isNull() override { return m_path.isEmpty(); }

private:
    [[nodiscard]] QPixmap draw(const QSize& pixels, QIcon::Mode mode, qreal ratio) const;

    QString m_path;
    Token m_token;
};

} // namespace clipheave::app
