#pragma once

#include <QtCore/QString>

#include <random>

namespace MarkdownUI {

/// A text as an assistant might write it and much stranger: every construct, whole, cut short and nested, with all line
/// ends. The same for the same state of `random`.
QString generatedAnswer(std::mt19937 &random, int lines);

/// Ordinary prose with headings, lists, code, quotes and tables, of about `size` units.
QString ordinaryAnswer(qsizetype size);

} // namespace MarkdownUI
