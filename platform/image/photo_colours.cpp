// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/photo_colours.h"

#include <QColorSpace>
#include <QPainter>

#include <lcms2.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace clipheave::platform {

namespace {

constexpr cmsUInt32Number kNativeRgb32 = TYPE_BGRA_8; // QImage's 32 bits on little-endian machines

template <auto close> struct Closer {
    void operator()(void* handle) const { close(handle); }
};
using Profile = std::unique_ptr<void, Closer<cmsCloseProfile>>;
using Transform = std::unique_ptr<void, Closer<cmsDeleteTransform>>;

Profile openProfile(const QByteArray& bytes) {
    return Profile(
        cmsOpenProfileFromMem(bytes.constData(), static_cast<cmsUInt32Number>(bytes.size())));
}

/// Returns none where the profile does not fit the components.
Transform transformToSrgb(const Profile& from, cmsUInt32Number format, cmsUInt32Number flags = 0) {
    const Profile to(cmsCreate_sRGBProfile());
    return Transform(
        cmsCreateTransform(from.get(), format, to.get(), kNativeRgb32, INTENT_PERCEPTUAL, flags));
}

struct Pixels {
    QImage image;
    cmsUInt32Number format;
};

bool isDeep(const QImage& image) {
    return image.format() == QImage::Format_Grayscale16 || image.depth() > 32;
}

/// Returns the image in a form whose components the conversion reads. A profile of grey counts for
/// images of grey alone.
Pixels pixelsFor(const QImage& image, cmsColorSpaceSignature space) {
    if (space == cmsSigGrayData && image.isGrayscale() && !image.hasAlphaChannel())
        return isDeep(image)
                   ? Pixels{image.convertToFormat(QImage::Format_Grayscale16), TYPE_GRAY_16}
                   : Pixels{image.convertToFormat(QImage::Format_Grayscale8), TYPE_GRAY_8};
    if (space != cmsSigRgbData)
        return {};
    if (isDeep(image))
        return {image.convertToFormat(QImage::Format_RGBA64), TYPE_RGBA_16};
    return {image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32
                                                          : QImage::Format_RGB32),
            kNativeRgb32};
}

void convertRows(const Transform& transform, const QImage& from, QImage& to) {
    cmsDoTransformLineStride(transform.get(), from.constBits(), to.bits(),
                             static_cast<cmsUInt32Number>(from.width()),
                             static_cast<cmsUInt32Number>(from.height()),
                             static_cast<cmsUInt32Number>(from.bytesPerLine()),
                             static_cast<cmsUInt32Number>(to.bytesPerLine()), 0, 0);
}

/// Null when the profile says nothing about such an image.
QImage converted(const QImage& image, const QByteArray& profileBytes) {
    const Profile profile = openProfile(profileBytes);
    if (!profile)
        return {};
    const Pixels from = pixelsFor(image, cmsGetColorSpace(profile.get()));
    if (from.image.isNull())
        return {};
    const bool isGrey = T_COLORSPACE(from.format) == PT_GRAY;
    const Transform transform =
        transformToSrgb(profile, from.format, isGrey ? 0 : cmsFLAGS_COPY_ALPHA);
    const bool hasAlpha = image.hasAlphaChannel();
    QImage to(image.size(), hasAlpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    if (!transform || to.isNull())
        return {};
    convertRows(transform, from.image, to);
    return to;
}

QImage overWhite(QImage image) {
    if (!image.hasAlphaChannel())
        return std::move(image).convertToFormat(QImage::Format_RGB32); // in place where it can be
    QImage opaque(image.size(), QImage::Format_RGB32);
    opaque.fill(Qt::white);
    QPainter(&opaque).drawImage(0, 0, image);
    return opaque;
}

bool isSrgb(const QImage& image, const QByteArray& profile) {
    return profile.isEmpty() || (image.colorSpace().iccProfile() == profile &&
                                 image.colorSpace() == QColorSpace(QColorSpace::SRgb));
}

} // namespace

QImage opaqueInSrgb(QImage image, const QByteArray& profile) {
    if (image.isNull())
        return {};
    const int dotsAcross = image.dotsPerMeterX(), dotsDown = image.dotsPerMeterY();
    QImage plain = isSrgb(image, profile) ? QImage() : converted(image, profile);
    QImage opaque = overWhite(plain.isNull() ? std::move(image) : std::move(plain));
    opaque.setDotsPerMeterX(dotsAcross);
    opaque.setDotsPerMeterY(dotsDown);
    opaque.setColorSpace({});
    return opaque;
}

QByteArray adobeRgbProfile() {
    return QColorSpace(QColorSpace::AdobeRgb).iccProfile();
}

QImage srgbOfCmyk(const QByteArray& rows, QSize size, bool inverted, const QByteArray& profile) {
    const Profile from = openProfile(profile);
    if (!from || cmsGetColorSpace(from.get()) != cmsSigCmykData ||
        rows.size() < qsizetype{4} * size.width() * size.height())
        return {};
    const Transform transform = transformToSrgb(from, inverted ? TYPE_CMYK_8_REV : TYPE_CMYK_8);
    QImage to(size, QImage::Format_RGB32);
    if (!transform || to.isNull())
        return {};
    const auto width = static_cast<cmsUInt32Number>(size.width());
    cmsDoTransformLineStride(transform.get(), rows.constData(), to.bits(), width,
                             static_cast<cmsUInt32Number>(size.height()), width * 4,
                             static_cast<cmsUInt32Number>(to.bytesPerLine()), 0, 0);
    return to;
}

bool isCmykProfile(const QByteArray& profile) {
    constexpr qsizetype kSpaceAt = 16; // ICC.1, 7.2.6: data colour space
    return profile.mid(kSpaceAt, 4) == "CMYK";
}

} // namespace clipheave::platform
