#pragma once

#include <memory>
#include <vector>

class QEvent;
class QInputMethodEvent;
class QKeyEvent;
class QWidget;

namespace Tessaline {

/// What a person typed before there was anything to type in. Main thread only.
class HeldInput
{
public:
    HeldInput();
    ~HeldInput();

    void hold(const QKeyEvent &key);
    void hold(const QInputMethodEvent &input); // composed text only counts once it is committed
    bool isEmpty() const { return m_events.empty(); }
    void forget();
    /// Sends everything on to `widget`, in order, and forgets it.
    void release(QWidget &widget);

private:
    std::vector<std::unique_ptr<QEvent>> m_events;
};

} // namespace Tessaline
