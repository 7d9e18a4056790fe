// The client's end of a channel without security, driven by what a server may send. The input is a
// row of steps: a byte that says what, one that says how much, and as many bytes of the server.

#include "platform/wire/securechannel_p.h"

#include <cstdint>
#include <cstdlib>

using namespace UaWire;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    enum Step { Receive = 0, Send = 1, Wait = 2, Close = 3, Count = 4 };
    QByteArrayView input(data, qsizetype(size));
    qint64 now = 0;
    SecureChannel::Settings settings;
    settings.endpointUrl = "opc.tcp://a";
    settings.limits.messageSize = 1 << 16;
    settings.limits.chunkCount = 16;
    SecureChannel channel(settings);
    channel.start(now);
    while (input.size() >= 2) {
        const int step = OpcUa_Byte(input[0]) % Count;
        const qsizetype amount = OpcUa_Byte(input[1]);
        input = input.sliced(2);
        if (step == Receive) {
            const QByteArrayView bytes = input.first(std::min(amount, input.size()));
            input = input.sliced(bytes.size());
            channel.receive(bytes, now);
        } else if (step == Send && channel.state() == SecureChannel::State::Open) {
            channel.send(QByteArray(amount * amount, 'x'));
        } else if (step == Wait) {
            now += amount * amount * 1000;
            channel.tick(now);
        } else if (step == Close) {
            channel.close();
        }
        while (const std::optional<Message> message = channel.next()) {
            if (message->body.size() > qsizetype(settings.limits.messageSize))
                std::abort();
        }
        if ((channel.state() == SecureChannel::State::Failed) == OpcUa_IsGood(channel.status()))
            std::abort();
        channel.takeOutput();
    }
    return 0;
}
