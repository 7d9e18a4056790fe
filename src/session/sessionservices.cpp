// The services of a session: cut by what the server takes at a time, several requests under way,
// and put together in the order of what was asked.

#include "session/sessionworker_p.h"

#include <QtCore/QSet>

#include <algorithm>
#include <numeric>

using namespace UaWire;

namespace {

// Operations in one request where the server names no limit: enough to be fast, and small enough
// for the answers to come one after the other.
constexpr qsizetype mostOperations = 2000;
// References that one node may have, and that one answer may hold.
constexpr qsizetype mostReferences = 2'000'000;
constexpr OpcUa_UInt32 referencesAtATime = 10'000;

// What a server says when it was asked for too much at a time.
bool mayBeTooMuch(OpcUa_StatusCode status)
{
    constexpr OpcUa_StatusCode codes[] = {OpcUa_BadTooManyOperations, OpcUa_BadRequestTooLarge,
                                          OpcUa_BadResponseTooLarge,
                                          OpcUa_BadEncodingLimitsExceeded};
    return std::find(std::begin(codes), std::end(codes), status) != std::end(codes);
}

// One call of a host: what it asked for, and what has come so far.
template <class Item, class Result>
struct Operation
{
    QList<Item> items;
    Result result; // with its list as long as the items
    std::shared_ptr<QPromise<Result>> promise;
    qsizetype open = 1; // requests that are not answered; one for whoever still adds some

