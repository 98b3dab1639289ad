#include "MarkdownUI/ParserMemory.h"

#include <QtCore/QtGlobal>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace MarkdownUI::ParserMemory {

namespace {

constexpr size_t kStep = 16;           // sizes are multiples of it, and addresses too
constexpr size_t kLargestShared = 512; // bytes; what is larger has a piece of its own
constexpr size_t kPieceSize = 256 * 1024;

/// Stands before every allocation.
struct alignas(kStep) Header {
    size_t size; // what may be used behind it
};

/// Stands before every piece of memory of the system's.
struct alignas(kStep) Piece {
    Piece *previous;
    Piece *next;
};

/// A freed allocation that waits to be used again.
struct Unused {
    Unused *next;
};

Piece *pieces = nullptr;          // all of them, the latest first
std::byte *unusedStart = nullptr; // what is left of the latest shared piece
std::byte *unusedEnd = nullptr;
Unused *unused[kLargestShared / kStep + 1] = {}; // by their size in steps

Header *headerOf(void *memory)
{
    return static_cast<Header *>(memory) - 1;
}

std::byte *addPiece(size_t size)
{
    auto *piece = static_cast<Piece *>(std::malloc(sizeof(Piece) + size));
    Q_CHECK_PTR(piece);
    piece->previous = nullptr;
    piece->next = pieces;
    if (pieces)
        pieces->previous = piece;
    pieces = piece;
    return reinterpret_cast<std::byte *>(piece + 1);
}

void removePiece(Piece *piece)
{
    if (piece->previous)
        piece->previous->next = piece->next;
    else
        pieces = piece->next;
    if (piece->next)
        piece->next->previous = piece->previous;
    std::free(piece);
}

void *allocate(size_t wanted)
{
    const size_t size = (std::max<size_t>(wanted, 1) + kStep - 1) / kStep * kStep;
    if (size > kLargestShared) {
        auto *header = reinterpret_cast<Header *>(addPiece(sizeof(Header) + size));
        header->size = size;
        return header + 1;
    }
    if (Unused *again = unused[size / kStep]) {
        unused[size / kStep] = again->next;
        return again;
    }
    const size_t needed = sizeof(Header) + size;
    if (static_cast<size_t>(unusedEnd - unusedStart) < needed) {
        unusedStart = addPiece(kPieceSize);
        unusedEnd = unusedStart + kPieceSize;
    }
    auto *header = reinterpret_cast<Header *>(unusedStart);
    unusedStart += needed;
    header->size = size;
    return header + 1;
}

void deallocate(void *memory)
{
    if (!memory)
        return;
    Header *header = headerOf(memory);
    if (header->size > kLargestShared) {
        removePiece(reinterpret_cast<Piece *>(header) - 1);
        return;
    }
    Unused *&first = unused[header->size / kStep];
    first = new (memory) Unused{first};
}

void *allocateZeroed(size_t count, size_t size)
{
    void *memory = allocate(count * size); // the parser's counts and sizes fit 31 bits
    std::memset(memory, 0, count * size);
    return memory;
}

void *reallocate(void *memory, size_t size)
{
    if (!memory)
        return allocate(size);
    const size_t known = headerOf(memory)->size;
    if (size <= known)
        return memory;
    void *larger = allocate(size);
    std::memcpy(larger, memory, known);
    deallocate(memory);
    return larger;
}

cmark_mem functions{allocateZeroed, reallocate, deallocate};

} // namespace

cmark_mem *allocator()
{
    return &functions;
}

void release()
{
    while (pieces)
        removePiece(pieces);
    unusedStart = nullptr;
    unusedEnd = nullptr;
    std::ranges::fill(unused, nullptr);
}

} // namespace MarkdownUI::ParserMemory
