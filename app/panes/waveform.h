// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panes/scrub_line.h"

#include <QByteArray>
#include <QDateTime>
#include <QThreadPool>

#include <atomic>
#include <memory>

namespace clipheave::app {

/// Measures how loud a file is over its time, in the background, one file at once.
class PeakLoader : public QObject {
    Q_OBJECT
public:
    explicit PeakLoader(QObject* parent = nullptr);
    /// Stops what is being measured and waits for that.
    ~PeakLoader() override;

    /// Drops what was asked for before. loaded() comes from the event loop, or at once for a file
    /// that was measured and has not changed since (`changed`, its modification date).
    void load(const QString& path, const QDateTime& changed);
    void cancel();

Q_SIGNALS:
    /// As MediaEngine::audioPeaks(); empty when the file cannot be measured.
    void loaded(const QByteArray& peaks);

private:
    std::shared_ptr<std::atomic_bool> m_stop; ///< of what was asked for last
    QThreadPool m_pool;
};

/// The playback position on the waveform; hidden while there is none. Heights are relative to the
/// loudest place of the file: it is for finding places, not for measuring.
class Waveform : public ScrubLine {
    Q_OBJECT
public:
    explicit Waveform(QWidget* parent = nullptr);

    /// Shows a flat line until the file is measured; hides when it cannot be.
    void showFile(const QString& path, const QDateTime& changed);
    void clear();
    [[nodiscard]] QByteArray peaks() const { return m_peaks; }

    [[nodiscard]] QSize sizeHint() const override { return {240, kHeight}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {64, kHeight}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    static constexpr int kHeight = 64; // px

    PeakLoader m_loader;
    QByteArray m_peaks;
};

} // namespace clipheave::app