    bool goesOn() const { return !promise->isCanceled() && !result.status.isBad(); }
    void fail(OpcUa_StatusCode status, const UaString& reason = {})
    {
        if (!result.status.isBad()) {
            result = Result();
            result.status = status;
            result.reason = reason;
        }
    }
    void finishOne()
    {
        if (--open > 0)
            return;
        promise->addResult(std::move(result));
        promise->finish();
    }
};

template <class Item, class Result>
using OperationPtr = std::shared_ptr<Operation<Item, Result>>;

// `Service` says what a service looks like: its messages, and how an answer becomes results.
template <class Service>
void sendSlice(SessionWorker& worker, const typename Service::Ptr& operation, qsizetype begin,
               qsizetype count)
{
    ++operation->open;
    worker.whenRoom([&worker, operation, begin, count] {
        if (!operation->goesOn()) {
            operation->finishOne();
            return worker.release();
        }
        typename Service::Request request;
        Service::fill(request, *operation, begin, count);
        worker.request<typename Service::Response>(
            request, [&worker, operation, begin, count](OpcUa_StatusCode status,
                                                        typename Service::Response& response) {
                if (OpcUa_IsBad(status) && mayBeTooMuch(status) && count > 1) {
                    sendSlice<Service>(worker, operation, begin, count / 2);
                    sendSlice<Service>(worker, operation, begin + count / 2, count - count / 2);
                } else if (OpcUa_IsBad(status)) {
                    operation->fail(status, reasonOf(response.header));
                } else if (operation->goesOn() &&
                           !Service::take(response, *operation, begin, count)) {
                    operation->fail(OpcUa_BadUnknownResponse);
                }
                operation->finishOne();
                worker.release();
            });
    });
}

template <class Service>
void sendAll(SessionWorker& worker, const typename Service::Ptr& operation, OpcUa_UInt32 limit)
{
    const qsizetype most = limit > 0 ? std::min<qsizetype>(limit, mostOperations) : mostOperations;
    for (qsizetype begin = 0; begin < operation->items.size(); begin += most)
        sendSlice<Service>(worker, operation, begin,
                           std::min(most, operation->items.size() - begin));
    operation->finishOne();
}

// Moves the results of a slice to their places. False where their number is wrong.
template <class Results, class List, class Move>
bool takeResults(Results& results, List& list, qsizetype begin, qsizetype count, Move move)
{
    if (qsizetype(std::distance(results.begin(), results.end())) != count)
        return false;
    for (auto& result : results)
        move(result, list[begin++]);
    return true;
}

struct ReadService
{
    using Ptr = OperationPtr<QvelReadItem, QvelReadResult>;
    using Request = ReadRequest;
    using Response = ReadResponse;
    static void fill(Request& request, Ptr::element_type& o, qsizetype begin, qsizetype count)
    {
        request.nodesToRead = o.items.mid(begin, count);
    }
    static bool take(Response& response, Ptr::element_type& o, qsizetype begin, qsizetype count)
    {
        return takeResults(response.results, o.result.values, begin, count,
                           [](OpcUa_DataValue& from, UaDataValue& to) { to.attach(&from); });
    }
};

struct WriteService
{
    using Ptr = OperationPtr<QvelWriteItem, QvelWriteResult>;
    using Request = WriteRequest;
    using Response = WriteResponse;
    static void fill(Request& request, Ptr::element_type& o, qsizetype begin, qsizetype count)
    {
        request.nodesToWrite = o.items.mid(begin, count);
    }
    static bool take(Response& response, Ptr::element_type& o, qsizetype begin, qsizetype count)
    {
        return takeResults(response.results, o.result.results, begin, count,
                           [](UaStatusCode from, UaStatusCode& to) { to = from; });
    }
};

struct TranslateService
{
    using Ptr = OperationPtr<QvelBrowsePath, QvelTranslateResult>;
    using Request = TranslateBrowsePathsRequest;
    using Response = TranslateBrowsePathsResponse;
    static void fill(Request& request, Ptr::element_type& o, qsizetype begin, qsizetype count)
    {
        request.browsePaths = o.items.mid(begin, count);
    }
    static bool take(Response& response, Ptr::element_type& o, qsizetype begin, qsizetype count)
    {
        return takeResults(
            response.results, o.result.results, begin, count,
            [](QvelTranslatedPath& from, QvelTranslatedPath& to) { to = std::move(from); });
    }
};

struct CallService
{
    using Ptr = OperationPtr<QvelCallItem, QvelCallResult>;
    using Request = CallRequest;
    using Response = CallResponse;
    static void fill(Request& request, Ptr::element_type& o, qsizetype begin, qsizetype count)
    {
        request.methodsToCall = o.items.mid(begin, count);
    }
    static bool take(Response& response, Ptr::element_type& o, qsizetype begin, qsizetype count)
    {
        return takeResults(response.results, o.result.results, begin, count,
                           [](CallMethodResult& from, QvelMethodResult& to) {
                               to = std::move(static_cast<QvelMethodResult&>(from));
                           });
    }
};

struct RegisterService
{
    using Ptr = OperationPtr<UaNodeId, QvelRegisterResult>;
    using Request = RegisterNodesRequest;
    using Response = RegisterNodesResponse;
    static void fill(Request& request, Ptr::element_type& o, qsizetype begin, qsizetype count)
    {
        request.nodesToRegister = o.items.mid(begin, count);
    }
    static bool take(Response& response, Ptr::element_type& o, qsizetype begin, qsizetype count)
    {
        return takeResults(response.registeredNodeIds, o.result.nodeIds, begin, count,
                           [](UaNodeId& from, UaNodeId& to) { to = std::move(from); });
    }
};

struct UnregisterService
{
    using Ptr = OperationPtr<UaNodeId, QvelServiceResult>;
    using Request = UnregisterNodesRequest;
    using Response = UnregisterNodesResponse;
    static void fill(Request& request, Ptr::element_type& o, qsizetype begin, qsizetype count)
    {
        request.nodesToUnregister = o.items.mid(begin, count);
    }
    static bool take(Response&, Ptr::element_type&, qsizetype, qsizetype) { return true; }
};

template <class Service, class Item, class Result>
typename Service::Ptr operationOf(const QList<Item>& items,
                                  std::shared_ptr<QPromise<Result>> promise)
{
    auto operation = std::make_shared<Operation<Item, Result>>();
    operation->items = items;
    operation->promise = std::move(promise);
    return operation;
}

// What makes two references the same.
QByteArray keyOf(const QvelReference& reference)
{
    QByteArray key;
    key.reserve(64);
    BinaryEncoder encoder(key);
    encoder(reference.referenceTypeId);
    encoder(reference.isForward);
    encoder(reference.nodeId);
    return key;
}

} // namespace

