#pragma once

/// \file
/// The binary encoding of OPC 10000-6, 5.2: an encoder and a decoder that walk the field lists of
/// the structures. The built-in types whose fields depend on a first byte have a function each.
///
/// Texts are carried as bytes: invalid UTF-8 and embedded NULs pass unchanged.

#include "platform/stack/opcuafields_p.h"
#include "platform/stack/opcuastatuscodes.h"
#include "platform/types/uaencodinglimits.h"
#include "platform/types/uastacktypearray.h"
#include "platform/types/uastring.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QList>
#include <QtCore/QtEndian>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

class UaByteString;
class UaDataValue;
class UaExpandedNodeId;
class UaExtensionObject;
class UaLocalizedText;
class UaNodeId;
class UaQualifiedName;
class UaStatusCode;
class UaVariant;

namespace UaWire {

using DecoderLimits = UaEncodingLimits;

/// A stack structure that clears itself.
template <class T>
struct Owned
{
    T value = {};
    Owned() = default;
    Owned(Owned&& other) noexcept : value(std::exchange(other.value, T{})) {}
    Owned& operator=(Owned&& other) noexcept
    {
        std::swap(value, other.value);
        return *this;
    }
    ~Owned() { OpcUa_ClearValue(value); }
};

/// Numbers whose bytes in memory and on the wire are the same, up to the order.
template <class T>
inline constexpr bool isBlockType = std::is_arithmetic_v<T> && !std::is_same_v<T, bool>;

/// Appends values to a byte array.
class BinaryEncoder
{
public:
    explicit BinaryEncoder(QByteArray& out) : m_out(out) {}

    template <class T>
    void operator()(const T& value)
    {
        if constexpr (std::is_same_v<T, bool>)
            number(OpcUa_Byte(value));
        else if constexpr (std::is_enum_v<T>)
            number(OpcUa_UInt32(value));
        else if constexpr (std::is_arithmetic_v<T>)
            number(value);
        else
            StackFields<T>::visit(*this, value);
    }
    template <class N, class P>
    void operator()(StackArray<N, P> array)
    {
        elements(array.elements, array.count);
    }
    template <class T>
    void operator()(const UaStackTypeArray<T>& array)
    {
        elements(array.data(), OpcUa_Int32(array.length()));
    }
    /// An empty list is sent as an array without elements, never as null.
    template <class T>
    void operator()(const std::vector<T>& list)
    {
        number(OpcUa_Int32(list.size()));
        appendAll(list.data(), list.size());
    }
    template <class T>
    void operator()(const QList<T>& list)
    {
        number(OpcUa_Int32(list.size()));
        appendAll(list.constData(), std::size_t(list.size()));
    }
    template <class T>
    void operator()(const Owned<T>& value)
    {
        (*this)(value.value);
    }
    void operator()(const OpcUa_String& value) { bytes(value.Data, value.Length); }
    void operator()(const OpcUa_ByteString& value)
    {
        bytes(reinterpret_cast<const char*>(value.Data), value.Length);
    }
    void operator()(const OpcUa_Guid& value);
    void operator()(const OpcUa_NodeId& value) { nodeId(value, 0); }
    void operator()(const OpcUa_ExpandedNodeId& value);
    void operator()(const OpcUa_LocalizedText& value);
    void operator()(const OpcUa_ExtensionObject& value);
    void operator()(const OpcUa_Variant& value);
    void operator()(const OpcUa_DataValue& value);
    void operator()(const OpcUa_DiagnosticInfo& value);

    void operator()(const QByteArray& value)
    {
        bytes(value.isNull() ? nullptr : value.constData(), OpcUa_Int32(value.size()));
    }
    void operator()(const UaString& value) { (*this)(value.bytes()); }
    void operator()(const UaByteString& value);
    void operator()(const UaStatusCode& value);
    void operator()(const UaNodeId& value);
    void operator()(const UaExpandedNodeId& value);
    void operator()(const UaQualifiedName& value);
    void operator()(const UaLocalizedText& value);
    void operator()(const UaExtensionObject& value);
    void operator()(const UaVariant& value);
    void operator()(const UaDataValue& value);

