// What decoding costs, over the memcpy of the same bytes.

#include "benchmarks/figure.h"
#include "platform/types/uavariant.h"
#include "platform/wire/binarycodec_p.h"

#include <cstdlib>

using namespace UaWire;

namespace {

constexpr int runs = 51;

double copyMilliseconds(const QByteArray& bytes)
{
    void* block = nullptr;
    const double time = milliseconds([&] {
        block = std::malloc(size_t(bytes.size()));
        std::memcpy(block, bytes.constData(), size_t(bytes.size()));
        __asm__ volatile("" : : "r"(block) : "memory"); // is not left out
    });
    std::free(block);
    return time;
}

template <class T>
double ratio(const QByteArray& bytes)
{
    const auto [decode, copy] = medians(
        runs,
        [&] {
            T value; // freed outside the measure
            return milliseconds([&] {
                BinaryDecoder decoder(bytes);
                decoder(value);
                if (OpcUa_IsNotGood(decoder.status()))
                    std::abort();
            });
        },
        [&] { return copyMilliseconds(bytes); });
    return decode / copy;
}

} // namespace

int main()
{
    Figures figures("session");
    QByteArray bytes;
    BinaryEncoder encoder(bytes);
    constexpr OpcUa_Int32 numbers = 1'000'000;
    encoder(OpcUa_Byte(0x80 | OpcUaType_Int32));
    encoder(numbers);
    for (OpcUa_Int32 i = 0; i < numbers; ++i)
        encoder(i);
    figures.report("decode-1M-Int32", ratio<UaVariant>(bytes), 2);

    bytes.clear();
    constexpr OpcUa_Int32 values = 100'000;
    encoder(values);
    for (OpcUa_Int32 i = 0; i < values; ++i) {
        OpcUa_DataValue value = {};
        value.Value.Datatype = OpcUaType_Double;
        value.Value.Value.Double = i;
        value.SourceTimestamp = value.ServerTimestamp = 133'000'000'000'000'000 + i;
        encoder(value);
    }
    figures.report("decode-100k-DataValue", ratio<UaStackTypeArray<OpcUa_DataValue>>(bytes), 6);
    return figures.result();
}
