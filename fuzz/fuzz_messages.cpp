// Everything that the client takes from a connection: the input is read once as the bytes of a
// connection and once as the body of a message.

#include "platform/wire/messagechunks_p.h"

#include <cstdint>
#include <cstdlib>

using namespace UaWire;

namespace {

template <class T>
bool decodeAs(OpcUa_UInt32 typeId, QByteArrayView fields)
{
    if (typeId != T::encodingId)
        return false;
    T value;
    if (OpcUa_IsGood(decodeFields(fields, value))) {
        // What was decoded can be encoded, and decoded once more.
        QByteArray again;
        BinaryEncoder{again}(value);
        T second;
        if (OpcUa_IsNotGood(decodeFields(again, second)))
            std::abort();
    }
    return true;
}

template <class... T>
void decodeAsOneOf(QByteArrayView body)
{
    const OpcUa_UInt32 typeId = takeTypeId(body);
    static_cast<void>((decodeAs<T>(typeId, body) || ...));
}

void decodeBody(QByteArrayView body)
{
    decodeAsOneOf<ServiceFault, OpenSecureChannelRequest, OpenSecureChannelResponse,
                  CloseSecureChannelRequest, FindServersRequest, FindServersResponse,
                  FindServersOnNetworkRequest, FindServersOnNetworkResponse, GetEndpointsRequest,
                  GetEndpointsResponse>(body);
}

template <class T>
void decodeConnectionMessage(QByteArrayView fields)
{
    T value;
    decodeFields(fields, value);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArrayView input(data, qsizetype(size));
    decodeBody(input);

    MessageReader reader;
    reader.append(input);
    while (const std::optional<Message> message = reader.next()) {
        switch (message->type) {
        case MessageType::Hello:
            decodeConnectionMessage<Hello>(message->body);
            break;
        case MessageType::Acknowledge:
            decodeConnectionMessage<Acknowledge>(message->body);
            break;
        case MessageType::Error:
            decodeConnectionMessage<Error>(message->body);
            break;
        default:
            decodeBody(message->body);
        }
    }
    return 0;
}
