// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/exiv2_access.h"

#include <QMutex>
#include <QRegularExpression>

#include <exiv2/webpimage.hpp> // not among those of exiv2.hpp

#include <algorithm>
#include <array>
#include <mutex>
#include <string>

namespace clipheave::platform {

namespace {

void lockXmp(void* mutex, bool lock) {
    if (lock)
        static_cast<QMutex*>(mutex)->lock();
    else
        static_cast<QMutex*>(mutex)->unlock();
}

bool isPhoto(const Exiv2::Image& image) {
    static constexpr std::array kTypes{
        Exiv2::ImageType::jpeg, Exiv2::ImageType::exv,  Exiv2::ImageType::crw,
        Exiv2::ImageType::cr2,  Exiv2::ImageType::tiff, Exiv2::ImageType::mrw,
        Exiv2::ImageType::png,  Exiv2::ImageType::webp, Exiv2::ImageType::orf,
        Exiv2::ImageType::psd,  Exiv2::ImageType::raf,  Exiv2::ImageType::rw2,
        Exiv2::ImageType::gif,  Exiv2::ImageType::bmp,  Exiv2::ImageType::tga,
        Exiv2::ImageType::jp2,  Exiv2::ImageType::pgf};
    return std::find(kTypes.begin(), kTypes.end(), image.imageType()) != kTypes.end();
}

} // namespace

void initializeExiv2() {
    static QMutex mutex;
    static std::once_flag once;
    std::call_once(once, [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::XmpParser::initialize(&lockXmp, &mutex);
    });
}

std::unique_ptr<Exiv2::Image> openExiv2Image(const FileReader& reader) {
    // The open file once more under a name of plain ASCII: the library takes names as text.
    const std::string name = "/proc/self/fd/" + std::to_string(reader.fd());
    auto image = std::unique_ptr<Exiv2::Image>{Exiv2::ImageFactory::open(name).release()};
    if (!isPhoto(*image))
        throw Exiv2::Error(Exiv2::ErrorCode::kerUnsupportedImageType,
                           static_cast<int>(image->imageType()));
    return image;
}

Error exiv2Error(const Exiv2::Error& error, MessageCode operation, const QString& path) {
    const bool unknown = error.code() == Exiv2::ErrorCode::kerFileContainsUnknownImageType ||
                         error.code() == Exiv2::ErrorCode::kerUnsupportedImageType;
    // The library names the descriptor that it was given.
    static const QRegularExpression descriptor(QStringLiteral("/proc/self/fd/\\d+(: )?"));
    return Error{unknown ? ErrorCode::NotSupported : ErrorCode::InvalidData, operation, path,
                 QString::fromUtf8(error.what()).remove(descriptor)};
}

} // namespace clipheave::platform
