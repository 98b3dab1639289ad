#include "documents/HeldInput.h"

#include <QtGui/QInputMethodEvent>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QWidget>

#include <utility>

namespace Tessaline {

HeldInput::HeldInput() = default;
HeldInput::~HeldInput() = default;

void HeldInput::hold(const QKeyEvent &key)
{
    m_events.emplace_back(key.clone());
}

void HeldInput::hold(const QInputMethodEvent &input)
{
    if (input.commitString().isEmpty())
        return;
    auto committed = std::make_unique<QInputMethodEvent>();
    committed->setCommitString(input.commitString());
    m_events.push_back(std::move(committed));
}

void HeldInput::forget()
{
    m_events.clear();
}

void HeldInput::release(QWidget &widget)
{
    for (const std::unique_ptr<QEvent> &event : std::exchange(m_events, {}))
        QApplication::sendEvent(&widget, event.get());
}

} // namespace Tessaline
