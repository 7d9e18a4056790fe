// A value in binary and in JSON, as a host hands it in. The first byte chooses.

#include "platform/types/uavariant.h"

#include "platform/stack/opcuastatuscodes.h"

#include <cstdint>
#include <cstdlib>

namespace {

void check(bool ok)
{
    if (!ok)
        std::abort();
}

QByteArray again(const QByteArray& binary)
{
    UaVariant value;
    check(OpcUa_IsGood(value.fromBinary(binary)));
    return value.toBinary();
}

void readBinary(QByteArrayView bytes)
{
    UaVariant value;
    if (OpcUa_IsNotGood(value.fromBinary(bytes))) {
        check(value.toBinary() == UaVariant().toBinary());
        return;
    }
    // Times beyond the range of the encoding come back otherwise; what has been through once stays.
    const QByteArray once = again(value.toBinary());
    check(again(once) == once);
    value.toJson(UaJsonForm::NonReversible);
    const QByteArray json = value.toJson();
    UaVariant third;
    check(OpcUa_IsGood(third.fromJson(json)));
}

void readJson(QByteArrayView json)
{
    UaVariant value;
    if (OpcUa_IsNotGood(value.fromJson(json))) {
        check(value.toBinary() == UaVariant().toBinary());
        return;
    }
    const QByteArray once = value.toJson();
    UaVariant second;
    check(OpcUa_IsGood(second.fromJson(once)));
    check(second.toJson() == once);
    again(value.toBinary());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QByteArrayView rest(data + 1, qsizetype(size - 1));
    // So that '{' and all that a text begins with is JSON.
    *data & 0x20 ? readJson(rest) : readBinary(rest);
    return 0;
}
