#pragma once

#include "platform/stack/checkmemory_p.h"
#include "platform/wire/messages_p.h"

template <class T, class = void>
inline constexpr bool hasFieldList = false;
template <class T>
inline constexpr bool hasFieldList<T, std::void_t<decltype(sizeof(StackFields<T>))>> = true;

/// Fills every field of a message with a value of its own; texts are plain, empty, or no UTF-8.
/// What has no field list stays as it is.
struct Filler
{
    OpcUa_UInt32 last = 0;

    QByteArray text()
    {
        static const QByteArray texts[] = {"urn:plant", "", QByteArray("nul\0 \xff\xfe", 7)};
        return texts[++last % 3];
    }
    template <class T>
    void operator()(T& value)
    {
        if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>)
            value = T(++last);
        else if constexpr (hasFieldList<T>)
            StackFields<T>::visit(*this, value);
    }
    template <class N, class P>
    void operator()(StackArray<N, P> array)
    {
        using Element = std::remove_reference_t<decltype(*array.elements)>;
        array.count = 2;
        array.elements = static_cast<Element*>(OpcUa_Memory_Alloc(2 * sizeof(Element)));
        std::memset(static_cast<void*>(array.elements), 0, 2 * sizeof(Element));
        (*this)(array.elements[0]);
        (*this)(array.elements[1]);
    }
    template <class T>
    void operator()(UaStackTypeArray<T>& array)
    {
        array.resize(2);
        (*this)(array[0]);
        (*this)(array[1]);
    }
    void operator()(UaString& value) { value = UaString(text()); }
    void operator()(QByteArray& value) { value = text(); }
    void operator()(OpcUa_String& value)
    {
        const QByteArray bytes = text();
        checkMemory(OpcUa_String_Assign(&value, bytes.constData(), OpcUa_Int32(bytes.size())));
    }
    void operator()(OpcUa_ByteString& value)
    {
        checkMemory(OpcUa_ByteString_Assign(&value, "\x30\x82\x00\xff", 4));
    }
};

template <class T>
UaStackTypeArray<T> filledArray(OpcUa_UInt32 count)
{
    UaStackTypeArray<T> result;
    result.resize(count);
    for (T& element : result)
        Filler()(element);
    return result;
}
