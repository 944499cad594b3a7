// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/jpeg_trailer.h"

#include "platform/image/write/motion_video.h"

#include <QByteArrayView>

#include <algorithm>
#include <optional>

namespace clipheave::platform {

namespace {

constexpr int kMostTries = 64; ///< of signatures in hostile bytes
constexpr std::uint64_t kSignSize = 4, kBoxSizeField = 4;

/// Returns where the next signature of an image or a video begins.
std::optional<std::uint64_t> nextSign(FileReader& reader, std::uint64_t at, std::uint64_t end) {
    static const QByteArray kImage("\xFF\xD8\xFF"), kVideo("ftyp");
    while (at + kSignSize <= end) {
        const ByteView bytes =
            reader.viewUpTo(at, std::min<std::uint64_t>(end - at, FileReader::kWindow));
        const QByteArrayView view(bytes.data(), static_cast<qsizetype>(bytes.size()));
        const qsizetype image = view.indexOf(kImage), video = view.indexOf(kVideo);
        if (image >= 0 || video >= 0)
            return at + static_cast<std::uint64_t>(
                            image < 0 || (video >= 0 && video < image) ? video : image);
        if (bytes.size() < kSignSize)
            break;
        at += bytes.size() - kSignSize + 1;
    }
    return std::nullopt;
}

/// Searches the bytes between two parts that are known.
class GapSearch {
public:
    GapSearch(FileReader& reader, JpegTrailer& found) : m_reader(reader), m_found(found) {}

    void run(std::uint64_t begin, std::uint64_t end) {
        std::uint64_t at = begin;
        while (const auto sign = nextSign(m_reader, at, end)) {
            if (++m_tries > kMostTries) {
                m_found.isSearched = false;
                return;
            }
            at = takeAt(*sign, begin, end);
        }
    }

private:
    /// Returns where the search goes on.
    std::uint64_t takeAt(std::uint64_t sign, std::uint64_t begin, std::uint64_t end) {
        if (m_reader.viewUpTo(sign, 1).u8(0) != 0xFF)
            return takeVideo(sign, begin, end);
        const auto image = readJpegImage(m_reader, sign);
        const auto imageEnd = image ? endOfJpegImage(m_reader, *image) : Result<std::uint64_t>(0);
        if (!imageEnd || *imageEnd <= sign || *imageEnd > end)
            return sign + 1;
        m_found.images.push_back({sign, *imageEnd - sign});
        return *imageEnd;
    }

    std::uint64_t takeVideo(std::uint64_t sign, std::uint64_t begin, std::uint64_t end) {
        if (sign < begin + kBoxSizeField)
            return sign + 1;
        const std::uint64_t start = sign - kBoxSizeField;
        const std::uint64_t videoEnd = endOfMotionVideo(m_reader, start, end);
        if (videoEnd <= sign)
            return sign + 1;
        m_found.videos.push_back({start, videoEnd - start});
        return videoEnd;
    }

    FileReader& m_reader;
    JpegTrailer& m_found;
    int m_tries = 0;
};

} // namespace

JpegTrailer jpegTrailer(FileReader& reader, std::uint64_t begin,
                        const std::vector<ByteSpan>& indexed) {
    JpegTrailer found;
    GapSearch search(reader, found);
    std::uint64_t at = begin;
    for (const ByteSpan& span : indexed) {
        if (span.offset < at)
            continue;
        search.run(at, span.offset);
        found.images.push_back(span);
        at = span.end();
    }
    search.run(at, reader.size());
    return found;
}

} // namespace clipheave::platform
