#pragma once

#include "../../kestrelexport.h"

#include <QtCore/QByteArray>

/// A growable sequence of bytes. Copies share their storage.
class KESTREL_EXPORT UaByteArray
{
public:
    UaByteArray() = default;
    /// A copy of `length` bytes; empty for a null pointer or a length that is not positive.
    UaByteArray(const char* data, int length) : m_bytes(data, length > 0 ? length : 0) {}

    int size() const { return int(m_bytes.size()); }
    const char* data() const { return m_bytes.constData(); }
    /// Two lower-case hexadecimal digits a byte, with a space between the bytes if `separated`.
    QByteArray toHex(bool separated) const
    {
        return separated ? m_bytes.toHex(' ') : m_bytes.toHex();
    }

private:
    QByteArray m_bytes;
};
