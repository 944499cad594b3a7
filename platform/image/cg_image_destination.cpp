// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/cg_image_destination.h"

#include "platform/foundation/atomic_file.h"
#include "platform/image/gif_palette.h"
#include "platform/image/messages.h"

#include <gif_lib.h>

#include <algorithm>
#include <array>
#include <bit>

namespace clipheave::platform {

namespace {

constexpr int kMostGifSide = 65535, kMostLoops = 65535;
constexpr qsizetype kGifBuffer = 1 << 20;

tl::unexpected<Error> gifFailure(ErrorCode code, const QString& path, const Message& detail) {
    return failure(code, kWriteGif, path, detail);
}

struct ColourMapFreer {
    void operator()(ColorMapObject* map) const noexcept { GifFreeMapObject(map); }
};
using ColourMap = std::unique_ptr<ColorMapObject, ColourMapFreer>;

/// Sizes of colour tables are powers of two.
ColourMap colourMapOf(const GifPalette& palette) {
    const auto& colours = palette.colours();
    const std::size_t size = std::max<std::size_t>(std::bit_ceil(colours.size()), 2);
    ColourMap map(GifMakeMapObject(static_cast<int>(size), nullptr));
    for (std::size_t i = 0; map != nullptr && i < size; ++i) {
        const GifColour colour = i < colours.size() ? colours[i] : GifColour{};
        map->Colors[i] = {colour.red, colour.green, colour.blue};
    }
    return map;
}

} // namespace

struct CGImageDestination::State {
    /// Closes what EGifOpen() opened; by then all has been written or the file is dropped anyway.
    struct Closer {
        void operator()(GifFileType* gif) const noexcept { EGifCloseFile(gif, nullptr); }
    };
    QString path;
    int announced = 0, added = 0;
    int width = 0, height = 0;
    CGImageGIFProperties properties;
    std::optional<AtomicFile> file;
    QByteArray pending;
    std::optional<Error> error; ///< the first failure
    std::unique_ptr<GifFileType, Closer> gif;

