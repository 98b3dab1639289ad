#pragma once

#include <QtCore/QByteArrayView>

#include <cstdint>
#include <cstring>

namespace Tessaline {

/// How many bytes stand before the first control character (below 0x20) or one of `kSigns`, which are ASCII.
template <char... kSigns>
qsizetype plainLength(QByteArrayView bytes)
{
    constexpr uint64_t kOnes = 0x0101010101010101;
    constexpr uint64_t kHighBits = 0x8080808080808080;
    constexpr unsigned char kFirstPlain = 0x20;
    const char *const begin = bytes.data();
    const char *const end = begin + bytes.size();
    const char *at = begin;

    // FAST PATH: eight bytes at once, as long as none of them is looked for. The loop behind says the same of one byte.
    for (; end - at >= 8; at += 8) {
        uint64_t eight = 0;
        std::memcpy(&eight, at, sizeof eight);
        const auto isZeroAmong = [](uint64_t values) { return (values - kOnes) & ~values & kHighBits; };
        const uint64_t controls = (eight - kOnes * kFirstPlain) & ~eight & kHighBits;
        const uint64_t found = (controls | ... | isZeroAmong(eight ^ (kOnes * static_cast<unsigned char>(kSigns))));
        if (found != 0)
            break;
    }
    while (at != end && static_cast<unsigned char>(*at) >= kFirstPlain && ((*at != kSigns) && ...))
        ++at;
    return at - begin;
}

} // namespace Tessaline
