#include "editing/UndoHistory.h"

namespace Tessaline {

namespace {

qsizetype unitsOf(const UndoStep &step)
{
    return step.removed.size() + step.inserted.size();
}

bool endsWithLineEnd(const QString &text)
{
    return text.endsWith(u'\n') || text.endsWith(u'\r') || text.endsWith(QChar(QChar::ParagraphSeparator));
}

} // namespace

void UndoHistory::clear()
{
    *this = UndoHistory();
}

bool UndoHistory::joinRun(const UndoStep &step)
{
    if (!m_runIsOpen || m_done == 0 || step.kind == EditKind::Other)
        return false;
    UndoStep &last = m_steps[m_done - 1];
    if (last.kind != step.kind || step.before != last.after)
        return false;
    switch (step.kind) {
    case EditKind::Typing:
        // Only pure insertions behind the run go on with it; a line end ends it.
        if (!step.removed.isEmpty() || step.location != last.location + last.inserted.size() ||
            endsWithLineEnd(last.inserted.text()))
            return false;
        last.inserted.append(step.inserted);
        break;
    case EditKind::DeletingBackward:
        if (step.location + step.removed.size() != last.location)
            return false;
        last.removed.replace({0, 0}, step.removed);
        last.location = step.location;
        break;
    case EditKind::DeletingForward:
        if (step.location != last.location)
            return false;
        last.removed.append(step.removed);
        break;
    case EditKind::Other:
        return false;
    }
    last.after = step.after;
    m_units += unitsOf(step);
    return true;
}

void UndoHistory::add(UndoStep step)
{
    while (m_steps.size() > m_done) {
        m_units -= unitsOf(m_steps.back());
        m_steps.pop_back();
    }
    if (joinRun(step))
        return;
    m_units += unitsOf(step);
    m_runIsOpen = step.kind != EditKind::Other;
    m_steps.push_back(std::move(step));
    m_done = m_steps.size();

    size_t dropped = 0;
    while (m_units > kMostUnits && dropped + 1 < m_steps.size())
        m_units -= unitsOf(m_steps[dropped++]);
    m_steps.erase(m_steps.begin(), m_steps.begin() + static_cast<std::ptrdiff_t>(dropped));
    m_done -= dropped;
}

std::optional<UndoStep> UndoHistory::takeUndo()
{
    m_runIsOpen = false;
    if (!canUndo())
        return std::nullopt;
    return m_steps[--m_done];
}

std::optional<UndoStep> UndoHistory::takeRedo()
{
    m_runIsOpen = false;
    if (!canRedo())
        return std::nullopt;
    return m_steps[m_done++];
}

} // namespace Tessaline
