// Every answer that a session takes, and what stands encoded in one. The first byte chooses the
// message, the rest is decoded.

#include "session/sessionmessages_p.h"

#include <cstdint>
#include <cstdlib>

using namespace UaWire;

namespace {

// What was decoded can be encoded. Times beyond the range of the encoding come back otherwise; what
// has been through once stays.
template <class T>
QByteArray again(QByteArrayView fields)
{
    T value;
    if (OpcUa_IsNotGood(decodeFields(fields, value)))
        std::abort();
    QByteArray out;
    BinaryEncoder{out}(value);
    return out;
}

template <class T>
void decodeAs(QByteArrayView fields)
{
    T value;
    if (OpcUa_IsNotGood(decodeFields(fields, value)))
        return;
    QByteArray once;
    BinaryEncoder{once}(value);
    const QByteArray twice = again<T>(once);
    if (again<T>(twice) != twice)
        std::abort();
}

template <class T>
void decodeResponseOf(QByteArrayView fields)
{
    decodeAs<T>(fields);
    QByteArray body;
    BinaryEncoder{body}.typeId(T::encodingId);
    body += fields;
    T response;
    if (OpcUa_IsBad(decodeResponse(body, 1, response)))
        static_cast<void>(reasonOf(response.header));
}

// The place of each is the first byte of the files in the corpus: add new ones at the end.
constexpr void (*decoders[])(QByteArrayView) = {
    decodeResponseOf<OpenSecureChannelResponse>,
    decodeResponseOf<GetEndpointsResponse>,
    decodeResponseOf<CreateSessionResponse>,
    decodeResponseOf<ActivateSessionResponse>,
    decodeResponseOf<CloseSessionResponse>,
    decodeResponseOf<BrowseResponse>,
    decodeResponseOf<BrowseNextResponse>,
    decodeResponseOf<TranslateBrowsePathsResponse>,
    decodeResponseOf<RegisterNodesResponse>,
    decodeResponseOf<UnregisterNodesResponse>,
    decodeResponseOf<ReadResponse>,
    decodeResponseOf<WriteResponse>,
    decodeResponseOf<HistoryReadResponse>,
    decodeResponseOf<CallResponse>,
    decodeResponseOf<CreateMonitoredItemsResponse>,
    decodeResponseOf<ModifyMonitoredItemsResponse>,
    decodeResponseOf<SetMonitoringModeResponse>,
    decodeResponseOf<DeleteMonitoredItemsResponse>,
    decodeResponseOf<CreateSubscriptionResponse>,
    decodeResponseOf<ModifySubscriptionResponse>,
    decodeResponseOf<SetPublishingModeResponse>,
    decodeResponseOf<DeleteSubscriptionsResponse>,
    decodeResponseOf<TransferSubscriptionsResponse>,
    decodeResponseOf<PublishResponse>,
    decodeResponseOf<RepublishResponse>,
    decodeAs<DataChangeNotification>,
    decodeAs<EventNotificationList>,
    decodeAs<StatusChangeNotification>,
    decodeAs<HistoryData>,
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size > 0)
        decoders[*data % std::size(decoders)]({data + 1, qsizetype(size - 1)});
    return 0;
}