    /// A numeric NodeId of namespace 0, in its shortest form.
    void typeId(OpcUa_UInt32 id) { numericId(0, id, 0); }
    /// Elements one after the other, without their number.
    template <class T>
    void appendAll(const T* data, std::size_t count)
    {
        if constexpr (isBlockType<T> && Q_BYTE_ORDER == Q_LITTLE_ENDIAN) {
            append(data, count * sizeof(T));
        } else {
            for (std::size_t i = 0; i < count; ++i)
                (*this)(data[i]);
        }
    }
    /// A DateTime within the range that the encoding has (5.2.2.5).
    void dateTime(OpcUa_DateTime value);

private:
    template <class T>
    void number(T value)
    {
        const T wire = qToLittleEndian(value);
        append(&wire, sizeof wire);
    }
    // QByteArray::append() takes a longer way for the few bytes of a field.
    void append(const void* data, std::size_t size)
    {
        if (size == 0) // of data that may be null
            return;
        const qsizetype end = m_out.size();
        m_out.resize(end + qsizetype(size));
        std::memcpy(m_out.data() + end, data, size);
    }
    template <class T>
    void elements(const T* data, OpcUa_Int32 count)
    {
        number(data ? count : OpcUa_Int32(-1));
        if (data && count > 0)
            appendAll(data, std::size_t(count));
    }
    void bytes(const char* data, OpcUa_Int32 length);
    void numericId(OpcUa_UInt16 namespaceIndex, OpcUa_UInt32 id, OpcUa_Byte flags);
    void nodeId(const OpcUa_NodeId& value, OpcUa_Byte flags);

    QByteArray& m_out;
};

/// Bytes that the smallest value of a type takes.
template <class T>
std::size_t minimalEncodedSize()
{
    static const std::size_t size = [] {
        QByteArray out;
        BinaryEncoder{out}(T{});
        return std::size_t(out.size());
    }();
    return size;
}

/// Takes values out of the bytes of one message.
///
/// Nothing is trusted: each length is checked against what is left of the message before memory is
/// taken. The first error stays: later fields are left as they are.
class BinaryDecoder
{
public:
    /// `bytes` must outlive the decoder.
    explicit BinaryDecoder(QByteArrayView bytes, const DecoderLimits& limits = {})
        : m_at(bytes.data()), m_end(bytes.data() + bytes.size()), m_limits(limits)
    {
    }

    /// Good, BadDecodingError, BadEncodingLimitsExceeded or BadOutOfMemory.
    OpcUa_StatusCode status() const { return m_status; }
    QByteArrayView rest() const { return {m_at, m_end - m_at}; }

    /// Decodes into an initialised value. What was decoded before an error is the owner's to clear.
    template <class T>
    void operator()(T& value)
    {
        if constexpr (std::is_same_v<T, bool>)
            value = number<OpcUa_Byte>() != 0;
        else if constexpr (std::is_enum_v<T>)
            value = T(number<OpcUa_UInt32>());
        else if constexpr (std::is_arithmetic_v<T>)
            value = number<T>();
        else
            StackFields<T>::visit(*this, value);
    }
    template <class N, class P>
    void operator()(StackArray<N, P> array)
    {
        using Element = std::remove_reference_t<decltype(*array.elements)>;
        const OpcUa_Int32 count = arrayLength(minimalEncodedSize<Element>(), sizeof(Element));
        if (count > 0)
            array.elements = takeElements<Element>(std::size_t(count), array.count);
    }
    template <class T>
    void operator()(UaStackTypeArray<T>& array)
    {
        OpcUa_Int32 count = 0;
        T* elements = nullptr;
        (*this)(StackArray{count, elements});
        array.attach(OpcUa_UInt32(count), elements);
    }
    template <class T>
    void operator()(std::vector<T>& list)
    {
        takeList(list);
    }
    template <class T>
    void operator()(QList<T>& list)
    {
        takeList(list);
    }
    template <class T>
    void operator()(Owned<T>& value)
    {
        (*this)(value.value);
    }
    void operator()(OpcUa_String& value);
    void operator()(OpcUa_ByteString& value);
    void operator()(OpcUa_Guid& value);
    void operator()(OpcUa_NodeId& value);
    void operator()(OpcUa_ExpandedNodeId& value);
    void operator()(OpcUa_LocalizedText& value);
    void operator()(OpcUa_ExtensionObject& value);
    void operator()(OpcUa_Variant& value);
    void operator()(OpcUa_DataValue& value);
    void operator()(OpcUa_DiagnosticInfo& value);

