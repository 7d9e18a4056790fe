#pragma once

#include "../stack/opcuatypes.h"

#include <cstring>
#include <initializer_list>
#include <limits>
#include <type_traits>
#include <utility>

/// An owned array of stack structures or numbers, in memory of the stack. Movable, not copyable.
template <class T>
class UaStackTypeArray
{
public:
    UaStackTypeArray() = default;
    /// Copies of some numbers or structures; empty when there is no memory for them.
    UaStackTypeArray(std::initializer_list<T> elements)
    {
        bool ok = create(OpcUa_UInt32(elements.size()));
        for (std::size_t i = 0; ok && i < elements.size(); ++i)
            ok = copyElement(elements.begin()[i], m_data[i]);
        if (!ok)
            clear();
    }
    UaStackTypeArray(UaStackTypeArray&& other) noexcept { swap(other); }
    UaStackTypeArray& operator=(UaStackTypeArray&& other) noexcept
    {
        swap(other);
        return *this;
    }
    ~UaStackTypeArray() { clear(); }

    OpcUa_UInt32 length() const { return m_length; }
    /// As containers call it.
    OpcUa_UInt32 size() const { return m_length; }
    T* data() { return m_data; }
    const T* data() const { return m_data; }
    /// `index` must be below length().
    T& operator[](OpcUa_UInt32 index) { return m_data[index]; }
    const T& operator[](OpcUa_UInt32 index) const { return m_data[index]; }
    T* begin() { return m_data; }
    T* end() { return m_data + m_length; }
    const T* begin() const { return m_data; }
    const T* end() const { return m_data + m_length; }

    /// Replaces all elements by `length` null ones. False, with nothing changed, when there is no
    /// memory.
    bool create(OpcUa_UInt32 length)
    {
        UaStackTypeArray fresh;
        if (!fresh.resize(length))
            return false;
        swap(fresh);
        return true;
    }
    /// Clears what falls away and initialises what is added. False, with nothing changed, when
    /// there is no memory.
    bool resize(OpcUa_UInt32 length)
    {
        if (length > std::numeric_limits<OpcUa_Int32>::max() / sizeof(T))
            return false;
        for (OpcUa_UInt32 i = length; i < m_length; ++i)
            clearElement(m_data[i]);
        void* block = OpcUa_Memory_ReAlloc(m_data, length * sizeof(T));
        if (!block && length > m_length)
            return false;
        if (block)
            m_data = static_cast<T*>(block);
        if (length > m_length)
            std::memset(static_cast<void*>(m_data + m_length), 0, (length - m_length) * sizeof(T));
        m_length = length;
        return true;
    }

    /// Clears every element and frees the memory.
    void clear()
    {
        for (OpcUa_UInt32 i = 0; i < m_length; ++i)
            clearElement(m_data[i]);
        OpcUa_Memory_Free(m_data);
        m_data = nullptr;
        m_length = 0;
    }

    /// Takes over an array that was allocated by the stack.
    void attach(OpcUa_UInt32 length, T* data)
    {
        clear();
        m_length = length;
        m_data = data;
    }

    /// Hands the array over to the caller, who frees it.
    T* detach()
    {
        m_length = 0;
        return std::exchange(m_data, nullptr);
    }

    void swap(UaStackTypeArray& other) noexcept
    {
        std::swap(m_data, other.m_data);
        std::swap(m_length, other.m_length);
    }

private:
    static void clearElement(T& element)
    {
        if constexpr (!std::is_arithmetic_v<T>)
            OpcUa_ClearValue(element);
        else
            static_cast<void>(element);
    }

    static bool copyElement(const T& from, T& to)
    {
        if constexpr (std::is_arithmetic_v<T>) {
            to = from;
            return true;
        } else {
            return OpcUa_IsGood(OpcUa_CopyValue(from, to));
        }
    }

    T* m_data = nullptr;
    OpcUa_UInt32 m_length = 0;
};
