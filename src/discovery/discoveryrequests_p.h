#pragma once

#include <QtCore/QList>
#include <QtCore/QMutex>
#include <QtCore/QStringList>

#include <vector>

class QvelDiscoveryNode;

/// What a model has asked the network for and has not been given yet. Any thread.
class DiscoveryRequests
{
public:
    /// `node` waits for a job, with a busy cursor; gives the number of the request.
    quint64 add(QvelDiscoveryNode* node);
    /// The node is being deleted: whatever is found for it is not wanted any more.
    void forget(QvelDiscoveryNode* node);
    /// Notes what was found until it is delivered, so that it is not lost with its message. Number
    /// 0 stands for a job that nobody waits for. `failure` is a text of QvelDiscoveryJob before its
    /// translation and the arguments of the text, or empty.
    void file(quint64 number, const QList<QvelDiscoveryNode*>& children,
              const QStringList& failure);

    struct Delivery
    {
        bool isWanted;
        bool endsBusyCursor;
        QStringList failure = {};
    };
    /// Ends the request that `children` answer. An answer that nobody filed is judged by the
    /// address of its node, and ends the first request of that node before its job does.
    Delivery take(QvelDiscoveryNode* node, const QList<QvelDiscoveryNode*>& children);

    /// Ends all requests: gives the number of busy cursors and deletes what was not delivered.
    int end();

private:
    struct Request
    {
        quint64 number;
        QvelDiscoveryNode* node; // null for one that waits no more
        bool hasBusyCursor;
        bool isDone = false;
        QList<QvelDiscoveryNode*> children = {};
        QStringList failure = {};
    };

    QMutex m_mutex;
    std::vector<Request> m_requests;
    quint64 m_lastNumber = 0;
};
