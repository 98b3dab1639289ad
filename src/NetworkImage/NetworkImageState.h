#pragma once

#include <QtCore/QSizeF>
#include <QtGui/QImage>

#include <variant>

namespace NetworkImage {

/// What a view of a network image has to draw.
struct Empty { // no image yet, or no source
    friend bool operator==(const Empty &, const Empty &) = default;
};
struct Success {
    QImage image;     // in a format that is drawn without conversion; its device pixel ratio is the source's scale
    QSizeF idealSize; // in points: pixels divided by the source's scale
    friend bool operator==(const Success &, const Success &) = default;
};
struct Failure { // not reachable, not found, no image, or too large
    friend bool operator==(const Failure &, const Failure &) = default;
};
using NetworkImageState = std::variant<Empty, Success, Failure>;

} // namespace NetworkImage