    void operator()(QByteArray& value);
    void operator()(UaString& value);
    void operator()(UaByteString& value);
    void operator()(UaStatusCode& value);
    void operator()(UaNodeId& value);
    void operator()(UaExpandedNodeId& value);
    void operator()(UaQualifiedName& value);
    void operator()(UaLocalizedText& value);
    void operator()(UaExtensionObject& value);
    void operator()(UaVariant& value);
    void operator()(UaDataValue& value);

    /// A NodeId; its number if it is numeric and of namespace 0, else 0.
    OpcUa_UInt32 typeId();

    /// `count` elements in memory of the stack, which count as many as `decoded` says; null when
    /// there is no memory. The caller has checked the count (arrayLength()).
    template <class T>
    T* takeElements(std::size_t count, OpcUa_Int32& decoded)
    {
        auto* elements = static_cast<T*>(OpcUa_Memory_Alloc(count * sizeof(T)));
        if (!elements) {
            fail(OpcUa_BadOutOfMemory);
            return nullptr;
        }
        if constexpr (isBlockType<T> && Q_BYTE_ORDER == Q_LITTLE_ENDIAN) {
            // arrayLength() has seen that the bytes are there.
            std::memcpy(elements, m_at, count * sizeof(T));
            m_at += count * sizeof(T);
            decoded = OpcUa_Int32(count);
        } else {
            std::size_t i = 0;
            while (i < count && OpcUa_IsGood(m_status)) {
                std::memset(static_cast<void*>(elements + i), 0, sizeof(T));
                (*this)(elements[i++]);
            }
            decoded = OpcUa_Int32(i);
        }
        return elements;
    }
    /// The checked length of an array, -1 for the null array and after an error.
    OpcUa_Int32 arrayLength(std::size_t encodedSize, std::size_t decodedSize);
    void fail(OpcUa_StatusCode status);

private:
    struct NodeIdParts;
    template <class List>
    void takeList(List& list)
    {
        using T = typename List::value_type;
        const OpcUa_Int32 count = arrayLength(minimalEncodedSize<T>(), sizeof(T));
        list.clear();
        list.resize(std::max(count, 0));
        auto element = list.begin();
        for (OpcUa_Int32 i = 0; i < count && OpcUa_IsGood(m_status); ++i)
            (*this)(*element++);
    }
    template <class T>
    T number()
    {
        if (std::size_t(m_end - m_at) < sizeof(T)) {
            fail(OpcUa_BadDecodingError);
            return T();
        }
        const T value = qFromLittleEndian<T>(m_at);
        m_at += sizeof(T);
        return value;
    }
    /// The bytes of a String or ByteString; a null view for the null value and after an error.
    QByteArrayView takeString();
    NodeIdParts takeNodeId();
    NodeIdParts takePlainNodeId();
    static OpcUa_StatusCode assign(const NodeIdParts& id, OpcUa_NodeId& value);
    static UaNodeId nodeIdOf(const NodeIdParts& id);
    OpcUa_Byte localizedTextMask();
    void takeDimensions(OpcUa_Variant& value);
    /// False, with an error, if the values would take more memory than they may.
    bool account(std::size_t bytes);
    bool enter();
    void leave() { ++m_limits.nestingDepth; }

    const char* m_at;
    const char* m_end;
    DecoderLimits m_limits;
    OpcUa_StatusCode m_status = OpcUa_Good;
};

} // namespace UaWire
