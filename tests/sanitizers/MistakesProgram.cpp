/// Makes the mistake that its argument names, so that a test can see whether the sanitizer of this build finds it.

#include <QtConcurrent/QtConcurrentRun>
#include <QtCore/QList>

#include <atomic>
#include <climits>
#include <cstdio>
#include <cstring>

namespace {

/// Two tasks of the pool count without a lock. Neither is handed the other's number.
int race()
{
    int count = 0;
    std::atomic<int> ready = 0;
    const auto task = [&count, &ready] {
        ready.fetch_add(1, std::memory_order_relaxed); // orders nothing
        while (ready.load(std::memory_order_relaxed) < 2) {
        }
        for (int turn = 0; turn < 1000; ++turn)
            ++count;
    };
    QThreadPool pool;
    pool.setMaxThreadCount(2);
    QFuture<void> first = QtConcurrent::run(&pool, task);
    QFuture<void> second = QtConcurrent::run(&pool, task);
    first.waitForFinished();
    second.waitForFinished();
    return count;
}

/// The same work handed from task to task, which is no mistake.
int handing()
{
    QThreadPool pool;
    int count = 0;
    for (int turn = 0; turn < 100; ++turn) {
        QFuture<QList<int>> counted = QtConcurrent::run(&pool, [&count] { return QList<int>{++count}; });
        count = counted.result().first();
    }
    return count;
}

int useAfterFree()
{
    auto *number = new int(1);
    int *volatile kept = number;
    delete number;
    return *kept;
}

int overflow(int step)
{
    return INT_MAX + step;
}

} // namespace

int main(int argc, char **argv)
{
    const char *mistake = argc > 1 ? argv[1] : "";
    int result = 0;
    if (std::strcmp(mistake, "race") == 0)
        result = race();
    else if (std::strcmp(mistake, "use-after-free") == 0)
        result = useAfterFree();
    else if (std::strcmp(mistake, "overflow") == 0)
        result = overflow(argc);
    else
        result = handing();
    std::printf("%d\n", result);
    return 0;
}
