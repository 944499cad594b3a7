// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/waveform.h"

#include "app/theme/theme.h"
#include "platform/media/model/media_engine.h"

#include <QCache>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace clipheave::app {

namespace {

constexpr int kPeakCount = 1024; // more than bars fit into the widest pane
constexpr int kKeptFiles = 256;
constexpr double kAbove = 12, kBelow = 4;        // px around the bars
constexpr double kBarWidth = 2, kBarPitch = 3.5; // px

/// Main thread only.
QCache<QString, QByteArray>& measuredFiles() {
    static QCache<QString, QByteArray> cache(kKeptFiles);
    return cache;
}

/// Loudest of the peaks that lie between two parts (0 to 1) of the time, 0 to 1.
double loudest(const QByteArray& peaks, double from, double to) {
    const auto count = static_cast<double>(peaks.size());
    const auto begin = static_cast<qsizetype>(from * count);
    const auto end = std::min(static_cast<qsizetype>(std::ceil(to * count)), peaks.size());
    int largest = 0;
    for (qsizetype i = begin; i < end; ++i)
        largest = std::max<int>(largest, static_cast<unsigned char>(peaks[i]));
    return largest / 255.0;
}

} // namespace

PeakLoader::PeakLoader(QObject* parent) : QObject(parent) {
    m_pool.setMaxThreadCount(1);
    m_pool.setThreadPriority(QThread::LowPriority);
}

PeakLoader::~PeakLoader() {
    cancel();
    m_pool.waitForDone();
}

void PeakLoader::cancel() {
    if (m_stop)
        m_stop->store(true);
    m_stop.reset();
}

void PeakLoader::load(const QString& path, const QDateTime& changed) {
    cancel();
    const QString key = QStringLiteral("%1:%2").arg(changed.toMSecsSinceEpoch()).arg(path);
    if (const QByteArray* known = measuredFiles().object(key)) {
        Q_EMIT loaded(*known);
        return;
    }
    m_stop = std::make_shared<std::atomic_bool>(false);
    m_pool.start([this, path, key, stop = m_stop] {
        const auto goOn = [&stop] { return !stop->load(); };
        const auto engine = goOn() ? platform::mediaEngine() : nullptr;
        QByteArray peaks;
        if (engine && *engine != nullptr && goOn())
            peaks = (*engine)->audioPeaks(path, kPeakCount, goOn).value_or(QByteArray());
        QMetaObject::invokeMethod(this, [this, key, peaks, stop] {
            if (stop->load())
                return; // another file was asked for meanwhile
            measuredFiles().insert(key, new QByteArray(peaks));
            Q_EMIT loaded(peaks);
        });
    });
}

Waveform::Waveform(QWidget* parent) : ScrubLine(parent) {
    setAccessibleName(tr("Waveform"));
    connect(&m_loader, &PeakLoader::loaded, this, [this](const QByteArray& peaks) {
        m_peaks = peaks;
        setVisible(!peaks.isEmpty());
        update();
    });
}

void Waveform::showFile(const QString& path, const QDateTime& changed) {
    m_peaks.clear();
    setVisible(true);
    m_loader.load(path, changed);
    update();
}

void Waveform::clear() {
    m_loader.cancel();
    m_peaks.clear();
    setVisible(false);
}

void Waveform::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF area = QRectF(rect()).adjusted(kEnd, kAbove, -kEnd, -kBelow);
    const int bars = std::max(1, static_cast<int>(area.width() / kBarPitch));
    const double full = std::max(loudest(m_peaks, 0, 1), 1.0 / 255);
    const double place = isEnabled() ? placeOf(sliderPosition()) : 0;
    for (int bar = 0; bar < bars; ++bar) {
        const double part = loudest(m_peaks, double(bar) / bars, double(bar + 1) / bars) / full;
        const double height = std::max(kBarWidth, part * area.height());
        const double x = area.left() + (bar + 0.5) * area.width() / bars;
        const Token token = m_peaks.isEmpty() ? Token::line2
                            : x < place       ? Token::accent
                                              : Token::line3;
        painter.setBrush(Theme::colorOf(token, true));
        painter.drawRoundedRect(
            QRectF(x - kBarWidth / 2, area.center().y() - height / 2, kBarWidth, height), 1, 1);
    }
    if (!showsRing())
        return;
    painter.setPen(QPen(Theme::colorOf(Token::accent, true), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 7, 7);
}

} // namespace clipheave::app
