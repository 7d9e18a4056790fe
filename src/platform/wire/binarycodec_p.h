#pragma once

/// \file
/// The binary encoding of OPC 10000-6, 5.2: an encoder and a decoder that walk the field lists of
/// the structures.
///
/// Texts are carried as bytes: invalid UTF-8 and embedded NULs pass unchanged.

#include "platform/stack/opcuafields_p.h"
#include "platform/stack/opcuastatuscodes.h"
#include "platform/types/uastacktypearray.h"
#include "platform/types/uastring.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QtEndian>

#include <cstring>

namespace UaWire {

/// Fields that discovery has no use for: they are sent as null and skipped when they come.
struct IgnoredNodeId
{
};
struct IgnoredExtensionObject
{
};
struct IgnoredDiagnosticInfo
{
};

/// Appends values to a byte array.
class BinaryEncoder
{
public:
    explicit BinaryEncoder(QByteArray& out) : m_out(out) {}

    template <class T>
    void operator()(const T& value)
    {
        static_assert(!std::is_same_v<T, OpcUa_NodeId> && !std::is_same_v<T, OpcUa_ExpandedNodeId>,
                      "not encoded by its field list");
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
    void operator()(const OpcUa_String& value) { bytes(value.Data, value.Length); }
    void operator()(const OpcUa_ByteString& value)
    {
        bytes(reinterpret_cast<const char*>(value.Data), value.Length);
    }
    void operator()(const UaString& value) { (*this)(value.bytes()); }
    void operator()(const QByteArray& value)
    {
        bytes(value.isNull() ? nullptr : value.constData(), OpcUa_Int32(value.size()));
    }
    void operator()(const OpcUa_LocalizedText& value);
    void operator()(IgnoredNodeId) { typeId(0); }
    void operator()(IgnoredExtensionObject);
    void operator()(IgnoredDiagnosticInfo) { number(OpcUa_Byte(0)); }

    /// A numeric NodeId of namespace 0, in its shortest form.
    void typeId(OpcUa_UInt32 id);

private:
    template <class T>
    void number(T value)
    {
        const T wire = qToLittleEndian(value);
        m_out.append(reinterpret_cast<const char*>(&wire), sizeof wire);
    }
    template <class T>
    void elements(const T* data, OpcUa_Int32 count)
    {
        number(data ? count : OpcUa_Int32(-1));
        for (OpcUa_Int32 i = 0; data && i < count; ++i)
            (*this)(data[i]);
    }
    void bytes(const char* data, OpcUa_Int32 length);

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

/// What a decoder takes from a peer.
struct DecoderLimits
{
    OpcUa_Int32 stringLength = 1 << 20; ///< bytes of a String or ByteString
    OpcUa_Int32 arrayLength = 1 << 16;  ///< elements
    int nestingDepth = 100;             ///< of DiagnosticInfo (OPC 10000-6, 5.2.2.12 asks for 100)
    std::size_t memory = 24u << 20;     ///< bytes that all decoded values may take together
};

/// Takes values out of the bytes of one message.
///
/// Nothing is trusted: each length is checked against what is left of the message before memory is
/// taken. The first error stays: later fields are left as they are.
class BinaryDecoder
{
public:
    /// `bytes` must outlive the decoder.
    explicit BinaryDecoder(QByteArrayView bytes, const DecoderLimits& limits = {})
        : m_rest(bytes), m_limits(limits)
    {
    }

    /// Good, BadDecodingError, BadEncodingLimitsExceeded or BadOutOfMemory.
    OpcUa_StatusCode status() const { return m_status; }
    QByteArrayView rest() const { return m_rest; }

    /// Decodes into an initialised value. What was decoded before an error is the owner's to clear.
    template <class T>
    void operator()(T& value)
    {
        static_assert(!std::is_same_v<T, OpcUa_NodeId> && !std::is_same_v<T, OpcUa_ExpandedNodeId>,
                      "not encoded by its field list");
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
        if (count <= 0)
            return;
        const std::size_t size = std::size_t(count) * sizeof(Element);
        void* block = OpcUa_Memory_Alloc(size);
        if (!block)
            return fail(OpcUa_BadOutOfMemory);
        std::memset(block, 0, size);
        array.count = count;
        array.elements = static_cast<Element*>(block);
        for (OpcUa_Int32 i = 0; i < count && OpcUa_IsGood(m_status); ++i)
            (*this)(array.elements[i]);
    }
    template <class T>
    void operator()(UaStackTypeArray<T>& array)
    {
        OpcUa_Int32 count = 0;
        T* elements = nullptr;
        (*this)(StackArray{count, elements});
        array.attach(OpcUa_UInt32(count), elements);
    }
    void operator()(OpcUa_String& value);
    void operator()(OpcUa_ByteString& value);
    void operator()(UaString& value);
    void operator()(QByteArray& value);
    void operator()(OpcUa_LocalizedText& value);
    void operator()(IgnoredNodeId&) { typeId(); }
    void operator()(IgnoredExtensionObject&);
    void operator()(IgnoredDiagnosticInfo&);

    /// A NodeId; its number if it is numeric and of namespace 0, else 0.
    OpcUa_UInt32 typeId();

private:
    template <class T>
    T number()
    {
        const QByteArrayView bytes = take(sizeof(T));
        return bytes.isEmpty() ? T() : qFromLittleEndian<T>(bytes.data());
    }
    /// The next `length` bytes, or an error and none.
    QByteArrayView take(std::size_t length);
    /// The bytes of a String or ByteString; a null view for the null value and after an error.
    QByteArrayView takeString();
    /// The checked length of an array, -1 for the null array and after an error.
    OpcUa_Int32 arrayLength(std::size_t encodedSize, std::size_t decodedSize);
    /// False, with an error, if the values would take more memory than they may.
    bool account(std::size_t bytes);
    void fail(OpcUa_StatusCode status);

    QByteArrayView m_rest;
    DecoderLimits m_limits;
    OpcUa_StatusCode m_status = OpcUa_Good;
};

} // namespace UaWire