void SessionWorker::read(const QList<QvelReadItem>& items,
                         std::shared_ptr<QPromise<QvelReadResult>> promise)
{
    const auto operation = operationOf<ReadService>(items, std::move(promise));
    operation->result.values.resize(items.size());
    sendAll<ReadService>(*this, operation, m_limits.read);
}

void SessionWorker::write(const QList<QvelWriteItem>& items,
                          std::shared_ptr<QPromise<QvelWriteResult>> promise)
{
    const auto operation = operationOf<WriteService>(items, std::move(promise));
    operation->result.results.resize(items.size());
    sendAll<WriteService>(*this, operation, m_limits.write);
}

void SessionWorker::translate(const QList<QvelBrowsePath>& paths,
                              std::shared_ptr<QPromise<QvelTranslateResult>> promise)
{
    const auto operation = operationOf<TranslateService>(paths, std::move(promise));
    operation->result.results.resize(paths.size());
    sendAll<TranslateService>(*this, operation, m_limits.translate);
}

void SessionWorker::call(const QList<QvelCallItem>& items,
                         std::shared_ptr<QPromise<QvelCallResult>> promise)
{
    const auto operation = operationOf<CallService>(items, std::move(promise));
    operation->result.results.resize(items.size());
    sendAll<CallService>(*this, operation, m_limits.call);
}

void SessionWorker::registerNodes(const QList<UaNodeId>& nodes,
                                  std::shared_ptr<QPromise<QvelRegisterResult>> promise)
{
    const auto operation = operationOf<RegisterService>(nodes, std::move(promise));
    operation->result.nodeIds.resize(nodes.size());
    sendAll<RegisterService>(*this, operation, m_limits.registerNodes);
}

void SessionWorker::unregisterNodes(const QList<UaNodeId>& nodes,
                                    std::shared_ptr<QPromise<QvelServiceResult>> promise)
{
    sendAll<UnregisterService>(*this, operationOf<UnregisterService>(nodes, std::move(promise)),
                               m_limits.registerNodes);
}

// Nodes are browsed together; what a page does not hold is asked for with its continuation point.
struct SessionWorker::BrowseOperation : Operation<QvelBrowseItem, QvelBrowseResult>
{
    QList<QSet<QByteArray>> seen;
    QList<qsizetype> alone; // nodes that get no continuation point among others
    bool isAlone = false;   // all others are done

    // The continuation points that came with a page, and whose they are.
    struct Next
    {
        QList<qsizetype> nodes;
        QList<QByteArray> points;
    };
    bool takePage(BrowseResponse& response, const QList<qsizetype>& nodes, bool isAlone, Next& next)
    {
        if (response.results.size() != nodes.size())
            return false;
        for (qsizetype i = 0; i < nodes.size(); ++i) {
            BrowseResult& page = response.results[i];
            QvelBrowseNodeResult& node = result.results[nodes[i]];
            if (page.status == OpcUa_BadNoContinuationPoints && !isAlone) {
                alone.append(nodes[i]);
                continue;
            }
            node.status = page.status;
            bool isNew = false;
            for (QvelReference& reference : page.references) {
                const QByteArray key = keyOf(reference);
                QSet<QByteArray>& known = seen[nodes[i]];
                const qsizetype before = known.size();
                known.insert(key);
                if (known.size() == before)
                    continue;
                isNew = true;
                node.references.append(std::move(reference));
            }
            if (page.continuationPoint.isEmpty() || page.status.isBad()) {
                seen[nodes[i]].clear();
                continue;
            }
            // A page without anything new would come again and again.
            if (!isNew)
                node.status = OpcUa_BadContinuationPointInvalid;
            else if (node.references.size() >= mostReferences)
                node.status = OpcUa_BadEncodingLimitsExceeded;
            else {
                next.nodes.append(nodes[i]);
                next.points.append(page.continuationPoint);
            }
        }
        return true;
    }
};

