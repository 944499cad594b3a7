// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/export_time.h"
#include "platform/foundation/result.h"

#include <QByteArray>
#include <QStringList>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

namespace clipheave::platform {

using CodecParameters = std::unique_ptr<AVCodecParameters, Releaser<avcodec_parameters_free>>;

/// What the writer must know of a track before its first packet.
struct OutputTrack {
    CodecParameters parameters;
    AVRational timeBase{1, 1};
    AVRational frameRate{0, 1};
    AVRational aspect{0, 1};
    QByteArray language;
    std::optional<std::array<double, 9>> displayMatrix;
    struct SideData {
        AVPacketSideDataType type;
        QByteArray bytes;
    };
    std::vector<SideData> sideData;
};

/// The tracks of an export on their way to the writer: each is filled by a thread of its own, one
/// thread takes the packets in the order of their decoding times. Holds few packets at a time.
class ExportLanes {
public:
    explicit ExportLanes(std::size_t count) : m_lanes(count) {}

    // For the threads that fill. False: stop, nothing is wanted any more.
    [[nodiscard]] bool announce(std::size_t lane, OutputTrack track);
    [[nodiscard]] bool push(std::size_t lane, Packet packet);
    void finish(std::size_t lane);
    void fail(const Error& error); ///< the first one counts; stops everything
    void stop();
    [[nodiscard]] bool stopped() const { return m_stopped; }
    void note(const Message& note); ///< empty texts are dropped

    // For the thread that writes.
    enum class Outcome { Ready, Waiting, End, Failed };
    /// Ready once every lane has announced its track or ended without one.
    [[nodiscard]] Outcome waitForTracks(std::chrono::milliseconds patience);
    [[nodiscard]] std::size_t count() const { return m_lanes.size(); }
    [[nodiscard]] OutputTrack* track(std::size_t lane); ///< null: the lane ended without one
    /// The packet that is next in time, Ready with it.
    [[nodiscard]] Outcome take(std::chrono::milliseconds patience, Packet& packet,
                               std::size_t& lane);
    [[nodiscard]] Error error() const;
    [[nodiscard]] Notes notes() const;

private:
    struct Lane {
        std::deque<Packet> packets;
        std::size_t bytes = 0;
        std::optional<OutputTrack> track;
        bool finished = false;
        bool blocked = false; ///< its thread waits for half of the room
    };
    [[nodiscard]] bool isEarlier(const Lane& a, const Lane& b) const;
    [[nodiscard]] std::optional<std::size_t> nextLane() const;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Lane> m_lanes;
    std::optional<Error> m_error;
    Notes m_notes;
    std::atomic<bool> m_stopped = false;
};

} // namespace clipheave::platform
