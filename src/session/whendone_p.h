#pragma once

#include <QtCore/QFutureWatcher>

#include <utility>

/// Calls `function` with the result of `future` once it is there, on the thread of `context`, which
/// is the caller's; not where the context has been deleted meanwhile, or the call was cancelled.
/// With QFuture::then(), the context must not go before the result comes: Qt 6.4 ends a debug build
/// that lets it.
template <class T, class Function>
void whenDone(const QFuture<T>& future, QObject* context, Function function)
{
    auto* watcher = new QFutureWatcher<T>(context);
    QObject::connect(watcher, &QFutureWatcherBase::finished, context,
                     [watcher, function = std::move(function)]() mutable {
                         watcher->deleteLater();
                         if (watcher->future().resultCount() > 0)
                             function(watcher->result());
                     });
    watcher->setFuture(future);
}

/// As whenDone() for a future that nobody else holds: the result is taken out of it, so that the
/// parts of a large one can be moved on instead of copied.
template <class T, class Function>
void takeWhenDone(const QFuture<T>& future, QObject* context, Function function)
{
    auto* watcher = new QFutureWatcher<T>(context);
    QObject::connect(watcher, &QFutureWatcherBase::finished, context,
                     [watcher, function = std::move(function)]() mutable {
                         watcher->deleteLater();
                         QFuture<T> done = watcher->future();
                         if (done.isValid() && done.resultCount() > 0)
                             function(done.takeResult());
                     });
    watcher->setFuture(future);
}