void SessionWorker::browse(const QList<QvelBrowseItem>& items,
                           std::shared_ptr<QPromise<QvelBrowseResult>> promise)
{
    const auto operation = std::make_shared<BrowseOperation>();
    operation->items = items;
    operation->promise = std::move(promise);
    operation->result.results.resize(items.size());
    operation->seen.resize(items.size());
    qsizetype most =
        m_limits.browse > 0 ? std::min<qsizetype>(m_limits.browse, mostOperations) : mostOperations;
    for (qsizetype begin = 0; begin < items.size(); begin += most) {
        QList<qsizetype> nodes(std::min(most, items.size() - begin));
        std::iota(nodes.begin(), nodes.end(), begin);
        browseNodes(operation, nodes);
    }
    browsePageDone(operation);
}

void SessionWorker::browseNodes(const std::shared_ptr<BrowseOperation>& operation,
                                const QList<qsizetype>& nodes)
{
    ++operation->open;
    whenRoom([this, operation, nodes] {
        if (!operation->goesOn()) {
            release();
            return browsePageDone(operation);
        }
        BrowseRequest request;
        request.requestedMaxReferencesPerNode = referencesAtATime;
        for (qsizetype node : nodes) {
            BrowseDescription description;
            static_cast<QvelBrowseItem&>(description) = operation->items[node];
            request.nodesToBrowse.append(description);
        }
        this->request<BrowseResponse>(
            request, [this, operation, nodes](OpcUa_StatusCode status, BrowseResponse& response) {
                if (OpcUa_IsBad(status) && mayBeTooMuch(status) && nodes.size() > 1) {
                    browseNodes(operation, nodes.first(nodes.size() / 2));
                    browseNodes(operation, nodes.sliced(nodes.size() / 2));
                    release();
                    return browsePageDone(operation);
                }
                takeBrowsePage(operation, nodes, status, response);
            });
    });
}

void SessionWorker::takeBrowsePage(const std::shared_ptr<BrowseOperation>& operation,
                                   const QList<qsizetype>& nodes, OpcUa_StatusCode status,
                                   BrowseResponse& response)
{
    BrowseOperation::Next next;
    if (OpcUa_IsBad(status))
        operation->fail(status, reasonOf(response.header));
    else if (operation->goesOn() && !operation->takePage(response, nodes, operation->isAlone, next))
        operation->fail(OpcUa_BadUnknownResponse);
    const bool goesOn = operation->goesOn();
    if (next.nodes.isEmpty()) {
        release();
        return browsePageDone(operation);
    }
    BrowseNextRequest request;
    request.continuationPoints = next.points;
    request.releaseContinuationPoints = !goesOn;
    this->request<BrowseNextResponse>(
        request, [this, operation, next](OpcUa_StatusCode s, BrowseNextResponse& r) {
            takeBrowsePage(operation, next.nodes, s, r);
        });
}

void SessionWorker::browsePageDone(const std::shared_ptr<BrowseOperation>& operation)
{
    if (operation->open == 1 && operation->goesOn() && !operation->alone.isEmpty()) {
        // One by one, with the continuation points of the others given back.
        operation->isAlone = true;
        browseNodes(operation, {operation->alone.takeFirst()});
    }
    operation->finishOne();
}

struct SessionWorker::HistoryOperation : Operation<QvelHistoryItem, QvelHistoryResult>
{
    QvelHistoryDetails details;
    UaExtensionObject encodedDetails;
    // The last continuation point and the last page of each node.
    QList<QByteArray> points;
    QList<UaByteString> pages;
};

