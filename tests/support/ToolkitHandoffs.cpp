/// Tells the thread sanitizer what the toolkit guarantees when it hands something from one thread to another. The
/// toolkit itself is not built with the sanitizer and locks with futexes of its own, so that without this every such
/// handing over looks like a race. Only the preset `tsan` compiles this file, without the sanitizer, into each program.
///
/// The functions below stand in front of the toolkit's own of the same names. Each calls the real one and marks what
/// was written before as visible to the thread that takes it over: posted functions, tasks for a thread pool, the
/// results of futures. They know nothing of our code, so races within that are found as before.

#include <QtCore/QFutureInterface>
#include <QtCore/QObject>
#include <QtCore/QRunnable>
#include <QtCore/QThreadPool>

#include <dlfcn.h>
#include <functional>
#include <memory>
#include <sanitizer/tsan_interface.h>
#include <utility>

namespace {

// The toolkit's own reads and writes are not looked at, only ours.
constexpr const char *kDefaultOptions = "ignore_noninstrumented_modules=1";

/// The toolkit's function of this (mangled) name.
template <class Function>
Function *real(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

/// A posted function: what it captured is visible where it is called, and what it did is visible to whom waits for it.
class HandedOverSlot final : public QtPrivate::QSlotObjectBase
{
public:
    HandedOverSlot(QSlotObjectBase *slot, char *done) : QSlotObjectBase(&impl), m_slot(slot), m_done(done) {}

private:
    static void impl(int which, QSlotObjectBase *base, QObject *receiver, void **arguments, bool *result)
    {
        auto *self = static_cast<HandedOverSlot *>(base);
        __tsan_acquire(self);
        if (which == Call) {
            self->m_slot->call(receiver, arguments);
            __tsan_release(self); // the one who posted it may be the last to let go of it
            if (self->m_done)
                __tsan_release(self->m_done);
        } else if (which == Compare) {
            *result = self->m_slot->compare(arguments);
        } else {
            self->m_slot->destroyIfLastRef();
            delete self;
        }
    }

    QSlotObjectBase *m_slot;
    char *m_done; // lives as long as the caller waits; null if it does not
};

/// A task for a pool, which is visible to the thread that runs it; its end is visible to whom waits for the pool.
class HandedOverTask final : public QRunnable
{
public:
    HandedOverTask(QRunnable *task, QThreadPool *pool) : m_task(task), m_pool(pool) {}
    ~HandedOverTask() override
    {
        __tsan_acquire(this);
        if (m_task && m_task->autoDelete())
            delete m_task;
    }

    void run() override
    {
        __tsan_acquire(this);
        QRunnable *task = std::exchange(m_task, nullptr);
        const bool isOurs = task->autoDelete();
        task->run();
        if (isOurs)
            delete task;
        __tsan_release(m_pool);
    }

private:
    QRunnable *m_task; // null once it has run
    QThreadPool *m_pool;
};

/// What all copies of a future share; it follows the pointer to the virtual functions.
void *sharedState(const void *future)
{
    return static_cast<void *const *>(future)[1];
}

} // namespace

extern "C" {

// Found by the sanitizer's own library, hence visible.
__attribute__((visibility("default"))) const char *__tsan_default_options()
{
    return kDefaultOptions;
}

// bool QMetaObject::invokeMethodImpl(QObject *, QtPrivate::QSlotObjectBase *, Qt::ConnectionType, void *)
bool _ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPv(
    QObject *receiver, QtPrivate::QSlotObjectBase *slot, Qt::ConnectionType type, void *result)
{
    using Function = bool(QObject *, QtPrivate::QSlotObjectBase *, Qt::ConnectionType, void *);
    static Function *const invoke = real<Function>(
        "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPv");
    char done = 0;
    auto *handedOver = new HandedOverSlot(slot, type == Qt::BlockingQueuedConnection ? &done : nullptr);
    __tsan_release(handedOver);
    const bool isInvoked = invoke(receiver, handedOver, type, result);
    if (type == Qt::BlockingQueuedConnection)
        __tsan_acquire(&done);
    return isInvoked;
}

// void QThreadPool::start(QRunnable *, int)
void _ZN11QThreadPool5startEP9QRunnablei(QThreadPool *pool, QRunnable *task, int priority)
{
    using Function = void(QThreadPool *, QRunnable *, int);
    static Function *const start = real<Function>("_ZN11QThreadPool5startEP9QRunnablei");
    auto *handedOver = new HandedOverTask(task, pool);
    __tsan_release(handedOver);
    start(pool, handedOver, priority);
}

// void QThreadPool::start(std::function<void()>, int)
void _ZN11QThreadPool5startESt8functionIFvvEEi(QThreadPool *pool, std::function<void()> *task, int priority)
{
    _ZN11QThreadPool5startEP9QRunnablei(pool, QRunnable::create(std::move(*task)), priority);
}

// bool QThreadPool::waitForDone(int)
bool _ZN11QThreadPool11waitForDoneEi(QThreadPool *pool, int milliseconds)
{
    using Function = bool(QThreadPool *, int);
    static Function *const wait = real<Function>("_ZN11QThreadPool11waitForDoneEi");
    const bool isDone = wait(pool, milliseconds);
    __tsan_acquire(pool);
    return isDone;
}

// QThreadPool::~QThreadPool(): waits too
void _ZN11QThreadPoolD1Ev(QThreadPool *pool)
{
    using Function = void(QThreadPool *);
    static Function *const destroy = real<Function>("_ZN11QThreadPoolD1Ev");
    destroy(pool);
    __tsan_acquire(pool);
}

// Futures: whoever reports makes visible what it wrote, whoever asks sees it.

// void QFutureInterfaceBase::reportFinished()
void _ZN20QFutureInterfaceBase14reportFinishedEv(void *future)
{
    static auto *const report = real<void(void *)>("_ZN20QFutureInterfaceBase14reportFinishedEv");
    __tsan_release(sharedState(future));
    report(future);
}

// void QFutureInterfaceBase::reportCanceled()
void _ZN20QFutureInterfaceBase14reportCanceledEv(void *future)
{
    static auto *const report = real<void(void *)>("_ZN20QFutureInterfaceBase14reportCanceledEv");
    __tsan_release(sharedState(future));
    report(future);
}

// void QFutureInterfaceBase::reportException(const QException &)
void _ZN20QFutureInterfaceBase15reportExceptionERK10QException(void *future, const void *exception)
{
    static auto *const report =
        real<void(void *, const void *)>("_ZN20QFutureInterfaceBase15reportExceptionERK10QException");
    __tsan_release(sharedState(future));
    report(future, exception);
}

// void QFutureInterfaceBase::reportResultsReady(int, int)
void _ZN20QFutureInterfaceBase18reportResultsReadyEii(void *future, int begin, int end)
{
    static auto *const report = real<void(void *, int, int)>("_ZN20QFutureInterfaceBase18reportResultsReadyEii");
    __tsan_release(sharedState(future));
    report(future, begin, end);
}

// QtPrivate::ResultStoreBase &QFutureInterfaceBase::resultStoreBase()
void *_ZN20QFutureInterfaceBase15resultStoreBaseEv(const void *future)
{
    static auto *const ask = real<void *(const void *)>("_ZN20QFutureInterfaceBase15resultStoreBaseEv");
    void *const answer = ask(future);
    __tsan_acquire(sharedState(future));
    return answer;
}

// const QtPrivate::ResultStoreBase &QFutureInterfaceBase::resultStoreBase() const
void *_ZNK20QFutureInterfaceBase15resultStoreBaseEv(const void *future)
{
    static auto *const ask = real<void *(const void *)>("_ZNK20QFutureInterfaceBase15resultStoreBaseEv");
    void *const answer = ask(future);
    __tsan_acquire(sharedState(future));
    return answer;
}

// bool QFutureInterfaceBase::isFinished() const
bool _ZNK20QFutureInterfaceBase10isFinishedEv(const void *future)
{
    static auto *const ask = real<bool(const void *)>("_ZNK20QFutureInterfaceBase10isFinishedEv");
    const bool answer = ask(future);
    __tsan_acquire(sharedState(future));
    return answer;
}

// bool QFutureInterfaceBase::isCanceled() const
bool _ZNK20QFutureInterfaceBase10isCanceledEv(const void *future)
{
    static auto *const ask = real<bool(const void *)>("_ZNK20QFutureInterfaceBase10isCanceledEv");
    const bool answer = ask(future);
    __tsan_acquire(sharedState(future));
    return answer;
}

// bool QFutureInterfaceBase::derefT() const: the last of several owners sees what the others did
bool _ZNK20QFutureInterfaceBase6derefTEv(const void *future)
{
    static auto *const release = real<bool(const void *)>("_ZNK20QFutureInterfaceBase6derefTEv");
    void *const state = sharedState(future);
    __tsan_release(state);
    const bool hasOthers = release(future);
    __tsan_acquire(state);
    return hasOthers;
}
}
