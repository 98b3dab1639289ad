#include "shell/AppDelegate.h"

#include "documents/DocumentStore.h"

#include <QCoro/QCoroFuture>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

} // namespace

AppDelegate::AppDelegate(AppDelegateServices services, QObject *parent)
    : QObject(parent), m_services(std::move(services))
{}

AppDelegate::~AppDelegate()
{
    m_flush.request_stop();
}

void AppDelegate::applicationDidFinishLaunching()
{
    if (m_services.setUpWindows)
        QMetaObject::invokeMethod(this, m_services.setUpWindows, Qt::QueuedConnection);

    if (m_services.environment.contains(u"XCTestConfigurationFilePath"_s))
        return;
    if (m_services.assistant)
        m_services.assistant->startServer();
}

void AppDelegate::applicationShouldTerminate()
{
    if (std::exchange(m_isTerminating, true))
        return;
    // The answer comes later even where nothing is pending: the caller may be deep inside an event of a window.
    QMetaObject::invokeMethod(this, &AppDelegate::flushAndReply, Qt::QueuedConnection);
}

QCoro::Task<> AppDelegate::flushAndReply()
{
    const std::stop_token stop = m_flush.get_token();
    DocumentStore &store = m_services.store;

    // A change that came in while the texts were written is not part of that flush, so it gets one of its own. A write
    // that failed is not tried again: it neither cancels nor delays the end.
    quint64 changes = 0;
    do {
        changes = store.changeCount();
        co_await store.flushAll();
        if (stop.stop_requested())
            co_return;
    } while (store.changeCount() != changes);

    Q_EMIT terminationReady();
}

void AppDelegate::applicationWillTerminate()
{
    if (std::exchange(m_hasTerminated, true) || !m_services.assistant)
        return;
    if (const std::optional<FileURL> active = m_services.assistant->activeFileURL())
        m_services.assistant->saveSession(*active);
    m_services.assistant->stopServer();
}

} // namespace Tessaline