void SessionWorker::historyRead(const QList<QvelHistoryItem>& items,
                                const QvelHistoryDetails& details,
                                std::shared_ptr<QPromise<QvelHistoryResult>> promise)
{
    const auto operation = std::make_shared<HistoryOperation>();
    operation->items = items;
    operation->details = details;
    operation->promise = std::move(promise);
    operation->result.results.resize(items.size());
    operation->points.resize(items.size());
    operation->pages.resize(items.size());
    const bool isRaw = details.aggregateType.isNull();
    if (isRaw)
        operation->encodedDetails =
            encodeExtension(ReadRawModifiedDetails{false, details.from.ticks(), details.to.ticks(),
                                                   details.valuesPerNode, details.returnBounds});
    qsizetype most = m_limits.historyRead > 0
                         ? std::min<qsizetype>(m_limits.historyRead, mostOperations)
                         : mostOperations;
    for (qsizetype begin = 0; begin < items.size(); begin += most) {
        QList<qsizetype> nodes(std::min(most, items.size() - begin));
        std::iota(nodes.begin(), nodes.end(), begin);
        ++operation->open;
        whenRoom([this, operation, nodes] { readHistoryPage(operation, nodes); });
    }
    operation->finishOne();
}

void SessionWorker::readHistoryPage(const std::shared_ptr<HistoryOperation>& operation,
                                    const QList<qsizetype>& nodes)
{
    const QvelHistoryDetails& details = operation->details;
    HistoryReadRequest request;
    request.historyReadDetails = operation->encodedDetails;
    if (!details.aggregateType.isNull()) // one aggregate a node
        request.historyReadDetails = encodeExtension(
            ReadProcessedDetails{details.from.ticks(),
                                 details.to.ticks(),
                                 details.processingInterval,
                                 QList<UaNodeId>(nodes.size(), details.aggregateType),
                                 {}});
    for (qsizetype node : nodes) {
        HistoryReadValueId id;
        static_cast<QvelHistoryItem&>(id) = operation->items[node];
        id.continuationPoint = operation->points[node];
        request.nodesToRead.append(id);
    }
    request.releaseContinuationPoints = !operation->goesOn();
    this->request<HistoryReadResponse>(
        request, [this, operation, nodes](OpcUa_StatusCode status, HistoryReadResponse& response) {
            QList<qsizetype> next;
            if (OpcUa_IsBad(status))
                operation->fail(status, reasonOf(response.header));
            else if (response.results.size() != nodes.size())
                operation->fail(OpcUa_BadUnknownResponse);
            for (qsizetype i = 0; operation->goesOn() && i < nodes.size(); ++i) {
                if (takeHistory(*operation, nodes[i], response.results[i]))
                    next.append(nodes[i]);
            }
            if (!next.isEmpty() && operation->goesOn())
                return readHistoryPage(operation, next);
            operation->finishOne();
            release();
        });
}

// Whether there is more to come.
bool SessionWorker::takeHistory(HistoryOperation& operation, qsizetype index,
                                HistoryReadResult& page)
{
    QvelHistoryNodeResult& node = operation.result.results[index];
    node.status = page.statusCode;
    if (isExtension<HistoryData>(page.historyData)) {
        HistoryData data;
        const OpcUa_StatusCode status =
            decodeFields(page.historyData.body().bytes(), data, m_options.limits);
        if (OpcUa_IsBad(status))
            node.status = status;
        for (OpcUa_DataValue& value : data.dataValues) {
            node.values.emplaceBack();
            node.values.last().attach(&value);
        }
    }
    if (page.continuationPoint.isEmpty() || node.status.isBad())
        return false;
    // Some servers give the same one for each page; the same page is one that comes for ever.
    const bool isRepeated = page.continuationPoint == operation.points[index] &&
                            page.historyData.body() == operation.pages[index];
    operation.points[index] = page.continuationPoint;
    operation.pages[index] = page.historyData.body();
    if (isRepeated)
        node.status = OpcUa_BadContinuationPointInvalid;
    else if (node.values.size() >= qsizetype(operation.details.maximum))
        node.status = OpcUa_BadEncodingLimitsExceeded;
    return !node.status.isBad();
}
