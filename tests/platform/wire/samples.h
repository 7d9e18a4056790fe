#pragma once

#include "platform/stack/checkmemory_p.h"
#include "platform/wire/messages_p.h"

#include <QtCore/QtCore>

template <class T, class = void>
inline constexpr bool hasFieldList = false;
template <class T>
inline constexpr bool hasFieldList<T, std::void_t<decltype(sizeof(StackFields<T>))>> = true;

/// Fills every field of a message at random, the same each time; texts are null, empty, plain, or
/// no UTF-8. What has no field list stays as it is.
struct Filler
{
    QRandomGenerator random{1};

    QByteArray text()
    {
        static const QByteArray texts[] = {{}, "", "urn:plant", QByteArray("nul\0 \xff\xfe", 7)};
        return texts[random.bounded(4)];
    }
    template <class T>
    void operator()(T& value)
    {
        if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>)
            value = T(random.generate());
        else if constexpr (hasFieldList<T>)
            StackFields<T>::visit(*this, value);
    }
    template <class N, class P>
    void operator()(StackArray<N, P> array)
    {
        const std::size_t count = random.bounded(3);
        const std::size_t size = count * sizeof(*array.elements);
        if (count > 0)
            array.elements = decltype(+array.elements)(OpcUa_Memory_ReAlloc(nullptr, size));
        if (count > 0)
            std::memset(static_cast<void*>(array.elements), 0, size);
        for (array.count = 0; std::size_t(array.count) < count; ++array.count)
            (*this)(array.elements[array.count]);
    }
    template <class T>
    void operator()(UaStackTypeArray<T>& array)
    {
        if (const int count = random.bounded(3))
            array.resize(OpcUa_UInt32(count));
        for (T& element : array)
            (*this)(element);
    }
    void operator()(UaString& value) { value = UaString(text()); }
    void operator()(QByteArray& value) { value = text(); }
    void operator()(OpcUa_String& value)
    {
        if (const QByteArray bytes = text(); !bytes.isNull())
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
