#pragma once

#include "editing/SharedText.h"

/// The tags that say what kind of paragraph a text is. They are plain texts, since some carry a number or a word that
/// the user wrote; an unknown tag counts as a paragraph.
///
///     paragraph  heading:1..6  quote  bullet  numbered:<number>  task:0  task:1  code:<info>
///     tableHeader  tableRow  horizontalRule
namespace Tessaline::BlockStyle {

SharedText paragraph();
SharedText heading(int level);
SharedText quote();
SharedText bullet();
SharedText numbered(qint64 number);
SharedText task(bool isDone);
SharedText code(QStringView info);
SharedText tableHeader();
SharedText tableRow();
SharedText horizontalRule();

enum class Kind { Paragraph, Heading, Quote, Bullet, Numbered, Task, Code, TableHeader, TableRow, HorizontalRule };

/// A tag taken apart.
struct Tag {
    Kind kind = Kind::Paragraph;
    QStringView argument; // what follows the colon, for the kinds that have one
};
Tag read(QStringView tag);

/// The level in a heading's argument; 1 if it is no integer. May be any number.
qint64 headingLevel(QStringView argument);

/// Whether the tag is exactly that of a task that is done, or that is open. There are tags of tasks that are neither.
bool isDoneTask(QStringView tag);
bool isOpenTask(QStringView tag);

} // namespace Tessaline::BlockStyle
