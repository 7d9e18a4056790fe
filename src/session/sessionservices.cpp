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
// References that one answer may hold, and what each takes besides its bytes, about.
constexpr OpcUa_UInt32 referencesAtATime = 10'000;
constexpr std::size_t referenceOverhead = sizeof(QvelReference) + 200;
constexpr int mostEmptyPages = 100; // of history, in a row

qsizetype atATime(OpcUa_UInt32 limit)
{
    return limit > 0 ? std::min<qsizetype>(limit, mostOperations) : mostOperations;
}

// Cuts the places of a list.
template <class Function>
void forEachSlice(qsizetype size, OpcUa_UInt32 limit, Function function)
{
    const qsizetype most = atATime(limit);
    for (qsizetype begin = 0; begin < size; begin += most) {
        QList<qsizetype> places(std::min(most, size - begin));
        std::iota(places.begin(), places.end(), begin);
        function(places);
    }
}

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
    void finishOne(SessionWorker& worker)
    {
        if (--open > 0)
            return;
        worker.complete([promise = promise, result = std::move(result)]() mutable {
            promise->addResult(std::move(result));
            promise->finish();
        });
    }
};

template <class Item, class Result>
using OperationPtr = std::shared_ptr<Operation<Item, Result>>;

template <class Results>
bool hasResults(const Results& results, qsizetype count)
{
    return std::distance(results.begin(), results.end()) == count;
}

// Moves one result out of a message.
void take(OpcUa_DataValue& from, UaDataValue& to)
{
    to.attach(&from);
}
template <class From, class To>
void take(From& from, To& to)
{
    to = std::move(static_cast<To&>(from)); // of a message's type, or of one that derives from it
}

// A service that answers each item of a list: its messages, where its results go, and the server's
// limit. The results are none where the answer has nothing but a status for all.
template <class RequestType, class ResponseType, auto resultList, auto serverLimit>
struct ItemsService
{
    using Request = RequestType;
    using Response = ResponseType;
    static constexpr auto results = resultList;
    static constexpr auto limit = serverLimit;
    static constexpr bool hasResults = !std::is_same_v<decltype(resultList), std::nullptr_t>;
};
template <class Item, class Result>
struct ServiceOf; // by what the host gives and gets

