#pragma once

#include "foundation/FileURL.h"

#include <optional>

namespace Tessaline {

/// What kind of document the application can edit.
enum class DocumentType { Markdown, PlainText };

/// The stored and printed name of a type: "markdown" or "plainText".
QString rawValue(DocumentType type);

/// Classifies the file at `url`; absent means that it cannot be edited. In this order: the extension "md" or "markdown"
/// in any case; an extension of a known text type; the content, by `looksLikeText`. The first two steps do not touch
/// the disk. Safe from any thread.
std::optional<DocumentType> documentType(const FileURL &url);

/// The first two steps: what an extension settles in itself. Absent if the content has to decide. An extension that
/// stands for a text type and for a binary one as well (ts, key, strings) is not settled.
std::optional<DocumentType> documentTypeOfExtension(QStringView extension);

/// The third step: whether the first 8192 bytes of the file are free of zero bytes and strict UTF-8. A character that
/// the limit cuts counts as no text, an empty file as text, and anything but an ordinary file as no text. `name` is
/// relative to the open folder `folder`, or to the working folder with AT_FDCWD. Never waits for a pipe or a device.
bool looksLikeText(int folder, const char *name);

} // namespace Tessaline
