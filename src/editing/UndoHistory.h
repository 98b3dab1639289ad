#pragma once

#include "editing/AttributedText.h"

#include <optional>
#include <vector>

namespace Tessaline {

/// A selection with its direction: the caret stands at `caret` and the other end stays at `anchor`.
struct TextSelection {
    qsizetype anchor = 0;
    qsizetype caret = 0;

    TextRange range() const { return {std::min(anchor, caret), std::max(anchor, caret) - std::min(anchor, caret)}; }
    bool isEmpty() const { return anchor == caret; }
    friend bool operator==(const TextSelection &, const TextSelection &) = default;
};

/// What kind of change a person made; neighbouring changes of one kind, other than Other, are one step of undo.
enum class EditKind { Typing, DeletingBackward, DeletingForward, Other };

/// One step of undo: `removed` stood at `location` where `inserted` stands now.
struct UndoStep {
    qsizetype location = 0;
    AttributedText removed;
    AttributedText inserted;
    TextSelection before;
    TextSelection after;
    EditKind kind = EditKind::Other;
};

/// The steps that can be undone and done again. Runs of typing and of deleting grow into one step until something else
/// happens; a new change forgets what could be done again. The oldest steps go when all together hold more than
/// `kMostUnits`.
class UndoHistory
{
public:
    static constexpr qsizetype kMostUnits = 64 * 1024 * 1024; // UTF-16 units of removed and inserted text

    void clear();
    void add(UndoStep step);
    /// Ends the current run: the next change begins a step of its own.
    void endRun() { m_runIsOpen = false; }

    bool canUndo() const { return m_done > 0; }
    bool canRedo() const { return m_done < m_steps.size(); }
    /// The step to take back or to do again; it is counted as undone or done from now on. Absent if there is none.
    std::optional<UndoStep> takeUndo();
    std::optional<UndoStep> takeRedo();

private:
    bool joinRun(const UndoStep &step);

    std::vector<UndoStep> m_steps;
    size_t m_done = 0; // steps before this one are in force
    qsizetype m_units = 0;
    bool m_runIsOpen = false;
};

} // namespace Tessaline