template <class Item, class Result>
void sendSlice(SessionWorker& worker, const OperationPtr<Item, Result>& operation, qsizetype begin,
               qsizetype count)
{
    using Service = ServiceOf<Item, Result>;
    using Response = typename Service::Response;
    ++operation->open;
    worker.whenRoom([&worker, operation, begin, count] {
        if (!operation->goesOn()) {
            operation->finishOne(worker);
            return worker.release();
        }
        typename Service::Request request;
        request.items = operation->items.mid(begin, count);
        worker.request<Response>(request, [&worker, operation, begin,
                                           count](OpcUa_StatusCode status, Response& response) {
            if (OpcUa_IsBad(status) && mayBeTooMuch(status) && count > 1) {
                sendSlice(worker, operation, begin, count / 2);
                sendSlice(worker, operation, begin + count / 2, count - count / 2);
            } else if (OpcUa_IsBad(status)) {
                operation->fail(status, reasonOf(response.header));
            } else if constexpr (Service::hasResults) {
                if (!hasResults(response.results, count)) {
                    operation->fail(OpcUa_BadUnknownResponse);
                } else if (operation->goesOn()) {
                    qsizetype place = begin;
                    for (auto& result : response.results)
                        take(result, (operation->result.*Service::results)[place++]);
                }
            }
            operation->finishOne(worker);
            worker.release();
        });
    });
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

template <class Item, class Result>
void SessionWorker::perform(const QList<Item>& items, std::shared_ptr<QPromise<Result>> promise)
{
    using Service = ServiceOf<Item, Result>;
    const auto operation = std::make_shared<Operation<Item, Result>>();
    operation->items = items;
    operation->promise = std::move(promise);
    if constexpr (Service::hasResults)
        (operation->result.*Service::results).resize(items.size());
    const qsizetype most = atATime(m_limits.*Service::limit);
    for (qsizetype begin = 0; begin < items.size(); begin += most)
        sendSlice(*this, operation, begin, std::min(most, items.size() - begin));
    operation->finishOne(*this);
}

// One line registers a service.
#define KESTREL_ITEMS_SERVICE(Item, Result, ...)                                                   \
    namespace {                                                                                    \
    template <>                                                                                    \
    struct ServiceOf<Item, Result> : ItemsService<__VA_ARGS__>                                     \
    {                                                                                              \
    };                                                                                             \
    }                                                                                              \
    template void SessionWorker::perform(const QList<Item>&, std::shared_ptr<QPromise<Result>>);
KESTREL_ITEMS_SERVICE(QvelReadItem, QvelReadResult, ReadRequest, ReadResponse,
                      &QvelReadResult::values, &OperationLimits::read)
KESTREL_ITEMS_SERVICE(QvelWriteItem, QvelWriteResult, WriteRequest, WriteResponse,
                      &QvelWriteResult::results, &OperationLimits::write)
KESTREL_ITEMS_SERVICE(QvelBrowsePath, QvelTranslateResult, TranslateBrowsePathsRequest,
                      TranslateBrowsePathsResponse, &QvelTranslateResult::results,
                      &OperationLimits::translate)
KESTREL_ITEMS_SERVICE(QvelCallItem, QvelCallResult, CallRequest, CallResponse,
                      &QvelCallResult::results, &OperationLimits::call)
KESTREL_ITEMS_SERVICE(UaNodeId, QvelRegisterResult, RegisterNodesRequest, RegisterNodesResponse,
                      &QvelRegisterResult::nodeIds, &OperationLimits::registerNodes)
KESTREL_ITEMS_SERVICE(UaNodeId, QvelServiceResult, UnregisterNodesRequest, UnregisterNodesResponse,
                      nullptr, &OperationLimits::registerNodes)

// Nodes are browsed together; what a page does not hold is asked for with its continuation point.
struct SessionWorker::BrowseOperation : Operation<QvelBrowseItem, QvelBrowseResult>
{
    QList<QSet<QByteArray>> seen;
    std::size_t most = 0; // bytes that all references may take
    std::size_t taken = 0;
    QList<qsizetype> alone; // nodes that get no continuation point among others
    bool isAlone = false;   // all others are done

    // The continuation points that came with a page: those to go on with, and whose they are, and
    // those that are of no use.
    struct Next
    {
        QList<qsizetype> nodes;
        QList<QByteArray> points;
        QList<QByteArray> surplus;
    };
    Next takePage(QList<BrowseResult>& pages, const QList<qsizetype>& nodes)
    {
        Next next;
        for (qsizetype i = 0; i < pages.size(); ++i) {
            BrowseResult& page = pages[i];
            if (goesOn() && i < nodes.size() && takeNode(page, nodes[i])) {
                next.nodes.append(nodes[i]);
                next.points.append(page.continuationPoint);
            } else if (!page.continuationPoint.isEmpty()) {
                next.surplus.append(page.continuationPoint);
            }
        }
        return next;
    }
    // Whether there is more to come.
    bool takeNode(BrowseResult& page, qsizetype index)
    {
        if (page.status == OpcUa_BadNoContinuationPoints && !isAlone) {
            alone.append(index);
            return false;
        }
        QvelBrowseNodeResult& node = result.results[index];
        QSet<QByteArray>& known = seen[index];
        const qsizetype before = known.size();
        for (QvelReference& reference : page.references) {
            const qsizetype size = known.size();
            const QByteArray key = keyOf(reference);
            known.insert(key);
            if (known.size() == size)
                continue;
            taken += referenceOverhead + 2 * std::size_t(key.size()) +
                     std::size_t(reference.browseName.name().size()) +
                     std::size_t(reference.displayName.text().size());
            node.references.append(std::move(reference));
        }
        node.status = page.status;
        if (page.continuationPoint.isEmpty() || page.status.isBad()) {
            known = {};
            return false;
        }
        // A page without anything new would come again and again.
        if (known.size() == before)
            node.status = OpcUa_BadContinuationPointInvalid;
        else if (taken > most)
            node.status = OpcUa_BadEncodingLimitsExceeded;
        return !node.status.isBad();
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
    operation->most = m_options.limits.memory;
    forEachSlice(items.size(), m_limits.browse,
                 [&](const QList<qsizetype>& nodes) { browseNodes(operation, nodes); });
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

template <class Response>
void SessionWorker::takeBrowsePage(const std::shared_ptr<BrowseOperation>& operation,
                                   const QList<qsizetype>& nodes, OpcUa_StatusCode status,
                                   Response& response)
{
    if (OpcUa_IsBad(status))
        operation->fail(status, reasonOf(response.header));
    else if (response.results.size() != nodes.size())
        operation->fail(OpcUa_BadUnknownResponse);
    const BrowseOperation::Next next = operation->takePage(response.results, nodes);
    BrowseNextRequest r;
    if (!next.surplus.isEmpty()) {
        r.continuationPoints = next.surplus;
        r.releaseContinuationPoints = true;
        request<BrowseNextResponse>(r, [](OpcUa_StatusCode, BrowseNextResponse&) {});
    }
    if (next.nodes.isEmpty()) {
        release();
        return browsePageDone(operation);
    }
    r.continuationPoints = next.points;
    r.releaseContinuationPoints = false;
    request<BrowseNextResponse>(
        r, [this, operation, nodes = next.nodes](OpcUa_StatusCode s, BrowseNextResponse& more) {
            takeBrowsePage(operation, nodes, s, more);
        });
}

void SessionWorker::browsePageDone(const std::shared_ptr<BrowseOperation>& operation)
{
    if (operation->open == 1 && operation->goesOn() && !operation->alone.isEmpty()) {
        // One by one, with the continuation points of the others given back.
        operation->isAlone = true;
        browseNodes(operation, {operation->alone.takeFirst()});
    }
    operation->finishOne(*this);
}

struct SessionWorker::HistoryOperation : Operation<QvelHistoryItem, QvelHistoryResult>
{
    QvelHistoryDetails details;
    UaExtensionObject encodedDetails;
    qsizetype taken = 0;   // values
    std::size_t bytes = 0; // that were sent for them
    // The last continuation point and the last page of each node, and how many came without values.
    struct Place
    {
        QByteArray point;
        UaByteString page;
        int empty = 0;
    };
    QList<Place> places;
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
    operation->places.resize(items.size());
    const bool isRaw = details.aggregateType.isNull();
    if (isRaw)
        operation->encodedDetails =
            encodeExtension(ReadRawModifiedDetails{false, details.from.ticks(), details.to.ticks(),
                                                   details.valuesPerNode, details.returnBounds});
    forEachSlice(items.size(), m_limits.historyRead, [&](const QList<qsizetype>& nodes) {
        ++operation->open;
        whenRoom([this, operation, nodes] { readHistoryPage(operation, nodes); });
    });
    operation->finishOne(*this);
}

HistoryReadRequest SessionWorker::historyRequest(const HistoryOperation& operation,
                                                 const QList<qsizetype>& nodes)
{
    const QvelHistoryDetails& details = operation.details;
    HistoryReadRequest request;
    request.historyReadDetails = operation.encodedDetails;
    if (!details.aggregateType.isNull()) // one aggregate a node
        request.historyReadDetails = encodeExtension(
            ReadProcessedDetails{details.from.ticks(),
                                 details.to.ticks(),
                                 details.processingInterval,
                                 QList<UaNodeId>(nodes.size(), details.aggregateType),
                                 {}});
    for (qsizetype node : nodes) {
        HistoryReadValueId id;
        static_cast<QvelHistoryItem&>(id) = operation.items[node];
        id.continuationPoint = operation.places[node].point;
        request.nodesToRead.append(id);
    }
    return request;
}

void SessionWorker::readHistoryPage(const std::shared_ptr<HistoryOperation>& operation,
                                    const QList<qsizetype>& nodes)
{
    HistoryReadRequest request = historyRequest(*operation, nodes);
    this->request<HistoryReadResponse>(
        request, [this, operation, nodes](OpcUa_StatusCode status, HistoryReadResponse& response) {
            QList<qsizetype> next;
            QList<qsizetype> surplus; // continuation points that the server may forget
            if (OpcUa_IsBad(status))
                operation->fail(status, reasonOf(response.header));
            else if (response.results.size() != nodes.size())
                operation->fail(OpcUa_BadUnknownResponse);
            for (qsizetype i = 0; i < std::min(nodes.size(), response.results.size()); ++i) {
                HistoryReadResult& page = response.results[i];
                if (operation->goesOn() && takeHistory(*operation, nodes[i], page)) {
                    next.append(nodes[i]);
                } else if (!page.continuationPoint.isEmpty()) {
                    operation->places[nodes[i]].point = page.continuationPoint;
                    surplus.append(nodes[i]);
                }
            }
            if (!surplus.isEmpty()) {
                HistoryReadRequest last = historyRequest(*operation, surplus);
                last.releaseContinuationPoints = true;
                this->request<HistoryReadResponse>(last,
                                                   [](OpcUa_StatusCode, HistoryReadResponse&) {});
            }
            if (!next.isEmpty())
                return readHistoryPage(operation, next);
            operation->finishOne(*this);
            release();
        });
}

// Whether there is more to come.
bool SessionWorker::takeHistory(HistoryOperation& operation, qsizetype index,
                                HistoryReadResult& page)
{
    QvelHistoryNodeResult& node = operation.result.results[index];
    HistoryOperation::Place& place = operation.places[index];
    node.status = page.statusCode;
    ++place.empty;
    if (isExtension<HistoryData>(page.historyData)) {
        HistoryData data;
        const OpcUa_StatusCode status =
            decodeFields(page.historyData.body().bytes(), data, m_options.limits);
        if (OpcUa_IsBad(status))
            node.status = status;
        for (OpcUa_DataValue& value : data.dataValues) {
            node.values.emplaceBack();
            node.values.last().attach(&value);
            place.empty = 0;
        }
        operation.taken += qsizetype(data.dataValues.length());
        operation.bytes += std::size_t(page.historyData.body().length());
    }
    if (page.continuationPoint.isEmpty() || node.status.isBad())
        return false;
    // Some servers give the same one for each page; the same page is one that comes for ever.
    const bool isRepeated =
        page.continuationPoint == place.point && page.historyData.body() == place.page;
    place.point = page.continuationPoint;
    place.page = page.historyData.body();
    if (isRepeated || place.empty > mostEmptyPages)
        node.status = OpcUa_BadContinuationPointInvalid;
    else if (operation.taken >= qsizetype(operation.details.maximum) ||
             operation.bytes > m_options.limits.memory)
        node.status = OpcUa_BadEncodingLimitsExceeded;
    return !node.status.isBad();
}