    static int append(GifFileType* gif, const GifByteType* bytes, int length);
    void flush();
    [[nodiscard]] bool begin(const RawFrame& image);
    [[nodiscard]] bool putLoops();
    [[nodiscard]] bool put(const RawFrame& image);
};

int CGImageDestination::State::append(GifFileType* gif, const GifByteType* bytes, int length) {
    auto& state = *static_cast<State*>(gif->UserData);
    state.pending.append(reinterpret_cast<const char*>(bytes), length);
    if (state.pending.size() >= kGifBuffer)
        state.flush();
    return state.error ? 0 : length;
}

void CGImageDestination::State::flush() {
    if (!error)
        if (const auto written = file->write(pending); !written)
            error = written.error();
    pending.resize(0);
}

bool CGImageDestination::State::putLoops() {
    // The application extension that all players know for the number of repetitions.
    const auto loops = static_cast<unsigned>(*properties.kCGImagePropertyGIFLoopCount);
    const std::array<GifByteType, 3> block{1, static_cast<GifByteType>(loops & 255),
                                           static_cast<GifByteType>(loops >> 8)};
    return EGifPutExtensionLeader(gif.get(), APPLICATION_EXT_FUNC_CODE) == GIF_OK &&
           EGifPutExtensionBlock(gif.get(), 11, "NETSCAPE2.0") == GIF_OK &&
           EGifPutExtensionBlock(gif.get(), static_cast<int>(block.size()), block.data()) ==
               GIF_OK &&
           EGifPutExtensionTrailer(gif.get()) == GIF_OK;
}

bool CGImageDestination::State::begin(const RawFrame& image) {
    width = image.width;
    height = image.height;
    gif.reset(EGifOpen(this, &append, nullptr));
    if (gif == nullptr)
        return false;
    EGifSetGifVersion(gif.get(), true);
    return EGifPutScreenDesc(gif.get(), width, height, 8, 0, nullptr) == GIF_OK &&
           (!properties.kCGImagePropertyGIFLoopCount || putLoops());
}

bool CGImageDestination::State::put(const RawFrame& image) {
    const GifPalette palette = GifPalette::of(image);
    QByteArray indices = ditheredIndices(image, palette);
    const ColourMap map = colourMapOf(palette);
    // The image stays until the next covers it; no delay.
    const std::array<GifByteType, 4> control{DISPOSE_DO_NOT << 2, 0, 0, 0};
    if (map == nullptr ||
        EGifPutExtension(gif.get(), GRAPHICS_EXT_FUNC_CODE, static_cast<int>(control.size()),
                         control.data()) != GIF_OK ||
        EGifPutImageDesc(gif.get(), 0, 0, width, height, false, map.get()) != GIF_OK)
        return false;
    auto* row = reinterpret_cast<GifByteType*>(indices.data());
    for (int y = 0; y < height; ++y, row += width)
        if (EGifPutLine(gif.get(), row, width) != GIF_OK)
            return false;
    return true;
}

CGImageDestination::CGImageDestination() : m_state(std::make_unique<State>()) {
}

CGImageDestination::~CGImageDestination() = default;

Result<std::unique_ptr<CGImageDestination>>
CGImageDestinationCreateWithURL(const QString& path, const QString& type, int count) {
    if (type != QStringView(kUTTypeGIF))
        return gifFailure(ErrorCode::NotSupported, path, type);
    if (count < 1)
        return gifFailure(ErrorCode::InvalidArgument, path, kNoFrames);
    auto file = AtomicFile::create(path);
    if (!file)
        return tl::unexpected(file.error());
    std::unique_ptr<CGImageDestination> destination(new CGImageDestination);
    destination->m_state->path = path;
    destination->m_state->announced = count;
    destination->m_state->file = std::move(*file);
    return destination;
}

void CGImageDestinationTakePermissionsOf(CGImageDestination& destination, const QString& source) {
    if (destination.m_state->file)
        destination.m_state->file->takePermissionsOf(FileReference::ofPath(source));
}

Result<void> CGImageDestinationSetProperties(CGImageDestination& destination,
                                             const CGImageGIFProperties& properties) {
    auto& state = *destination.m_state;
    const int loops = properties.kCGImagePropertyGIFLoopCount.value_or(0);
    if (state.added > 0 || loops < 0 || loops > kMostLoops)
        return gifFailure(ErrorCode::InvalidArgument, state.path, kPropertiesOutOfRange);
    state.properties = properties;
    return {};
}

Result<void> CGImageDestinationAddImage(CGImageDestination& destination, const RawFrame& image) {
    auto& state = *destination.m_state;
    if (state.error)
        return tl::unexpected(*state.error);
    const bool isFirst = state.added == 0;
    const bool fits = isFirst ? std::min(image.width, image.height) > 0 &&
                                    std::max(image.width, image.height) <= kMostGifSide
                              : image.width == state.width && image.height == state.height;
    if (!fits || image.rgb32.size() != qsizetype{image.width} * image.height * 4)
        return gifFailure(ErrorCode::InvalidArgument, state.path, kFrameSizeDiffers);
    if (!state.file || state.added >= state.announced)
        return gifFailure(ErrorCode::InvalidArgument, state.path, kOneFrameTooMany);
    if ((!isFirst || state.begin(image)) && state.put(image)) {
        ++state.added;
        return {};
    }
    if (!state.error)
        state.error = gifFailure(ErrorCode::Io, state.path, {}).value();
    return tl::unexpected(*state.error);
}

Result<void> CGImageDestinationFinalize(CGImageDestination& destination) {
    auto& state = *destination.m_state;
    if (!state.error && (state.added == 0 || !state.file))
        return gifFailure(ErrorCode::InvalidArgument, state.path, kNoFrames);
    state.gif.reset(); // writes the trailer
    if (!state.error)
        state.flush();
    if (state.error) {
        state.file.reset();
        return tl::unexpected(*state.error);
    }
    auto committed = state.file->commit();
    state.file.reset();
    return committed;
}

} // namespace clipheave::platform
