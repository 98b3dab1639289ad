#pragma once

#include <QtCore/QUrl>

namespace NetworkImage {

/// Where an image is, and how many of its pixels make one point.
struct ImageSource {
    QUrl url;
    double scale = 1; // pixels for each point; what is not above 0 counts as 1
    friend bool operator==(const ImageSource &, const ImageSource &) = default;
};

} // namespace NetworkImage
