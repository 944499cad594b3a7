// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/raw_decoding.h"

#include "platform/image/artwork_decoding.h"
#include "platform/image/messages.h"

#include <QBuffer>
#include <QImageReader>
#include <QTransform>

#include <libraw/libraw.h>

#include <algorithm>
#include <array>
#include <string>

namespace clipheave::platform {

struct RawPhoto::State {
    std::unique_ptr<libraw_data_t, decltype(&libraw_close)> raw{libraw_init(0), &libraw_close};
    QString path;
};

namespace {

using MemoryImage = std::unique_ptr<libraw_processed_image_t, decltype(&libraw_dcraw_clear_mem)>;

tl::unexpected<Error> rawFailure(const QString& path, int status) {
    return failure(ErrorCode::InvalidData, kReadPhoto, path,
                   QString::fromUtf8(libraw_strerror(status)));
}

/// How the library says that an image is to be rotated: 3 by 180 degrees, 5 by 90 to the left, 6
/// by 90 to the right.
QImage rotated(const QImage& image, int flip) {
    const int degrees = flip == 3 ? 180 : flip == 5 ? 270 : flip == 6 ? 90 : 0;
    return degrees == 0 ? image : image.transformed(QTransform().rotate(degrees));
}

QImage bitmapOf(const libraw_processed_image_t& pixels) {
    const qsizetype stride = qsizetype{pixels.width} * pixels.colors;
    if (pixels.bits != 8 || (pixels.colors != 3 && pixels.colors != 1) ||
        stride * pixels.height > static_cast<qsizetype>(pixels.data_size))
        return {};
    const QImage image(pixels.data, pixels.width, pixels.height, stride,
                       pixels.colors == 3 ? QImage::Format_RGB888 : QImage::Format_Grayscale8);
    return image.convertToFormat(QImage::Format_RGB32); // the pixels belong to the library
}

QImage jpegOf(const libraw_processed_image_t& encoded, std::optional<int> side) {
    QByteArray bytes(reinterpret_cast<const char*>(encoded.data),
                     static_cast<qsizetype>(encoded.data_size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "jpeg");
    if (hasTooManyPixels(reader.size()))
        return {};
    if (side && !reader.size().isEmpty())
        reader.setScaledSize(jpegFraction(reader.size(), *side));
    return reader.read();
}

/// Some cameras rotate the preview themselves.
bool isRotatedAlready(const QImage& preview, QSize stored, int flip) {
    const bool turnsSide = flip == 5 || flip == 6;
    return turnsSide && (preview.width() > preview.height()) != (stored.width() > stored.height());
}

bool isAsLarge(QSize preview, QSize photo) {
    const auto isNear = [](int side, int other) { return side * 10 >= other * 9; };
    return isNear(preview.width(), photo.width()) && isNear(preview.height(), photo.height());
}

} // namespace

bool mayBeRaw(ByteView head) {
    // TIFF, its relatives of Olympus and Panasonic, then formats of their own.
    static const std::array kMagic{
        QByteArrayView("II*\0", 4), QByteArrayView("MM\0*", 4), QByteArrayView("IIRO"),
        QByteArrayView("IIRS"),     QByteArrayView("MMOR"),     QByteArrayView("IIU\0", 4),
        QByteArrayView("FUJIFILM"), QByteArrayView("FOVb"),     QByteArrayView("\0MRM", 4)};
    return std::any_of(kMagic.begin(), kMagic.end(),
                       [head](QByteArrayView magic) { return head.startsWith(magic); }) ||
           head.sub(6, 8).startsWith("HEAPCCDR") || head.sub(4, 8).startsWith("ftypcrx ");
}

RawPhoto::RawPhoto(std::unique_ptr<State> state) : m_state(std::move(state)) {
}
RawPhoto::RawPhoto(RawPhoto&&) noexcept = default;
RawPhoto& RawPhoto::operator=(RawPhoto&&) noexcept = default;
RawPhoto::~RawPhoto() = default;

Result<RawPhoto> RawPhoto::open(const FileReader& reader) {
    auto state = std::make_unique<State>();
    state->path = reader.path();
    if (!state->raw)
        return rawFailure(reader.path(), LIBRAW_UNSUFFICIENT_MEMORY);
    // The open file once more under a name of plain ASCII.
    // By itself the library writes to standard error. Releases differ in the type of the offset.
    libraw_set_dataerror_handler(
        state->raw.get(), [](void*, const char*, auto) {}, nullptr);
    const std::string name = "/proc/self/fd/" + std::to_string(reader.fd());
    if (const int status = libraw_open_file(state->raw.get(), name.c_str()); status != 0)
        return rawFailure(reader.path(), status);
    const auto& sizes = state->raw->sizes;
    if (sizes.width == 0 || sizes.height == 0)
        return failure(ErrorCode::InvalidData, kReadPhoto, reader.path(), kNoImage);
    if (hasTooManyPixels({sizes.raw_width, sizes.raw_height}))
        return failure(ErrorCode::LimitExceeded, kReadPhoto, reader.path(), kTooManyPixels);
    return RawPhoto(std::move(state));
}

QSize RawPhoto::size() const {
    return {m_state->raw->sizes.width, m_state->raw->sizes.height};
}

QImage RawPhoto::preview(std::optional<int> side) {
    libraw_data_t* raw = m_state->raw.get();
    int status = libraw_unpack_thumb(raw);
    if (status != 0)
        return {};
    const MemoryImage made(libraw_dcraw_make_mem_thumb(raw, &status), &libraw_dcraw_clear_mem);
    if (!made)
        return {};
    const QImage image = made->type == LIBRAW_IMAGE_JPEG ? jpegOf(*made, side) : bitmapOf(*made);
    const int flip = raw->sizes.flip;
    return isRotatedAlready(image, size(), flip) ? image : rotated(image, flip);
}

Result<QImage> RawPhoto::developed() {
    libraw_data_t* raw = m_state->raw.get();
    raw->params.use_camera_wb = 1;
    raw->params.output_bps = 8;
    int status = libraw_unpack(raw);
    if (status == 0)
        status = libraw_dcraw_process(raw);
    if (status != 0)
        return rawFailure(m_state->path, status);
    const MemoryImage made(libraw_dcraw_make_mem_image(raw, &status), &libraw_dcraw_clear_mem);
    QImage image = made && made->type == LIBRAW_IMAGE_BITMAP ? bitmapOf(*made) : QImage();
    if (image.isNull())
        return failure(ErrorCode::InvalidData, kReadPhoto, m_state->path, kNoImage);
    return image;
}

Result<QImage> RawPhoto::image() {
    const QImage camera = preview();
    const QSize photo = size();
    const bool isOnItsSide = (camera.width() > camera.height()) != (photo.width() > photo.height());
    if (!camera.isNull() &&
        isAsLarge(isOnItsSide ? camera.size().transposed() : camera.size(), photo))
        return camera;
    return developed();
}

} // namespace clipheave::platform
