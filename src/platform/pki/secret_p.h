#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// Wipes a text that no one else shares; one that is shared stays.
void wipe(QString& text);
/// Wipes the bytes themselves, for whoever shares them, too.
void wipe(QByteArray& bytes);

/// Bytes that are wiped when they are let go. Not to be shared: a copy is one of its own.
class Secret
{
public:
    Secret() = default;
    /// Takes the only copy over.
    explicit Secret(QByteArray&& bytes) : m_bytes(std::move(bytes)) {}
    Secret(const Secret& other) : m_bytes(other.m_bytes.constData(), other.m_bytes.size()) {}
    Secret& operator=(const Secret& other);
    ~Secret() { wipe(); }

    const QByteArray& bytes() const { return m_bytes; }
    void wipe();

private:
    QByteArray m_bytes;
};
