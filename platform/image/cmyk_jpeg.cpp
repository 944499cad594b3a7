// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/cmyk_jpeg.h"

#include "platform/image/artwork_decoding.h"
#include "platform/image/photo_colours.h"

#include <csetjmp>
#include <cstdio> // before jpeglib.h, which needs it

#include <jpeglib.h>

namespace clipheave::platform {

namespace {

struct Decoder {
    jpeg_decompress_struct info;
    jpeg_error_mgr errors;
    std::jmp_buf failed;
};

/// The library may not return from an error. What lies between here and setjmp holds no objects.
[[noreturn]] void leave(j_common_ptr info) {
    std::longjmp(static_cast<Decoder*>(info->client_data)->failed, 1);
}

void saySilently(j_common_ptr) {
}

bool readCmykHeader(Decoder& decoder, const unsigned char* bytes, unsigned long length) {
    if (setjmp(decoder.failed) != 0)
        return false;
    jpeg_create_decompress(&decoder.info);
    jpeg_mem_src(&decoder.info, bytes, length);
    jpeg_read_header(&decoder.info, TRUE);
    if (decoder.info.num_components != 4)
        return false;
    decoder.info.out_color_space = JCS_CMYK;
    jpeg_start_decompress(&decoder.info);
    return true;
}

/// Rows behind the damage stay as they are.
void readCmykRows(Decoder& decoder, unsigned char* rows) {
    if (setjmp(decoder.failed) != 0)
        return;
    const std::size_t stride = std::size_t{4} * decoder.info.output_width;
    while (decoder.info.output_scanline < decoder.info.output_height) {
        unsigned char* row = rows + stride * decoder.info.output_scanline;
        jpeg_read_scanlines(&decoder.info, &row, 1);
    }
}

} // namespace

QImage cmykJpegInSrgb(const QByteArray& bytes, const QByteArray& profile) {
    Decoder decoder{};
    decoder.info.err = jpeg_std_error(&decoder.errors);
    decoder.errors.error_exit = &leave;
    decoder.errors.output_message = &saySilently;
    decoder.info.client_data = &decoder;
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.constData());
    QImage image;
    if (readCmykHeader(decoder, data, static_cast<unsigned long>(bytes.size()))) {
        const QSize size(static_cast<int>(decoder.info.output_width),
                         static_cast<int>(decoder.info.output_height));
        if (!hasTooManyPixels(size)) {
            QByteArray rows(qsizetype{4} * size.width() * size.height(), '\xff');
            readCmykRows(decoder, reinterpret_cast<unsigned char*>(rows.data()));
            image = srgbOfCmyk(rows, size, decoder.info.saw_Adobe_marker != 0, profile);
        }
    }
    jpeg_destroy_decompress(&decoder.info);
    return image;
}

} // namespace clipheave::platform
