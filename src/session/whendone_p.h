#pragma once

#include <QtCore/QFutureWatcher>

#include <utility>

/// Calls `function` with `future` once that is finished, on the thread of `context`, which is the
/// caller's; not where the context has been deleted meanwhile. With QFuture::then(), the context
/// must not go before the result comes: Qt 6.4 ends a debug build that lets it.
template <class T, class Function>
void whenFinished(const QFuture<T>& future, QObject* context, Function function)
{
    auto* watcher = new QFutureWatcher<T>(context);
    QObject::connect(watcher, &QFutureWatcherBase::finished, context,
                     [watcher, function = std::move(function)]() mutable {
                         watcher->deleteLater();
                         function(watcher->future());
                     });
    watcher->setFuture(future);
}

/// As whenFinished(), with the result; not for a call that was cancelled.
template <class T, class Function>
void whenDone(const QFuture<T>& future, QObject* context, Function function)
{
    whenFinished(future, context, [function = std::move(function)](const QFuture<T>& done) mutable {
        if (done.resultCount() > 0)
            function(done.result());
    });
}

/// As whenDone() for a future that nobody else holds: the result is taken out of it, so that the
/// parts of a large one can be moved on instead of copied.
template <class T, class Function>
void takeWhenDone(const QFuture<T>& future, QObject* context, Function function)
{
    whenFinished(future, context, [function = std::move(function)](QFuture<T> done) mutable {
        if (done.isValid() && done.resultCount() > 0)
            function(done.takeResult());
    });
}
