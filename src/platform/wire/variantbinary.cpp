// The binary encoding of a UaVariant, for hosts with a stack of their own.

#include "platform/wire/binarycodec_p.h"

#include "platform/types/uavariant.h"

QByteArray UaVariant::toBinary() const
{
    QByteArray bytes;
    UaWire::BinaryEncoder{bytes}(*this);
    return bytes;
}

OpcUa_StatusCode UaVariant::fromBinary(QByteArrayView bytes, const UaEncodingLimits& limits)
{
    UaWire::BinaryDecoder decoder(bytes, limits);
    UaVariant value;
    decoder(value);
    if (OpcUa_IsGood(decoder.status()) && !decoder.rest().isEmpty())
        decoder.fail(OpcUa_BadDecodingError);
    if (OpcUa_IsGood(decoder.status()))
        *this = value;
    return decoder.status();
}
