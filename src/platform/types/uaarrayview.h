#pragma once

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <type_traits>

/// The elements of an array argument: a list in braces, or any container that keeps them one after
/// the other (QList, std::vector, UaStackTypeArray, a C array). They may be values, or stack
/// structures of the same built-in type; bytes may also be of type char. A view refers to the
/// elements and copies none, so it is for arguments only.
template <class Value, class Stack = Value>
class UaArrayView
{
    template <class Element>
    static constexpr bool isStack = std::is_same_v<Element, Stack> ||
                                    (std::is_same_v<Element, char> && sizeof(Stack) == 1);

public:
    /// No elements.
    UaArrayView() = default;
    UaArrayView(std::initializer_list<Value> values) : UaArrayView(values.begin(), values.size()) {}
    /// `count` elements from an address on.
    UaArrayView(const Value* values, std::size_t count)
        : m_data(values), m_count(count), m_isStack(isStack<Value>)
    {
    }
    template <class Container,
              class Element = std::remove_cv_t<
                  std::remove_pointer_t<decltype(std::data(std::declval<const Container&>()))>>,
              typename = std::enable_if_t<std::is_same_v<Element, Value> || isStack<Element>>>
    UaArrayView(const Container& elements)
        : m_data(std::data(elements)), m_count(std::size_t(std::size(elements))),
          m_isStack(isStack<Element>)
    {
    }

    std::size_t size() const { return m_count; }
    /// The address of the elements, if they are stack structures; else null.
    const Stack* stack() const { return m_isStack ? static_cast<const Stack*>(m_data) : nullptr; }
    /// The address of the elements, if they are values of another class than the stack's; else
    /// null.
    const Value* values() const { return m_isStack ? nullptr : static_cast<const Value*>(m_data); }

private:
    const void* m_data = nullptr;
    std::size_t m_count = 0;
    bool m_isStack = true;
};
