// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/output_track.h"
#include "platform/foundation/result.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

namespace clipheave::platform {

/// Packets of an export's tracks on their way to the muxer: a thread of its own fills each lane,
/// one thread takes the packets in the order of their decoding times. Holds few packets at a time.
class PacketLanes {
public:
    explicit PacketLanes(std::size_t count) : m_lanes(count) {}

    // For the threads that fill. False: stop, nothing more is wanted.
    [[nodiscard]] bool announce(std::size_t lane, OutputTrack track);
    [[nodiscard]] bool push(std::size_t lane, Packet packet);
    void finish(std::size_t lane);
    void fail(const Error& error); ///< the first one counts; stops everything
    void stop();
    [[nodiscard]] bool stopped() const { return m_stopped; }
    void note(const Message& note); ///< drops an empty one and one that is known

    // For the thread that writes.
    enum class Outcome { Ready, Waiting, End, Failed };
    /// Ready once every lane has announced its track or ended without one.
    [[nodiscard]] Outcome waitForTracks(std::chrono::milliseconds patience);
    [[nodiscard]] std::size_t count() const { return m_lanes.size(); }
    [[nodiscard]] OutputTrack* track(std::size_t lane); ///< null: the lane ended without one
    /// Takes the packet that is next in time; Ready with it.
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
