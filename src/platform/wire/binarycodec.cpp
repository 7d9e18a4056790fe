#include "binarycodec_p.h"

namespace UaWire {

namespace {

// First bytes of a NodeId (OPC 10000-6, 5.2.2.9).
enum NodeIdEncoding : OpcUa_Byte {
    TwoByte = 0,
    FourByte = 1,
    Numeric = 2,
    String = 3,
    Guid = 4,
    Opaque = 5
};

// OPC 10000-6, 5.2.2.14.
enum LocalizedTextMask : OpcUa_Byte { HasLocale = 0x01, HasText = 0x02 };

// OPC 10000-6, 5.2.2.12.
enum DiagnosticInfoMask : OpcUa_Byte {
    HasSymbolicId = 0x01,
    HasNamespaceUri = 0x02,
    HasLocalizedTextIndex = 0x04,
    HasLocaleIndex = 0x08,
    HasAdditionalInfo = 0x10,
    HasInnerStatusCode = 0x20,
    HasInnerDiagnosticInfo = 0x40
};

// OPC 10000-6, 5.2.2.15.
enum ExtensionObjectBody : OpcUa_Byte { NoBody = 0, ByteStringBody = 1, XmlBody = 2 };

// What an allocation takes besides its bytes.
constexpr std::size_t allocationOverhead = 32;

} // namespace

void BinaryEncoder::bytes(const char* data, OpcUa_Int32 length)
{
    number(data ? length : OpcUa_Int32(-1));
    if (data)
        m_out.append(data, length);
}

void BinaryEncoder::typeId(OpcUa_UInt32 id)
{
    if (id <= 0xff) {
        number(OpcUa_Byte(TwoByte));
        number(OpcUa_Byte(id));
    } else if (id <= 0xffff) {
        number(OpcUa_Byte(FourByte));
        number(OpcUa_Byte(0)); // namespace
        number(OpcUa_UInt16(id));
    } else {
        number(OpcUa_Byte(Numeric));
        number(OpcUa_UInt16(0)); // namespace
        number(id);
    }
}

void BinaryEncoder::operator()(const OpcUa_LocalizedText& value)
{
    number(OpcUa_Byte((value.Locale.Data ? HasLocale : 0) | (value.Text.Data ? HasText : 0)));
    if (value.Locale.Data)
        (*this)(value.Locale);
    if (value.Text.Data)
        (*this)(value.Text);
}

void BinaryEncoder::operator()(IgnoredExtensionObject)
{
    typeId(0);
    number(OpcUa_Byte(NoBody));
}

void BinaryDecoder::fail(OpcUa_StatusCode status)
{
    if (OpcUa_IsGood(m_status))
        m_status = status;
    m_rest = {};
}

QByteArrayView BinaryDecoder::take(std::size_t length)
{
    if (length > std::size_t(m_rest.size())) {
        fail(OpcUa_BadDecodingError);
        return {};
    }
    const QByteArrayView bytes = m_rest.first(qsizetype(length));
    m_rest = m_rest.sliced(qsizetype(length));
    return bytes;
}

bool BinaryDecoder::account(std::size_t bytes)
{
    if (bytes + allocationOverhead > m_limits.memory) {
        fail(OpcUa_BadEncodingLimitsExceeded);
        return false;
    }
    m_limits.memory -= bytes + allocationOverhead;
    return true;
}

QByteArrayView BinaryDecoder::takeString()
{
    const auto length = number<OpcUa_Int32>();
    if (OpcUa_IsNotGood(m_status) || length == -1)
        return {};
    if (length < 0 || length > m_rest.size())
        fail(OpcUa_BadDecodingError);
    else if (length > m_limits.stringLength)
        fail(OpcUa_BadEncodingLimitsExceeded);
    else
        return take(std::size_t(length));
    return {};
}

OpcUa_Int32 BinaryDecoder::arrayLength(std::size_t encodedSize, std::size_t decodedSize)
{
    const auto length = number<OpcUa_Int32>();
    if (OpcUa_IsNotGood(m_status) || length == -1)
        return -1;
    if (length < 0 || std::size_t(length) > std::size_t(m_rest.size()) / encodedSize)
        fail(OpcUa_BadDecodingError);
    else if (length > m_limits.arrayLength)
        fail(OpcUa_BadEncodingLimitsExceeded);
    else if (account(std::size_t(length) * decodedSize))
        return length;
    return -1;
}

void BinaryDecoder::operator()(OpcUa_String& value)
{
    const QByteArrayView bytes = takeString();
    if (!bytes.isNull() && account(std::size_t(bytes.size())) &&
        OpcUa_IsNotGood(OpcUa_String_Assign(&value, bytes.data(), OpcUa_Int32(bytes.size()))))
        fail(OpcUa_BadOutOfMemory);
}

void BinaryDecoder::operator()(OpcUa_ByteString& value)
{
    const QByteArrayView bytes = takeString();
    if (!bytes.isNull() && account(std::size_t(bytes.size())) &&
        OpcUa_IsNotGood(OpcUa_ByteString_Assign(&value, bytes.data(), OpcUa_Int32(bytes.size()))))
        fail(OpcUa_BadOutOfMemory);
}

void BinaryDecoder::operator()(QByteArray& value)
{
    const QByteArrayView bytes = takeString();
    if (!bytes.isNull() && account(std::size_t(bytes.size())))
        value = bytes.toByteArray();
}

void BinaryDecoder::operator()(UaString& value)
{
    QByteArray bytes;
    (*this)(bytes);
    value = UaString(bytes);
}

void BinaryDecoder::operator()(OpcUa_LocalizedText& value)
{
    const auto mask = number<OpcUa_Byte>();
    if (mask & ~(HasLocale | HasText))
        fail(OpcUa_BadDecodingError);
    if (mask & HasLocale)
        (*this)(value.Locale);
    if (mask & HasText)
        (*this)(value.Text);
}

OpcUa_UInt32 BinaryDecoder::typeId()
{
    OpcUa_UInt16 namespaceIndex = 0;
    OpcUa_UInt32 id = 0;
    switch (const auto encoding = number<OpcUa_Byte>()) {
    case TwoByte:
        id = number<OpcUa_Byte>();
        break;
    case FourByte:
        namespaceIndex = number<OpcUa_Byte>();
        id = number<OpcUa_UInt16>();
        break;
    case Numeric:
        namespaceIndex = number<OpcUa_UInt16>();
        id = number<OpcUa_UInt32>();
        break;
    case String:
    case Guid:
    case Opaque:
        take(sizeof namespaceIndex);
        if (encoding == Guid)
            take(sizeof(OpcUa_Guid));
        else
            takeString();
        break;
    default:
        fail(OpcUa_BadDecodingError);
    }
    return namespaceIndex == 0 ? id : 0;
}

void BinaryDecoder::operator()(IgnoredExtensionObject&)
{
    typeId();
    switch (number<OpcUa_Byte>()) {
    case NoBody:
        break;
    case ByteStringBody:
    case XmlBody:
        takeString();
        break;
    default:
        fail(OpcUa_BadDecodingError);
    }
}

void BinaryDecoder::operator()(IgnoredDiagnosticInfo&)
{
    for (int depth = 1;; ++depth) {
        const auto mask = number<OpcUa_Byte>();
        for (int bit : {HasSymbolicId, HasNamespaceUri, HasLocalizedTextIndex, HasLocaleIndex}) {
            if (mask & bit)
                take(sizeof(OpcUa_Int32));
        }
        if (mask & HasAdditionalInfo)
            takeString();
        if (mask & HasInnerStatusCode)
            take(sizeof(OpcUa_StatusCode));
        if (!(mask & HasInnerDiagnosticInfo))
            break;
        if (depth == m_limits.nestingDepth)
            return fail(OpcUa_BadEncodingLimitsExceeded);
    }
}

} // namespace UaWire
