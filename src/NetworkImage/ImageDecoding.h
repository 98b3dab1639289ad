#pragma once

#include "NetworkImage/NetworkImageLoader.h"

#include <QtCore/QByteArray>

namespace NetworkImage {

constexpr qint64 kMostPixels = 64'000'000; // of one image

/// Decodes the first image in the bytes: upright, in the colours of sRGB, in a format that is drawn without conversion
/// (ARGB32_Premultiplied, or RGB32 without transparency). Known are PNG, JPEG, GIF, BMP, ICO, and WebP and TIFF where
/// the toolkit has them; what the bytes are is seen from how they begin. Everything else, and an image of more than
/// `mostPixels` pixels, gives CannotDecodeContentData. Takes its time; safe from any thread.
ImageResult decodedImage(const QByteArray &bytes, qint64 mostPixels = kMostPixels);

/// Lets the toolkit decode images of `kMostPixels` pixels, whose memory is beyond its own limit. Holds for the whole
/// process; to be called on the main thread before the first decoding.
void prepareDecoding();

} // namespace NetworkImage
