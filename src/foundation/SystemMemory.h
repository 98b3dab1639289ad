#pragma once

#include "foundation/FileURL.h"

#include <QtCore/QtGlobal>

namespace Tessaline {

/// How much memory the machine has, in bytes: what is built in, where the system tells. What it hands out is less, as
/// it keeps some for itself, so that a machine of 16 GiB would look like one of 15.
quint64 physicalMemoryBytes();

/// The same from what the system hands out and the folder in which it lists blocks of memory (`block_size_bytes`, in
/// hexadecimal, and an entry `memory<N>` for each). Where those come to less than it hands out, or to over an eighth
/// more, they are something else (absent, hidden, or memory that could be plugged in) and do not count.
quint64 physicalMemoryBytes(quint64 usableBytes, const FileURL &blocks);

} // namespace Tessaline
